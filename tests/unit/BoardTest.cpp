// The letter board: the tray's pool, the shuffle, the boxes' layout, both taps in their two phases, the check
// of the row, the help that acts on the board and the first level's gift.
#include "Taps.h"
#include "TestPlatform.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelSuccessViewController.h"
#include "core/LevelsInfoReader.h"
#include "progress/TutorialAlertsManager.h"
#include "screens/ColorUtil.h"

#include <gtest/gtest.h>

namespace {

class Board : public ::testing::Test {
protected:
    void SetUp() override { platform.useLevelFolder(); }

    // Opens the play screen on a level with this content; the shuffle leaves every tile at its own place.
    GameViewController* open(const QString& solution, const QString& other, qint64 level = 3,
                             qint64 round = 0) {
        auto game = Game::initWithGameLevelAndGameRound(level, round);
        auto info = std::make_shared<LevelInfo>();
        info->fullSolution = solution;
        info->solution = QString(solution).remove(' ');
        info->otherLetters = other;
        info->imageName = QStringLiteral("none");
        game->setLevelInfo(info);
        platform.keepTrayOrder();
        auto* vc = new GameViewController();
        vc->setGame(game);
        Platform::shared().navigator().setRootViewController(vc);
        return vc;
    }
    // The tray tile showing this letter (the n-th such tile).
    static LetterLabel* tile(GameViewController* vc, const QString& letter, int nth = 0) {
        for (LetterLabel* t : std::as_const(vc->lettersLabels)) {
            if (t->text() == letter && nth-- == 0) {
                return t;
            }
        }
        return nullptr;
    }
    void tap(GameViewController* vc, LetterLabel* t) {
        vc->tapTile(static_cast<int>(vc->lettersLabels.indexOf(t)));
    }
    void type(GameViewController* vc, const QString& letters) {
        tapLetters(vc, letters);
        platform.animator().completeAll();
    }
    void writePacks(int packs) {
        platform.writePackFile(packs, QStringLiteral("ق%1م"), QStringLiteral("ابتثجحخدذر"));
        LevelsInfoReader::sharedInstance().loadAllPacksLevelsWithEnc("ok", false);
    }
    LevelSuccessViewController* popup() {
        return qobject_cast<LevelSuccessViewController*>(
            Platform::shared().navigator().presentedViewController());
    }

