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
