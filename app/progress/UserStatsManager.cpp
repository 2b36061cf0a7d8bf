#include "UserStatsManager.h"

#include "core/LevelManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/Util.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

UserStatsManager& UserStatsManager::sharedInstance() {
    return Shared<UserStatsManager>::instance();
}

void UserStatsManager::loadData() {
    auto& defaults = Platform::shared().userDefaults();
    m_creditsUsed = defaults.integerForKey(QStringLiteral("creditsUsed"));
    m_skipsUsed = defaults.integerForKey(QStringLiteral("skipsUsed"));
    const QByteArray levels = defaults.stringForKey(QStringLiteral("dailyLevels")).toUtf8();
    const QByteArray ranks = defaults.stringForKey(QStringLiteral("dailyRanks")).toUtf8();
    // An unreadable series loses both, together.
    if ((!levels.isEmpty() && !unarchiveRecords(levels, &m_dailyCompletedLevels)) ||
        (!ranks.isEmpty() && !unarchiveRecords(ranks, &m_dailyGamecenterRanks))) {
        qWarning("The stored daily series could not be read; they start anew.");
        m_dailyCompletedLevels.clear();
        m_dailyGamecenterRanks.clear();
    }
}

void UserStatsManager::incrementCreditsUsedBy(qint64 amount) {
    m_creditsUsed += amount;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_creditsUsed, QStringLiteral("creditsUsed"));
    defaults.synchronize();
}

void UserStatsManager::incrementSkipsUsed() {
    m_skipsUsed += 1;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_skipsUsed, QStringLiteral("skipsUsed"));
    defaults.synchronize();
}

void UserStatsManager::incrementCompletedLevelsForCurrentDay() {
    const QDateTime now = Platform::shared().scheduler().now();
    if (!m_dailyCompletedLevels.isEmpty() &&
        Util::isTwoDatesSameDay(m_dailyCompletedLevels.last().date, now)) {
        m_dailyCompletedLevels.last().value += 1;
    } else {
        // The record's day number is the count of active days, which the session bookkeeping will provide.
        m_dailyCompletedLevels.append({0, now, 1});
    }
    saveDailyLevels();
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

QList<qint64> UserStatsManager::getCompletedLevelsForLastDays(qint64 n) const {
    return lastDays(m_dailyCompletedLevels, n);
}

QList<qint64> UserStatsManager::getGCRanksForLastDays(qint64 n) const {
    return lastDays(m_dailyGamecenterRanks, n);
}

void UserStatsManager::updateGamecenterRankForCurrentDay(qint64 position) {
    const QDateTime now = Platform::shared().scheduler().now();
    if (!m_dailyGamecenterRanks.isEmpty() &&
        Util::isTwoDatesSameDay(m_dailyGamecenterRanks.last().date, now)) {
        m_dailyGamecenterRanks.last().value = position;
    } else {
        m_dailyGamecenterRanks.append({0, now, position});
    }
    saveDailyRanks();
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

void UserStatsManager::saveDailyRanks() {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setStringForKey(QString::fromUtf8(archiveRecords(m_dailyGamecenterRanks)),
                             QStringLiteral("dailyRanks"));
    defaults.synchronize();
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

qint64 UserStatsManager::generateGeneralUserStatsContextNumber() const {
    const qint64 level = LevelManager::sharedInstance().currentLevel() + 1;
    // No achievement is won yet, and active days are counted once sessions are; a day is the least there is.
    const qint64 achievements = 0 + 1;
    const qint64 activeDays = 1;
    const QString joined = createPaddingStringWithDigits(level, 4) +
                           createPaddingStringWithDigits(achievements, 2) +
                           createPaddingStringWithDigits(std::max<qint64>(activeDays, 1), 3) +
                           createPaddingStringWithDigits(totalBattles(), 3) +
                           createPaddingStringWithDigits(m_creditsUsed + 1, 5);
    return joined.toLongLong();
}

QStringList UserStatsManager::breakGeneralContextNumber(qint64 number) {
    QString s = QString::number(number);
    qsizetype length = s.size();
    if (length < 5) {
        return {};
    }
    if (length > 9) {
        if (length > 17) {
            return {};
        }
        qsizetype h = length - 13;
        if (h < 1) {
            s = QStringLiteral("00000000000000000");
            h = 4;
        }
        return {s.mid(0, h), s.mid(h, 2), s.mid(h + 2, 3), s.mid(h + 5, 3), s.mid(h + 8, 5)};
    }
    qsizetype h = length - 5;
    if (h < 1) {
        s = QStringLiteral("000000000");
        h = 4;
    }
    return {s.mid(0, h), s.mid(h, 2), s.mid(h + 2, 3)};
}

void UserStatsManager::saveDailyLevels() {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setStringForKey(QString::fromUtf8(archiveRecords(m_dailyCompletedLevels)),
                             QStringLiteral("dailyLevels"));
    defaults.synchronize();
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
        out.append({static_cast<qint64>(o.value("day").toDouble()), date,
                    static_cast<qint64>(o.value("value").toDouble())});
    }
    *records = std::move(out);
    return true;
}
