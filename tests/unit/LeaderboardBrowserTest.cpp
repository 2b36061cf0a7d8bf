// The leaderboard browser over a board of its own: where it opens, the jumps by thousands and hundreds,
// growing at both ends as the list scrolls, the friends, and the openings to pick a friend or an opponent.
#include "TestPlatform.h"
#include "multiplayer/GameCenterManager.h"
#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "multiplayer/LeaderboardViewController.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "screens/MainViewController.h"
#include "screens/PresentationUtil.h"

#include <QCoreApplication>
#include <gtest/gtest.h>

namespace {

class LeaderboardBrowser : public ::testing::Test {
protected:
    void SetUp() override {
        auto& gc = GameCenterManager::sharedInstance();
        // A board of `total` players, one point apart; three of them are friends.
        gc.scoresSource = [this](const GKLeaderboard& request, GameCenterManager::ScoresHandler done) {
            requests.append(request);
            QList<GKScore> scores;
            if (request.playerScope == GKLeaderboard::FriendsOnly) {
                for (qint64 rank : {7, 4000, 90000}) {
                    scores.append(score(rank, true));
                }
            } else if (!request.byPlayers) {
                const qint64 last = std::min(total, request.range.location + request.range.length - 1);
                for (qint64 rank = request.range.location; rank <= last; ++rank) {
                    scores.append(score(rank, false));
                }
            }
            done(scores, std::nullopt);
        };
        GKLocalPlayer::localPlayer().setAuthenticatedPlayer(
            GKPlayer{"T5000", QStringLiteral("أنا"), false, {}});
    }

    GKScore score(qint64 rank, bool isFriend) const {
        GKScore s;
        s.rank = rank;
        s.value = 1'000'000 - rank;
        s.player =
            GKPlayer{QStringLiteral("T%1").arg(rank), QStringLiteral("لاعب %1").arg(rank), isFriend, {}};
        return s;
    }

    // The page, opened as the game opens it, once the player's own rank is known.
    LeaderboardViewController* open(qint64 rank, qint64 type = 0) {
        GameCenterManager::sharedInstance().playerRank = rank;
        board = std::make_unique<LeaderboardViewController>();
        board->setOpenType(type);
        scrolls.clear();
        QObject::connect(board.get(), &LeaderboardViewController::scrollToRow, [this](int row, bool middle) {
            scrolls.append({row, middle});
        });
        board->playerScoreLoaded();
        return board.get();
    }
    qint64 firstRank() const { return board->leaderboardScores.first().rank; }
    qint64 lastRank() const { return board->leaderboardScores.last().rank; }
    GKLeaderboard::Range lastRange() const { return requests.last().range; }

