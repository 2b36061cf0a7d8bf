// The play screen's life: the hidden level timer and its offers, the payment of a solved level, and every
// help action with its price, limits and words.
#include "FakeAdServer.h"
#include "Taps.h"
#include "TestPlatform.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelSuccessViewController.h"
#include "core/LevelsInfoReader.h"
#include "outreach/AdManager.h"
#include "outreach/InterstitialManager.h"
#include "outreach/ShareManager.h"
#include "outreach/ShareView.h"
#include "outreach/SoundFactory.h"
#include "progress/CreditsManager.h"
#include "progress/NotificationManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QQuickWindow>

#include <gtest/gtest.h>

namespace {

class Play : public ::testing::Test {
protected:
    void SetUp() override {
        platform.writePackFile(14, QStringLiteral("سمكة"), QStringLiteral("ابتثجحخد"));
        LevelsInfoReader::sharedInstance().loadAllPacksLevelsWithEnc("ok", false);
        window.resize(375, 667);
        window.show();
        ads = FakeAdServer::install();
        ads->ads[InterstitialManager::adUnit("rewarded")] = fakeAd("daily-bonus", "rewarded");
        ads->ads[InterstitialManager::adUnit("interstitial")] = fakeAd("store-gold", "interstitial");
        InterstitialManager::sharedInstance().initializeSession();
        QCoreApplication::processEvents();
    }
    int loadsOf(const char* unit) const { return ads->requestsFor(InterstitialManager::adUnit(unit)); }
    static bool videoOnScreen() { return GADAdPresenter::shared().isVisible(); }

    GameViewController* open(qint64 level, qint64 round, bool previous = false) {
        auto game = Game::initWithGameLevelAndGameRound(level, round);
        game->setLevelInfo(LevelsInfoReader::sharedInstance().getLevelInfoPackId(level, round));
        platform.keepTrayOrder();
        auto* vc = new GameViewController();
        vc->setGame(game);
        vc->isPreviousGame = previous;
        Platform::shared().navigator().setRootViewController(vc);
        // The screen it replaces goes now, as the event loop would take it.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return vc;
    }
    void solve(GameViewController* vc) {
        tapLetters(vc, vc->game->levelInfo()->solution);
        platform.animator().completeAll();
    }
    LevelSuccessViewController* popup() {
        return qobject_cast<LevelSuccessViewController*>(
            Platform::shared().navigator().presentedViewController());
    }
    QStringList titles() {
        QStringList t;
        while (platform.alerts().isVisible()) {
            t << platform.alerts().title();
            platform.alerts().press(0);
        }
        return t;
    }

    // The player picks a target on the share sheet; a picture is saved where he says.
    void shareTo(const QString& activityType) {
        platform.files().answers << QDir(platform.folder()).filePath("shared.jpg");
        EXPECT_TRUE(Platform::shared().shareSheet().choose(activityType)) << activityType.toStdString();
    }

