#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

// One day's value of a daily series.
struct StatRecord {
    qint64 day = 0;
    QDateTime date;
    qint64 value = 0;
};

// The player's lifetime counters and the series of levels completed per day.
class UserStatsManager {
public:
    static UserStatsManager& sharedInstance();
    void loadData();

    void incrementCreditsUsedBy(qint64 amount);
    void incrementSkipsUsed();
    void incrementCompletedLevelsForCurrentDay();
    qint64 getMaxCompletedLevelsInSingleDay() const;
    // The values of the last n days, oldest first, padded with leading zeros.
    QList<qint64> getCompletedLevelsForLastDays(qint64 n) const;

    qint64 creditsUsed() const { return m_creditsUsed; }
    qint64 skipsUsed() const { return m_skipsUsed; }
    const QList<StatRecord>& dailyCompletedLevels() const { return m_dailyCompletedLevels; }

    // The stored form of a series: a JSON array of {day, date, value}; nothing when the bytes are not one.
    static QByteArray archiveRecords(const QList<StatRecord>& records);
    static bool unarchiveRecords(const QByteArray& bytes, QList<StatRecord>* records);

private:
    void saveDailyLevels();

    qint64 m_creditsUsed = 0;
    qint64 m_skipsUsed = 0;
    QList<StatRecord> m_dailyCompletedLevels;
};
