#pragma once

#include <QString>

class QPainter;

namespace tarvolin::levels {

// Draws a setting (one of kSettings) over the whole square of `size` pixels: a simple, soft scene of its
// own, kept light enough that the symbols drawn over it stay clear. False for a name that is no setting.
bool paintSetting(QPainter& painter, const QString& setting, int size);

} // namespace tarvolin::levels
