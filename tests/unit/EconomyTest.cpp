// Balances, the rank ladder and its amounts, the places per round, and sound.
#include "TestPlatform.h"
#include "core/LevelManager.h"
#include "multiplayer/GameCenterManager.h"
#include "outreach/SoundFactory.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SettingsManager.h"
#include "progress/UserStatsManager.h"

#include <gtest/gtest.h>

namespace {

TEST(Balances, FirstStartGrantsOnceAndEveryChangeIsKept) {
    TestPlatform platform;
    int creditChanges = 0, skipChanges = 0, pointChanges = 0;
    auto& center = Platform::shared().notificationCenter();
    center.addObserver(&creditChanges, NotificationCreditsChanged,
                       [&](const Notification&) { ++creditChanges; });
    center.addObserver(&skipChanges, NotificationSkipsChanged, [&](const Notification&) { ++skipChanges; });
    center.addObserver(&pointChanges, PointsChangedNotification,
                       [&](const Notification&) { ++pointChanges; });

    auto& credits = CreditsManager::sharedInstance();
    EXPECT_EQ(credits.currentCredits(), 150);
    EXPECT_EQ(credits.currentSkips(), 1);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), 0);
    EXPECT_TRUE(platform.defaults().boolForKey("initialized"));
    EXPECT_EQ(creditChanges, 0); // the grant announces nothing

    credits.deductCredits(150);
    EXPECT_EQ(creditChanges, 1);
    platform.restart();
    // Spent gold stays spent: no second grant.
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 0);
    EXPECT_EQ(UserStatsManager::sharedInstance().creditsUsed(), 150);
}

TEST(Balances, DeductionsClampAndStatisticsCountWhatWasAsked) {
    TestPlatform platform;
    auto& credits = CreditsManager::sharedInstance();
    auto& stats = UserStatsManager::sharedInstance();
    credits.setCreditsTo(3);
    credits.deductCredits(5);
    EXPECT_EQ(credits.currentCredits(), 0);
    EXPECT_EQ(stats.creditsUsed(), 5);
    credits.deductCredits(5);
    EXPECT_EQ(credits.currentCredits(), 0);
    EXPECT_EQ(stats.creditsUsed(), 10);
    credits.setCreditsTo(-4);
    credits.deductCredits(1);
    EXPECT_EQ(credits.currentCredits(), -4);

    credits.deductOneSkip();
    credits.deductOneSkip();
    EXPECT_EQ(credits.currentSkips(), 0);
    EXPECT_EQ(stats.skipsUsed(), 2);
    credits.addSkips(3);
    EXPECT_EQ(credits.currentSkips(), 3);

    auto& points = ScorePointsManager::sharedInstance();
    points.addPoints(1);
    points.addPoints(-2);
    EXPECT_EQ(points.totalPoints(), 0);
    points.addPoints(2);
    EXPECT_EQ(points.totalPoints(), 2);

    platform.restart();
    EXPECT_EQ(CreditsManager::sharedInstance().currentSkips(), 3);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), 2);
    EXPECT_EQ(UserStatsManager::sharedInstance().skipsUsed(), 2);
}

TEST(Ladder, RanksByRoundPastTheEndAndTheAmountsOfTheRoundBeingPlayed) {
    TestPlatform platform;
    auto& ranks = RankManager::sharedInstance();
    EXPECT_EQ(ranks.getRankIndexForRound(40), 40);
    EXPECT_EQ(ranks.getRankIndexForRound(45), 40);
    EXPECT_EQ(ranks.getRankForRound(45).getBadge(), QStringLiteral("badge41.png"));
    EXPECT_TRUE(ranks.isFirstRoundInNewRank(40));
    EXPECT_FALSE(ranks.isFirstRoundInNewRank(41));

    // Points per level step up at rounds 6 and 12; the wait for an answer is 5 minutes in the first round.
    auto atRound = [](qint64 round) { LevelManager::sharedInstance().saveCurrentLevelTo(round * 25 + 3); };
    for (const auto& [round, points, wait] :
         {std::tuple{0, 1, 5}, {1, 1, 60}, {5, 1, 180}, {6, 2, 210}, {11, 2, 360}, {12, 3, 390}}) {
        atRound(round);
        EXPECT_EQ(ranks.getLevelPointsReward(), points) << round;
        EXPECT_EQ(ranks.getNotificationWaitTime(), wait) << round;
    }
}

TEST(Ladder, PlacePerRoundIsRememberedWhenAScoreArrives) {
    TestPlatform platform;
    auto& ranks = RankManager::sharedInstance();
    EXPECT_EQ(ranks.packsLastGcRanks, QList<qint64>(50, 0));
    EXPECT_FALSE(platform.defaults().hasKey("groupsGcRanks"));
    LevelManager::sharedInstance().saveCurrentLevelTo(60);
    GameCenterManager::sharedInstance().playerRank = 312;
    Platform::shared().notificationCenter().postNotificationName("scoreLoadedNotification");
    EXPECT_EQ(ranks.packsLastGcRanks.at(2), 312);

    platform.restart();
    auto& again = RankManager::sharedInstance();
    ASSERT_EQ(again.packsLastGcRanks.size(), 50);
    EXPECT_EQ(again.packsLastGcRanks.at(2), 312);
    EXPECT_EQ(again.packsLastGcRanks.at(1), 0);

    platform.defaults().setStringForKey("garbage", "groupsGcRanks");
    platform.restart();
    EXPECT_EQ(RankManager::sharedInstance().packsLastGcRanks, QList<qint64>(50, 0));
}

TEST(Sound, VolumesGateAndNoRestart) {
    TestPlatform platform;
    auto& sounds = SoundFactory::sharedInstance();
    auto& audio = platform.audio();
    sounds.playMenuTap();
    sounds.playTap2();
    sounds.playMusicNote(7);
    EXPECT_EQ(audio.player("tap5")->plays, 1);
    EXPECT_EQ(audio.player("n7")->plays, 1);
    sounds.playSuccess();
    sounds.playFail();
    sounds.playLetterTap();
    sounds.playMusicNote(0);
    sounds.playMusicNote(8);
    EXPECT_EQ(audio.totalPlays(), 3);

    // An effect still sounding is not started again.
    audio.player("tap2")->playing = true;
    sounds.playTap2();
    EXPECT_EQ(audio.player("tap2")->plays, 1);

    SettingsManager::sharedInstance().toggleSoundOnOff();
    sounds.playMenuTap();
    sounds.playGameFinish();
    EXPECT_EQ(audio.totalPlays(), 3);

    // A volume change reaches the effects at the next start only.
    SettingsManager::sharedInstance().changeSoundVolume(0.5f);
    EXPECT_FLOAT_EQ(audio.player("tap5")->volume(), 0.15f);
}

} // namespace
