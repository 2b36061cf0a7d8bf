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

void AboutViewController::openAddress(const QUrl& url) {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().urls().openURL(url);
}

void AboutViewController::rateGame() {
    openAddress(Addresses::appStorePage());
}

void AboutViewController::openInstagramPage() {
    openAddress(Addresses::instagramPage());
}

void AboutViewController::openTwitterPage() {
    openAddress(Addresses::twitterPage());
}

void AboutViewController::openFacebookPage() {
    openAddress(Addresses::facebookPage());
}

void AboutViewController::openOurGames() {
    openAddress(Addresses::makerStorePage());
}

void AboutViewController::openCredits() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openCreditsViewController(this);
}

void AboutViewController::close() {
    Platform::shared().navigator().dismissViewController();
}
