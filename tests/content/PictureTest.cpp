// Drawing scenes, and building the pictures of a pack file.

#include "ContentFixtures.h"
#include "PictureBuilder.h"
#include "PictureDescriptions.h"
#include "SceneRenderer.h"

#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QSet>
#include <QTemporaryDir>

namespace tarvolin::levels::test {
namespace {

Scene sceneOf(const QString& line) {
    Report report;
    const std::vector<Scene> scenes = parseScenes(line, QStringLiteral("scenes.txt"), report);
    EXPECT_TRUE(report.all().empty()) << describe(report.all()).toStdString();
    return scenes.empty() ? Scene{} : scenes.front();
}

SymbolFolder fixtureSymbols() {
    return SymbolFolder(dataFile(QStringLiteral("pictures/svg")));
}

bool isRed(QRgb c) {
    return qRed(c) > 180 && qGreen(c) < 90 && qBlue(c) < 110;
}

bool isYellow(QRgb c) {
    return qRed(c) > 200 && qGreen(c) > 160 && qBlue(c) < 120;
}

TEST(SceneDrawing, DrawsTheBackgroundAndTheSymbolsWhereTheSceneSays) {
    QString error;
    const QImage picture = renderScene(sceneOf(QStringLiteral("a_1 #204080/#80c0ff a1@0.25,0.25,0.3")),
                                       fixtureSymbols(), 200, &error);
    ASSERT_FALSE(picture.isNull()) << error.toStdString();
    EXPECT_EQ(picture.size(), QSize(200, 200));

    QSet<QRgb> colours;
    for (int y = 0; y < picture.height(); y += 4) {
        for (int x = 0; x < picture.width(); x += 4)
            colours.insert(picture.pixel(x, y));
    }
    EXPECT_GT(colours.size(), 50) << "a blank picture";

    EXPECT_TRUE(isRed(picture.pixel(50, 50))) << "the circle's centre";
    EXPECT_FALSE(isRed(picture.pixel(150, 150)));
    // The gradient runs from dark at the top to light at the bottom.
    EXPECT_LT(qBlue(picture.pixel(100, 2)) + qGreen(picture.pixel(100, 2)),
              qBlue(picture.pixel(100, 197)) + qGreen(picture.pixel(100, 197)));
    // The shadow falls just below the circle (its edge is at y = 76.7): darker there than at the same
    // height on the other side, which the symmetric light leaves alike.
    EXPECT_LT(qGray(picture.pixel(50, 79)) + 10, qGray(picture.pixel(150, 79)));
    EXPECT_NEAR(qGray(picture.pixel(50, 12)), qGray(picture.pixel(150, 12)), 3);
}

TEST(SceneDrawing, SettingsDrawAPlaceAndTintsColourASymbolsShape) {
    QString error;
    // The sea: a light sky above a deeper blue sea.
    const QImage sea =
        renderScene(sceneOf(QStringLiteral("a_1 sea a1@0.5,0.5,0.1")), fixtureSymbols(), 200, &error);
    ASSERT_FALSE(sea.isNull()) << error.toStdString();
    EXPECT_GT(qGray(sea.pixel(100, 40)), qGray(sea.pixel(100, 180)) + 40);
    EXPECT_GT(qBlue(sea.pixel(100, 180)), qRed(sea.pixel(100, 180)) + 60);
    // Every setting draws something of its own, and no two alike.
    QSet<QByteArray> drawn;
    for (const char* setting : kSettings) {
        const QImage picture =
            renderScene(sceneOf(QStringLiteral("a_1 %1 a1@0.1,0.1,0.05").arg(QLatin1String(setting))),
                        fixtureSymbols(), 64, &error);
        ASSERT_FALSE(picture.isNull()) << setting;
        drawn.insert(QByteArray(reinterpret_cast<const char*>(picture.constBits()), picture.sizeInBytes()));
    }
    EXPECT_EQ(drawn.size(), static_cast<qsizetype>(std::size(kSettings)));

    // The white square of the game-icons set is drawn as a dark silhouette, or in the tint given.
    const QImage plain = renderScene(sceneOf(QStringLiteral("a_1 #ffffff gi:block@0.5,0.5,0.5")),
                                     fixtureSymbols(), 100, &error);
    ASSERT_FALSE(plain.isNull()) << error.toStdString();
    EXPECT_LT(qGray(plain.pixel(50, 50)), 80);
    const QImage tinted = renderScene(
        sceneOf(QStringLiteral("a_1 #ffffff gi:block=#00c000@0.5,0.5,0.5 a1=#0000ff@0.1,0.1,0.1")),
        fixtureSymbols(), 100, &error);
    ASSERT_FALSE(tinted.isNull()) << error.toStdString();
    EXPECT_GT(qGreen(tinted.pixel(50, 50)), 150);
    EXPECT_LT(qRed(tinted.pixel(50, 50)), 60);
    EXPECT_GT(qBlue(tinted.pixel(10, 10)), 150) << "a tinted colour symbol takes the tint too";
    EXPECT_FALSE(isRed(tinted.pixel(10, 10)));
}

TEST(SceneDrawing, ClipPathsAndReferencesOfTheArtworkSetsAreHonoured) {
    // A blue square clipped to a disc through <use href>: drawn without the clip it would fill the symbol's
    // whole square, and without the reference the disc would come out black.
    QString error;
    const QImage picture = renderScene(sceneOf(QStringLiteral("a_1 #ffffff noto:clipped@0.5,0.5,1")),
                                       fixtureSymbols(), 128, &error);
    ASSERT_FALSE(picture.isNull()) << error.toStdString();
    const QRgb centre = picture.pixel(64, 64);
    EXPECT_GT(qBlue(centre), 180);
    EXPECT_LT(qRed(centre), 80);
    EXPECT_GT(qGray(picture.pixel(8, 8)), 200) << "the corner lies outside the disc";
    EXPECT_GT(qGray(picture.pixel(64, 6)), 200);
}

TEST(SceneDrawing, ASymbolIsDrawnOnceAsLargeAsItsLargestUse) {
    SymbolFolder symbols(dataFile(QStringLiteral("pictures/svg")));
    QString error;
    EXPECT_EQ(symbols.raster(QStringLiteral("a1"), &error).width(), kSymbolRasterSide) << "no use announced";
    symbols.needSide(QStringLiteral("b2"), 90);
    symbols.needSide(QStringLiteral("b2"), 130);
    symbols.needSide(QStringLiteral("b2"), 40);
    const QImage b2 = symbols.raster(QStringLiteral("b2"), &error);
    EXPECT_EQ(b2.size(), QSize(130, 130));
    // Kept: a second picture gets the same drawing.
    EXPECT_EQ(symbols.raster(QStringLiteral("b2"), &error).cacheKey(), b2.cacheKey());
    EXPECT_TRUE(symbols.raster(QStringLiteral("e5"), &error).isNull());
    EXPECT_FALSE(error.isEmpty());
}

TEST(SceneDrawing, MirrorsAndSizesSymbols) {
    // d4 is an L: full along the left, cut away at the top right.
    QString error;
    const QImage plain =
        renderScene(sceneOf(QStringLiteral("a_1 #ffffff d4")), fixtureSymbols(), 180, &error);
    const QImage mirrored =
        renderScene(sceneOf(QStringLiteral("a_1 #ffffff ~d4")), fixtureSymbols(), 180, &error);
    ASSERT_FALSE(plain.isNull());
    ASSERT_FALSE(mirrored.isNull());
    // The symbol covers 0.72 of the side around the centre: 25.2 to 154.8 pixels; the SVG's 36 units
    // map to 129.6 pixels, so its top block (units 4 to 14 high) lies near y = 50.
    const QPoint topLeft(55, 50);
    const QPoint topRight(125, 50);
    EXPECT_TRUE(isYellow(plain.pixel(topLeft)));
    EXPECT_FALSE(isYellow(plain.pixel(topRight)));
    EXPECT_FALSE(isYellow(mirrored.pixel(topLeft)));
    EXPECT_TRUE(isYellow(mirrored.pixel(topRight)));
    EXPECT_FALSE(isYellow(plain.pixel(10, 10))) << "outside the symbol";
}

TEST(SceneDrawing, AMissingSymbolGivesNoPicture) {
    QString error;
    const QImage picture =
        renderScene(sceneOf(QStringLiteral("a_1 #ffffff a1 e5")), fixtureSymbols(), 100, &error);
    EXPECT_TRUE(picture.isNull());
    EXPECT_TRUE(error.contains(QLatin1String("e5.svg"))) << error.toStdString();
    EXPECT_FALSE(fixtureSymbols().validate(QStringLiteral("e5")).isEmpty());
    EXPECT_TRUE(fixtureSymbols().validate(QStringLiteral("a1")).isEmpty());
}

TEST(PictureDescription, NamesTheSymbolsLargestFirstOnceEachAndWhereTheyAre) {
    ArabicNames names;
    names.insert(QStringLiteral("camel"), QStringLiteral("جمل"));
    names.insert(QStringLiteral("palm-tree"), QStringLiteral("نخلة"));
    SymbolKeys keys;
    keys.insert(QStringLiteral("1f42a"), QStringLiteral("camel"));

    // The palm is drawn larger, so it is said first; the camel is one thing whatever set draws it.
    EXPECT_EQ(
        describeScene(sceneOf(QStringLiteral("a_1 desert noto:camel@0.3,0.6,0.3 fluent:palm-tree@0.7,0.5,0.6 "
                                             "1f42a@0.8,0.8,0.2")),
                      keys, names),
        QStringLiteral("نخلة وجمل في الصحراء"));
    // Laid out together they keep the written order; a colour background adds no place.
    EXPECT_EQ(describeScene(sceneOf(QStringLiteral("a_2 #ffffff noto:camel twemoji:palm-tree")), keys, names),
              QStringLiteral("جمل ونخلة"));
    // Symbols without an Arabic name are left out; with none named the picture is still called something.
    EXPECT_EQ(describeScene(sceneOf(QStringLiteral("a_3 sea gi:anvil noto:camel")), keys, names),
              QStringLiteral("جمل في البحر"));
    EXPECT_EQ(describeScene(sceneOf(QStringLiteral("a_4 underwater gi:anvil")), keys, names),
              QStringLiteral("صورة تحت الماء"));
    EXPECT_EQ(describeScene(sceneOf(QStringLiteral("a_4 #102030 gi:anvil")), keys, names),
              QStringLiteral("صورة"));
}

TEST(PictureDescription, EverySettingHasAPlaceAndTheNamesFileSkipsCommentsAndBlanks) {
    for (const char* setting : kSettings)
        EXPECT_FALSE(settingPhrase(QLatin1String(setting)).isEmpty()) << setting;
    EXPECT_TRUE(settingPhrase(QStringLiteral("#ffffff")).isEmpty());

    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("symbols-ar.tsv"));
    ASSERT_TRUE(writeAll(path, QStringLiteral("# key\tname\nlion\tأسد\tcldr\nempty\t \n\nbare\n"
                                              "tiger\t  نمر  \n"
                                              "bowl\t\u202bوعاء\u202c طعام\u200f\n")));
    const ArabicNames names = ArabicNames::load(path);
    EXPECT_EQ(names.size(), 3);
    EXPECT_EQ(names.nameOf(QStringLiteral("lion")), QStringLiteral("أسد"));
    EXPECT_EQ(names.nameOf(QStringLiteral("tiger")), QStringLiteral("نمر"));
    EXPECT_EQ(names.nameOf(QStringLiteral("bowl")), QStringLiteral("وعاء طعام"));
    EXPECT_EQ(ArabicNames::load(dir.filePath(QStringLiteral("none.tsv"))).size(), 0);
}

class PictureBuild : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_dir.isValid());
        m_options.levelsFile = dataFile(QStringLiteral("good.wav"));
        m_options.scenesFile = m_dir.filePath(QStringLiteral("scenes.txt"));
        m_options.svgDir = dataFile(QStringLiteral("pictures/svg"));
        m_options.outDir = m_dir.filePath(QStringLiteral("out"));
        m_options.qrcFile = m_dir.filePath(QStringLiteral("pictures.qrc"));
        m_options.size = 64;
        m_scenes = readAll(dataFile(QStringLiteral("pictures/scenes.txt")));
        ASSERT_TRUE(writeAll(m_options.scenesFile, m_scenes));
    }

    BuildSummary build(Report& report) { return buildPictures(m_options, report); }

    QStringList pictures() const {
        return QDir(m_options.outDir).entryList({QStringLiteral("*.jpg")}, QDir::Files, QDir::Name);
    }

    QTemporaryDir m_dir;
    BuildOptions m_options;
    QString m_scenes;
};

