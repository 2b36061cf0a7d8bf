#pragma once

#include "platform/adkit/AdKit.h"

#include <QDateTime>
#include <QString>
#include <QVariantList>
#include <memory>
#include <optional>

class ViewController;

inline const QString kNotificationVideoAdLoaded = QStringLiteral("kNotificationVideoAdLoaded");
inline const QString kNotificationVideoAdFailedToLoad = QStringLiteral("kNotificationVideoAdFailedToLoad");
inline const QString NotificationVideoWatched = QStringLiteral("NotificationVideoWatched");

// The owner of the game's two full-screen ads, an interstitial and a rewarded video. What paces them is where
// they are loaded and shown: an interstitial at each first appearance of the after-level screen that finds
// one ready, the next one loaded when a level starts, and none at all once anything has been bought.
class InterstitialManager : public GADFullScreenContentDelegate {
public:
    static inline const QString kActionBased = QStringLiteral("ActionBased");
    static inline const QString kLoadResultObject = QStringLiteral("reward");
    static constexpr double kRewardedDelaySeconds = 0.5;
    static constexpr double kNonActionDelaySeconds = 1.0;

    static InterstitialManager& sharedInstance();
    InterstitialManager();
    void loadData() { initParams(); }

    void initParams();
    void initializeSession();
    void preloadAdmobAdAtTheRightTime();
    void preloadAdmobVideoAdAtTheRightTime();
    void displayInterstitialAd();
    void displayAdmobAd(const QString& kind);
    void displayAdmobVideoAd();
    bool isVideoRewardAdAvailable() const { return admobRewardedInterstitial != nullptr; }
    void increaseActionCount() { currentActionCount += 1; }
    void resetActionCount() { currentActionCount = 0; }
    qint32 readActionCount() const;
    bool isTimeToShowAd() const;
    bool isAddCurrentlyDisplaying() const { return adCurrentlyDisplaying; }
    qint64 getTotalSpecialAdmobAdsDisplayed() const { return specialAdmobAdsDisplayed; }
    qint64 getTotalAdsDisplayed() const { return actionBasedAdsDisplayed + specialAdmobAdsDisplayed; }
    qint64 getProperPercentToShowSpecialAdmobAd() const;
    ViewController* getProperViewControllerForPresentingAd() const;
    void showTestInterstitialAd() {}

    void adDidFailToPresentFullScreenContentWithError(GADFullScreenPresentingAd* ad,
                                                      const GADError& error) override;
    void adWillPresentFullScreenContent(GADFullScreenPresentingAd* ad) override;
    void adDidDismissFullScreenContent(GADFullScreenPresentingAd* ad) override;
    void adDidRecordImpression(GADFullScreenPresentingAd* ad) override;

    // The operator's ad units and test devices, from the game's resources (outreach.json).
    static QString adUnit(const QString& name);
    static QStringList testDeviceIdentifiers();

    qint32 currentActionCount = 0;
    qint32 activeActionCount = 0;
    qint64 admobLoad = 0;
    qint64 applovinLoad = 0;
    qint64 admobAdsServed = 0;
    qint64 applovinAdsServed = 0;
    bool isFirstFail = false;
    bool isSettingsRead = false;
    bool isAdsEnabled = false;
    bool isFirstAction = false;
    qint64 actionBasedAdsDisplayed = 0;
    qint64 specialAdmobAdsDisplayed = 0;
    qint64 totalAdsDisplayed = 0;
    bool adCurrentlyDisplaying = false;
    QVariantList networks;
    std::optional<QDateTime> lastTimeAdDisplayed;
    bool isAd2LoadFailed = false;
    bool isInitialized = false;
    bool isPreviousLoadAdFinished = false;
    bool isPreviousLoadRewardedVideoFinished = false;
    std::shared_ptr<GADInterstitialAd> admobNormalInterstitial;
    std::shared_ptr<GADRewardedAd> admobRewardedInterstitial;

private:
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
