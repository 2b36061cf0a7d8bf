// The rules of `tarvolin-levels check`, on good.wav (one pack of 25 levels that is fit to ship) and on
// copies of it with one fault each. good.wav's level n (1 to 25) stands on line 3n, its image= on line
// 3n + 1 and its other_letters= on line 3n + 2; its pictures are p01 to p25, whose first scene lines are
// on line 4n - 1 of pictures/scenes.txt.

#include "ContentFixtures.h"
#include "PackChecker.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <functional>

namespace tarvolin::levels::test {
namespace {

constexpr Severity E = Severity::Error;
constexpr Severity W = Severity::Warning;

int levelLine(int n) {
    return 3 * n;
}
int imageLine(int n) {
    return 3 * n + 1;
}
int decoyLine(int n) {
    return 3 * n + 2;
}
int firstSceneLine(int n) {
    return 4 * n - 1;
}

class PackCheck : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        m_lines = readAll(dataFile(QStringLiteral("good.wav"))).split(QLatin1Char('\n'));
        m_lines.removeLast(); // the text after the last newline, which is empty
        m_options.packFile = m_dir.filePath(QStringLiteral("ok.wav"));
        m_options.picturesDir = dataFile(QStringLiteral("pictures"));
    }

    // Line `line` (1-based) of good.wav becomes `text`.
    void setLine(int line, const QString& text) { m_lines[line - 1] = text; }
    void insertLine(int before, const QString& text) { m_lines.insert(before - 1, text); }
    void removeLines(int first, int count) { m_lines.remove(first - 1, count); }

    // Checks the changed file; `ending` follows its last line.
    Report check(const QString& ending = QStringLiteral("\n")) {
        EXPECT_TRUE(writeAll(m_options.packFile, m_lines.join(QLatin1Char('\n')) + ending));
        Report report;
        m_summary = checkPack(m_options, report);
        return report;
    }

    // A copy of the fixture's pictures whose scenes.txt can be changed.
    void usePictureCopy(const std::function<void(QStringList&)>& change) {
        const QString pictures = m_dir.filePath(QStringLiteral("pictures"));
        ASSERT_TRUE(QDir().mkpath(pictures + QStringLiteral("/svg")));
        const QDir svg(dataFile(QStringLiteral("pictures/svg")));
        for (const QString& name : svg.entryList(QDir::Files))
            ASSERT_TRUE(QFile::copy(svg.filePath(name), pictures + QStringLiteral("/svg/") + name));
        QStringList scenes =
            readAll(dataFile(QStringLiteral("pictures/scenes.txt"))).split(QLatin1Char('\n'));
        change(scenes);
        ASSERT_TRUE(writeAll(pictures + QStringLiteral("/scenes.txt"), scenes.join(QLatin1Char('\n'))));
        m_options.picturesDir = pictures;
    }

    QTemporaryDir m_dir;
    QStringList m_lines;
    CheckOptions m_options;
    CheckSummary m_summary;
};

TEST_F(PackCheck, ShippablePackHasNoFinding) {
    const Report report = check();
    expectFindings(report, {});
    EXPECT_TRUE(report.fitToShip());
    EXPECT_EQ(m_summary.packs, 1);
    EXPECT_EQ(m_summary.levels, 25);
}

TEST_F(PackCheck, RecordsTheGameCannotReadAreErrors) {
    // A last level whose solution line has no newline.
    m_lines.append(QStringLiteral("level=قطة"));
    expectFindings(check(QString()), {{78, E, "no newline"}});
    m_lines.removeLast();

    // A level the game cannot read has no pictures either.
    setLine(levelLine(1), QStringLiteral("level=  "));
    expectFindings(check(),
                   {{levelLine(1), E, "no solution"}, {firstSceneLine(1), W, "no level has image=p01"}});
    setLine(levelLine(1), QStringLiteral("level=شمس"));

    // Blanks do not count: twelve letters in two words fit, thirteen do not.
    setLine(levelLine(24), QStringLiteral("level=برتقالة حاسوب"));
    expectFindings(check(), {{decoyLine(24), W, "longer than the tray by 5"}});
    setLine(levelLine(24), QStringLiteral("level=برتقالة حاسوبا"));
    expectFindings(check(),
                   {{levelLine(24), E, "has 13 letters"}, {firstSceneLine(24), W, "no level has image=p24"}});
}