TEST_F(PictureBuild, DrawsFourJpegsPerLevelAndListsThem) {
    Report report;
    const BuildSummary summary = build(report);
    expectFindings(report, {});
    EXPECT_EQ(summary.pictures, 100);
    EXPECT_EQ(summary.rendered, 100);
    const QStringList files = pictures();
    ASSERT_EQ(files.size(), 100);
    EXPECT_EQ(files.front(), QStringLiteral("p01_1.jpg"));
    EXPECT_EQ(files.back(), QStringLiteral("p25_4.jpg"));

    const QImage picture(QDir(m_options.outDir).filePath(QStringLiteral("p07_2.jpg")), "JPEG");
    ASSERT_FALSE(picture.isNull());
    EXPECT_EQ(picture.size(), QSize(64, 64));

    const QString qrc = readAll(m_options.qrcFile);
    EXPECT_TRUE(qrc.contains(QLatin1String("<qresource prefix=\"/pictures\">")));
    EXPECT_EQ(qrc.count(QLatin1String("<file alias=\"")), 101);
    EXPECT_TRUE(qrc.contains(QLatin1String("<file alias=\"descriptions.tsv\">")));
    EXPECT_TRUE(qrc.contains(
        QStringLiteral("<file alias=\"p25_4.jpg\">%1</file>")
            .arg(
                QFileInfo(QDir(m_options.outDir).filePath(QStringLiteral("p25_4.jpg"))).absoluteFilePath())));
}

