#include "AppDelegate.h"

#include "outreach/GameIAPHelper.h"
#include "outreach/InterstitialManager.h"
#include "platform/Dispatch.h"
#include "platform/Platform.h"
#include "progress/BonusManager.h"
#include "progress/CloudSaveManager.h"
#include "progress/CreditsManager.h"
#include "progress/NotificationManager.h"
#include "progress/RankManager.h"
#include "progress/SessionManager.h"
#include "progress/SettingsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/PresentationUtil.h"
#include "screens/Util.h"

ViewController* AppDelegate::instantiateInitialViewController() {
    return Platform::shared().navigator().instantiateViewControllerWithIdentifier(
        QStringLiteral("MainViewController"));
}

AppDelegate::~AppDelegate() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

bool AppDelegate::applicationDidFinishLaunchingWithOptions(const QVariantMap& launchOptions) {
    auto& platform = Platform::shared();
    // The session is counted first: everything after it sees this start's day and session.
    SessionManager::sharedInstance().checkAndLogSessionInfo();
    // The player's progress follows him to the service from the first change on.
    CloudSaveManager::sharedInstance();

    // Payments are heard before any screen can buy; an unfinished one is handed over again from here.
    SKPaymentQueue::defaultQueue().addTransactionObserver(&GameIAPHelper::sharedInstance());
    if (Util::isConnected()) {
        GameIAPHelper::sharedInstance().requestProducts();
    }

    // The first screen exists before anything below runs.
    if (auto* root = instantiateInitialViewController()) {
        platform.navigator().setRootViewController(root);
    }

    // A house ad that leads somewhere in the game.
    platform.notificationCenter().addObserver(this, kGADOpenActionURLNotification, [](const Notification& n) {
        PresentationUtil::openInGameAddress(QUrl(n.object.toString()));
    });
    platform.notificationCenter().addObserver(this, kReachabilityChangedNotification,
                                              [this](const Notification&) { reachabilityChanged(); });
    platform.reachability().startNotifier();

    isPenaltyMessageShown = false;
    if (Util::isConnected()) {
        dispatchBonusCheck();
    } else {
        showPenaltyMessageOnce();
    }
    (void)SessionManager::sharedInstance().isFirstLaunch();

    NotificationManager& notifications = NotificationManager::sharedInstance();
    if (notifications.areNotificationsAllowed()) {
        const QVariantMap launching = launchOptions.value(kLaunchOptionsLocalNotificationKey).toMap();
        if (!launching.isEmpty()) {
            handleReceivingLocalNotification(launching);
            if (isTraining(launching)) {
                UserStatsManager::sharedInstance().incrementTrainingsTaken();
            }
        }
        notifications.cancelReEngagementNotifications();
        notifications.scheduleReEngagementNotifications();
    }

    setApplicationIconBadgeNumber(0);
    return true;
}

void AppDelegate::applicationWillEnterForeground() {
    SessionManager& sessions = SessionManager::sharedInstance();
    if (sessions.isNewSession()) {
        // The bonus check is on its way before the session is counted.
        if (Util::isConnected()) {
            dispatchBonusCheck();
        } else if (!isPenaltyMessageShown) {
            showPenaltyMessageOnce();
        }
        sessions.checkAndLogSessionInfo();
        if (sessions.isNewActiveDay()) {
            InterstitialManager::sharedInstance().initializeSession();
        }
        NotificationManager& notifications = NotificationManager::sharedInstance();
        notifications.cancelReEngagementNotifications();
        notifications.scheduleReEngagementNotifications();
    }
    setApplicationIconBadgeNumber(0);
}

void AppDelegate::applicationDidEnterBackground() {
    CloudSaveManager::sharedInstance().enterBackground();
}

void AppDelegate::reachabilityChanged() {
    if (Platform::shared().reachability().currentReachabilityStatus() != Reachability::NotReachable &&
        !InterstitialManager::sharedInstance().isInitialized) {
        InterstitialManager::sharedInstance().initializeSession();
    }
}

void AppDelegate::applicationDidRegisterUserNotificationSettings(int /*types*/) {
    NotificationManager::sharedInstance().setPermissionDialogueAsShown();
}

bool AppDelegate::isTraining(const QVariantMap& notification) {
    const QString type =
        notification.value(QStringLiteral("userInfo")).toMap().value(QStringLiteral("type")).toString();
    return type == QLatin1String("repeated") || type == QLatin1String("reengagement");
}

void AppDelegate::dispatchBonusCheck() {
    // The manager is made here, on the main thread, like every other; the check waits on the network.
    BonusManager::sharedInstance();
    Dispatch::asyncGlobal(&AppDelegate::checkForEntitledBonuses);
}

void AppDelegate::showPenaltyMessageOnce() {
    Util::showMessageWithTitle(kPenaltyMessage, kPenaltyTitle);
    isPenaltyMessageShown = true;
}

void AppDelegate::checkForEntitledBonuses() {
    // The date comes from the network: this is the part that waits.
    const std::optional<QList<Bonus>> bonuses = BonusManager::sharedInstance().getEntitledBonuses();
    if (!bonuses) {
        return;
    }
    const auto pay = [bonuses] {
        const std::optional<QString> message = BonusManager::getBonusListMessage(bonuses);
        if (!message) {
            return std::optional<QString>();
        }
        CreditsManager::sharedInstance().addCredits(BonusManager::getBonusListCredits(bonuses));
        return message;
    };
    if (Dispatch::isMainThread()) {
        pay();
        return;
    }
    // The balance and its screens belong to the main thread: the gold and the message go there together.
    Dispatch::asyncMain([pay] {
        if (const std::optional<QString> message = pay()) {
            Util::showMessageWithTitle(*message, kBonusTitle);
        }
    });
}

void AppDelegate::applicationDidReceiveLocalNotification(const QVariantMap& notification) {
    handleReceivingLocalNotification(notification);
    if (isTraining(notification)) {
        UserStatsManager::sharedInstance().incrementTrainingsTaken();
    }
    setApplicationIconBadgeNumber(0);
}

void AppDelegate::handleReceivingLocalNotification(const QVariantMap& notification) {
    const QString type =
        notification.value(QStringLiteral("userInfo")).toMap().value(QStringLiteral("type")).toString();
    const QString gold = QStringLiteral("ذهبة");
    if (type == QLatin1String("normal")) {
        Util::showMessageWithTitle(notification.value(QStringLiteral("alertBody")).toString(),
                                   QStringLiteral("الحل الصحيح"));
    } else if (type == QLatin1String("reengagement")) {
        CreditsManager::sharedInstance().addCredits(NotificationManager::kReEngagementGift);
        Util::showMessageWithTitle(QStringLiteral("لقد ربحت %1  %2 لتساعدك في الفوز على بقية اللاعبين")
                                       .arg(NotificationManager::kReEngagementGift)
                                       .arg(gold),
                                   QStringLiteral("مبرووك"));
    } else if (type == QLatin1String("repeated")) {
        const RankManager& ranks = RankManager::sharedInstance();
        const int perDay = static_cast<int>(SettingsManager::sharedInstance().notificationsPerDay());
        const qint64 reward = perDay == 2   ? ranks.getDailyNotification2Reward()
                              : perDay == 1 ? ranks.getDailyNotificationReward()
                                            : 0;
        CreditsManager::sharedInstance().addCredits(reward);
        Util::showMessageWithTitle(QStringLiteral("مبروك لقد ربحت %1 محاولة مع التمرين الدماغي").arg(reward),
                                   QStringLiteral("جائزة التمرين الدماغي"));
    }
}