    TestPlatform platform;
    std::shared_ptr<FakeAdServer::State> ads;
    // The window the play screen's pictures are taken of.
    QQuickWindow window;
};

TEST_F(Play, TimerOffersAtOneHundredAndTwoHundredThirtySecondsThenStops) {
    auto* vc = open(3, 0);
    ASSERT_TRUE(vc->timer);
    EXPECT_FALSE(vc->timeViewsVisible());
    EXPECT_EQ(vc->secondsText(), "100");
    platform.scheduler().advance(99.85);
    EXPECT_FALSE(platform.alerts().isVisible());
    // The rewarded video is prepared ten seconds before the period ends.
    EXPECT_EQ(loadsOf("rewarded"), 1);
    platform.scheduler().advance(0.2);
    ASSERT_TRUE(platform.alerts().isVisible());
    EXPECT_EQ(platform.alerts().title(), "مساعدة");
    EXPECT_EQ(vc->timePeriod, 130);
    EXPECT_TRUE(platform.alerts().pressTitled("موافق"));
    EXPECT_EQ(vc->isTimedAdWasShown, 1);
    platform.scheduler().advance(0.5);
    ASSERT_TRUE(videoOnScreen());
    GADAdPresenter::shared().close(); // closed before its end: nothing is paid
    platform.scheduler().advance(129.3);
    EXPECT_FALSE(platform.alerts().isVisible());
    platform.scheduler().advance(0.3);
    ASSERT_TRUE(platform.alerts().isVisible());
    platform.alerts().pressTitled("الغاء");
    platform.scheduler().advance(0.5);
    EXPECT_FALSE(videoOnScreen());
    EXPECT_FALSE(vc->timer);
    const QString frozen = vc->secondsText();
    platform.scheduler().advance(500);
    EXPECT_EQ(vc->secondsText(), frozen);
    EXPECT_FALSE(platform.alerts().isVisible());
}

TEST_F(Play, ATileFromTheTrayClicksAndOneSentBackIsSilent) {
    auto* vc = open(3, 0);
    SoundFactory::sharedInstance();
    RecordingPlayer* click = platform.audio().player("tap2");
    ASSERT_NE(click, nullptr);
    vc->tapTile(0);
    platform.animator().completeAll();
    EXPECT_EQ(click->plays, 1);
    const int before = platform.audio().totalPlays();
    vc->tapTile(0); // now in a box: back to the tray
    platform.animator().completeAll();
    EXPECT_EQ(platform.audio().totalPlays(), before);
}

TEST_F(Play, NoOfferWhileAnAdIsOnScreen) {
    InterstitialManager::sharedInstance().adCurrentlyDisplaying = true;
    auto* vc = open(4, 0);
    platform.scheduler().advance(231);
    EXPECT_FALSE(platform.alerts().isVisible());
    EXPECT_FALSE(vc->timer);
}

TEST_F(Play, OfflineNoTimerAndASolvedLevelPaysNothing) {
    platform.reachability().setForcedOffline(true);
    LevelManager::sharedInstance().saveCurrentLevelTo(3);
    auto* vc = open(3, 0);
    EXPECT_FALSE(vc->timer);
    solve(vc);
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->credits, 0);
    EXPECT_EQ(popup()->rewardedPoints, 0);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 150);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), 0);
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 4);
    EXPECT_EQ(UserStatsManager::sharedInstance().dailyCompletedLevels().last().value, 1);
}

TEST_F(Play, ASolvedLevelPaysByTheRoundItWasPlayedIn) {
    LevelManager::sharedInstance().saveCurrentLevelTo(11 * 25 + 23);
    auto* vc = open(23, 11);
    solve(vc);
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->type, 0);
    EXPECT_EQ(popup()->credits, 5);
    EXPECT_EQ(popup()->rewardedPoints, 2);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 155);
    EXPECT_EQ(InterstitialManager::sharedInstance().currentActionCount, 1);
    EXPECT_EQ(vc->game->gameLevel, 24);
    // The next level's timer starts only when the player goes on.
    EXPECT_FALSE(vc->timer);
    popup()->nextLevelAction();
    EXPECT_TRUE(vc->timer);

    solve(vc);
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->type, 3);
    // The last level of round 11 still pays round 11's points, though the player is now in round 12.
    EXPECT_EQ(popup()->rewardedPoints, 2);
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 12 * 25);
    EXPECT_EQ(vc->game->gameLevel, 24);
}

TEST_F(Play, APreviousLevelPaysOnePointOnceAndOnlyOnline) {
    LevelManager::sharedInstance().saveCurrentLevelTo(40);
    platform.reachability().setForcedOffline(true);
    solve(open(5, 0, true));
    EXPECT_EQ(popup()->type, 1);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), 0);
    EXPECT_FALSE(LevelManager::sharedInstance().isLevelRewardedSecondTime(5));

    platform.reachability().setForcedOffline(false);
    solve(open(5, 0, true));
    EXPECT_EQ(popup()->rewardedPoints, 1);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), 1);
    solve(open(5, 0, true));
    EXPECT_EQ(popup()->rewardedPoints, 0);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(), 1);
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 40);
}

