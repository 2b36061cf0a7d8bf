#include "UserStatsManager.h"

#include "AchievementManager.h"
#include "ProgressDocument.h"
#include "RankManager.h"
#include "SessionManager.h"
#include "core/LevelManager.h"
#include "multiplayer/GameCenterManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/Util.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <limits>

namespace {
const QString kCreditsUsedKey = QStringLiteral("creditsUsed");
const QString kSkipsUsedKey = QStringLiteral("skipsUsed");
const QString kExchangeSentKey = QStringLiteral("totalExchangeSent");
const QString kExchangeReceivedKey = QStringLiteral("totalExchangeReceived");
const QString kWinsKey = QStringLiteral("totalWins");
const QString kDrawsKey = QStringLiteral("totalDraws");
const QString kLossesKey = QStringLiteral("totalLosses");
const QString kBattlePointsKey = QStringLiteral("totalBattlePoints");
const QString kWikiKey = QStringLiteral("wikiRead");
const QString kTimeTraveledKey = QStringLiteral("timeTraveled");
const QString kFlyOverKey = QStringLiteral("flyOverPassed");
const QString kTrainingsKey = QStringLiteral("trainingsTaken");
} // namespace

UserStatsManager& UserStatsManager::sharedInstance() {
    return Shared<UserStatsManager>::instance();
}

void UserStatsManager::loadData() {
    auto& defaults = Platform::shared().userDefaults();
    m_creditsUsed = defaults.integerForKey(kCreditsUsedKey);
    m_skipsUsed = defaults.integerForKey(kSkipsUsedKey);
    m_totalExchangeSent = defaults.integerForKey(kExchangeSentKey);
    m_totalExchangeReceived = defaults.integerForKey(kExchangeReceivedKey);
    m_totalWins = defaults.integerForKey(kWinsKey);
    m_totalDraws = defaults.integerForKey(kDrawsKey);
    m_totalLosses = defaults.integerForKey(kLossesKey);
    m_totalBattlePoints = defaults.integerForKey(kBattlePointsKey);
    m_wikipediaRead = defaults.integerForKey(kWikiKey);
    m_timeTraveled = defaults.integerForKey(kTimeTraveledKey);
    m_flyOverPassed = defaults.integerForKey(kFlyOverKey);
    // "trainingsTaken" is not read back: the figure starts at 0 with every run.

    m_dailyCompletedLevels.clear();
    m_dailyGamecenterRanks.clear();
    const QByteArray levels = defaults.stringForKey(kDailyLevelsKey).toUtf8();
    const QByteArray ranks = defaults.stringForKey(kDailyRanksKey).toUtf8();
    // An unreadable series loses both, together.
    if ((!levels.isEmpty() && !unarchiveRecords(levels, &m_dailyCompletedLevels)) ||
        (!ranks.isEmpty() && !unarchiveRecords(ranks, &m_dailyGamecenterRanks))) {
        qWarning("The stored daily series could not be read; they start anew.");
        m_dailyCompletedLevels.clear();
        m_dailyGamecenterRanks.clear();
    }

    const SessionManager& sessions = SessionManager::sharedInstance();
    if (sessions.isNewActiveDay()) {
        const QDateTime now = Platform::shared().scheduler().now();
        m_dailyCompletedLevels.append({sessions.acitveDays(), now, 0});
        saveSeries(m_dailyCompletedLevels, kDailyLevelsKey);
        const GameCenterManager& gc = GameCenterManager::sharedInstance();
        if (gc.isPlayerScoreLoaded) {
            m_dailyGamecenterRanks.append({sessions.acitveDays(), now, gc.playerRank});
            saveSeries(m_dailyGamecenterRanks, kDailyRanksKey);
        }
    }
}

void UserStatsManager::addToCounter(qint64& field, const QString& key, qint64 amount) {
    field += amount;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(field, key);
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(NotificationProgressChanged);
}

