// The player's statistics: lifetime counters, the two daily series and the context number that other copies
// of the game read back.
#include "TestPlatform.h"
#include "core/LevelManager.h"
#include "multiplayer/GameCenterManager.h"
#include "progress/AchievementManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"

#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

QList<qint64> values(const QList<StatRecord>& series) {
    QList<qint64> v;
    for (const StatRecord& r : series) {
        v << r.value;
    }
    return v;
}

TEST(Statistics, CountersAreKeptAndBattlesMoveTheirPoints) {
    TestPlatform platform;
    auto& stats = UserStatsManager::sharedInstance();
    stats.incrementTotalExchangeSent(30);
    stats.incrementTotalExchangeReceived(12);
    stats.incrementTotalWins();
    stats.incrementTotalDraws();
    stats.incrementTotalLosses();
    stats.incrementTotalLosses();
    EXPECT_EQ(stats.totalBattles(), 4);
    EXPECT_EQ(stats.totalBattlePoints(), 2 + 1 - 2 - 2); // no floor: it may go below zero
    // The battles are the sum of the three, whatever is set.
    stats.setTotalBattles(99);
    EXPECT_EQ(stats.totalBattles(), 4);
    stats.incrementWikipediaRead();
    stats.incrementTimeTraveled();
    stats.incrementFlyOverPassed();
    stats.incrementTrainingsTaken();
    stats.incrementTrainingsTaken();
    EXPECT_EQ(platform.defaults().integerForKey("trainingsTaken"), 2);

    platform.restart();
    auto& again = UserStatsManager::sharedInstance();
    EXPECT_EQ(again.totalExchangeSent(), 30);
    EXPECT_EQ(again.totalExchangeReceived(), 12);
    EXPECT_EQ(again.totalWins(), 1);
    EXPECT_EQ(again.totalDraws(), 1);
    EXPECT_EQ(again.totalLosses(), 2);
    EXPECT_EQ(again.totalBattlePoints(), -1);
    EXPECT_EQ(again.wikipediaRead(), 1);
    EXPECT_EQ(again.timeTraveled(), 1);
    EXPECT_EQ(again.flyOverPassed(), 1);
    // The trainings count this run only: the next one stores 1 over what was there.
    EXPECT_EQ(again.totalTrainingsTaken(), 0);
    again.incrementTrainingsTaken();
    EXPECT_EQ(platform.defaults().integerForKey("trainingsTaken"), 1);
}

TEST(Statistics, LevelsPerDayGrowOnTheDayAndStartAnewTheNext) {
    TestPlatform platform;
    SessionManager::sharedInstance().checkAndLogSessionInfo(); // day 1
    auto& stats = UserStatsManager::sharedInstance();
    // The first active day's record is made at loading, with 0.
    ASSERT_EQ(stats.dailyCompletedLevels().size(), 1);
    EXPECT_EQ(stats.dailyCompletedLevels().first().day, 1);
    stats.incrementCompletedLevelsForCurrentDay();
    stats.incrementCompletedLevelsForCurrentDay();
    EXPECT_EQ(values(stats.dailyCompletedLevels()), (QList<qint64>{2}));
    platform.scheduler().advance(86400);
    SessionManager::sharedInstance().setAcitveDays(2);
    stats.incrementCompletedLevelsForCurrentDay();
    EXPECT_EQ(values(stats.dailyCompletedLevels()), (QList<qint64>{2, 1}));
    EXPECT_EQ(stats.dailyCompletedLevels().last().day, 2);
    EXPECT_EQ(stats.getMaxCompletedLevelsInSingleDay(), 2);
    EXPECT_EQ(stats.getCompletedLevelsForLastDays(4), (QList<qint64>{0, 0, 2, 1}));
    EXPECT_TRUE(stats.getCompletedLevelsForLastDays(0).isEmpty());
    EXPECT_EQ(stats.getCompletedLevelsForAllDays(), (QList<qint64>{0, 0, 0, 0, 0, 0, 0, 0, 2, 1}));

    platform.restart();
    platform.scheduler().setNow(QDateTime(QDate(2026, 3, 15), QTime(18, 0)));
    UserStatsManager::sharedInstance().incrementCompletedLevelsForCurrentDay();
    EXPECT_EQ(values(UserStatsManager::sharedInstance().dailyCompletedLevels()), (QList<qint64>{2, 2}));
}

