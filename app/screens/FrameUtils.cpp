#include "FrameUtils.h"

#include <QDebug>
#include <cmath>

QRectF FrameUtils::frameResizeToWidth(QRectF f, double width) {
    return {f.x(), f.y(), width, f.height()};
}
QRectF FrameUtils::frameResizeToHeight(QRectF f, double height) {
    return {f.x(), f.y(), f.width(), height};
}
QRectF FrameUtils::frameResizeToWidthHeight(QRectF f, double width, double height) {
    return {f.x(), f.y(), width, height};
}
QRectF FrameUtils::frameResizeByWidth(QRectF f, double dw) {
    return {f.x(), f.y(), f.width() + dw, f.height()};
}
QRectF FrameUtils::frameResizeByHeight(QRectF f, double dh) {
    return {f.x(), f.y(), f.width(), f.height() + dh};
}
QRectF FrameUtils::frameMoveToX(QRectF f, double x) {
    return {x, f.y(), f.width(), f.height()};
}
QRectF FrameUtils::frameMoveToY(QRectF f, double y) {
    return {f.x(), y, f.width(), f.height()};
}
QRectF FrameUtils::frameMoveToXY(QRectF f, double x, double y) {
    return {x, y, f.width(), f.height()};
}
QRectF FrameUtils::frameMoveByX(QRectF f, double dx) {
    return f.translated(dx, 0);
}
QRectF FrameUtils::frameMoveByY(QRectF f, double dy) {
    return f.translated(0, dy);
}

QRectF FrameUtils::frameCenterInFrame(QRectF f, QRectF c) {
    return frameCenterVerticallyInFrame(frameCenterHorizontallyInFrame(f, c), c);
}
QRectF FrameUtils::frameCenterHorizontallyInFrame(QRectF f, QRectF c) {
    return frameMoveToX(f, (c.width() - f.width()) / 2.0);
}
QRectF FrameUtils::frameCenterVerticallyInFrame(QRectF f, QRectF c) {
    return frameMoveToY(f, (c.height() - f.height()) / 2.0);
}

double FrameUtils::fixFrameDim(double value) {
    return std::isnan(value) ? 0.0 : std::round(value);
}

QRectF FrameUtils::fixFrame(QRectF f) {
    return {fixFrameDim(f.x()), fixFrameDim(f.y()), fixFrameDim(f.width()), fixFrameDim(f.height())};
}

QString FrameUtils::printFrameLabel(QRectF f, const QString& label) {
    const QString text = QStringLiteral("%1(x=%2, y=%3, w=%4, h=%5)")
                             .arg(label.isEmpty() ? QString() : label + ": ")
                             .arg(f.x())
                             .arg(f.y())
                             .arg(f.width())
                             .arg(f.height());
    qDebug().noquote() << text;
    return text;
}