TEST_F(Play, PaidLetterAndRemovalWithTheirPrices) {
    auto* vc = open(3, 0);
    CreditsManager::sharedInstance().setCreditsTo(49);
    vc->revealLetter(nullptr);
    EXPECT_EQ(platform.alerts().title(), "لايوجد ذهب");
    EXPECT_EQ(platform.alerts().buttons(), QStringList{"اذهب الى المتجر"});
    platform.alerts().press(0);
    // The offer leads to the store.
    ASSERT_NE(Platform::shared().navigator().presentedViewController(), nullptr);
    EXPECT_EQ(Platform::shared().navigator().presentedViewController()->identifier(), "StoreViewController");
    Platform::shared().navigator().dismissViewController();
    EXPECT_EQ(platform.animator().pending(), 0);

    CreditsManager::sharedInstance().setCreditsTo(50);
    vc->revealLetter(nullptr);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 0);
    EXPECT_EQ(vc->creditsText(), "0");
    platform.animator().completeAll();
    EXPECT_EQ(vc->currentAnswer().size(), 1);

    CreditsManager::sharedInstance().setCreditsTo(200);
    vc->removeWrongLetters(nullptr);
    vc->removeWrongLetters(nullptr);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 0);
    int onScreen = 0;
    for (auto* t : std::as_const(vc->lettersLabels)) {
        onScreen += t->isOnScreen() ? 1 : 0;
    }
    EXPECT_EQ(onScreen, 4);
}

TEST_F(Play, SkipsWithTheirMessagesInOrder) {
    LevelManager::sharedInstance().saveCurrentLevelTo(24);
    auto* last = open(24, 0);
    last->skipLevel(nullptr);
    EXPECT_EQ(titles(), QStringList{"المرحلة الأخيرة"});
    EXPECT_EQ(CreditsManager::sharedInstance().currentSkips(), 1);

    // A previous level: told so, and the skip still happens.
    LevelManager::sharedInstance().saveCurrentLevelTo(30);
    auto* previous = open(3, 0, true);
    previous->skipLevel(nullptr);
    EXPECT_EQ(titles(), (QStringList{"مرحلة سابقة", "تجاوز المرحلة"}));
    EXPECT_EQ(CreditsManager::sharedInstance().currentSkips(), 0);
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 31);
    EXPECT_EQ(previous->game->gameLevel, 4);
    // No timer after a skip.
    EXPECT_FALSE(previous->timer);

    previous->skipLevel(nullptr);
    EXPECT_EQ(titles(), (QStringList{"مرحلة سابقة", "لقد انتهت التجاوزات لديك"}));
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 31);
}

TEST_F(Play, VideoRewardsPerLevelAndPerSession) {
    auto* vc = open(3, 0);
    ads->holdAds = true; // the video arrives while the player waits
    vc->watchVideo(nullptr);
    EXPECT_TRUE(Platform::shared().progressHud().isVisible());
    EXPECT_EQ(Platform::shared().progressHud().maskType(), ProgressHud::Black);
    EXPECT_TRUE(vc->watchVideoBtnPressed);
    FakeAdServer::State::release(ads->heldAds);
    ads->holdAds = false;
    EXPECT_FALSE(vc->watchVideoBtnPressed);
    platform.scheduler().advance(0.5);
    ASSERT_TRUE(videoOnScreen());
    GADAdPresenter::shared().close();

    for (int i = 0; i < 8; ++i) {
        Platform::shared().notificationCenter().postNotificationName(NotificationVideoWatched);
        EXPECT_EQ(platform.alerts().title(), "قطع ذهب مجانية");
        platform.alerts().press(0);
    }
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 150 + 8 * 25);
    Platform::shared().notificationCenter().postNotificationName(NotificationVideoWatched);
    EXPECT_EQ(titles(), QStringList{"لايوجد ذهب"});
    EXPECT_EQ(SessionManager::sharedInstance().videoRewardsCount(), 8);

    auto* next = open(4, 0);
    Platform::shared().notificationCenter().postNotificationName(NotificationVideoWatched);
    EXPECT_EQ(titles(), QStringList{"قطع ذهب مجانية"});
    Platform::shared().notificationCenter().postNotificationName(NotificationVideoWatched);
    EXPECT_EQ(titles(), QStringList{"لم يتبقى لديك جوائز مشاهدة فيديو في هذه الجلسة"});
    EXPECT_EQ(next->videoRewardedCount, 1);

    // A video that does not come: said only when the player asked for one.
    Platform::shared().notificationCenter().postNotificationName(kNotificationVideoAdFailedToLoad);
    EXPECT_FALSE(platform.alerts().isVisible());
    ads->ads.clear();
    ads->adErrors[InterstitialManager::adUnit("rewarded")] =
        GADError{GADErrorNoFill, QStringLiteral("no fill")};
    ads->holdAds = true;
    next->watchVideo(nullptr);
    EXPECT_TRUE(Platform::shared().progressHud().isVisible());
    FakeAdServer::State::release(ads->heldAds);
    EXPECT_FALSE(Platform::shared().progressHud().isVisible());
    EXPECT_EQ(titles(), QStringList{"لايوجد فيديو"});
}