TEST(Statistics, ADayIsTheCalendarDayOfThePlayersZone) {
    TestPlatform platform;
    // 20:30 and 21:30 UTC are two days in Riyadh, one in London in winter.
    platform.scheduler().setTimeZone(QTimeZone("Asia/Riyadh"));
    platform.scheduler().setNow(QDateTime(QDate(2026, 1, 10), QTime(20, 30), QTimeZone::utc()));
    auto& stats = UserStatsManager::sharedInstance();
    stats.incrementCompletedLevelsForCurrentDay();
    platform.scheduler().advance(3600);
    stats.incrementCompletedLevelsForCurrentDay();
    EXPECT_EQ(values(stats.dailyCompletedLevels()), (QList<qint64>{1, 1}));
    platform.scheduler().setTimeZone(QTimeZone("Europe/London"));
    stats.incrementCompletedLevelsForCurrentDay();
    EXPECT_EQ(values(stats.dailyCompletedLevels()), (QList<qint64>{1, 2}));
}

TEST(Statistics, PositionsPerDayAndTheirReaders) {
    TestPlatform platform;
    auto& stats = UserStatsManager::sharedInstance();
    EXPECT_EQ(stats.getBestRank(), 0);
    EXPECT_EQ(stats.getLast2DaysRank(), 0);
    EXPECT_EQ(stats.getGCRanksForAllDays(), QList<qint64>(10, 0));
    const QList<qint64> positions{70, 60, 50, 40, 30, 20, 35, 10};
    for (qint64 p : positions) {
        stats.updateGamecenterRankForCurrentDay(p + 1);
        stats.updateGamecenterRankForCurrentDay(p); // the day keeps its last position
        platform.scheduler().advance(86400);
    }
    EXPECT_EQ(values(stats.dailyGamecenterRanks()), positions);
    EXPECT_EQ(stats.getBestRank(), 10);
    EXPECT_EQ(stats.getLastWeekRank(), 60);
    EXPECT_EQ(stats.getLast2DaysRank(), 35);
    EXPECT_EQ(stats.getGCRanksForLastDays(3), (QList<qint64>{20, 35, 10}));
    stats.updateGamecenterRankForCurrentDay(0);
    EXPECT_EQ(stats.getBestRank(), 0);

    // A new active day with a known position starts the day's record at loading.
    platform.restart();
    platform.scheduler().setNow(QDateTime(QDate(2026, 4, 1), QTime(9, 0)));
    SessionManager::sharedInstance().checkAndLogSessionInfo();
    GameCenterManager::sharedInstance().isPlayerScoreLoaded = true;
    GameCenterManager::sharedInstance().playerRank = 7;
    EXPECT_EQ(UserStatsManager::sharedInstance().dailyGamecenterRanks().last().value, 7);
    EXPECT_EQ(UserStatsManager::sharedInstance().dailyCompletedLevels().last().value, 0);
}

TEST(Statistics, AnUnreadableSeriesLosesBothAndNothingElse) {
    TestPlatform platform;
    UserStatsManager::sharedInstance().incrementCompletedLevelsForCurrentDay();
    UserStatsManager::sharedInstance().incrementCreditsUsedBy(40);
    for (const char* bad : {"[{\"day\": 1, \"date\": \"tuesday\", \"value\": 3}]", "{\"day\": 1}", "garbage",
                            "[{\"day\": \"one\", \"date\": \"2026-03-14T09:30:00.000Z\", \"value\": 3}]"}) {
        platform.defaults().setStringForKey(bad, "dailyRanks");
        platform.restart();
        auto& stats = UserStatsManager::sharedInstance();
        EXPECT_TRUE(stats.dailyCompletedLevels().isEmpty()) << bad;
        EXPECT_TRUE(stats.dailyGamecenterRanks().isEmpty()) << bad;
        EXPECT_EQ(stats.creditsUsed(), 40);
        stats.incrementCompletedLevelsForCurrentDay();
        EXPECT_EQ(values(stats.dailyCompletedLevels()), QList<qint64>{1});
        stats.updateGamecenterRankForCurrentDay(5);
    }
}

