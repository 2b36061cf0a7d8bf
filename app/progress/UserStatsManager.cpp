#include "UserStatsManager.h"

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
    const QByteArray stored = defaults.stringForKey(QStringLiteral("dailyLevels")).toUtf8();
    if (!stored.isEmpty() && !unarchiveRecords(stored, &m_dailyCompletedLevels)) {
        qWarning("The stored series of levels per day could not be read; it starts anew.");
        m_dailyCompletedLevels.clear();
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

QList<qint64> UserStatsManager::getCompletedLevelsForLastDays(qint64 n) const {
    QList<qint64> result;
    for (qint64 i = 0; i < n; ++i) {
        const qsizetype index = m_dailyCompletedLevels.size() - 1 - i;
        result.prepend(index >= 0 ? m_dailyCompletedLevels.at(index).value : 0);
    }
    return result;
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
