#include "DesktopNotifier.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
// How long the notification service has to take a notification before the game shows it itself.
constexpr int kNotifyTimeoutMs = 5000;
} // namespace

DesktopNotifier::DesktopNotifier(QObject* parent) : QObject(parent) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected()) {
        // Subscribed before any notification is sent: the bus handles a connection's messages in order, so no
        // click on a notification of ours can come before the subscription.
        bus.connect(QString(), kPath, kInterface, QStringLiteral("ActionInvoked"), this,
                    SLOT(onActionInvoked(uint, QString, QDBusMessage)));
        bus.connect(QString(), kPath, kInterface, QStringLiteral("NotificationClosed"), this,
                    SLOT(onClosed(uint, uint, QDBusMessage)));
    }
}

void DesktopNotifier::notify(const QString& summary, const QString& body, std::function<void()> activated,
                             std::function<void()> refused) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        if (refused) {
            refused();
        }
        return;
    }
    QDBusMessage call = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    const QString appName = QCoreApplication::applicationName();
    call << appName << uint(0) << QStringLiteral("tarvolin") << summary << body
         << QStringList{QStringLiteral("default"), summary} << QVariantMap{} << int(-1);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, kNotifyTimeoutMs), this);
    connect(
        watcher, &QDBusPendingCallWatcher::finished, this,
        [this, activated = std::move(activated), refused = std::move(refused)](QDBusPendingCallWatcher* w) {
            w->deleteLater();
            const QDBusPendingReply<uint> reply = *w;
            if (reply.isError()) {
                qInfo().noquote() << "The desktop did not take the notification:" << reply.error().message();
                if (refused) {
                    refused();
                }
                return;
            }
            m_shown.insert(reply.value(), {reply.reply().service(), activated});
        });
}

void DesktopNotifier::onActionInvoked(uint id, const QString& /*action*/, const QDBusMessage& message) {
    const auto it = m_shown.constFind(id);
    if (it == m_shown.cend() || it->sender != message.service()) {
        return;
    }
    const std::function<void()> done = it->activated;
    m_shown.erase(it);
    if (done) {
        done();
    }
}

void DesktopNotifier::onClosed(uint id, uint /*reason*/, const QDBusMessage& message) {
    const auto it = m_shown.constFind(id);
    if (it != m_shown.cend() && it->sender == message.service()) {
        m_shown.erase(it);
    }
}
