// Tips: the tip of the day round and round, the attention calls and their snapshots; the tips, help and
// about screens.
#include "TestPlatform.h"
#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "outreach/Addresses.h"
#include "outreach/ShareManager.h"
#include "platform/storekit/SKStoreProductViewController.h"
#include "progress/AchievementManager.h"
#include "progress/SessionManager.h"
#include "progress/TipsManager.h"
#include "screens/AboutViewController.h"
#include "screens/CreditsViewController.h"
#include "screens/HelpViewController.h"
#include "screens/MainViewController.h"
#include "screens/TipsViewController.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

TEST(Tips, TheTipOfTheDayGoesRoundInOrder) {
    TestPlatform platform;
    platform.defaults().setIntegerForKey(9, "tipOfTheDayKey");
    auto& tips = TipsManager::sharedInstance();
    ASSERT_EQ(tips.tips().size(), 10);
    tips.showTipOfTheDayBanner();
    auto& banner = Platform::shared().banner();
    EXPECT_TRUE(banner.isVisible());
    EXPECT_EQ(banner.title(), "ملاحظة اليوم");
    EXPECT_EQ(banner.message(), "الان يمكنك لعب المراحل السابقة التي أنجزتها لكسب مزيد من النقاط");
    EXPECT_EQ(platform.defaults().integerForKey("tipOfTheDayKey"), 10);
    tips.showTipOfTheDayBanner();
    EXPECT_TRUE(banner.message().startsWith("اضغط على زر المهمات"));
    // The banner leaves by itself after eight seconds of the newest one.
    platform.scheduler().advance(7.9);
    EXPECT_TRUE(banner.isVisible());
    platform.scheduler().advance(0.2);
    EXPECT_FALSE(banner.isVisible());
}

TEST(Tips, AttentionIsJudgedByWhatWasTrueAtTheStart) {
    TestPlatform platform;
    for (qint64 n : {0, 4, 5, 6, 7}) {
        platform.restart();
        SessionManager::sharedInstance().setActiveSessions(n);
        EXPECT_EQ(TipsManager::sharedInstance().isTimeToAlertSettings(), n == 5 || n == 6) << n;
        Platform::shared().localNotifications().setUserNotificationSettingsTypes(7);
        EXPECT_FALSE(TipsManager::sharedInstance().isTimeToAlertSettings());
        Platform::shared().localNotifications().setUserNotificationSettingsTypes(0);
    }

    // A task met during the run flashes only from the next start on.
    platform.restart();
    SessionManager::sharedInstance().setActiveSessions(2);
    SessionManager::sharedInstance().setAcitveDays(1);
    AchievementManager::sharedInstance().checkAndUpdateAchievements();
    EXPECT_FALSE(TipsManager::sharedInstance().isTimeToAlertAchievements());
    platform.restart();
    SessionManager::sharedInstance().setActiveSessions(3);
    EXPECT_TRUE(TipsManager::sharedInstance().isTimeToAlertAchievements());

    Attention view;
    TipsManager::sharedInstance().doAlertAchievements(view);
    EXPECT_EQ(view.effect, "flash");
    TipsManager::sharedInstance().doAlertStartButton(view);
    EXPECT_EQ(view, (Attention{"shake", QColor(), 3.0}));
    EXPECT_FALSE(TipsManager::sharedInstance().isTimeToAlertLeaderboard());
}

TEST(Tips, TheMainScreenCallsForAttentionAndTheTasksStopIt) {
    TestPlatform platform;
    SessionManager::sharedInstance().checkAndLogSessionInfo(); // the first session
    auto* main = new MainViewController();
    Platform::shared().navigator().setRootViewController(main);
    EXPECT_EQ(main->startButtonEffect(), "shake");
    EXPECT_EQ(main->achievementsEffect(), "");

    platform.defaults().setBoolForKey(true, "achv:days:1");
    platform.defaults().setIntegerForKey(3, "activeSessions");
    platform.restart();
    auto* again = new MainViewController();
    Platform::shared().navigator().setRootViewController(again);
    EXPECT_EQ(again->startButtonEffect(), "");
    EXPECT_EQ(again->achievementsEffect(), "flash");
    again->openAchievements();
    EXPECT_EQ(again->achievementsEffect(), "");
}

TEST(Help, ThreePagesByButtonOrSwipe) {
    TestPlatform platform;
    auto& nav = Platform::shared().navigator();
    nav.presentViewController(nav.instantiateViewControllerWithIdentifier("HelpViewController"));
    auto* help = qobject_cast<HelpViewController*>(nav.presentedViewController());
    ASSERT_NE(help, nullptr);
    EXPECT_FALSE(help->closeButtonHidden());
    help->swipeHandler(HelpViewController::kSwipeRight); // nothing before the first page
    EXPECT_EQ(help->currentPage(), 0);
    const int taps = platform.audio().totalPlays();
    help->swipeHandler(HelpViewController::kSwipeLeft);
    EXPECT_EQ(platform.audio().totalPlays(), taps); // a swipe is silent
    help->nextButtonAction(true);
    EXPECT_EQ(help->currentPage(), 2);
    EXPECT_EQ(help->title(), "طارفولين");
    EXPECT_EQ(help->nextButtonText(), "ابدأ اللعب");
    help->swipeHandler(HelpViewController::kSwipeLeft); // only the button ends the show
    EXPECT_EQ(nav.presentedViewController(), help);
    help->gotoPreviousView();
    EXPECT_EQ(help->nextButtonText(), "التالي");
    help->nextButtonAction(true);
    help->nextButtonAction(true);
    EXPECT_EQ(nav.presentedViewController(), nullptr);

    // In the first session the close button stays hidden.
    SessionManager::sharedInstance().checkAndLogSessionInfo();
    nav.presentViewController(nav.instantiateViewControllerWithIdentifier("HelpViewController"));
    EXPECT_TRUE(qobject_cast<HelpViewController*>(nav.presentedViewController())->closeButtonHidden());
    nav.presentViewController(nav.instantiateViewControllerWithIdentifier("TipsViewController"));
    qobject_cast<TipsViewController*>(nav.presentedViewController())->close();
    EXPECT_NE(qobject_cast<HelpViewController*>(nav.presentedViewController()), nullptr);
}

