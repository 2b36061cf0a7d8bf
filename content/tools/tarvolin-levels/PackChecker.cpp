#include "PackChecker.h"

#include "Alphabet.h"
#include "PackScanner.h"
#include "SceneFile.h"
#include "SceneRenderer.h"
#include "SceneRules.h"

#include "core/LevelsInfoReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <map>

namespace tarvolin::levels {

namespace {

QString firstForeignCharacter(const QString& letters, bool blanksAllowed) {
    for (QChar c : letters) {
        if (!isGameLetter(c) && !(blanksAllowed && c == QChar(kWordSeparator)))
            return describeCharacter(c);
    }
    return {};
}

struct ExceptionEntry {
    QString word;
    int line = 0;
    bool used = false;
};

struct ExceptionList {
    QString file;
    std::vector<ExceptionEntry> entries;

    ExceptionEntry* find(const QString& word) {
        for (ExceptionEntry& e : entries) {
            if (e.word == word)
                return &e;
        }
        return nullptr;
    }
};

// "WORD  # why it is right": one reviewed word a line; a line that starts with '#' is a comment.
ExceptionList readExceptions(const QString& path, Report& report) {
    ExceptionList list;
    list.file = path;
    QString text;
    if (!readUtf8(path, text, report))
        return list;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const int lineNumber = static_cast<int>(i) + 1;
        const QString line = lines[i].trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const qsizetype hash = line.indexOf(QLatin1Char('#'));
        const QString word = (hash < 0 ? line : line.left(hash)).trimmed();
        const QString reason = hash < 0 ? QString() : line.mid(hash + 1).trimmed();
        if (word.contains(QLatin1Char(' ')) || word.contains(QLatin1Char('\t'))) {
            report.error(path, lineNumber, QStringLiteral("one word a line: '%1' is several").arg(word));
            continue;
        }
        if (reason.isEmpty())
            report.warning(
                path, lineNumber,
                QStringLiteral("'%1' has no reason: write after '#' why the word is right").arg(word));
        list.entries.push_back({word, lineNumber, false});
    }
    return list;
}

// Where a key was last given in a record, and on how many lines.
struct FieldLines {
    int line = 0;
    int count = 0;
};

QString describeInvalidRecord(const Record& record) {
    if (!record.text.contains(QLatin1Char('\n')))
        return QStringLiteral("the level has no newline after its solution line, and the game cannot read it "
                              "(end the file with a newline)");
    const QString solution = record.lines.front().text;
    const QString letters = QString(solution).remove(QChar(kWordSeparator));
    if (letters.isEmpty())
        return QStringLiteral("the level has no solution: write it after \"level=\" on the same line");
    return QStringLiteral(
               "the solution '%1' has %2 letters, and a tray holds %3: the game cannot read the level")
        .arg(solution)
        .arg(letters.size())
        .arg(kTraySize);
}

class Checker {
public:
    Checker(const CheckOptions& options, Report& report) : m_options(options), m_report(report) {}

