// The main screen and the two selectors: what they show for the player's level, and where a tap leads.
#include "TestPlatform.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelsInfoReader.h"
#include "outreach/SoundFactory.h"
#include "progress/AchievementManager.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/SettingsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/AchievementsViewController.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/MainViewController.h"
#include "screens/RankViewController.h"
#include "screens/RoundSelectorViewController.h"
#include "screens/SettingsViewController.h"
#include "screens/UserProfileViewController.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace {

class Screens : public ::testing::Test {
protected:
    void SetUp() override { platform.writePackFile(3, QStringLiteral("قلم"), QStringLiteral("ابتثجحخدذ")); }

    MainViewController* main() {
        auto* m = new MainViewController();
        Platform::shared().navigator().setRootViewController(m);
        return m;
    }
    RoundSelectorViewController* rounds() {
        main()->startAction();
        return qobject_cast<RoundSelectorViewController*>(Platform::shared().navigator().topViewController());
    }
    LevelSelectorViewController* levels(int round) {
        rounds()->tableViewDidSelectRowAtIndexPath(round);
        return qobject_cast<LevelSelectorViewController*>(Platform::shared().navigator().topViewController());
    }
    void at(qint64 level) { LevelManager::sharedInstance().saveCurrentLevelTo(level); }

    TestPlatform platform;
};

TEST_F(Screens, MainScreenShowsWhereThePlayerStands) {
    at(1);
    auto* m = main();
    EXPECT_EQ(m->creditsLabel(), "150");
    EXPECT_EQ(m->skipsLabel(), "1");
    EXPECT_EQ(m->currentLevelLabel(), "2");
    EXPECT_EQ(m->currentRoundLabel(), "1");
    EXPECT_FALSE(m->battleButtonVisible());

    // Live changes reach the labels; points after a live change are grouped by thousands.
    CreditsManager::sharedInstance().addCredits(5);
    EXPECT_EQ(m->creditsLabel(), "155");
    ScorePointsManager::sharedInstance().addPoints(1234);
    EXPECT_EQ(m->totalPointsLabel(), "1,234");
    m->viewWillAppear();
    EXPECT_EQ(m->totalPointsLabel(), "1234");

    at(2);
    m->viewWillAppear();
    EXPECT_TRUE(m->battleButtonVisible());
    at(0);
    m->viewWillAppear();
    EXPECT_TRUE(m->battleButtonVisible());
    at(130);
    m->viewWillAppear();
    EXPECT_EQ(m->currentBadgeLabel(), QStringLiteral("ممتاز"));
    EXPECT_EQ(m->currentBadgeImage(), "badge6.png");

    // Tasks met out of all of them, and battles with their wins, as the last opening of the tasks left them.
    EXPECT_EQ(m->completedAchmtsLabel(), "0/41");
    EXPECT_EQ(m->totalWinsLabel(), "0 / 0");
    SessionManager::sharedInstance().setAcitveDays(5);
    AchievementManager::sharedInstance().checkAndUpdateAchievements();
    UserStatsManager::sharedInstance().incrementTotalWins();
    UserStatsManager::sharedInstance().incrementTotalLosses();
    m->viewWillAppear();
    // Two days' tasks, and at round 6 the first three rounds' tasks.
    EXPECT_EQ(m->completedAchmtsLabel(), "5/41");
    EXPECT_EQ(m->totalWinsLabel(), "2 / 1");
}

TEST_F(Screens, RoundsFinishedCurrentAndLocked) {
    at(0);
    auto* r = rounds();
    ASSERT_NE(r, nullptr);
    EXPECT_TRUE(LevelsInfoReader::sharedInstance().isPacksDataLoaded());
    ASSERT_EQ(r->rows().size(), 3);
    QVariantMap row0 = r->rows().at(0).toMap();
    EXPECT_EQ(row0["state"].toInt(), RoundSelectorViewController::Current);
    EXPECT_EQ(row0["percent"].toString(), "0 %");
    EXPECT_EQ(row0["name"].toString(), QStringLiteral("مبتديء"));
    EXPECT_EQ(r->rows().at(1).toMap()["state"].toInt(), RoundSelectorViewController::Locked);
    EXPECT_EQ(r->rows().at(1).toMap()["leaderboard"].toString(), "---");
    EXPECT_EQ(r->rows().at(1).toMap()["lockedBadge"].toString(), "gbadge1.png");

    at(24);
    r->viewWillAppear();
    EXPECT_EQ(r->rows().at(0).toMap()["percent"].toString(), "96 %");

    at(25);
    RankManager::sharedInstance().packsLastGcRanks[0] = 12345;
    r->viewWillAppear();
    row0 = r->rows().at(0).toMap();
    EXPECT_EQ(row0["state"].toInt(), RoundSelectorViewController::Finished);
    EXPECT_EQ(row0["percent"].toString(), "100%");
    EXPECT_EQ(row0["leaderboard"].toString(), "12,345");
    EXPECT_EQ(r->rows().at(1).toMap()["state"].toInt(), RoundSelectorViewController::Current);
    EXPECT_EQ(r->rows().at(1).toMap()["progress"].toDouble(), 0.0);

    // A locked round is refused with its message.
    r->tableViewDidSelectRowAtIndexPath(2);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("المجموعة مقفلة"));
    EXPECT_EQ(Platform::shared().navigator().topViewController(), r);
}

