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

    void updateGamecenterRankForCurrentDay(qint64 position);
    qint64 getBestRank() const;
    qint64 getLastWeekRank() const;
    qint64 getLast2DaysRank() const;
    QList<qint64> getGCRanksForLastDays(qint64 n) const;

    // The context number that travels with a score: level, achievements, active days, battles and gold used
    // in 17 decimal digits. Other players' copies read it, so its layout never changes.
    qint64 generateUserStatsContextNumber() const { return generateGeneralUserStatsContextNumber(); }
    qint64 generateGeneralUserStatsContextNumber() const;
    static QStringList breakContextNumber(qint64 number) { return breakGeneralContextNumber(number); }
    static QStringList breakGeneralContextNumber(qint64 number);
    // v in decimal, padded with leading zeros to the width; a longer one keeps its first `digits` characters.
    static QString createPaddingStringWithDigits(qint64 value, qint64 digits);

    qint64 totalBattles() const { return 0; }
    qint64 creditsUsed() const { return m_creditsUsed; }
    qint64 skipsUsed() const { return m_skipsUsed; }
    const QList<StatRecord>& dailyCompletedLevels() const { return m_dailyCompletedLevels; }
    const QList<StatRecord>& dailyGamecenterRanks() const { return m_dailyGamecenterRanks; }

    // The stored form of a series: a JSON array of {day, date, value}; nothing when the bytes are not one.
    static QByteArray archiveRecords(const QList<StatRecord>& records);
    static bool unarchiveRecords(const QByteArray& bytes, QList<StatRecord>* records);

private:
    void saveDailyLevels();
    void saveDailyRanks();
    static QList<qint64> lastDays(const QList<StatRecord>& list, qint64 n);

    qint64 m_creditsUsed = 0;
    qint64 m_skipsUsed = 0;
    QList<StatRecord> m_dailyCompletedLevels;
    QList<StatRecord> m_dailyGamecenterRanks;
};
