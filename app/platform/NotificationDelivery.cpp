#include "NotificationDelivery.h"

#include "Platform.h"

NotificationDelivery::NotificationDelivery(QObject* parent) : QObject(parent) {}

NotificationDelivery::~NotificationDelivery() {
    if (m_timer != 0 && Platform::isInstalled()) {
        Platform::shared().scheduler().cancel(m_timer);
    }
}

std::optional<LocalNotification> NotificationDelivery::takeLaunchNotification() {
    auto& platform = Platform::shared();
    const QList<LocalNotification> due = platform.localNotifications().takeDueNotifications(
        platform.scheduler().now(), platform.scheduler().timeZone());
    if (due.isEmpty()) {
        return std::nullopt;
    }
    return due.last();
}

void NotificationDelivery::start(Deliver deliver) {
    m_deliver = std::move(deliver);
    connect(&Platform::shared().localNotifications(), &LocalNotifications::scheduleChanged, this,
            &NotificationDelivery::arm, Qt::UniqueConnection);
    arm();
}

void NotificationDelivery::arm() {
    auto& platform = Platform::shared();
    if (m_timer != 0) {
        platform.scheduler().cancel(m_timer);
        m_timer = 0;
    }
    const std::optional<QDateTime> next = platform.localNotifications().nextFireDate();
    if (!next || !m_deliver) {
        return;
    }
    const double seconds = std::max<qint64>(0, platform.scheduler().now().msecsTo(*next)) / 1000.0;
    // Long waits are taken in steps, so that a timer never overflows and a moved clock is noticed.
    m_timer = platform.scheduler().schedule(std::min(seconds, 3600.0), [this] {
        m_timer = 0;
        fire();
    });
}

void NotificationDelivery::fire() {
    auto& platform = Platform::shared();
    const QList<LocalNotification> due = platform.localNotifications().takeDueNotifications(
        platform.scheduler().now(), platform.scheduler().timeZone());
    for (const LocalNotification& n : due) {
        m_deliver(n);
    }
    arm();
}
