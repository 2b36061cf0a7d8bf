// Local notifications: the schedule kept in the profile, the three kinds and their replacement, permission,
// delivery while running and at the next start, and what each kind pays on arrival.
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "platform/NotificationDelivery.h"
#include "progress/CreditsManager.h"
#include "progress/NotificationManager.h"
#include "progress/SettingsManager.h"
#include "progress/UserStatsManager.h"

#include <QFile>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

class LocalReminders : public ::testing::Test {
protected:
    void SetUp() override { allow(); }
    void allow() { Platform::shared().localNotifications().setUserNotificationSettingsTypes(7); }
    QList<LocalNotification> ofType(const QString& type) {
        QList<LocalNotification> list;
        for (const LocalNotification& n :
             Platform::shared().localNotifications().scheduledLocalNotifications()) {
            if (n.type() == type) {
                list << n;
            }
        }
        return list;
    }
    QStringList messages() { return platform.takeMessages(); }
    QDateTime now() const { return Platform::shared().scheduler().now(); }

    TestPlatform platform;
};

TEST_F(LocalReminders, EachNewSessionLeavesExactlyThreeCallsBack) {
    AppDelegate app;
    app.applicationDidFinishLaunchingWithOptions({});
    ASSERT_EQ(ofType("reengagement").size(), 3);
    QList<qint64> days;
    for (const LocalNotification& n : ofType("reengagement")) {
        days << now().daysTo(n.fireDate);
        EXPECT_EQ(n.fireDate.toLocalTime().time(), now().toLocalTime().time());
        EXPECT_EQ(n.applicationIconBadgeNumber, 1);
        EXPECT_EQ(n.alertBody, "اشتقنا لك! عد الآن واربح 75 ذهبة هدية لتكمل المراحل");
    }
    EXPECT_EQ(days, (QList<qint64>{1, 3, 7}));
    platform.scheduler().advance(700);
    app.applicationWillEnterForeground();
    EXPECT_EQ(ofType("reengagement").size(), 3);
    EXPECT_EQ(now().daysTo(ofType("reengagement").first().fireDate), 1);
    EXPECT_EQ(ofType("reengagement").first().fireDate, now().addDays(1));

    // Not allowed at a start: the calls back are left as they are.
    Platform::shared().localNotifications().cancelAllLocalNotifications();
    Platform::shared().localNotifications().setUserNotificationSettingsTypes(0);
    AppDelegate again;
    again.applicationDidFinishLaunchingWithOptions({});
    EXPECT_TRUE(ofType("reengagement").isEmpty());
}

TEST_F(LocalReminders, DailyTrainingsReplaceEachOther) {
    auto& manager = NotificationManager::sharedInstance();
    manager.scheduleNotificationWithDelay("answer", 90);
    manager.scheduleReEngagementNotifications();
    manager.scheduleDailyRoutines(2);
    ASSERT_EQ(ofType("repeated").size(), 2);
    EXPECT_EQ(ofType("repeated").at(0).fireDate.toLocalTime(),
              QDateTime(now().toLocalTime().date().addDays(1), QTime(14, 30)));
    EXPECT_EQ(ofType("repeated").at(1).alertAction, "التمرين اليومي ٢");
    EXPECT_TRUE(ofType("repeated").at(1).repeatsDaily);
    manager.scheduleDailyRoutines(1);
    ASSERT_EQ(ofType("repeated").size(), 1);
    EXPECT_EQ(ofType("repeated").first().fireDate.toLocalTime().time(), QTime(18, 0));
    EXPECT_EQ(ofType("repeated").first().alertAction, "التمرين اليومي");
    EXPECT_EQ(ofType("repeated").first().alertBody,
              "اضغط هنا واربح 0 ذهبة مجاني لتساعدك في الفوز بمراحل جديدة");
    manager.scheduleDailyRoutines(0);
    EXPECT_TRUE(ofType("repeated").isEmpty());
    EXPECT_EQ(ofType("reengagement").size(), 3);
    EXPECT_EQ(ofType("normal").size(), 1);
    EXPECT_EQ(now().secsTo(ofType("normal").first().fireDate), 5400);
    manager.scheduleDailyRoutines(1);
    manager.scheduleDailyRoutines(3);
    EXPECT_TRUE(ofType("repeated").isEmpty());
    manager.cancelAllNotifications();
    EXPECT_TRUE(Platform::shared().localNotifications().scheduledLocalNotifications().isEmpty());
}

