#pragma once

#include <QObject>
#include <QString>

// The game's table of texts by key ("notify.normalTitle", …), from the resource strings/Localizable.json.
// A missing key reads as the key itself, with a log line, so that a slip shows rather than hides.
class Localization {
public:
    static QString localizedString(const QString& key);
};

// The same table for the screens: `strings.text("a11y.back")` in QML.
class LocalizedStrings : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    Q_INVOKABLE QString text(const QString& key) const { return Localization::localizedString(key); }
};
