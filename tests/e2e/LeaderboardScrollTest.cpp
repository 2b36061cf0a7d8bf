// The leaderboard page on a real tarvolin-service filled with ten thousand players, drawn under the offscreen
// platform and scrolled with the finger: it opens around the player's rank in the middle, grows at its end as
// the list is dragged down and at its top when dragged at the top, and the rows stay whole and in place.
#include "Application.h"
#include "ServiceProcess.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "leaderboard_fill.h"
#include "multiplayer/GameCenterManager.h"
#include "multiplayer/LeaderboardViewController.h"
#include "multiplayer/LoginViewController.h"
#include "progress/ScorePointsManager.h"
#include "screens/MainViewController.h"
#include "screens/Screens.h"

#include <QApplication>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMouseEvent>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>

namespace {

constexpr qint64 kPlayers = 10'000;
constexpr qint64 kRank = 5'000;

QList<QQuickItem*> allItems(QQuickItem* root) {
    QList<QQuickItem*> items{root};
    for (QQuickItem* child : root->childItems()) {
        items += allItems(child);
    }
    return items;
}

QQuickItem* findItem(QQuickWindow* window, const QString& name) {
    for (QQuickItem* item : allItems(window->contentItem())) {
        if (item->objectName() == name && item->isVisible()) {
            return item;
        }
    }
    return nullptr;
}

class LeaderboardScroll : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dataDir = new QTemporaryDir();
        const QString db = dataDir->filePath("leaderboard.db");
        tarvolin::fill::fillLeaderboard(db.toStdString(), kPlayers);
        service = new ServiceProcess();
        port = service->start(TARVOLIN_SERVICE_BINARY, db, {"--rate-limit", "0"});
        ASSERT_NE(port, 0) << "tarvolin-service did not start";
    }
    static void TearDownTestSuite() {
        delete service;
        delete dataDir;
    }

    void SetUp() override {
        platform.setServiceUrl(QStringLiteral("http://127.0.0.1:%1").arg(port));
        registerScreens(Platform::shared().navigator());
        app.applicationDidFinishLaunchingWithOptions({});
        engine = createGameEngine();
        ASSERT_TRUE(engine && !engine->rootObjects().isEmpty());
        window = qobject_cast<QQuickWindow*>(engine->rootObjects().first());
        ASSERT_TRUE(window && QTest::qWaitForWindowExposed(window));
    }
    void TearDown() override { engine.reset(); }

    // A new account made on the login screen, whose points place it at `rank`.
    void logInAtRank(qint64 rank) {
        const qint64 points = tarvolin::fill::scoreForPlace(kPlayers, rank);
        // Points already made: the first login does not report a 0 for them.
        ScorePointsManager::sharedInstance().setTotalPoints(points);
        auto& nav = Platform::shared().navigator();
        auto* main = qobject_cast<MainViewController*>(nav.topViewController());
        ASSERT_NE(main, nullptr);
        main->loginToGameCenter();
        auto* login = qobject_cast<LoginViewController*>(nav.presentedViewController());
        ASSERT_NE(login, nullptr);
        login->submit(QStringLiteral("سارة"), QStringLiteral("password-of-sara"), true);
        ASSERT_TRUE(QTest::qWaitFor(
            [] { return GameCenterManager::sharedInstance().currentStatus == "AUTHENTICATED"; }, 15000));
        ASSERT_TRUE(QTest::qWaitFor([] { return Platform::shared().alerts().isVisible(); }, 5000));
        platform.takeMessages();
        bool reported = false;
        GameCenterManager::sharedInstance().reportScoreWithContextWithCompletionHandler(
            points, 0, [&reported] { reported = true; });
        ASSERT_TRUE(QTest::qWaitFor([&reported] { return reported; }, 15000));
    }

    bool settled() const {
        return QTest::qWaitFor(
            [this] { return !board->loading() && !Platform::shared().progressHud().isVisible(); }, 15000);
    }

    void mouse(QEvent::Type type, QPointF pos) {
        // As the platform delivers a finger's mouse: through the window system, with its state of buttons.
        if (type == QEvent::MouseButtonPress) {
            QTest::mousePress(window, Qt::LeftButton, {}, pos.toPoint());
        } else if (type == QEvent::MouseMove) {
            QTest::mouseMove(window, pos.toPoint());
        } else {
            QTest::mouseRelease(window, Qt::LeftButton, {}, pos.toPoint());
        }
    }

    // The finger across the list by dy pixels of the window; a fling lets go while still moving, a drag
    // holds still before it lets go.
    void drag(double dy, bool fling) {
        const QPointF from =
            list->mapToScene(QPointF(list->width() / 2, list->height() * (dy < 0 ? 0.8 : 0.2)));
        QPointF p = from;
        mouse(QEvent::MouseButtonPress, p);
        for (int i = 0; i < 10; ++i) {
            QTest::qWait(16);
            p.ry() += dy / 10;
            mouse(QEvent::MouseMove, p);
        }
        if (!fling) {
            QTest::qWait(200);
            mouse(QEvent::MouseMove, p);
        }
        QTest::qWait(16);
        mouse(QEvent::MouseButtonRelease, p);
        // Until the list rests.
        ASSERT_TRUE(QTest::qWaitFor([this] { return !list->property("moving").toBool(); }, 15000));
    }

    double offset() const {
        return list->property("contentY").toDouble() - list->property("originY").toDouble();
    }

    // The row drawn at the top edge of the list: its index and the rank it shows. A list at rest may stop
    // with the gap between two rows at its edge; the row just below the gap is the top row then.
    QPair<int, QString> topRow() const {
        int index = -1;
        const double top = list->property("contentY").toDouble();
        const double gap = list->property("spacing").toDouble();
        for (double y = top + 1; index < 0 && y <= top + gap + 2; y += 1) {
            QMetaObject::invokeMethod(list, "indexAt", Q_RETURN_ARG(int, index),
                                      Q_ARG(qreal, list->width() / 2), Q_ARG(qreal, y));
        }
        QQuickItem* row = findItem(window, QStringLiteral("scoreRow%1").arg(index));
        QString rank;
        if (row) {
            for (QQuickItem* child : row->childItems()) {
                if (rank.isEmpty() && child->property("text").isValid()) {
                    rank = child->property("text").toString();
                }
            }
        }
        return {index, rank};
    }

    // The rows are one run of ranks with none missing or twice, and the list draws what the page holds.
    void expectContiguous() const {
        const auto& scores = board->leaderboardScores;
        ASSERT_FALSE(scores.isEmpty());
        for (qsizetype i = 1; i < scores.size(); ++i) {
            ASSERT_EQ(scores.at(i).rank, scores.at(i - 1).rank + 1) << "at row " << i;
        }
        EXPECT_EQ(list->property("count").toInt(), scores.size());
        // At rest the list still brings its nearest row into view, which a busy machine draws a little later.
        (void)QTest::qWaitFor([this] { return topRow().first >= 0; }, 20000);
        const auto [index, rank] = topRow();
        ASSERT_GE(index, 0);
        EXPECT_EQ(rank, board->rows().at(index).toMap().value("rank").toString());
    }

    TestPlatform platform;
    AppDelegate app;
    std::unique_ptr<QQmlApplicationEngine> engine;
    QQuickWindow* window = nullptr;
    LeaderboardViewController* board = nullptr;
    QQuickItem* list = nullptr;
    QElapsedTimer clock;

    static inline ServiceProcess* service = nullptr;
    static inline QTemporaryDir* dataDir = nullptr;
    static inline int port = 0;
};