TEST_F(LocalReminders, PermissionIsAskedOnceThenThePlayerIsSentToTheSettings) {
    Platform::shared().localNotifications().setUserNotificationSettingsTypes(0);
    auto& manager = NotificationManager::sharedInstance();
    EXPECT_FALSE(manager.areNotificationsAllowed());
    manager.enableNotificationPermissions();
    EXPECT_TRUE(manager.isPermissionsDialogueShown());
    EXPECT_TRUE(platform.defaults().boolForKey("isDialogueShown"));
    EXPECT_EQ(platform.alerts().title(), "التنبيهات");
    platform.alerts().press(0); // refused
    EXPECT_FALSE(manager.areNotificationsAllowed());
    manager.enableNotificationPermissions();
    EXPECT_EQ(messages(),
              QStringList{"تفعيل الاشعارات|انت لم تقم بتفعيل ميزة ارسال اشعار الحل الصحيح بعد فترة "
                          "زمنية قصيرة لذلك يرجى تفعيل رسائل الاشعارات من اعدادات التطبيق"});
    allow();
    manager.enableNotificationPermissions();
    EXPECT_FALSE(platform.alerts().isVisible());
}

TEST_F(LocalReminders, TheScheduleOutlivesARestartAndACorruptOneStartsEmpty) {
    NotificationManager::sharedInstance().scheduleDailyRoutines(2);
    platform.restart();
    EXPECT_EQ(ofType("repeated").size(), 2);
    EXPECT_TRUE(NotificationManager::sharedInstance().areNotificationsAllowed());
    EXPECT_EQ(NotificationManager::sharedInstance().currentWaitMinutes(), 10);

    const QString path = platform.folder() + "/notifications.json";
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"scheduled\": [{\"identifier\": \"x\", \"fireDate\": \"soon\"}]}");
    file.close();
    platform.restart();
    EXPECT_TRUE(Platform::shared().localNotifications().scheduledLocalNotifications().isEmpty());
    EXPECT_TRUE(QFile::exists(path + ".unreadable"));
    NotificationManager::sharedInstance().scheduleNotificationWithDelay("answer", 5);
    platform.restart();
    EXPECT_EQ(ofType("normal").size(), 1);
}

TEST_F(LocalReminders, ADailyNotificationKeepsItsHourAcrossDaylightSaving) {
    const QTimeZone ny("America/New_York");
    platform.scheduler().setTimeZone(ny);
    platform.scheduler().setNow(QDateTime(QDate(2027, 3, 12), QTime(20, 0), ny));
    NotificationManager::sharedInstance().scheduleDailyRoutines(1);
    auto& schedule = Platform::shared().localNotifications();
    for (int day = 13; day <= 16; ++day) {
        platform.scheduler().setNow(QDateTime(QDate(2027, 3, day), QTime(18, 0), ny));
        ASSERT_EQ(schedule.takeDueNotifications(now(), ny).size(), 1) << day;
        EXPECT_EQ(schedule.scheduledLocalNotifications().first().fireDate.toTimeZone(ny),
                  QDateTime(QDate(2027, 3, day + 1), QTime(18, 0), ny));
    }
    EXPECT_TRUE(schedule.takeDueNotifications(now(), ny).isEmpty());
}

TEST_F(LocalReminders, WhileRunningEachIsDeliveredOnceAtItsTime) {
    AppDelegate app;
    QList<QString> delivered;
    NotificationDelivery delivery;
    delivery.start([&](const LocalNotification& n) {
        delivered << n.type();
        app.applicationDidReceiveLocalNotification(n.toMap());
    });
    NotificationManager::sharedInstance().scheduleNotificationWithDelay("الحل الصحيح هو: نجم", 5);
    platform.scheduler().advance(299);
    EXPECT_TRUE(delivered.isEmpty());
    platform.scheduler().advance(1);
    EXPECT_EQ(delivered, QList<QString>{"normal"});
    EXPECT_EQ(messages(), QStringList{"الحل الصحيح|الحل الصحيح هو: نجم"});
    EXPECT_FALSE(NotificationManager::sharedInstance().isWaitNotificationIsScheduled());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalTrainingsTaken(), 0);

    // A call back two days away arrives after a day and a night of waiting in one-hour steps.
    const qint64 gold = CreditsManager::sharedInstance().currentCredits();
    NotificationManager::sharedInstance().scheduleReEngagementNotificationAtDate("back", now().addDays(2));
    platform.scheduler().advance(2 * 86400);
    EXPECT_EQ(delivered.last(), "reengagement");
    EXPECT_EQ(messages(), QStringList{"مبرووك|لقد ربحت 75  ذهبة لتساعدك في الفوز على بقية اللاعبين"});
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), gold + 75);
    EXPECT_EQ(UserStatsManager::sharedInstance().totalTrainingsTaken(), 1);
    platform.scheduler().advance(86400);
    EXPECT_EQ(delivered.size(), 2);
}