    CheckSummary run() {
        const QString& file = m_options.packFile;
        QString text;
        if (!readUtf8(file, text, m_report))
            return {};
        loadPictures();
        loadSpelling();

        const PackScan scan = scanPack(text);
        if (!scan.hasPack)
            m_report.error(file, 0,
                           QStringLiteral("no \"[pack=\" line: the game finds no level in the file"));
        for (int line : scan.recordsBeforeFirstPack)
            m_report.warning(file, line,
                             QStringLiteral("a level before the first \"[pack=\" line: the game "
                                            "ignores it"));
        for (int line : scan.droppedPacks)
            m_report.warning(file, line,
                             QStringLiteral("a \"[pack=\" with neither a newline nor \"]\" after it: "
                                            "the game drops it"));
        for (const MisplacedSeparator& m : scan.misplaced)
            m_report.error(file, m.line,
                           QStringLiteral("\"%1\" inside a value: the game starts a new %2 here, as it finds "
                                          "\"%1\" wherever it stands")
                               .arg(m.separator, m.separator == kLevelSeparator ? QStringLiteral("level")
                                                                                : QStringLiteral("pack")));
        if (m_options.minPacks > 0 && static_cast<int>(scan.packs.size()) < m_options.minPacks)
            m_report.error(file, 0,
                           QStringLiteral("%1 packs, and the game's %2 rounds need one pack each")
                               .arg(scan.packs.size())
                               .arg(m_options.minPacks));

        CheckSummary summary;
        summary.packs = static_cast<int>(scan.packs.size());
        for (size_t p = 0; p < scan.packs.size(); ++p) {
            const Pack& pack = scan.packs[p];
            if (static_cast<int>(pack.records.size()) < kMinLevelsPerPack)
                m_report.error(file, pack.line,
                               QStringLiteral("the pack has %1 levels, and a round needs at least %2")
                                   .arg(pack.records.size())
                                   .arg(kMinLevelsPerPack));
            std::vector<int> weights;
            std::vector<int> lines;
            for (size_t r = 0; r < pack.records.size(); ++r) {
                const int weight = checkRecord(pack.records[r], p == 0 && r == 0);
                if (weight > 0) {
                    weights.push_back(weight);
                    lines.push_back(pack.records[r].line);
                }
            }
            for (const OrderProblem& problem : orderProblems(weights))
                m_report.error(file, lines[static_cast<size_t>(problem.index)], problem.why);
            summary.levels += static_cast<int>(pack.records.size());
        }
        checkScenes();
        checkVariety();
        checkExceptions();
        return summary;
    }

private:
    void loadPictures() {
        const QString dir =
            m_options.picturesDir.isEmpty() ? defaultPicturesDir(m_options.packFile) : m_options.picturesDir;
        m_symbols = std::make_unique<SymbolFolder>(QDir(dir).filePath(QStringLiteral("svg")));
        // The scenes are the *.txt files of scenes/, or the one file scenes.txt.
        QString scenes = QDir(dir).filePath(QStringLiteral("scenes"));
        if (!QFileInfo(scenes).isDir())
            scenes = QDir(dir).filePath(QStringLiteral("scenes.txt"));
        if (!QFileInfo::exists(scenes)) {
            m_report.error(
                m_options.packFile, 0,
                QStringLiteral("no pictures: %1 has neither scenes/ nor scenes.txt (--pictures names "
                               "the folder)")
                    .arg(dir));
            return;
        }
        if (!loadScenes(scenes, m_scenes, m_report))
            return;
        m_haveScenes = true;
        for (const Scene& scene : m_scenes)
            m_scenesByName[scene.name].push_back(&scene);
    }

    void loadSpelling() {
        QString error;
        m_spelling = SpellChecker::open(m_options.dictionary, &error);
        if (!m_spelling)
            m_report.error(m_options.packFile, 0,
                           QStringLiteral("cannot check the answers' spelling: ") + error);
        QString exceptions = m_options.exceptionsFile;
        if (exceptions.isEmpty()) {
            const QString beside =
                QFileInfo(m_options.packFile).dir().filePath(QStringLiteral("hunspell-exceptions.txt"));
            if (QFileInfo(beside).isFile())
                exceptions = beside;
        }
        if (!exceptions.isEmpty())
            m_exceptions = readExceptions(exceptions, m_report);
    }

