// How long the game's build takes to draw every level picture: a full build into an empty folder, a
// build that finds every picture up to date in its cache, and a build after one round's scenes changed.
// The target is a full build of the shipped pack in under two minutes on two cores.
#include "Diagnostics.h"
#include "PictureBuilder.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <cstring>
#include <string>

using namespace tarvolin::levels;

namespace {

void usage(FILE* out) {
    std::fputs("Usage: tarvolin_picture_build_bench [OPTIONS]\n"
               "  --content DIR   the content folder (default: the source tree's content/)\n"
               "  --jobs N        pictures drawn at once (default 2, the machine's cores)\n"
               "  --size N        picture side in pixels (default 360, as the game's build)\n"
               "  --target S      seconds a full build may take (default 120)\n",
               out);
}

struct Run {
    BuildSummary summary;
    double seconds = 0;
    bool ok = false;
};

Run build(const BuildOptions& options) {
    Report report;
    QElapsedTimer timer;
    timer.start();
    Run run;
    run.summary = buildPictures(options, report);
    run.seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    run.ok = report.fitToShip();
    for (const Diagnostic& d : report.all())
        std::fprintf(stderr, "%s\n", qPrintable(d.toString()));
    return run;
}

void print(const char* what, const Run& run) {
    std::printf("%-28s %5d pictures, %5d drawn  %7.2f s  %6.2f ms a drawn picture\n", what,
                run.summary.pictures, run.summary.rendered, run.seconds,
                run.summary.rendered > 0 ? run.seconds * 1000.0 / run.summary.rendered : 0.0);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QString content = QStringLiteral(TARVOLIN_CONTENT_DIR);
    int jobs = 2;
    int size = 360;
    double target = 120;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (!std::strcmp(argv[i], "--content") && hasValue)
            content = QString::fromLocal8Bit(argv[++i]);
        else if (!std::strcmp(argv[i], "--jobs") && hasValue)
            jobs = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--size") && hasValue)
            size = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--target") && hasValue)
            target = std::atof(argv[++i]);
        else {
            usage(!std::strcmp(argv[i], "--help") ? stdout : stderr);
            return !std::strcmp(argv[i], "--help") ? 0 : 2;
        }
    }
    QTemporaryDir out;
    if (!out.isValid() || jobs < 1 || size < 16) {
        usage(stderr);
        return 2;
    }
    BuildOptions options;
    options.levelsFile = content + QStringLiteral("/levels/ok.wav");
    options.scenesFile = content + QStringLiteral("/pictures/scenes");
    options.svgDir = content + QStringLiteral("/pictures/svg");
    options.outDir = out.path();
    options.size = size;
    options.jobs = jobs;

    const Run full = build(options);
    print("full build, empty folder", full);
    const Run cached = build(options);
    print("again, all in the cache", cached);

    // One scene changes: a copy of the scene files in which the first picture of the first file gets
    // another background. Only that picture is drawn again.
    QTemporaryDir scenesCopy;
    QDir source(options.scenesFile);
    const QStringList files = source.entryList({QStringLiteral("*.txt")}, QDir::Files, QDir::Name);
    for (const QString& file : files)
        QFile::copy(source.filePath(file), scenesCopy.filePath(file));
    if (!files.isEmpty()) {
        QFile first(scenesCopy.filePath(files.front()));
        if (first.open(QIODevice::ReadOnly)) {
            QString text = QString::fromUtf8(first.readAll());
            first.close();
            QStringList lines = text.split(QLatin1Char('\n'));
            for (QString& line : lines) {
                if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
                    QStringList fields = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
                    if (fields.size() > 2) {
                        fields[1] = QStringLiteral("#fafafa");
                        line = fields.join(QLatin1Char(' '));
                        break;
                    }
                }
            }
            if (first.open(QIODevice::WriteOnly | QIODevice::Truncate))
                first.write(lines.join(QLatin1Char('\n')).toUtf8());
        }
    }
    options.scenesFile = scenesCopy.path();
    const Run changed = build(options);
    print("after one scene changed", changed);

    const bool met = full.ok && cached.ok && changed.ok && full.seconds <= target;
    std::printf("target: a full build in %.0f s on %d jobs: %s\n", target, jobs, met ? "met" : "MISSED");
    return met ? 0 : 1;
}
