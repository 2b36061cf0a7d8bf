#include "Application.h"

#include "outreach/GameIAPHelper.h"
#include "outreach/ShareView.h"
#include "outreach/StoreViewController.h"

#include "core/BattleDelegate.h"
#include "screens/PresentationUtil.h"

#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "multiplayer/BattlesViewController.h"
#include "multiplayer/GCPlayerViewController.h"
#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "multiplayer/LeaderboardViewController.h"
#include "platform/Platform.h"
#include "screens/ImageUtil.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"
#include "screens/Screens.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMap>
#include <QPointer>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QResource>
#include <QSGRendererInterface>
#include <QStandardPaths>
#include <QTextStream>
#include <QTimer>

namespace {
// The screens that --open presents over the main screen, by their short names.
const QMap<QString, QString>& presentedScreens() {
    static const QMap<QString, QString> screens{
        {"leaderboard", "LeaderboardViewController"},
        {"account", "AccountViewController"},
        {"settings", "SettingsViewController"},
        {"rank", "RankViewController"},
        {"achievements", "AchievementsViewController"},
        {"tips", "TipsViewController"},
        {"help", "HelpViewController"},
        {"profile", "UserProfileViewController"},
        {"about", "AboutViewController"},
        {"credits", "CreditsViewController"},
        {"matchmaker", "GKTurnBasedMatchmakerViewController"},
        {"livematch", "GKMatchmakerViewController"},
        {"livebattles", "RealTimeBattleListViewController"},
        {"store", "StoreViewController"},
        {"promo", "AppPromoViewController"},
    };
    return screens;
}

bool validProfileName(const QString& name) {
    static const QRegularExpression re(QStringLiteral("^[A-Za-z0-9_-]{1,64}$"));
    return re.match(name).hasMatch();
}
} // namespace

bool Application::parseArguments(const QStringList& arguments, Options* options, int* exitCode) {
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Tarvolin: four pictures, one word."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption profile(
        QStringLiteral("profile"),
        QStringLiteral("Keep a separate player's data under NAME (letters, digits, - and _)."),
        QStringLiteral("NAME"), QStringLiteral("default"));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Save the window to FILE once the first screen has drawn, then quit."),
        QStringLiteral("FILE"));
    const QCommandLineOption screenshotAfter(
        QStringLiteral("screenshot-after"),
        QStringLiteral("Take the screenshot SECONDS after the first frame (default 0.7), so that what a "
                       "screen starts on its own (an ad, a countdown) can be seen."),
        QStringLiteral("SECONDS"), QStringLiteral("0.7"));
    const QCommandLineOption service(
        QStringLiteral("service"),
        QStringLiteral("The address of tarvolin-service (default: a local service)."), QStringLiteral("URL"),
        QStringLiteral("http://127.0.0.1:8470"));
    const QCommandLineOption device(
        QStringLiteral("device"),
        QStringLiteral("The layout to use: phone, tallphone or tablet (default: from the screen)."),
        QStringLiteral("CLASS"));
    const QCommandLineOption offline(QStringLiteral("offline"),
                                     QStringLiteral("Act as if there were no connection."));
    const QCommandLineOption dataDir(
        QStringLiteral("data-dir"),
        QStringLiteral("Keep profiles under DIR instead of the user's data folder."), QStringLiteral("DIR"));
    const QCommandLineOption open(
        QStringLiteral("open"),
        QStringLiteral(
            "Go on from the main screen to SCREEN: rounds, levels, play, solved (the current level just "
            "solved), battle (a battle level in play), battles (the battles page), finishedbattles (its "
            "finished battles), exchanges (the gold exchanges page), player (the first other player on the "
            "leaderboard), friendrequest (a friend request to him), login, leaderboard, account, settings, "
            "rank, achievements, tips, help, profile, about, matchmaker, livematch, livebattles (the "
            "finished live matches), store, payment (the sandbox's sheet for the first pack), rewarded "
            "(the free video of the play screen) or promo (the card of a promoted game)."),
        QStringLiteral("SCREEN"));
    parser.addOptions({profile, screenshot, screenshotAfter, service, device, offline, dataDir, open});

    QTextStream err(stderr);
    if (!parser.parse(arguments)) {
        err << parser.errorText() << "\n" << parser.helpText();
        *exitCode = 2;
        return false;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        QTextStream(stdout) << parser.helpText();
        *exitCode = 0;
        return false;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        QTextStream(stdout) << QCoreApplication::applicationName() << " "
                            << QCoreApplication::applicationVersion() << "\n";
        *exitCode = 0;
        return false;
    }
    options->profile = parser.value(profile);
    if (!validProfileName(options->profile)) {
        err << "The profile name \"" << options->profile
            << "\" is not allowed: use 1 to 64 letters, digits, - or _.\n";
        *exitCode = 2;
        return false;
    }
    options->screenshot = parser.value(screenshot);
    bool delayOk = false;
    const double delay = parser.value(screenshotAfter).toDouble(&delayOk);
    if (!delayOk || delay < 0 || delay > 120) {
        err << "The screenshot delay \"" << parser.value(screenshotAfter)
            << "\" is not a number of seconds from 0 to 120.\n";
        *exitCode = 2;
        return false;
    }
    options->screenshotDelayMs = static_cast<int>(delay * 1000);
    options->service = parser.value(service);
    const QUrl serviceUrl(options->service, QUrl::StrictMode);
    if (!serviceUrl.isValid() || (serviceUrl.scheme() != "http" && serviceUrl.scheme() != "https") ||
        serviceUrl.host().isEmpty()) {
        err << "The service address \"" << options->service << "\" is not an http:// or https:// URL.\n";
        *exitCode = 2;
        return false;
    }
    options->offline = parser.isSet(offline);
    options->profileRoot = parser.value(dataDir);
    options->open = parser.value(open);
    // The screens reached through the main screen's own actions, then those presented over it.
    const QStringList reached{
        "rounds",          "levels",    "play",   "solved",        "login",   "battle",   "battles",
        "finishedbattles", "exchanges", "player", "friendrequest", "payment", "rewarded", "share"};
    if (!options->open.isEmpty() && !presentedScreens().contains(options->open) &&
        !reached.contains(options->open)) {
        err << "Unknown screen \"" << options->open << "\": use " << reached.join(", ") << ", "
            << presentedScreens().keys().join(", ") << ".\n";
        *exitCode = 2;
        return false;
    }
    if (parser.isSet(device)) {
        Device::Class cls;
        if (!Device::parse(parser.value(device), &cls)) {
            err << "Unknown device class \"" << parser.value(device)
                << "\": use phone, tallphone or tablet.\n";
            *exitCode = 2;
            return false;
        }
        options->device = parser.value(device);
    }
    return true;
}

