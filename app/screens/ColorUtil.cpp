#include "ColorUtil.h"

#include "platform/Random.h"

ColorUtil ColorUtil::initWithRGBColorColorType(std::array<float, 3> rgbColor, quint64 colorType) {
    ColorUtil c;
    c.rgbColor = rgbColor;
    c.colorType = colorType;
    return c;
}

std::optional<QColor> ColorUtil::getColorWithType(qint64 type) {
    switch (type) {
    case 0:
        return getColorWithRedGreenBlue(249, 195, 45);
    case 1:
        return getColorWithRedGreenBlue(20, 136, 20);
    case 2:
        return getColorWithRedGreenBlue(20, 116, 251);
    case 3:
        return getColorWithRedGreenBlue(234, 65, 68);
    default:
        return std::nullopt;
    }
}

QColor ColorUtil::getOrangeColor() {
    return *getColorWithType(0);
}
QColor ColorUtil::getGreenColor() {
    return *getColorWithType(1);
}
QColor ColorUtil::getBlueColor() {
    return *getColorWithType(2);
}
QColor ColorUtil::getRedColor() {
    return *getColorWithType(3);
}

QColor ColorUtil::getColorWithRedGreenBlue(int red, int green, int blue) {
    return getColorWithRedGreenBlueAlpha(red, green, blue, 1.0f);
}

QColor ColorUtil::getColorWithRedGreenBlueAlpha(int red, int green, int blue, float alpha) {
    return QColor::fromRgbF(red / 255.0f, green / 255.0f, blue / 255.0f, alpha);
}

QColor ColorUtil::getRandomColor() {
    return getColorWithRedGreenBlue(static_cast<int>(arc4random() % 256),
                                    static_cast<int>(arc4random() % 256),
                                    static_cast<int>(arc4random() % 256));
}

QColor ColorUtil::getRandomDarkColor() {
    return getColorWithRedGreenBlue(static_cast<int>(arc4random() % 100),
                                    static_cast<int>(arc4random() % 100),
                                    static_cast<int>(arc4random() % 100));
}
