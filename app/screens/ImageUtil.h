#pragma once

#include <QImage>

class QQuickWindow;

// Pictures of the screen and picture resizing.
class ImageUtil {
public:
    // A picture of everything the window shows now.
    static QImage takeScreenshotForWindow(QQuickWindow* window);
    // The picture drawn into exactly width × height pixels at scale 1, passed through PNG data.
    static QImage resizeImageWidthHeight(const QImage& image, int width, int height);
    // The badge drawn over the picture's top corner.
    static QImage drawImageWithBadge(const QImage& image, const QImage& badge);
};