TEST(About, EachActionLeadsWhereItSays) {
    TestPlatform platform;
    auto& nav = Platform::shared().navigator();
    auto* main = new MainViewController();
    nav.setRootViewController(main);
    main->openAbout();
    auto* about = qobject_cast<AboutViewController*>(nav.presentedViewController());
    ASSERT_NE(about, nullptr);

    about->openHelp();
    EXPECT_EQ(nav.presentedViewController()->identifier(), "HelpViewController");
    nav.dismissViewController();
    about->openTips();
    EXPECT_EQ(nav.presentedViewController()->identifier(), "TipsViewController");
    nav.dismissViewController();
    about->openCredits();
    EXPECT_EQ(nav.presentedViewController()->identifier(), "CreditsViewController");
    // Each paragraph of the credits runs in its own language's direction, every address a link.
    const QString credits = qobject_cast<CreditsViewController*>(nav.presentedViewController())->html();
    EXPECT_TRUE(credits.contains(QStringLiteral("<p dir=\"rtl\" align=\"right\">رسوم الصور</p>")));
    EXPECT_TRUE(credits.contains(QStringLiteral("<p dir=\"ltr\" align=\"left\">Picture artwork</p>")));
    EXPECT_TRUE(credits.contains(QRegularExpression(QStringLiteral("<p dir=\"rtl\"[^>]*>- Noto Emoji"))));
    EXPECT_TRUE(credits.contains(QStringLiteral("<a "
                                                "href=\"https://creativecommons.org/licenses/by-sa/4.0/"
                                                "\">https://creativecommons.org/licenses/by-sa/4.0/</a>")));
    EXPECT_FALSE(credits.contains(QStringLiteral("4.0/)\"")));
    nav.dismissViewController();

    about->rateGame();
    about->openFacebookPage();
    about->openTwitterPage();
    about->openInstagramPage();
    ASSERT_EQ(platform.urls().opened.size(), 4);
    for (const QUrl& url : platform.urls().opened) {
        EXPECT_EQ(url.scheme(), "https") << url.toString().toStdString();
    }
    EXPECT_TRUE(platform.urls().opened.at(1).host().contains("facebook"));
    EXPECT_TRUE(ShareManager::sharedInstance().isAppRated());

    // The maker's games open in the store sheet over the hub.
    about->openOurGames();
    auto* store = qobject_cast<SKStoreProductViewController*>(nav.presentedViewController());
    ASSERT_NE(store, nullptr);
    EXPECT_EQ(store->productIdentifier(), Addresses::makerStoreIdentifier());
    store->done();
    EXPECT_EQ(nav.presentedViewController(), about);

    // Sharing the game puts up the share sheet with the invitation and the store page.
    about->shareGame();
    auto& sheet = Platform::shared().shareSheet();
    ASSERT_TRUE(sheet.isVisible());
    EXPECT_TRUE(sheet.text().contains("طارفولين"));
    EXPECT_EQ(sheet.link(), platform.urls().opened.first().toString());
    sheet.cancel();
    about->close();
    EXPECT_EQ(nav.presentedViewController(), nullptr);
}

TEST(Tips, ThePopupThatStandsReadyLeadsToTheLeaderboardOrTheTasks) {
    TestPlatform platform;
    auto& tips = TipsManager::sharedInstance();
    auto& nav = Platform::shared().navigator();
    nav.setRootViewController(new MainViewController());
    tips.setCurrentSessions(4);
    tips.checkAndShowAlertMessagePopup();
    EXPECT_FALSE(platform.alerts().isVisible());
    tips.setCurrentSessions(5);
    tips.checkAndShowAlertMessagePopup();
    EXPECT_EQ(platform.alerts().title(), "ترتيبك في الجيم سنتر");
    platform.alerts().press(0);
    auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(nav.presentedViewController());
    ASSERT_NE(pages, nullptr);
    EXPECT_EQ(pages->viewControllerArray().at(pages->currentPageIndex())->identifier(),
              "LeaderboardViewController");
    // Not logged in: the leaderboard asks for the login first.
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("تسجيل الدخول بالجيم سنتر"));
    platform.alerts().press(0);
    nav.dismissViewController();
    tips.setCurrentSessions(3);
    tips.checkAndShowAlertMessagePopup();
    EXPECT_FALSE(platform.alerts().isVisible()); // nothing to collect
    tips.setIsUnrewardedAchievement(true);
    tips.checkAndShowAlertMessagePopup();
    EXPECT_EQ(platform.alerts().title(), "المهمات");
    platform.alerts().press(0);
    EXPECT_EQ(nav.presentedViewController()->identifier(), "AchievementsViewController");
}

} // namespace