    // Checks one level; its weight (answerWeight), or 0 when the game cannot read it.
    int checkRecord(const Record& record, bool firstLevelOfGame) {
        const QString& file = m_options.packFile;
        const LevelInfoPtr level = LevelsInfoReader::levelWithString(record.text);
        if (!level) {
            m_report.error(file, record.line, describeInvalidRecord(record));
            return 0;
        }
        std::map<QString, FieldLines> fields;
        for (size_t i = 1; i < record.lines.size(); ++i) {
            const RecordLine& line = record.lines[i];
            const QString key = keyOfLine(line.text);
            if (key.isEmpty()) {
                const bool comment = line.text.startsWith(QLatin1Char('#'));
                if (!line.text.isEmpty() && !comment && line.text != QLatin1String("]"))
                    m_report.warning(file, line.line,
                                     QStringLiteral("'%1' is no field of a level: the game ignores the line")
                                         .arg(line.text.left(40)));
                continue;
            }
            FieldLines& seen = fields[key];
            if (seen.count > 0 && key != QLatin1String("copyright_photo"))
                m_report.warning(file, line.line,
                                 QStringLiteral("%1 again (first at line %2): the game keeps this later line")
                                     .arg(key)
                                     .arg(seen.line));
            seen.line = line.line;
            ++seen.count;
        }
        const auto lineOf = [&](const char* key) {
            const auto it = fields.find(QString::fromLatin1(key));
            return it == fields.end() ? record.line : it->second.line;
        };

        checkAnswer(*level, record.line, firstLevelOfGame);
        checkTray(*level,
                  fields.count(QStringLiteral("other_letters=")) ? lineOf("other_letters=") : record.line);
        checkImage(*level, record.line, lineOf("image="), fields.count(QStringLiteral("image=")) > 0);
        return answerWeight(level->fullSolution);
    }

    void checkAnswer(const LevelInfo& level, int line, bool firstLevelOfGame) {
        const QString& file = m_options.packFile;
        const QString foreign = firstForeignCharacter(level.fullSolution, true);
        if (!foreign.isEmpty())
            m_report.error(file, line,
                           QStringLiteral("the answer '%1' holds %2, which is no letter of the game")
                               .arg(level.fullSolution, foreign));
        const QString folded = foldedAnswer(level.fullSolution);
        if (const auto seen = m_answers.constFind(folded); seen != m_answers.cend())
            m_report.error(
                file, line,
                QStringLiteral("the answer '%1' is already the answer of the level at line %2 ('%3'), "
                               "with hamza, ة/ه and ى/ي folded")
                    .arg(level.fullSolution)
                    .arg(seen->first)
                    .arg(seen->second));
        else
            m_answers.insert(folded, {line, level.fullSolution});
        if (firstLevelOfGame && level.solution.size() < 2)
            m_report.error(
                file, line,
                QStringLiteral("the game's first level gives two letters away: its answer needs at "
                               "least two letters"));
        else if (firstLevelOfGame && level.solution.size() == 2)
            m_report.warning(file, line,
                             QStringLiteral("the game's first level gives two letters away, which solves an "
                                            "answer of two letters"));
        if (!foreign.isEmpty() || !m_spelling)
            return;
        for (const QString& word : level.fullSolution.split(QChar(kWordSeparator), Qt::SkipEmptyParts)) {
            if (ExceptionEntry* entry = m_exceptions.find(word)) {
                entry->used = true;
                continue;
            }
            if (!m_spelling->knows(word))
                m_report.warning(
                    file, line,
                    QStringLiteral("'%1' is unknown to the Arabic hunspell dictionary: check its "
                                   "spelling, and list it in hunspell-exceptions.txt once reviewed")
                        .arg(word));
        }
    }

    void checkTray(const LevelInfo& level, int line) {
        const QString& file = m_options.packFile;
        const QString foreign = firstForeignCharacter(level.otherLetters, false);
        if (!foreign.isEmpty())
            m_report.error(
                file, line,
                QStringLiteral("other_letters= holds %1, which is no letter of the game").arg(foreign));
        const qsizetype pool = level.solution.size() + level.otherLetters.size();
        if (pool < kTraySize) {
            const QString filler = QString::fromRawData(reinterpret_cast<const QChar*>(kTrayFiller.data()),
                                                        static_cast<qsizetype>(kTrayFiller.size()));
            m_report.error(
                file, line,
                QStringLiteral("the tray gets %1 of its %2 letters from the answer and other_letters=: "
                               "add %3 decoys, or the game fills in '%4'")
                    .arg(pool)
                    .arg(kTraySize)
                    .arg(kTraySize - pool)
                    .arg(filler.left(kTraySize - pool)));
        } else if (pool > kTraySize) {
            m_report.warning(file, line,
                             QStringLiteral("other_letters= is longer than the tray by %1: '%2' never shows")
                                 .arg(pool - kTraySize)
                                 .arg(level.otherLetters.right(pool - kTraySize)));
        }
    }

