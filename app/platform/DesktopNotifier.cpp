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
    ++m_onTheWay;
    connect(
        watcher, &QDBusPendingCallWatcher::finished, this,
        [this, activated = std::move(activated), refused = std::move(refused)](QDBusPendingCallWatcher* w) {
            w->deleteLater();
            --m_onTheWay;
            const QDBusPendingReply<uint> reply = *w;
            if (reply.isError()) {
                qInfo().noquote() << "The desktop did not take the notification:" << reply.error().message();
            } else {
                onAnswer(reply.reply().service(), reply.value(), activated);
            }
            if (m_onTheWay == 0) {
                m_early.clear();
            }
            if (reply.isError() && refused) {
                refused();
            }
        });
}

void DesktopNotifier::onAnswer(const QString& sender, uint id, const std::function<void()>& activated) {
    const auto early = m_early.constFind({sender, id});
    if (early == m_early.cend()) {
        m_shown.insert(id, {sender, activated});
        return;
    }
    // Clicked or closed before the answer came: done with it either way.
    const bool clicked = *early;
    m_early.erase(early);
    if (clicked && activated) {
        activated();
    }
}

void DesktopNotifier::onActionInvoked(uint id, const QString& /*action*/, const QDBusMessage& message) {
    const auto it = m_shown.constFind(id);
    if (it == m_shown.cend() || it->sender != message.service()) {
        if (m_onTheWay > 0) {
            m_early.insert({message.service(), id}, true);
        }
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
    } else if (m_onTheWay > 0) {
        // A click is followed by its closing: the click stands.
        m_early.insert({message.service(), id}, m_early.value({message.service(), id}, false));
    }
}
