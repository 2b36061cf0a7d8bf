#include "LevelSuccessViewController.h"

#include "GameViewController.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "progress/ScorePointsManager.h"
#include "screens/Util.h"

QString LevelSuccessViewController::solutionText() const {
    const auto info = game ? game->levelInfo() : nullptr;
    return info ? info->fullSolution : QString();
}

QString LevelSuccessViewController::titleText() const {
    return type == 3 ? QStringLiteral("أنهيت الجولة!") : QStringLiteral("أحسنت!");
}

QString LevelSuccessViewController::nextButtonText() const {
    return type == 0 ? QStringLiteral("المرحلة التالية") : QStringLiteral("المراحل");
}

QString LevelSuccessViewController::totalPointsText() const {
    return QString::number(ScorePointsManager::sharedInstance().totalPoints());
}

void LevelSuccessViewController::nextLevelAction() {
    SoundFactory::sharedInstance().playMenuTap();
    QPointer<GameViewController> screen = playScreen;
    const qint32 finishedType = type;
    auto& nav = Platform::shared().navigator();
    nav.dismissViewController();
    if (finishedType == 0) {
        // The next level was built behind the popup; its timer starts now.
        if (auto* top = qobject_cast<GameViewController*>(Util::getTopNavViewController())) {
            top->onStartNextLevel();
        } else if (screen) {
            screen->onStartNextLevel();
        }
        return;
    }
    goBackToLevelsSelectorViewController();
}

void LevelSuccessViewController::goHomeAction() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
    goBackToLevelsSelectorViewController();
}

void LevelSuccessViewController::goBackToLevelsSelectorViewController() {
    auto& nav = Platform::shared().navigator();
    if (nav.depth() > 1) {
        nav.popToViewControllerAtIndex(1);
    } else if (playScreen) {
        // A play screen at the root (no selectors under it) goes on with the player's next level.
        playScreen->openCurrentLevel();
    }
}
