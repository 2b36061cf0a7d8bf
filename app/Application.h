#pragma once

#include "core/AppDelegate.h"
#include "platform/DesktopNotifier.h"
#include "platform/NotificationDelivery.h"

#include <QString>
#include <QStringList>
#include <memory>

class QQmlApplicationEngine;
class QQuickWindow;

// The game's process: options, the player's profile, the platform services, the window and the launch.
class Application {
public:
    struct Options {
        QString profile = QStringLiteral("default");
        QString profileRoot; // empty: the system's application data folder
        QString screenshot;
        int screenshotDelayMs = 700; // from the first frame to the picture
        QString service;
        QString device;
        bool offline = false;
        QString open;     // rounds, levels or play: the screen to go to from the main screen
        QString platform; // Qt's platform as given by -platform, if it was
    };

    // Parses the command line (the program's name first) before any application object exists; Qt's own
    // options are let through for it. On --help, --version or a bad option prints and returns false with the
    // exit code set. The application's name and version must be set before.
    static bool parseArguments(const QStringList& arguments, Options* options, int* exitCode);

    // Why Qt could not open a window with this platform (the -platform argument, else QT_QPA_PLATFORM):
    // empty when nothing is known against it.
    static QString missingDisplay(const QString& platformArgument);

    explicit Application(Options options);
    ~Application();

    // Installs the platform, registers the resources, runs the launch sequence and shows the window.
    bool start();
    QQuickWindow* window() const;
    QQmlApplicationEngine* engine() const { return m_engine.get(); }
    AppDelegate& appDelegate() { return m_delegate; }
    QString profileFolder() const;

    // Loads the game's fonts and the built pictures; safe to call more than once.
    static void registerResources();
    // Where the game's data (the level pictures, the fonts) is looked for, in order: $TARVOLIN_DATA_DIR,
    // share/tarvolin beside the executable (installed, or in the build folder), then the XDG data folders.
    static QStringList dataDirectories();
    // The first existing file at relativePath in those folders, or an empty string.
    static QString locateData(const QString& relativePath);

private:
    void scheduleScreenshot();
    // A due notification: a banner in the game when its window is in front, a desktop notification otherwise
    // (a click brings the game forward and hands it over); the banner alone when the desktop has no service.
    void deliver(const LocalNotification& notification);
    // Goes from the main screen to the rounds, the current round's levels or the current level, as taps
    // would.
    void openScreen(const QString& which);

    Options m_options;
    AppDelegate m_delegate;
    std::unique_ptr<QQmlApplicationEngine> m_engine;
    std::unique_ptr<NotificationDelivery> m_delivery;
    std::unique_ptr<DesktopNotifier> m_desktop;
};
