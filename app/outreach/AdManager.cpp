#include "AdManager.h"

#include "InterstitialManager.h"
#include "platform/SharedInstances.h"
#include "screens/Util.h"

#include <algorithm>
#include <cmath>

AdManager& AdManager::sharedInstance() {
    return Shared<AdManager>::instance();
}

void AdManager::loadAdMobBannerViewOnView(AdsHostView* view) {
    if (!view) {
        return;
    }
    const QRectF host = view->frame();
    const double width = std::max<double>(kMinimumBannerWidth, std::floor(host.width()));
    const double height = std::max<double>(kMinimumBannerHeight, std::floor(host.height()));
    bannerView = GADBannerView::initWithFrame(QRectF(0, 0, width, height));
    bannerView->setAdUnitID(InterstitialManager::adUnit(Util::isiPad() ? QStringLiteral("bannerTablet")
                                                                       : QStringLiteral("bannerPhone")));
    bannerView->setDelegate(this);
    bannerView->setRootViewController(Util::getCurrentPresentedViewController());
    view->addSubview(bannerView);
    bannerView->loadRequest(GADRequest::request());
    bannerView->setTag(kBannerTag);
}
