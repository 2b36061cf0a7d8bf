#include "SceneRenderer.h"

#include "SettingPainter.h"
#include "SvgRaster.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLinearGradient>
#include <QPainter>
#include <QRadialGradient>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <vector>

namespace tarvolin::levels {

struct SymbolFolder::Cache {
    std::mutex mutex;
    QHash<QString, int> sides;
    QHash<QString, QImage> images;
    QHash<QString, QString> errors;
};

SymbolFolder::SymbolFolder(QString dir) : m_dir(std::move(dir)), m_cache(std::make_shared<Cache>()) {}

QImage SymbolFolder::raster(const QString& stem, QString* error) const {
    {
        const std::lock_guard lock(m_cache->mutex);
        if (const auto found = m_cache->images.constFind(stem); found != m_cache->images.cend())
            return *found;
        if (const auto failed = m_cache->errors.constFind(stem); failed != m_cache->errors.cend()) {
            if (error)
                *error = *failed;
            return {};
        }
    }
    // Drawn outside the lock, so that threads draw different symbols at once; a symbol two threads want
    // at the same moment is drawn twice, and the same image kept.
    int side = kSymbolRasterSide;
    {
        const std::lock_guard lock(m_cache->mutex);
        side = m_cache->sides.value(stem, kSymbolRasterSide);
    }
    QString why;
    const QImage image = rasterizeSvg(read(stem), side, &why);
    const std::lock_guard lock(m_cache->mutex);
    if (image.isNull()) {
        m_cache->errors.insert(stem, why);
        if (error)
            *error = why;
    } else {
        m_cache->images.insert(stem, image);
    }
    return image;
}

void SymbolFolder::needSide(const QString& stem, int pixels) {
    const std::lock_guard lock(m_cache->mutex);
    int& side = m_cache->sides[stem];
    side = std::max(side, std::clamp(pixels, 1, kSymbolRasterSide * 4));
}

QString SymbolFolder::pathOf(const QString& stem) const {
    const qsizetype colon = stem.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return m_dir + QLatin1Char('/') + stem + QLatin1String(".svg");
    return m_dir + QLatin1Char('/') + stem.left(colon) + QLatin1Char('/') + stem.mid(colon + 1) +
           QLatin1String(".svg");
}

bool SymbolFolder::has(const QString& stem) const {
    return QFileInfo(pathOf(stem)).isFile();
}

QByteArray SymbolFolder::read(const QString& stem) const {
    QFile file(pathOf(stem));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

QString SymbolFolder::validate(const QString& stem) const {
    if (!has(stem))
        return QStringLiteral("%1 does not exist").arg(pathOf(stem));
    QString why;
    if (rasterizeSvg(read(stem), 16, &why).isNull())
        return QStringLiteral("%1 is not a drawable SVG: %2").arg(pathOf(stem), why);
    return {};
}

namespace {

// One horizontal then one vertical running-average pass of `radius` over an 8-bit plane.
void boxBlur(std::vector<int>& plane, int width, int height, int radius) {
    std::vector<int> line(static_cast<size_t>(std::max(width, height)));
    const int window = 2 * radius + 1;
    const auto pass = [&](int count, int length, auto at) {
        for (int c = 0; c < count; ++c) {
            int sum = 0;
            for (int i = -radius; i <= radius; ++i)
                sum += at(c, std::clamp(i, 0, length - 1));
            for (int i = 0; i < length; ++i) {
                line[static_cast<size_t>(i)] = sum / window;
                sum += at(c, std::min(i + radius + 1, length - 1)) - at(c, std::max(i - radius, 0));
            }
            for (int i = 0; i < length; ++i)
                at(c, i) = line[static_cast<size_t>(i)];
        }
    };
    pass(height, width, [&](int y, int x) -> int& { return plane[static_cast<size_t>(y * width + x)]; });
    pass(width, height, [&](int x, int y) -> int& { return plane[static_cast<size_t>(y * width + x)]; });
}

// A soft dark copy of the layer's shape: its alpha blurred three times (close to a Gaussian), in black.
QImage shadowOf(const QImage& layer, int radius, double opacity) {
    const int w = layer.width();
    const int h = layer.height();
    std::vector<int> alpha(static_cast<size_t>(w * h));
    for (int y = 0; y < h; ++y) {
        const QRgb* row = reinterpret_cast<const QRgb*>(layer.constScanLine(y));
        for (int x = 0; x < w; ++x)
            alpha[static_cast<size_t>(y * w + x)] = qAlpha(row[x]);
    }
    for (int i = 0; i < 3; ++i)
        boxBlur(alpha, w, h, radius);
    QImage shadow(w, h, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < h; ++y) {
        QRgb* row = reinterpret_cast<QRgb*>(shadow.scanLine(y));
        for (int x = 0; x < w; ++x)
            row[x] = qRgba(0, 0, 0, static_cast<int>(alpha[static_cast<size_t>(y * w + x)] * opacity));
    }
    return shadow;
}

// The colour a set's one-colour silhouettes take when the scene gives them none.
const QColor kSilhouette(0x2f, 0x36, 0x40);

void paintBackground(QPainter& painter, const Scene& scene, int size) {
    if (!paintSetting(painter, scene.setting, size)) {
        QLinearGradient base(0, 0, 0, size);
        base.setColorAt(0, scene.top);
        base.setColorAt(1, scene.bottom);
        painter.fillRect(0, 0, size, size, base);
    }

    // A soft light from above the centre, and a faint shade towards the corners.
    QRadialGradient light(size * 0.5, size * 0.36, size * 0.72);
    light.setColorAt(0, QColor(255, 255, 255, 70));
    light.setColorAt(1, QColor(255, 255, 255, 0));
    painter.fillRect(0, 0, size, size, light);
    QRadialGradient shade(size * 0.5, size * 0.5, size * 0.75);
    shade.setColorAt(0.6, QColor(0, 0, 0, 0));
    shade.setColorAt(1, QColor(0, 0, 0, 38));
    painter.fillRect(0, 0, size, size, shade);
}

} // namespace

QImage renderScene(const Scene& scene, const SymbolFolder& symbols, int size, QString* error) {
    QImage picture(size, size, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&picture);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    paintBackground(painter, scene, size);

    const std::vector<Placement> places = scene.layout();
    const int blur = std::max(1, size / 90);
    const QPointF shadowOffset(size * 0.006, size * 0.014);
    for (size_t i = 0; i < scene.symbols.size(); ++i) {
        const SceneSymbol& symbol = scene.symbols[i];
        QString why;
        const QImage master = symbols.raster(symbol.stem, &why);
        if (master.isNull()) {
            if (error)
                *error = QStringLiteral("%1: cannot draw %2: %3")
                             .arg(scene.pictureName, symbols.pathOf(symbol.stem), why);
            return {};
        }
        const Placement& p = places[i];
        const double side = p.size * size;

        // The symbol is drawn into a layer that holds just it and the room its shadow's blur needs.
        QTransform place;
        place.translate(p.x * size, p.y * size);
        place.rotate(p.rotation);
        if (symbol.mirrored)
            place.scale(-1, 1);
        const QRectF symbolRect(-side / 2, -side / 2, side, side);
        const int margin = 3 * blur + 1;
        const QRect area =
            place.mapRect(symbolRect).toAlignedRect().adjusted(-margin, -margin, margin, margin);
        if (area.isEmpty())
            continue;
        QImage layer(area.size(), QImage::Format_ARGB32_Premultiplied);
        layer.fill(Qt::transparent);
        {
            QPainter layerPainter(&layer);
            layerPainter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
            layerPainter.setTransform(place * QTransform::fromTranslate(-area.x(), -area.y()));
            // Scaled down smoothly first, so that a small symbol keeps its detail without jagged edges.
            const int pixels = std::max(1, static_cast<int>(std::ceil(side)));
            layerPainter.drawImage(
                symbolRect, master.scaled(pixels, pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
            const bool silhouette = symbol.stem.startsWith(QLatin1String("gi:"));
            if (symbol.tint || silhouette) {
                layerPainter.resetTransform();
                layerPainter.setCompositionMode(QPainter::CompositionMode_SourceIn);
                layerPainter.fillRect(layer.rect(), symbol.tint.value_or(kSilhouette));
            }
        }
        painter.drawImage(QPointF(area.topLeft()) + shadowOffset, shadowOf(layer, blur, 0.3));
        painter.drawImage(area.topLeft(), layer);
    }
    painter.end();
    return picture.convertToFormat(QImage::Format_RGB32);
}

} // namespace tarvolin::levels
