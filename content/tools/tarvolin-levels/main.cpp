// tarvolin-levels: checks the game's pack file and builds its pictures.

#include "Diagnostics.h"
#include "PackChecker.h"
#include "PictureBuilder.h"
#include "SceneRenderer.h"

#include <QGuiApplication>
#include <QImageWriter>
#include <QTextStream>

#include <cstdio>
#include <optional>

using namespace tarvolin::levels;

namespace {

constexpr int kExitUsage = 2;

const char* const kMainHelp = R"(Usage: tarvolin-levels COMMAND [OPTIONS]

Checks the game's pack file and builds the pictures of its levels.

Commands:
  check FILE   report everything in a pack file that would break or spoil the game
  build        draw the four pictures of every level into JPEG files

Run "tarvolin-levels COMMAND --help" for a command's options.
)";

const char* const kCheckHelp = R"(Usage: tarvolin-levels check FILE [OPTIONS]

Reports, as FILE:LINE: error|warning: message, everything in the pack file FILE that would break or
spoil the game: records the game cannot read (no newline, a solution of no letter or of more than 12),
"level=" or "[pack=" inside a value, a tray pool under twelve letters, a pack under 25 levels, a missing
or repeated picture name, a missing picture or symbol, a repeated answer, a character outside the
game's alphabet, and answers the Arabic hunspell dictionary does not know (warnings, silenced by the
reviewed exception list).

Exit status: 0 when the file is fit to ship (warnings alone allow that), 1 when it holds an error,
2 when the command is used wrongly.

Options:
  --pictures DIR     folder of scenes/ (or scenes.txt) and svg/ (default: ../pictures beside FILE's
                     folder)
  --exceptions FILE  reviewed words unknown to the dictionary, one a line: WORD  # why
                     (default: hunspell-exceptions.txt beside FILE, if present)
  --dictionary PATH  hunspell dictionary, .dic/.aff or their stem (default: /usr/share/hunspell/ar)
  --rounds N         the game has N rounds: the file needs at least N packs
  -h, --help         show this help
)";

const char* const kBuildHelp =
    R"(Usage: tarvolin-levels build --levels FILE --scenes FILE|DIR --svg DIR --out DIR [OPTIONS]

Draws NAME_1.jpg to NAME_4.jpg for every level of the pack file, NAME being its image=, from the lines
of the scene files and the symbols' SVG files. Pictures whose scene and symbols did not change since the
last build into the same folder are kept; pictures no level needs any more are removed.

Options:
  --levels FILE  the pack file
  --scenes PATH  a scene file, or a folder of them (content/pictures/scenes)
  --svg DIR      the folder of the symbols' SVG files
  --out DIR      where the pictures go
  --size N       width and height of a picture in pixels (default: 360)
  --qrc FILE     also write a Qt resource listing of the pictures, under the prefix /pictures
  --jobs N       pictures drawn at once (default: one per core)
  -h, --help     show this help
)";

void print(FILE* stream, const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stream);
}

int usage(const QString& message, const char* help) {
    print(stderr, QStringLiteral("tarvolin-levels: %1\n\n").arg(message));
    std::fputs(help, stderr);
    return kExitUsage;
}

void printReport(const Report& report) {
    for (const Diagnostic& d : report.sorted())
        print(stdout, d.toString() + QLatin1Char('\n'));
}

std::optional<int> positiveNumber(const QString& text) {
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok && value > 0 ? std::optional<int>(value) : std::nullopt;
}

int runCheck(const QStringList& args) {
    CheckOptions options;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(kCheckHelp, stdout);
            return 0;
        }
        const bool takesValue = arg == QLatin1String("--pictures") || arg == QLatin1String("--exceptions") ||
                                arg == QLatin1String("--dictionary") || arg == QLatin1String("--rounds");
        if (takesValue) {
            if (i + 1 >= args.size())
                return usage(QStringLiteral("%1 needs a value").arg(arg), kCheckHelp);
            const QString value = args[++i];
            if (arg == QLatin1String("--pictures"))
                options.picturesDir = value;
            else if (arg == QLatin1String("--exceptions"))
                options.exceptionsFile = value;
            else if (arg == QLatin1String("--dictionary"))
                options.dictionary = value;
            else if (const std::optional<int> n = positiveNumber(value))
                options.minPacks = *n;
            else
                return usage(QStringLiteral("--rounds needs a positive number"), kCheckHelp);
        } else if (arg.startsWith(QLatin1Char('-'))) {
            return usage(QStringLiteral("unknown option %1").arg(arg), kCheckHelp);
        } else if (options.packFile.isEmpty()) {
            options.packFile = arg;
        } else {
            return usage(QStringLiteral("check takes one FILE"), kCheckHelp);
        }
    }
    if (options.packFile.isEmpty())
        return usage(QStringLiteral("check needs a FILE"), kCheckHelp);
    Report report;
    const CheckSummary summary = checkPack(options, report);
    printReport(report);
    print(stdout, QStringLiteral("%1: %2 packs, %3 levels: %4 errors, %5 warnings\n")
                      .arg(options.packFile)
                      .arg(summary.packs)
                      .arg(summary.levels)
                      .arg(report.errorCount())
                      .arg(report.warningCount()));
    return report.fitToShip() ? 0 : 1;
}

