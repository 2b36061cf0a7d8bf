#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

namespace tarvolin::levels {

// Draws an SVG document into a square transparent image of `side` pixels, the drawing scaled to fit and
// centred. The whole of SVG 1.1 that artwork sets use is drawn (clip paths, masks, gradients, filters such
// as blurred highlights), by librsvg. A null image, and the reason in `error`, when the document cannot be
// read or drawn.
QImage rasterizeSvg(const QByteArray& svg, int side, QString* error = nullptr);

} // namespace tarvolin::levels
