#include "PresentationUtil.h"

#include "outreach/Outreach.h"
#include "platform/Platform.h"

void PresentationUtil::present(const char* identifier) {
    auto& nav = Platform::shared().navigator();
    if (auto* screen = nav.instantiateViewControllerWithIdentifier(QString::fromLatin1(identifier))) {
        nav.presentViewController(screen);
    }
}

void PresentationUtil::openLeaderboardViewController(ViewController*) {
    present("LeaderboardViewController");
}
void PresentationUtil::openCreditsViewController(ViewController*) {
    present("CreditsViewController");
}

void PresentationUtil::openSettingsViewController(ViewController*) {
    present("SettingsViewController");
}
void PresentationUtil::openRankViewController(ViewController*) {
    present("RankViewController");
}
void PresentationUtil::openAchievementsViewController(ViewController*) {
    present("AchievementsViewController");
}

void PresentationUtil::openTipsViewController(ViewController*) {
    present("TipsViewController");
}
void PresentationUtil::openHelpViewController(ViewController*) {
    present("HelpViewController");
}

void PresentationUtil::openUserProfileViewController(ViewController*) {
    present("UserProfileViewController");
}

void PresentationUtil::openAboutViewController(ViewController*) {
    present("AboutViewController");
}

void PresentationUtil::openInAppStore(ViewController* presenting) {
    if (Outreach::store) {
        Outreach::store->openInAppStore(presenting);
    } else {
        Outreach::showUnavailable(QStringLiteral("المتجر"));
    }
}
