#include "DesktopNotifier.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDebug>

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
} // namespace

DesktopNotifier::DesktopNotifier(QObject* parent) : QObject(parent) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        bus.connect(kService, kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                    SLOT(onActionInvoked(uint, QString)));
        bus.connect(kService, kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                    SLOT(onClosed(uint, uint)));
    }
}

bool DesktopNotifier::isAvailable() const {
    QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface() && bus.interface()->isServiceRegistered(kService).value();
}

bool DesktopNotifier::notify(const QString& summary, const QString& body, std::function<void()> activated) {
    if (!isAvailable()) {
        return false;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    const QString appName = QCoreApplication::applicationName();
    call << appName << uint(0) << QStringLiteral("tarvolin") << summary << body
         << QStringList{QStringLiteral("default"), summary} << QVariantMap{} << int(-1);
    const QDBusReply<uint> reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 3000);
    if (!reply.isValid()) {
        qInfo().noquote() << "The desktop did not take the notification:" << reply.error().message();
        return false;
    }
    if (activated) {
        m_pending.insert(reply.value(), std::move(activated));
    }
    return true;
}

void DesktopNotifier::onActionInvoked(uint id, const QString& /*action*/) {
    if (auto done = m_pending.take(id)) {
        done();
    }
}

void DesktopNotifier::onClosed(uint id, uint /*reason*/) {
    m_pending.remove(id);
}
