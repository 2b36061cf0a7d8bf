// What makes a level's pictures four ways to the answer, and the order of levels inside a round.

#include "SceneRules.h"
#include "ContentFixtures.h"

#include <QTemporaryDir>

namespace tarvolin::levels::test {
namespace {

std::vector<Scene> scenesOf(const QString& text) {
    Report report;
    std::vector<Scene> scenes = parseScenes(text, QStringLiteral("scenes.txt"), report);
    EXPECT_TRUE(report.all().empty()) << describe(report.all()).toStdString();
    return scenes;
}

std::vector<const Scene*> pointers(const std::vector<Scene>& scenes) {
    std::vector<const Scene*> out;
    for (const Scene& s : scenes)
        out.push_back(&s);
    return out;
}

SymbolKeys camelKeys() {
    SymbolKeys keys;
    keys.insert(QStringLiteral("noto:camel"), QStringLiteral("camel"));
    keys.insert(QStringLiteral("fluent:camel"), QStringLiteral("camel"));
    keys.insert(QStringLiteral("1f42a"), QStringLiteral("camel"));
    return keys;
}

TEST(SceneRules, TheMainSymbolIsTheLargestAndTheFirstOfATie) {
    const std::vector<Scene> scenes =
        scenesOf(QStringLiteral("a_1 #ffffff noto:tent@0.3,0.3,0.2 noto:camel@0.6,0.6,0.5\n"
                                "a_2 #ffffff noto:tent noto:camel\n"
                                "a_3 #ffffff noto:tent noto:palm-tree noto:camel@0.5,0.5,0.3\n"));
    EXPECT_EQ(mainSymbolIndex(scenes[0]), 1);
    EXPECT_EQ(mainSymbolIndex(scenes[1]), 0);
    // Two laid out at 0.44 each: the placed one at 0.3 is smaller.
    EXPECT_EQ(mainSymbolIndex(scenes[2]), 0);
}

TEST(SceneRules, OneThingShownLargestInThreePicturesIsNearIdenticalWhateverItsSet) {
    const SymbolKeys keys = camelKeys();
    std::vector<Scene> scenes =
        scenesOf(QStringLiteral("a_1 desert noto:camel\n"
                                "a_2 #ffeecc fluent:camel noto:tent@0.2,0.8,0.2\n"
                                "a_3 farm gi:camel-head noto:tent\n"
                                "a_4 #ffffff 1f42a@0.5,0.5,0.6 noto:palm-tree@0.8,0.3,0.3\n"));
    std::vector<RepeatedMainSymbol> repeats = repeatedMainSymbols(pointers(scenes), keys);
    ASSERT_EQ(repeats.size(), 1u);
    EXPECT_EQ(repeats[0].key, QStringLiteral("camel"));
    ASSERT_EQ(repeats[0].scenes.size(), 3u);
    EXPECT_EQ(repeats[0].scenes[2]->pictureName, QStringLiteral("a_4"));

    // The same symbols, but the third picture shows the tent largest: two of four is allowed.
    scenes = scenesOf(QStringLiteral("a_1 desert noto:camel\n"
                                     "a_2 #ffeecc fluent:camel noto:tent@0.2,0.8,0.2\n"
                                     "a_3 farm gi:camel-head noto:tent\n"
                                     "a_4 #ffffff 1f42a@0.5,0.5,0.3 noto:palm-tree@0.5,0.3,0.6\n"));
    EXPECT_TRUE(repeatedMainSymbols(pointers(scenes), keys).empty());
}

TEST(SceneRules, LevelsThatShareMoreThanHalfOfTheSmallerSetAreAlike) {
    const SymbolKeys keys = camelKeys();
    const std::vector<Scene> a = scenesOf(QStringLiteral("a_1 desert noto:camel noto:tent\n"
                                                         "a_2 desert noto:palm-tree noto:sun\n"));
    const std::vector<Scene> b = scenesOf(QStringLiteral("b_1 desert fluent:camel noto:tent\n"
                                                         "b_2 #ffffff noto:sun noto:water-wave noto:boat\n"));
    const std::vector<Scene> c = scenesOf(QStringLiteral("c_1 sea noto:camel noto:ship\n"
                                                         "c_2 sea noto:fish noto:sun\n"));
    const std::vector<LevelSymbols> levels = {symbolsOfLevel(QStringLiteral("a"), pointers(a), keys),
                                              symbolsOfLevel(QStringLiteral("b"), pointers(b), keys),
                                              symbolsOfLevel(QStringLiteral("c"), pointers(c), keys)};
    EXPECT_EQ(levels[0].keys, (QStringList{"camel", "palm-tree", "sun", "tent"}));
    EXPECT_EQ(levels[0].first->pictureName, QStringLiteral("a_1"));
    // a and b share camel, sun and tent: three of a's four. a and c, and b and c, share two of four: half.
    const std::vector<SimilarLevels> alike = similarLevels(levels);
    ASSERT_EQ(alike.size(), 1u);
    EXPECT_EQ(alike[0].a, 0);
    EXPECT_EQ(alike[0].b, 1);
    EXPECT_EQ(alike[0].shared, (QStringList{"camel", "sun", "tent"}));
}

TEST(SceneRules, SymbolKeysComeFromTheIndexOrTheSymbolsOwnName) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("symbols.tsv"));
    ASSERT_TRUE(
        writeAll(path, QStringLiteral("# symbol\tkey\nnoto:camel\tcamel\n1f42a\tcamel\nbroken line\n")));
    const SymbolKeys keys = SymbolKeys::load(path);
    EXPECT_EQ(keys.keyOf(QStringLiteral("1f42a")), QStringLiteral("camel"));
    EXPECT_EQ(keys.keyOf(QStringLiteral("noto:camel")), QStringLiteral("camel"));
    // Not listed: another emoji set's name is the thing's name, game-icons keep their set, and a Twemoji
    // stem loses its variation selector.
    EXPECT_EQ(keys.keyOf(QStringLiteral("fluent:camel")), QStringLiteral("camel"));
    EXPECT_EQ(keys.keyOf(QStringLiteral("gi:camel")), QStringLiteral("gi:camel"));
    EXPECT_EQ(keys.keyOf(QStringLiteral("2600-fe0f")), QStringLiteral("2600"));
    EXPECT_EQ(SymbolKeys::load(dir.filePath(QStringLiteral("none.tsv"))).keyOf(QStringLiteral("1f42a")),
              QStringLiteral("1f42a"));
}

