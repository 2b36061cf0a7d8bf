// The play screen's battle mode on the test clock: the 40 ticks, a solve just in time and just too late,
// leaving, and the result that reaches the screen that opened the level.
#include "Taps.h"
#include "TestPlatform.h"
#include "core/BattleDelegate.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelsInfoReader.h"
#include "progress/CreditsManager.h"
#include "progress/ScorePointsManager.h"
#include "screens/MainViewController.h"

#include <gtest/gtest.h>

namespace {

struct Results : BattleDelegate {
    void playerAnsweredLevelWithScore(qint64 level, qint64 score) override { got.append({level, score}); }
    QList<QPair<qint64, qint64>> got;
};

class BattlePlay : public ::testing::Test {
protected:
    void SetUp() override {
        platform.writePackFile(3, QStringLiteral("سمكة%1"), QStringLiteral("ابتثجحخد"));
        LevelsInfoReader::sharedInstance().loadAllPacksLevelsWithEnc("ok", false);
        Platform::shared().navigator().setRootViewController(new MainViewController());
    }

    GameViewController* start(qint64 level, qint64 type) {
        platform.keepTrayOrder();
        GameViewController* vc = BattleLevels::startBattleGame(level, type, &results);
        EXPECT_EQ(platform.alerts().message(), QStringLiteral("عليك الاجابة على السؤال ضمن 40 ثانية وبعدها "
                                                              "سينتقل الدور للاعب الاخر"));
        platform.alerts().press(0);
        return vc;
    }
    void solve(GameViewController* vc) {
        tapLetters(vc, vc->game->levelInfo()->solution);
        platform.animator().completeAll();
    }
    bool playing(GameViewController* vc) {
        return Platform::shared().navigator().presentedViewController() == vc;
    }

    TestPlatform platform;
    Results results;
};

TEST_F(BattlePlay, TheClockShowsFortyDownToOneAndTheTickThatShowsOneEndsTheLevel) {
    GameViewController* vc = start(57, 1);
    // The first tick fires at once.
    EXPECT_TRUE(vc->battleBarVisible());
    EXPECT_EQ(vc->battleSecondsText(), "40");
    EXPECT_EQ(vc->battleTick, 39);
    EXPECT_FALSE(vc->battleQuestionText().isEmpty());
    // Both players get the same level from its number alone.
    EXPECT_EQ(vc->game->levelInfo()->solution, QStringLiteral("سمكة2"));
    EXPECT_EQ(vc->game->levelInfo()->imageName, QStringLiteral("p2l7"));

    platform.scheduler().advance(38.0);
    EXPECT_EQ(vc->battleSecondsText(), "2");
    EXPECT_FALSE(platform.alerts().isVisible());
    platform.scheduler().advance(1.0);
    EXPECT_EQ(vc->battleSecondsText(), "1");
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("لم تجب ضمن الوقت المحدد"));
    EXPECT_TRUE(results.got.isEmpty());
    // Solving now, under the message, is too late.
    solve(vc);
    platform.alerts().press(0);
    EXPECT_FALSE(platform.alerts().isVisible());
    EXPECT_EQ(results.got, (QList<QPair<qint64, qint64>>{{57, 0}}));
    EXPECT_FALSE(playing(vc));
    platform.scheduler().advance(5.0);
    EXPECT_EQ(results.got.size(), 1);
}

TEST_F(BattlePlay, ASolveBeforeTheLastTickScoresOneAndPaysNothingElse) {
    const qint64 credits = CreditsManager::sharedInstance().currentCredits();
    const qint64 points = ScorePointsManager::sharedInstance().totalPoints();
    const qint64 level = LevelManager::sharedInstance().currentLevel();
    GameViewController* vc = start(30, 2);
    platform.scheduler().advance(38.5);
    solve(vc);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("اجابة صحيحة"));
    EXPECT_EQ(platform.alerts().message(),
              QStringLiteral("ممتاز لقد عرفت الاجابة الصحيحة والان ستحدد نتيجة المعركة"));
    // The clock has stopped: no time-out follows.
    platform.scheduler().advance(5.0);
    platform.alerts().press(0);
    EXPECT_FALSE(platform.alerts().isVisible());
    EXPECT_EQ(results.got, (QList<QPair<qint64, qint64>>{{30, 1}}));
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), credits);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), points);
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), level);
}

TEST_F(BattlePlay, LeavingIsAWrongAnswerAndNotLeavingKeepsTheClockRunning) {
    GameViewController* vc = start(5, 1);
    vc->closeBattleButtonTapped();
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("تأكيد"));
    EXPECT_TRUE(platform.alerts().message().startsWith(QStringLiteral("هل تريد الخروج؟")));
    platform.scheduler().advance(3.0);
    platform.alerts().pressTitled(QStringLiteral("الغاء"));
    EXPECT_EQ(vc->battleSecondsText(), "37");
    EXPECT_TRUE(results.got.isEmpty());

    vc->closeBattleButtonTapped();
    platform.alerts().pressTitled(QStringLiteral("موافق"));
    EXPECT_EQ(results.got, (QList<QPair<qint64, qint64>>{{5, 0}}));
    EXPECT_FALSE(playing(vc));
}

TEST(BattleLevels, ANewBattleLevelIsOneThePlayerHasPassedButNeverTheFirstTwo) {
    TestPlatform platform;
    LevelManager::sharedInstance().setCurrentLevel(2);
    platform.random().queue({0, 1, 7});
    EXPECT_EQ(BattleLevels::newBattleLevel(), 2);
    EXPECT_EQ(BattleLevels::newBattleLevel(), 3);
    EXPECT_EQ(BattleLevels::newBattleLevel(), 3);
    // A player who has passed nothing is asked about the first level after the two given away.
    LevelManager::sharedInstance().setCurrentLevel(0);
    EXPECT_EQ(BattleLevels::newBattleLevel(), 2);
}

} // namespace