TEST_F(Screens, AtTheEndOfTheGameEveryRoundIsFinishedAndEveryLevelAReplay) {
    at(75);
    auto* r = rounds();
    for (const QVariant& row : r->rows()) {
        EXPECT_EQ(row.toMap()["state"].toInt(), RoundSelectorViewController::Finished);
    }
    EXPECT_EQ(r->currentGroup, 3);
    r->tableViewDidSelectRowAtIndexPath(2);
    auto* l = qobject_cast<LevelSelectorViewController*>(Platform::shared().navigator().topViewController());
    ASSERT_NE(l, nullptr);
    for (const QVariant& cell : l->cells()) {
        EXPECT_EQ(cell.toMap()["image"].toString(), "level1.png");
    }
    l->collectionViewDidSelectItemAtIndexPath(24);
    auto* play = qobject_cast<GameViewController*>(Platform::shared().navigator().topViewController());
    ASSERT_NE(play, nullptr);
    EXPECT_TRUE(play->isPreviousGame);
}

TEST_F(Screens, LevelsSolvedNextAndLocked) {
    at(27);
    auto* l = levels(1);
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(l->currentRoundLabel(), "2");
    ASSERT_EQ(l->cells().size(), 25);
    EXPECT_EQ(l->cells().at(1).toMap()["image"].toString(), "level1.png");
    EXPECT_EQ(l->cells().at(2).toMap()["image"].toString(), "level2.png");
    EXPECT_EQ(l->cells().at(3).toMap()["image"].toString(), "level3.png");

    l->collectionViewDidSelectItemAtIndexPath(3);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("المرحلة مقفلة"));
    EXPECT_EQ(Platform::shared().navigator().topViewController(), l);

    l->collectionViewDidSelectItemAtIndexPath(2);
    auto* play = qobject_cast<GameViewController*>(Platform::shared().navigator().topViewController());
    ASSERT_NE(play, nullptr);
    EXPECT_FALSE(play->isPreviousGame);
    EXPECT_EQ(play->game->gameRound, 1);
    EXPECT_EQ(play->game->gameLevel, 2);
    EXPECT_EQ(play->game->levelInfo(), LevelsInfoReader::sharedInstance().getLevelInfoPackId(2, 1));
    EXPECT_EQ(Platform::shared().navigator().depth(), 4);

    // Back from play, the grid is drawn anew for the level reached meanwhile.
    LevelManager::sharedInstance().incrementCurrentLevel();
    play->goBack(nullptr);
    EXPECT_EQ(l->cells().at(2).toMap()["image"].toString(), "level1.png");
    EXPECT_EQ(l->cells().at(3).toMap()["image"].toString(), "level2.png");

    l->collectionViewDidSelectItemAtIndexPath(0);
    play = qobject_cast<GameViewController*>(Platform::shared().navigator().topViewController());
    ASSERT_NE(play, nullptr);
    EXPECT_TRUE(play->isPreviousGame);
}

TEST_F(Screens, AfterALevelTheMenuLeadsBackToTheRounds) {
    at(0);
    auto* l = levels(0);
    l->collectionViewDidSelectItemAtIndexPath(0);
    auto* play = qobject_cast<GameViewController*>(Platform::shared().navigator().topViewController());
    ASSERT_NE(play, nullptr);
    play->dismissHelpAction();
    play->gameSuccess();
    auto& nav = Platform::shared().navigator();
    auto* popup = nav.presentedViewController();
    ASSERT_NE(popup, nullptr);
    QMetaObject::invokeMethod(popup, "goHomeAction");
    EXPECT_EQ(nav.presentedViewController(), nullptr);
    EXPECT_EQ(nav.depth(), 2);
    EXPECT_NE(qobject_cast<RoundSelectorViewController*>(nav.topViewController()), nullptr);
    // The level stays counted: the next opening goes on from the next one.
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 1);
}

