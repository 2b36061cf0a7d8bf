#include "Reachability.h"

#include "Platform.h"

#include <QNetworkInformation>

Reachability::Reachability(bool useSystemBackend) {
    if (useSystemBackend && QNetworkInformation::loadDefaultBackend()) {
        auto* info = QNetworkInformation::instance();
        auto update = [this, info]() {
            const auto r = info->reachability();
            // Unknown means no backend can tell; then the connection is taken to be there.
            m_systemReachable = r != QNetworkInformation::Reachability::Disconnected;
            systemChanged();
        };
        connect(info, &QNetworkInformation::reachabilityChanged, this, update);
        const auto r = info->reachability();
        m_systemReachable = r != QNetworkInformation::Reachability::Disconnected;
    }
}

int Reachability::currentReachabilityStatus() const {
    if (m_forcedOffline || !m_systemReachable) {
        return NotReachable;
    }
    return ReachableViaWiFi;
}

void Reachability::startNotifier() {
    m_notifying = true;
}

void Reachability::setForcedOffline(bool offline) {
    if (m_forcedOffline.exchange(offline) != offline) {
        systemChanged();
    }
}

void Reachability::setSystemReachable(bool reachable) {
    if (m_systemReachable.exchange(reachable) != reachable) {
        systemChanged();
    }
}

void Reachability::systemChanged() {
    emit changed();
    if (m_notifying) {
        Platform::shared().notificationCenter().postNotificationName(kReachabilityChangedNotification,
                                                                     QVariant::fromValue<QObject*>(this));
    }
}
