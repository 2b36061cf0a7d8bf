#include "FakeNotificationServer.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>

QList<ShownNotification> NotificationService::shown() const {
    QMutexLocker lock(&m_mutex);
    return m_shown;
}

void NotificationService::setRefusing(bool refusing) {
    QMutexLocker lock(&m_mutex);
    m_refusing = refusing;
}

void NotificationService::setClickingAtOnce(bool atOnce) {
    QMutexLocker lock(&m_mutex);
    m_clickingAtOnce = atOnce;
}

uint NotificationService::Notify(const QString& appName, uint, const QString&, const QString& summary,
                                 const QString& body, const QStringList& actions, const QVariantMap&, int) {
    QMutexLocker lock(&m_mutex);
    if (m_refusing) {
        sendErrorReply(QDBusError::Failed, QStringLiteral("too many notifications"));
        return 0;
    }
    m_shown.append({m_next, appName, summary, body, actions});
    if (m_clickingAtOnce) {
        click(m_next);
    }
    return m_next++;
}

void NotificationService::click(uint id) {
    emit ActionInvoked(id, QStringLiteral("default"));
    emit NotificationClosed(id, 2);
}

FakeNotificationServer::FakeNotificationServer(const QString& busAddress) {
    m_service = new NotificationService();
    m_service->moveToThread(&m_thread);
    m_thread.start();
    // The connection is made on the service's thread, so that it answers while the game's thread waits.
    QMetaObject::invokeMethod(
        m_service,
        [this, busAddress] {
            QDBusConnection bus =
                QDBusConnection::connectToBus(busAddress, QStringLiteral("fake-notifications"));
            m_registered =
                bus.isConnected() &&
                bus.registerObject(QStringLiteral("/org/freedesktop/Notifications"), m_service,
                                   QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) &&
                bus.registerService(QStringLiteral("org.freedesktop.Notifications"));
        },
        Qt::BlockingQueuedConnection);
}

FakeNotificationServer::~FakeNotificationServer() {
    QMetaObject::invokeMethod(
        m_service,
        [this] {
            QDBusConnection bus(QStringLiteral("fake-notifications"));
            bus.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
            bus.unregisterObject(QStringLiteral("/org/freedesktop/Notifications"));
            QDBusConnection::disconnectFromBus(QStringLiteral("fake-notifications"));
            delete m_service;
        },
        Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

void FakeNotificationServer::click(uint id) {
    QMetaObject::invokeMethod(
        m_service, [this, id] { m_service->click(id); }, Qt::QueuedConnection);
}