class ReportScreens : public ::testing::Test {
protected:
    template <class T> T* present(const char* identifier) {
        auto& nav = Platform::shared().navigator();
        nav.presentViewController(nav.instantiateViewControllerWithIdentifier(identifier));
        return qobject_cast<T*>(nav.presentedViewController());
    }
    TestPlatform platform;
};

TEST_F(ReportScreens, SettingsStoreTheirDefaultsAndTakeEffectAtOnce) {
    auto* s = present<SettingsViewController>("SettingsViewController");
    ASSERT_NE(s, nullptr);
    EXPECT_TRUE(platform.defaults().boolForKey("sound"));
    EXPECT_TRUE(platform.defaults().boolForKey("bgmusic"));
    EXPECT_FLOAT_EQ(static_cast<float>(platform.defaults().doubleForKey("soundvolume")), 0.25f);
    EXPECT_FALSE(platform.defaults().hasKey("dailyNotificationsNum"));
    EXPECT_DOUBLE_EQ(s->sliderValue(), 0.5);
    EXPECT_EQ(s->trainingLabel(), "يرجى اختيار نوع التمرين");
    EXPECT_EQ(s->goldLabel(), "0");
    EXPECT_EQ(s->selectedSegment(), -1);
    EXPECT_FALSE(s->notificationsViewHidden());

    // The volume is stored at once and reaches the effects at the next start, when they are built.
    SoundFactory::sharedInstance();
    s->soundVolumeChanged(1.0);
    EXPECT_FLOAT_EQ(static_cast<float>(platform.defaults().doubleForKey("soundvolume")), 0.5f);
    EXPECT_FLOAT_EQ(platform.audio().player("tap5")->volume(), 0.25f * 0.6f);
    const int taps = platform.audio().player("tap5")->plays;
    s->toggleGeneralSound();
    EXPECT_EQ(s->soundImage(), "soundoff.png");
    EXPECT_EQ(platform.audio().player("tap5")->plays, taps);
    s->toggleGeneralSound();
    EXPECT_EQ(platform.audio().player("tap5")->plays, taps + 1);
    s->toggleBackgroundMusic();
    EXPECT_FALSE(platform.defaults().boolForKey("bgmusic"));

    // Two trainings a day: scheduled first, then the permission is asked.
    s->dailyNotificationsSegmentChanged(2);
    EXPECT_EQ(s->trainingLabel(), "تمرينين في اليوم");
    EXPECT_EQ(platform.defaults().doubleForKey("dailyNotificationsNum"), 2.0);
    EXPECT_EQ(Platform::shared().localNotifications().scheduledLocalNotifications().size(), 2);
    EXPECT_EQ(platform.alerts().title(), "التنبيهات");
    platform.alerts().press(1);
    EXPECT_TRUE(s->notificationsViewHidden());
    s->dailyNotificationsSegmentChanged(7);
    EXPECT_EQ(s->selectedSegment(), 2);
    s->dailyNotificationsSegmentChanged(0);
    EXPECT_EQ(s->trainingLabel(), "بدون تمارين يومية");
    EXPECT_TRUE(Platform::shared().localNotifications().scheduledLocalNotifications().isEmpty());
    s->goBack();

    // Reopened: the stored choices come back.
    s = present<SettingsViewController>("SettingsViewController");
    EXPECT_DOUBLE_EQ(s->sliderValue(), 1.0);
    SettingsManager::sharedInstance().configureNotificationsPerDay(1);
    s = present<SettingsViewController>("SettingsViewController");
    EXPECT_EQ(s->selectedSegment(), 1);
    EXPECT_EQ(s->trainingLabel(), "تمرين واحد كل يوم");
}

