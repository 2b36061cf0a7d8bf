#include "LevelSuccessViewController.h"

#include "GameViewController.h"
#include "platform/Platform.h"

QString LevelSuccessViewController::solutionText() const {
    const auto info = game ? game->levelInfo() : nullptr;
    return info ? info->fullSolution : QString();
}

QString LevelSuccessViewController::titleText() const {
    return type == 3 ? QStringLiteral("أنهيت الجولة!") : QStringLiteral("أحسنت!");
}

QString LevelSuccessViewController::nextButtonText() const {
    return type == 3 ? QStringLiteral("الجولة التالية") : QStringLiteral("المرحلة التالية");
}

void LevelSuccessViewController::nextAction() {
    QPointer<GameViewController> screen = playScreen;
    const qint32 finishedType = type;
    Platform::shared().navigator().dismissViewController();
    if (!screen) {
        return;
    }
    if (finishedType == 0) {
        // The next level was built behind the popup.
        screen->onStartNextLevel();
    } else {
        screen->openCurrentLevel();
    }
}
