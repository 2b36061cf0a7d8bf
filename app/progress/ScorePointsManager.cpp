#include "ScorePointsManager.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"

ScorePointsManager& ScorePointsManager::sharedInstance() {
    return Shared<ScorePointsManager>::instance();
}

void ScorePointsManager::loadData() {
    m_totalPoints = Platform::shared().userDefaults().integerForKey(QStringLiteral("totalPoints"));
}

void ScorePointsManager::addPoints(qint64 delta) {
    const qint64 total = m_totalPoints + delta;
    m_totalPoints = total > 0 ? total : 0;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_totalPoints, QStringLiteral("totalPoints"));
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(PointsChangedNotification);
}
