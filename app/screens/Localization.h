#pragma once

#include <QString>

// The game's table of texts by key ("notify.normalTitle", …), from the resource strings/Localizable.json.
// A missing key reads as the key itself, with a log line, so that a slip shows rather than hides.
class Localization {
public:
    static QString localizedString(const QString& key);
};
