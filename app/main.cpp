#include "Application.h"

#include <QApplication>

int main(int argc, char* argv[]) {
    // A QApplication: the charts of the profile are drawn by Qt Charts, which needs one.
    QApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("tarvolin"));
    QGuiApplication::setOrganizationName(QStringLiteral("Tarvolin"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("طارفولين"));
    QGuiApplication::setApplicationVersion(QStringLiteral(TARVOLIN_VERSION));
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);

    Application::Options options;
    int exitCode = 0;
    if (!Application::parseArguments(QGuiApplication::arguments(), &options, &exitCode)) {
        return exitCode;
    }
    Application game(options);
    if (!game.start()) {
        return 1;
    }
    return QGuiApplication::exec();
}
