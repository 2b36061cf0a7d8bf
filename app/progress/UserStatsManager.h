#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

// One day's value of a daily series.
struct StatRecord {
    qint64 day = 0; // the count of active days when the record was made
    QDateTime date; // when it was made
    qint64 value = 0;

    static StatRecord initWithDayDateValue(qint64 day, const QDateTime& date, qint64 value) {
        return StatRecord{day, date, value};
    }
    bool operator==(const StatRecord&) const = default;
};

// The player's lifetime counters, the levels completed per day and the leaderboard position per day, and the
// context number that carries a summary of the player with every score.
class UserStatsManager {
public:
    static inline const QString kDailyLevelsKey = QStringLiteral("dailyLevels");
    static inline const QString kDailyRanksKey = QStringLiteral("dailyRanks");

    static UserStatsManager& sharedInstance();
    void loadData();

    void incrementCreditsUsedBy(qint64 amount);
    void incrementSkipsUsed();
    void incrementTotalExchangeSent(qint64 amount);
    void incrementTotalExchangeReceived(qint64 amount);
    // Each battle's outcome also moves the battle points by the ladder's amount for it.
    void incrementTotalWins();
    void incrementTotalDraws();
    void incrementTotalLosses();
    void modifyTotalBattlePoints(qint64 delta);
    void incrementWikipediaRead();
    void incrementTimeTraveled();
    void incrementFlyOverPassed();
    // Written, never read back at a start: the figure counts the trainings of this run.
    void incrementTrainingsTaken();

    void incrementCompletedLevelsForCurrentDay();
    qint64 getMaxCompletedLevelsInSingleDay() const;
    // The values of the last n days, oldest first, padded with leading zeros.
    QList<qint64> getCompletedLevelsForLastDays(qint64 n) const;
    QList<qint64> getCompletedLevelsForAllDays() const;
    QStringList getCompletedLevelsForAllDaysLabels() const;

    void updateGamecenterRankForCurrentDay(qint64 position);
    qint64 getBestRank() const;
    qint64 getLastWeekRank() const;
    qint64 getLast2DaysRank() const;
    QList<qint64> getGCRanksForLastDays(qint64 n) const;
    QList<qint64> getGCRanksForAllDays() const;
    QStringList getGCRanksForAllDaysLabels() const;

    // The context number that travels with a score: level, achievements, active days, battles and gold used
    // in 17 decimal digits. Other players' copies read it, so its layout never changes.
    qint64 generateUserStatsContextNumber() const { return generateGeneralUserStatsContextNumber(); }
    static QStringList breakContextNumber(qint64 number) { return breakGeneralContextNumber(number); }
    qint64 generateGeneralUserStatsContextNumber() const;
    // Five fields (level, achievements + 1, active days, battles, gold used + 1) from a long-form number,
    // three from a short one; nothing for a length that neither form has.
    static QStringList breakGeneralContextNumber(qint64 number);
    // Two other layouts of the same mechanism, kept for other builds of the game.
    qint64 generateUserStatsContextNumberWithTimeTravel() const;
    static QStringList breakContextNumberWithTimeTravel(qint64 number);
    qint64 generateUserStatsContextNumberWithTrialsUsed() const;
    static QStringList breakContextNumberWithTrialsUsed(qint64 number);
    // v in decimal, padded with leading zeros to the width; a longer one keeps its first `digits` characters.
    static QString createPaddingStringWithDigits(qint64 value, qint64 digits);

    qint64 creditsUsed() const { return m_creditsUsed; }
    qint64 skipsUsed() const { return m_skipsUsed; }
    qint64 totalExchangeSent() const { return m_totalExchangeSent; }
    qint64 totalExchangeReceived() const { return m_totalExchangeReceived; }
    qint64 totalWins() const { return m_totalWins; }
    qint64 totalDraws() const { return m_totalDraws; }
    qint64 totalLosses() const { return m_totalLosses; }
    qint64 totalBattles() const { return m_totalWins + m_totalDraws + m_totalLosses; }
    qint64 totalBattlePoints() const { return m_totalBattlePoints; }
    qint64 wikipediaRead() const { return m_wikipediaRead; }
    qint64 timeTraveled() const { return m_timeTraveled; }
    qint64 flyOverPassed() const { return m_flyOverPassed; }
    qint64 totalTrainingsTaken() const { return m_totalTrainingsTaken; }
    qint64 profileImgNum() const { return m_profileImgNum; }
    qint64 countryFlagNum() const { return m_countryFlagNum; }
    const QList<StatRecord>& dailyCompletedLevels() const { return m_dailyCompletedLevels; }
    const QList<StatRecord>& dailyGamecenterRanks() const { return m_dailyGamecenterRanks; }

