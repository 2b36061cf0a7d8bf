#include "logic/text_rules.h"

#include <gtest/gtest.h>
#include <regex>

using namespace tarvolin::logic;

TEST(DisplayName, AcceptsArabicAndLatinNamesOfTwoToThirtyTwoCharacters) {
    EXPECT_FALSE(displayNameProblem("عبد الله"));
    EXPECT_FALSE(displayNameProblem("Al"));
    EXPECT_FALSE(displayNameProblem(std::string(32, 'x')));
    EXPECT_FALSE(displayNameProblem("ن" + std::string("ور")));
}

TEST(DisplayName, RefusesLengthsControlsBlanksAndBrokenUtf8) {
    EXPECT_TRUE(displayNameProblem("A"));
    EXPECT_TRUE(displayNameProblem(std::string(33, 'x')));
    // 32 Arabic letters are 64 bytes and still fit; 33 do not.
    std::string arabic;
    for (int i = 0; i < 33; ++i) {
        arabic += "ب";
    }
    EXPECT_TRUE(displayNameProblem(arabic));
    EXPECT_FALSE(displayNameProblem(arabic.substr(2)));
    EXPECT_TRUE(displayNameProblem("ab\ncd"));
    EXPECT_TRUE(displayNameProblem(" abc"));
    EXPECT_TRUE(displayNameProblem("abc\xC2\xA0"));
    EXPECT_TRUE(displayNameProblem("ab\xC0\xAF"));     // overlong '/'
    EXPECT_TRUE(displayNameProblem("ab\xED\xA0\x80")); // a surrogate
    EXPECT_TRUE(displayNameProblem("ab\xD8"));         // cut short
}

TEST(Passwords, LengthInBytesAndUtf8) {
    EXPECT_TRUE(passwordProblem("short"));
    EXPECT_FALSE(passwordProblem("eight ch"));
    EXPECT_FALSE(passwordProblem(std::string(128, 'p')));
    EXPECT_TRUE(passwordProblem(std::string(129, 'p')));
    EXPECT_TRUE(passwordProblem("12345678\xFF"));
}

TEST(Messages, CountCharactersAndAllowNewlines) {
    std::string msg;
    for (int i = 0; i < 200; ++i) {
        msg += "س";
    }
    EXPECT_FALSE(messageProblem(msg, 200));
    EXPECT_TRUE(messageProblem(msg + "س", 200));
    EXPECT_FALSE(messageProblem("line\nline", 200));
    EXPECT_TRUE(messageProblem("bell\a", 200));
}

TEST(SettingsRecord, FileLinesBecomeCommaJoinedItems) {
    auto items = parseSettingsFile("# remote settings\na=1\n\n  b = x \nb=2\r\n");
    EXPECT_EQ(settingsRecord(items), "a=1,b=2");
    EXPECT_EQ(settingsRecord({}), "");
}

TEST(SettingsRecord, RefusesItemsThatTheGameCannotRead) {
    EXPECT_THROW(parseSettingsFile("a=1=2"), std::invalid_argument);
    EXPECT_THROW(parseSettingsFile("a=1,b=2"), std::invalid_argument);
    EXPECT_THROW(parseSettingsFile("novalue"), std::invalid_argument);
    EXPECT_THROW(parseSettingsFile("=1"), std::invalid_argument);
    EXPECT_THROW(parseSettingsFile("a=x<br>y"), std::invalid_argument);
}

TEST(Avatar, DependsOnTheIdentifierAndEscapesTheInitial) {
    std::string a = avatarSvg("T1", "<b>");
    EXPECT_NE(a.find("&lt;"), std::string::npos);
    EXPECT_EQ(a.find("<b>"), std::string::npos);
    EXPECT_NE(avatarSvg("T1", "x"), avatarSvg("T2", "x"));
    EXPECT_NE(avatarSvg("T1", "علي").find("ع"), std::string::npos);
    // The colour is a plain #rrggbb, which every SVG reader draws.
    EXPECT_TRUE(std::regex_search(avatarSvg("T1", "x"), std::regex("<rect[^>]*fill=\"#[0-9a-f]{6}\"")));
}

