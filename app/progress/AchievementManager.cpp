#include "AchievementManager.h"

#include "BrainPowersManager.h"
#include "CreditsManager.h"
#include "GameAdditions.h"
#include "ProgressDocument.h"
#include "RankManager.h"
#include "SessionManager.h"
#include "UserStatsManager.h"
#include "multiplayer/GameCenterManager.h"
#include "outreach/ShareManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <QHash>
#include <algorithm>

Achievement Achievement::initWithDescArray(const QVariantList& row) {
    Achievement a;
    a.rewardCount = row.value(0).toLongLong();
    a.desc = row.value(2).toString();
    a.calcString = row.value(1).toString();
    a.id = a.calcString;
    return a;
}

AchievementManager& AchievementManager::sharedInstance() {
    return Shared<AchievementManager>::instance();
}

void AchievementManager::loadData() {
    m_achievementList.clear();
    QList<QVariantList> table = GameAdditions::getGameAchievementsData();
    // Cheapest first; rows of equal gold keep the table's order.
    std::stable_sort(table.begin(), table.end(), [](const QVariantList& a, const QVariantList& b) {
        return a.value(0).toLongLong() < b.value(0).toLongLong();
    });
    const auto& defaults = Platform::shared().userDefaults();
    for (const QVariantList& row : std::as_const(table)) {
        Achievement a = Achievement::initWithDescArray(row);
        a.isAchieved = defaults.boolForKey(kAchievedKeyFormat.arg(a.id));
        a.isRewarded = defaults.boolForKey(kRewardedKeyFormat.arg(a.id));
        m_achievementList.append(a);
    }
}

bool AchievementManager::isCalcStringMet(const QString& calcString) const {
    using Test = bool (AchievementManager::*)(qint64) const;
    // The rules by key; a product's table picks its rows from them.
    static const QHash<QString, Test> tests{
        {"days", &AchievementManager::checkActiveDaysReached},
        {"levels", &AchievementManager::checkMaxLevelsPerDayReached},
        {"credits", &AchievementManager::checkUsedCreditsReached},
        {"gc", &AchievementManager::checkCurrentGameCenterRankReached},
        {"rank", &AchievementManager::checkRankReached},
        {"dailynotify", &AchievementManager::checkDailyRoutinesReached},
        {"shareLevel", &AchievementManager::checkLevelsSharedReached},
        {"battleWin", &AchievementManager::checkWonBattlesReached},
        {"wiki", &AchievementManager::checkWikiReadReached},
        {"fly", &AchievementManager::checkFlyOeverPassedReached},
        {"timeTravel", &AchievementManager::checkTimeTraveledReached},
    };
    static const QStringList powers{"brain", "mpower", "cpower", "fpower", "spower", "copower"};

    const QStringList parts = calcString.split(QLatin1Char(':'));
    const QString& key = parts.first();
    const qint64 n = parts.size() == 2 ? parts.at(1).toLongLong() : 0;
    if (key == QLatin1String("share")) {
        return isGameShared();
    }
    if (key == QLatin1String("rate")) {
        return isGameRated();
    }
    if (key == QLatin1String("ourgames")) {
        return isOurGamesDownloaded();
    }
    if (const auto it = tests.constFind(key); it != tests.constEnd()) {
        return (this->*(*it))(n);
    }
    const qsizetype power = powers.indexOf(key);
    return power >= 0 && checkBrainPowerReachedPercentage(power, static_cast<double>(n));
}

void AchievementManager::checkAndUpdateAchievements() {
    for (Achievement& a : m_achievementList) {
        if (!a.isAchieved && isCalcStringMet(a.calcString)) {
            markAchievementAsAchieved(a);
        }
    }
}

void AchievementManager::markAchievementAsAchieved(Achievement& achievement) {
    achievement.isAchieved = true;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, kAchievedKeyFormat.arg(achievement.id));
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(NotificationProgressChanged);
}

