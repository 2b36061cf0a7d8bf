#include "TipsViewController.h"

#include "platform/Platform.h"
#include "progress/TipsManager.h"

TipsViewController::TipsViewController(QObject* parent)
    : ViewController(QStringLiteral("TipsViewController"), parent) {}

QStringList TipsViewController::tips() const {
    return TipsManager::sharedInstance().tips();
}

void TipsViewController::close() {
    Platform::shared().navigator().dismissViewController();
}