Application::Application(Options options) : m_options(std::move(options)) {}

Application::~Application() {
    m_delivery.reset();
    m_engine.reset();
    Platform::uninstall();
}

QString Application::profileFolder() const {
    QString root = m_options.profileRoot;
    if (root.isEmpty()) {
        root = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    }
    return QDir(root).filePath(QStringLiteral("profiles/") + m_options.profile);
}

void Application::registerResources() {
    static bool done = false;
    if (done) {
        return;
    }
    done = true;
    for (const char* font : {":/fonts/NotoKufiArabic-Regular.ttf", ":/fonts/NotoKufiArabic-Bold.ttf"}) {
        if (QFontDatabase::addApplicationFont(QString::fromLatin1(font)) < 0) {
            qWarning("The font %s could not be loaded", font);
        }
    }
    // The level pictures are built with the game and packed beside the executable.
    QStringList candidates;
    const QString fromEnv = qEnvironmentVariable("TARVOLIN_PICTURES");
    if (!fromEnv.isEmpty()) {
        candidates << fromEnv;
    }
    candidates
        << QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tarvolin-pictures.rcc"));
    for (const QString& path : std::as_const(candidates)) {
        if (QFile::exists(path) && QResource::registerResource(path)) {
            return;
        }
    }
    qWarning("The level pictures (tarvolin-pictures.rcc) were not found; levels show without pictures.");
}

