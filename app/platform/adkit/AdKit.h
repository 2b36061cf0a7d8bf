#pragma once

// The ad delivery kit: house ads of tarvolin-service, loaded and shown the way a phone's ads kit does it.
#include "ATTrackingManager.h"
#include "GADAdPresenter.h"
#include "GADBannerView.h"
#include "GADFullScreenPresentingAd.h"
#include "GADMobileAds.h"
