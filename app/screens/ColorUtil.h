#pragma once

#include <QColor>
#include <array>
#include <optional>

// The game's named colours and colour helpers; channels are given in units of 1/255.
class ColorUtil {
public:
    static ColorUtil initWithRGBColorColorType(std::array<float, 3> rgbColor, quint64 colorType);

    std::array<float, 3> rgbColor{0, 0, 0};
    quint64 colorType = 0;

    // 0 orange, 1 green, 2 blue, 3 red; anything else has no colour.
    static std::optional<QColor> getColorWithType(qint64 type);
    static QColor getOrangeColor();
    static QColor getGreenColor();
    static QColor getBlueColor();
    static QColor getRedColor();
    static QColor getColorWithRedGreenBlue(int red, int green, int blue);
    static QColor getColorWithRedGreenBlueAlpha(int red, int green, int blue, float alpha);
    static QColor getRandomColor();
    static QColor getRandomDarkColor();
};
