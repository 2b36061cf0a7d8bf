#include "ImageUtil.h"

#include <QBuffer>
#include <QGuiApplication>
#include <QPainter>
#include <QQuickWindow>

QImage ImageUtil::takeScreenshotForWindow(QQuickWindow* window) {
    return window ? window->grabWindow() : QImage();
}

QImage ImageUtil::takeScreenshotForView(ViewController* view) {
    if (!view) {
        return {};
    }
    const auto windows = QGuiApplication::topLevelWindows();
    for (QWindow* window : windows) {
        auto* quick = qobject_cast<QQuickWindow*>(window);
        if (quick && quick->isVisible()) {
            return takeScreenshotForWindow(quick);
        }
    }
    return {};
}

QImage ImageUtil::resizeImageWidthHeight(const QImage& image, int width, int height) {
    if (image.isNull() || width <= 0 || height <= 0) {
        return {};
    }
    QImage canvas(width, height, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    {
        QPainter p(&canvas);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.drawImage(QRect(0, 0, width, height), image);
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    canvas.save(&buffer, "PNG");
    QImage out;
    out.loadFromData(png, "PNG");
    return out;
}

QImage ImageUtil::drawImageWithBadge(const QImage& image, const QImage& badge) {
    if (image.isNull()) {
        return {};
    }
    QImage out = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (!badge.isNull()) {
        QPainter p(&out);
        const int side = std::max(1, std::min(out.width(), out.height()) / 3);
        p.drawImage(QRect(out.width() - side, 0, side, side), badge);
    }
    return out;
}
