#include "Application.h"

#include <QApplication>
#include <QIcon>
#include <QTextStream>

int main(int argc, char* argv[]) {
    // Names and version first: --help and --version print them before any application object exists, so that
    // they work without a display.
    QCoreApplication::setApplicationName(QStringLiteral("tarvolin"));
    QCoreApplication::setOrganizationName(QStringLiteral("Tarvolin"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TARVOLIN_VERSION));
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments << QString::fromLocal8Bit(argv[i]);
    }
    Application::Options options;
    int exitCode = 0;
    if (!Application::parseArguments(arguments, &options, &exitCode)) {
        return exitCode;
    }
    // Qt aborts when it cannot reach a display: say what to do instead.
    if (const QString missing = Application::missingDisplay(options.platform); !missing.isEmpty()) {
        QTextStream(stderr) << QCoreApplication::applicationName() << ": " << missing << "\n";
        return 1;
    }

    // A QApplication: the charts of the profile are drawn by Qt Charts, which needs one. It takes Qt's own
    // options out of the command line.
    QApplication app(argc, argv);
    QGuiApplication::setApplicationDisplayName(QStringLiteral("طارفولين"));
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    // The desktop entry's name ties the window to the menu's entry; the icon is the installed theme's, or the
    // one built in.
    QGuiApplication::setDesktopFileName(QStringLiteral("app.tarvolin.Tarvolin"));
    QGuiApplication::setWindowIcon(QIcon::fromTheme(
        QStringLiteral("app.tarvolin.Tarvolin"), QIcon(QStringLiteral(":/icons/app.tarvolin.Tarvolin.svg"))));

    Application game(options);
    if (!game.start()) {
        return 1;
    }
    return QGuiApplication::exec();
}