void UserStatsManager::incrementCreditsUsedBy(qint64 amount) {
    addToCounter(m_creditsUsed, kCreditsUsedKey, amount);
}
void UserStatsManager::incrementSkipsUsed() {
    addToCounter(m_skipsUsed, kSkipsUsedKey, 1);
}
void UserStatsManager::incrementTotalExchangeSent(qint64 amount) {
    addToCounter(m_totalExchangeSent, kExchangeSentKey, amount);
}
void UserStatsManager::incrementTotalExchangeReceived(qint64 amount) {
    addToCounter(m_totalExchangeReceived, kExchangeReceivedKey, amount);
}
void UserStatsManager::incrementTotalWins() {
    addToCounter(m_totalWins, kWinsKey, 1);
    modifyTotalBattlePoints(RankManager::sharedInstance().getBattleWinPoints());
}
void UserStatsManager::incrementTotalDraws() {
    addToCounter(m_totalDraws, kDrawsKey, 1);
    modifyTotalBattlePoints(RankManager::sharedInstance().getBattleDrawPoints());
}
void UserStatsManager::incrementTotalLosses() {
    addToCounter(m_totalLosses, kLossesKey, 1);
    modifyTotalBattlePoints(RankManager::sharedInstance().getBattleLossPoints());
}
void UserStatsManager::modifyTotalBattlePoints(qint64 delta) {
    addToCounter(m_totalBattlePoints, kBattlePointsKey, delta);
}
void UserStatsManager::incrementWikipediaRead() {
    addToCounter(m_wikipediaRead, kWikiKey, 1);
}
void UserStatsManager::incrementTimeTraveled() {
    addToCounter(m_timeTraveled, kTimeTraveledKey, 1);
}
void UserStatsManager::incrementFlyOverPassed() {
    addToCounter(m_flyOverPassed, kFlyOverKey, 1);
}
void UserStatsManager::incrementTrainingsTaken() {
    addToCounter(m_totalTrainingsTaken, kTrainingsKey, 1);
}

void UserStatsManager::recordForToday(QList<StatRecord>& series, bool add, qint64 value) {
    const QDateTime now = Platform::shared().scheduler().now();
    if (!series.isEmpty() && Util::isTwoDatesSameDay(series.last().date, now)) {
        series.last().value = add ? series.last().value + value : value;
    } else {
        series.append({SessionManager::sharedInstance().acitveDays(), now, value});
    }
}

void UserStatsManager::incrementCompletedLevelsForCurrentDay() {
    recordForToday(m_dailyCompletedLevels, true, 1);
    saveSeries(m_dailyCompletedLevels, kDailyLevelsKey);
}

void UserStatsManager::updateGamecenterRankForCurrentDay(qint64 position) {
    recordForToday(m_dailyGamecenterRanks, false, position);
    saveSeries(m_dailyGamecenterRanks, kDailyRanksKey);
}

qint64 UserStatsManager::getMaxCompletedLevelsInSingleDay() const {
    qint64 best = 0;
    for (const auto& r : m_dailyCompletedLevels) {
        best = std::max(best, r.value);
    }
    return best;
}

QList<qint64> UserStatsManager::lastDays(const QList<StatRecord>& list, qint64 n) {
    QList<qint64> result;
    for (qint64 i = 0; i < n; ++i) {
        const qsizetype index = list.size() - 1 - i;
        result.prepend(index >= 0 ? list.at(index).value : 0);
    }
    return result;
}

QStringList UserStatsManager::dayLabels(const QList<StatRecord>& list) {
    QStringList labels;
    const qsizetype n = std::max<qsizetype>(list.size(), 10);
    for (qsizetype i = 0; i < n; ++i) {
        labels.append(QString::number(i));
    }
    return labels;
}

QList<qint64> UserStatsManager::getCompletedLevelsForLastDays(qint64 n) const {
    return lastDays(m_dailyCompletedLevels, n);
}
QList<qint64> UserStatsManager::getCompletedLevelsForAllDays() const {
    return lastDays(m_dailyCompletedLevels, std::max<qint64>(m_dailyCompletedLevels.size(), 10));
}
QStringList UserStatsManager::getCompletedLevelsForAllDaysLabels() const {
    return dayLabels(m_dailyCompletedLevels);
}
QList<qint64> UserStatsManager::getGCRanksForLastDays(qint64 n) const {
    return lastDays(m_dailyGamecenterRanks, n);
}
QList<qint64> UserStatsManager::getGCRanksForAllDays() const {
    return lastDays(m_dailyGamecenterRanks, std::max<qint64>(m_dailyGamecenterRanks.size(), 10));
}
QStringList UserStatsManager::getGCRanksForAllDaysLabels() const {
    return dayLabels(m_dailyGamecenterRanks);
}

qint64 UserStatsManager::getBestRank() const {
    if (m_dailyGamecenterRanks.isEmpty()) {
        return 0;
    }
    qint64 best = m_dailyGamecenterRanks.first().value;
    for (const auto& r : m_dailyGamecenterRanks) {
        best = std::min(best, r.value);
    }
    return best;
}

qint64 UserStatsManager::getLastWeekRank() const {
    const qsizetype n = m_dailyGamecenterRanks.size();
    return n < 7 ? 0 : m_dailyGamecenterRanks.at(n - 7).value;
}

qint64 UserStatsManager::getLast2DaysRank() const {
    const qsizetype n = m_dailyGamecenterRanks.size();
    return n < 2 ? 0 : m_dailyGamecenterRanks.at(n - 2).value;
}

