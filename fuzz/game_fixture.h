// What the game's fuzzers share: a Qt application without a screen, a folder of their own (removed at exit),
// and the platform layer installed over a settings file in it.
#pragma once

#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QFile>
#include <QGuiApplication>
#include <QString>
#include <QTemporaryDir>
#include <QtGlobal>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace tarvolin::fuzz {

// Logs of bad data are expected by the thousand: they are dropped.
inline void quietMessages(QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        std::abort();
    }
}

class GameFixture {
public:
    GameFixture() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(quietMessages);
        app_ = std::make_unique<QGuiApplication>(argc_, argv_);
        if (!dir_.isValid()) {
            std::abort();
        }
    }

    ~GameFixture() { uninstall(); }

    QString path(const QString& name) const { return dir_.filePath(name); }

    // Puts the bytes in a file of the folder.
    QString write(const QString& name, const QByteArray& bytes) const {
        QFile f(path(name));
        if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate) || f.write(bytes) != bytes.size()) {
            std::abort();
        }
        return f.fileName();
    }

    // Installs the platform layer with these settings; the managers are created afresh when next used.
    void install(const QString& settingsFile) {
        uninstall();
        Platform::Services services;
        services.userDefaults = std::make_unique<UserDefaults>(settingsFile);
        services.homeDirectory = path(QStringLiteral("home"));
        services.localNotifications =
            std::make_unique<LocalNotifications>(path(QStringLiteral("notifications.json")));
        Platform::install(std::move(services));
    }

    // Installs the platform with a settings file of the folder unless it is installed already; for the
    // targets that read no settings of their own.
    void installOnce() {
        if (!Platform::isInstalled()) {
            install(path(QStringLiteral("settings.ini")));
        }
    }

    void uninstall() {
        if (Platform::isInstalled()) {
            SharedInstances::resetAll();
            Platform::uninstall();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private:
    int argc_ = 1;
    char name_[8] = "fuzzer";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> app_;
    QTemporaryDir dir_;
};

} // namespace tarvolin::fuzz
