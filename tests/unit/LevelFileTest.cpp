// The level numbering, the level-file grammar and its failure rules, and the per-installation rotation.
#include "TestPlatform.h"
#include "core/Decoder.h"
#include "core/Game.h"
#include "core/LevelManager.h"
#include "core/LevelsInfoReader.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace {

// A pack of `count` levels named p<pack>l<index>.
QString pack(int packNumber, int count) {
    QString text = QStringLiteral("[pack=%1]\n").arg(packNumber);
    for (int i = 0; i < count; ++i) {
        text += QStringLiteral("level=حل\nimage=p%1l%2\n").arg(packNumber).arg(i);
    }
    return text;
}

class LevelFiles : public ::testing::Test {
protected:
    void SetUp() override { platform.useLevelFolder(); }

    void write(const QString& name, const QByteArray& bytes) {
        QFile f(QDir(platform.folder()).filePath(name));
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    void write(const QString& name, const QString& text) { write(name, text.toUtf8()); }

    TestPlatform platform;
};

TEST(LevelRecord, SolutionLineAndLimits) {
    auto two = LevelsInfoReader::levelWithString(QStringLiteral("  كرة القدم \nimage=x\n"));
    ASSERT_TRUE(two);
    EXPECT_EQ(two->fullSolution, QStringLiteral("كرة القدم"));
    EXPECT_EQ(two->solution, QStringLiteral("كرةالقدم"));

    EXPECT_TRUE(LevelsInfoReader::levelWithString(QStringLiteral("abcdefghijkl\n")));
    EXPECT_FALSE(LevelsInfoReader::levelWithString(QStringLiteral("abcdefghijklm\n")));
    // Blanks do not count towards the twelve.
    EXPECT_TRUE(LevelsInfoReader::levelWithString(QStringLiteral("a b c d e f g h i j k l\n")));
    EXPECT_FALSE(LevelsInfoReader::levelWithString(QStringLiteral("   \nimage=x\n")));
    EXPECT_FALSE(LevelsInfoReader::levelWithString(QStringLiteral("شمس")));
}

TEST(LevelRecord, FieldsAndTheirDefaults) {
    auto l = LevelsInfoReader::levelWithString(QStringLiteral(
        "باريس\nimage=paris\nother_letters=ابت\nwikipedia=first\nwiki=second\n"
        "timezone=+3h\nprice=70.9abc\ncontinent=europe\nfacts=a***b******c\n"
        "copyright_photo0=ignored\ncopyright_photo5=ignored\ncopyright_photo2=x\ncopyright_photo3=ok=1\n"
        "coordinates=48.85,2.35\nstory=a=b=c\nunknown=zzz\n]\n"));
    ASSERT_TRUE(l);
    EXPECT_EQ(l->imageName, QStringLiteral("paris"));
    EXPECT_EQ(l->otherLetters, QStringLiteral("ابت"));
    EXPECT_EQ(l->wikipediaUrl, QStringLiteral("second"));
    EXPECT_EQ(l->timezone, 3);
    EXPECT_DOUBLE_EQ(l->priceIndex, 70.9);
    EXPECT_EQ(l->getContinentName(), QStringLiteral("أوروبا"));
    EXPECT_EQ(l->facts, (QStringList{"a", "b", "", "c"}));
    EXPECT_TRUE(l->hasFacts);
    // Index 2 with one character is dropped; index 3 keeps what follows the first "=".
    EXPECT_EQ(l->copyrightArray, (QStringList{"", "", "ok=1", ""}));
    EXPECT_EQ(l->location, QStringLiteral("48.85,2.35"));
    EXPECT_EQ(l->story, QStringLiteral("a=b=c"));

    // Index 2 keeps a value of two characters.
    auto bare = LevelsInfoReader::levelWithString(QStringLiteral("شمس\ncopyright_photo2=ab\n"));
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->timezone, 0);
    EXPECT_EQ(bare->priceIndex, 0.0);
    EXPECT_FALSE(bare->hasFacts);
    EXPECT_TRUE(bare->facts.isEmpty());
    EXPECT_EQ(bare->copyrightArray, (QStringList{"", "ab", "", ""}));
    EXPECT_EQ(bare->getContinentName(), QStringLiteral(""));
}

