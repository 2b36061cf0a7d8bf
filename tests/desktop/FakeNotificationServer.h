#pragma once

#include <QDBusContext>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

// What the desktop's notification service was asked to show.
struct ShownNotification {
    uint id = 0;
    QString appName;
    QString summary;
    QString body;
    QStringList actions;
};

// The freedesktop notification service's Notify method, answered from a thread of its own.
class NotificationService : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    using QObject::QObject;
    QList<ShownNotification> shown() const;
    // From now on every Notify is answered with an error, as a service that cannot show one answers.
    void setRefusing(bool refusing);
    // From now on every notification is clicked and closed before Notify answers, so that the click reaches
    // the caller ahead of the answer that names the notification.
    void setClickingAtOnce(bool atOnce);

public slots:
    uint Notify(const QString& appName, uint replacesId, const QString& icon, const QString& summary,
                const QString& body, const QStringList& actions, const QVariantMap& hints, int timeout);
    QStringList GetCapabilities() { return {QStringLiteral("actions"), QStringLiteral("body")}; }
    // The player clicks notification `id`.
    void click(uint id);

signals:
    void ActionInvoked(uint id, const QString& actionKey);
    void NotificationClosed(uint id, uint reason);

private:
    mutable QMutex m_mutex;
    QList<ShownNotification> m_shown;
    uint m_next = 1;
    bool m_refusing = false;
    bool m_clickingAtOnce = false;
};

// A notification service on a session bus, as a desktop has one.
class FakeNotificationServer {
public:
    explicit FakeNotificationServer(const QString& busAddress);
    ~FakeNotificationServer();
    bool isRegistered() const { return m_registered; }
    QList<ShownNotification> shown() const { return m_service->shown(); }
    void click(uint id);
    void setRefusing(bool refusing) { m_service->setRefusing(refusing); }
    void setClickingAtOnce(bool atOnce) { m_service->setClickingAtOnce(atOnce); }

private:
    QThread m_thread;
    NotificationService* m_service = nullptr;
    bool m_registered = false;
};