TEST_F(Play, SharingToAChatAppPaysTenTimesInAGame) {
    auto* vc = open(3, 0);
    auto& share = ShareManager::sharedInstance();
    for (int i = 0; i < 9; ++i) {
        share.incrementLevelsShared();
    }
    vc->revealViewGeneralAction(55);
    EXPECT_TRUE(Platform::shared().shareSheet().text().startsWith("انا جالس ألعب لعبة طارفولين"));
    shareTo(UIActivity::TypeWhatsApp);
    EXPECT_EQ(titles(), QStringList{"ذهب مجاني"});
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 200);
    EXPECT_EQ(share.levelsShared(), 10);
    // The same screen again: no second prize.
    vc->revealViewGeneralAction(55);
    shareTo(UIActivity::TypeWhatsApp);
    EXPECT_EQ(titles(), QStringList{"لم تربح"});
    // Another target, or a cancelled share: nothing at all.
    vc->isLevelShared = false;
    vc->revealViewGeneralAction(55);
    shareTo(UIActivity::TypeTelegram);
    vc->revealViewGeneralAction(55);
    Platform::shared().shareSheet().cancel();
    EXPECT_FALSE(platform.alerts().isVisible());
    // The eleventh counted share pays nothing and still marks the screen.
    vc->revealViewGeneralAction(55);
    shareTo(UIActivity::TypeWhatsApp);
    EXPECT_EQ(titles(), QStringList{"لايوجد جوائز مشاركة"});
    EXPECT_EQ(share.levelsShared(), 11);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), 200);
    EXPECT_TRUE(vc->isLevelShared);
}

TEST_F(Play, SharingForALetterOnceOrTwiceByTheAnswersLength) {
    // "سمكة" has four letters: one letter by sharing.
    auto* vc = open(3, 0);
    EXPECT_TRUE(vc->shareRevealVisible());
    vc->shareAppAndReveal(nullptr);
    EXPECT_EQ(platform.alerts().title(), "شارك المرحلة");
    platform.alerts().press(0);
    // The picture of the level goes out.
    ASSERT_FALSE(Platform::shared().shareSheet().image().isNull());
    shareTo(UIActivity::TypePostToFacebook);
    platform.animator().completeAll();
    EXPECT_EQ(vc->currentAnswer().size(), 1);
    EXPECT_FALSE(vc->shareRevealVisible());
    vc->shareAppAndReveal(nullptr);
    EXPECT_EQ(titles(), QStringList{"عذرا"});

    // A target outside the list, a cancel, or a picture the player did not save give nothing.
    auto* other = open(4, 0);
    for (int i = 0; i < 3; ++i) {
        other->shareAppAndReveal(nullptr);
        platform.alerts().press(0);
        if (i == 0) {
            shareTo(UIActivity::TypeTelegram);
        } else if (i == 1) {
            Platform::shared().shareSheet().cancel();
        } else {
            EXPECT_FALSE(Platform::shared().shareSheet().choose(UIActivity::TypeSnapchat));
            Platform::shared().shareSheet().cancel();
        }
    }
    EXPECT_EQ(platform.animator().pending(), 0);
    EXPECT_EQ(other->shareLevelRevealCount, 0);
    EXPECT_TRUE(other->shareRevealVisible());

    // Six letters allow two.
    auto* longer = open(5, 0);
    auto sixLetters = std::make_shared<LevelInfo>(*longer->game->levelInfo());
    sixLetters->solution = QStringLiteral("برتقال");
    longer->game->setLevelInfo(sixLetters);
    longer->setupGameview();
    for (int i = 0; i < 2; ++i) {
        longer->shareAppAndReveal(nullptr);
        platform.alerts().press(0);
        shareTo(UIActivity::TypeInstagram);
        platform.animator().completeAll();
    }
    EXPECT_EQ(longer->shareLevelRevealCount, 2);
    EXPECT_FALSE(longer->shareRevealVisible());

    // From round 12 on the option is not offered.
    EXPECT_FALSE(open(3, 12)->shareRevealVisible());
}

