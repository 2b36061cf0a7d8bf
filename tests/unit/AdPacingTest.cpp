// How often ads come, on the test clock over a fake ad server: nothing before the kit is started, one
// interstitial per after-level screen and only when one is ready, none and no preload once anything has been
// bought (the banner stays), and a rewarded video that pays only at its end.
#include "FakeAdServer.h"
#include "TestPlatform.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelSuccessViewController.h"
#include "core/LevelsInfoReader.h"
#include "outreach/AdManager.h"
#include "outreach/GameIAPHelper.h"
#include "outreach/InterstitialManager.h"
#include "screens/MainViewController.h"
#include "screens/PresentationUtil.h"
#include "screens/Screens.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace {

class AdPacing : public ::testing::Test {
protected:
    void SetUp() override {
        registerScreens(Platform::shared().navigator());
        LevelsInfoReader::setResourceRoot(platform.folder());
        platform.writePackFile(14, QStringLiteral("سمكة"), QStringLiteral("ابتثجحخد"));
        LevelsInfoReader::sharedInstance().loadAllPacksLevelsWithEnc("ok", false);
        LevelManager::sharedInstance().saveCurrentLevelTo(3);
        ads = FakeAdServer::install();
        ads->ads[InterstitialManager::adUnit("interstitial")] = fakeAd("store-gold", "interstitial");
        ads->ads[InterstitialManager::adUnit("rewarded")] = fakeAd("daily-bonus", "rewarded");
        ads->ads[InterstitialManager::adUnit("bannerPhone")] = fakeAd("leaderboard-top", "banner");
    }
    void TearDown() override { LevelsInfoReader::setResourceRoot(QStringLiteral(":/levels")); }

    static InterstitialManager& manager() { return InterstitialManager::sharedInstance(); }
    void startKit() {
        manager().initializeSession();
        QCoreApplication::processEvents();
    }
    GameViewController* play(qint64 level) {
        auto game = Game::initWithGameLevelAndGameRound(level, 0);
        game->setLevelInfo(LevelsInfoReader::sharedInstance().getLevelInfoPackId(level, 0));
        auto* vc = new GameViewController();
        vc->setGame(game);
        Platform::shared().navigator().setRootViewController(vc);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return vc;
    }
    LevelSuccessViewController* afterLevel(GameViewController* vc) {
        vc->gameSuccess();
        return qobject_cast<LevelSuccessViewController*>(
            Platform::shared().navigator().presentedViewController());
    }
    int loadsOf(const char* unit) const { return ads->requestsFor(InterstitialManager::adUnit(unit)); }
    static bool adOnScreen() { return GADAdPresenter::shared().isVisible(); }
    bool hud() { return Platform::shared().progressHud().isVisible(); }

    TestPlatform platform;
    std::shared_ptr<FakeAdServer::State> ads;
};

TEST_F(AdPacing, NothingLoadsBeforeTheKitStartsAndItStartsOnce) {
    play(3);
    EXPECT_EQ(loadsOf("interstitial"), 0);
    EXPECT_EQ(loadsOf("rewarded"), 0);
    startKit();
    startKit();
    EXPECT_TRUE(GADMobileAds::sharedInstance().isStarted());
    const QStringList devices = GADMobileAds::sharedInstance().requestConfiguration().testDeviceIdentifiers();
    ASSERT_EQ(devices.size(), 2);
    for (const QString& id : devices) {
        EXPECT_TRUE(QRegularExpression(QStringLiteral("^[0-9a-f]{32}$")).match(id).hasMatch())
            << id.toStdString();
    }
    play(4);
    EXPECT_EQ(loadsOf("interstitial"), 1);
}

TEST_F(AdPacing, OneInterstitialPerAfterLevelScreenWhenOneIsReady) {
    startKit();
    auto* vc = play(3);
    ASSERT_TRUE(manager().admobNormalInterstitial);
    manager().increaseActionCount();
    auto* screen = afterLevel(vc);
    ASSERT_NE(screen, nullptr);
    EXPECT_FALSE(hud());
    platform.scheduler().advance(0.5);
    EXPECT_TRUE(hud());
    EXPECT_EQ(Platform::shared().progressHud().maskType(), ProgressHud::Black);
    EXPECT_FALSE(adOnScreen());
    platform.scheduler().advance(0.5);
    EXPECT_FALSE(hud());
    ASSERT_TRUE(adOnScreen());
    EXPECT_TRUE(manager().isAddCurrentlyDisplaying());
    EXPECT_EQ(manager().currentActionCount, 0);
    EXPECT_EQ(manager().actionBasedAdsDisplayed, 1);
    EXPECT_EQ(manager().admobAdsServed, 2); // a shown level-end ad counts twice there
    platform.scheduler().advance(0.01);
    EXPECT_TRUE(manager().isTimeToShowAd()); // a moment after an ad
    GADAdPresenter::shared().close();
    EXPECT_FALSE(manager().isAddCurrentlyDisplaying());
    EXPECT_FALSE(manager().admobNormalInterstitial); // shown once, then thrown away

    // The same screen appearing again brings no second ad.
    screen->viewDidAppear();
    platform.scheduler().advance(2);
    EXPECT_FALSE(adOnScreen());
    EXPECT_EQ(manager().getTotalAdsDisplayed(), 1);
}