TEST_F(LeaderboardScroll, GrowsAtBothEndsWithContiguousRowsThatStayInPlace) {
    clock.start();
    logInAtRank(kRank);
    board = new LeaderboardViewController();
    Platform::shared().navigator().presentViewController(board);
    ASSERT_TRUE(settled());
    ASSERT_TRUE(QTest::qWaitFor([this] { return (list = findItem(window, "scoresList")) != nullptr; }, 5000));
    ASSERT_EQ(GameCenterManager::sharedInstance().playerRank, kRank);
    ASSERT_EQ(board->leaderboardScores.size(), 100);
    EXPECT_EQ(board->leaderboardScores.first().rank, kRank - 50);
    // The player's own row is on the screen.
    QTest::qWait(100);
    const int mine = static_cast<int>(kRank - board->leaderboardScores.first().rank);
    EXPECT_TRUE(board->rows().at(mine).toMap().value("isLocal").toBool());
    ASSERT_TRUE(QTest::qWaitFor(
        [this, mine] { return findItem(window, QStringLiteral("scoreRow%1").arg(mine)); }, 5000));
    QQuickItem* myRow = findItem(window, QStringLiteral("scoreRow%1").arg(mine));
    const double myY = myRow->y() - list->property("contentY").toDouble();
    EXPECT_GE(myY, 0);
    EXPECT_LE(myY + myRow->height(), list->height());
    expectContiguous();

    // Down: each hundred's last row brings the next hundred.
    const qint64 first = board->leaderboardScores.first().rank;
    for (int drags = 0; board->leaderboardScores.size() < 300 && drags < 200; ++drags) {
        drag(-list->height() * 0.9, true);
        ASSERT_TRUE(settled());
        EXPECT_EQ(board->leaderboardScores.first().rank, first);
        expectContiguous();
    }
    ASSERT_GE(board->leaderboardScores.size(), 300);

    // Up to the top of what is loaded; a drag there brings the hundred above, and the rows on the screen
    // stay.
    for (int drags = 0; offset() > 0.5 && drags < 200; ++drags) {
        drag(list->height() * 0.9, true);
    }
    ASSERT_TRUE(settled());
    ASSERT_LE(offset(), 0.5);
    const auto before = topRow();
    ASSERT_EQ(before.first, 0);
    const qsizetype count = board->leaderboardScores.size();
    drag(list->height() * 0.3, false);
    ASSERT_TRUE(settled());
    ASSERT_TRUE(
        QTest::qWaitFor([this, count] { return list->property("count").toInt() == count + 100; }, 5000));
    QTest::qWait(100);
    EXPECT_EQ(board->leaderboardScores.first().rank, first - 100);
    const auto after = topRow();
    EXPECT_EQ(after.first, 100);
    EXPECT_EQ(after.second, before.second);
    expectContiguous();
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // A QApplication, as the game's own: QtTest's mouse events take the application for one when widgets are
    // linked in.
    QApplication app(argc, argv);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    Application::registerResources();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