    void checkImage(const LevelInfo& level, int recordLine, int imageLine, bool hasImageLine) {
        const QString& file = m_options.packFile;
        const QString& name = level.imageName;
        if (!hasImageLine || name.isEmpty()) {
            m_report.error(file, hasImageLine ? imageLine : recordLine,
                           QStringLiteral("missing picture: the level has no image= name"));
            return;
        }
        if (!isValidPictureStem(name)) {
            m_report.error(
                file, imageLine,
                QStringLiteral("image=%1: a picture name holds only ASCII letters, digits, '_' and '-'")
                    .arg(name));
            return;
        }
        if (const auto seen = m_images.constFind(name); seen != m_images.cend()) {
            m_report.error(
                file, imageLine,
                QStringLiteral("image=%1 already shows the level at line %2: each level needs its own "
                               "pictures")
                    .arg(name)
                    .arg(*seen));
            return;
        }
        m_images.insert(name, recordLine);
        m_imageOrder << name;
        if (!m_haveScenes)
            return;
        QStringList missing;
        for (int k = 1; k <= kPicturesPerLevel; ++k) {
            bool found = false;
            for (const Scene* scene : m_scenesByName.value(name))
                found = found || scene->index == k;
            if (!found)
                missing << QStringLiteral("%1_%2").arg(name).arg(k);
        }
        if (!missing.isEmpty())
            m_report.error(file, imageLine,
                           QStringLiteral("missing picture: no scene line for %1")
                               .arg(missing.join(QStringLiteral(", "))));
    }

    void checkScenes() {
        QHash<QString, QString> validity; // stem -> why it cannot be drawn, empty when it can
        QHash<QString, const Scene*> byFingerprint;
        QSet<QString> reportedUnused;
        for (const Scene& scene : m_scenes) {
            for (const SceneSymbol& symbol : scene.symbols) {
                if (!validity.contains(symbol.stem))
                    validity.insert(symbol.stem, m_symbols->validate(symbol.stem));
                if (const QString problem = validity.value(symbol.stem); !problem.isEmpty())
                    m_report.error(scene.file, scene.line,
                                   QStringLiteral("missing picture: %1 uses %2.svg, and %3")
                                       .arg(scene.pictureName, symbol.stem, problem));
            }
            if (!m_images.contains(scene.name) && !reportedUnused.contains(scene.name)) {
                reportedUnused.insert(scene.name);
                m_report.warning(
                    scene.file, scene.line,
                    QStringLiteral("no level has image=%1: its pictures are not shipped").arg(scene.name));
            }
            const QString fingerprint = scene.fingerprint();
            if (const auto same = byFingerprint.constFind(fingerprint); same != byFingerprint.cend()) {
                const Scene& other = **same;
                if (other.name == scene.name)
                    m_report.error(
                        scene.file, scene.line,
                        QStringLiteral("%1 is the same picture as %2 (line %3): a level needs four "
                                       "different pictures")
                            .arg(scene.pictureName, other.pictureName)
                            .arg(other.line));
                else
                    m_report.warning(scene.file, scene.line,
                                     QStringLiteral("%1 is the same picture as %2 (line %3) of another level")
                                         .arg(scene.pictureName, other.pictureName)
                                         .arg(other.line));
            } else {
                byFingerprint.insert(fingerprint, &scene);
            }
        }
    }