TEST(ContextNumber, TheLayoutAtZeroAtItsLimitsAndPastThem) {
    TestPlatform platform;
    auto& stats = UserStatsManager::sharedInstance();
    auto& levels = LevelManager::sharedInstance();
    auto& sessions = SessionManager::sharedInstance();
    // A new player: 0001 01 001 000 00001.
    EXPECT_EQ(stats.generateUserStatsContextNumber(), 10100100000001LL);

    // Every field at its largest.
    levels.setCurrentLevel(9998);
    QList<Achievement> all = AchievementManager::sharedInstance().achievementList();
    for (Achievement& a : all) {
        a.isAchieved = true;
    }
    AchievementManager::sharedInstance().setAchievementList(all);
    sessions.setAcitveDays(999);
    stats.setTotalWins(500);
    stats.setTotalDraws(499);
    stats.setCreditsUsed(99998);
    EXPECT_EQ(stats.generateUserStatsContextNumber(), 99994299999999999LL);
    EXPECT_EQ(UserStatsManager::breakContextNumber(99994299999999999LL),
              (QStringList{"9999", "42", "999", "999", "99999"}));

    // Past them, a field keeps its first digits and reads about ten times too small.
    levels.setCurrentLevel(12344);
    sessions.setAcitveDays(1500);
    stats.setTotalLosses(1);
    stats.setCreditsUsed(123456);
    EXPECT_EQ(stats.generateUserStatsContextNumber(), 12344215010012345LL);
    EXPECT_EQ(UserStatsManager::breakContextNumber(12344215010012345LL),
              (QStringList{"1234", "42", "150", "100", "12345"}));

    // No active day yet still writes one.
    levels.setCurrentLevel(123);
    sessions.setAcitveDays(0);
    stats.setTotalWins(0);
    stats.setTotalDraws(0);
    stats.setTotalLosses(12);
    stats.setCreditsUsed(399);
    AchievementManager::sharedInstance().loadData();
    EXPECT_EQ(stats.generateUserStatsContextNumber(), 1240100101200400LL);
}

TEST(ContextNumber, BreakingEveryLength) {
    EXPECT_EQ(UserStatsManager::breakContextNumber(1241004001200400LL),
              (QStringList{"124", "10", "040", "012", "00400"}));
    EXPECT_EQ(UserStatsManager::breakContextNumber(10100100000001LL),
              (QStringList{"1", "01", "001", "000", "00001"}));
    EXPECT_TRUE(UserStatsManager::breakContextNumber(123456789012345678LL).isEmpty());
    EXPECT_TRUE(UserStatsManager::breakContextNumber(1234).isEmpty());
    // Ten to thirteen digits have no room for the level: all fields read zero.
    for (qint64 n : {1234567890LL, 1234567890123LL}) {
        EXPECT_EQ(UserStatsManager::breakContextNumber(n),
                  (QStringList{"0000", "00", "000", "000", "00000"}));
    }
    EXPECT_EQ(UserStatsManager::breakContextNumber(1234567), (QStringList{"12", "34", "567"}));
    EXPECT_EQ(UserStatsManager::breakContextNumber(12345), (QStringList{"0000", "00", "000"}));
    EXPECT_EQ(UserStatsManager::createPaddingStringWithDigits(7, 3), "007");
    EXPECT_EQ(UserStatsManager::createPaddingStringWithDigits(123, 3), "123");
    EXPECT_EQ(UserStatsManager::createPaddingStringWithDigits(1234, 3), "123");
}

TEST(ContextNumber, TheOtherTwoLayouts) {
    TestPlatform platform;
    auto& stats = UserStatsManager::sharedInstance();
    LevelManager::sharedInstance().setCurrentLevel(56);
    SessionManager::sharedInstance().setAcitveDays(8);
    stats.setTimeTraveled(3);
    stats.setTotalWins(4);
    stats.setTotalTrainingsTaken(9);
    stats.setCreditsUsed(20);
    // 0057 01 008 03 004 and 0057 01 008 009 0021.
    EXPECT_EQ(stats.generateUserStatsContextNumberWithTimeTravel(), 570100803004LL);
    EXPECT_EQ(UserStatsManager::breakContextNumberWithTimeTravel(570100803004LL),
              (QStringList{"57", "01", "008", "03", "004"}));
    EXPECT_EQ(stats.generateUserStatsContextNumberWithTrialsUsed(), 57010080090021LL);
    EXPECT_EQ(UserStatsManager::breakContextNumberWithTrialsUsed(57010080090021LL),
              (QStringList{"57", "01", "008", "009", "0021"}));
    EXPECT_TRUE(UserStatsManager::breakContextNumberWithTimeTravel(123456789012345LL).isEmpty());
    // Too short for the long form, and no zero fill: nothing rather than a crash.
    EXPECT_TRUE(UserStatsManager::breakContextNumberWithTrialsUsed(12345678901LL).isEmpty());
    EXPECT_EQ(UserStatsManager::breakContextNumberWithTimeTravel(1234567890LL),
              (QStringList{"", "12", "345", "67", "890"}));
}

} // namespace
