#pragma once

#include "Alerts.h"
#include "Animator.h"
#include "Audio.h"
#include "Banner.h"
#include "Device.h"
#include "Emitter.h"
#include "LocalNotifications.h"
#include "Navigator.h"
#include "NotificationCenter.h"
#include "ProgressHud.h"
#include "Random.h"
#include "Reachability.h"
#include "Scheduler.h"
#include "ShareSheet.h"
#include "UrlOpener.h"
#include "UserDefaults.h"
#include "WebClient.h"
#include "gamekit/GameService.h"
#include "storekit/SKPaymentSheet.h"

#include <memory>

// What a phone platform gives the game, gathered in one place. The program installs the real services at
// start; tests install doubles (a hand-driven clock, an animator that completes when told, scripted
// randomness).
class Platform {
public:
    struct Services {
        std::unique_ptr<UserDefaults> userDefaults;
        std::unique_ptr<Scheduler> scheduler;
        std::unique_ptr<Random> random;
        std::unique_ptr<Reachability> reachability;
        std::unique_ptr<Animator> animator;
        std::unique_ptr<Device> device;
        std::unique_ptr<Audio> audio;
        std::unique_ptr<GameService> gameService;
        std::unique_ptr<WebClient> web;
        std::unique_ptr<LocalNotifications> localNotifications;
        std::unique_ptr<UrlOpener> urls;
        std::unique_ptr<FileChooser> files;
        // The game's own folder on the device, where files handed to other apps are written.
        QString homeDirectory;
    };

    static void install(Services services);
    static void uninstall();
    static bool isInstalled();
    static Platform& shared();

    UserDefaults& userDefaults() { return *m_services.userDefaults; }
    NotificationCenter& notificationCenter() { return m_center; }
    Scheduler& scheduler() { return *m_services.scheduler; }
    Random& random() { return *m_services.random; }
    Reachability& reachability() { return *m_services.reachability; }
    Animator& animator() { return *m_services.animator; }
    Device& device() { return *m_services.device; }
    Audio& audio() { return *m_services.audio; }
    GameService& gameService() { return *m_services.gameService; }
    WebClient& web() { return *m_services.web; }
    LocalNotifications& localNotifications() { return *m_services.localNotifications; }
    UrlOpener& urls() { return *m_services.urls; }
    FileChooser& files() { return *m_services.files; }
    QString homeDirectory() const { return m_services.homeDirectory; }
    Banner& banner() { return m_banner; }
    MyEmitter& emitter() { return m_emitter; }
    Alerts& alerts() { return m_alerts; }
    ProgressHud& progressHud() { return m_hud; }
    SKPaymentSheet& paymentSheet() { return m_paymentSheet; }
    ShareSheet& shareSheet() { return m_shareSheet; }
    Navigator& navigator() { return *m_navigator; }

private:
    explicit Platform(Services services);

    Services m_services;
    NotificationCenter m_center;
    Alerts m_alerts;
    ProgressHud m_hud;
    SKPaymentSheet m_paymentSheet;
    ShareSheet m_shareSheet;
    Banner m_banner;
    MyEmitter m_emitter;
    std::unique_ptr<Navigator> m_navigator;
};

// Runs the block on the main thread after the time; a null block is skipped. It cannot be cancelled.
void delayCallback(std::function<void()> block, double seconds);