void AchievementManager::markAchievementAsRewarded(Achievement& achievement) {
    achievement.isRewarded = true;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, kRewardedKeyFormat.arg(achievement.id));
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(NotificationProgressChanged);
}

qint64 AchievementManager::collectAchievementReward(const QString& id) {
    for (Achievement& a : m_achievementList) {
        if (a.id != id) {
            continue;
        }
        if (!a.isAchieved || a.isRewarded) {
            return 0;
        }
        markAchievementAsRewarded(a);
        CreditsManager::sharedInstance().addCredits(a.rewardCount);
        return a.rewardCount;
    }
    return 0;
}

qint64 AchievementManager::getAchievedCount() const {
    return std::count_if(m_achievementList.begin(), m_achievementList.end(),
                         [](const Achievement& a) { return a.isAchieved; });
}

bool AchievementManager::isThereUnRewardedAchievement() const {
    return std::any_of(m_achievementList.begin(), m_achievementList.end(),
                       [](const Achievement& a) { return a.isAchieved && !a.isRewarded; });
}

bool AchievementManager::isGameShared() const {
    return ShareManager::sharedInstance().isAppShared();
}
bool AchievementManager::isGameRated() const {
    return ShareManager::sharedInstance().isAppRated();
}
bool AchievementManager::isOurGamesDownloaded() const {
    return ShareManager::sharedInstance().isOurAppsOpened();
}
bool AchievementManager::checkActiveDaysReached(qint64 n) const {
    return SessionManager::sharedInstance().acitveDays() >= n;
}
bool AchievementManager::checkMaxLevelsPerDayReached(qint64 n) const {
    return UserStatsManager::sharedInstance().getMaxCompletedLevelsInSingleDay() >= n;
}
bool AchievementManager::checkUsedCreditsReached(qint64 n) const {
    return UserStatsManager::sharedInstance().creditsUsed() >= n;
}
bool AchievementManager::checkCurrentGameCenterRankReached(qint64 n) const {
    const qint64 rank = GameCenterManager::sharedInstance().playerRank;
    // A brand-new player does not collect the whole family on the first day: three active days first.
    return rank > 0 && SessionManager::sharedInstance().acitveDays() > 2 && rank <= n;
}
bool AchievementManager::checkRankReached(qint64 n) const {
    return RankManager::sharedInstance().getCurrentRankIndex() >= n;
}
bool AchievementManager::checkDailyRoutinesReached(qint64 n) const {
    return UserStatsManager::sharedInstance().totalTrainingsTaken() >= n;
}
bool AchievementManager::checkLevelsSharedReached(qint64 n) const {
    return ShareManager::sharedInstance().levelsShared() >= n;
}
bool AchievementManager::checkWonBattlesReached(qint64 n) const {
    return UserStatsManager::sharedInstance().totalWins() >= n;
}
bool AchievementManager::checkWikiReadReached(qint64 n) const {
    return UserStatsManager::sharedInstance().wikipediaRead() >= n;
}
bool AchievementManager::checkFlyOeverPassedReached(qint64 n) const {
    return UserStatsManager::sharedInstance().flyOverPassed() >= n;
}
bool AchievementManager::checkTimeTraveledReached(qint64 n) const {
    return UserStatsManager::sharedInstance().timeTraveled() >= n;
}

bool AchievementManager::checkBrainPowerReachedPercentage(qint64 power, double threshold) const {
    const BrainPowersManager& brain = BrainPowersManager::sharedInstance();
    float figure = 0.0f;
    switch (power) {
    case 0:
        figure = brain.getTotalPercent();
        break;
    case 1:
        figure = brain.getMemoryPercent();
        break;
    case 2:
        figure = brain.getCalcPercent();
        break;
    case 3:
        figure = brain.getFocusPercent();
        break;
    case 4:
        figure = brain.getSightPercent();
        break;
    case 5:
        figure = brain.getCoordPercent();
        break;
    default:
        return false;
    }
    return figure >= static_cast<float>(threshold);
}
