#pragma once

#include "SceneFile.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <vector>

namespace tarvolin::levels {

// What each symbol shows, whatever set draws it: svg/symbols.tsv maps "noto:camel", "fluent:camel" and
// "1f42a" alike to "camel". A symbol the index does not list is known by its own name.
class SymbolKeys {
public:
    // Reads "SYMBOL<TAB>KEY" lines; '#' starts a comment line. A missing file leaves the index empty.
    static SymbolKeys load(const QString& path);
    void insert(const QString& symbol, const QString& key) { m_keys.insert(symbol, key); }
    QString keyOf(const QString& symbol) const;

private:
    QHash<QString, QString> m_keys;
};

// What no picture may show, whatever set draws it: "ENTRY  # reason" lines. An entry is one or more words
// of a symbol's key ("pig", "couple-with-heart", "gi:church"); it matches every key that holds those words
// in a row, words being separated by '-' or ':'.
class UnsuitableSymbols {
public:
    // A missing file is an empty list.
    static UnsuitableSymbols load(const QString& path);
    void add(const QString& entry, const QString& reason);
    // The reason the key is unsuitable; a null string when it is not.
    QString reasonFor(const QString& key) const;

private:
    std::vector<std::pair<QStringList, QString>> m_entries; // the entry's words, the reason
};

// The picture's main symbol: the one drawn largest, the first written of those that tie. -1 without any.
int mainSymbolIndex(const Scene& scene);

// A main symbol that more than kMaxSharedMainSymbol of a level's pictures have in common: they would show
// one thing four times over instead of four ways to the answer.
inline constexpr int kMaxSharedMainSymbol = 2;
struct RepeatedMainSymbol {
    QString key;
    std::vector<const Scene*> scenes; // in file order
};
std::vector<RepeatedMainSymbol> repeatedMainSymbols(const std::vector<const Scene*>& levelScenes,
                                                    const SymbolKeys& keys);

// Two levels whose pictures share more than half of the distinct symbols of the one that has fewer.
struct LevelSymbols {
    QString name;                 // the level's image=
    const Scene* first = nullptr; // where to report it
    QStringList keys;             // the distinct symbols of its four pictures, sorted
};
LevelSymbols symbolsOfLevel(const QString& name, const std::vector<const Scene*>& levelScenes,
                            const SymbolKeys& keys);
struct SimilarLevels {
    int a = 0; // indices into the levels given
    int b = 0;
    QStringList shared;
};
std::vector<SimilarLevels> similarLevels(const std::vector<LevelSymbols>& levels);

// How hard an answer is by its form: its letters, and two more for each word after the first.
int answerWeight(const QString& fullSolution);

// Within a round the first levels are the easiest: the first weighs less than the last, and each of the
// first five weighs no more than the round's median. The indices of the levels that break it, each with
// why; nothing for a round of fewer than two levels.
struct OrderProblem {
    int index = 0;
    QString why;
};
inline constexpr int kEasyOpeningLevels = 5;
std::vector<OrderProblem> orderProblems(const std::vector<int>& weights);

// The form under which two answers count as the same: hamza forms, ة/ه and ى/ي folded, blanks dropped.
QString foldedAnswer(const QString& answer);

} // namespace tarvolin::levels
