#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <optional>

class UserDefaults;

// Posted when something that is saved changed and no other notification tells of it (the round's state, an
// achievement's flags, a statistic).
inline const QString NotificationProgressChanged = QStringLiteral("NotificationProgressChanged");

// The player's progress as it travels to the game service and back: the level and round, gold, skips and
// points, the round's state, the statistics and the achievements' flags. It is read from and written to the
// profile's settings under the keys the managers keep them in; its JSON form is schema 1 of docs/API.md.
struct ProgressDocument {
    static constexpr qint64 kSchemaVersion = 1;

    struct Flags {
        bool achieved = false;
        bool rewarded = false;
        bool operator==(const Flags&) const = default;
    };

    qint64 level = 0;
    qint64 gold = 0;
    qint64 skips = 0;
    qint64 points = 0;
    bool previousRound = false;
    qint64 travelRound = 0;
    qint64 travelLevel = 0;
    bool flyOverPassed = false;
    bool flipImagePassed = false;
    QList<qint64> rewardedLevels; // levels of earlier rounds that paid their second-time point
    // The lifetime counters by their name in the document.
    QMap<QString, qint64> stats;
    QJsonArray dailyLevels;
    QJsonArray dailyRanks;
    QMap<QString, Flags> achievements;

    bool operator==(const ProgressDocument&) const = default;

    // The names of the counters, each with the settings key it is kept under.
    static const QList<std::pair<QString, QString>>& statKeys();

    // The profile's progress as it stands.
    static ProgressDocument capture(const UserDefaults& defaults);
    // Replaces the profile's progress with this one, in one batch. The managers read it again with reload().
    void store(UserDefaults& defaults) const;
    // Makes the managers read their progress from the profile again and tells the screens.
    static void reload();

    QJsonObject toJson() const;
    // A document from the service; nothing, with the reason, when it is not one of this schema.
    static std::optional<ProgressDocument> fromJson(const QJsonValue& json, QString* error);

    // A profile with nothing worth keeping: no level solved, no points, no gold above the starting gold.
    bool isFresh() const;
    // Whether two documents hold the same level, balances and points (what the player would compare).
    bool sameStanding(const ProgressDocument& other) const;
};
