#include "AppDelegate.h"

#include "platform/Dispatch.h"
#include "platform/Platform.h"
#include "progress/BonusManager.h"
#include "progress/CreditsManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"
#include "screens/Util.h"

ViewController* AppDelegate::instantiateInitialViewController() {
    return Platform::shared().navigator().instantiateViewControllerWithIdentifier(
        QStringLiteral("MainViewController"));
}

bool AppDelegate::applicationDidFinishLaunchingWithOptions(const QVariantMap& /*launchOptions*/) {
    auto& platform = Platform::shared();
    // The session is counted first: everything after it sees this start's day and session.
    SessionManager::sharedInstance().checkAndLogSessionInfo();

    // The first screen exists before anything below runs.
    if (auto* root = instantiateInitialViewController()) {
        platform.navigator().setRootViewController(root);
    }

    platform.reachability().startNotifier();

    isPenaltyMessageShown = false;
    if (Util::isConnected()) {
        dispatchBonusCheck();
    } else {
        showPenaltyMessageOnce();
    }
    (void)SessionManager::sharedInstance().isFirstLaunch();

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
    }
    setApplicationIconBadgeNumber(0);
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
    const QString type =
        notification.value(QStringLiteral("userInfo")).toMap().value(QStringLiteral("type")).toString();
    if (type == QLatin1String("repeated") || type == QLatin1String("reengagement")) {
        UserStatsManager::sharedInstance().incrementTrainingsTaken();
    }
    setApplicationIconBadgeNumber(0);
}

void AppDelegate::handleReceivingLocalNotification(const QVariantMap& notification) {
    const QString type =
        notification.value(QStringLiteral("userInfo")).toMap().value(QStringLiteral("type")).toString();
    if (type == QLatin1String("normal")) {
        Util::showMessageWithTitle(notification.value(QStringLiteral("alertBody")).toString(),
                                   QStringLiteral("الحل الصحيح"));
    }
}