TEST_F(ReportScreens, TheLadderTintsOneRowPastTheRank) {
    LevelManager::sharedInstance().setCurrentLevel(4 * 25); // rank index 4
    auto* r = present<RankViewController>("RankViewController");
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->currentRankIndex(), 4);
    const QVariantList rows = r->rows();
    ASSERT_EQ(rows.size(), 41);
    for (int i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows.at(i).toMap().value("tinted").toBool(), i <= 5) << i;
    }
    EXPECT_EQ(rows.at(7).toMap().value("badge"), "badge7.png");
    const QVariantList badges = r->badges();
    EXPECT_EQ(badges.at(4).toMap().value("image"), "badge4.png");
    EXPECT_EQ(badges.at(5).toMap().value("image"), "gbadge5.png");
}

TEST_F(ReportScreens, TasksAreMarkedOnOpeningAndCollectedOnce) {
    SessionManager::sharedInstance().setAcitveDays(5);
    auto* a = present<AchievementsViewController>("AchievementsViewController");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->counterLabel(), "2/41");
    QVariantMap first = a->rows().first().toMap();
    EXPECT_EQ(first.value("id"), "days:1");
    EXPECT_EQ(first.value("image"), "yes.png");
    EXPECT_TRUE(first.value("flashing").toBool());
    EXPECT_EQ(a->rows().at(1).toMap().value("image"), "no.png");
    const qint64 gold = CreditsManager::sharedInstance().currentCredits();
    a->tableViewDidSelectRowAtIndexPath(0);
    a->tableViewDidSelectRowAtIndexPath(0);
    a->tableViewDidSelectRowAtIndexPath(1); // not met
    a->tableViewDidSelectRowAtIndexPath(99);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), gold + 50);
    EXPECT_EQ(Platform::shared().emitter().runs(MyEmitter::kConfetti), 1);
    first = a->rows().first().toMap();
    EXPECT_TRUE(first.value("achieved").toBool());
    EXPECT_FALSE(first.value("flashing").toBool());
    EXPECT_EQ(a->counterLabel(), "2/41");
}

TEST_F(ReportScreens, TheProfileWithEmptyAndFullSeries) {
    auto* p = present<UserProfileViewController>("UserProfileViewController");
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->barValues(), QVariantList(10, 0));
    EXPECT_EQ(p->barLabels().first(), "من عشر ايام");
    EXPECT_EQ(p->barLabels().last(), "اليوم");
    EXPECT_EQ(p->lineValues(), QVariantList(10, 0));
    EXPECT_EQ(p->lineLabels(), (QStringList{"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"}));
    EXPECT_TRUE(p->historyRows().isEmpty());
    EXPECT_EQ(p->figures().size(), 10);
    p->goBack();

    auto& stats = UserStatsManager::sharedInstance();
    for (qint64 place : {50, 30, 50}) {
        stats.updateGamecenterRankForCurrentDay(place);
        stats.incrementCompletedLevelsForCurrentDay();
        platform.scheduler().advance(86400);
    }
    stats.incrementCreditsUsedBy(120);
    p = present<UserProfileViewController>("UserProfileViewController");
    EXPECT_EQ(p->barValues().mid(7), (QVariantList{50, 30, 50}));
    const QVariantList rows = p->historyRows();
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows.at(0).toMap().value("day"), "اليوم 1");
    EXPECT_FALSE(rows.at(0).toMap().contains("change"));
    EXPECT_EQ(rows.at(1).toMap().value("change"), "+20");
    EXPECT_EQ(rows.at(1).toMap().value("arrow"), "green-arrow.png");
    EXPECT_EQ(rows.at(2).toMap().value("change"), "-20");
    EXPECT_EQ(rows.at(2).toMap().value("arrow"), "red-arrow.png");
    QString used;
    for (const QVariant& f : p->figures()) {
        if (f.toMap().value("name") == "usedCreditsLabel") {
            used = f.toMap().value("value").toString();
        }
    }
    EXPECT_EQ(used, "120");
    p->segmentChanged(1);
    EXPECT_EQ(p->segment(), 1);
    p->segmentChanged(0);
    EXPECT_EQ(p->segment(), 0);

    // The score challenge: what it is, then the challenge with the player's points.
    ScorePointsManager::sharedInstance().addPoints(321);
    p->sendScoreChallege();
    EXPECT_EQ(platform.alerts().title(), "تحدي النقاط");
    platform.alerts().press(0);
    EXPECT_EQ(platform.alerts().message(),
              "مرحبا أنا اتحداك ان تتجاوز معدل ذكائي ومجموع نقاطي 321 في لعبة طارفولين");
}

} // namespace