    TestPlatform platform;
};

TEST_F(Board, PoolIsTheSolutionThenDecoysThenFiller) {
    auto* full = open("abcdefghijkl", "xyz");
    EXPECT_EQ(full->correctLetters.size(), 12);
    for (int i = 0; i < 12; ++i) {
        EXPECT_EQ(full->lettersLabels[i]->text(), QString(QChar('a' + i)));
        EXPECT_EQ(full->lettersLabels[i]->correctSolutionBoxPos, i);
    }

    auto* filler = open("abcde", "wxyz");
    QString tray;
    for (auto* t : std::as_const(filler->lettersLabels)) {
        tray += t->text();
    }
    EXPECT_EQ(tray, QStringLiteral("abcdewxyzتصخ"));
    EXPECT_EQ(filler->correctLetters.size(), 5);
    EXPECT_FALSE(filler->lettersLabels[5]->isCorrect);

    auto* cut = open("abcde", "ABCDEFGHIJKLMNOPQRST");
    EXPECT_EQ(cut->lettersLabels[11]->text(), QStringLiteral("G"));
}

TEST_F(Board, ShuffleSwapsPlacesNotLetters) {
    auto game = Game::initWithGameLevelAndGameRound(3, 0);
    auto info = std::make_shared<LevelInfo>();
    info->solution = info->fullSolution = "abcdefghijkl";
    game->setLevelInfo(info);
    // i=0 takes the place of tile 0 + 13 % 12 = 1; then every draw is 0.
    platform.random().queue({13, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
    auto* vc = new GameViewController();
    vc->setGame(game);
    Platform::shared().navigator().setRootViewController(vc);
    const auto& places = vc->layout().tiles;
    EXPECT_EQ(vc->lettersLabels[0]->frame(), places[1]);
    EXPECT_EQ(vc->lettersLabels[1]->frame(), places[0]);
    EXPECT_EQ(vc->lettersLabels[0]->text(), "a");
    for (auto* t : std::as_const(vc->lettersLabels)) {
        EXPECT_EQ(t->originalFrame, t->frame());
        EXPECT_EQ(t->solutionBoxPos, -1);
    }
}

TEST_F(Board, TheTrayIsReadAsItIsSeenNotInTheAnswersOrder) {
    auto game = Game::initWithGameLevelAndGameRound(3, 0);
    auto info = std::make_shared<LevelInfo>();
    info->solution = info->fullSolution = "abc";
    info->otherLetters = "defghijkl";
    game->setLevelInfo(info);
    // Tile 0 ("a") goes to place 3 and tile 3 to place 0; then tile 7 and tile 11 swap places.
    platform.random().queue({3, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0});
    auto* vc = new GameViewController();
    vc->setGame(game);
    Platform::shared().navigator().setRootViewController(vc);

    const QList<int> order = vc->trayOrder();
    ASSERT_EQ(order.size(), 12);
    // The places run right to left, top row first: reading them gives the tile at each place in turn.
    const auto& places = vc->layout().tiles;
    for (int k = 0; k < 12; ++k) {
        EXPECT_EQ(vc->lettersLabels[order[k]]->originalFrame, places[static_cast<size_t>(k)]) << k;
    }
    EXPECT_EQ(order[0], 3);
    EXPECT_EQ(order[3], 0);
    EXPECT_EQ(order[7], 11);
    EXPECT_EQ(order[11], 7);
    // Moving tiles into the boxes does not change the order: it follows where each tile lives in the tray.
    tap(vc, tile(vc, "b"));
    platform.animator().completeAll();
    EXPECT_EQ(vc->trayOrder(), order);
}

TEST_F(Board, ATileKnowsTheBoxItStandsInOnlyOnceItLands) {
    auto* vc = open("abcd", "efghijkl");
    auto* a = tile(vc, "a");
    auto* e = tile(vc, "e");
    EXPECT_EQ(a->box(), -1);
    tap(vc, e);
    // On its way the tile is in no box yet; a screen reader reads the box as empty until it lands.
    EXPECT_EQ(e->box(), -1);
    platform.animator().completeAll();
    EXPECT_EQ(e->box(), 0);
    tap(vc, e);
    EXPECT_EQ(e->box(), -1);
    platform.animator().completeAll();
    EXPECT_EQ(e->box(), -1);

    // A revealed letter stands in its own box for good.
    platform.random().queue({0});
    vc->revealRandomLetter();
    platform.animator().completeAll();
    ASSERT_TRUE(a->isRevealed);
    EXPECT_EQ(a->box(), 0);
}

TEST_F(Board, BoxesRunRightToLeftCentredInTheBar) {
    // Phone: the bar is 343 by 60 and a tile 50 wide, so a box is at most 37 wide.
    auto* five = open("abcde", "fghijkl");
    ASSERT_EQ(five->solutionBlocks.size(), 5);
    EXPECT_EQ(five->solutionBlocks[0]->frame(), QRectF(242, 12, 37, 36));
    EXPECT_EQ(five->solutionBlocks[4]->frame().x(), 242 - 4 * 43);
    EXPECT_EQ(five->solutionLetters.size(), 5);

    auto* twelve = open("abcdefghijkl", "");
    EXPECT_EQ(twelve->solutionBlocks[0]->frame(), QRectF(313, 12, 21, 36));
    EXPECT_EQ(twelve->solutionBlocks[11]->frame().x(), 313 - 11 * 27);

    // A phrase of two words is one run of boxes with no gap.
    auto* phrase = open("ab cd", "efghijkl");
    EXPECT_EQ(phrase->solutionBlocks.size(), 4);
}

TEST_F(Board, TrayTapTakesTheBoxAtOnceAndLandsAtTheEndOfTheMove) {
    auto* vc = open("abc", "defghijkl");
    auto* a = tile(vc, "a");
    auto* b = tile(vc, "b");
    tap(vc, a);
    EXPECT_EQ(a->solutionBoxPos, 0);
    EXPECT_EQ(vc->solutionBlocks[0]->tag(), 1);
    EXPECT_TRUE(vc->solutionLetters[0]->text().isEmpty());
    EXPECT_EQ(platform.animator().lastDuration(), 0.3);
    // A second tap before the first move ends takes the next box.
    tap(vc, b);
    EXPECT_EQ(b->solutionBoxPos, 1);
    EXPECT_EQ(vc->solutionBlocks[1]->tag(), 1);
    platform.animator().completeAll();
    EXPECT_EQ(vc->solutionLetters[0], a);
    EXPECT_EQ(vc->solutionLetters[1], b);
    EXPECT_EQ(a->recognizer(), LetterLabel::SolutionLetterTap);
    EXPECT_EQ(a->frame().size(), vc->solutionBlocks[0]->frame().size());
}

TEST_F(Board, TakingATileOutOfTheMiddleFreesThatBoxFirst) {
    auto* vc = open("abcd", "efghijkl");
    type(vc, "abe");
    ASSERT_EQ(vc->currentAnswer(), "abe");
    auto* b = tile(vc, "b");
    tap(vc, b);
    EXPECT_EQ(vc->solutionBlocks[1]->tag(), 0);
    EXPECT_EQ(b->solutionBoxPos, -1);
    EXPECT_EQ(vc->currentAnswer(), "ae");
    EXPECT_EQ(platform.animator().pending(), 1);
    platform.animator().completeAll();
    EXPECT_EQ(b->frame(), b->originalFrame);
    EXPECT_EQ(b->recognizer(), LetterLabel::LetterTap);
    type(vc, "f");
    EXPECT_EQ(tile(vc, "f")->solutionBoxPos, 1);
    EXPECT_EQ(vc->currentAnswer(), "afe");
}

TEST_F(Board, FullWrongRowFlashesAndStaysFull) {
    auto* vc = open("abc", "defghijkl");
    type(vc, "cba");
    EXPECT_EQ(vc->solutionBarImage(), "bg_solution_wrong");
    platform.scheduler().advance(0.49);
    EXPECT_EQ(vc->solutionBarImage(), "bg_solution_wrong");
    platform.scheduler().advance(0.01);
    EXPECT_EQ(vc->solutionBarImage(), "bg_solution");
    EXPECT_EQ(vc->currentAnswer(), "cba");
    // With every box taken a tray tap changes nothing.
    tap(vc, tile(vc, "d"));
    EXPECT_EQ(platform.animator().pending(), 0);
    EXPECT_EQ(tile(vc, "d")->solutionBoxPos, -1);
    EXPECT_EQ(popup(), nullptr);
}

TEST_F(Board, LettersNotTilesAreCompared) {
    writePacks(1);
    auto* vc = open("بابا", "تثجحخدذر");
    // The second ب goes first and the first ا last: the row still spells the answer.
    tap(vc, tile(vc, "ب", 1));
    tap(vc, tile(vc, "ا", 1));
    tap(vc, tile(vc, "ب", 0));
    tap(vc, tile(vc, "ا", 0));
    platform.animator().completeAll();
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->type, 0);
}

TEST_F(Board, SolvedLevelMovesOnAndBuildsTheNextBehindThePopup) {
    writePacks(2);
    LevelManager::sharedInstance().saveCurrentLevelTo(3);
    auto* vc = open("abc", "defghijkl");
    type(vc, "abc");
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->type, 0);
    EXPECT_EQ(popup()->solutionText(), "abc");
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 4);
    EXPECT_EQ(vc->game->gameLevel, 4);
    EXPECT_EQ(vc->levelText(), "5");
    EXPECT_EQ(vc->game->levelInfo()->imageName, "p0l4");
    EXPECT_EQ(vc->solutionBlocks.size(), 3);
    popup()->nextLevelAction();
    EXPECT_EQ(Platform::shared().navigator().presentedViewController(), nullptr);
    EXPECT_EQ(vc->game->gameLevel, 4);
}