QString UserStatsManager::createPaddingStringWithDigits(qint64 value, qint64 digits) {
    QString s = QString::number(value);
    while (s.size() < digits) {
        s = QStringLiteral("0%1").arg(s);
    }
    if (s.size() > digits) {
        s = s.left(digits);
    }
    return s;
}

bool UserStatsManager::longHoldsDigits(qsizetype digits) {
    return QString::number(std::numeric_limits<long>::max()).size() >= digits;
}

QString UserStatsManager::headFields() const {
    const qint64 level = LevelManager::sharedInstance().currentLevel() + 1;
    const qint64 achievements = AchievementManager::sharedInstance().getAchievedCount() + 1;
    const qint64 activeDays = std::max<qint64>(SessionManager::sharedInstance().acitveDays(), 1);
    return createPaddingStringWithDigits(level, 4) + createPaddingStringWithDigits(achievements, 2) +
           createPaddingStringWithDigits(activeDays, 3);
}

qint64 UserStatsManager::generateGeneralUserStatsContextNumber() const {
    QString joined = headFields();
    if (longHoldsDigits(18)) {
        joined += createPaddingStringWithDigits(totalBattles(), 3) +
                  createPaddingStringWithDigits(m_creditsUsed + 1, 5);
    }
    return joined.toLongLong();
}

qint64 UserStatsManager::generateUserStatsContextNumberWithTimeTravel() const {
    QString joined = headFields();
    if (longHoldsDigits(15)) {
        joined += createPaddingStringWithDigits(m_timeTraveled, 2) +
                  createPaddingStringWithDigits(totalBattles(), 3);
    }
    return joined.toLongLong();
}

qint64 UserStatsManager::generateUserStatsContextNumberWithTrialsUsed() const {
    QString joined = headFields();
    if (longHoldsDigits(17)) {
        joined += createPaddingStringWithDigits(m_totalTrainingsTaken, 3) +
                  createPaddingStringWithDigits(m_creditsUsed + 1, 4);
    }
    return joined.toLongLong();
}

QStringList UserStatsManager::breakWithLayout(qint64 number, const Layout& layout) {
    QString s = QString::number(number);
    const qsizetype length = s.size();
    if (length < 5) {
        return {};
    }
    if (length > 9) {
        if (length > layout.total) {
            return {};
        }
        qsizetype h = length - (layout.total - 4);
        if (h < 1 && layout.zeroFill) {
            s = QString(layout.total, QLatin1Char('0'));
            h = 4;
        }
        if (h < 0) {
            return {};
        }
        const qsizetype w3 = layout.tailWidth3;
        return {s.mid(0, h), s.mid(h, 2), s.mid(h + 2, 3), s.mid(h + 5, w3),
                s.mid(h + 5 + w3, layout.tailWidth4)};
    }
    qsizetype h = length - 5;
    if (h < 1 && layout.zeroFill) {
        s = QStringLiteral("000000000");
        h = 4;
    }
    return {s.mid(0, h), s.mid(h, 2), s.mid(h + 2, 3)};
}

QStringList UserStatsManager::breakGeneralContextNumber(qint64 number) {
    return breakWithLayout(number, {17, 3, 5, true});
}
QStringList UserStatsManager::breakContextNumberWithTimeTravel(qint64 number) {
    return breakWithLayout(number, {14, 2, 3, false});
}
QStringList UserStatsManager::breakContextNumberWithTrialsUsed(qint64 number) {
    return breakWithLayout(number, {16, 3, 4, false});
}

void UserStatsManager::saveSeries(const QList<StatRecord>& series, const QString& key) {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setStringForKey(QString::fromUtf8(archiveRecords(series)), key);
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(NotificationProgressChanged);
}

QByteArray UserStatsManager::archiveRecords(const QList<StatRecord>& records) {
    QJsonArray list;
    for (const auto& r : records) {
        list.append(QJsonObject{
            {"day", r.day}, {"date", r.date.toUTC().toString(Qt::ISODateWithMs)}, {"value", r.value}});
    }
    return QJsonDocument(list).toJson(QJsonDocument::Compact);
}

bool UserStatsManager::unarchiveRecords(const QByteArray& bytes, QList<StatRecord>* records) {
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray()) {
        return false;
    }
    QList<StatRecord> out;
    for (const QJsonValue& v : doc.array()) {
        const QJsonObject o = v.toObject();
        const QDateTime date = QDateTime::fromString(o.value("date").toString(), Qt::ISODateWithMs);
        if (!v.isObject() || !o.value("day").isDouble() || !o.value("value").isDouble() || !date.isValid()) {
            return false;
        }
        out.append({o.value("day").toInteger(), date, o.value("value").toInteger()});
    }
    *records = std::move(out);
    return true;
}
