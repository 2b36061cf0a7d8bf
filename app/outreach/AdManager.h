#pragma once

#include "platform/adkit/AdKit.h"

// The banner of the play screen: shown to everybody, buyers included.
class AdManager : public GADBannerViewDelegate {
public:
    static constexpr int kBannerTag = 444;
    static constexpr int kMinimumBannerWidth = 320;
    static constexpr int kMinimumBannerHeight = 50;

    static AdManager& sharedInstance();
    void loadData() {}

    // Puts a banner at the host's origin, as wide as the host and as high (at least 320 by 50), and loads it.
    void loadAdMobBannerViewOnView(AdsHostView* view);
    void adViewDidReceiveAd(GADBannerView*) override {}
    void adViewWillPresentScreen(GADBannerView*) override {}
    void adViewDidFailToReceiveAdWithError(GADBannerView*, const GADError&) override {}

    GADBannerView* bannerView = nullptr;
};
