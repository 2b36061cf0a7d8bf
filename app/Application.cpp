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
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImageWriter>
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

// The screens that --open reaches through the main screen's own actions, with what they show.
const QList<std::pair<QString, QString>>& reachedScreens() {
    static const QList<std::pair<QString, QString>> screens{
        {"rounds", {}},
        {"levels", {}},
        {"play", {}},
        {"solved", "the current level just solved"},
        {"login", {}},
        {"battle", "a battle level in play"},
        {"battles", "the battles page"},
        {"finishedbattles", "its finished battles"},
        {"exchanges", "the gold exchanges page"},
        {"player", "the first other player on the leaderboard"},
        {"friendrequest", "a friend request to him"},
        {"payment", "the sandbox's sheet for the first pack"},
        {"rewarded", "the free video of the play screen"},
        {"share", "the level's share panel and the share screen"},
    };
    return screens;
}

QStringList screenNames() {
    QStringList names;
    for (const auto& [name, what] : reachedScreens()) {
        names << name;
    }
    return names << presentedScreens().keys();
}

bool validProfileName(const QString& name) {
    static const QRegularExpression re(QStringLiteral("^[A-Za-z0-9_-]{1,64}$"));
    return re.match(name).hasMatch();
}

// The options that Qt's application objects take out of the command line themselves (with one dash or two):
// they are let through untouched.
struct QtOption {
    const char* name;
    bool takesValue;
    bool equalsForm; // also as -name=value
};
constexpr QtOption kQtOptions[] = {
    {"platform", true, false},
    {"platformpluginpath", true, false},
    {"platformtheme", true, false},
    {"plugin", true, false},
    {"qwindowgeometry", true, false},
    {"qwindowtitle", true, false},
    {"qwindowicon", true, false},
    {"geometry", true, false},
    {"title", true, false},
    {"icon", true, false},
    {"display", true, false},
    {"name", true, false},
    {"visual", true, false},
    {"session", true, false},
    {"style", true, true},
    {"stylesheet", true, true},
    {"qmljsdebugger", true, true},
    {"reverse", false, false},
    {"testability", false, false},
    {"widgetcount", false, false},
    {"nograb", false, false},
    {"dograb", false, false},
};

const QtOption* qtOption(const QString& word) {
    for (const QtOption& option : kQtOptions) {
        if (word == QLatin1String(option.name)) {
            return &option;
        }
    }
    return nullptr;
}

// Splits the arguments into the game's and Qt's. Returns an empty string, or what is wrong.
QString separateQtOptions(const QStringList& arguments, QStringList* game, QString* platform) {
    *game = arguments.mid(0, 1);
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& arg = arguments.at(i);
        if (arg == QLatin1String("--")) {
            *game << arguments.mid(i);
            break;
        }
        QString word = arg;
        if (word.startsWith(QLatin1String("--"))) {
            word.remove(0, 2);
        } else if (word.startsWith(QLatin1Char('-'))) {
            word.remove(0, 1);
        } else {
            *game << arg;
            continue;
        }
        const qsizetype eq = word.indexOf(QLatin1Char('='));
        const QtOption* option = qtOption(eq < 0 ? word : word.left(eq));
        if (!option) {
            *game << arg;
            continue;
        }
        QString value;
        if (eq >= 0) {
            const QString flag = arg.left(arg.indexOf(QLatin1Char('=')));
            if (!option->takesValue) {
                return QStringLiteral("%1 takes no value").arg(flag);
            }
            if (!option->equalsForm) {
                return QStringLiteral("%1 takes its value as the next argument, not after =").arg(flag);
            }
            value = word.mid(eq + 1);
        } else if (option->takesValue) {
            if (i + 1 >= arguments.size()) {
                return QStringLiteral("%1 needs a value").arg(arg);
            }
            value = arguments.at(++i);
        }
        if (option->takesValue && value.isEmpty()) {
            return QStringLiteral("%1 needs a value").arg(arg.section(QLatin1Char('='), 0, 0));
        }
        if (qstrcmp(option->name, "platform") == 0) {
            *platform = value;
        }
    }
    return {};
}

