#pragma once

#include <QString>
#include <QVariantMap>

class ViewController;

// Where the system enters the game: for each event it decides which managers are told what, in which order.
class AppDelegate {
public:
    static inline const QString kLaunchOptionsLocalNotificationKey =
        QStringLiteral("UIApplicationLaunchOptionsLocalNotificationKey");

    // The first screen: the main screen.
    static ViewController* instantiateInitialViewController();

    AppDelegate() = default;
    ~AppDelegate();
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    bool applicationDidFinishLaunchingWithOptions(const QVariantMap& launchOptions);
    void applicationWillEnterForeground();
    // The game leaves the front: the progress that waits to be saved leaves now.
    void applicationDidEnterBackground();
    // A connection that comes back starts the ads, once.
    void reachabilityChanged();
    // A local notification is a map with "alertBody" and "userInfo" (itself a map with "type").
    void applicationDidReceiveLocalNotification(const QVariantMap& notification);
    void handleReceivingLocalNotification(const QVariantMap& notification);
    // The player answered the platform's question about notifications.
    void applicationDidRegisterUserNotificationSettings(int types);
    // Asks for the usage bonuses due by the server's date and pays them. Called on a worker thread, it takes
    // the payment and the congratulation to the main thread; called on the main thread it pays and says
    // nothing.
    static void checkForEntitledBonuses();

    bool isPenaltyMessageShown = false;
    int applicationIconBadgeNumber() const { return m_badge; }
    void setApplicationIconBadgeNumber(int badge) { m_badge = badge; }

    static inline const QString kPenaltyMessage =
        QStringLiteral("لم تربح جائزة الاستخدام اليومي بسبب مشكلة بالاتصال.. يرجى المحاولة لاحقا");
    static inline const QString kPenaltyTitle = QStringLiteral("جائزة الاستخدام اليومي");
    static inline const QString kBonusTitle = QStringLiteral("مبروووك");

private:
    // No connection: the player hears once per run that the day's prize is lost.
    void showPenaltyMessageOnce();
    static void dispatchBonusCheck();
    // A "repeated" or "reengagement" notification counts as a training taken.
    static bool isTraining(const QVariantMap& notification);

    int m_badge = 0;
};
