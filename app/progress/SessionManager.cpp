#include "SessionManager.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/Util.h"

#include <QDebug>

SessionManager& SessionManager::sharedInstance() {
    return Shared<SessionManager>::instance();
}

void SessionManager::loadData() {
    auto& defaults = Platform::shared().userDefaults();
    m_activeSessions = defaults.integerForKey(kActiveSessionsKey);
    m_acitveDays = defaults.integerForKey(kActiveDaysKey);
    const bool launchedBefore = defaults.boolForKey(kLaunchedBeforeKey);
    if (!launchedBefore) {
        defaults.setBoolForKey(true, kLaunchedBeforeKey);
        defaults.synchronize();
    }
    m_isFirstLaunch = !launchedBefore;
}

std::optional<QDateTime> SessionManager::storedDate(const QString& key) {
    auto& defaults = Platform::shared().userDefaults();
    if (!defaults.hasKey(key)) {
        return std::nullopt;
    }
    const QString text = defaults.stringForKey(key);
    const QDateTime date = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!date.isValid()) {
        qWarning().noquote()
            << QStringLiteral("Exception: the stored %1 \"%2\" is not a date").arg(key, text);
        return std::nullopt;
    }
    return date;
}

bool SessionManager::isNewSession() const {
    const std::optional<QDateTime> last = storedDate(kLastSessionTimeKey);
    if (!last) {
        return true;
    }
    const double seconds = static_cast<double>(last->msecsTo(Platform::shared().scheduler().now())) / 1000.0;
    return seconds > kSessionSeconds;
}

bool SessionManager::checkNewActiveDay() const {
    const std::optional<QDateTime> last = storedDate(kLastSessionTimeKey);
    if (!last) {
        return true;
    }
    return !Util::isTwoDatesSameDay(Platform::shared().scheduler().now(), *last);
}

void SessionManager::checkAndLogSessionInfo() {
    if (isNewSession()) {
        if (checkNewActiveDay()) {
            logNewActiveDay();
            m_isNewActiveDay = true;
        }
        logNewSession();
    }
    logSessionStartTime();
}

void SessionManager::logNewSession() {
    m_activeSessions += 1;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_activeSessions, kActiveSessionsKey);
    defaults.synchronize();
}

void SessionManager::logNewActiveDay() {
    m_acitveDays += 1;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(m_acitveDays, kActiveDaysKey);
    defaults.synchronize();
}

void SessionManager::logSessionStartTime() {
    auto& defaults = Platform::shared().userDefaults();
    defaults.setStringForKey(Platform::shared().scheduler().now().toUTC().toString(Qt::ISODateWithMs),
                             kLastSessionTimeKey);
    defaults.synchronize();
}
