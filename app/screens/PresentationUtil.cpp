#include "PresentationUtil.h"

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