TEST(LevelText, PacksSectionsAndNumbers) {
    QString error;
    const QString text = QStringLiteral("header level= is ignored? no: before the first pack\n") +
                         pack(1, 25) + QStringLiteral("[pack=dropped") + pack(2, 3);
    // "level=" before the first "[pack=" is ignored, and the section without a newline or "]" is dropped.
    auto result = LevelsInfoReader::parseLevelsText(text, true, &error);
    ASSERT_TRUE(result) << error.toStdString();
    ASSERT_EQ(result->packs.size(), 2);
    EXPECT_EQ(result->packs[0].size(), 25);
    EXPECT_EQ(result->packs[1].size(), 3);
    EXPECT_EQ(result->packs[1][0]->number, 26);
    EXPECT_EQ(result->packs[1][0]->imageName, QStringLiteral("p2l0"));

    auto flat = LevelsInfoReader::parseLevelsText(text, false, &error);
    ASSERT_TRUE(flat);
    EXPECT_TRUE(flat->packs.isEmpty());
    EXPECT_EQ(flat->levels.size(), 28);

    auto none = LevelsInfoReader::parseLevelsText(QStringLiteral("no packs here\nlevel=x\n"), true, &error);
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->packs.isEmpty());

    // An empty pack still counts as a pack.
    auto empty = LevelsInfoReader::parseLevelsText(QStringLiteral("[pack=1]\n") + pack(2, 1), true, &error);
    ASSERT_TRUE(empty);
    ASSERT_EQ(empty->packs.size(), 2);
    EXPECT_TRUE(empty->packs[0].isEmpty());
}

TEST(LevelText, BadRecordRefusesTheWholeFileWithItsPlace) {
    QString error;
    const QString text = pack(1, 2) + QStringLiteral("level=abcdefghijklmn\nimage=x\n");
    EXPECT_FALSE(LevelsInfoReader::parseLevelsText(text, true, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("level 3"))) << error.toStdString();
    EXPECT_FALSE(
        LevelsInfoReader::parseLevelsText(QStringLiteral("[pack=1]\nlevel=no newline"), true, &error));
}

TEST_F(LevelFiles, PackFileReadOnceAndRotated) {
    write("ok.wav", pack(1, 25) + pack(2, 25) + pack(3, 30));
    auto& reader = LevelsInfoReader::sharedInstance();
    reader.loadAllPacksLevelsWithEnc(QStringLiteral("ignored"), false);
    ASSERT_TRUE(reader.isPacksDataLoaded());
    EXPECT_EQ(reader.packCount(), 3);
    EXPECT_EQ(reader.getLevelInfoPackId(0, 0)->imageName, QStringLiteral("p1l0"));
    EXPECT_EQ(reader.getLevelInfoPackId(24, 0)->imageName, QStringLiteral("p1l24"));

    const qint64 r = reader.randomIndex();
    ASSERT_GE(r, 1);
    ASSERT_LE(r, 25);
    EXPECT_EQ(reader.getLevelInfoPackId(0, 1)->imageName, QStringLiteral("p2l%1").arg(r % 25));
    EXPECT_EQ(reader.getLevelInfoPackId(24, 2)->imageName, QStringLiteral("p3l%1").arg((r + 24) % 30));
    // Beyond the last pack there is no level to give.
    EXPECT_EQ(reader.getLevelInfoPackId(0, 3), nullptr);

    // Read once: a later change of the file is not seen in this run.
    write("ok.wav", pack(1, 25));
    reader.loadAllPacksLevelsWithEnc(QStringLiteral("ok"), false);
    EXPECT_EQ(reader.packCount(), 3);
}

TEST_F(LevelFiles, RotationAtItsEnds) {
    write("ok.wav", pack(1, 25) + pack(2, 25));
    platform.defaults().setIntegerForKey(25, "randomIndex");
    auto& reader = LevelsInfoReader::sharedInstance();
    reader.loadAllPacksLevelsWithEnc("ok", false);
    EXPECT_EQ(reader.getLevelInfoPackId(0, 1)->imageName, QStringLiteral("p2l0"));
    EXPECT_EQ(reader.getLevelInfoPackId(24, 1)->imageName, QStringLiteral("p2l24"));

    platform.restart();
    platform.defaults().setIntegerForKey(1, "randomIndex");
    auto& again = LevelsInfoReader::sharedInstance();
    again.loadAllPacksLevelsWithEnc("ok", false);
    EXPECT_EQ(again.getLevelInfoPackId(0, 1)->imageName, QStringLiteral("p2l1"));
    EXPECT_EQ(again.getLevelInfoPackId(24, 1)->imageName, QStringLiteral("p2l0"));
}

