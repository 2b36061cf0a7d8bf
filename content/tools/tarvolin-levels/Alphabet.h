#pragma once

#include <QChar>
#include <QString>

#include <string_view>

namespace tarvolin::levels {

// The game's alphabet: every tile of the tray, every decoy in other_letters= and every letter of an
// answer is one of these 37 letters. The hamza forms (أ إ آ ء ؤ ئ), taa marbuta (ة) and alif maqsura
// (ى) are letters of their own: the board compares answers code unit by code unit, so "ة" and "ه"
// are different tiles and an answer must be spelled exactly as its tiles are. Diacritics, tatweel,
// Persian or Urdu forms, digits and invisible marks are not letters of the game.
inline constexpr std::u16string_view kGameLetters = u"اأإآبتثجحخدذرزسشصضطظعغفقكلمنهويةىءؤئ";

// A solution line of several words separates them with a blank. The blank is no tile: the game
// removes it from the answer and shows it only in the answer's full spelling.
inline constexpr char16_t kWordSeparator = u' ';

// The letters the game adds to a tray whose solution and decoys are shorter than twelve letters.
inline constexpr std::u16string_view kTrayFiller = u"تصخضذأدسش";

// A tray holds twelve tiles, and so an answer has at most twelve letters.
inline constexpr int kTraySize = 12;

inline bool isGameLetter(QChar c) {
    return kGameLetters.find(c.unicode()) != std::u16string_view::npos;
}

// "U+0640 'ـ'" for messages about a character that is not a letter of the game.
QString describeCharacter(QChar c);

} // namespace tarvolin::levels
