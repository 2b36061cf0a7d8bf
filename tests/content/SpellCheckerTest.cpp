// Words reach hunspell in the dictionary's own encoding.

#include "SpellChecker.h"
#include "ContentFixtures.h"

namespace tarvolin::levels::test {
namespace {

TEST(SpellChecker, SpeaksTheArabicDictionarysEncoding) {
    QString error;
    const std::unique_ptr<SpellChecker> arabic =
        SpellChecker::open(QString::fromLatin1(kDefaultDictionary), &error);
    ASSERT_TRUE(arabic) << error.toStdString();
    EXPECT_TRUE(arabic->knows(QStringLiteral("تفاحة")));
    EXPECT_TRUE(arabic->knows(QStringLiteral("المدرسة")));
    EXPECT_FALSE(arabic->knows(QStringLiteral("مدرصة")));
}

TEST(SpellChecker, TranscodesForADictionaryInAnotherEncoding) {
    // iso.dic holds شمس and قمر in ISO 8859-6, which its iso.aff declares.
    QString error;
    const std::unique_ptr<SpellChecker> iso =
        SpellChecker::open(dataFile(QStringLiteral("dictionary/iso.dic")), &error);
    ASSERT_TRUE(iso) << error.toStdString();
    EXPECT_EQ(iso->encoding(), QStringLiteral("ISO8859-6"));
    EXPECT_TRUE(iso->knows(QStringLiteral("شمس")));
    EXPECT_TRUE(iso->knows(QStringLiteral("قمر")));
    EXPECT_FALSE(iso->knows(QStringLiteral("شمسس")));
    // A letter the encoding cannot hold makes the word unknown, whatever the rest of it is.
    EXPECT_FALSE(iso->knows(QStringLiteral("شمسی")));
    EXPECT_FALSE(iso->knows(QStringLiteral("ی")));
}

TEST(SpellChecker, NamesTheMissingFile) {
    QString error;
    EXPECT_FALSE(SpellChecker::open(dataFile(QStringLiteral("dictionary/none")), &error));
    EXPECT_TRUE(error.contains(QLatin1String("dictionary/none.aff"))) << error.toStdString();
}

} // namespace
} // namespace tarvolin::levels::test
