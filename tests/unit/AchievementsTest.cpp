// The tasks: every rule at its threshold and one below, the two stored flags, collecting the gold; and the
// brain powers' calculator.
#include "TestPlatform.h"
#include "core/LevelManager.h"
#include "multiplayer/GameCenterManager.h"
#include "outreach/ShareManager.h"
#include "progress/AchievementManager.h"
#include "progress/BrainPowersManager.h"
#include "progress/CreditsManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"

#include <gtest/gtest.h>

namespace {

class Tasks : public ::testing::Test {
protected:
    const Achievement& find(const QString& id) {
        for (const Achievement& a : AchievementManager::sharedInstance().achievementList()) {
            if (a.id == id) {
                return a;
            }
        }
        static Achievement none;
        ADD_FAILURE() << "no task " << id.toStdString();
        return none;
    }
    // The tasks that the check marks now.
    QStringList newlyMet() {
        auto& manager = AchievementManager::sharedInstance();
        QStringList before;
        for (const Achievement& a : manager.achievementList()) {
            if (a.isAchieved) {
                before << a.id;
            }
        }
        manager.checkAndUpdateAchievements();
        QStringList met;
        for (const Achievement& a : manager.achievementList()) {
            if (a.isAchieved && !before.contains(a.id)) {
                met << a.id;
            }
        }
        return met;
    }

    TestPlatform platform;
};

TEST_F(Tasks, DaysLevelsRanksAndSharesAtTheirThresholds) {
    auto& sessions = SessionManager::sharedInstance();
    sessions.setAcitveDays(4);
    EXPECT_EQ(newlyMet(), QStringList{"days:1"});
    sessions.setAcitveDays(5);
    EXPECT_EQ(newlyMet(), QStringList{"days:5"});

    auto& stats = UserStatsManager::sharedInstance();
    for (int i = 0; i < 24; ++i) {
        stats.incrementCompletedLevelsForCurrentDay();
    }
    EXPECT_TRUE(newlyMet().isEmpty());
    stats.incrementCompletedLevelsForCurrentDay();
    EXPECT_EQ(newlyMet(), QStringList{"levels:25"});

    LevelManager::sharedInstance().setCurrentLevel(2 * 25 - 1); // round index 1
    EXPECT_TRUE(newlyMet().isEmpty());
    LevelManager::sharedInstance().setCurrentLevel(2 * 25); // round index 2
    EXPECT_EQ(newlyMet(), QStringList{"rank:2"});

    auto& share = ShareManager::sharedInstance();
    for (int i = 0; i < 5; ++i) {
        share.incrementLevelsShared();
    }
    EXPECT_EQ(newlyMet(), QStringList{"shareLevel:1"});
    share.incrementLevelsShared();
    EXPECT_EQ(newlyMet(), QStringList{"shareLevel:6"});
    share.registerAppIsShared();
    share.registerAppIsRated();
    EXPECT_EQ(newlyMet(), (QStringList{"share", "rate"}));
    share.registerOurAppsOpened();
    EXPECT_EQ(newlyMet(), QStringList{"ourgames"});
}

TEST_F(Tasks, TheLeaderboardFamilyWaitsForAPlaceAndThreeActiveDays) {
    auto& gc = GameCenterManager::sharedInstance();
    auto& sessions = SessionManager::sharedInstance();
    gc.playerRank = 3;
    sessions.setAcitveDays(2);
    EXPECT_EQ(newlyMet(), QStringList{"days:1"});
    sessions.setAcitveDays(3);
    EXPECT_EQ(newlyMet(), (QStringList{"gc:5000", "gc:2000", "gc:1000", "gc:500", "gc:200", "gc:100", "gc:50",
                                       "gc:10", "gc:5"}));
    gc.playerRank = 1;
    EXPECT_EQ(newlyMet(), QStringList{"gc:1"});

    // No place known meets nothing, however low the threshold; a met task stays met.
    gc.playerRank = 0;
    auto& manager = AchievementManager::sharedInstance();
    EXPECT_FALSE(manager.checkCurrentGameCenterRankReached(5000));
    manager.checkAndUpdateAchievements();
    EXPECT_TRUE(find("gc:1").isAchieved);
}

TEST_F(Tasks, FlagsAreStoredAndTheGoldIsCollectedOnce) {
    SessionManager::sharedInstance().setAcitveDays(1);
    auto& manager = AchievementManager::sharedInstance();
    manager.checkAndUpdateAchievements();
    EXPECT_TRUE(platform.defaults().boolForKey("achv:days:1"));
    EXPECT_FALSE(platform.defaults().hasKey("achv:days:1:Rewarded"));
    EXPECT_TRUE(manager.isThereUnRewardedAchievement());
    EXPECT_EQ(manager.getAchievedCount(), 1);

    platform.restart();
    auto& again = AchievementManager::sharedInstance();
    EXPECT_TRUE(find("days:1").isAchieved);
    const qint64 gold = CreditsManager::sharedInstance().currentCredits();
    EXPECT_EQ(again.collectAchievementReward("days:5"), 0); // not met
    EXPECT_EQ(again.collectAchievementReward("days:1"), 50);
    EXPECT_EQ(again.collectAchievementReward("days:1"), 0);
    EXPECT_EQ(again.collectAchievementReward("nothing"), 0);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), gold + 50);
    EXPECT_TRUE(platform.defaults().boolForKey("achv:days:1:Rewarded"));
    EXPECT_FALSE(again.isThereUnRewardedAchievement());

    // The count travels in the context number, one higher.
    const QStringList fields = UserStatsManager::breakContextNumber(
        UserStatsManager::sharedInstance().generateUserStatsContextNumber());
    EXPECT_EQ(fields.value(1), "02");
}