TEST_F(LocalReminders, OneThatFellDueWhileClosedIsTheLaunchingOneAndPaysOnce) {
    SettingsManager::sharedInstance().configureNotificationsPerDay(0);
    NotificationManager::sharedInstance().scheduleDailyRepeatedNotificationWithTitleAtDate("train", "t",
                                                                                           now().addSecs(60));
    platform.restart();
    platform.scheduler().setNow(QDateTime(QDate(2026, 3, 14), QTime(12, 0)));
    const qint64 gold = CreditsManager::sharedInstance().currentCredits();
    const auto launching = NotificationDelivery::takeLaunchNotification();
    ASSERT_TRUE(launching);
    AppDelegate app;
    app.applicationDidFinishLaunchingWithOptions(
        {{AppDelegate::kLaunchOptionsLocalNotificationKey, launching->toMap()}});
    // No trainings a day chosen: the prize is 0, and still said.
    EXPECT_EQ(messages(), QStringList{"جائزة التمرين الدماغي|مبروك لقد ربحت 0 محاولة مع التمرين الدماغي"});
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), gold);
    EXPECT_EQ(UserStatsManager::sharedInstance().totalTrainingsTaken(), 1);
    // It waits for tomorrow now; the next start has nothing to hand over.
    EXPECT_FALSE(NotificationDelivery::takeLaunchNotification());
    EXPECT_EQ(ofType("repeated").first().fireDate.toLocalTime(), QDateTime(QDate(2026, 3, 15), QTime(9, 31)));

    // A solution that launched the game is shown, and is no training.
    NotificationManager::sharedInstance().scheduleNotificationWithDelay("الحل الصحيح هو: قمر", 1);
    platform.restart();
    platform.scheduler().setNow(QDateTime(QDate(2026, 3, 14), QTime(13, 0)));
    AppDelegate next;
    next.applicationDidFinishLaunchingWithOptions(
        {{AppDelegate::kLaunchOptionsLocalNotificationKey,
          NotificationDelivery::takeLaunchNotification()->toMap()}});
    EXPECT_EQ(messages(), QStringList{"الحل الصحيح|الحل الصحيح هو: قمر"});
    EXPECT_EQ(UserStatsManager::sharedInstance().totalTrainingsTaken(), 0);

    // While notifications are not allowed a launching one is ignored entirely.
    Platform::shared().localNotifications().setUserNotificationSettingsTypes(0);
    AppDelegate off;
    off.applicationDidFinishLaunchingWithOptions(
        {{AppDelegate::kLaunchOptionsLocalNotificationKey,
          LocalNotification{"x", now(), false, {}, {}, "body", 1, {{"type", "reengagement"}}}.toMap()}});
    EXPECT_TRUE(messages().isEmpty());
}

TEST_F(LocalReminders, TrainingsPayByTheChosenCount) {
    AppDelegate app;
    for (float perDay : {1.0f, 2.0f, 1.7f}) {
        SettingsManager::sharedInstance().configureNotificationsPerDay(perDay);
        app.applicationDidReceiveLocalNotification({{"userInfo", QVariantMap{{"type", "repeated"}}}});
        EXPECT_EQ(messages(),
                  QStringList{"جائزة التمرين الدماغي|مبروك لقد ربحت 0 محاولة مع التمرين الدماغي"});
    }
    EXPECT_EQ(UserStatsManager::sharedInstance().totalTrainingsTaken(), 3);
    app.setApplicationIconBadgeNumber(3);
    app.applicationDidReceiveLocalNotification({{"userInfo", QVariantMap{{"type", "mystery"}}}});
    EXPECT_TRUE(messages().isEmpty());
    EXPECT_EQ(app.applicationIconBadgeNumber(), 0);
}

} // namespace
