#include "PictureBuilder.h"

#include "PackScanner.h"
#include "PictureDescriptions.h"
#include "SceneFile.h"
#include "SceneRenderer.h"

#include "core/LevelsInfoReader.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QImageWriter>
#include <QSaveFile>
#include <QSet>

#include <atomic>
#include <cmath>
#include <mutex>
#include <thread>

namespace tarvolin::levels {

namespace {

// Part of every picture's cache key: raise it when the drawing changes, so that old pictures are redrawn.
constexpr int kRendererVersion = 3;
const QString kCacheFile = QStringLiteral(".pictures-cache");
const QString kDescriptionsFile = QStringLiteral("descriptions.tsv");

bool readText(const QString& path, QString& text, Report& report) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        report.error(path, 0, QStringLiteral("cannot read the file: %1").arg(file.errorString()));
        return false;
    }
    text = QString::fromUtf8(file.readAll());
    return true;
}

bool writeIfChanged(const QString& path, const QByteArray& content) {
    QFile current(path);
    if (current.open(QIODevice::ReadOnly) && current.readAll() == content)
        return true;
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
}

QHash<QString, QString> readCache(const QString& path) {
    QHash<QString, QString> cache;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return cache;
    for (const QByteArray& line : file.readAll().split('\n')) {
        const QList<QByteArray> parts = line.split(' ');
        if (parts.size() == 2)
            cache.insert(QString::fromUtf8(parts[0]), QString::fromUtf8(parts[1]));
    }
    return cache;
}

struct Job {
    const Scene* scene = nullptr;
    QString key;
    QString path;
};

} // namespace