TEST_F(Board, LastLevelOfARoundLeadsToTheNextRound) {
    writePacks(2);
    LevelManager::sharedInstance().saveCurrentLevelTo(24);
    auto* last = open("abc", "defghijkl", 24, 0);
    type(last, "abc");
    ASSERT_NE(popup(), nullptr);
    EXPECT_EQ(popup()->type, 3);
    EXPECT_EQ(LevelManager::sharedInstance().currentLevel(), 25);
    EXPECT_EQ(last->game->gameLevel, 24);
    popup()->nextLevelAction();
    // On to the first level of the next round.
    EXPECT_EQ(last->game->gameRound, 1);
    EXPECT_EQ(last->game->gameLevel, 0);
    EXPECT_FALSE(last->helpPopupVisible());
}

TEST_F(Board, RevealFromTheTrayFromAnotherBoxAndOntoAnOccupiedBox) {
    auto* vc = open("abcd", "efghijkl");
    // "b" sits in box 0, where "a" belongs; "e" in box 1.
    type(vc, "be");
    platform.random().queue({0}); // reveal the first hidden correct tile: "a"
    vc->revealRandomLetter();
    auto* a = tile(vc, "a");
    auto* b = tile(vc, "b");
    // "b" is sent back to the tray first, and "a" cannot be tapped from the start of its move.
    EXPECT_EQ(b->solutionBoxPos, -1);
    EXPECT_EQ(a->recognizer(), LetterLabel::NoRecognizer);
    platform.animator().completeAll();
    EXPECT_TRUE(a->isRevealed);
    EXPECT_EQ(a->titleColor(), ColorUtil::getGreenColor());
    EXPECT_EQ(vc->solutionLetters[0], a);
    EXPECT_EQ(b->recognizer(), LetterLabel::LetterTap);
    tap(vc, a);
    EXPECT_EQ(platform.animator().pending(), 0);
    EXPECT_EQ(vc->solutionLetters[0], a);

    // "d" stands in box 2; its reveal moves it on to box 3, where it belongs.
    type(vc, "d");
    ASSERT_EQ(tile(vc, "d")->solutionBoxPos, 2);
    platform.random().queue({2}); // hidden: b, c, d -> d
    vc->revealRandomLetter();
    // Box 2 is free again, yet its letter still counts in the row until another tile lands there.
    EXPECT_EQ(vc->solutionBlocks[2]->tag(), 0);
    platform.animator().completeAll();
    EXPECT_EQ(vc->solutionLetters[3], tile(vc, "d"));
    EXPECT_EQ(vc->currentAnswer(), "aedd");
    type(vc, "f");
    EXPECT_EQ(vc->currentAnswer(), "aefd");
}