    TestPlatform platform;
    qint64 total = 100'000;
    QList<GKLeaderboard> requests;
    std::unique_ptr<LeaderboardViewController> board;
    QList<QPair<int, bool>>
        scrolls; // the rows the view was told to bring into view, and whether to the middle
};

TEST_F(LeaderboardBrowser, OpensAroundThePlayerAndBringsHisRowToTheMiddle) {
    open(5000);
    EXPECT_EQ(firstRank(), 4950);
    EXPECT_EQ(board->leaderboardScores.size(), 100);
    ASSERT_EQ(scrolls.size(), 1);
    EXPECT_EQ(scrolls.first().first, 50);
    EXPECT_TRUE(scrolls.first().second);
    EXPECT_EQ(board->rows().at(50).toMap().value("isLocal"), true);
    EXPECT_EQ(board->rows().at(50).toMap().value("rank"), "5,000");
    EXPECT_EQ(board->currentRankText(), "5000");

    // Near the top the list starts at 1; an unknown rank starts there too and does not scroll.
    open(30);
    EXPECT_EQ(firstRank(), 1);
    EXPECT_EQ(scrolls.first().first, 30);
    open(0);
    EXPECT_EQ(firstRank(), 1);
    EXPECT_TRUE(scrolls.isEmpty());
}

TEST_F(LeaderboardBrowser, GrowsAtTheEndByFullHundredsOnly) {
    open(5000);
    board->tableViewWillDisplayRow(98);
    EXPECT_EQ(board->leaderboardScores.size(), 100);
    board->tableViewWillDisplayRow(99);
    EXPECT_EQ(lastRange().location, 5050);
    EXPECT_EQ(board->leaderboardScores.size(), 200);
    EXPECT_EQ(lastRank(), 5149);
    EXPECT_TRUE(scrolls.size() == 1); // appending moves nothing

    // At the end of the board a short page comes, and the list stops growing by itself.
    total = 5180;
    board->tableViewWillDisplayRow(199);
    EXPECT_EQ(lastRank(), 5180);
    const auto asked = requests.size();
    board->tableViewWillDisplayRow(static_cast<int>(board->leaderboardScores.size() - 1));
    EXPECT_EQ(requests.size(), asked);
}

TEST_F(LeaderboardBrowser, GrowsAtTheStartWhenDraggedAtTheTopKeepingTheRowsInView) {
    open(5000);
    board->scrollViewWillBeginDragging(12.5);
    EXPECT_EQ(firstRank(), 4950);
    board->scrollViewWillBeginDragging(0);
    EXPECT_EQ(firstRank(), 4850);
    EXPECT_EQ(board->leaderboardScores.size(), 200);
    EXPECT_EQ(scrolls.last().first, 100);
    EXPECT_FALSE(scrolls.last().second);

    // First rank 60: the 59 above come in; at rank 1 dragging does nothing.
    open(110);
    EXPECT_EQ(firstRank(), 60);
    board->scrollViewWillBeginDragging(0);
    EXPECT_EQ(lastRange().location, 1);
    EXPECT_EQ(lastRange().length, 59);
    EXPECT_EQ(firstRank(), 1);
    EXPECT_EQ(scrolls.last().first, 59);
    const auto asked = requests.size();
    board->scrollViewWillBeginDragging(0);
    EXPECT_EQ(requests.size(), asked);
}

TEST_F(LeaderboardBrowser, JumpsByThousandsAndHundredsAndShowsTheFriends) {
    open(5000);
    board->initialSegmentChanged(0);
    EXPECT_TRUE(board->multiSegmentVisible());
    EXPECT_EQ(board->mainSegment(), 4);
    EXPECT_EQ(firstRank(), 1);
    EXPECT_EQ(board->segment1(), 4);
    EXPECT_EQ(board->segment2(), -1);

    board->mainSegmentChanged(0); // 4001 to 5000
    EXPECT_EQ(firstRank(), 4001);
    EXPECT_EQ(board->segment1Titles(), (QStringList{"4,500", "4,400", "4,300", "4,200", "4,100"}));
    EXPECT_EQ(board->segment2Titles(), (QStringList{"5,000", "4,900", "4,800", "4,700", "4,600"}));
    board->segment1Changed(0);
    EXPECT_EQ(firstRank(), 4401);
    EXPECT_EQ(board->segment2(), -1);
    board->segment2Changed(4);
    EXPECT_EQ(firstRank(), 4501);
    EXPECT_EQ(board->segment1(), -1);
    board->segment2Changed(0);
    EXPECT_EQ(firstRank(), 4901);
    board->mainSegmentChanged(3);
    EXPECT_EQ(firstRank(), 1001);
    EXPECT_EQ(board->segment1(), 4);

    // The friends: asked with no length, the hundreds hidden, rows marked.
    board->mainSegmentChanged(5);
    EXPECT_EQ(requests.last().playerScope, GKLeaderboard::FriendsOnly);
    EXPECT_FALSE(board->hundredsVisible());
    ASSERT_EQ(board->rows().size(), 3);
    EXPECT_EQ(board->rows().at(0).toMap().value("isFriend"), true);
}

TEST_F(LeaderboardBrowser, TheInitialSegmentsAndTheOpeningsToPickAPlayer) {
    open(5000);
    board->initialSegmentChanged(1);
    EXPECT_EQ(firstRank(), 1);
    board->initialSegmentChanged(3);
    EXPECT_EQ(firstRank(), 4950);
    // The list around the player does not grow.
    const auto asked = requests.size();
    board->tableViewWillDisplayRow(99);
    board->scrollViewWillBeginDragging(0);
    EXPECT_EQ(requests.size(), asked);
    // The former opponents: nobody is asked about, the rows stay empty and the hint shows.
    board->initialSegmentChanged(2);
    QCoreApplication::processEvents();
    EXPECT_TRUE(board->rows().isEmpty());
    EXPECT_TRUE(board->playerActionsVisible());

    // To pick a friend: the list around rank... 0, as the rank is kept only on a normal opening.
    open(5000, LeaderboardViewController::PickFriend);
    EXPECT_EQ(board->initialSegment(), 3);
    EXPECT_EQ(firstRank(), 1);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("معركة مع صديق"));
    platform.alerts().press(0);
    open(5000, LeaderboardViewController::PickOpponent);
    EXPECT_EQ(board->initialSegment(), 2);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("معركة مع لاعب لعبت ضده مؤخرا"));
}

TEST_F(LeaderboardBrowser, BackClosesThePagesThatHoldIt) {
    auto& nav = Platform::shared().navigator();
    auto* main = new MainViewController();
    nav.setRootViewController(main);
    PresentationUtil::openGameCenterNavControllerWithPageNumAndType(main, 0, 1);
    auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(nav.presentedViewController());
    ASSERT_NE(pages, nullptr);
    auto* page = qobject_cast<LeaderboardViewController*>(pages->viewControllerArray().value(0));
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->openType, LeaderboardViewController::PickFriend);
    page->goBack();
    EXPECT_EQ(nav.presentedViewController(), nullptr);
    EXPECT_EQ(nav.topViewController(), main);
}

} // namespace
