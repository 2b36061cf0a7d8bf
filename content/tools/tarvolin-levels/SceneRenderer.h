#pragma once

#include "SceneFile.h"

#include <QByteArray>
#include <QImage>
#include <QString>

namespace tarvolin::levels {

// The folder of symbol artwork: STEM.svg for every symbol a scene names.
class SymbolFolder {
public:
    explicit SymbolFolder(QString dir) : m_dir(std::move(dir)) {}

    QString dir() const { return m_dir; }
    QString pathOf(const QString& stem) const;
    bool has(const QString& stem) const;
    // The file's bytes; empty when it cannot be read.
    QByteArray read(const QString& stem) const;
    // An empty string when the file is an SVG that can be drawn, otherwise why not.
    QString validate(const QString& stem) const;

private:
    QString m_dir;
};

inline constexpr int kDefaultPictureSize = 360;
inline constexpr int kJpegQuality = 85;

// Draws a scene into a square picture of `size` pixels: the background (flat or a vertical gradient) under
// a soft light, then each symbol in order with a light drop shadow. A null image, and the reason in
// `error`, when a symbol cannot be drawn.
QImage renderScene(const Scene& scene, const SymbolFolder& symbols, int size, QString* error);

} // namespace tarvolin::levels
