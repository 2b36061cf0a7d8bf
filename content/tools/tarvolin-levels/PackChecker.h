#pragma once

#include "Diagnostics.h"
#include "SpellChecker.h"

#include <QString>

namespace tarvolin::levels {

struct CheckOptions {
    QString packFile;
    // The folder of scenes.txt and svg/; empty for ../pictures beside the pack file's folder.
    QString picturesDir;
    // The reviewed words that the dictionary does not know; empty for hunspell-exceptions.txt beside the
    // pack file, if there is one.
    QString exceptionsFile;
    QString dictionary = QString::fromLatin1(kDefaultDictionary);
    // The number of rounds the game can reach: the file needs a pack for each. 0 checks no count.
    int minPacks = 0;
};

// A round's pack holds at least this many levels, so that the levels of a round are all different.
inline constexpr int kMinLevelsPerPack = 25;

struct CheckSummary {
    int packs = 0;
    int levels = 0;
};

// Checks a pack file, its pictures and its answers; every finding goes to `report`. The file is fit to
// ship when the report holds no error.
CheckSummary checkPack(const CheckOptions& options, Report& report);

// Where the pictures of a pack file are by default: content/pictures for content/levels/ok.wav.
QString defaultPicturesDir(const QString& packFile);

} // namespace tarvolin::levels
