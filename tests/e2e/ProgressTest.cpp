// Progress that follows the player: made on one profile, saved to the real service, and found again after
// a login on a fresh profile.
#include "TwoPlayers.h"
#include "progress/CloudSaveManager.h"
#include "screens/Localization.h"

namespace {

class Progress : public TwoPlayers {
protected:
    // Lets the gathered save leave and waits until the service has it.
    void settleSaves() {
        auto& saves = CloudSaveManager::sharedInstance();
        platform.scheduler().advance(CloudSaveManager::kSaveDelaySeconds);
        ASSERT_TRUE(QTest::qWaitFor([&saves] { return !saves.isSaving() && !saves.isPending(); }, 15000))
            << saves.lastProblem().toStdString();
    }
};

TEST_F(Progress, APlayerGoesOnOnAFreshProfileAtTheSameLevelWithTheSameGold) {
    enter(QStringLiteral("phone"));
    CloudSaveManager::sharedInstance();
    createAccount(QStringLiteral("رحالة"));
    // The first login saves this profile's progress as the first version.
    ASSERT_TRUE(QTest::qWaitFor([] { return CloudSaveManager::sharedInstance().baseVersion() == 1; }, 15000))
        << CloudSaveManager::sharedInstance().lastProblem().toStdString();
    for (int i = 0; i < 3; ++i) {
        ASSERT_NE(solveNextLevel(), nullptr);
    }
    settleSaves();
    const qint64 level = LevelManager::sharedInstance().currentLevel();
    const qint64 gold = CreditsManager::sharedInstance().currentCredits();
    const qint64 points = ScorePointsManager::sharedInstance().totalPoints();
    EXPECT_EQ(level, 3);
    EXPECT_EQ(gold,
              CreditsManager::kStartingCredits + 3 * RankManager::sharedInstance().getLevelCreditsReward());
    EXPECT_GE(CloudSaveManager::sharedInstance().baseVersion(), 2);
    const qint64 version = CloudSaveManager::sharedInstance().baseVersion();

    // Another device: a profile that has never played.
    enter(QStringLiteral("tablet"));
    CloudSaveManager::sharedInstance();
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 0);
    logIn(QStringLiteral("رحالة"), false);
    ASSERT_TRUE(QTest::qWaitFor(
        [version] { return CloudSaveManager::sharedInstance().baseVersion() == version; }, 15000))
        << CloudSaveManager::sharedInstance().lastProblem().toStdString();
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), level);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), gold);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), points);
    for (const QString& title : platform.takeMessages()) {
        EXPECT_FALSE(title.startsWith(Localization::localizedString("progress.choice.title")));
    }

    // And goes on from there: the next level solved is saved over the restored version.
    ASSERT_NE(solveNextLevel(), nullptr);
    settleSaves();
    EXPECT_EQ(CloudSaveManager::sharedInstance().baseVersion(), version + 1);
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), level + 1);
}

} // namespace
