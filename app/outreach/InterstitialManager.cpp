#include "InterstitialManager.h"

#include "Addresses.h"
#include "GameIAPHelper.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/Util.h"

#include <QDebug>

namespace {

bool inAppsPurchased() {
    return GameIAPHelper::sharedInstance().areInAppsPurchased();
}

} // namespace

InterstitialManager& InterstitialManager::sharedInstance() {
    return Shared<InterstitialManager>::instance();
}

InterstitialManager::InterstitialManager() = default;

QString InterstitialManager::adUnit(const QString& name) {
    return Addresses::adUnit(name);
}

QStringList InterstitialManager::testDeviceIdentifiers() {
    return Addresses::testDeviceIdentifiers();
}

void InterstitialManager::initParams() {
    currentActionCount = 0;
    activeActionCount = 0;
}

void InterstitialManager::initializeSession() {
    if (isInitialized) {
        return;
    }
    isFirstAction = true;
    isPreviousLoadAdFinished = true;
    isPreviousLoadRewardedVideoFinished = true;
    GADMobileAds& kit = GADMobileAds::sharedInstance();
    kit.startWithCompletionHandler(nullptr);
    kit.requestConfiguration().setTestDeviceIdentifiers(testDeviceIdentifiers());
    // The answer is kept by the platform; the ads do not wait for it.
    ATTrackingManager::requestTrackingAuthorizationWithCompletionHandler(
        [](ATTrackingManagerAuthorizationStatus) {});
    isInitialized = true;
}

void InterstitialManager::preloadAdmobAdAtTheRightTime() {
    // The rewarded flag on purpose: while an interstitial loads, no rewarded load starts.
    isPreviousLoadRewardedVideoFinished = false;
    GADInterstitialAd::loadWithAdUnitIDRequestCompletionHandler(
        adUnit(QStringLiteral("interstitial")), GADRequest::request(),
        [this, alive = std::weak_ptr<int>(m_alive)](std::shared_ptr<GADInterstitialAd> ad,
                                                    const std::optional<GADError>& error) {
            if (alive.expired()) {
                return;
            }
            isPreviousLoadRewardedVideoFinished = true;
            if (error || !ad) {
                qWarning().noquote() << QStringLiteral("Failed to load interstitial ad with error: %1")
                                            .arg(error ? error->localizedDescription : QString());
                return;
            }
            admobNormalInterstitial = ad;
            admobNormalInterstitial->setFullScreenContentDelegate(this);
            qInfo("Interstitial ad loaded.");
        });
}

void InterstitialManager::preloadAdmobVideoAdAtTheRightTime() {
    isPreviousLoadRewardedVideoFinished = false;
    GADRewardedAd::loadWithAdUnitIDRequestCompletionHandler(
        adUnit(QStringLiteral("rewarded")), GADRequest::request(),
        [this, alive = std::weak_ptr<int>(m_alive)](std::shared_ptr<GADRewardedAd> ad,
                                                    const std::optional<GADError>& error) {
            if (alive.expired()) {
                return;
            }
            isPreviousLoadRewardedVideoFinished = true;
            auto& center = Platform::shared().notificationCenter();
            if (error || !ad) {
                qWarning().noquote() << QStringLiteral("Rewarded ad failed to load with error: %1")
                                            .arg(error ? error->localizedDescription : QString());
                center.postNotificationName(kNotificationVideoAdFailedToLoad, kLoadResultObject);
                return;
            }
            admobRewardedInterstitial = ad;
            admobRewardedInterstitial->setFullScreenContentDelegate(this);
            qInfo("Rewarded ad loaded.");
            center.postNotificationName(kNotificationVideoAdLoaded, kLoadResultObject);
        });
}

void InterstitialManager::displayInterstitialAd() {
    if (inAppsPurchased()) {
        return;
    }
    displayAdmobAd(kActionBased);
    actionBasedAdsDisplayed += 1;
    admobAdsServed += 1;
}

