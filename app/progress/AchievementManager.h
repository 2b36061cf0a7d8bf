#pragma once

#include <QList>
#include <QString>
#include <QVariantList>

// One goal ("task") with its gold. Its calc string is both its identifier and its rule, as "days:5".
struct Achievement {
    bool isAchieved = false;
    bool isRewarded = false;
    QString id;
    QString desc;
    qint64 rewardCount = 0;
    QString calcString;

    // From a row {reward, calc string, text}.
    static Achievement initWithDescArray(const QVariantList& row);
};

// The tasks: which are met, which are collected. Met goals are marked only when the tasks screen opens
// (checkAndUpdateAchievements); the player collects the gold by tapping a met row.
class AchievementManager {
public:
    static inline const QString kAchievedKeyFormat = QStringLiteral("achv:%1");
    static inline const QString kRewardedKeyFormat = QStringLiteral("achv:%1:Rewarded");

    static AchievementManager& sharedInstance();
    void loadData();

    void checkAndUpdateAchievements();
    void markAchievementAsAchieved(Achievement& achievement);
    void markAchievementAsRewarded(Achievement& achievement);
    // The row's gold for a met, uncollected task: marks it collected and pays it. Any other row pays nothing
    // and returns 0.
    qint64 collectAchievementReward(const QString& id);

    qint64 getTotalAchievementsCount() const { return m_achievementList.size(); }
    qint64 getAchievedCount() const;
    bool isThereUnRewardedAchievement() const;

    // Whether the rule of a calc string holds now; an unknown key never holds.
    bool isCalcStringMet(const QString& calcString) const;

    bool isGameShared() const;
    bool isGameRated() const;
    bool isOurGamesDownloaded() const;
    bool checkActiveDaysReached(qint64 n) const;
    bool checkMaxLevelsPerDayReached(qint64 n) const;
    bool checkUsedCreditsReached(qint64 n) const;
    bool checkCurrentGameCenterRankReached(qint64 n) const;
    bool checkRankReached(qint64 n) const;
    bool checkDailyRoutinesReached(qint64 n) const;
    bool checkLevelsSharedReached(qint64 n) const;
    bool checkWonBattlesReached(qint64 n) const;
    bool checkWikiReadReached(qint64 n) const;
    bool checkFlyOeverPassedReached(qint64 n) const;
    bool checkTimeTraveledReached(qint64 n) const;
    // Power 0 is the whole mind, 1 to 5 memory, calculation, focus, sight and coordination; the threshold is
    // compared with the fraction as it is (1.0 is full).
    bool checkBrainPowerReachedPercentage(qint64 power, double threshold) const;

    const QList<Achievement>& achievementList() const { return m_achievementList; }
    void setAchievementList(QList<Achievement> list) { m_achievementList = std::move(list); }

private:
    QList<Achievement> m_achievementList;
};
