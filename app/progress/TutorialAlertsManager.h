#pragma once

#include <QString>

// Remembers which one-time alerts have been shown; an alert's identifier is its own stored key.
class TutorialAlertsManager {
public:
    static TutorialAlertsManager& sharedInstance();
    void loadData() {}

    bool isAlertShownWithId(const QString& alertId) const;
    void setAlertShownWithId(const QString& alertId);
};