void InterstitialManager::displayAdmobAd(const QString& kind) {
    if (inAppsPurchased()) {
        return;
    }
    if (!admobNormalInterstitial) {
        qWarning().noquote() << QStringLiteral("XXXXX failed to presnet ad with error %1 XXXXX")
                                    .arg(QStringLiteral("ad was nil"));
        return;
    }
    if (kind == kActionBased) {
        ViewController* root = Util::getCurrentPresentedViewController();
        GADError error;
        if (admobNormalInterstitial->canPresentFromRootViewControllerError(root, &error)) {
            admobNormalInterstitial->presentFromRootViewController(root);
            qInfo("Nuzugra Ad1 is diplayed successfully");
        } else {
            qWarning().noquote() << QStringLiteral("XXXXX failed to presnet ad with error %1 XXXXX")
                                        .arg(error.localizedDescription);
        }
    } else {
        Platform::shared().progressHud().showWithMaskType(ProgressHud::Black);
        Util::delayCallbackForTotalSeconds(
            [this, alive = std::weak_ptr<int>(m_alive), ad = admobNormalInterstitial] {
                if (alive.expired()) {
                    return;
                }
                Platform::shared().progressHud().dismiss();
                ad->presentFromRootViewController(getProperViewControllerForPresentingAd());
            },
            kNonActionDelaySeconds);
        specialAdmobAdsDisplayed += 1;
    }
    admobAdsServed += 1;
}

void InterstitialManager::displayAdmobVideoAd() {
    Platform::shared().progressHud().showWithMaskType(ProgressHud::Black);
    Util::delayCallbackForTotalSeconds(
        [this, alive = std::weak_ptr<int>(m_alive)] {
            if (alive.expired()) {
                return;
            }
            Platform::shared().progressHud().dismiss();
            if (!admobRewardedInterstitial) {
                Util::showMessageWithTitle(QStringLiteral("حاول لاحقا بعد فترة وجيزة"),
                                           QStringLiteral("لايوجد فيديو"));
                return;
            }
            admobRewardedInterstitial->presentFromRootViewControllerUserDidEarnRewardHandler(
                getProperViewControllerForPresentingAd(), [] {
                    Platform::shared().notificationCenter().postNotificationName(NotificationVideoWatched);
                });
        },
        kRewardedDelaySeconds);
}

qint32 InterstitialManager::readActionCount() const {
    return static_cast<qint32>(Platform::shared().userDefaults().integerForKey(QStringLiteral("count")));
}

bool InterstitialManager::isTimeToShowAd() const {
    if (!lastTimeAdDisplayed) {
        return true;
    }
    return lastTimeAdDisplayed->msecsTo(Platform::shared().scheduler().now()) > 0.0;
}

qint64 InterstitialManager::getProperPercentToShowSpecialAdmobAd() const {
    (void)getTotalSpecialAdmobAdsDisplayed();
    return 100;
}

ViewController* InterstitialManager::getProperViewControllerForPresentingAd() const {
    ViewController* root = Util::getRootViewController();
    ViewController* visible = Util::getCurrentPresentedViewController();
    return visible ? visible : root;
}

void InterstitialManager::adDidFailToPresentFullScreenContentWithError(GADFullScreenPresentingAd*,
                                                                       const GADError&) {
    qWarning("Ad did fail to present full screen content.");
}

void InterstitialManager::adWillPresentFullScreenContent(GADFullScreenPresentingAd* ad) {
    qInfo("Ad did present full screen content.");
    adCurrentlyDisplaying = true;
    if (ad != admobRewardedInterstitial.get()) {
        lastTimeAdDisplayed = Platform::shared().scheduler().now();
    }
}

void InterstitialManager::adDidDismissFullScreenContent(GADFullScreenPresentingAd* ad) {
    qInfo("Ad did dismiss full screen content.");
    adCurrentlyDisplaying = false;
    if (ad == admobNormalInterstitial.get()) {
        admobNormalInterstitial.reset();
    } else if (ad == admobRewardedInterstitial.get()) {
        admobRewardedInterstitial.reset();
    }
}

void InterstitialManager::adDidRecordImpression(GADFullScreenPresentingAd*) {
    qInfo("Ad did dismiss full screen content.");
}
