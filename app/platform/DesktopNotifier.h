#pragma once

#include <QHash>
#include <QObject>
#include <QString>
#include <functional>

// Notifications of the desktop, through the freedesktop notification service on the session bus.
class DesktopNotifier : public QObject {
    Q_OBJECT
public:
    explicit DesktopNotifier(QObject* parent = nullptr);

    // Whether a notification service answers on the session bus.
    bool isAvailable() const;
    // Shows a notification; `activated` runs when the player clicks it. False when no service took it.
    bool notify(const QString& summary, const QString& body, std::function<void()> activated);

private slots:
    void onActionInvoked(uint id, const QString& action);
    void onClosed(uint id, uint reason);

private:
    QHash<uint, std::function<void()>> m_pending;
};