TEST_F(LevelFiles, RandomIndexIsDrawnOnceAndKept) {
    platform.random().queue({49});
    const qint64 first = LevelsInfoReader::sharedInstance().randomIndex();
    EXPECT_EQ(first, 49 % 25 + 1);
    EXPECT_EQ(platform.defaults().integerForKey("randomIndex"), first);

    platform.restart();
    platform.random().queue({3});
    EXPECT_EQ(LevelsInfoReader::sharedInstance().randomIndex(), first);
    EXPECT_EQ(platform.random().draws(), 0);
}

TEST_F(LevelFiles, MissingOrBrokenFileShowsTheErrorAndTriesAgain) {
    auto& reader = LevelsInfoReader::sharedInstance();
    reader.loadAllPacksLevelsWithEnc("ok", false);
    EXPECT_FALSE(reader.isPacksDataLoaded());
    ASSERT_EQ(platform.alerts().count(), 1);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("Error reading levels file"));

    // Not UTF-8.
    write("ok.wav", QByteArray("[pack=1]\nlevel=\xff\xfe\n"));
    reader.loadAllPacksLevelsWithEnc("ok", false);
    EXPECT_FALSE(reader.isPacksDataLoaded());
    EXPECT_EQ(platform.alerts().count(), 2);

    // A record that cannot be a level: the message, and nothing half-read.
    write("ok.wav", pack(1, 3) + QStringLiteral("level=abcdefghijklmnop\n"));
    reader.loadAllPacksLevelsWithEnc("ok", false);
    EXPECT_FALSE(reader.isPacksDataLoaded());
    EXPECT_EQ(platform.alerts().count(), 3);

    write("ok.wav", pack(1, 25));
    reader.loadAllPacksLevelsWithEnc("ok", false);
    EXPECT_TRUE(reader.isPacksDataLoaded());
    EXPECT_EQ(platform.alerts().count(), 3);
}

TEST_F(LevelFiles, PerKindFilesKeepAHundredAndScrambledFilesAreDecoded) {
    // Kind 1 reads "tindrelle.ttt"; kind 5 reads the scrambled "pictures.rfg".
    write("tindrelle.ttt", pack(1, 150));
    write("pictures.rfg", Decoder::encodeText(pack(1, 30)));
    auto& reader = LevelsInfoReader::sharedInstance();
    reader.loadLevelsIfRequired(1);
    reader.loadLevelsIfRequired(5);
    reader.loadLevelsIfRequired(12);
    EXPECT_EQ(reader.levelsData().value("tindrelle").size(), 100);
    ASSERT_EQ(reader.levelsData().value("pictures").size(), 30);
    EXPECT_EQ(reader.levelsData().value("pictures").at(7)->imageName, QStringLiteral("p1l7"));
    EXPECT_EQ(reader.levelsData().size(), 2);

    // The pack road keeps all of them.
    write("ok.wav", pack(1, 150));
    reader.loadAllPacksLevelsWithEnc("ok", false);
    EXPECT_EQ(reader.packsData()->at(0).size(), 150);

    // With a scrambled file the extension argument has no effect.
    write("riddles.rfg", Decoder::encodeText(pack(1, 2)));
    reader.loadLevelsInfoForFileExtensionWithEnc("riddles", "anything", true);
    EXPECT_EQ(reader.levelsData().value("riddles").size(), 2);
}

TEST_F(LevelFiles, LevelForAGameByKind) {
    write("tindrelle.ttt", pack(1, 60));
    platform.defaults().setIntegerForKey(5, "randomIndex");
    auto& reader = LevelsInfoReader::sharedInstance();
    // s = 5 + R - 1; index = s mod 25 + 25 × (R div 25).
    auto game = Game::initWithGameIdAndGameRound(1, 3);
    EXPECT_EQ(reader.getLevelInfoForGame(*game)->imageName, QStringLiteral("p1l7"));
    game = Game::initWithGameIdAndGameRound(1, 26);
    EXPECT_EQ(reader.getLevelInfoForGame(*game)->imageName, QStringLiteral("p1l%1").arg(30 % 25 + 25));
    // Past the end of the file: a random level.
    game = Game::initWithGameIdAndGameRound(1, 75);
    platform.random().queue({61});
    EXPECT_EQ(reader.getLevelInfoForGame(*game)->imageName, QStringLiteral("p1l1"));
    EXPECT_EQ(reader.getLevelInfoForGame(*Game::initWithGameIdAndGameRound(12, 0)), nullptr);
}