    // Four ways to the answer, not one thing four times; and no level that is another's pictures again.
    void checkVariety() {
        if (!m_haveScenes)
            return;
        const SymbolKeys keys = SymbolKeys::load(m_symbols->dir() + QStringLiteral("/symbols.tsv"));
        const QString unsuitableFile =
            QFileInfo(m_symbols->dir()).dir().filePath(QStringLiteral("unsuitable-symbols.txt"));
        const UnsuitableSymbols unsuitable = UnsuitableSymbols::load(unsuitableFile);
        for (const Scene& scene : m_scenes) {
            for (const SceneSymbol& symbol : scene.symbols) {
                const QString key = keys.keyOf(symbol.stem);
                if (const QString why = unsuitable.reasonFor(key); !why.isNull())
                    m_report.error(scene.file, scene.line,
                                   QStringLiteral("%1 shows %2 (%3), which no picture may show: %4")
                                       .arg(scene.pictureName, symbol.stem, key, why));
            }
        }
        std::vector<LevelSymbols> levels;
        for (const QString& name : std::as_const(m_imageOrder)) {
            const std::vector<const Scene*> scenes = m_scenesByName.value(name);
            if (scenes.empty())
                continue;
            for (const RepeatedMainSymbol& repeat : repeatedMainSymbols(scenes, keys)) {
                QStringList names;
                for (const Scene* scene : repeat.scenes)
                    names << scene->pictureName;
                const Scene& third = *repeat.scenes[kMaxSharedMainSymbol];
                m_report.error(
                    third.file, third.line,
                    QStringLiteral("%1 have the same main symbol, %2: the level's scenes are "
                                   "near-identical; at most %3 of its pictures may show it largest")
                        .arg(names.join(QStringLiteral(", ")), repeat.key)
                        .arg(kMaxSharedMainSymbol));
            }
            levels.push_back(symbolsOfLevel(name, scenes, keys));
        }
        for (const SimilarLevels& pair : similarLevels(levels)) {
            const LevelSymbols& a = levels[static_cast<size_t>(pair.a)];
            const LevelSymbols& b = levels[static_cast<size_t>(pair.b)];
            const qsizetype fewer = std::min(a.keys.size(), b.keys.size());
            m_report.error(
                b.first->file, b.first->line,
                QStringLiteral("the pictures of %1 share %2 symbols with those of %3 (%4:%5), more "
                               "than half of the %6 of the level with fewer: %7; two levels need "
                               "pictures of their own")
                    .arg(b.name)
                    .arg(pair.shared.size())
                    .arg(a.name, QFileInfo(a.first->file).fileName())
                    .arg(a.first->line)
                    .arg(fewer)
                    .arg(pair.shared.join(QStringLiteral(", "))));
        }
    }

    void checkExceptions() {
        for (const ExceptionEntry& entry : m_exceptions.entries) {
            if (!entry.used)
                m_report.warning(
                    m_exceptions.file, entry.line,
                    QStringLiteral("'%1' is in no answer: remove it from the list").arg(entry.word));
            else if (m_spelling && m_spelling->knows(entry.word))
                m_report.warning(
                    m_exceptions.file, entry.line,
                    QStringLiteral("'%1' is known to the dictionary: the exception is not needed")
                        .arg(entry.word));
        }
    }

    const CheckOptions& m_options;
    Report& m_report;
    bool m_haveScenes = false;
    std::unique_ptr<SymbolFolder> m_symbols;
    std::vector<Scene> m_scenes;
    QHash<QString, std::vector<const Scene*>> m_scenesByName;
    std::unique_ptr<SpellChecker> m_spelling;
    ExceptionList m_exceptions;
    QHash<QString, std::pair<int, QString>> m_answers; // folded answer -> line of its level, answer
    QStringList m_imageOrder;                          // the levels' image= in file order
    QHash<QString, int> m_images;                      // image= -> line of its level
};

} // namespace

QString defaultPicturesDir(const QString& packFile) {
    return QDir::cleanPath(QFileInfo(packFile).path() + QStringLiteral("/../pictures"));
}

CheckSummary checkPack(const CheckOptions& options, Report& report) {
    return Checker(options, report).run();
}

} // namespace tarvolin::levels