TEST_F(Tasks, TheGrammarOfCalcStrings) {
    auto& manager = AchievementManager::sharedInstance();
    EXPECT_FALSE(manager.isCalcStringMet("unknown:0"));
    EXPECT_FALSE(manager.isCalcStringMet(""));
    // No threshold, or two colons, is a threshold of 0: met at once.
    EXPECT_TRUE(manager.isCalcStringMet("days"));
    EXPECT_TRUE(manager.isCalcStringMet("days:90:1"));
    EXPECT_FALSE(manager.isCalcStringMet("days:90"));
    EXPECT_FALSE(manager.isCalcStringMet("share:0"));

    auto& stats = UserStatsManager::sharedInstance();
    stats.incrementCreditsUsedBy(100);
    EXPECT_TRUE(manager.isCalcStringMet("credits:100"));
    EXPECT_FALSE(manager.isCalcStringMet("credits:101"));
    stats.incrementTotalWins();
    EXPECT_TRUE(manager.isCalcStringMet("battleWin:1"));
    EXPECT_FALSE(manager.isCalcStringMet("battleWin:2"));
    stats.incrementWikipediaRead();
    stats.incrementFlyOverPassed();
    stats.incrementTimeTraveled();
    stats.incrementTrainingsTaken();
    for (const char* key : {"wiki", "fly", "timeTravel", "dailynotify"}) {
        EXPECT_TRUE(manager.isCalcStringMet(QString(key) + ":1")) << key;
        EXPECT_FALSE(manager.isCalcStringMet(QString(key) + ":2")) << key;
    }

    // Brain powers compare the fraction itself with the threshold.
    auto& brain = BrainPowersManager::sharedInstance();
    brain.addMemoryPoints(brain.getMaxMemoryPoints());
    EXPECT_TRUE(manager.isCalcStringMet("mpower:1"));
    EXPECT_FALSE(manager.isCalcStringMet("mpower:2"));
    EXPECT_FALSE(manager.isCalcStringMet("brain:1"));
    EXPECT_TRUE(manager.checkBrainPowerReachedPercentage(0, 0.1));
    EXPECT_FALSE(manager.checkBrainPowerReachedPercentage(6, 0.0));
}

TEST(BrainPowers, RewardsRiseWithSpeedInPlaceAndFallWithTrials) {
    TestPlatform platform;
    using P = BrainPowersManager::PointsArray;
    const auto reward = &BrainPowersManager::getRewardedPointsArrayForGameInRoundWithTrialsAndSpeedPercent;
    EXPECT_EQ(reward(0, 10, 3, 50), (P{0, 0, 1, 0, 0}));
    EXPECT_EQ(reward(0, 0, 1, 80), BrainPowersManager::getMaxPointsArrayForGameInRound(0, 0));
    EXPECT_EQ(reward(2, 0, 1, 0), (P{0, 2, 1, 0, 0}));
    // 70 becomes 90, then 100 and 100.
    EXPECT_EQ(reward(12, 25, 1, 70), (P{0, 0, 8, 9, 9}));
    EXPECT_EQ(reward(3, 40, 40, 100), (P{0, 0, 0, 0, 0}));
}

TEST(BrainPowers, PointsAndTheirShareOfTheWhole) {
    TestPlatform platform;
    // The total shares its key with the score points, each keeping its own figure.
    ScorePointsManager::sharedInstance().addPoints(40);
    platform.restart();
    auto& b = BrainPowersManager::sharedInstance();
    EXPECT_EQ(b.totalPoints(), 40);
    b.setTotalPoints(0);

    const BrainPowersManager::PointsArray array{3, -2, 5, 0, 7};
    b.addRewardedPointsArray(array);
    EXPECT_EQ(b.totalPoints(), 13);
    EXPECT_EQ(b.calcPoints(), -2);
    EXPECT_FLOAT_EQ(b.getCalcPercent(), -2.0f / 2840.0f);
    EXPECT_FLOAT_EQ(b.getTotalPercent(), 13.0f / 32720.0f);
    b.addCalcPoints(2840 * 2);
    EXPECT_GT(b.getCalcPercent(), 1.0f);
    b.addCalcPoints(-2840 * 2);
    b.addRewardedPointsArray({1, 2, 3});
    b.deductPointsArray({1, 2, 3, 4, 5, 6});
    EXPECT_EQ(b.totalPoints(), 13);
    b.deductPointsArray(array);
    EXPECT_EQ(b.totalPoints(), 0);
    EXPECT_EQ(b.calcPoints(), 0);
    EXPECT_EQ(b.coordPoints(), 0);

    b.addSightPoints(6);
    platform.restart();
    EXPECT_EQ(BrainPowersManager::sharedInstance().sightPoints(), 6);
    EXPECT_EQ(platform.defaults().integerForKey("sightPoints"), 6);
    EXPECT_EQ(BrainPowersManager::sharedInstance().totalPoints(), 6);
}

} // namespace
