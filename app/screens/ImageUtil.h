#pragma once

#include <QImage>

class QQuickWindow;
class ViewController;

// Pictures of the screen and picture resizing.
class ImageUtil {
public:
    // A picture of everything the window shows now.
    static QImage takeScreenshotForWindow(QQuickWindow* window);
    // A picture of the screen as it is drawn now: the game's window, which shows the screen on top. Empty
    // when no window shows the game.
    static QImage takeScreenshotForView(ViewController* view);
    // The picture drawn into exactly width × height pixels at scale 1, passed through PNG data.
    static QImage resizeImageWidthHeight(const QImage& image, int width, int height);
    // The badge drawn over the picture's top corner.
    static QImage drawImageWithBadge(const QImage& image, const QImage& badge);
};