int runBuild(const QStringList& args) {
    BuildOptions options;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args[i];
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(kBuildHelp, stdout);
            return 0;
        }
        if (!arg.startsWith(QLatin1String("--")))
            return usage(QStringLiteral("unexpected argument %1").arg(arg), kBuildHelp);
        if (i + 1 >= args.size())
            return usage(QStringLiteral("%1 needs a value").arg(arg), kBuildHelp);
        const QString value = args[++i];
        if (arg == QLatin1String("--levels")) {
            options.levelsFile = value;
        } else if (arg == QLatin1String("--scenes")) {
            options.scenesFile = value;
        } else if (arg == QLatin1String("--svg")) {
            options.svgDir = value;
        } else if (arg == QLatin1String("--out")) {
            options.outDir = value;
        } else if (arg == QLatin1String("--qrc")) {
            options.qrcFile = value;
        } else if (arg == QLatin1String("--size") || arg == QLatin1String("--jobs")) {
            const std::optional<int> n = positiveNumber(value);
            if (!n || (arg == QLatin1String("--size") && *n > 4096))
                return usage(
                    QStringLiteral("%1 needs a number from 1%2")
                        .arg(arg, arg == QLatin1String("--size") ? QStringLiteral(" to 4096") : QString()),
                    kBuildHelp);
            (arg == QLatin1String("--size") ? options.size : options.jobs) = *n;
        } else {
            return usage(QStringLiteral("unknown option %1").arg(arg), kBuildHelp);
        }
    }
    if (options.levelsFile.isEmpty() || options.scenesFile.isEmpty() || options.svgDir.isEmpty() ||
        options.outDir.isEmpty())
        return usage(QStringLiteral("build needs --levels, --scenes, --svg and --out"), kBuildHelp);
    if (!QImageWriter::supportedImageFormats().contains("jpeg")) {
        print(stderr, QStringLiteral("tarvolin-levels: this Qt cannot write JPEG files (the qjpeg plugin is "
                                     "missing)\n"));
        return 1;
    }
    Report report;
    const BuildSummary summary = buildPictures(options, report);
    printReport(report);
    if (!report.fitToShip())
        return 1;
    print(stdout, QStringLiteral("%1 pictures in %2: %3 drawn, %4 up to date, %5 removed\n")
                      .arg(summary.pictures)
                      .arg(options.outDir)
                      .arg(summary.rendered)
                      .arg(summary.pictures - summary.rendered)
                      .arg(summary.removed));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    // The pictures are drawn off screen; no display is needed.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The off-screen platform's note about a missing XDG_RUNTIME_DIR says nothing about the content.
    static const QtMessageHandler defaultHandler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext& context, const QString& message) {
        if (!(type == QtWarningMsg && message.startsWith(QLatin1String("QStandardPaths: "))))
            defaultHandler(type, context, message);
    });
    QGuiApplication app(argc, argv);
    QStringList args = QCoreApplication::arguments();
    args.removeFirst();
    if (args.isEmpty())
        return usage(QStringLiteral("no command"), kMainHelp);
    const QString command = args.takeFirst();
    if (command == QLatin1String("-h") || command == QLatin1String("--help") ||
        command == QLatin1String("help")) {
        std::fputs(kMainHelp, stdout);
        return 0;
    }
    if (command == QLatin1String("check"))
        return runCheck(args);
    if (command == QLatin1String("build"))
        return runBuild(args);
    return usage(QStringLiteral("unknown command %1").arg(command), kMainHelp);
}
