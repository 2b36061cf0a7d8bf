#include "GADAdPresenter.h"

#include "GADFullScreenPresentingAd.h"
#include "platform/Scheduler.h"

namespace {
// Never deleted: QML engines keep a pointer to it until the very end.
GADAdPresenter* s_presenter = nullptr;
} // namespace

GADAdPresenter& GADAdPresenter::shared() {
    if (!s_presenter) {
        s_presenter = new GADAdPresenter();
    }
    return *s_presenter;
}

void GADAdPresenter::resetShared() {
    if (s_presenter) {
        s_presenter->reset();
    }
}

QObject* GADAdPresenter::adObject() const {
    return m_ad.get();
}

bool GADAdPresenter::isRewarded() const {
    return m_ad && m_ad->isRewarded();
}

double GADAdPresenter::progress() const {
    if (!isRewarded() || m_ad->durationSeconds() <= 0) {
        return m_ad ? 1.0 : 0.0;
    }
    const int total = m_ad->durationSeconds();
    return static_cast<double>(total - m_secondsLeft) / total;
}

bool GADAdPresenter::isActionEnabled() const {
    return m_ad && (!m_ad->isRewarded() || m_rewardEarned);
}

QString GADAdPresenter::closeTitle() const {
    return isRewarded() && !m_rewardEarned ? kCloseWithoutRewardTitle : kCloseTitle;
}

void GADAdPresenter::show(std::shared_ptr<GADFullScreenPresentingAd> ad,
                          std::function<void()> rewardHandler) {
    if (m_countdown) {
        m_countdown->invalidate();
        m_countdown.reset();
    }
    m_ad = std::move(ad);
    m_rewardEarned = false;
    m_rewardHandler = nullptr;
    m_secondsLeft = 0;
    if (m_ad && m_ad->isRewarded()) {
        m_rewardHandler = std::move(rewardHandler);
        m_secondsLeft = m_ad->durationSeconds();
        // The timer belongs to this presenter, which is never deleted: `this` stays valid.
        m_countdown = Timer::scheduledTimerWithTimeInterval(1.0, true, [this] { tick(); });
    }
    emit changed();
}

void GADAdPresenter::tick() {
    if (!m_ad || m_rewardEarned) {
        return;
    }
    m_secondsLeft = std::max(0, m_secondsLeft - 1);
    if (m_secondsLeft > 0) {
        emit changed();
        return;
    }
    m_countdown->invalidate();
    m_countdown.reset();
    m_rewardEarned = true;
    const std::shared_ptr<GADFullScreenPresentingAd> ad = m_ad;
    const std::function<void()> reward = std::move(m_rewardHandler);
    m_rewardHandler = nullptr;
    emit changed();
    if (reward) {
        reward();
    }
    ad->claimReward();
}

void GADAdPresenter::close() {
    if (!m_ad) {
        return;
    }
    const std::shared_ptr<GADFullScreenPresentingAd> ad = std::move(m_ad);
    m_ad.reset();
    if (m_countdown) {
        m_countdown->invalidate();
        m_countdown.reset();
    }
    m_rewardHandler = nullptr;
    m_secondsLeft = 0;
    m_rewardEarned = false;
    emit changed();
    ad->dismissed();
}

void GADAdPresenter::tapCallToAction() {
    if (!isActionEnabled()) {
        return;
    }
    GADAdKit::openActionUrl(m_ad->actionUrl());
    close();
}

void GADAdPresenter::reset() {
    if (m_countdown) {
        m_countdown->invalidate();
        m_countdown.reset();
    }
    m_rewardHandler = nullptr;
    m_secondsLeft = 0;
    m_rewardEarned = false;
    if (m_ad) {
        m_ad.reset();
        emit changed();
    }
}
