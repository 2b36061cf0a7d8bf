#pragma once

#include "SceneFile.h"

#include <QByteArray>
#include <QImage>
#include <QString>

#include <memory>

namespace tarvolin::levels {

// The folder of symbol artwork: SET/NAME.svg or STEM.svg for every symbol a scene names.
class SymbolFolder {
public:
    explicit SymbolFolder(QString dir);

    QString dir() const { return m_dir; }
    QString pathOf(const QString& stem) const;
    bool has(const QString& stem) const;
    // The file's bytes; empty when it cannot be read.
    QByteArray read(const QString& stem) const;
    // An empty string when the file is an SVG that can be drawn, otherwise why not.
    QString validate(const QString& stem) const;
    // The symbol drawn once into a square, and kept: the pictures that use it scale this drawing instead of
    // drawing the SVG again. The square is as large as the largest use announced with needSide, or
    // kSymbolRasterSide without one. Safe to call from several threads. A null image, and why in `error`,
    // when the symbol cannot be drawn.
    QImage raster(const QString& stem, QString* error) const;
    // A picture will draw the symbol `pixels` wide: its drawing is made at least that large. Call before
    // the first raster() of the symbol.
    void needSide(const QString& stem, int pixels);

private:
    struct Cache;
    QString m_dir;
    std::shared_ptr<Cache> m_cache;
};

// Large enough for a symbol at 1.5 times the side of a 360-pixel picture; the side of a symbol whose uses
// were not announced.
inline constexpr int kSymbolRasterSide = 560;

inline constexpr int kDefaultPictureSize = 360;
inline constexpr int kJpegQuality = 85;

// Draws a scene into a square picture of `size` pixels: the background (flat or a vertical gradient) under
// a soft light, then each symbol in order with a light drop shadow. A null image, and the reason in
// `error`, when a symbol cannot be drawn.
QImage renderScene(const Scene& scene, const SymbolFolder& symbols, int size, QString* error);

} // namespace tarvolin::levels
