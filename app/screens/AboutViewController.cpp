#include "AboutViewController.h"

#include "Localization.h"
#include "PresentationUtil.h"
#include "Util.h"
#include "outreach/Addresses.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"

#include <QClipboard>
#include <QGuiApplication>

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

QString AboutViewController::shareText() {
    return Localization::localizedString(QStringLiteral("share.shareAppMessage"))
               .arg(QStringLiteral("طارفولين")) +
           QStringLiteral("\n") + Addresses::appStorePage().toString();
}

void AboutViewController::shareGame() {
    SoundFactory::sharedInstance().playMenuTap();
    // On a desktop the invitation goes by the clipboard, to be pasted wherever the player talks to friends.
    if (QClipboard* clipboard = QGuiApplication::clipboard()) {
        clipboard->setText(shareText());
    }
    Util::showMessageWithTitle(shareText(), QStringLiteral("تم نسخ الدعوة، الصقها لأصدقائك"));
}

void AboutViewController::rateGame() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().urls().openURL(Addresses::appStorePage());
}

void AboutViewController::openInstagramPage() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().urls().openURL(Addresses::instagramPage());
}

void AboutViewController::openTwitterPage() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().urls().openURL(Addresses::twitterPage());
}

void AboutViewController::openFacebookPage() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().urls().openURL(Addresses::facebookPage());
}

void AboutViewController::openOurGames() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().urls().openURL(Addresses::makerStorePage());
}

void AboutViewController::openCredits() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openCreditsViewController(this);
}

void AboutViewController::close() {
    Platform::shared().navigator().dismissViewController();
}
