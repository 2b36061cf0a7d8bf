#pragma once

#include <QDateTime>
#include <QString>

// The game's local notifications: the answer after a wait ("normal"), the call back with a gift
// ("reengagement") and the daily training ("repeated"); and the permission dialogue, asked once.
class NotificationManager {
public:
    static inline const QString kDialogueShownKey = QStringLiteral("isDialogueShown");
    static constexpr qint64 kReEngagementGift = 75;

    static NotificationManager& sharedInstance();
    void loadData();

    void scheduleNotificationWithDelay(const QString& text, qint64 minutes);
    bool isWaitNotificationIsScheduled() const;
    void scheduleReEngagementNotificationAtDate(const QString& text, const QDateTime& date);
    // Three calls back: one, three and seven calendar days from now, at this time of day.
    void scheduleReEngagementNotifications();
    void cancelReEngagementNotifications();
    void scheduleDailyRepeatedNotificationWithTitleAtDate(const QString& text, const QString& title,
                                                          const QDateTime& date);
    // 0, 1 or 2 trainings a day from tomorrow; any other count leaves none.
    void scheduleDailyRoutines(float count);
    void cancelRepeatedNotifications();
    void cancelAllNotifications();

    void enableNotificationPermissions();
    void registerNotificationPermissions();
    void setPermissionDialogueAsShown();
    void showAllowPermissionsFromSettingsDialogue();
    bool areNotificationsAllowed() const;

    bool isPermissionsDialogueShown() const { return m_isPermissionsDialogueShown; }
    qint64 currentWaitMinutes() const { return m_currentWaitMinutes; }
    qint64 notifyCoutPerDay() const { return m_notifyCoutPerDay; }
    void setIsPermissionsDialogueShown(bool v) { m_isPermissionsDialogueShown = v; }
    void setCurrentWaitMinutes(qint64 v) { m_currentWaitMinutes = v; }
    void setNotifyCoutPerDay(qint64 v) { m_notifyCoutPerDay = v; }

private:
    void cancelOfType(const QString& type);
    void schedule(const QString& type, const QString& body, const QString& action, const QDateTime& date,
                  bool daily);

    bool m_isPermissionsDialogueShown = false;
    qint64 m_currentWaitMinutes = 10;
    qint64 m_notifyCoutPerDay = 0;
};