TEST_F(PackCheck, SeparatorsInsideAValueSplitWhereTheGameSplits) {
    // The game starts a new level in the middle of level 1's image= line: level 1 loses its decoys, and
    // the new level takes level 2's answer and has no picture.
    setLine(imageLine(1), QStringLiteral("image=p01 level=قمر"));
    expectFindings(
        check(),
        {{imageLine(1), E, "\"level=\" inside a value"},
         {levelLine(1), E, "the tray gets 3 of its 12"},
         {imageLine(1), E, "no image="},
         {levelLine(2), E, QStringLiteral("already the answer of the level at line %1").arg(imageLine(1))}});

    // A new pack in the middle of level 13's image= line leaves two packs that are too small.
    setLine(imageLine(1), QStringLiteral("image=p01"));
    setLine(imageLine(13), QStringLiteral("image=p13 [pack=2]"));
    expectFindings(check(), {{imageLine(13), E, "\"[pack=\" inside a value"},
                             {2, E, "the pack has 13 levels"},
                             {imageLine(13), E, "the pack has 12 levels"},
                             {levelLine(13), E, "the tray gets 4 of its 12"}});
}

TEST_F(PackCheck, TheTrayNeedsTwelveLettersOfItsOwn) {
    setLine(decoyLine(1), QStringLiteral("other_letters=ابت"));
    expectFindings(check(), {{decoyLine(1), E, "add 6 decoys, or the game fills in 'تصخضذأ'"}});
    setLine(decoyLine(1), QStringLiteral("other_letters=ابتثجحخد"));
    expectFindings(check(), {{decoyLine(1), E, "the tray gets 11 of its 12"}});

    setLine(decoyLine(1), QStringLiteral("other_letters=ابتثجحخدذمنو"));
    expectFindings(check(), {{decoyLine(1), W, "longer than the tray by 3: 'منو' never shows"}});

    removeLines(decoyLine(1), 1);
    expectFindings(check(), {{levelLine(1), E, "the tray gets 3 of its 12"}});
}

TEST_F(PackCheck, EveryPackHoldsARound) {
    removeLines(levelLine(25), 3);
    expectFindings(check(), {{2, E, "the pack has 24 levels, and a round needs at least 25"},
                             {firstSceneLine(25), W, "no level has image=p25"}});

    m_options.minPacks = 2;
    const Report report = check();
    EXPECT_TRUE(std::any_of(report.all().begin(), report.all().end(), [](const Diagnostic& d) {
        return d.line == 0 && d.message.contains(QLatin1String("2 rounds need one pack each"));
    })) << describe(report.all()).toStdString();
}

TEST_F(PackCheck, TextOutsideThePacksAndUnknownLinesAreReported) {
    // A last "[pack=" with nothing after it is dropped by the game.
    m_lines.append(QStringLiteral("[pack=2"));
    expectFindings(check(QString()), {{78, W, "the game drops it"}});
    m_lines.removeLast();

    insertLine(2, QStringLiteral("level=قطة"));
    expectFindings(check(), {{2, W, "before the first \"[pack=\""}});
    removeLines(2, 1);

    setLine(decoyLine(2), QStringLiteral("other_leters=ثجحخدذرزس"));
    expectFindings(check(), {{decoyLine(2), W, "'other_leters=ثجحخدذرزس' is no field"},
                             {levelLine(2), E, "the tray gets 3 of its 12"}});
    setLine(decoyLine(2), QStringLiteral("other_letters=ثجحخدذرزس"));

    // A comment is no field either, but says so.
    insertLine(decoyLine(2) + 1, QStringLiteral("# the moon, full and new"));
    expectFindings(check(), {});
    removeLines(decoyLine(2) + 1, 1);

    insertLine(decoyLine(2) + 1, QStringLiteral("image=p02"));
    expectFindings(check(), {{decoyLine(2) + 1, W,
                              QStringLiteral("image= again (first at line %1)").arg(imageLine(2))}});
}

TEST_F(PackCheck, AnswersAreUniqueAndWrittenInTheGamesAlphabet) {
    setLine(levelLine(2), QStringLiteral("level=شمس"));
    expectFindings(check(), {{levelLine(2), E, "'شمس' is already the answer of the level at line 3"}});
    // Spellings that differ only in hamza, ة/ه or ى/ي are the same answer.
    setLine(levelLine(8), QStringLiteral("level=اسد"));
    expectFindings(check(),
                   {{levelLine(2), E, "'شمس' is already the answer"},
                    {levelLine(8), E, "'اسد' is already the answer of the level at line 21 ('أسد')"}});
    setLine(levelLine(8), QStringLiteral("level=قرد"));

    // Four characters each, so one decoy more than the tray shows.
    setLine(levelLine(2), QStringLiteral("level=قمـر")); // a tatweel
    expectFindings(check(), {{levelLine(2), E, "U+0640"}, {decoyLine(2), W, "longer than the tray by 1"}});
    setLine(levelLine(2), QStringLiteral("level=قَمر")); // a vowel mark
    expectFindings(check(), {{levelLine(2), E, "U+064E"}, {decoyLine(2), W, "longer than the tray by 1"}});
    setLine(levelLine(2), QStringLiteral("level=كرسی")); // the Persian yeh
    expectFindings(check(), {{levelLine(2), E, "U+06CC"}, {decoyLine(2), W, "longer than the tray by 1"}});
    setLine(levelLine(2), QStringLiteral("level=قمر"));

    setLine(decoyLine(2), QStringLiteral("other_letters=ثجحخ درزx"));
    expectFindings(check(), {{decoyLine(2), E, "other_letters= holds U+0020"}});
}