BuildSummary buildPictures(const BuildOptions& options, Report& report) {
    BuildSummary summary;
    QString levelsText;
    std::vector<Scene> scenes;
    if (!readText(options.levelsFile, levelsText, report) || !loadScenes(options.scenesFile, scenes, report))
        return summary;
    if (!report.fitToShip())
        return summary;
    QHash<QString, const Scene*> sceneOf;
    for (const Scene& scene : scenes)
        sceneOf.insert(scene.pictureName, &scene);

    // The image names of the levels, in file order, as the game reads them.
    QStringList names;
    QSet<QString> seen;
    for (const Pack& pack : scanPack(levelsText).packs) {
        for (const Record& record : pack.records) {
            const LevelInfoPtr level = LevelsInfoReader::levelWithString(record.text);
            if (!level || level->imageName.isEmpty() || seen.contains(level->imageName))
                continue;
            if (!isValidPictureStem(level->imageName)) {
                report.error(options.levelsFile, record.line,
                             QStringLiteral("image=%1 cannot name a picture file").arg(level->imageName));
                continue;
            }
            seen.insert(level->imageName);
            names << level->imageName;
        }
    }

    if (!QDir().mkpath(options.outDir)) {
        report.error(options.outDir, 0, QStringLiteral("cannot create the folder"));
        return summary;
    }
    QDir out(options.outDir);
    SymbolFolder symbols(options.svgDir);
    const QHash<QString, QString> oldCache = readCache(out.filePath(kCacheFile));
    QHash<QString, QString> cache;
    QHash<QString, QByteArray> symbolHashes;
    std::vector<Job> jobs;
    QStringList files;
    // What a screen reader says for each picture: "NAME_k<TAB>TEXT" lines, packed beside the pictures.
    const SymbolKeys keys = SymbolKeys::load(QDir(options.svgDir).filePath(QStringLiteral("symbols.tsv")));
    const ArabicNames arabic =
        ArabicNames::load(QDir(options.svgDir).filePath(QStringLiteral("symbols-ar.tsv")));
    QByteArray descriptions;

    for (const QString& name : names) {
        for (int k = 1; k <= kPicturesPerLevel; ++k) {
            const QString pictureName = QStringLiteral("%1_%2").arg(name).arg(k);
            const Scene* scene = sceneOf.value(pictureName);
            if (!scene) {
                report.error(options.scenesFile, 0,
                             QStringLiteral("missing picture: no line for %1").arg(pictureName));
                continue;
            }
            QCryptographicHash key(QCryptographicHash::Sha1);
            key.addData(QStringLiteral("%1 %2 %3 %4")
                            .arg(kRendererVersion)
                            .arg(options.size)
                            .arg(kJpegQuality)
                            .arg(scene->fingerprint())
                            .toUtf8());
            for (const SceneSymbol& symbol : scene->symbols) {
                if (!symbolHashes.contains(symbol.stem)) {
                    const QByteArray data = symbols.read(symbol.stem);
                    if (data.isEmpty())
                        report.error(scene->file, scene->line,
                                     QStringLiteral("missing picture: %1 uses %2, which cannot be read")
                                         .arg(pictureName, symbols.pathOf(symbol.stem)));
                    symbolHashes.insert(symbol.stem,
                                        QCryptographicHash::hash(data, QCryptographicHash::Sha1));
                }
                key.addData(symbolHashes.value(symbol.stem));
            }
            descriptions +=
                (pictureName + QLatin1Char('\t') + describeScene(*scene, keys, arabic) + QLatin1Char('\n'))
                    .toUtf8();
            const QString fileName = pictureName + QLatin1String(".jpg");
            const QString keyText = QString::fromLatin1(key.result().toHex());
            cache.insert(fileName, keyText);
            files << fileName;
            if (oldCache.value(fileName) != keyText || !QFileInfo::exists(out.filePath(fileName)))
                jobs.push_back({scene, keyText, out.filePath(fileName)});
        }
    }
    if (!report.fitToShip())
        return summary;

    // Each symbol is drawn once, as large as its largest use in the pictures to draw, and then scaled.
    for (const Job& job : jobs) {
        const std::vector<Placement> places = job.scene->layout();
        for (size_t i = 0; i < job.scene->symbols.size(); ++i)
            symbols.needSide(job.scene->symbols[i].stem,
                             static_cast<int>(std::ceil(places[i].size * options.size)));
    }

    // Draw on every core: each job reads its own symbol files and owns its image.
    std::atomic<size_t> next{0};
    std::mutex reportMutex;
    const auto work = [&] {
        for (size_t i = next++; i < jobs.size(); i = next++) {
            QString error;
            const QImage picture = renderScene(*jobs[i].scene, symbols, options.size, &error);
            QImageWriter writer(jobs[i].path, "jpeg");
            writer.setQuality(kJpegQuality);
            writer.setOptimizedWrite(true);
            if (picture.isNull() || !writer.write(picture)) {
                const std::lock_guard lock(reportMutex);
                report.error(
                    jobs[i].scene->file, jobs[i].scene->line,
                    picture.isNull()
                        ? error
                        : QStringLiteral("cannot write %1: %2").arg(jobs[i].path, writer.errorString()));
                jobs[i].key.clear();
            }
        }
    };
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    const size_t threads =
        std::min<size_t>(jobs.size(), options.jobs > 0 ? static_cast<size_t>(options.jobs) : cores);
    std::vector<std::thread> pool;
    for (size_t t = 1; t < threads; ++t)
        pool.emplace_back(work);
    work();
    for (std::thread& t : pool)
        t.join();
    for (const Job& job : jobs) {
        if (job.key.isEmpty())
            cache.remove(QFileInfo(job.path).fileName());
    }

    // Pictures that no level needs any more leave the folder, so that the resource file holds only these.
    const QSet<QString> wanted(files.cbegin(), files.cend());
    for (auto it = oldCache.cbegin(); it != oldCache.cend(); ++it) {
        if (!cache.contains(it.key()) && !wanted.contains(it.key()) && out.remove(it.key()))
            ++summary.removed;
    }
    QByteArray cacheText;
    for (const QString& file : files) {
        if (cache.contains(file))
            cacheText += (file + QLatin1Char(' ') + cache.value(file) + QLatin1Char('\n')).toUtf8();
    }
    writeIfChanged(out.filePath(kCacheFile), cacheText);
    if (!writeIfChanged(out.filePath(kDescriptionsFile), descriptions))
        report.error(out.filePath(kDescriptionsFile), 0,
                     QStringLiteral("cannot write the pictures' descriptions"));

    if (!options.qrcFile.isEmpty()) {
        QByteArray qrc = "<!DOCTYPE RCC>\n<RCC version=\"1.0\">\n<qresource prefix=\"/pictures\">\n";
        for (const QString& file : files)
            qrc += QStringLiteral("  <file alias=\"%1\">%2</file>\n")
                       .arg(file, QFileInfo(out.filePath(file)).absoluteFilePath())
                       .toUtf8();
        qrc += QStringLiteral("  <file alias=\"%1\">%2</file>\n")
                   .arg(kDescriptionsFile, QFileInfo(out.filePath(kDescriptionsFile)).absoluteFilePath())
                   .toUtf8();
        qrc += "</qresource>\n</RCC>\n";
        if (!writeIfChanged(options.qrcFile, qrc))
            report.error(options.qrcFile, 0, QStringLiteral("cannot write the resource listing"));
    }
    summary.pictures = static_cast<int>(files.size());
    summary.rendered = static_cast<int>(jobs.size());
    return summary;
}

} // namespace tarvolin::levels
