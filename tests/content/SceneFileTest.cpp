// The grammar of scenes.txt and the automatic layout of symbols.

#include "SceneFile.h"
#include "ContentFixtures.h"

#include <QTemporaryDir>

#include <cmath>

namespace tarvolin::levels::test {
namespace {

constexpr Severity E = Severity::Error;

std::vector<Scene> parse(const QString& text, Report& report) {
    return parseScenes(text, QStringLiteral("scenes.txt"), report);
}

TEST(SceneGrammar, ReadsEveryPartOfALine) {
    Report report;
    const std::vector<Scene> scenes =
        parse(QStringLiteral(
                  "# a comment line\n"
                  "\n"
                  "  apple-red_3\t#FFEEDD/#112233  1f34e  ~1f468-200d-1f373@0.25,0.75,0.5,-30 # the cook\n"
                  "pear_1 #aabbcc 1f350\n"),
              report);
    expectFindings(report, {});
    ASSERT_EQ(scenes.size(), 2u);
    const Scene& apple = scenes[0];
    EXPECT_EQ(apple.line, 3);
    EXPECT_EQ(apple.pictureName, QStringLiteral("apple-red_3"));
    EXPECT_EQ(apple.name, QStringLiteral("apple-red"));
    EXPECT_EQ(apple.index, 3);
    EXPECT_EQ(apple.top, QColor(0xff, 0xee, 0xdd));
    EXPECT_EQ(apple.bottom, QColor(0x11, 0x22, 0x33));
    ASSERT_EQ(apple.symbols.size(), 2u);
    EXPECT_EQ(apple.symbols[0].stem, QStringLiteral("1f34e"));
    EXPECT_FALSE(apple.symbols[0].mirrored);
    EXPECT_FALSE(apple.symbols[0].placement.has_value());
    EXPECT_EQ(apple.symbols[1].stem, QStringLiteral("1f468-200d-1f373"));
    EXPECT_TRUE(apple.symbols[1].mirrored);
    ASSERT_TRUE(apple.symbols[1].placement.has_value());
    EXPECT_EQ(*apple.symbols[1].placement, (Placement{0.25, 0.75, 0.5, -30}));
    // A flat background is a gradient of one colour.
    EXPECT_EQ(scenes[1].top, scenes[1].bottom);
}

TEST(SceneGrammar, ReportsMalformedLinesAndKeepsTheOthers) {
    Report report;
    const std::vector<Scene> scenes = parse(QStringLiteral("apple_5 #ffffff 1f34e\n"
                                                           "apple #ffffff 1f34e\n"
                                                           "_1 #ffffff 1f34e\n"
                                                           "apple_1 #fff 1f34e\n"
                                                           "apple_1 #ffffff/#000000/#ffffff 1f34e\n"
                                                           "apple_1 #ffffff\n"
                                                           "apple_1 #ffffff 1F34E\n"
                                                           "apple_1 #ffffff 1f34e@0.5,0.5\n"
                                                           "apple_1 #ffffff 1f34e@1.2,0.5,0.3\n"
                                                           "apple_1 #ffffff 1f34e@0.5,0.5,0\n"
                                                           "apple_1 #ffffff 1f34e@0.5,0.5,0.3,400\n"
                                                           "apple_1 #ffffff 1f34e@0.5,x,0.3\n"
                                                           "apple_1 #ffffff 1 2 3 4 5 6 7 8 9 a\n"
                                                           "apple_1 #ffffff 1f34e\n"
                                                           "apple_1 #000000 1f34f\n"),
                                            report);
    expectFindings(report, {{1, E, "'apple_5' is not a picture name"},
                            {2, E, "'apple' is not a picture name"},
                            {3, E, "'_1' is not a picture name"},
                            {4, E, "the background must be"},
                            {5, E, "the background must be"},
                            {6, E, "apple_1 has no symbol"},
                            {7, E, "'1F34E' is not a symbol"},
                            {8, E, "a placement is @x,y,size"},
                            {9, E, "the centre must lie in the picture"},
                            {10, E, "the size must be above 0"},
                            {11, E, "the rotation must be"},
                            {12, E, "'x' is not a number"},
                            {13, E, "10 symbols without a placement"},
                            {15, E, "apple_1 is already defined at line 14"}});
    ASSERT_EQ(scenes.size(), 1u);
    EXPECT_EQ(scenes[0].line, 14);
}

// Every symbol lies wholly inside the picture, and no two of them overlap.
void expectInsideAndApart(const std::vector<Placement>& places) {
    for (size_t i = 0; i < places.size(); ++i) {
        const Placement& a = places[i];
        EXPECT_GE(a.x - a.size / 2, 0.0) << i;
        EXPECT_LE(a.x + a.size / 2, 1.0) << i;
        EXPECT_GE(a.y - a.size / 2, 0.0) << i;
        EXPECT_LE(a.y + a.size / 2, 1.0) << i;
        for (size_t j = i + 1; j < places.size(); ++j) {
            const Placement& b = places[j];
            const double apart = (a.size + b.size) / 2;
            EXPECT_TRUE(std::abs(a.x - b.x) >= apart - 1e-9 || std::abs(a.y - b.y) >= apart - 1e-9)
                << "symbols " << i << " and " << j << " of " << places.size() << " overlap";
        }
    }
}

TEST(AutoLayout, PlacesOneToNineSymbolsInReadingOrder) {
    const std::vector<Placement> one = autoLayout(1);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0], (Placement{0.5, 0.5, 0.72, 0}));