TEST_F(Board, RevealingTheLastLettersSolvesTheLevel) {
    writePacks(1);
    auto* vc = open("ab", "cdefghijkl");
    vc->revealRandomLetter();
    platform.animator().completeAll();
    EXPECT_EQ(popup(), nullptr);
    vc->revealRandomLetter();
    platform.animator().completeAll();
    ASSERT_NE(popup(), nullptr);
}

TEST_F(Board, RemovingWrongLettersFreesTheirBoxes) {
    auto* vc = open("abc", "defghijkl");
    type(vc, "da");
    vc->removeWrongLetters();
    for (auto* t : std::as_const(vc->lettersLabels)) {
        EXPECT_EQ(t->isOnScreen(), t->isCorrect) << t->text().toStdString();
    }
    EXPECT_EQ(vc->lettersLabels.size(), 12);
    EXPECT_EQ(vc->solutionBlocks[0]->tag(), 0);
    EXPECT_EQ(vc->currentAnswer(), "a");
    // A removed tile takes no taps, and a second removal finds nothing more to do.
    tap(vc, tile(vc, "e"));
    EXPECT_EQ(platform.animator().pending(), 0);
    vc->removeWrongLetters();
    EXPECT_EQ(vc->currentAnswer(), "a");
    type(vc, "b");
    EXPECT_EQ(vc->currentAnswer(), "ba");
}

TEST_F(Board, FirstLevelGivesTwoLettersOncePerInstallation) {
    auto* vc = open("شمس", "ياتةملونر", 0, 0);
    EXPECT_TRUE(vc->helpPopupVisible());
    vc->dismissHelpAction();
    EXPECT_FALSE(vc->helpPopupVisible());
    EXPECT_TRUE(TutorialAlertsManager::sharedInstance().isAlertShownWithId("FirstLevelTutorial"));
    platform.scheduler().advance(1.9);
    EXPECT_FALSE(platform.alerts().isVisible());
    platform.scheduler().advance(0.1);
    ASSERT_TRUE(platform.alerts().isVisible());
    EXPECT_EQ(platform.alerts().title(), "مساعدة");
    EXPECT_EQ(platform.alerts().message(), "بما أنها أول مرحلة سنقوم بكشف حرفين من الحل لمساعدتك");
    platform.alerts().press(0);
    platform.animator().completeAll();
    platform.scheduler().advance(0.5);
    platform.animator().completeAll();
    int revealed = 0;
    for (auto* t : std::as_const(vc->correctLetters)) {
        revealed += t->isRevealed ? 1 : 0;
    }
    EXPECT_EQ(revealed, 2);

    // The same level again (replayed, or after a restart): the help shows, the gift does not.
    platform.restart();
    auto* again = open("شمس", "ياتةملونر", 0, 0);
    EXPECT_TRUE(again->helpPopupVisible());
    again->dismissHelpAction();
    platform.scheduler().advance(5);
    EXPECT_FALSE(platform.alerts().isVisible());
    again->displayHelpView();
    EXPECT_TRUE(again->helpPopupVisible());
}

TEST_F(Board, ALevelWithoutContentHasNoBoxesAndCannotBeAnswered) {
    auto* vc = new GameViewController();
    vc->setGame(Game::initWithGameLevel(30));
    platform.keepTrayOrder();
    Platform::shared().navigator().setRootViewController(vc);
    EXPECT_TRUE(vc->solutionBlocks.isEmpty());
    EXPECT_TRUE(vc->correctLetters.isEmpty());
    vc->tapTile(0);
    EXPECT_EQ(platform.animator().pending(), 0);
    vc->revealRandomLetter();
    EXPECT_EQ(platform.animator().pending(), 0);
}

} // namespace
