#include "GADFullScreenPresentingAd.h"

#include "GADAdPresenter.h"
#include "platform/Platform.h"

#include <QDebug>
#include <QQmlEngine>

namespace {

void sendRewardClaim(const QString& impressionId) {
    GADMobileAds::sharedInstance().server().claimReward(
        impressionId, [impressionId](const std::optional<GADError>& error) {
            if (error) {
                qWarning().noquote() << "The ad server refused the reward of impression" << impressionId
                                     << "-" << error->localizedDescription;
            }
        });
}

} // namespace

GADFullScreenPresentingAd::GADFullScreenPresentingAd(GADAdContent content) : m_content(std::move(content)) {
    // Shared with QML while on screen, but owned here.
    QQmlEngine::setObjectOwnership(this, QQmlEngine::CppOwnership);
    if (!m_content.imagePath.isEmpty()) {
        m_imageSource = GADMobileAds::sharedInstance().server().creativeUrl(m_content.imagePath);
    }
}

GADFullScreenPresentingAd::~GADFullScreenPresentingAd() = default;

bool GADFullScreenPresentingAd::canPresentFromRootViewControllerError(ViewController* root,
                                                                      GADError* error) const {
    QString why;
    if (m_presented) {
        why = QStringLiteral("عُرض هذا الإعلان من قبل");
    } else if (GADAdPresenter::shared().isVisible()) {
        why = QStringLiteral("إعلان آخر على الشاشة");
    } else if (!root) {
        why = QStringLiteral("لا توجد شاشة يعرض عليها");
    } else {
        return true;
    }
    if (error) {
        *error = makeGADError(GADErrorCannotPresent, why);
    }
    return false;
}

void GADFullScreenPresentingAd::present(ViewController* root, std::function<void()> rewardHandler) {
    const std::shared_ptr<GADFullScreenPresentingAd> self = shared_from_this();
    GADError error;
    if (!canPresentFromRootViewControllerError(root, &error)) {
        qInfo().noquote() << "The" << m_content.format << "ad" << m_content.adIdentifier << "is not shown -"
                          << error.localizedDescription;
        if (m_delegate) {
            m_delegate->adDidFailToPresentFullScreenContentWithError(this, error);
        }
        return;
    }
    m_presented = true;
    if (m_delegate) {
        m_delegate->adWillPresentFullScreenContent(this);
    }
    GADAdPresenter::shared().show(self, std::move(rewardHandler));
    std::weak_ptr<GADFullScreenPresentingAd> weak = self;
    GADMobileAds::sharedInstance().server().recordImpression(
        m_content.impressionToken, GADAdKit::trackingParameter(),
        [weak](const QString& impressionId, const std::optional<GADError>& failure) {
            const std::shared_ptr<GADFullScreenPresentingAd> ad = weak.lock();
            if (!ad) {
                return;
            }
            if (failure) {
                qWarning().noquote() << "The impression of ad" << ad->m_content.adIdentifier
                                     << "was not recorded -" << failure->localizedDescription;
                if (ad->m_claimWaitsForImpression) {
                    qWarning().noquote() << "Its reward cannot be claimed without it";
                }
                return;
            }
            ad->impressionRecorded(impressionId);
        });
}

void GADFullScreenPresentingAd::impressionRecorded(const QString& impressionId) {
    m_impressionId = impressionId;
    m_impressionRecordedAt = Platform::shared().scheduler().now();
    if (m_claimWaitsForImpression) {
        m_claimWaitsForImpression = false;
        claimReward();
    }
    if (m_delegate) {
        m_delegate->adDidRecordImpression(this);
    }
}

void GADFullScreenPresentingAd::claimReward() {
    if (m_impressionId.isEmpty()) {
        m_claimWaitsForImpression = true;
        return;
    }
    // The server pays once its own clock has seen the whole duration since the impression. The impression's
    // answer came after the server wrote it down, so waiting the duration from that answer is always enough.
    const double elapsed = m_impressionRecordedAt.msecsTo(Platform::shared().scheduler().now()) / 1000.0;
    const double wait = m_content.durationSeconds - elapsed;
    if (wait <= 0) {
        sendRewardClaim(m_impressionId);
    } else {
        // Not tied to the ad: the claim goes even if the ad is let go meanwhile.
        Platform::shared().scheduler().schedule(wait, [id = m_impressionId] { sendRewardClaim(id); });
    }
}

void GADFullScreenPresentingAd::dismissed() {
    if (m_delegate) {
        m_delegate->adDidDismissFullScreenContent(this);
    }
}

namespace {

// Loads an ad of one format and hands it over as the kind of ad that shows it.
template <class Ad>
void loadFullScreenAd(const QString& adUnitID, const QString& format,
                      std::function<void(std::shared_ptr<Ad>, const std::optional<GADError>&)> handler) {
    GADAdKit::loadAd(adUnitID, format,
                     [handler = std::move(handler)](const std::optional<GADAdContent>& content,
                                                    const std::optional<GADError>& error) {
                         if (!handler) {
                             return;
                         }
                         if (!content) {
                             handler(nullptr, error);
                             return;
                         }
                         handler(Ad::fromContent(*content), std::nullopt);
                     });
}

} // namespace

std::shared_ptr<GADInterstitialAd> GADInterstitialAd::fromContent(const GADAdContent& content) {
    return std::shared_ptr<GADInterstitialAd>(new GADInterstitialAd(content));
}

std::shared_ptr<GADRewardedAd> GADRewardedAd::fromContent(const GADAdContent& content) {
    return std::shared_ptr<GADRewardedAd>(new GADRewardedAd(content));
}

void GADInterstitialAd::loadWithAdUnitIDRequestCompletionHandler(
    const QString& adUnitID, const GADRequest&,
    std::function<void(std::shared_ptr<GADInterstitialAd>, const std::optional<GADError>&)> handler) {
    loadFullScreenAd<GADInterstitialAd>(adUnitID, QStringLiteral("interstitial"), std::move(handler));
}

void GADInterstitialAd::presentFromRootViewController(ViewController* root) {
    present(root, nullptr);
}

void GADRewardedAd::loadWithAdUnitIDRequestCompletionHandler(
    const QString& adUnitID, const GADRequest&,
    std::function<void(std::shared_ptr<GADRewardedAd>, const std::optional<GADError>&)> handler) {
    loadFullScreenAd<GADRewardedAd>(adUnitID, QStringLiteral("rewarded"), std::move(handler));
}

void GADRewardedAd::presentFromRootViewControllerUserDidEarnRewardHandler(
    ViewController* root, std::function<void()> rewardHandler) {
    present(root, std::move(rewardHandler));
}
