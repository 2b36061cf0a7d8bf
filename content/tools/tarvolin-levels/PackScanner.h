#pragma once

#include <QString>

#include <vector>

namespace tarvolin::levels {

// The pack file cut up exactly as the game cuts it: the text is split on every "[pack=" and each
// pack on every "level=", by plain substring search. The scanner keeps where each piece starts so
// that every finding can name its line; it reads no values, which is the game's parser's work.

struct RecordLine {
    int line = 0; // 1-based line in the file
    QString text; // trimmed
};

struct Record {
    int line = 0;                  // the line of "level="
    QString text;                  // what follows "level=" up to the next separator: one record for the game
    std::vector<RecordLine> lines; // text split on newlines; the first is the solution line
};

struct Pack {
    int line = 0; // the line of "[pack="
    std::vector<Record> records;
};

// A separator with other text before it on its line: the game still splits there.
struct MisplacedSeparator {
    int line = 0;
    QString separator; // "level=" or "[pack="
};

struct PackScan {
    bool hasPack = false;
    std::vector<Pack> packs;                 // the packPieces the game keeps
    std::vector<int> droppedPacks;           // lines of packPieces that hold neither a newline nor "]"
    std::vector<int> recordsBeforeFirstPack; // lines of "level=" that come before any "[pack="
    std::vector<MisplacedSeparator> misplaced;
};

inline constexpr QStringView kPackSeparator = u"[pack=";
inline constexpr QStringView kLevelSeparator = u"level=";

PackScan scanPack(const QString& text);

// The keys of a level record in the order the game tests them; the first prefix that matches wins.
const std::vector<QString>& gameKeys();

// The key of a trimmed record line, or an empty string when the game ignores the line.
QString keyOfLine(const QString& trimmedLine);

} // namespace tarvolin::levels
