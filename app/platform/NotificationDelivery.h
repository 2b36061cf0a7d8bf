#pragma once

#include "LocalNotifications.h"

#include <QObject>
#include <functional>
#include <optional>

// Delivers the schedule's notifications when they fall due while the game runs; one that fell due while it
// was closed is handed over at the next start as the launching notification.
class NotificationDelivery : public QObject {
    Q_OBJECT
public:
    using Deliver = std::function<void(const LocalNotification&)>;

    explicit NotificationDelivery(QObject* parent = nullptr);
    ~NotificationDelivery() override;

    // The newest of those that fell due while the game was closed; they all leave the schedule.
    static std::optional<LocalNotification> takeLaunchNotification();
    // From now on each due notification goes to `deliver` at its time.
    void start(Deliver deliver);

private:
    void arm();
    void fire();

    Deliver m_deliver;
    quint64 m_timer = 0;
};
