#pragma once

#include "GADAdContent.h"
#include "GADMobileAds.h"

#include <QColor>
#include <QDateTime>
#include <QObject>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

class ViewController;
class GADFullScreenPresentingAd;

// Told about a full-screen ad's life on screen.
class GADFullScreenContentDelegate {
public:
    virtual ~GADFullScreenContentDelegate() = default;
    virtual void adDidFailToPresentFullScreenContentWithError(GADFullScreenPresentingAd* ad,
                                                              const GADError& error) = 0;
    virtual void adWillPresentFullScreenContent(GADFullScreenPresentingAd* ad) = 0;
    virtual void adDidDismissFullScreenContent(GADFullScreenPresentingAd* ad) = 0;
    virtual void adDidRecordImpression(GADFullScreenPresentingAd* ad) = 0;
};

// A loaded full-screen ad. It is shown once: presented, the overlay (GADAdPresenter) draws it and the server
// counts the impression; closed, its delegate hears of it. Ads are shared objects: the caller keeps the ad it
// was handed, and the overlay keeps the one on screen.
class GADFullScreenPresentingAd : public QObject,
                                  public std::enable_shared_from_this<GADFullScreenPresentingAd> {
    Q_OBJECT
    Q_PROPERTY(QString adIdentifier READ adIdentifier CONSTANT)
    Q_PROPERTY(QString format READ format CONSTANT)
    Q_PROPERTY(QString kind READ kind CONSTANT)
    Q_PROPERTY(QString promotion READ promotion CONSTANT)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString body READ body CONSTANT)
    Q_PROPERTY(QString callToAction READ callToAction CONSTANT)
    Q_PROPERTY(QString actionUrl READ actionUrl CONSTANT)
    Q_PROPERTY(QUrl imageSource READ imageSource CONSTANT)
    Q_PROPERTY(QColor background READ background CONSTANT)
    Q_PROPERTY(QColor foreground READ foreground CONSTANT)
    Q_PROPERTY(QColor accent READ accent CONSTANT)
    Q_PROPERTY(int durationSeconds READ durationSeconds CONSTANT)
public:
    ~GADFullScreenPresentingAd() override;

    QString adIdentifier() const { return m_content.adIdentifier; }
    QString format() const { return m_content.format; }
    QString kind() const { return m_content.kind; }
    QString promotion() const { return m_content.promotion; }
    QString title() const { return m_content.title; }
    QString body() const { return m_content.body; }
    QString callToAction() const { return m_content.callToAction; }
    QString actionUrl() const { return m_content.actionUrl; }
    QUrl imageSource() const { return m_imageSource; }
    QColor background() const { return m_content.background; }
    QColor foreground() const { return m_content.foreground; }
    QColor accent() const { return m_content.accent; }
    int durationSeconds() const { return m_content.durationSeconds; }
    bool isRewarded() const { return m_content.format == QLatin1String("rewarded"); }

    void setFullScreenContentDelegate(GADFullScreenContentDelegate* delegate) { m_delegate = delegate; }
    GADFullScreenContentDelegate* fullScreenContentDelegate() const { return m_delegate; }
    // Whether presenting now would show the ad; tells why not in `error` (when given). Changes nothing.
    bool canPresentFromRootViewControllerError(ViewController* root, GADError* error) const;
    // The impression's identifier at the server, once it has been recorded.
    QString impressionIdentifier() const { return m_impressionId; }

protected:
    explicit GADFullScreenPresentingAd(GADAdContent content);
    // Shows the ad through the overlay, or tells the delegate why it cannot.
    void present(ViewController* root, std::function<void()> rewardHandler);

private:
    friend class GADAdPresenter;
    void impressionRecorded(const QString& impressionId);
    // The end of a rewarded ad's time: its reward is claimed at the server.
    void claimReward();
    void dismissed();

    GADAdContent m_content;
    QUrl m_imageSource;
    GADFullScreenContentDelegate* m_delegate = nullptr;
    bool m_presented = false;
    QString m_impressionId;
    QDateTime m_impressionRecordedAt;
    bool m_claimWaitsForImpression = false;
};

class GADInterstitialAd : public GADFullScreenPresentingAd {
    Q_OBJECT
public:
    // Loads the unit's next interstitial; the handler gets the ad or the error on the main thread.
    static void loadWithAdUnitIDRequestCompletionHandler(
        const QString& adUnitID, const GADRequest& request,
        std::function<void(std::shared_ptr<GADInterstitialAd> ad, const std::optional<GADError>& error)>
            handler);
    void presentFromRootViewController(ViewController* root);
    static std::shared_ptr<GADInterstitialAd> fromContent(const GADAdContent& content);

private:
    using GADFullScreenPresentingAd::GADFullScreenPresentingAd;
};

// A rewarded "video": it plays for its duration with a countdown; the reward handler runs once when the time
// is over, and the reward is claimed at the server. Closed earlier, it pays nothing.
class GADRewardedAd : public GADFullScreenPresentingAd {
    Q_OBJECT
public:
    static void loadWithAdUnitIDRequestCompletionHandler(
        const QString& adUnitID, const GADRequest& request,
        std::function<void(std::shared_ptr<GADRewardedAd> ad, const std::optional<GADError>& error)> handler);
    void presentFromRootViewControllerUserDidEarnRewardHandler(ViewController* root,
                                                               std::function<void()> rewardHandler);
    static std::shared_ptr<GADRewardedAd> fromContent(const GADAdContent& content);

private:
    using GADFullScreenPresentingAd::GADFullScreenPresentingAd;
};