    const std::vector<Placement> two = autoLayout(2);
    ASSERT_EQ(two.size(), 2u);
    EXPECT_EQ(two[0].y, two[1].y);
    EXPECT_GT(two[0].x, two[1].x) << "the first symbol stands on the right";

    const std::vector<Placement> three = autoLayout(3);
    ASSERT_EQ(three.size(), 3u);
    EXPECT_LT(three[0].y, three[1].y) << "the first symbol is the top of the triangle";
    EXPECT_EQ(three[1].y, three[2].y);
    EXPECT_DOUBLE_EQ(three[0].x, (three[1].x + three[2].x) / 2);

    const std::vector<Placement> four = autoLayout(4);
    ASSERT_EQ(four.size(), 4u);
    EXPECT_EQ(four[0].y, four[1].y);
    EXPECT_EQ(four[2].y, four[3].y);
    EXPECT_EQ(four[0].x, four[2].x);
    EXPECT_GT(four[0].x, four[1].x);
    EXPECT_LT(four[0].y, four[2].y);

    for (int count = 1; count <= kMaxAutoLayoutSymbols; ++count) {
        SCOPED_TRACE(count);
        const std::vector<Placement> places = autoLayout(count);
        ASSERT_EQ(places.size(), static_cast<size_t>(count));
        expectInsideAndApart(places);
    }
    EXPECT_TRUE(autoLayout(0).empty());
    EXPECT_TRUE(autoLayout(kMaxAutoLayoutSymbols + 1).empty());
}

TEST(AutoLayout, LaysOutOnlyTheSymbolsWithoutAPlacement) {
    Report report;
    const std::vector<Scene> scenes =
        parse(QStringLiteral("a_1 #ffffff 1f34e 2600@0.1,0.1,0.2 1f350\n"), report);
    ASSERT_EQ(scenes.size(), 1u);
    const std::vector<Placement> places = scenes[0].layout();
    const std::vector<Placement> two = autoLayout(2);
    ASSERT_EQ(places.size(), 3u);
    EXPECT_EQ(places[0], two[0]);
    EXPECT_EQ(places[1], (Placement{0.1, 0.1, 0.2, 0}));
    EXPECT_EQ(places[2], two[1]);
}

TEST(SceneIdentity, SamePictureWrittenTwoWaysIsTheSame) {
    Report report;
    const std::vector<Scene> scenes = parse(QStringLiteral("a_1 #ffffff 1f34e\n"
                                                           "a_2 #FFFFFF/#ffffff 1f34e@0.5,0.5,0.72,360\n"
                                                           "a_3 #ffffff ~1f34e\n"
                                                           "a_4 #ffffff 1f34e@0.5,0.5,0.72,90\n"
                                                           "b_1 #fffffe 1f34e\n"),
                                            report);
    expectFindings(report, {});
    ASSERT_EQ(scenes.size(), 5u);
    EXPECT_EQ(scenes[0].fingerprint(), scenes[1].fingerprint());
    for (size_t i = 2; i < scenes.size(); ++i)
        EXPECT_NE(scenes[0].fingerprint(), scenes[i].fingerprint()) << scenes[i].pictureName.toStdString();
}