TEST_F(PackCheck, TheFirstLevelKeepsALetterAfterItsGift) {
    setLine(levelLine(1), QStringLiteral("level=أب"));
    setLine(decoyLine(1), QStringLiteral("other_letters=ابتثجحخدذر"));
    expectFindings(check(), {{levelLine(1), W, "solves an answer of two letters"}});

    setLine(levelLine(1), QStringLiteral("level=ب"));
    setLine(decoyLine(1), QStringLiteral("other_letters=ابتثجحخدذرز"));
    const Report report = check();
    EXPECT_TRUE(std::any_of(report.all().begin(), report.all().end(), [](const Diagnostic& d) {
        return d.line == 3 && d.severity == E && d.message.contains(QLatin1String("at least two letters"));
    })) << describe(report.all()).toStdString();
}

TEST_F(PackCheck, UnknownWordsAreWarningsThatReviewedExceptionsSilence) {
    setLine(levelLine(10), QStringLiteral("level=مدرصة"));
    expectFindings(check(), {{levelLine(10), W, "'مدرصة' is unknown to the Arabic hunspell dictionary"}});
    EXPECT_TRUE(check().fitToShip());

    // Word by word: only the unknown word of an answer of two words is named.
    setLine(levelLine(25), QStringLiteral("level=كرة القدمم"));
    const Expected oneDecoyTooMany{decoyLine(25), W, "longer than the tray by 1"};
    expectFindings(
        check(), {{levelLine(10), W, "'مدرصة'"}, {levelLine(25), W, "'القدمم' is unknown"}, oneDecoyTooMany});

    const QString exceptions = m_dir.filePath(QStringLiteral("hunspell-exceptions.txt"));
    ASSERT_TRUE(writeAll(exceptions, QStringLiteral("# reviewed words\n"
                                                    "مدرصة  # a school of the desert, in the riddle's sense\n"
                                                    "القدمم\n"
                                                    "شمس  # known anyway\n"
                                                    "نهر  # was an answer once\n")));
    // Found beside the pack file without being named.
    expectFindings(check(), {{3, W, "'القدمم' has no reason"},
                             {4, W, "'شمس' is known to the dictionary"},
                             {5, W, "'نهر' is in no answer"},
                             oneDecoyTooMany});

    m_options.dictionary = m_dir.filePath(QStringLiteral("none.dic"));
    const Report report = check();
    EXPECT_FALSE(report.fitToShip());
    EXPECT_TRUE(std::any_of(report.all().begin(), report.all().end(), [](const Diagnostic& d) {
        return d.severity == E && d.message.contains(QLatin1String("cannot check the answers' spelling"));
    })) << describe(report.all()).toStdString();
}

TEST_F(PackCheck, EveryLevelHasFourDifferentPicturesThatCanBeDrawn) {
    setLine(imageLine(1), QStringLiteral("image=p99"));
    expectFindings(check(), {{imageLine(1), E, "no scene line for p99_1, p99_2, p99_3, p99_4"},
                             {firstSceneLine(1), W, "no level has image=p01"}});
    setLine(imageLine(2), QStringLiteral("image=p99"));
    expectFindings(check(), {{imageLine(1), E, "no scene line for p99_1"},
                             {imageLine(2), E, "image=p99 already shows the level at line 3"},
                             {firstSceneLine(1), W, "no level has image=p01"},
                             {firstSceneLine(2), W, "no level has image=p02"}});
    setLine(imageLine(2), QStringLiteral("image=p 2"));
    setLine(imageLine(1), QStringLiteral("image="));
    expectFindings(check(), {{imageLine(1), E, "no image= name"},
                             {imageLine(2), E, "image=p 2: a picture name holds only"},
                             {firstSceneLine(1), W, "no level has image=p01"},
                             {firstSceneLine(2), W, "no level has image=p02"}});
}