bool Application::start() {
    Device::Class cls = Device::Phone;
    if (!m_options.device.isEmpty()) {
        Device::parse(m_options.device, &cls);
    } else if (auto* screen = QGuiApplication::primaryScreen()) {
        // A portrait screen is taken as what it is; a landscape (desktop) screen gets a phone-shaped window.
        const QSize size = screen->availableSize();
        if (size.height() > size.width()) {
            cls = Device::classForWindowSize(size);
        }
    }

    Platform::Services services;
    services.userDefaults =
        std::make_unique<UserDefaults>(QDir(profileFolder()).filePath(QStringLiteral("settings.ini")));
    services.scheduler = std::make_unique<QtScheduler>();
    services.random = std::make_unique<SystemRandom>();
    services.reachability = std::make_unique<Reachability>(true);
    services.animator = std::make_unique<ScheduledAnimator>();
    services.device = std::make_unique<Device>(cls);
    services.gameService = std::make_unique<GameService>(QUrl(m_options.service));
    services.localNotifications = std::make_unique<LocalNotifications>(
        QDir(profileFolder()).filePath(QStringLiteral("notifications.json")));
    services.homeDirectory = profileFolder();
    Platform::install(std::move(services));
    auto& platform = Platform::shared();
    platform.reachability().setForcedOffline(m_options.offline);

    registerResources();
    registerScreens(platform.navigator());
    if (QGuiApplication::platformName() == QLatin1String("offscreen") ||
        qEnvironmentVariableIsSet("TARVOLIN_SOFTWARE_RENDERING")) {
        // No GPU behind an offscreen window: draw with the software renderer.
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    }

    QVariantMap launchOptions;
    if (const std::optional<LocalNotification> launching = NotificationDelivery::takeLaunchNotification()) {
        launchOptions.insert(AppDelegate::kLaunchOptionsLocalNotificationKey, launching->toMap());
    }
    m_delegate.applicationDidFinishLaunchingWithOptions(launchOptions);

    if (!m_options.open.isEmpty()) {
        openScreen(m_options.open);
    }
    m_engine = createGameEngine();
    if (!m_engine) {
        qCritical("The game's window could not be created.");
        return false;
    }
    QObject::connect(qApp, &QGuiApplication::applicationStateChanged, qApp,
                     [this, last = Qt::ApplicationActive](Qt::ApplicationState state) mutable {
                         if (state == Qt::ApplicationActive && last != Qt::ApplicationActive) {
                             m_delegate.applicationWillEnterForeground();
                         }
                         last = state;
                     });
    QObject::connect(&platform.localNotifications(), &LocalNotifications::userNotificationSettingsRegistered,
                     qApp,
                     [this](int types) { m_delegate.applicationDidRegisterUserNotificationSettings(types); });
    m_desktop = std::make_unique<DesktopNotifier>();
    m_delivery = std::make_unique<NotificationDelivery>();
    m_delivery->start([this](const LocalNotification& n) { deliver(n); });
    if (!m_options.screenshot.isEmpty()) {
        scheduleScreenshot();
    }
    return true;
}

void Application::deliver(const LocalNotification& notification) {
    const QVariantMap map = notification.toMap();
    QQuickWindow* w = window();
    const bool inFront = w && w->isVisible() && w->isActive();
    const QString title = notification.alertAction.isEmpty() ? QGuiApplication::applicationDisplayName()
                                                             : notification.alertAction;
    if (!inFront && m_desktop->notify(title, notification.alertBody, [this, map] {
            if (QQuickWindow* front = window()) {
                front->show();
                front->raise();
                front->requestActivate();
            }
            m_delegate.applicationDidReceiveLocalNotification(map);
        })) {
        return;
    }
    Platform::shared().banner().titleMessageTime(title, notification.alertBody, 4.0);
    m_delegate.applicationDidReceiveLocalNotification(map);
}

