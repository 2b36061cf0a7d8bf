#include "SettingPainter.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>
#include <functional>
#include <map>

namespace tarvolin::levels {

namespace {

// Every setting draws in a unit square: x and y from 0 to 1, from the top left.
using Drawing = std::function<void(QPainter&)>;

void vertical(QPainter& p, double from, double to, const QColor& top, const QColor& bottom) {
    QLinearGradient g(0, from, 0, to);
    g.setColorAt(0, top);
    g.setColorAt(1, bottom);
    p.fillRect(QRectF(0, from, 1, to - from), g);
}

void sky(QPainter& p, double to) {
    vertical(p, 0, to, QColor(0x8e, 0xcb, 0xf5), QColor(0xe3, 0xf3, 0xff));
}

void cloud(QPainter& p, double x, double y, double w, int alpha = 220) {
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 255, 255, alpha));
    QPainterPath path;
    path.addEllipse(QPointF(x, y), w * 0.5, w * 0.22);
    path.addEllipse(QPointF(x - w * 0.18, y - w * 0.12), w * 0.22, w * 0.2);
    path.addEllipse(QPointF(x + w * 0.12, y - w * 0.15), w * 0.26, w * 0.24);
    path.setFillRule(Qt::WindingFill);
    p.drawPath(path);
}

void sun(QPainter& p, double x, double y, double r, const QColor& colour) {
    QRadialGradient glow(x, y, r * 2.2);
    QColor halo = colour;
    halo.setAlpha(110);
    glow.setColorAt(0, halo);
    halo.setAlpha(0);
    glow.setColorAt(1, halo);
    p.setPen(Qt::NoPen);
    p.setBrush(glow);
    p.drawEllipse(QPointF(x, y), r * 2.2, r * 2.2);
    p.setBrush(colour);
    p.drawEllipse(QPointF(x, y), r, r);
}

// A band of ground whose top edge rolls through `crests` gentle hills.
void hills(QPainter& p, double level, double height, int crests, double phase, const QColor& colour) {
    QPainterPath path(QPointF(0, 1));
    for (int i = 0; i <= 40; ++i) {
        const double x = i / 40.0;
        path.lineTo(x, level - height * std::sin((x * crests + phase) * M_PI) * 0.5 - height * 0.5);
    }
    path.lineTo(1, 1);
    path.closeSubpath();
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawPath(path);
}

void stars(QPainter& p, int count, double below, unsigned seed) {
    p.setPen(Qt::NoPen);
    for (int i = 0; i < count; ++i) {
        seed = seed * 1103515245u + 12345u;
        const double x = (seed >> 8) % 1000 / 1000.0;
        seed = seed * 1103515245u + 12345u;
        const double y = (seed >> 8) % 1000 / 1000.0 * below;
        const double r = 0.003 + (i % 3) * 0.002;
        p.setBrush(QColor(255, 255, 240, 140 + (i % 4) * 25));
        p.drawEllipse(QPointF(x, y), r, r);
    }
}

void waves(QPainter& p, double from, double to, const QColor& colour) {
    p.setPen(QPen(colour, 0.006, Qt::SolidLine, Qt::RoundCap));
    p.setBrush(Qt::NoBrush);
    int row = 0;
    for (double y = from; y < to; y += 0.07, ++row) {
        for (double x = (row % 2) * 0.09 - 0.05; x < 1.05; x += 0.18) {
            QPainterPath wave(QPointF(x, y));
            wave.quadTo(x + 0.035, y - 0.018, x + 0.07, y);
            p.drawPath(wave);
        }
    }
}

void tree(QPainter& p, double x, double base, double h, const QColor& colour) {
    QPainterPath path(QPointF(x, base - h));
    path.lineTo(x + h * 0.28, base - h * 0.1);
    path.lineTo(x - h * 0.28, base - h * 0.1);
    path.closeSubpath();
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawPath(path);
    p.fillRect(QRectF(x - h * 0.03, base - h * 0.12, h * 0.06, h * 0.12), colour.darker(140));
}

void floor(QPainter& p, double from, const QColor& colour) {
    vertical(p, from, 1, colour, colour.darker(118));
    p.setPen(QPen(colour.darker(135), 0.004));
    for (double y = from + 0.06; y < 1; y += 0.07)
        p.drawLine(QPointF(0, y), QPointF(1, y));
}