TEST_F(Play, TheSharePanelCountsALevelOnceItStaysNineSeconds) {
    auto* vc = open(3, 0);
    auto* banner = qobject_cast<GADBannerView*>(vc->adsView()->viewWithTag(AdManager::kBannerTag));
    ASSERT_NE(banner, nullptr);
    vc->shareLevelWithFriends(nullptr);
    auto* view = qobject_cast<ShareView*>(vc->shareViewObject());
    ASSERT_NE(view, nullptr);
    EXPECT_TRUE(view->isImageForm());
    EXPECT_FALSE(view->screenshot.isNull());
    // The title and the banner are as they were once the picture is taken.
    EXPECT_FALSE(vc->screenshotTitleVisible());
    EXPECT_FALSE(banner->isHidden());

    platform.scheduler().advance(8);
    vc->dismissShareViewAction();
    EXPECT_EQ(vc->shareViewObject(), nullptr);
    EXPECT_EQ(ShareManager::sharedInstance().levelsShared(), 0);
    vc->shareLevelWithFriends(nullptr);
    platform.scheduler().advance(9);
    vc->dismissShareViewAction();
    EXPECT_EQ(ShareManager::sharedInstance().levelsShared(), 1);
    // A dismissal with no panel up counts nothing.
    vc->dismissShareViewAction();
    EXPECT_EQ(ShareManager::sharedInstance().levelsShared(), 1);
}

TEST_F(Play, ThePanelIsOfferedAtFiftySecondsToPlayersOfFiveToFifteenSessions) {
    auto& sessions = SessionManager::sharedInstance();
    const auto offeredWith = [&](qint64 activeSessions, std::uint32_t draw) {
        sessions.setActiveSessions(activeSessions);
        auto* vc = open(3, 0);
        platform.scheduler().advance(49.7);
        EXPECT_EQ(vc->shareViewObject(), nullptr);
        platform.random().queue({draw});
        platform.scheduler().advance(0.4);
        return vc->shareViewObject() != nullptr;
    };
    EXPECT_TRUE(offeredWith(5, 2));
    EXPECT_TRUE(offeredWith(15, 7));
    EXPECT_FALSE(offeredWith(4, 2));
    EXPECT_FALSE(offeredWith(16, 2));
    EXPECT_FALSE(offeredWith(10, 3));
}

TEST_F(Play, WaitForTheAnswerByAReminder) {
    auto& schedule = Platform::shared().localNotifications();
    auto* vc = open(3, 0);
    const QDateTime asked = platform.scheduler().now();
    vc->scheduleSolutionNotification(nullptr);
    ASSERT_EQ(platform.alerts().count(), 2);
    EXPECT_EQ(platform.alerts().message(), "سيصلك تنبيه بعد 5 دقيقة بالحل الصحيح   ");
    ASSERT_EQ(schedule.scheduledLocalNotifications().size(), 1);
    const LocalNotification wait = schedule.scheduledLocalNotifications().first();
    EXPECT_EQ(wait.alertBody, "الحل الصحيح هو: سمكة");
    EXPECT_EQ(wait.type(), "normal");
    EXPECT_EQ(asked.secsTo(wait.fireDate), 5 * 60);
    EXPECT_EQ(NotificationManager::sharedInstance().currentWaitMinutes(), 15);
    // Notifications are not allowed yet: the first message leads to the platform's question.
    platform.alerts().press(0);
    platform.alerts().press(0);
    EXPECT_EQ(platform.alerts().title(), "التنبيهات");
    platform.alerts().press(1);
    EXPECT_TRUE(NotificationManager::sharedInstance().areNotificationsAllowed());

    vc->scheduleSolutionNotification(nullptr);
    EXPECT_EQ(titles(), QStringList{"خطأ"});

    // In round 2 the wait is 90 minutes, told in hours.
    platform.scheduler().advance(300);
    titles(); // the level timer's video offers meanwhile
    schedule.takeDueNotifications(platform.scheduler().now(), platform.scheduler().timeZone());
    LevelManager::sharedInstance().saveCurrentLevelTo(2 * 25);
    open(0, 2)->scheduleSolutionNotification(nullptr);
    EXPECT_EQ(platform.alerts().message(), "سيصلك تنبيه بعد 1 ساعة بالحل الصحيح   ");
    ASSERT_EQ(schedule.scheduledLocalNotifications().size(), 1);
    EXPECT_EQ(platform.scheduler().now().secsTo(schedule.scheduledLocalNotifications().first().fireDate),
              5400);
}

} // namespace
