#include "ProgressDocument.h"

#include "AchievementManager.h"
#include "CreditsManager.h"
#include "ScorePointsManager.h"
#include "SessionManager.h"
#include "UserStatsManager.h"
#include "core/LevelManager.h"
#include "core/RoundManager.h"
#include "outreach/ShareManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <QJsonDocument>

namespace {

const QString kLevelKey = QStringLiteral("currentLevel");
const QString kCreditsKey = QStringLiteral("credits");
const QString kSkipsKey = QStringLiteral("skips");
const QString kInitializedKey = QStringLiteral("initialized");
const QString kPointsKey = QStringLiteral("totalPoints");
const QString kPreviousRoundKey = QStringLiteral("isPreviousRound");
const QString kTravelRoundKey = QStringLiteral("travelRound");
const QString kTravelLevelKey = QStringLiteral("travelLevel");
const QString kRoundFlyOverKey = QStringLiteral("isFlyOverPassed");
const QString kFlipImageKey = QStringLiteral("isFlipImagePassed");
// The game has 41 rounds of 25 levels; a level beyond them never paid a second time.
constexpr qint64 kMaxRewardedLevel = 41 * 25;
constexpr qint64 kMaxCount = 1'000'000'000'000LL;
constexpr qsizetype kMaxItems = 2000;

QString levelRewardKey(qint64 level) {
    return QStringLiteral("reward2-level%1").arg(level);
}

// The achievements the game has: the table's identifiers.
QStringList achievementIds() {
    QStringList ids;
    for (const Achievement& a : AchievementManager::sharedInstance().achievementList()) {
        ids.append(a.id);
    }
    return ids;
}

QJsonArray storedSeries(const UserDefaults& defaults, const QString& key) {
    QList<StatRecord> records;
    if (!UserStatsManager::unarchiveRecords(defaults.stringForKey(key).toUtf8(), &records)) {
        return {};
    }
    return QJsonDocument::fromJson(UserStatsManager::archiveRecords(records)).array();
}

// Throws the reason a document is refused.
struct Refusal {
    QString reason;
};

qint64 count(const QJsonObject& o, const QString& key, const QString& where, qint64 min = 0) {
    const QJsonValue v = o.value(key);
    const QString name = where.isEmpty() ? key : where + '.' + key;
    if (!v.isDouble()) {
        throw Refusal{QStringLiteral("%1 is missing or not a number").arg(name)};
    }
    // The range first: a double beyond it has no whole number to become.
    const double d = v.toDouble();
    if (!(d >= static_cast<double>(min) && d <= static_cast<double>(kMaxCount)) ||
        d != static_cast<double>(static_cast<qint64>(d))) {
        throw Refusal{
            QStringLiteral("%1 is not a whole number from %2 to %3").arg(name).arg(min).arg(kMaxCount)};
    }
    return static_cast<qint64>(d);
}

bool flag(const QJsonObject& o, const QString& key, const QString& where) {
    const QJsonValue v = o.value(key);
    if (!v.isBool()) {
        throw Refusal{QStringLiteral("%1.%2 is missing or not true or false").arg(where, key)};
    }
    return v.toBool();
}

QJsonObject object(const QJsonValue& v, const QString& name) {
    if (!v.isObject()) {
        throw Refusal{QStringLiteral("%1 is missing or not an object").arg(name)};
    }
    return v.toObject();
}

QJsonArray series(const QJsonObject& stats, const QString& key) {
    const QJsonValue v = stats.value(key);
    QList<StatRecord> records;
    if (!v.isArray() || v.toArray().size() > kMaxItems ||
        !UserStatsManager::unarchiveRecords(QJsonDocument(v.toArray()).toJson(QJsonDocument::Compact),
                                            &records)) {
        throw Refusal{QStringLiteral("stats.%1 is not a list of daily records").arg(key)};
    }
    return v.toArray();
}

} // namespace

const QList<std::pair<QString, QString>>& ProgressDocument::statKeys() {
    static const QList<std::pair<QString, QString>> keys{
        {"creditsUsed", "creditsUsed"},
        {"skipsUsed", "skipsUsed"},
        {"exchangeSent", "totalExchangeSent"},
        {"exchangeReceived", "totalExchangeReceived"},
        {"wins", "totalWins"},
        {"draws", "totalDraws"},
        {"losses", "totalLosses"},
        {"battlePoints", "totalBattlePoints"},
        {"wikipediaRead", "wikiRead"},
        {"timeTraveled", "timeTraveled"},
        {"flyOverPassed", "flyOverPassed"},
        {"activeDays", SessionManager::kActiveDaysKey},
        {"activeSessions", SessionManager::kActiveSessionsKey},
        {"levelsShared", ShareManager::kLevelsSharedKey},
    };
    return keys;
}

