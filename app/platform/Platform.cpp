#include "Platform.h"

#include "Dispatch.h"

#include <QDebug>
#include <QStandardPaths>

namespace {
std::unique_ptr<Platform>& slot() {
    static std::unique_ptr<Platform> p;
    return p;
}
} // namespace

Platform::Platform(Services services)
    : m_services(std::move(services)), m_navigator(std::make_unique<Navigator>()) {}

void Platform::install(Services services) {
    if (!services.scheduler) {
        services.scheduler = std::make_unique<QtScheduler>();
    }
    if (!services.random) {
        services.random = std::make_unique<SystemRandom>();
    }
    if (!services.reachability) {
        services.reachability = std::make_unique<Reachability>(false);
    }
    if (!services.animator) {
        services.animator = std::make_unique<ScheduledAnimator>();
    }
    if (!services.device) {
        services.device = std::make_unique<Device>();
    }
    if (!services.audio) {
        services.audio = std::make_unique<QtAudio>();
    }
    if (!services.gameService) {
        services.gameService = std::make_unique<GameService>(QUrl(QStringLiteral("http://127.0.0.1:8470")));
    }
    if (!services.localNotifications) {
        services.localNotifications = std::make_unique<LocalNotifications>();
    }
    if (!services.urls) {
        services.urls = std::make_unique<UrlOpener>();
    }
    if (!services.files) {
        services.files = std::make_unique<FileChooser>();
    }
    if (services.homeDirectory.isEmpty()) {
        services.homeDirectory = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    }
    if (!services.web) {
        services.web = std::make_unique<QtWebClient>();
    }
    Q_ASSERT(services.userDefaults);
    slot().reset(new Platform(std::move(services)));
}

void Platform::uninstall() {
    if (slot()) {
        // Work on the worker threads uses the platform: it ends first.
        Dispatch::waitForGlobal();
        // Screens go first: their destructors may still ask for platform services.
        slot()->m_navigator.reset();
        slot().reset();
    }
}

bool Platform::isInstalled() {
    return slot() != nullptr;
}

Platform& Platform::shared() {
    if (!slot()) {
        qFatal("The platform layer is used before it was installed");
    }
    return *slot();
}

void delayCallback(std::function<void()> block, double seconds) {
    if (!block) {
        return;
    }
    Platform::shared().scheduler().schedule(seconds, std::move(block));
}
