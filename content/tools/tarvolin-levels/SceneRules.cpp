#include "SceneRules.h"

#include "Alphabet.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <map>

namespace tarvolin::levels {

namespace {

// The lines of a list file that say something: trimmed, without blank lines and '#' comment lines. None
// when the file cannot be read.
QStringList listLines(const QString& path) {
    QStringList lines;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return lines;
    for (const QByteArray& raw : file.readAll().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            lines << line;
    }
    return lines;
}

// The words of a symbol's key, or of an entry of the unsuitable list: "gi:pig-head" is gi, pig, head.
QStringList wordsOf(const QString& key) {
    static const QRegularExpression separators(QStringLiteral("[-:]"));
    return key.split(separators, Qt::SkipEmptyParts);
}

} // namespace

SymbolKeys SymbolKeys::load(const QString& path) {
    SymbolKeys keys;
    for (const QString& line : listLines(path)) {
        const QStringList parts = line.split(QLatin1Char('\t'));
        if (parts.size() == 2 && !parts[0].isEmpty() && !parts[1].isEmpty())
            keys.insert(parts[0], parts[1]);
    }
    return keys;
}

QString SymbolKeys::keyOf(const QString& symbol) const {
    if (const auto found = m_keys.constFind(symbol); found != m_keys.cend())
        return *found;
    const qsizetype colon = symbol.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return QString(symbol).remove(QStringLiteral("-fe0f"));
    return symbol.startsWith(QLatin1String("gi:")) ? symbol : symbol.mid(colon + 1);
}

UnsuitableSymbols UnsuitableSymbols::load(const QString& path) {
    UnsuitableSymbols list;
    for (const QString& line : listLines(path)) {
        const qsizetype hash = line.indexOf(QLatin1Char('#'));
        const QString pattern = (hash < 0 ? line : line.left(hash)).trimmed();
        const QString reason =
            hash < 0 ? QStringLiteral("listed as unsuitable") : line.mid(hash + 1).trimmed();
        if (!pattern.isEmpty())
            list.add(pattern, reason);
    }
    return list;
}

void UnsuitableSymbols::add(const QString& entry, const QString& reason) {
    const QStringList words = wordsOf(entry);
    if (!words.isEmpty())
        m_entries.emplace_back(words, reason);
}

QString UnsuitableSymbols::reasonFor(const QString& key) const {
    const QStringList words = wordsOf(key);
    for (const auto& [entry, reason] : m_entries) {
        for (qsizetype start = 0; start + entry.size() <= words.size(); ++start) {
            if (std::equal(entry.cbegin(), entry.cend(), words.cbegin() + start))
                return reason;
        }
    }
    return {};
}

int mainSymbolIndex(const Scene& scene) {
    const std::vector<Placement> places = scene.layout();
    int best = -1;
    for (size_t i = 0; i < places.size(); ++i) {
        if (best < 0 || places[i].size > places[static_cast<size_t>(best)].size + 1e-9)
            best = static_cast<int>(i);
    }
    return best;
}

std::vector<RepeatedMainSymbol> repeatedMainSymbols(const std::vector<const Scene*>& levelScenes,
                                                    const SymbolKeys& keys) {
    std::map<QString, std::vector<const Scene*>> byKey;
    for (const Scene* scene : levelScenes) {
        const int main = mainSymbolIndex(*scene);
        if (main >= 0)
            byKey[keys.keyOf(scene->symbols[static_cast<size_t>(main)].stem)].push_back(scene);
    }
    std::vector<RepeatedMainSymbol> out;
    for (auto& [key, scenes] : byKey) {
        if (static_cast<int>(scenes.size()) > kMaxSharedMainSymbol) {
            std::sort(scenes.begin(), scenes.end(), [](const Scene* a, const Scene* b) {
                return a->file != b->file ? a->file < b->file : a->line < b->line;
            });
            out.push_back({key, scenes});
        }
    }
    return out;
}

LevelSymbols symbolsOfLevel(const QString& name, const std::vector<const Scene*>& levelScenes,
                            const SymbolKeys& keys) {
    LevelSymbols level;
    level.name = name;
    QSet<QString> distinct;
    for (const Scene* scene : levelScenes) {
        if (!level.first || scene->index < level.first->index)
            level.first = scene;
        for (const SceneSymbol& symbol : scene->symbols)
            distinct.insert(keys.keyOf(symbol.stem));
    }
    level.keys = QStringList(distinct.cbegin(), distinct.cend());
    level.keys.sort();
    return level;
}

std::vector<SimilarLevels> similarLevels(const std::vector<LevelSymbols>& levels) {
    // Only levels that share a symbol can be alike: pair them through an index of who uses what.
    QHash<QString, std::vector<int>> users;
    for (size_t i = 0; i < levels.size(); ++i) {
        for (const QString& key : levels[i].keys)
            users[key].push_back(static_cast<int>(i));
    }
    std::map<std::pair<int, int>, QStringList> shared;
    for (auto it = users.cbegin(); it != users.cend(); ++it) {
        const std::vector<int>& who = it.value();
        for (size_t x = 0; x < who.size(); ++x) {
            for (size_t y = x + 1; y < who.size(); ++y)
                shared[{who[x], who[y]}] << it.key();
        }
    }
    std::vector<SimilarLevels> out;
    for (auto& [pair, keys] : shared) {
        const qsizetype smaller = std::min(levels[static_cast<size_t>(pair.first)].keys.size(),
                                           levels[static_cast<size_t>(pair.second)].keys.size());
        if (2 * keys.size() > smaller) {
            keys.sort();
            out.push_back({pair.first, pair.second, keys});
        }
    }
    return out;
}

int answerWeight(const QString& fullSolution) {
    const QStringList words = fullSolution.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    int letters = 0;
    for (const QString& word : words)
        letters += static_cast<int>(std::count_if(word.cbegin(), word.cend(), isGameLetter));
    return letters + 2 * std::max(0, static_cast<int>(words.size()) - 1);
}

std::vector<OrderProblem> orderProblems(const std::vector<int>& weights) {
    std::vector<OrderProblem> out;
    if (weights.size() < 2)
        return out;
    std::vector<int> sorted = weights;
    std::sort(sorted.begin(), sorted.end());
    const int median = sorted[(sorted.size() - 1) / 2];
    const int last = static_cast<int>(weights.size()) - 1;
    if (weights.front() >= weights.back())
        out.push_back(
            {0, QStringLiteral("the round's first level weighs %1 and its last %2: the first level is "
                               "the easiest, and the last a little harder")
                    .arg(weights.front())
                    .arg(weights.back())});
    for (int i = 0; i < std::min(kEasyOpeningLevels, last); ++i) {
        if (weights[static_cast<size_t>(i)] > median)
            out.push_back(
                {i, QStringLiteral("level %1 of the round weighs %2, above the round's median of %3: "
                                   "the first %4 levels are among the easiest")
                        .arg(i + 1)
                        .arg(weights[static_cast<size_t>(i)])
                        .arg(median)
                        .arg(kEasyOpeningLevels)});
    }
    return out;
}

QString foldedAnswer(const QString& answer) {
    QString out;
    for (const QChar c : answer) {
        switch (c.unicode()) {
        case 0x0623: // أ
        case 0x0625: // إ
        case 0x0622: // آ
            out += QChar(0x0627);
            break;
        case 0x0629: // ة
            out += QChar(0x0647);
            break;
        case 0x0649: // ى
        case 0x0626: // ئ
            out += QChar(0x064A);
            break;
        case 0x0624: // ؤ
            out += QChar(0x0648);
            break;
        case 0x0621: // ء
        case 0x0020:
            break;
        default:
            out += c;
        }
    }
    return out;
}

} // namespace tarvolin::levels