// Where a file the game writes may go: empty when it can, else why not.
QString unwritableFile(const QString& path) {
    const QFileInfo file(path);
    if (file.isDir()) {
        return QStringLiteral("\"%1\" is a folder").arg(path);
    }
    const QFileInfo folder(file.absolutePath());
    if (!folder.isDir()) {
        return QStringLiteral("the folder \"%1\" does not exist")
            .arg(QDir::toNativeSeparators(folder.filePath()));
    }
    if (!folder.isWritable()) {
        return QStringLiteral("the folder \"%1\" is not writable")
            .arg(QDir::toNativeSeparators(folder.filePath()));
    }
    if (file.exists() && !file.isWritable()) {
        return QStringLiteral("\"%1\" is not writable").arg(path);
    }
    return {};
}

// A folder the game keeps data in, created when missing: empty when it can be, else why not.
QString unusableFolder(const QString& path) {
    QFileInfo info(path);
    if (info.exists()) {
        if (!info.isDir()) {
            return QStringLiteral("\"%1\" is not a folder").arg(path);
        }
        return info.isWritable() ? QString() : QStringLiteral("the folder \"%1\" is not writable").arg(path);
    }
    // The nearest folder that exists must let the missing ones be made.
    QString nearest = info.absoluteFilePath();
    while (!QFileInfo::exists(nearest) && QFileInfo(nearest).path() != nearest) {
        nearest = QFileInfo(nearest).path();
    }
    const QFileInfo existing(nearest);
    if (!existing.isDir()) {
        return QStringLiteral("\"%1\" is not a folder").arg(existing.filePath());
    }
    return existing.isWritable()
               ? QString()
               : QStringLiteral("the folder \"%1\" is not writable").arg(existing.filePath());
}
} // namespace