TEST(SceneRules, UnsuitableSymbolsMatchWholeWordsOfWhatASymbolShows) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("unsuitable-symbols.txt"));
    ASSERT_TRUE(writeAll(path, QStringLiteral("# what no picture shows\n"
                                              "pig            # pork\n"
                                              "boar\n"
                                              "gi:church      # a religious building\n"
                                              "couple-with-heart # not for all ages\n")));
    const UnsuitableSymbols list = UnsuitableSymbols::load(path);
    EXPECT_EQ(list.reasonFor(QStringLiteral("pig")), QStringLiteral("pork"));
    EXPECT_EQ(list.reasonFor(QStringLiteral("pig-face")), QStringLiteral("pork"));
    EXPECT_EQ(list.reasonFor(QStringLiteral("gi:pig-head")), QStringLiteral("pork"));
    EXPECT_EQ(list.reasonFor(QStringLiteral("couple-with-heart-woman-man")),
              QStringLiteral("not for all ages"));
    EXPECT_EQ(list.reasonFor(QStringLiteral("gi:church")), QStringLiteral("a religious building"));
    EXPECT_FALSE(list.reasonFor(QStringLiteral("wild-boar")).isNull())
        << "an entry without a reason still counts";
    // Words, not letters: a keyboard holds "boar", a piggy bank "pig", and the words must stand in a row.
    EXPECT_TRUE(list.reasonFor(QStringLiteral("keyboard")).isNull());
    EXPECT_TRUE(list.reasonFor(QStringLiteral("gi:piggy-bank")).isNull());
    EXPECT_TRUE(list.reasonFor(QStringLiteral("couple-with-red-heart")).isNull());
    EXPECT_TRUE(list.reasonFor(QStringLiteral("church")).isNull());
    EXPECT_TRUE(UnsuitableSymbols::load(dir.filePath(QStringLiteral("none.txt")))
                    .reasonFor(QStringLiteral("pig"))
                    .isNull());
}

TEST(SceneRules, ARoundOpensWithItsEasiestLevels) {
    EXPECT_EQ(answerWeight(QStringLiteral("شمس")), 3);
    EXPECT_EQ(answerWeight(QStringLiteral("كرة القدم")), 10);
    EXPECT_EQ(answerWeight(QStringLiteral("قمـر")), 3) << "a tatweel is no letter";

    EXPECT_TRUE(orderProblems({3, 3, 4, 4, 3, 5, 6, 5}).empty());
    EXPECT_TRUE(orderProblems({7}).empty());

    std::vector<OrderProblem> problems = orderProblems({5, 3, 4, 4, 5});
    ASSERT_EQ(problems.size(), 2u);
    EXPECT_EQ(problems[0].index, 0);
    EXPECT_TRUE(problems[0].why.contains(QLatin1String("first level weighs 5 and its last 5")));
    EXPECT_EQ(problems[1].index, 0);
    EXPECT_TRUE(problems[1].why.contains(QLatin1String("median of 4")));

    // Only the first five are held to the median; the sixth may be the hardest.
    problems = orderProblems({3, 3, 3, 3, 7, 9, 3, 4, 8});
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0].index, 4);
}

TEST(SceneRules, AnswersAreComparedWithTheirSpellingVariantsFolded) {
    EXPECT_EQ(foldedAnswer(QStringLiteral("أسد")), foldedAnswer(QStringLiteral("اسد")));
    EXPECT_EQ(foldedAnswer(QStringLiteral("مدرسة")), foldedAnswer(QStringLiteral("مدرسه")));
    EXPECT_EQ(foldedAnswer(QStringLiteral("مستشفى")), foldedAnswer(QStringLiteral("مستشفي")));
    EXPECT_EQ(foldedAnswer(QStringLiteral("كرة القدم")), foldedAnswer(QStringLiteral("كرةالقدم")));
    EXPECT_EQ(foldedAnswer(QStringLiteral("مؤمن")), foldedAnswer(QStringLiteral("مومن")));
    EXPECT_NE(foldedAnswer(QStringLiteral("قمر")), foldedAnswer(QStringLiteral("قمرة")));
}

} // namespace
} // namespace tarvolin::levels::test
