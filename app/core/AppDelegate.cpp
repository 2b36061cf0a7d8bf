#include "AppDelegate.h"

#include "platform/Platform.h"
#include "screens/Util.h"

ViewController* AppDelegate::instantiateInitialViewController() {
    return Platform::shared().navigator().instantiateViewControllerWithIdentifier(
        QStringLiteral("MainViewController"));
}

bool AppDelegate::applicationDidFinishLaunchingWithOptions(const QVariantMap& /*launchOptions*/) {
    auto& platform = Platform::shared();

    // The first screen exists before anything below runs.
    if (auto* root = instantiateInitialViewController()) {
        platform.navigator().setRootViewController(root);
    }

    platform.reachability().startNotifier();

    isPenaltyMessageShown = false;
    if (!Util::isConnected()) {
        Util::showMessageWithTitle(kPenaltyMessage, kPenaltyTitle);
        isPenaltyMessageShown = true;
    }

    setApplicationIconBadgeNumber(0);
    return true;
}

void AppDelegate::applicationWillEnterForeground() {
    setApplicationIconBadgeNumber(0);
}

void AppDelegate::applicationDidReceiveLocalNotification(const QVariantMap& notification) {
    handleReceivingLocalNotification(notification);
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
