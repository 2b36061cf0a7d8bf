#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QTimeZone>
#include <QVariantMap>
#include <optional>

// One local notification: when it fires, whether it repeats every calendar day, what it says and carries.
struct LocalNotification {
    QString identifier; // given when it is scheduled
    QDateTime fireDate;
    bool repeatsDaily = false; // the repeat interval is the calendar day
    QString soundName = QStringLiteral("default");
    QString alertAction;
    QString alertBody;
    int applicationIconBadgeNumber = 0;
    QVariantMap userInfo;

    QString type() const { return userInfo.value(QStringLiteral("type")).toString(); }
    // The form the app delegate reads: "alertBody", "alertAction", "fireDate", "userInfo".
    QVariantMap toMap() const;
};

// The device's schedule of local notifications and the player's permission for them. The schedule is kept
// in the profile and outlives the program; a due notification leaves it (or moves to its next day) when it is
// taken for delivery, so that none is delivered twice.
class LocalNotifications : public QObject {
    Q_OBJECT
public:
    // Badge, sound and alert.
    static constexpr int kAllTypes = 7;

    // An empty path keeps everything in memory.
    explicit LocalNotifications(QString filePath = {}, QObject* parent = nullptr);

    void scheduleLocalNotification(LocalNotification notification);
    void cancelLocalNotification(const QString& identifier);
    void cancelAllLocalNotifications();
    QList<LocalNotification> scheduledLocalNotifications() const { return m_scheduled; }
    std::optional<QDateTime> nextFireDate() const;
    // Every notification due at `now`, oldest first; daily ones move on to their next day in `zone`.
    QList<LocalNotification> takeDueNotifications(const QDateTime& now, const QTimeZone& zone);

    // The kinds of notification the player allows (0 until asked, then 7 or 0).
    int currentUserNotificationSettingsTypes() const { return m_types; }
    bool hasAskedForPermission() const { return m_asked; }
    void setUserNotificationSettingsTypes(int types);

signals:
    void scheduleChanged();
    // The player answered the question about notifications: the kinds now allowed.
    void userNotificationSettingsRegistered(int types);

private:
    void load();
    void save();

    QString m_path;
    QList<LocalNotification> m_scheduled;
    int m_types = 0;
    bool m_asked = false;
    quint64 m_nextNumber = 1;
};
