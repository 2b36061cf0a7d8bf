// The maker's other games: the promoted-game table, the card and its buttons, and the selectors' panels.
#include "TestPlatform.h"
#include "core/Game.h"
#include "outreach/Addresses.h"
#include "outreach/AppPromoView.h"
#include "platform/storekit/SKStoreProductViewController.h"
#include "progress/SessionManager.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"
#include "screens/Screens.h"

#include <QFile>
#include <gtest/gtest.h>

namespace {

TEST(Promotion, TheTableNamesEightOfTheMakersGamesEachWithItsPictures) {
    TestPlatform platform;
    const QStringList ids = AppPromoView::promotedAppIds();
    ASSERT_EQ(ids.size(), 8);
    for (const QString& id : ids) {
        EXPECT_FALSE(AppPromoView::getAppTitle(id).isEmpty()) << id.toStdString();
        EXPECT_FALSE(AppPromoView::getAppDesc(id).isEmpty()) << id.toStdString();
        // The pictures ship with the game.
        for (const QUrl& picture : {AppPromoView::getAppIcon(id), AppPromoView::getAppPromoImage(id)}) {
            EXPECT_TRUE(QFile::exists(QLatin1Char(':') + picture.path())) << picture.toString().toStdString();
        }
    }
    EXPECT_TRUE(ids.contains(Addresses::promotedAppId()));
    // The maker's kinds of game lead to their store identifiers; the promoted ones are among them.
    for (const QString& id : ids) {
        bool found = false;
        for (qint64 kind = 0; kind < 12; ++kind) {
            found = found || Game::getPromoGameAppId(kind) == id;
        }
        EXPECT_TRUE(found) << id.toStdString();
    }
}

// The store sheet a button put up, for the product it was asked to show.
SKStoreProductViewController* storeSheet() {
    return qobject_cast<SKStoreProductViewController*>(
        Platform::shared().navigator().presentedViewController());
}

TEST(Promotion, AnUnknownGameGivesAnEmptyCardWhoseButtonsStillWork) {
    TestPlatform platform;
    registerScreens(Platform::shared().navigator());
    auto& nav = Platform::shared().navigator();
    nav.setRootViewController(new MainViewController());
    AppPromoView card;
    card.setupWithViewControllerAndAppId(nullptr, QStringLiteral("com.example.nothing"));
    EXPECT_TRUE(card.titleLabel().isEmpty());
    EXPECT_TRUE(card.iconImage().isEmpty());
    // A tap on the card and the button do the same: the store sheet for that game.
    card.handleSingleTap();
    ASSERT_NE(storeSheet(), nullptr);
    EXPECT_EQ(storeSheet()->productIdentifier(), "com.example.nothing");
    nav.dismissViewController();
    card.gotoAppAction();
    ASSERT_NE(storeSheet(), nullptr);
    EXPECT_EQ(storeSheet()->productIdentifier(), "com.example.nothing");
    nav.dismissViewController();
    // Without a background under it, closing hides the card and nothing else.
    card.closeAction();
    EXPECT_TRUE(card.isHidden());
    EXPECT_EQ(nav.presentedViewController(), nullptr);
}

TEST(Promotion, APromotedGamesStoreSheetLeadsToItsPage) {
    TestPlatform platform;
    registerScreens(Platform::shared().navigator());
    Platform::shared().navigator().setRootViewController(new MainViewController());
    AppPromoView card;
    const QString id = AppPromoView::promotedAppIds().last();
    card.setupWithViewControllerAndAppId(nullptr, id);
    card.gotoAppAction();
    ASSERT_NE(storeSheet(), nullptr);
    storeSheet()->openProductPage();
    ASSERT_EQ(platform.urls().opened.size(), 1);
    EXPECT_EQ(platform.urls().opened.first(), Addresses::appPage(id));
}

TEST(Promotion, ACardOnItsBackgroundClosesWithIt) {
    TestPlatform platform;
    registerScreens(Platform::shared().navigator());
    auto& nav = Platform::shared().navigator();
    nav.setRootViewController(new MainViewController());
    auto* screen = new AppPromoViewController();
    nav.presentViewController(screen);
    EXPECT_EQ(screen->promoView()->appId(), Addresses::promotedAppId());
    EXPECT_EQ(screen->promoView()->titleLabel(), AppPromoView::getAppTitle(Addresses::promotedAppId()));
    screen->promoView()->closeAction();
    EXPECT_EQ(nav.presentedViewController(), nullptr);
}

TEST(Promotion, TheSelectorsPanelsOpenTheConfiguredPageAndStarsFallOnOneVisitInThree) {
    TestPlatform platform;
    registerScreens(Platform::shared().navigator());
    RoundSelectorViewController rounds;
    EXPECT_EQ(rounds.promoTitle(), AppPromoView::getAppTitle(Addresses::promotedAppId()));
    rounds.openPromoView();
    ASSERT_EQ(platform.urls().opened.size(), 1);
    EXPECT_EQ(platform.urls().opened.first(), Addresses::promoStorePage());
    EXPECT_EQ(platform.audio().totalPlays(), 0); // no sound of its own

    rounds.viewDidLoad(); // the first visit reads the level list, which draws numbers of its own
    int stars = 0;
    QObject::connect(&Platform::shared().emitter(), &MyEmitter::started, [&stars] { ++stars; });
    platform.random().queue({4}); // 4 % 3 == 1
    rounds.viewDidLoad();
    EXPECT_EQ(stars, 1);
    platform.random().queue({5});
    rounds.viewDidLoad();
    EXPECT_EQ(stars, 1);
}

TEST(Promotion, TheMainScreenPromotesOnOneLaunchInThreeFromTheThirdActiveDayPulsing) {
    TestPlatform platform;
    registerScreens(Platform::shared().navigator());
    auto& nav = Platform::shared().navigator();
    SessionManager::sharedInstance().setAcitveDays(2);
    nav.setRootViewController(new MainViewController());
    EXPECT_FALSE(qobject_cast<MainViewController*>(nav.topViewController())->promoVisible());

    // The screen draws one number for the promotion: the first it draws once the third day has come.
    SessionManager::sharedInstance().setAcitveDays(3);
    platform.random().queue({5}); // 5 % 3 == 2
    nav.setRootViewController(new MainViewController());
    EXPECT_FALSE(qobject_cast<MainViewController*>(nav.topViewController())->promoVisible());
    EXPECT_EQ(platform.random().draws(), 1);

    platform.random().queue({4}); // 4 % 3 == 1
    nav.setRootViewController(new MainViewController());
    auto* main = qobject_cast<MainViewController*>(nav.topViewController());
    ASSERT_TRUE(main->promoVisible());
    EXPECT_EQ(main->promoAlpha(), 1.0);
    platform.scheduler().advance(MainViewController::kPromoPulseSeconds);
    EXPECT_EQ(main->promoAlpha(), 0.3);
    platform.scheduler().advance(MainViewController::kPromoPulseSeconds);
    EXPECT_EQ(main->promoAlpha(), 1.0);
    main->openPromoView();
    ASSERT_NE(storeSheet(), nullptr);
    EXPECT_EQ(storeSheet()->productIdentifier(), Addresses::promotedAppId());
}

} // namespace