TEST_F(AdPacing, WithNoAdReadyTheLevelGoesOnAndTheNextLevelLoadsAgain) {
    startKit();
    ads->holdAds = true;
    auto* vc = play(3);
    EXPECT_EQ(loadsOf("interstitial"), 1);
    afterLevel(vc);
    platform.scheduler().advance(1);
    EXPECT_FALSE(adOnScreen());
    EXPECT_FALSE(hud());
    EXPECT_EQ(manager().getTotalAdsDisplayed(), 1); // the attempt counts
    // The interstitial's gate never closes: a second load starts while the first is still out.
    vc->onStartNextLevel();
    EXPECT_EQ(loadsOf("interstitial"), 2);
    // Meanwhile no rewarded load starts.
    vc->preloadVideoRewardAd();
    EXPECT_EQ(loadsOf("rewarded"), 0);
}

TEST_F(AdPacing, AfterAPurchaseNoFullScreenAdAndNoPreloadButTheBannerStays) {
    startKit();
    GameIAPHelper::sharedInstance().setInAppsPurchased(true);
    auto* vc = play(3);
    vc->preloadVideoRewardAd();
    EXPECT_EQ(loadsOf("interstitial"), 0);
    EXPECT_EQ(loadsOf("rewarded"), 0);
    QObject* banner = vc->adsView()->viewWithTag(AdManager::kBannerTag);
    ASSERT_NE(banner, nullptr);
    EXPECT_TRUE(banner->property("loaded").toBool());
    EXPECT_GE(banner->property("frame").toRectF().width(), 320);
    EXPECT_GE(banner->property("frame").toRectF().height(), 50);

    // An interstitial loaded before the purchase is not shown after it.
    GameIAPHelper::sharedInstance().setInAppsPurchased(false);
    vc->onStartNextLevel();
    ASSERT_TRUE(manager().admobNormalInterstitial);
    GameIAPHelper::sharedInstance().setInAppsPurchased(true);
    afterLevel(vc);
    platform.scheduler().advance(1);
    EXPECT_FALSE(adOnScreen());
    EXPECT_EQ(manager().getTotalAdsDisplayed(), 0);
}

TEST_F(AdPacing, ARewardedVideoPaysOnlyAtItsEnd) {
    startKit();
    play(3);
    int watched = 0;
    Platform::shared().notificationCenter().addObserver(this, NotificationVideoWatched,
                                                        [&](const Notification&) { ++watched; });
    manager().preloadAdmobVideoAdAtTheRightTime();
    ASSERT_TRUE(manager().isVideoRewardAdAvailable());
    manager().displayAdmobVideoAd();
    EXPECT_TRUE(hud());
    platform.scheduler().advance(0.5);
    ASSERT_TRUE(adOnScreen());
    platform.scheduler().advance(14);
    GADAdPresenter::shared().close();
    EXPECT_EQ(watched, 0);
    EXPECT_FALSE(manager().isVideoRewardAdAvailable());

    // No video loaded: the player is told.
    manager().displayAdmobVideoAd();
    platform.scheduler().advance(0.5);
    EXPECT_EQ(Platform::shared().alerts().title(), "لايوجد فيديو");
    EXPECT_EQ(Platform::shared().alerts().message(), "حاول لاحقا بعد فترة وجيزة");
    Platform::shared().alerts().press(0);

    manager().preloadAdmobVideoAdAtTheRightTime();
    manager().displayAdmobVideoAd();
    platform.scheduler().advance(0.5 + 15);
    EXPECT_EQ(watched, 1);
    GADAdPresenter::shared().close();
    EXPECT_EQ(watched, 1);
    Platform::shared().notificationCenter().removeObserver(this);
}

TEST_F(AdPacing, ADismissalOfAnotherAdClearsOnlyTheOnScreenFlag) {
    startKit();
    play(3);
    ASSERT_TRUE(manager().admobNormalInterstitial);
    manager().adCurrentlyDisplaying = true;
    GADInterstitialAd* stranger = nullptr;
    manager().adDidDismissFullScreenContent(stranger);
    EXPECT_FALSE(manager().isAddCurrentlyDisplaying());
    EXPECT_TRUE(manager().admobNormalInterstitial);
}

TEST_F(AdPacing, AHouseAdLeadsToItsScreenInTheGame) {
    auto& nav = Platform::shared().navigator();
    nav.setRootViewController(new MainViewController());
    EXPECT_FALSE(PresentationUtil::openInGameAddress(QUrl("tarvolin://nowhere")));
    EXPECT_FALSE(PresentationUtil::openInGameAddress(QUrl("https://molvane.example/store")));
    EXPECT_EQ(nav.presentedViewController(), nullptr);
    ASSERT_TRUE(PresentationUtil::openInGameAddress(QUrl("tarvolin://store")));
    EXPECT_EQ(nav.presentedViewController()->identifier(), "StoreViewController");
    nav.dismissViewController();
    ASSERT_TRUE(PresentationUtil::openInGameAddress(QUrl("tarvolin://daily-bonus")));
    EXPECT_EQ(nav.presentedViewController()->identifier(), "AchievementsViewController");
}

} // namespace