TEST(SceneGrammar, ReadsSetSymbolsTintsAndSettings) {
    Report report;
    const std::vector<Scene> scenes =
        parse(QStringLiteral("tent_1 desert noto:camel ~gi:tent=#8A5A2B@0.7,0.7,0.3 fluent:sun-with-face\n"
                             "tent_2 #ffffff gi:tent\n"
                             "tent_3 #ffffff gi:tent=#8a5a2b\n"
                             "tent_4 sea gi:tent\n"),
              report);
    expectFindings(report, {});
    ASSERT_EQ(scenes.size(), 4u);
    EXPECT_EQ(scenes[0].setting, QStringLiteral("desert"));
    ASSERT_EQ(scenes[0].symbols.size(), 3u);
    EXPECT_EQ(scenes[0].symbols[0].stem, QStringLiteral("noto:camel"));
    EXPECT_EQ(scenes[0].symbols[1].stem, QStringLiteral("gi:tent"));
    EXPECT_TRUE(scenes[0].symbols[1].mirrored);
    EXPECT_EQ(scenes[0].symbols[1].tint, QColor(0x8a, 0x5a, 0x2b));
    EXPECT_EQ(*scenes[0].symbols[1].placement, (Placement{0.7, 0.7, 0.3, 0}));
    EXPECT_FALSE(scenes[0].symbols[2].tint.has_value());
    // A tint and a setting are part of what a picture draws.
    EXPECT_NE(scenes[1].fingerprint(), scenes[2].fingerprint());
    EXPECT_NE(scenes[1].fingerprint(), scenes[3].fingerprint());
}

TEST(SceneGrammar, RejectsUnknownSetsSettingsAndTints) {
    Report report;
    const std::vector<Scene> scenes = parse(QStringLiteral("a_1 desert emoji:camel\n"
                                                           "a_1 desert noto:Camel\n"
                                                           "a_1 desert noto:\n"
                                                           "a_1 jungle noto:camel\n"
                                                           "a_1 desert noto:camel=#fff\n"
                                                           "a_1 desert noto:camel=red@0.5,0.5,0.3\n"),
                                            report);
    EXPECT_TRUE(scenes.empty());
    expectFindings(report, {{1, E, "'emoji:camel' is not a symbol"},
                            {2, E, "'noto:Camel' is not a symbol"},
                            {3, E, "'noto:' is not a symbol"},
                            {4, E, "or a setting (sky, sea,"},
                            {5, E, "a tint is =#rrggbb"},
                            {6, E, "a tint is =#rrggbb"}});
}

TEST(SceneGrammar, AFolderOfSceneFilesIsReadAsOneInNameOrder) {
    QTemporaryDir dir;
    ASSERT_TRUE(writeAll(dir.filePath(QStringLiteral("02.txt")), QStringLiteral("b_1 sea noto:fish\n"
                                                                                "a_2 sea noto:boat\n")));
    ASSERT_TRUE(writeAll(dir.filePath(QStringLiteral("01.txt")), QStringLiteral("# round 1\n"
                                                                                "a_1 sky noto:sun\n"
                                                                                "a_2 sky noto:cloud\n")));
    ASSERT_TRUE(writeAll(dir.filePath(QStringLiteral("notes.md")), QStringLiteral("not a scene\n")));
    Report report;
    std::vector<Scene> scenes;
    ASSERT_TRUE(loadScenes(dir.path(), scenes, report));
    ASSERT_EQ(scenes.size(), 3u);
    EXPECT_EQ(scenes[0].pictureName, QStringLiteral("a_1"));
    EXPECT_EQ(scenes[2].pictureName, QStringLiteral("b_1"));
    EXPECT_EQ(scenes[2].file, dir.filePath(QStringLiteral("02.txt")));
    ASSERT_EQ(report.all().size(), 1u);
    EXPECT_EQ(report.all()[0].file, dir.filePath(QStringLiteral("02.txt")));
    EXPECT_EQ(report.all()[0].line, 2);
    EXPECT_TRUE(report.all()[0].message.contains(QLatin1String("a_2 is already defined at 01.txt:3")));

    QTemporaryDir empty;
    Report none;
    EXPECT_FALSE(loadScenes(empty.path(), scenes, none));
    expectFindings(none, {{0, E, "no scene file"}});
}

} // namespace
} // namespace tarvolin::levels::test