// Names that look alike share their key, so that the second of a pair cannot be taken.
TEST(NameKey, LookAlikesShareTheKey) {
    const std::pair<std::string, std::string> pairs[] = {
        {"\xEF\xBC\xA2\xEF\xBD\x81\xEF\xBD\x84\xEF\xBD\x85\xEF\xBD\x92", "Bader"}, // full-width Ｂａｄｅｒ
        {"\xEF\xAC\x81nn", "finn"},                                                // the ligature ﬁ
        {"BADER", "bader"},
        {"Stra\xC3\x9F"
         "e",
         "STRASSE"}, // ß folds to ss
        // Arabic presentation forms: ﻋﻠﻲ and the lam-alef ligature ﻻ against the letters.
        {"\xEF\xBB\x8B\xEF\xBB\xA0\xEF\xBB\xB2", "علي"},
        {"\xEF\xBB\xBB\xD9\x85\xD8\xB9", "لامع"},
        {"م\xD9\x80\xD9\x80حمد", "محمد"},       // tatweel stretches, nothing more
        {"Al\xE2\x80\x8Di", "Ali"},             // a zero-width joiner inside
        {"Sam\xE2\x80\xAEreh", "Samreh"},       // a right-to-left override
        {"Ali  \xE3\x80\x80 Baba", "Ali Baba"}, // a run of blanks, an ideographic space among them
        {"\xE2\x80\x8F"
         "Ali",
         "Ali"},                      // a right-to-left mark in front
        {"Omar\xEF\xB8\x8F", "Omar"}, // a variation selector
    };
    for (const auto& [a, b] : pairs) {
        EXPECT_EQ(nameKey(a), nameKey(b)) << a << " / " << b;
    }
    // Different names stay apart: Arabic-Indic digits are not the ASCII ones, marks are kept.
    EXPECT_NE(nameKey("Ali٣"), nameKey("Ali3"));
    EXPECT_NE(nameKey("مُحمد"), nameKey("محمد"));
    EXPECT_NE(nameKey("Ali Baba"), nameKey("AliBaba"));
    EXPECT_EQ(nameKey("  Ali  "), "ali");
}

TEST(DisplayName, KeptInNfkc) {
    EXPECT_EQ(displayNameForm("\xEF\xBC\xA2\xEF\xBD\x81\xEF\xBD\x84\xEF\xBD\x85\xEF\xBD\x92"), "Bader");
    EXPECT_EQ(displayNameForm("\xEF\xAC\x81nn"), "finn");
    EXPECT_EQ(displayNameForm("\xEF\xBB\x8B\xEF\xBB\xA0\xEF\xBB\xB2"), "علي");
    // Arabic letters, marks, Arabic-Indic digits and tatweel are kept as they are.
    for (const std::string name : {"عبد الله", "مُحَمَّد ٣", "محـــمد"}) {
        EXPECT_FALSE(displayNameProblem(name)) << name;
        EXPECT_EQ(displayNameForm(name), name);
    }
    // An emoji with its presentation selector is a name like any other.
    EXPECT_FALSE(displayNameProblem("Ali \xE2\x9D\xA4\xEF\xB8\x8F"));
}

TEST(DisplayName, RefusesInvisibleAndDirectionCharacters) {
    const char* hidden[] = {
        "\xE2\x80\x8B",                                 // zero-width space
        "\xE2\x80\x8C",                                 // zero-width non-joiner
        "\xE2\x80\x8D",                                 // zero-width joiner
        "\xE2\x81\xA0",                                 // word joiner
        "\xEF\xBB\xBF",                                 // byte order mark
        "\xC2\xAD",                                     // soft hyphen
        "\xE2\x80\x8E",     "\xE2\x80\x8F", "\xD8\x9C", // LRM, RLM, ALM
        "\xE2\x80\xAA",     "\xE2\x80\xAB", "\xE2\x80\xAC", "\xE2\x80\xAD",
        "\xE2\x80\xAE",                                                     // embeddings, overrides
        "\xE2\x81\xA6",     "\xE2\x81\xA7", "\xE2\x81\xA8", "\xE2\x81\xA9", // isolates
        "\xF3\xA0\x81\x81",                                                 // tag letter A
        "\xE3\x85\xA4",     "\xE1\x85\x9F", "\xEF\xBE\xA0",                 // Hangul fillers
        "\xCD\x8F",                                                         // combining grapheme joiner
        "\xE1\xA0\x8E",                                                     // Mongolian vowel separator
        "\xE2\xA0\x80",                                                     // braille blank
        "\xEE\x80\x80",                                                     // private use
    };
    for (const char* c : hidden) {
        const std::string inside = std::string("Ali") + c + "Baba";
        ASSERT_TRUE(displayNameProblem(inside)) << "U+" << std::hex << static_cast<int>(c[0]);
        EXPECT_TRUE(displayNameProblem(std::string(c) + "Ali"));
    }
    // A variation selector of its own: at the start, after a blank, after another one.
    EXPECT_TRUE(displayNameProblem("\xEF\xB8\x8F"
                                   "Ali"));
    EXPECT_TRUE(displayNameProblem("Ali \xEF\xB8\x8F"
                                   "Baba"));
    EXPECT_TRUE(displayNameProblem("Ali\xEF\xB8\x8F\xEF\xB8\x8F"));
    // Normalising may not bring a name out of bounds: ﷺ becomes 18 characters, two of it 36.
    EXPECT_FALSE(displayNameProblem("\xEF\xB7\xBA!"));
    EXPECT_TRUE(displayNameProblem("\xEF\xB7\xBA\xEF\xB7\xBA"));
    // An ideographic space at the end is a blank; tatweel alone is no name.
    EXPECT_TRUE(displayNameProblem("Ali\xE3\x80\x80"));
    EXPECT_TRUE(displayNameProblem("ـــ"));
}
