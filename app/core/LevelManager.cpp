#include "LevelManager.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "progress/ProgressDocument.h"

namespace {
const QString kCurrentLevelKey = QStringLiteral("currentLevel");
QString rewardKey(qint64 level) {
    return QStringLiteral("reward2-level%1").arg(level);
}
} // namespace

LevelManager& LevelManager::sharedInstance() {
    return Shared<LevelManager>::instance();
}

void LevelManager::loadData() {
    m_currentLevel = Platform::shared().userDefaults().integerForKey(kCurrentLevelKey);
    if (m_currentLevel < 0) {
        qWarning("The stored level is negative; starting from the first level.");
        m_currentLevel = 0;
    }
}

void LevelManager::save() {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_currentLevel, kCurrentLevelKey);
    defaults.synchronize();
}

void LevelManager::changed() {
    save();
    Platform::shared().notificationCenter().postNotificationName(NotificationLevelChanged);
}

void LevelManager::incrementCurrentLevel() {
    m_currentLevel += 1;
    changed();
}

void LevelManager::decrementCurrentLevel() {
    m_currentLevel -= 1;
    changed();
}

void LevelManager::incrementCurrentLevelToNextRoundStart() {
    m_currentLevel = Game::kLevelsPerRound + Game::kLevelsPerRound * getCurrentRound();
    changed();
}

void LevelManager::saveCurrentLevelTo(qint64 level) {
    m_currentLevel = level;
    save();
    Platform::shared().notificationCenter().postNotificationName(NotificationProgressChanged);
}

GamePtr LevelManager::getCurrentGame() const {
    return Game::initWithGameIdAndGameRound(getCurrentGameId(), getCurrentRound());
}

bool LevelManager::isLevelRewardedSecondTime(qint64 level) const {
    return Platform::shared().userDefaults().boolForKey(rewardKey(level));
}

void LevelManager::setLevelRewardedForSecondTime(qint64 level) {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, rewardKey(level));
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(NotificationProgressChanged);
}