ProgressDocument ProgressDocument::capture(const UserDefaults& d) {
    ProgressDocument p;
    p.level = d.integerForKey(kLevelKey);
    p.gold = d.boolForKey(kInitializedKey) ? d.integerForKey(kCreditsKey) : CreditsManager::kStartingCredits;
    p.skips = d.boolForKey(kInitializedKey) ? d.integerForKey(kSkipsKey) : CreditsManager::kStartingSkips;
    p.points = d.integerForKey(kPointsKey);
    p.previousRound = d.boolForKey(kPreviousRoundKey);
    p.travelRound = d.integerForKey(kTravelRoundKey);
    p.travelLevel = d.integerForKey(kTravelLevelKey);
    p.flyOverPassed = d.boolForKey(kRoundFlyOverKey);
    p.flipImagePassed = d.boolForKey(kFlipImageKey);
    for (qint64 level = 0; level < kMaxRewardedLevel; ++level) {
        if (d.boolForKey(levelRewardKey(level))) {
            p.rewardedLevels.append(level);
        }
    }
    for (const auto& [name, key] : statKeys()) {
        p.stats.insert(name, d.integerForKey(key));
    }
    p.dailyLevels = storedSeries(d, UserStatsManager::kDailyLevelsKey);
    p.dailyRanks = storedSeries(d, UserStatsManager::kDailyRanksKey);
    for (const QString& id : achievementIds()) {
        const Flags f{d.boolForKey(AchievementManager::kAchievedKeyFormat.arg(id)),
                      d.boolForKey(AchievementManager::kRewardedKeyFormat.arg(id))};
        if (f.achieved || f.rewarded) {
            p.achievements.insert(id, f);
        }
    }
    return p;
}

void ProgressDocument::store(UserDefaults& d) const {
    UserDefaults::Batch batch(d);
    d.setIntegerForKey(level, kLevelKey);
    d.setIntegerForKey(gold, kCreditsKey);
    d.setIntegerForKey(skips, kSkipsKey);
    d.setBoolForKey(true, kInitializedKey);
    d.setIntegerForKey(points, kPointsKey);
    d.setBoolForKey(previousRound, kPreviousRoundKey);
    d.setIntegerForKey(travelRound, kTravelRoundKey);
    d.setIntegerForKey(travelLevel, kTravelLevelKey);
    d.setBoolForKey(flyOverPassed, kRoundFlyOverKey);
    d.setBoolForKey(flipImagePassed, kFlipImageKey);
    for (qint64 l = 0; l < kMaxRewardedLevel; ++l) {
        if (rewardedLevels.contains(l)) {
            d.setBoolForKey(true, levelRewardKey(l));
        } else if (d.hasKey(levelRewardKey(l))) {
            d.removeObjectForKey(levelRewardKey(l));
        }
    }
    for (const auto& [name, key] : statKeys()) {
        d.setIntegerForKey(stats.value(name), key);
    }
    d.setStringForKey(QString::fromUtf8(QJsonDocument(dailyLevels).toJson(QJsonDocument::Compact)),
                      UserStatsManager::kDailyLevelsKey);
    d.setStringForKey(QString::fromUtf8(QJsonDocument(dailyRanks).toJson(QJsonDocument::Compact)),
                      UserStatsManager::kDailyRanksKey);
    for (const QString& id : achievementIds()) {
        const Flags f = achievements.value(id);
        d.setBoolForKey(f.achieved, AchievementManager::kAchievedKeyFormat.arg(id));
        d.setBoolForKey(f.rewarded, AchievementManager::kRewardedKeyFormat.arg(id));
    }
}

void ProgressDocument::reload() {
    LevelManager::sharedInstance().loadData();
    RoundManager::sharedInstance().loadData();
    CreditsManager::sharedInstance().loadData();
    ScorePointsManager::sharedInstance().loadData();
    // The statistics and sessions are set field by field: their loadData also counts a new day or a first
    // launch, which happened once already.
    const UserDefaults& d = Platform::shared().userDefaults();
    auto& stats = UserStatsManager::sharedInstance();
    const auto value = [&d](const char* name) {
        for (const auto& [field, key] : statKeys()) {
            if (field == QLatin1String(name)) {
                return d.integerForKey(key);
            }
        }
        return qint64(0);
    };
    stats.setCreditsUsed(value("creditsUsed"));
    stats.setSkipsUsed(value("skipsUsed"));
    stats.setTotalExchangeSent(value("exchangeSent"));
    stats.setTotalExchangeReceived(value("exchangeReceived"));
    stats.setTotalWins(value("wins"));
    stats.setTotalDraws(value("draws"));
    stats.setTotalLosses(value("losses"));
    stats.setTotalBattlePoints(value("battlePoints"));
    stats.setWikipediaRead(value("wikipediaRead"));
    stats.setTimeTraveled(value("timeTraveled"));
    stats.setFlyOverPassed(value("flyOverPassed"));
    QList<StatRecord> levels;
    QList<StatRecord> ranks;
    UserStatsManager::unarchiveRecords(d.stringForKey(UserStatsManager::kDailyLevelsKey).toUtf8(), &levels);
    UserStatsManager::unarchiveRecords(d.stringForKey(UserStatsManager::kDailyRanksKey).toUtf8(), &ranks);
    stats.setDailyCompletedLevels(levels);
    stats.setDailyGamecenterRanks(ranks);
    auto& sessions = SessionManager::sharedInstance();
    sessions.setAcitveDays(value("activeDays"));
    sessions.setActiveSessions(value("activeSessions"));
    ShareManager::sharedInstance().loadData();
    AchievementManager::sharedInstance().loadData();
    auto& center = Platform::shared().notificationCenter();
    for (const QString& name : {NotificationLevelChanged, NotificationCreditsChanged,
                                NotificationSkipsChanged, PointsChangedNotification}) {
        center.postNotificationName(name);
    }
}