bool Application::parseArguments(const QStringList& arguments, Options* options, int* exitCode) {
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QString program = QCoreApplication::applicationName();
    const auto fail = [&](const QString& message) {
        err << program << ": " << message << "\n";
        *exitCode = 2;
        return false;
    };

    QStringList gameArguments;
    const QString qtProblem = separateQtOptions(arguments, &gameArguments, &options->platform);
    if (!qtProblem.isEmpty()) {
        return fail(qtProblem);
    }

    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.setApplicationDescription(QStringLiteral("Tarvolin: four pictures, one word."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption profile(
        QStringLiteral("profile"),
        QStringLiteral("Keep a separate player's data under NAME (1 to 64 letters, digits, - and _)."),
        QStringLiteral("NAME"), QStringLiteral("default"));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QStringLiteral("Save the window to FILE (PNG, JPEG or another picture format, by its extension) once "
                       "the first screen has drawn, then quit."),
        QStringLiteral("FILE"));
    const QCommandLineOption screenshotAfter(
        QStringLiteral("screenshot-after"),
        QStringLiteral("Take the screenshot SECONDS (0 to 120) after the first frame (default 0.7), so that "
                       "what a screen starts on its own (an ad, a countdown) can be seen."),
        QStringLiteral("SECONDS"), QStringLiteral("0.7"));
    const QCommandLineOption service(
        QStringLiteral("service"),
        QStringLiteral("The http:// or https:// address of tarvolin-service (default: a local service)."),
        QStringLiteral("URL"), QStringLiteral("http://127.0.0.1:8470"));
    const QCommandLineOption device(
        QStringLiteral("device"),
        QStringLiteral("The layout to use: phone, tallphone or tablet (default: from the screen)."),
        QStringLiteral("CLASS"));
    const QCommandLineOption offline(QStringLiteral("offline"),
                                     QStringLiteral("Act as if there were no connection."));
    const QCommandLineOption dataDir(
        QStringLiteral("data-dir"),
        QStringLiteral("Keep profiles under DIR (created when missing) instead of the user's data folder."),
        QStringLiteral("DIR"));
    QStringList screens;
    for (const auto& [name, what] : reachedScreens()) {
        screens << (what.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, what));
    }
    screens << presentedScreens().keys();
    const QCommandLineOption open(
        QStringLiteral("open"),
        QStringLiteral("Go on from the main screen to SCREEN: %1.").arg(screens.join(QStringLiteral(", "))),
        QStringLiteral("SCREEN"));
    parser.addOptions({profile, screenshot, screenshotAfter, service, device, offline, dataDir, open});

    const auto helpText = [&parser, &program] {
        // The usage line names the program as it is installed, not the path it was started by.
        QString text = parser.helpText();
        text.replace(0, text.indexOf(QLatin1Char('\n')), QStringLiteral("Usage: %1 [options]").arg(program));
        return text + QStringLiteral(
                          "\nQt's own options are taken too:\n"
                          "  -platform NAME, -platformtheme NAME, -platformpluginpath DIR, -plugin NAME,\n"
                          "  -qwindowgeometry GEOMETRY, -qwindowtitle TITLE, -qwindowicon ICON,\n"
                          "  -style NAME, -stylesheet FILE, -reverse, -session ID, -qmljsdebugger=PORT,\n"
                          "  and with the xcb platform -display DISPLAY, -geometry GEOMETRY, -title TITLE,\n"
                          "  -icon ICON, -name NAME, -visual ID.\n"
                          "\nExit status: 0 when the game ends, 1 when it cannot start (no display),\n"
                          "2 for a wrong option or value.\n");
    };
    if (!parser.parse(gameArguments)) {
        QString problem = parser.errorText();
        if (!parser.unknownOptionNames().isEmpty()) {
            // Named as it was typed, with its dashes.
            const QString name = parser.unknownOptionNames().constFirst();
            QString typed = QStringLiteral("--") + name;
            for (const QString& arg : std::as_const(gameArguments)) {
                const QString flag = arg.section(QLatin1Char('='), 0, 0);
                if (flag == QLatin1Char('-') + name || flag == QLatin1String("--") + name) {
                    typed = flag;
                    break;
                }
            }
            problem = QStringLiteral("unknown option %1").arg(typed);
        }
        err << program << ": " << problem << "\n\n" << helpText();
        *exitCode = 2;
        return false;
    }
    if (parser.isSet(QStringLiteral("help")) || parser.isSet(QStringLiteral("help-all"))) {
        out << helpText();
        *exitCode = 0;
        return false;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        out << program << " " << QCoreApplication::applicationVersion() << "\n";
        *exitCode = 0;
        return false;
    }
    if (!parser.positionalArguments().isEmpty()) {
        return fail(QStringLiteral("unexpected argument \"%1\": the game takes only options (see %2 --help)")
                        .arg(parser.positionalArguments().constFirst(), program));
    }

    options->profile = parser.value(profile);
    if (!validProfileName(options->profile)) {
        return fail(
            QStringLiteral("--profile: the name \"%1\" is not allowed: use 1 to 64 letters, digits, - "
                           "or _")
                .arg(options->profile));
    }
    if (parser.isSet(screenshot)) {
        options->screenshot = parser.value(screenshot);
        if (options->screenshot.isEmpty()) {
            return fail(QStringLiteral("--screenshot needs a FILE"));
        }
        const QByteArray format = QFileInfo(options->screenshot).suffix().toLower().toLatin1();
        const QList<QByteArray> formats = QImageWriter::supportedImageFormats();
        if (!formats.contains(format)) {
            QStringList names;
            for (const QByteArray& f : formats) {
                names << QString::fromLatin1(f);
            }
            return fail(
                QStringLiteral("--screenshot: \"%1\" does not end in a picture format the game writes: "
                               "use .%2")
                    .arg(options->screenshot, names.join(QStringLiteral(", ."))));
        }
        if (const QString why = unwritableFile(options->screenshot); !why.isEmpty()) {
            return fail(
                QStringLiteral("--screenshot: cannot write \"%1\": %2").arg(options->screenshot, why));
        }
    }
    bool delayOk = false;
    const double delay = parser.value(screenshotAfter).toDouble(&delayOk);
    // Written so that NaN fails too.
    if (!delayOk || !(delay >= 0 && delay <= 120)) {
        return fail(QStringLiteral("--screenshot-after: \"%1\" is not a number of seconds from 0 to 120")
                        .arg(parser.value(screenshotAfter)));
    }
    options->screenshotDelayMs = static_cast<int>(delay * 1000);
    options->service = parser.value(service);
    const QUrl serviceUrl(options->service, QUrl::StrictMode);
    if (!serviceUrl.isValid() || (serviceUrl.scheme() != "http" && serviceUrl.scheme() != "https") ||
        serviceUrl.host().isEmpty()) {
        return fail(
            QStringLiteral("--service: \"%1\" is not an http:// or https:// URL with a host (such as %2)")
                .arg(options->service, service.defaultValues().constFirst()));
    }
    options->offline = parser.isSet(offline);
    if (parser.isSet(dataDir)) {
        options->profileRoot = parser.value(dataDir);
        if (options->profileRoot.isEmpty()) {
            return fail(QStringLiteral("--data-dir needs a DIR"));
        }
        if (const QString why = unusableFolder(options->profileRoot); !why.isEmpty()) {
            return fail(QStringLiteral("--data-dir: cannot keep profiles in \"%1\": %2")
                            .arg(options->profileRoot, why));
        }
    }
    if (parser.isSet(open)) {
        options->open = parser.value(open);
        if (!screenNames().contains(options->open)) {
            return fail(QStringLiteral("--open: unknown screen \"%1\": use %2")
                            .arg(options->open, screenNames().join(QStringLiteral(", "))));
        }
    }
    if (parser.isSet(device)) {
        Device::Class cls;
        if (!Device::parse(parser.value(device), &cls)) {
            return fail(
                QStringLiteral("--device: unknown device class \"%1\": use phone, tallphone or tablet")
                    .arg(parser.value(device)));
        }
        options->device = parser.value(device);
    }
    return true;
}

