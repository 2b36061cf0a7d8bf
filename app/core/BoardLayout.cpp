#include "BoardLayout.h"

namespace {
struct Metrics {
    double width, height, topBar, gameX, gameY, gameSide, workY, barX, barW, barH, tile, gap, rowGap,
        buttonsH;
};

BoardLayout build(const Metrics& m) {
    BoardLayout l;
    l.screen = {0, 0, m.width, m.height};
    l.topBar = {0, 0, m.width, m.topBar};
    l.gameView = {m.gameX, m.gameY, m.gameSide, m.gameSide};
    l.workView = {0, m.workY, m.width, m.height - m.workY};
    l.solutionBar = {m.barX, 0, m.barW, m.barH};
    const double trayWidth = 6 * m.tile + 5 * m.gap;
    const double trayX = (m.width - trayWidth) / 2;
    const double row1 = m.barH + m.rowGap;
    const double row2 = row1 + m.tile + m.gap;
    // Tags 101 to 112 run right to left, top row first.
    for (int i = 0; i < 12; ++i) {
        const int col = i % 6;
        const double x = trayX + trayWidth - m.tile - col * (m.tile + m.gap);
        l.tiles[static_cast<size_t>(i)] = {x, i < 6 ? row1 : row2, m.tile, m.tile};
    }
    const double buttonsY = row2 + m.tile + m.rowGap;
    const double half = (trayWidth - m.gap) / 2;
    l.revealButton = {trayX + half + m.gap, buttonsY, half, m.buttonsH};
    l.removeButton = {trayX, buttonsY, half, m.buttonsH};
    return l;
}
} // namespace

BoardLayout BoardLayout::forDevice(Device::Class cls) {
    switch (cls) {
    case Device::TallPhone:
        return build({375, 812, 96, 16, 104, 343, 462, 16, 343, 66, 52, 6, 14, 54});
    case Device::Tablet:
        return build({768, 1024, 72, 144, 84, 480, 584, 84, 600, 90, 82, 12, 22, 72});
    case Device::Phone:
        break;
    }
    return build({375, 667, 52, 29, 58, 317, 384, 16, 343, 60, 50, 7, 10, 46});
}