TEST_F(PackCheck, ScenesAreCheckedWithTheirLines) {
    usePictureCopy([](QStringList& scenes) {
        scenes[firstSceneLine(2) + 2 - 1] = QStringLiteral("# p02_3 is gone");
        scenes[firstSceneLine(3) - 1] = QStringLiteral("p03_1 #336699 e5");
        scenes[firstSceneLine(4) + 1 - 1] = QStringLiteral("p04_1 #336699 a1");
        scenes[firstSceneLine(5) + 1 - 1] =
            QString(scenes[firstSceneLine(5) - 1]).replace(QLatin1String("p05_1"), QLatin1String("p05_2"));
        if (scenes.last().isEmpty())
            scenes.removeLast();
        scenes.append(QStringLiteral("q01_1 #336699 a1@0.2,0.2,0.2"));
        scenes.append(QStringLiteral("q01_2 #2864c0 f01a"));
    });
    const int end = readAll(dataFile(QStringLiteral("pictures/scenes.txt"))).count(QLatin1Char('\n')) + 1;
    expectFindings(check(), {{imageLine(2), E, "no scene line for p02_3"},
                             {firstSceneLine(3), E, "p03_1 uses e5.svg"},
                             {imageLine(4), E, "no scene line for p04_2"},
                             {firstSceneLine(4) + 1, E, "p04_1 is already defined at line 15"},
                             {firstSceneLine(5) + 1, E, "p05_2 is the same picture as p05_1 (line 19)"},
                             {end, W, "no level has image=q01"},
                             {end + 1, W, "q01_2 is the same picture as p01_1 (line 3) of another level"}});
}

TEST_F(PackCheck, PicturesShowFourWaysAndNoLevelRepeatsAnother) {
    usePictureCopy([](QStringList& scenes) {
        // p02's fourth picture shows f02a largest, as its first two do.
        scenes[firstSceneLine(2) + 3 - 1] = QStringLiteral("p02_4 #30dcc0 f02a@0.5,0.5,0.6 f02c@0.2,0.2,0.2");
        // p04 is drawn from p03's symbols.
        for (int k = 0; k < 4; ++k)
            scenes[firstSceneLine(4) + k - 1] = QString(scenes[firstSceneLine(3) + k - 1])
                                                    .replace(QLatin1String("p03_"), QLatin1String("p04_"))
                                                    .replace(QLatin1String("#38"), QLatin1String("#40"));
    });
    expectFindings(
        check(),
        {{firstSceneLine(2) + 3, E, "p02_1, p02_2, p02_4 have the same main symbol, f02a"},
         {firstSceneLine(4), E, "the pictures of p04 share 3 symbols with those of p03 (scenes.txt:11)"}});
}

TEST_F(PackCheck, APictureShowingAnUnsuitableSymbolIsAnError) {
    usePictureCopy([](QStringList&) {});
    ASSERT_TRUE(writeAll(m_options.picturesDir + QStringLiteral("/unsuitable-symbols.txt"),
                         QStringLiteral("f03c  # not for this game\n")));
    expectFindings(check(), {{firstSceneLine(3) + 1, E,
                              "p03_2 shows f03c (f03c), which no picture may show: not for this game"},
                             {firstSceneLine(3) + 2, E, "p03_3 shows f03c"},
                             {firstSceneLine(3) + 3, E, "p03_4 shows f03c"}});
}

TEST_F(PackCheck, TheRoundOpensWithItsEasiestLevelAndEndsHarder) {
    // The two-word answer of the last level moves to the front.
    setLine(levelLine(1), QStringLiteral("level=كرة القدم"));
    setLine(decoyLine(1), QStringLiteral("other_letters=ابتث"));
    setLine(levelLine(25), QStringLiteral("level=شمس"));
    setLine(decoyLine(25), QStringLiteral("other_letters=ابتثجحخدذ"));
    expectFindings(check(),
                   {{levelLine(1), E, "the round's first level weighs 10 and its last 3"},
                    {levelLine(1), E, "level 1 of the round weighs 10, above the round's median of 4"}});
}

TEST_F(PackCheck, UnreadableFilesAreErrors) {
    QFile file(m_options.packFile);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[pack=1]\nlevel=\xff\xfe\n");
    file.close();
    Report report;
    checkPack(m_options, report);
    expectFindings(report, {{0, E, "not valid UTF-8"}});

    m_options.picturesDir = m_dir.filePath(QStringLiteral("nowhere"));
    m_lines = {QStringLiteral("no pack here")};
    expectFindings(check(), {{0, E, "no \"[pack=\" line"}, {0, E, "no pictures"}});
}

} // namespace
} // namespace tarvolin::levels::test
