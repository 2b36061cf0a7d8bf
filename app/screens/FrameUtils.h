#pragma once

#include <QRectF>
#include <QString>

// Arithmetic on rectangles.
class FrameUtils {
public:
    static QRectF frameResizeToWidth(QRectF frame, double width);
    static QRectF frameResizeToHeight(QRectF frame, double height);
    static QRectF frameResizeToWidthHeight(QRectF frame, double width, double height);
    static QRectF frameResizeByWidth(QRectF frame, double dw);
    static QRectF frameResizeByHeight(QRectF frame, double dh);
    static QRectF frameMoveToX(QRectF frame, double x);
    static QRectF frameMoveToY(QRectF frame, double y);
    static QRectF frameMoveToXY(QRectF frame, double x, double y);
    static QRectF frameMoveByX(QRectF frame, double dx);
    static QRectF frameMoveByY(QRectF frame, double dy);
    static QRectF frameCenterInFrame(QRectF frame, QRectF container);
    static QRectF frameCenterHorizontallyInFrame(QRectF frame, QRectF container);
    static QRectF frameCenterVerticallyInFrame(QRectF frame, QRectF container);
    // 0 for a value that is not a number, the rounded value otherwise.
    static double fixFrameDim(double value);
    static QRectF fixFrame(QRectF frame);

    static QRectF frameIpadLandscape() { return {0, 0, 1024, 768}; }
    static QRectF frameIpadPortrait() { return {0, 0, 768, 1024}; }
    static QRectF frameIPhoneLandscape() { return {0, 0, 480, 320}; }
    static QRectF frameIPhonePortrait() { return {0, 0, 320, 480}; }

    static QString printFrameLabel(QRectF frame, const QString& label);
    static QString printFrame(QRectF frame) { return printFrameLabel(frame, QString()); }
};
