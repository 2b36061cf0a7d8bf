#pragma once

#include <QDBusMessage>
#include <QHash>
#include <QObject>
#include <QString>
#include <functional>

// Notifications of the desktop, through the freedesktop notification service on the session bus.
//
// Nothing here waits on the bus: a notification is sent and its answer taken when it comes, so a slow or hung
// notification service never stalls the game's window.
class DesktopNotifier : public QObject {
    Q_OBJECT
public:
    explicit DesktopNotifier(QObject* parent = nullptr);

    // Shows a notification. `activated` runs when the player clicks it; `refused` runs instead of showing
    // when there is no session bus or no notification service (one the bus can start counts), or when the
    // service answers with an error or not within a few seconds. Exactly one of "shown" or `refused` happens
    // for each call.
    void notify(const QString& summary, const QString& body, std::function<void()> activated,
                std::function<void()> refused);

private slots:
    // The signals are taken from any sender and matched here against the service that showed the
    // notification, because a match by the well-known name can miss a click that comes soon after the
    // service was first seen.
    void onActionInvoked(uint id, const QString& action, const QDBusMessage& message);
    void onClosed(uint id, uint reason, const QDBusMessage& message);

private:
    void onAnswer(const QString& sender, uint id, const std::function<void()>& activated);

    struct Shown {
        QString sender; // the unique bus name of the service that showed it
        std::function<void()> activated;
    };
    QHash<uint, Shown> m_shown;
    // A click can be handed over before the answer that names its notification: while a notification is on
    // its way, what happens to ids not known yet is kept here (true: clicked) for the answer to find.
    int m_onTheWay = 0;
    QHash<QPair<QString, uint>, bool> m_early;
};