const std::map<QString, Drawing>& drawings() {
    static const std::map<QString, Drawing> all = {
        {QStringLiteral("sky"),
         [](QPainter& p) {
             sky(p, 1);
             cloud(p, 0.2, 0.2, 0.26);
             cloud(p, 0.8, 0.32, 0.3);
             cloud(p, 0.45, 0.86, 0.34, 170);
         }},
        {QStringLiteral("sea"),
         [](QPainter& p) {
             sky(p, 0.5);
             cloud(p, 0.8, 0.16, 0.24);
             vertical(p, 0.5, 1, QColor(0x4f, 0xb0, 0xe8), QColor(0x1d, 0x6a, 0xb0));
             waves(p, 0.58, 1, QColor(255, 255, 255, 110));
         }},
        {QStringLiteral("underwater"),
         [](QPainter& p) {
             vertical(p, 0, 1, QColor(0x5c, 0xc8, 0xee), QColor(0x12, 0x4e, 0x8c));
             p.setPen(Qt::NoPen);
             for (int i = 0; i < 4; ++i) {
                 QPainterPath ray(QPointF(0.1 + i * 0.25, 0));
                 ray.lineTo(0.18 + i * 0.25, 0);
                 ray.lineTo(0.05 + i * 0.22, 0.9);
                 ray.lineTo(-0.05 + i * 0.22, 0.9);
                 p.setBrush(QColor(255, 255, 255, 28));
                 p.drawPath(ray);
             }
             hills(p, 0.93, 0.05, 3, 0.2, QColor(0xe6, 0xcf, 0x93));
             p.setPen(QPen(QColor(255, 255, 255, 120), 0.004));
             p.setBrush(QColor(255, 255, 255, 40));
             for (const QPointF& b :
                  {QPointF(0.1, 0.3), QPointF(0.13, 0.22), QPointF(0.9, 0.55), QPointF(0.88, 0.45)})
                 p.drawEllipse(b, 0.018, 0.018);
         }},
        {QStringLiteral("beach"),
         [](QPainter& p) {
             sky(p, 0.42);
             sun(p, 0.85, 0.13, 0.05, QColor(0xff, 0xe0, 0x70));
             vertical(p, 0.42, 0.62, QColor(0x4f, 0xb8, 0xe6), QColor(0x2c, 0x8f, 0xcf));
             waves(p, 0.47, 0.6, QColor(255, 255, 255, 120));
             hills(p, 0.64, 0.03, 1, 0.5, QColor(0xf4, 0xdd, 0xa6));
         }},
        {QStringLiteral("desert"),
         [](QPainter& p) {
             vertical(p, 0, 0.6, QColor(0xff, 0xd9, 0x9a), QColor(0xff, 0xf1, 0xd2));
             sun(p, 0.8, 0.17, 0.07, QColor(0xff, 0xc8, 0x4a));
             hills(p, 0.6, 0.1, 2, 0.3, QColor(0xee, 0xc1, 0x7c));
             hills(p, 0.75, 0.12, 1, 0.9, QColor(0xe0, 0xa8, 0x62));
         }},
        {QStringLiteral("night"),
         [](QPainter& p) {
             vertical(p, 0, 1, QColor(0x16, 0x20, 0x4a), QColor(0x2e, 0x3d, 0x75));
             stars(p, 45, 0.75, 7);
             hills(p, 0.9, 0.06, 2, 0.1, QColor(0x12, 0x18, 0x36));
         }},
        {QStringLiteral("space"),
         [](QPainter& p) {
             vertical(p, 0, 1, QColor(0x08, 0x08, 0x1c), QColor(0x1c, 0x10, 0x3c));
             QRadialGradient nebula(0.3, 0.7, 0.45);
             nebula.setColorAt(0, QColor(0x9a, 0x5c, 0xd0, 90));
             nebula.setColorAt(1, QColor(0x9a, 0x5c, 0xd0, 0));
             p.fillRect(QRectF(0, 0, 1, 1), nebula);
             stars(p, 80, 1, 3);
         }},
        {QStringLiteral("forest"),
         [](QPainter& p) {
             vertical(p, 0, 0.7, QColor(0xc9, 0xec, 0xd0), QColor(0xe9, 0xf7, 0xe4));
             for (int i = 0; i < 9; ++i)
                 tree(p, 0.06 + i * 0.11, 0.74, 0.34 + (i % 3) * 0.06, QColor(0x5f, 0xa0, 0x6a, 200));
             for (int i = 0; i < 6; ++i)
                 tree(p, 0.1 + i * 0.17, 0.82, 0.42 + (i % 2) * 0.08, QColor(0x3e, 0x80, 0x4c));
             vertical(p, 0.8, 1, QColor(0x7c, 0xb3, 0x5a), QColor(0x5a, 0x8f, 0x3e));
         }},
        {QStringLiteral("garden"),
         [](QPainter& p) {
             sky(p, 0.6);
             cloud(p, 0.22, 0.18, 0.24);
             hills(p, 0.66, 0.08, 2, 0.6, QColor(0x9a, 0xd8, 0x6e));
             vertical(p, 0.75, 1, QColor(0x86, 0xc9, 0x5c), QColor(0x6a, 0xad, 0x45));
             p.setPen(Qt::NoPen);
             const QColor petals[] = {QColor(0xff, 0x8a, 0xb8), QColor(0xff, 0xe0, 0x5a),
                                      QColor(0xff, 0xff, 0xff)};
             for (int i = 0; i < 12; ++i) {
                 p.setBrush(petals[i % 3]);
                 p.drawEllipse(QPointF(0.04 + i * 0.083, 0.8 + (i % 3) * 0.06), 0.012, 0.012);
             }
         }},
        {QStringLiteral("farm"),
         [](QPainter& p) {
             sky(p, 0.55);
             sun(p, 0.16, 0.15, 0.05, QColor(0xff, 0xe0, 0x70));
             hills(p, 0.58, 0.1, 1, 0.2, QColor(0xb5, 0xd9, 0x6c));
             vertical(p, 0.68, 1, QColor(0xc9, 0xa9, 0x5c), QColor(0xa8, 0x85, 0x40));
             p.setPen(QPen(QColor(0x8a, 0x68, 0x2e, 150), 0.008));
             for (double x = -0.4; x < 1.2; x += 0.12)
                 p.drawLine(QPointF(0.5 + (x - 0.5) * 0.3, 0.68), QPointF(x, 1));
             p.setPen(QPen(QColor(0xff, 0xff, 0xff, 200), 0.01));
             p.drawLine(QPointF(0, 0.64), QPointF(1, 0.64));
             for (double x = 0.04; x < 1; x += 0.12)
                 p.drawLine(QPointF(x, 0.6), QPointF(x, 0.69));
         }},
        {QStringLiteral("mountain"),
         [](QPainter& p) {
             sky(p, 1);
             p.setPen(Qt::NoPen);
             const auto peak = [&](double x, double w, double h, const QColor& rock) {
                 QPainterPath path(QPointF(x - w, 0.85));
                 path.lineTo(x, 0.85 - h);
                 path.lineTo(x + w, 0.85);
                 path.closeSubpath();
                 p.setBrush(rock);
                 p.drawPath(path);
                 QPainterPath cap(QPointF(x, 0.85 - h));
                 cap.lineTo(x + w * 0.25, 0.85 - h * 0.75);
                 cap.lineTo(x - w * 0.25, 0.85 - h * 0.75);
                 cap.closeSubpath();
                 p.setBrush(QColor(255, 255, 255, 230));
                 p.drawPath(cap);
             };
             peak(0.25, 0.35, 0.5, QColor(0x8c, 0x9d, 0xb5));
             peak(0.72, 0.4, 0.62, QColor(0x6f, 0x80, 0x9c));
             vertical(p, 0.84, 1, QColor(0x8b, 0xbf, 0x6a), QColor(0x6b, 0x9f, 0x4c));
         }},
        {QStringLiteral("snow"),
         [](QPainter& p) {
             vertical(p, 0, 1, QColor(0xc7, 0xdc, 0xf0), QColor(0xee, 0xf5, 0xfc));
             hills(p, 0.72, 0.1, 2, 0.4, QColor(0xfa, 0xfd, 0xff));
             p.setPen(Qt::NoPen);
             p.setBrush(QColor(255, 255, 255, 230));
             unsigned seed = 11;
             for (int i = 0; i < 40; ++i) {
                 seed = seed * 1103515245u + 12345u;
                 const double x = (seed >> 8) % 1000 / 1000.0;
                 seed = seed * 1103515245u + 12345u;
                 p.drawEllipse(QPointF(x, (seed >> 8) % 1000 / 1000.0 * 0.7), 0.008, 0.008);
             }
         }},
        {QStringLiteral("rain"),
         [](QPainter& p) {
             vertical(p, 0, 1, QColor(0x7d, 0x8b, 0x9c), QColor(0xc3, 0xcd, 0xd8));
             cloud(p, 0.3, 0.12, 0.4, 160);
             cloud(p, 0.78, 0.08, 0.36, 140);
             p.setPen(QPen(QColor(255, 255, 255, 120), 0.004, Qt::SolidLine, Qt::RoundCap));
             for (int i = 0; i < 30; ++i) {
                 const double x = (i * 37 % 100) / 100.0;
                 const double y = 0.2 + (i * 53 % 70) / 100.0;
                 p.drawLine(QPointF(x, y), QPointF(x - 0.02, y + 0.06));
             }
         }},
        {QStringLiteral("city"),
         [](QPainter& p) {
             sky(p, 1);
             const double heights[] = {0.35, 0.5, 0.28, 0.6, 0.42, 0.55, 0.3, 0.47};
             for (int i = 0; i < 8; ++i) {
                 const QRectF block(i * 0.125, 0.82 - heights[i], 0.115, heights[i]);
                 p.fillRect(block, QColor(0xa9, 0xb8, 0xcf));
                 for (double y = block.top() + 0.03; y < 0.8; y += 0.06) {
                     for (double x = block.left() + 0.02; x < block.right() - 0.02; x += 0.04)
                         p.fillRect(QRectF(x, y, 0.02, 0.03), QColor(0xe8, 0xf0, 0xfa));
                 }
             }
             vertical(p, 0.82, 1, QColor(0x9a, 0xa0, 0xa8), QColor(0x80, 0x86, 0x8f));
         }},
        {QStringLiteral("street"),
         [](QPainter& p) {
             sky(p, 0.6);
             p.fillRect(QRectF(0, 0.3, 0.3, 0.35), QColor(0xe8, 0xc9, 0xa0));
             p.fillRect(QRectF(0.34, 0.22, 0.3, 0.43), QColor(0xd9, 0xb0, 0x8c));
             p.fillRect(QRectF(0.68, 0.34, 0.32, 0.31), QColor(0xf0, 0xdc, 0xb8));
             p.fillRect(QRectF(0, 0.65, 1, 0.07), QColor(0xc8, 0xc8, 0xc8));
             vertical(p, 0.72, 1, QColor(0x6f, 0x75, 0x7d), QColor(0x55, 0x5a, 0x61));
             p.setPen(QPen(QColor(255, 255, 255, 210), 0.012));
             for (double x = 0.03; x < 1; x += 0.2)
                 p.drawLine(QPointF(x, 0.86), QPointF(x + 0.1, 0.86));
         }},
        {QStringLiteral("kitchen"),
         [](QPainter& p) {
             p.fillRect(QRectF(0, 0, 1, 0.68), QColor(0xf4, 0xf8, 0xfb));
             p.setPen(QPen(QColor(0xc6, 0xd8, 0xe6), 0.004));
             for (double v = 0.1; v < 0.68; v += 0.1)
                 p.drawLine(QPointF(0, v), QPointF(1, v));
             for (double v = 0.1; v < 1; v += 0.1)
                 p.drawLine(QPointF(v, 0), QPointF(v, 0.68));
             p.fillRect(QRectF(0, 0.68, 1, 0.05), QColor(0xb9, 0x80, 0x4a));
             p.fillRect(QRectF(0, 0.73, 1, 0.27), QColor(0xe9, 0xd6, 0xb6));
             p.setPen(QPen(QColor(0xc4, 0xad, 0x88), 0.005));
             for (double x = 0.25; x < 1; x += 0.25)
                 p.drawLine(QPointF(x, 0.75), QPointF(x, 0.98));
         }},
        {QStringLiteral("classroom"),
         [](QPainter& p) {
             p.fillRect(QRectF(0, 0, 1, 0.78), QColor(0xf6, 0xee, 0xda));
             p.fillRect(QRectF(0.06, 0.08, 0.88, 0.5), QColor(0xa8, 0x7a, 0x4e));
             p.fillRect(QRectF(0.08, 0.1, 0.84, 0.46), QColor(0x3f, 0x6b, 0x50));
             p.setPen(QPen(QColor(255, 255, 255, 70), 0.006));
             p.drawLine(QPointF(0.14, 0.2), QPointF(0.4, 0.2));
             p.drawLine(QPointF(0.14, 0.27), QPointF(0.32, 0.27));
             floor(p, 0.78, QColor(0xcf, 0xa2, 0x74));
         }},
        {QStringLiteral("room"),
         [](QPainter& p) {
             p.fillRect(QRectF(0, 0, 1, 0.74), QColor(0xf7, 0xe9, 0xd6));
             p.setPen(QPen(QColor(0xee, 0xdb, 0xc2), 0.02));
             for (double x = 0.05; x < 1; x += 0.1)
                 p.drawLine(QPointF(x, 0), QPointF(x, 0.74));
             p.fillRect(QRectF(0, 0.72, 1, 0.03), QColor(0xff, 0xff, 0xff));
             floor(p, 0.75, QColor(0xc6, 0x98, 0x6a));
         }},
        {QStringLiteral("hospital"),
         [](QPainter& p) {
             p.fillRect(QRectF(0, 0, 1, 0.76), QColor(0xec, 0xf7, 0xf6));
             p.fillRect(QRectF(0, 0.5, 1, 0.05), QColor(0x7c, 0xc8, 0xc0));
             p.fillRect(QRectF(0.62, 0.1, 0.3, 0.26), QColor(0xcf, 0xe9, 0xfa));
             p.setPen(QPen(QColor(0xff, 0xff, 0xff), 0.012));
             p.drawLine(QPointF(0.77, 0.1), QPointF(0.77, 0.36));
             p.setPen(Qt::NoPen);
             floor(p, 0.76, QColor(0xd4, 0xe2, 0xe4));
         }},
        {QStringLiteral("stadium"),
         [](QPainter& p) {
             sky(p, 0.3);
             p.fillRect(QRectF(0, 0.2, 1, 0.26), QColor(0x9b, 0xa5, 0xb4));
             p.setPen(Qt::NoPen);
             const QColor crowd[] = {QColor(0xf2, 0x6b, 0x5b), QColor(0xff, 0xd1, 0x66),
                                     QColor(0x5b, 0x9b, 0xf2), QColor(0xff, 0xff, 0xff)};
             for (int row = 0; row < 4; ++row) {
                 for (int i = 0; i < 24; ++i) {
                     p.setBrush(crowd[(i * 7 + row * 3) % 4]);
                     p.drawEllipse(QPointF(0.02 + i * 0.042 + (row % 2) * 0.02, 0.24 + row * 0.06), 0.012,
                                   0.012);
                 }
             }
             vertical(p, 0.46, 1, QColor(0x5c, 0xb8, 0x5c), QColor(0x3f, 0x97, 0x45));
             for (int i = 0; i < 6; ++i)
                 p.fillRect(QRectF(0, 0.46 + i * 0.09, 1, 0.045), QColor(255, 255, 255, 18));
             p.setPen(QPen(QColor(255, 255, 255, 200), 0.008));
             p.setBrush(Qt::NoBrush);
             p.drawLine(QPointF(0.5, 0.46), QPointF(0.5, 1));
             p.drawEllipse(QPointF(0.5, 0.74), 0.12, 0.1);
         }},
    };
    return all;
}

} // namespace

bool paintSetting(QPainter& painter, const QString& setting, int size) {
    const auto found = drawings().find(setting);
    if (found == drawings().end())
        return false;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size, size);
    found->second(painter);
    painter.restore();
    return true;
}

} // namespace tarvolin::levels