void Application::openScreen(const QString& which) {
    auto& nav = Platform::shared().navigator();
    auto* main = qobject_cast<MainViewController*>(nav.topViewController());
    if (!main) {
        return;
    }
    if (which == QLatin1String("login")) {
        main->loginToGameCenter();
        return;
    }
    if (which == QLatin1String("exchanges")) {
        PresentationUtil::openGameCenterNavControllerWithPageNumAndType(main, 2, 0);
        return;
    }
    if (which == QLatin1String("battles") || which == QLatin1String("finishedbattles")) {
        PresentationUtil::openGameCenterNavControllerWithPageNumAndType(main, 1, 0);
        auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(nav.presentedViewController());
        auto* battles =
            pages ? qobject_cast<BattlesViewController*>(pages->viewControllerArray().value(1)) : nullptr;
        if (battles && which == QLatin1String("finishedbattles")) {
            battles->segmentChanged(1);
        }
        return;
    }
    if (which == QLatin1String("player") || which == QLatin1String("friendrequest")) {
        // The details of the first other player on the leaderboard, once it has loaded; and from them the
        // friend request.
        PresentationUtil::openGameCenterNavControllerWithPageNumAndType(main, 0, 0);
        auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(nav.presentedViewController());
        auto* board =
            pages ? qobject_cast<LeaderboardViewController*>(pages->viewControllerArray().value(0)) : nullptr;
        if (!board) {
            return;
        }
        QObject::connect(board, &LeaderboardViewController::rowsChanged, board, [board, which] {
            const QVariantList rows = board->rows();
            for (qsizetype i = 0; i < rows.size(); ++i) {
                if (!rows.at(i).toMap().value("isLocal").toBool()) {
                    QObject::disconnect(board, &LeaderboardViewController::rowsChanged, board, nullptr);
                    board->openPlayer(static_cast<int>(i));
                    auto* details = qobject_cast<GCPlayerViewController*>(
                        Platform::shared().navigator().presentedViewController());
                    if (details && which == QLatin1String("friendrequest")) {
                        details->sendFriendshipRequest();
                    }
                    return;
                }
            }
        });
        return;
    }
    if (which == QLatin1String("payment")) {
        // The store, and the first pack bought: the sandbox's sheet once the store has taken the payment.
        auto* store = new StoreViewController();
        nav.presentViewController(store);
        GameIAPHelper::sharedInstance().requestProducts();
        QTimer::singleShot(1500, qApp, [store = QPointer<StoreViewController>(store)] {
            if (store) {
                store->buyPack1();
            }
        });
        return;
    }
    if (which == QLatin1String("battle")) {
        // A battle level as the challenger plays it, with nobody waiting for the result.
        BattleLevels::startBattleGame(BattleLevels::newBattleLevel(), 1, nullptr);
        return;
    }
    if (presentedScreens().contains(which)) {
        if (auto* screen = nav.instantiateViewControllerWithIdentifier(presentedScreens().value(which))) {
            nav.presentViewController(screen);
        }
        return;
    }
    main->startAction();
    auto* rounds = qobject_cast<RoundSelectorViewController*>(nav.topViewController());
    if (which == QLatin1String("rounds") || !rounds) {
        return;
    }
    const qint64 level = LevelManager::sharedInstance().currentLevel();
    rounds->tableViewDidSelectRowAtIndexPath(
        static_cast<int>(std::min(level / 25, rounds->tableViewNumberOfRowsInSection() - 1)));
    auto* levels = qobject_cast<LevelSelectorViewController*>(nav.topViewController());
    if (which == QLatin1String("levels") || !levels) {
        return;
    }
    levels->collectionViewDidSelectItemAtIndexPath(static_cast<int>(level % 25));
    auto* play = qobject_cast<GameViewController*>(nav.topViewController());
    if (play && which == QLatin1String("solved")) {
        play->dismissHelpAction();
        play->gameSuccess();
    }
    if (play && which == QLatin1String("share")) {
        // The level's share panel once the window draws the level, and from its general button the share
        // screen.
        play->dismissHelpAction();
        QTimer::singleShot(800, qApp, [play = QPointer<GameViewController>(play)] {
            if (!play) {
                return;
            }
            play->shareLevelWithFriends(nullptr);
            if (auto* view = qobject_cast<ShareView*>(play->shareViewObject())) {
                view->buttonTapped(96);
            }
        });
    }
    if (play && which == QLatin1String("rewarded")) {
        // Pressed once the level's interstitial has loaded: while it loads, no video is asked for.
        play->dismissHelpAction();
        QTimer::singleShot(1500, qApp, [play = QPointer<GameViewController>(play)] {
            if (play) {
                play->watchVideo(nullptr);
            }
        });
    }
}

QQuickWindow* Application::window() const {
    if (!m_engine || m_engine->rootObjects().isEmpty()) {
        return nullptr;
    }
    return qobject_cast<QQuickWindow*>(m_engine->rootObjects().first());
}

void Application::scheduleScreenshot() {
    QQuickWindow* w = window();
    if (!w) {
        return;
    }
    auto* once = new QObject(w);
    QObject::connect(w, &QQuickWindow::frameSwapped, once, [this, once]() {
        once->deleteLater();
        // A moment for pictures and fonts to settle, then the picture of the screen.
        QTimer::singleShot(m_options.screenshotDelayMs, qApp, [this]() {
            const QImage image = ImageUtil::takeScreenshotForWindow(window());
            if (image.isNull() || !image.save(m_options.screenshot)) {
                qCritical("The screenshot could not be saved to %s", qPrintable(m_options.screenshot));
                QCoreApplication::exit(1);
                return;
            }
            QTextStream(stdout) << "Saved " << m_options.screenshot << "\n";
            QCoreApplication::exit(0);
        });
    });
}
