#pragma once

#include "platform/Device.h"

#include <QRectF>
#include <array>

// Where the play screen's parts stand, in design units of the device class. The tray, the solution bar and
// the two help buttons are in the working view's coordinates; the others in the screen's.
struct BoardLayout {
    // The strip along the bottom that the banner takes; the working view ends above it.
    static constexpr double kBannerHeight = 50;

    QRectF screen;
    QRectF topBar;
    QRectF gameView;
    QRectF workView;
    QRectF solutionBar;
    std::array<QRectF, 12> tiles;
    QRectF revealButton;
    QRectF removeButton;

    static BoardLayout forDevice(Device::Class cls);
};
