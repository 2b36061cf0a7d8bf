// tarvolin-levels: checks the game's pack file and builds its pictures.

#include "Diagnostics.h"
#include "PackChecker.h"
#include "PictureBuilder.h"
#include "SceneRenderer.h"

#include <QFileInfo>
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

Options:
  -h, --help     show this help
  -V, --version  show the version

Run "tarvolin-levels COMMAND --help" for a command's options. A value follows its option as the next
argument or after an equals sign (--size 512 or --size=512).

Exit status: 0 on success, 1 when the pack holds an error or the pictures cannot be built, 2 when the
command is used wrongly.
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
  --rounds N         the game has N rounds (1 to 10000): the file needs at least N packs
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
  --out DIR      where the pictures go (made when missing)
  --size N       width and height of a picture in pixels, 1 to 4096 (default: 360)
  --qrc FILE     also write a Qt resource listing of the pictures, under the prefix /pictures
  --jobs N       pictures drawn at once, 1 to 256 (default: one per core)
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

std::optional<int> numberFrom1(const QString& text, int max) {
    bool ok = false;
    const int value = text.toInt(&ok);
    return ok && value > 0 && value <= max ? std::optional<int>(value) : std::nullopt;
}

// Why PATH is not the kind of thing an option needs; empty when it is.
QString notAFile(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("\"%1\" does not exist").arg(path);
    if (!info.isFile())
        return QStringLiteral("\"%1\" is not a file").arg(path);
    return info.isReadable() ? QString() : QStringLiteral("\"%1\" cannot be read").arg(path);
}

QString notAFolder(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("\"%1\" does not exist").arg(path);
    return info.isDir() ? QString() : QStringLiteral("\"%1\" is not a folder").arg(path);
}

// A folder the tool writes into, made when missing: the nearest folder that exists must allow that.
QString notAnOutputFolder(const QString& path) {
    QString nearest = QFileInfo(path).absoluteFilePath();
    while (!QFileInfo::exists(nearest) && QFileInfo(nearest).path() != nearest)
        nearest = QFileInfo(nearest).path();
    const QFileInfo existing(nearest);
    if (!existing.isDir())
        return QStringLiteral("\"%1\" is not a folder").arg(existing.filePath());
    return existing.isWritable() ? QString()
                                 : QStringLiteral("\"%1\" is not writable").arg(existing.filePath());
}

QString notAnOutputFile(const QString& path) {
    const QFileInfo info(path);
    if (info.isDir())
        return QStringLiteral("\"%1\" is a folder").arg(path);
    const QFileInfo folder(info.absolutePath());
    if (!folder.isDir())
        return QStringLiteral("the folder \"%1\" does not exist").arg(folder.filePath());
    return folder.isWritable() ? QString()
                               : QStringLiteral("the folder \"%1\" is not writable").arg(folder.filePath());
}

// A hunspell dictionary named by its .dic, its .aff or their common stem.
QString notADictionary(const QString& path) {
    QString stem = path;
    if (stem.endsWith(QLatin1String(".dic")) || stem.endsWith(QLatin1String(".aff")))
        stem.chop(4);
    for (const QString& file : {stem + QLatin1String(".dic"), stem + QLatin1String(".aff")}) {
        if (const QString why = notAFile(file); !why.isEmpty())
            return why;
    }
    return {};
}

// The command's arguments as OPTION VALUE pairs and the rest, "--option=value" split in two. Returns false
// with *exitCode set when it has printed help or an error.
struct Argument {
    QString option; // empty for an argument that is not an option
    QString value;
};

bool splitArguments(const QStringList& args, const QStringList& valued, const char* help,
                    QList<Argument>* out, int* exitCode) {
    for (qsizetype i = 0; i < args.size(); ++i) {
        QString arg = args[i];
        if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(help, stdout);
            *exitCode = 0;
            return false;
        }
        if (!arg.startsWith(QLatin1Char('-')) || arg == QLatin1String("-")) {
            out->append({QString(), arg});
            continue;
        }
        std::optional<QString> value;
        if (const qsizetype eq = arg.indexOf(QLatin1Char('=')); eq > 0) {
            value = arg.mid(eq + 1);
            arg.truncate(eq);
        }
        if (!valued.contains(arg)) {
            *exitCode = usage(QStringLiteral("unknown option %1").arg(arg), help);
            return false;
        }
        if (!value) {
            if (i + 1 >= args.size()) {
                *exitCode = usage(QStringLiteral("%1 needs a value").arg(arg), help);
                return false;
            }
            value = args[++i];
        }
        if (value->isEmpty()) {
            *exitCode = usage(QStringLiteral("%1 needs a value").arg(arg), help);
            return false;
        }
        out->append({arg, *value});
    }
    return true;
}

