#pragma once

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QVariant>
#include <optional>

// The game's own web calls beside the game service's: the server's date, which the usage bonuses count days
// by so that moving the device's clock earns nothing, and the operator's settings record. Every call blocks
// its thread until the answer or the time limit, so none is ever made on the main thread.
class DataGetter {
public:
    using Settings = QHash<QString, QString>;

    static inline const QString kAppId = QStringLiteral("tarvolin");
    static inline const QString kSettingsPath = QStringLiteral("views/wallsettings.php?appId=%1");
    static constexpr int kTimeoutMs = 15000;

    // The settings record of the application: GET views/wallsettings.php?appId=ID on the service.
    static Settings getAppSettings(const QString& appId);
    // The body of a GET as UTF-8 text; empty when nothing came back.
    static QString callServiceWithUrl(const QString& url);
    // The body of a GET parsed as JSON; a null variant when nothing came back or it is not JSON.
    static QVariant parseJsonResponseWithUrl(const QString& url);
    // "key=value" items joined by ","; an item without exactly one "=" is left out; a later key wins.
    static Settings buildDictionary(const QString& text);
    // Records joined by "<br>", each read by buildDictionary; every part gives a map, an empty one too.
    static QList<Settings> buildArrayOfDics(const QString& text);

    // The service's date, from the Date header of a HEAD request on its root. Nothing when no answer came,
    // the status is not 200, or the header is missing or malformed: never the device's clock.
    static std::optional<QDateTime> getServerDate();
    // An HTTP date ("Sun, 22 Nov 2026 01:48:00 GMT"); names are English whatever the device's language.
    static std::optional<QDateTime> parseHttpDate(const QByteArray& value);

    // The address of a path on the service.
    static QString serviceUrl(const QString& pathAndQuery);
};
