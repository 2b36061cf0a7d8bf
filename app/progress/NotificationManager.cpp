#include "NotificationManager.h"

#include "RankManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/Localization.h"
#include "screens/Util.h"

namespace {
LocalNotifications& platformSchedule() {
    return Platform::shared().localNotifications();
}
const QString kGold = QStringLiteral("ذهبة");
} // namespace

NotificationManager& NotificationManager::sharedInstance() {
    return Shared<NotificationManager>::instance();
}

void NotificationManager::loadData() {
    m_currentWaitMinutes = 10;
    m_isPermissionsDialogueShown = Platform::shared().userDefaults().boolForKey(kDialogueShownKey);
}

void NotificationManager::schedule(const QString& type, const QString& body, const QString& action,
                                   const QDateTime& date, bool daily) {
    LocalNotification n;
    n.fireDate = date;
    n.repeatsDaily = daily;
    n.soundName = QStringLiteral("default");
    n.alertAction = action;
    n.alertBody = body;
    n.applicationIconBadgeNumber = 1;
    n.userInfo = {{QStringLiteral("type"), type}};
    platformSchedule().scheduleLocalNotification(n);
}

void NotificationManager::cancelOfType(const QString& type) {
    for (const LocalNotification& n : platformSchedule().scheduledLocalNotifications()) {
        if (n.type() == type) {
            platformSchedule().cancelLocalNotification(n.identifier);
        }
    }
}

void NotificationManager::scheduleNotificationWithDelay(const QString& text, qint64 minutes) {
    const QDateTime at = Platform::shared().scheduler().now().addSecs(minutes * 60);
    schedule(QStringLiteral("normal"), text,
             Localization::localizedString(QStringLiteral("notify.normalTitle")), at, false);
}

bool NotificationManager::isWaitNotificationIsScheduled() const {
    const QList<LocalNotification> list = platformSchedule().scheduledLocalNotifications();
    return std::any_of(list.begin(), list.end(),
                       [](const LocalNotification& n) { return n.type() == QLatin1String("normal"); });
}

void NotificationManager::scheduleReEngagementNotificationAtDate(const QString& text, const QDateTime& date) {
    schedule(QStringLiteral("reengagement"), text,
             Localization::localizedString(QStringLiteral("notify.reEngagementTitle")), date, false);
}

void NotificationManager::scheduleReEngagementNotifications() {
    const QDateTime now = Util::inPlayersZone(Platform::shared().scheduler().now());
    const QString text = Localization::localizedString(QStringLiteral("notify.reEngagementMessage"))
                             .arg(kReEngagementGift)
                             .arg(kGold);
    for (int days : {1, 3, 7}) {
        scheduleReEngagementNotificationAtDate(text, now.addDays(days));
    }
}

void NotificationManager::cancelReEngagementNotifications() {
    cancelOfType(QStringLiteral("reengagement"));
}

void NotificationManager::scheduleDailyRepeatedNotificationWithTitleAtDate(const QString& text,
                                                                           const QString& title,
                                                                           const QDateTime& date) {
    schedule(QStringLiteral("repeated"), text, title, date, true);
}

void NotificationManager::scheduleDailyRoutines(float count) {
    const QDateTime now = Util::inPlayersZone(Platform::shared().scheduler().now());
    cancelRepeatedNotifications();
    const QDateTime tomorrow = now.addDays(1);
    const auto at = [&tomorrow](int hour, int minute) {
        QDateTime t = tomorrow;
        t.setTime(QTime(hour, minute, 0));
        return t;
    };
    const auto body = [](qint64 reward) {
        return QStringLiteral("اضغط هنا واربح %1 %2 مجاني لتساعدك في الفوز بمراحل جديدة")
            .arg(reward)
            .arg(kGold);
    };
    const RankManager& ranks = RankManager::sharedInstance();
    if (count == 1.0f) {
        scheduleDailyRepeatedNotificationWithTitleAtDate(body(ranks.getDailyNotificationReward()),
                                                         QStringLiteral("التمرين اليومي"), at(18, 0));
    } else if (count == 2.0f) {
        const QString text = body(ranks.getDailyNotification2Reward());
        scheduleDailyRepeatedNotificationWithTitleAtDate(text, QStringLiteral("التمرين اليومي ١"),
                                                         at(14, 30));
        scheduleDailyRepeatedNotificationWithTitleAtDate(text, QStringLiteral("التمرين اليومي ٢"),
                                                         at(19, 30));
    }
}

void NotificationManager::cancelRepeatedNotifications() {
    cancelOfType(QStringLiteral("repeated"));
}

void NotificationManager::cancelAllNotifications() {
    if (!platformSchedule().scheduledLocalNotifications().isEmpty()) {
        platformSchedule().cancelAllLocalNotifications();
    }
}

void NotificationManager::enableNotificationPermissions() {
    if (areNotificationsAllowed()) {
        return;
    }
    if (!m_isPermissionsDialogueShown) {
        registerNotificationPermissions();
    } else {
        showAllowPermissionsFromSettingsDialogue();
    }
}

void NotificationManager::registerNotificationPermissions() {
    // The platform's own question; the player's answer stands until changed in the settings.
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        QStringLiteral("التنبيهات"),
        QStringLiteral(
            "تود طارفولين أن ترسل لك تنبيهات: الحل الصحيح بعد الانتظار، والتمرين اليومي، والهدايا"),
        QStringLiteral("عدم السماح"), {QStringLiteral("سماح")}, [](int index) {
            Platform::shared().localNotifications().setUserNotificationSettingsTypes(
                index == 1 ? LocalNotifications::kAllTypes : 0);
        });
    setPermissionDialogueAsShown();
}

void NotificationManager::setPermissionDialogueAsShown() {
    m_isPermissionsDialogueShown = true;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setBoolForKey(true, kDialogueShownKey);
    defaults.synchronize();
}

void NotificationManager::showAllowPermissionsFromSettingsDialogue() {
    Util::showMessageWithTitle(
        QStringLiteral(
            "انت لم تقم بتفعيل ميزة ارسال اشعار الحل الصحيح بعد فترة زمنية قصيرة لذلك يرجى تفعيل رسائل "
            "الاشعارات من اعدادات التطبيق"),
        QStringLiteral("تفعيل الاشعارات"));
}

bool NotificationManager::areNotificationsAllowed() const {
    return platformSchedule().currentUserNotificationSettingsTypes() != 0;
}
