#include "TutorialAlertsManager.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"

TutorialAlertsManager& TutorialAlertsManager::sharedInstance() {
    return Shared<TutorialAlertsManager>::instance();
}

bool TutorialAlertsManager::isAlertShownWithId(const QString& alertId) const {
    return Platform::shared().userDefaults().boolForKey(alertId);
}

void TutorialAlertsManager::setAlertShownWithId(const QString& alertId) {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, alertId);
    defaults.synchronize();
}
