#include "CreditsManager.h"

#include "UserStatsManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <algorithm>

CreditsManager& CreditsManager::sharedInstance() {
    return Shared<CreditsManager>::instance();
}

void CreditsManager::loadData() {
    auto& defaults = Platform::shared().userDefaults();
    m_currentCredits = defaults.integerForKey(QStringLiteral("credits"));
    m_currentSkips = defaults.integerForKey(QStringLiteral("skips"));
    if (!defaults.boolForKey(QStringLiteral("initialized"))) {
        restoreDefaults();
    }
}

void CreditsManager::restoreDefaults() {
    m_currentCredits = kStartingCredits;
    m_currentSkips = kStartingSkips;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_currentCredits, QStringLiteral("credits"));
    defaults.setIntegerForKey(m_currentSkips, QStringLiteral("skips"));
    defaults.setBoolForKey(true, QStringLiteral("initialized"));
    defaults.synchronize();
}

void CreditsManager::saveCredits() {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_currentCredits, QStringLiteral("credits"));
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(NotificationCreditsChanged);
}

void CreditsManager::saveSkips() {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_currentSkips, QStringLiteral("skips"));
    defaults.synchronize();
    Platform::shared().notificationCenter().postNotificationName(NotificationSkipsChanged);
}

void CreditsManager::addCredits(qint64 amount) {
    m_currentCredits += amount;
    saveCredits();
}

void CreditsManager::setCreditsTo(qint64 amount) {
    m_currentCredits = amount;
    saveCredits();
}

void CreditsManager::deductCredits(qint64 amount) {
    if (m_currentCredits >= 1) {
        m_currentCredits = std::max<qint64>(m_currentCredits - amount, 0);
    }
    saveCredits();
    UserStatsManager::sharedInstance().incrementCreditsUsedBy(amount);
}

void CreditsManager::addSkips(qint64 amount) {
    m_currentSkips += amount;
    saveSkips();
}

void CreditsManager::deductOneSkip() {
    if (m_currentSkips >= 1) {
        m_currentSkips -= 1;
    }
    saveSkips();
    UserStatsManager::sharedInstance().incrementSkipsUsed();
}
