#include "AboutViewController.h"

#include "PresentationUtil.h"
#include "outreach/Addresses.h"
#include "outreach/ShareManager.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"

AboutViewController::AboutViewController(QObject* parent)
    : ViewController(QStringLiteral("AboutViewController"), parent) {}

void AboutViewController::openHelp() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openHelpViewController(this);
}

void AboutViewController::openTips() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openTipsViewController(this);
}

void AboutViewController::shareGame() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().shareAppOnCompletion(this, nullptr);
}

void AboutViewController::rateGame() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().rateApp();
}

void AboutViewController::openInstagramPage() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().openOurInstagramPage();
}

void AboutViewController::openTwitterPage() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().openOurTwitterPage();
}

void AboutViewController::openFacebookPage() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().openOurFacebookPage();
}

void AboutViewController::openOurGames() {
    SoundFactory::sharedInstance().playMenuTap();
    ShareManager::sharedInstance().openAppInStoreWithViewController(Addresses::makerStoreIdentifier(), this);
}

void AboutViewController::openCredits() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openCreditsViewController(this);
}

void AboutViewController::close() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