// Reads the options of check; returns an exit status when the command stops here.
std::optional<int> parseCheck(const QStringList& args, CheckOptions* options) {
    QList<Argument> arguments;
    int exitCode = 0;
    const QStringList valued{"--pictures", "--exceptions", "--dictionary", "--rounds"};
    if (!splitArguments(args, valued, kCheckHelp, &arguments, &exitCode))
        return exitCode;
    for (const Argument& a : std::as_const(arguments)) {
        QString why;
        if (a.option.isEmpty()) {
            if (!options->packFile.isEmpty())
                return usage(QStringLiteral("check takes one FILE, not also \"%1\"").arg(a.value),
                             kCheckHelp);
            options->packFile = a.value;
            why = notAFile(a.value);
        } else if (a.option == QLatin1String("--pictures")) {
            options->picturesDir = a.value;
            why = notAFolder(a.value);
        } else if (a.option == QLatin1String("--exceptions")) {
            options->exceptionsFile = a.value;
            why = notAFile(a.value);
        } else if (a.option == QLatin1String("--dictionary")) {
            options->dictionary = a.value;
            why = notADictionary(a.value);
        } else if (const std::optional<int> n = numberFrom1(a.value, 10000)) {
            options->minPacks = *n;
        } else {
            why = QStringLiteral("\"%1\" is not a whole number from 1 to 10000").arg(a.value);
        }
        if (!why.isEmpty())
            return usage(
                QStringLiteral("%1: %2").arg(a.option.isEmpty() ? QStringLiteral("FILE") : a.option, why),
                kCheckHelp);
    }
    if (options->packFile.isEmpty())
        return usage(QStringLiteral("check needs a FILE"), kCheckHelp);
    return std::nullopt;
}

int runCheck(const CheckOptions& options) {
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

std::optional<int> parseBuild(const QStringList& args, BuildOptions* options) {
    QList<Argument> arguments;
    int exitCode = 0;
    const QStringList valued{"--levels", "--scenes", "--svg", "--out", "--qrc", "--size", "--jobs"};
    if (!splitArguments(args, valued, kBuildHelp, &arguments, &exitCode))
        return exitCode;
    for (const Argument& a : std::as_const(arguments)) {
        QString why;
        if (a.option.isEmpty()) {
            return usage(QStringLiteral("unexpected argument \"%1\": build takes only options").arg(a.value),
                         kBuildHelp);
        } else if (a.option == QLatin1String("--levels")) {
            options->levelsFile = a.value;
            why = notAFile(a.value);
        } else if (a.option == QLatin1String("--scenes")) {
            options->scenesFile = a.value;
            if (!QFileInfo::exists(a.value))
                why = QStringLiteral("\"%1\" does not exist").arg(a.value);
        } else if (a.option == QLatin1String("--svg")) {
            options->svgDir = a.value;
            why = notAFolder(a.value);
        } else if (a.option == QLatin1String("--out")) {
            options->outDir = a.value;
            why = notAnOutputFolder(a.value);
        } else if (a.option == QLatin1String("--qrc")) {
            options->qrcFile = a.value;
            why = notAnOutputFile(a.value);
        } else {
            const bool size = a.option == QLatin1String("--size");
            const int max = size ? 4096 : 256;
            if (const std::optional<int> n = numberFrom1(a.value, max))
                (size ? options->size : options->jobs) = *n;
            else
                why = QStringLiteral("\"%1\" is not a whole number from 1 to %2").arg(a.value).arg(max);
        }
        if (!why.isEmpty())
            return usage(QStringLiteral("%1: %2").arg(a.option, why), kBuildHelp);
    }
    if (options->levelsFile.isEmpty() || options->scenesFile.isEmpty() || options->svgDir.isEmpty() ||
        options->outDir.isEmpty())
        return usage(QStringLiteral("build needs --levels, --scenes, --svg and --out"), kBuildHelp);
    return std::nullopt;
}

int runBuild(const BuildOptions& options) {
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
    // The command line is read before the application object exists, so that help, the version and usage
    // errors need nothing from Qt's platform.
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args << QString::fromLocal8Bit(argv[i]);
    if (args.isEmpty())
        return usage(QStringLiteral("no command"), kMainHelp);
    const QString command = args.takeFirst();
    if (command == QLatin1String("-h") || command == QLatin1String("--help") ||
        command == QLatin1String("help")) {
        std::fputs(kMainHelp, stdout);
        return 0;
    }
    if (command == QLatin1String("-V") || command == QLatin1String("--version")) {
        std::fputs("tarvolin-levels " TARVOLIN_VERSION "\n", stdout);
        return 0;
    }
    CheckOptions check;
    BuildOptions build;
    std::optional<int> stop;
    if (command == QLatin1String("check"))
        stop = parseCheck(args, &check);
    else if (command == QLatin1String("build"))
        stop = parseBuild(args, &build);
    else if (command.startsWith(QLatin1Char('-')))
        return usage(QStringLiteral("unknown option %1 (a COMMAND comes first)").arg(command), kMainHelp);
    else
        return usage(QStringLiteral("unknown command %1: use check or build").arg(command), kMainHelp);
    if (stop)
        return *stop;

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
    return command == QLatin1String("check") ? runCheck(check) : runBuild(build);
}