QString Application::missingDisplay(const QString& platformArgument) {
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN) && !defined(Q_OS_ANDROID)
    const QString platform =
        platformArgument.isEmpty() ? qEnvironmentVariable("QT_QPA_PLATFORM") : platformArgument;
    const bool x11 = !qEnvironmentVariableIsEmpty("DISPLAY");
    const bool wayland = !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
    // A list of platforms is tried in turn; each may carry its own options after a colon.
    bool usable = platform.isEmpty() && (x11 || wayland);
    for (const QString& entry : platform.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        const QString name = entry.section(QLatin1Char(':'), 0, 0);
        usable = usable || name != QLatin1String("xcb") || x11;
    }
    if (!usable) {
        return QStringLiteral("no display: set DISPLAY or WAYLAND_DISPLAY, or run with "
                              "QT_QPA_PLATFORM=offscreen (or -platform offscreen) for no window at all");
    }
#else
    Q_UNUSED(platformArgument);
#endif
    return {};
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

QStringList Application::dataDirectories() {
    QStringList dirs;
    const QString fromEnv = qEnvironmentVariable("TARVOLIN_DATA_DIR");
    if (!fromEnv.isEmpty()) {
        dirs << QDir::cleanPath(fromEnv);
    }
    // Beside the executable: share/tarvolin as installed, or the build folder's copy of it.
    dirs << QDir::cleanPath(
        QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral(TARVOLIN_DATA_FROM_BIN)));
    for (const QString& shared : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        dirs << QDir::cleanPath(QDir(shared).filePath(QStringLiteral("tarvolin")));
    }
    dirs.removeDuplicates();
    return dirs;
}

QString Application::locateData(const QString& relativePath) {
    for (const QString& dir : dataDirectories()) {
        const QString path = QDir(dir).filePath(relativePath);
        if (QFileInfo(path).isFile()) {
            return path;
        }
    }
    return {};
}

void Application::registerResources() {
    static bool done = false;
    if (done) {
        return;
    }
    done = true;
    for (const char* font : {"fonts/NotoKufiArabic-Regular.ttf", "fonts/NotoKufiArabic-Bold.ttf"}) {
        const QString path = locateData(QString::fromLatin1(font));
        if (path.isEmpty() || QFontDatabase::addApplicationFont(path) < 0) {
            qWarning(
                "The font %s could not be loaded from %s; the game's letters fall back to a system font.",
                font, qPrintable(dataDirectories().join(QStringLiteral(", "))));
        }
    }
    // The level pictures are drawn when the game is built and packed into one resource file.
    QString pictures = qEnvironmentVariable("TARVOLIN_PICTURES");
    if (pictures.isEmpty()) {
        pictures = locateData(QStringLiteral("tarvolin-pictures.rcc"));
    }
    if (!pictures.isEmpty() && QResource::registerResource(pictures)) {
        return;
    }
    qWarning("The level pictures (tarvolin-pictures.rcc) were not found in %s; levels show without pictures.",
             qPrintable(dataDirectories().join(QStringLiteral(", "))));
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
                         } else if (state != Qt::ApplicationActive && last == Qt::ApplicationActive) {
                             m_delegate.applicationDidEnterBackground();
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
    const auto inGame = [this, title, body = notification.alertBody, map] {
        Platform::shared().banner().titleMessageTime(title, body, 4.0);
        m_delegate.applicationDidReceiveLocalNotification(map);
    };
    if (inFront) {
        inGame();
        return;
    }
    m_desktop->notify(
        title, notification.alertBody,
        [this, map] {
            if (QQuickWindow* front = window()) {
                front->show();
                front->raise();
                front->requestActivate();
            }
            m_delegate.applicationDidReceiveLocalNotification(map);
        },
        inGame);
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
