#pragma once

#include <QString>

#include <memory>

class Hunspell;

namespace tarvolin::levels {

// A hunspell dictionary (the .aff and .dic pair). Words are handed to hunspell in the dictionary's own
// encoding (its SET line): a word that the encoding cannot hold is unknown.
class SpellChecker {
public:
    // PATH is the dictionary's .dic or .aff file, or their common stem ("/usr/share/hunspell/ar").
    // Gives nothing and explains why in `error` when the pair cannot be read.
    static std::unique_ptr<SpellChecker> open(const QString& path, QString* error);
    ~SpellChecker();

    bool knows(const QString& word) const;
    QString encoding() const { return m_encoding; }

private:
    SpellChecker() = default;
    std::unique_ptr<Hunspell> m_hunspell;
    QString m_encoding;
};

inline constexpr auto kDefaultDictionary = "/usr/share/hunspell/ar";

} // namespace tarvolin::levels