TEST_F(PictureBuild, WritesADescriptionOfEveryPictureBesideThem) {
    Report report;
    build(report);
    expectFindings(report, {});
    const QStringList lines = readAll(QDir(m_options.outDir).filePath(QStringLiteral("descriptions.tsv")))
                                  .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 100);
    EXPECT_EQ(lines.at(0), QStringLiteral("p01_1\tتفاحة"));
    EXPECT_EQ(lines.at(1), QStringLiteral("p01_2\tتفاحة وشجرة"));
    EXPECT_EQ(lines.at(2), QStringLiteral("p01_3\tشجرة ونجمة"));
    // The second level's own symbols have no Arabic name: only the star they share is said.
    EXPECT_EQ(lines.at(6), QStringLiteral("p02_3\tنجمة"));
    EXPECT_EQ(lines.at(4), QStringLiteral("p02_1\tصورة"));
}

TEST_F(PictureBuild, RedrawsOnlyWhatChangedAndDropsWhatNoLevelNeeds) {
    Report report;
    build(report);
    EXPECT_EQ(build(report).rendered, 0);

    // One scene changes: only its picture is drawn again.
    ASSERT_TRUE(
        writeAll(m_options.scenesFile,
                 QString(m_scenes).replace(QLatin1String("p03_2 "), QLatin1String("p03_2 #000000 b2 # "))));
    EXPECT_EQ(build(report).rendered, 1);

    // A bigger size redraws all of them.
    m_options.size = 72;
    EXPECT_EQ(build(report).rendered, 100);

    // A level less: its four pictures leave the folder and the listing.
    QString levels = readAll(dataFile(QStringLiteral("good.wav")));
    levels.replace(QLatin1String("image=p25"), QLatin1String("image=p24"));
    m_options.levelsFile = m_dir.filePath(QStringLiteral("ok.wav"));
    ASSERT_TRUE(writeAll(m_options.levelsFile, levels));
    const BuildSummary fewer = build(report);
    EXPECT_EQ(fewer.pictures, 96);
    EXPECT_EQ(fewer.rendered, 0);
    EXPECT_EQ(fewer.removed, 4);
    EXPECT_FALSE(pictures().contains(QStringLiteral("p25_1.jpg")));
    EXPECT_EQ(readAll(m_options.qrcFile).count(QLatin1String("<file alias=\"")), 97);
    expectFindings(report, {});
}

TEST_F(PictureBuild, FailsWhenALevelLacksAPicture) {
    ASSERT_TRUE(writeAll(m_options.scenesFile,
                         QString(m_scenes).replace(QLatin1String("p09_4 "), QLatin1String("# "))));
    Report report;
    build(report);
    expectFindings(report, {{0, Severity::Error, "missing picture: no line for p09_4"}});

    ASSERT_TRUE(writeAll(m_options.scenesFile, m_scenes + QStringLiteral("p01_1 #ffffff a1\n")));
    Report duplicate;
    build(duplicate);
    EXPECT_FALSE(duplicate.fitToShip());
}

} // namespace
} // namespace tarvolin::levels::test