    // Plain setters: they neither store nor announce.
    void setCreditsUsed(qint64 v) { m_creditsUsed = v; }
    void setSkipsUsed(qint64 v) { m_skipsUsed = v; }
    void setTotalExchangeSent(qint64 v) { m_totalExchangeSent = v; }
    void setTotalExchangeReceived(qint64 v) { m_totalExchangeReceived = v; }
    void setTotalWins(qint64 v) { m_totalWins = v; }
    void setTotalDraws(qint64 v) { m_totalDraws = v; }
    void setTotalLosses(qint64 v) { m_totalLosses = v; }
    // The battles are always the sum of wins, draws and losses; this figure is kept and never read.
    void setTotalBattles(qint64 v) { m_totalBattlesField = v; }
    void setTotalBattlePoints(qint64 v) { m_totalBattlePoints = v; }
    void setWikipediaRead(qint64 v) { m_wikipediaRead = v; }
    void setTimeTraveled(qint64 v) { m_timeTraveled = v; }
    void setFlyOverPassed(qint64 v) { m_flyOverPassed = v; }
    void setTotalTrainingsTaken(qint64 v) { m_totalTrainingsTaken = v; }
    void setProfileImgNum(qint64 v) { m_profileImgNum = v; }
    void setCountryFlagNum(qint64 v) { m_countryFlagNum = v; }
    void setDailyCompletedLevels(QList<StatRecord> v) { m_dailyCompletedLevels = std::move(v); }
    void setDailyGamecenterRanks(QList<StatRecord> v) { m_dailyGamecenterRanks = std::move(v); }

    // The stored form of a series: a JSON array of {day, date, value}; false when the bytes are not one.
    static QByteArray archiveRecords(const QList<StatRecord>& records);
    static bool unarchiveRecords(const QByteArray& bytes, QList<StatRecord>* records);

private:
    void addToCounter(qint64& field, const QString& key, qint64 amount);
    void saveSeries(const QList<StatRecord>& series, const QString& key);
    static void recordForToday(QList<StatRecord>& series, bool add, qint64 value);
    static QList<qint64> lastDays(const QList<StatRecord>& list, qint64 n);
    static QStringList dayLabels(const QList<StatRecord>& list);
    // The level, achievements and active-days fields that every layout begins with.
    QString headFields() const;
    // Whether a long of this platform holds a number of `digits` digits.
    static bool longHoldsDigits(qsizetype digits);
    struct Layout {
        qsizetype total;      // digits of the long form
        qsizetype tailWidth3; // width of the fourth field
        qsizetype tailWidth4; // width of the fifth field
        bool zeroFill;        // a too-short number reads as all zeros
    };
    static QStringList breakWithLayout(qint64 number, const Layout& layout);

    qint64 m_creditsUsed = 0;
    qint64 m_skipsUsed = 0;
    qint64 m_totalExchangeSent = 0;
    qint64 m_totalExchangeReceived = 0;
    qint64 m_totalWins = 0;
    qint64 m_totalDraws = 0;
    qint64 m_totalLosses = 0;
    qint64 m_totalBattlesField = 0;
    qint64 m_totalBattlePoints = 0;
    qint64 m_wikipediaRead = 0;
    qint64 m_timeTraveled = 0;
    qint64 m_flyOverPassed = 0;
    qint64 m_totalTrainingsTaken = 0;
    qint64 m_profileImgNum = 0;
    qint64 m_countryFlagNum = 0;
    QList<StatRecord> m_dailyCompletedLevels;
    QList<StatRecord> m_dailyGamecenterRanks;
};