TEST(DecoderText, ShiftsEveryUnitByElevenBothWays) {
    const QString plain = QStringLiteral("[pack=1]\nlevel=شمس\n");
    const QString scrambled = Decoder::encodeText(plain);
    EXPECT_NE(scrambled, plain);
    EXPECT_EQ(scrambled.size(), plain.size());
    EXPECT_EQ(scrambled.at(8).unicode(), u'\n' + 11);
    EXPECT_EQ(Decoder::decodeText(scrambled), plain);
    // Below 11 the unit wraps as 16-bit arithmetic does.
    EXPECT_EQ(Decoder::decodeText(QString(QChar(char16_t(3)))).at(0).unicode(), char16_t(0xFFF8));
}

TEST(GameNumbers, InitialisersFillTheNumbersTheirOwnWay) {
    auto a = Game::initWithGameLevelAndGameRound(7, 3);
    EXPECT_EQ(a->gameId, 7);
    EXPECT_EQ(a->gameRound, 3);
    EXPECT_EQ(a->gameLevel, 7);
    auto b = Game::initWithGameLevel(57);
    EXPECT_EQ(b->gameId, 7);
    EXPECT_EQ(b->gameRound, 2);
    EXPECT_EQ(b->gameLevel, 57);
    EXPECT_EQ(b->levelInfo(), nullptr);
    auto c = Game::initWithGameIdAndGameRound(4, 2);
    EXPECT_EQ(c->gameLevel, 54);
}

TEST(GameNumbers, CatalogueAnswersNoneOutsideTwelveKinds) {
    EXPECT_TRUE(Game::getGameQuesWithId(12).isNull());
    EXPECT_TRUE(Game::getGameQuesWithId(-1).isNull());
    EXPECT_TRUE(Game::getGameOneWord(12).isNull());
    // A kind's name comes from the catalogue, not from what was stored.
    auto g = Game::initWithGameLevelAndGameRound(5, 0);
    g->setGameName(QStringLiteral("stored"));
    EXPECT_EQ(g->gameName(), QStringLiteral("طارفولين"));
}

TEST(LevelPosition, RoundsAndPositionsPersistAndAnnounce) {
    TestPlatform platform;
    int posted = 0;
    Platform::shared().notificationCenter().addObserver(&posted, NotificationLevelChanged,
                                                        [&posted](const Notification&) { ++posted; });
    auto& levels = LevelManager::sharedInstance();
    EXPECT_EQ(levels.currentLevel(), 0);
    levels.saveCurrentLevelTo(24);
    EXPECT_EQ(posted, 0);
    EXPECT_EQ(levels.getCurrentRound(), 0);
    EXPECT_EQ(levels.getCurrentGameId(), 24);
    EXPECT_TRUE(levels.isCurrentGameIsLastInRound());
    levels.incrementCurrentLevel();
    EXPECT_EQ(posted, 1);
    EXPECT_EQ(levels.getCurrentRound(), 1);
    EXPECT_EQ(levels.getCurrentGameId(), 0);
    EXPECT_EQ(levels.getCurrentRoundStartLevel(), 25);
    levels.incrementCurrentLevelToNextRoundStart();
    EXPECT_EQ(levels.currentLevel(), 50);
    auto current = levels.getCurrentGame();
    EXPECT_EQ(current->gameRound, 2);
    EXPECT_EQ(current->gameLevel, 50);
    levels.setLevelRewardedForSecondTime(7);

    platform.restart();
    auto& again = LevelManager::sharedInstance();
    EXPECT_EQ(again.currentLevel(), 50);
    EXPECT_TRUE(again.isLevelRewardedSecondTime(7));
    EXPECT_FALSE(again.isLevelRewardedSecondTime(8));
}

} // namespace