QJsonObject ProgressDocument::toJson() const {
    QJsonArray levels;
    for (qint64 l : rewardedLevels) {
        levels.append(l);
    }
    QJsonObject statsJson;
    for (auto it = stats.begin(); it != stats.end(); ++it) {
        statsJson.insert(it.key(), it.value());
    }
    statsJson.insert(QStringLiteral("dailyLevels"), dailyLevels);
    statsJson.insert(QStringLiteral("dailyRanks"), dailyRanks);
    QJsonObject achievementsJson;
    for (auto it = achievements.begin(); it != achievements.end(); ++it) {
        achievementsJson.insert(it.key(),
                                QJsonObject{{"achieved", it->achieved}, {"rewarded", it->rewarded}});
    }
    return QJsonObject{
        {"schema", kSchemaVersion},
        {"level", level},
        {"gold", gold},
        {"skips", skips},
        {"points", points},
        {"round", QJsonObject{{"previousRound", previousRound},
                              {"travelRound", travelRound},
                              {"travelLevel", travelLevel},
                              {"flyOverPassed", flyOverPassed},
                              {"flipImagePassed", flipImagePassed}}},
        {"rewardedLevels", levels},
        {"stats", statsJson},
        {"achievements", achievementsJson},
    };
}

std::optional<ProgressDocument> ProgressDocument::fromJson(const QJsonValue& json, QString* error) {
    try {
        const QJsonObject o = object(json, QStringLiteral("the progress"));
        if (o.value("schema").toInteger(-1) != kSchemaVersion) {
            throw Refusal{QStringLiteral("the progress is of schema %1, not %2")
                              .arg(o.value("schema").toVariant().toString())
                              .arg(kSchemaVersion)};
        }
        ProgressDocument p;
        p.level = count(o, "level", {});
        p.gold = count(o, "gold", {});
        p.skips = count(o, "skips", {});
        p.points = count(o, "points", {});
        const QJsonObject round = object(o.value("round"), QStringLiteral("round"));
        p.previousRound = flag(round, "previousRound", "round");
        p.travelRound = count(round, "travelRound", "round");
        p.travelLevel = count(round, "travelLevel", "round");
        p.flyOverPassed = flag(round, "flyOverPassed", "round");
        p.flipImagePassed = flag(round, "flipImagePassed", "round");
        const QJsonValue levels = o.value("rewardedLevels");
        if (!levels.isArray() || levels.toArray().size() > kMaxItems) {
            throw Refusal{QStringLiteral("rewardedLevels is not a list of levels")};
        }
        for (const QJsonValue& l : levels.toArray()) {
            const double d = l.toDouble(-1);
            if (!l.isDouble() || !(d >= 0 && d <= static_cast<double>(kMaxCount)) ||
                d != static_cast<double>(static_cast<qint64>(d))) {
                throw Refusal{QStringLiteral("rewardedLevels holds something other than a level")};
            }
            p.rewardedLevels.append(static_cast<qint64>(d));
        }
        const QJsonObject stats = object(o.value("stats"), QStringLiteral("stats"));
        for (const auto& entry : statKeys()) {
            const QString& name = entry.first;
            p.stats.insert(name, count(stats, name, QStringLiteral("stats"),
                                       name == QLatin1String("battlePoints") ? -kMaxCount : 0));
        }
        p.dailyLevels = series(stats, QStringLiteral("dailyLevels"));
        p.dailyRanks = series(stats, QStringLiteral("dailyRanks"));
        const QJsonObject achievements = object(o.value("achievements"), QStringLiteral("achievements"));
        if (achievements.size() > kMaxItems) {
            throw Refusal{QStringLiteral("achievements has too many items")};
        }
        for (auto it = achievements.begin(); it != achievements.end(); ++it) {
            const QString where = QStringLiteral("achievements.") + it.key();
            const QJsonObject f = object(it.value(), where);
            p.achievements.insert(it.key(), Flags{flag(f, "achieved", where), flag(f, "rewarded", where)});
        }
        return p;
    } catch (const Refusal& r) {
        if (error) {
            *error = r.reason;
        }
        return std::nullopt;
    }
}

bool ProgressDocument::isFresh() const {
    return level == 0 && points == 0 && gold <= CreditsManager::kStartingCredits;
}

bool ProgressDocument::sameStanding(const ProgressDocument& other) const {
    return level == other.level && gold == other.gold && skips == other.skips && points == other.points;
}
