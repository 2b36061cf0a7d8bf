// What the end-to-end tests share: a real tarvolin-service on loopback, the players' profiles on this
// machine, their accounts made through the game's login screen, and a second player speaking the protocol
// directly.
#pragma once

#include "ServiceProcess.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelSuccessViewController.h"
#include "core/LevelsInfoReader.h"
#include "multiplayer/AccountViewController.h"
#include "multiplayer/GameCenterManager.h"
#include "multiplayer/LeaderboardViewController.h"
#include "multiplayer/LoginViewController.h"
#include "platform/Dispatch.h"
#include "platform/gamekit/GKEventChannel.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "platform/gamekit/GKMatch.h"
#include "platform/gamekit/GKMatchPickers.h"
#include "platform/gamekit/GKTurnBasedMatch.h"
#include "progress/BonusManager.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/SessionManager.h"
#include "progress/UserStatsManager.h"
#include "screens/MainViewController.h"
#include "screens/Screens.h"
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QTest>
#include <QWebSocket>
#include <gtest/gtest.h>

namespace {

// Two accounts made through the game: the first then plays from outside it (a RawPlayer with its token), the
// second goes on in the game.
struct TwoAccounts {
    QString otherToken, other, local;
};

class TwoPlayers : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        dataDir = new QTemporaryDir();
        service = new ServiceProcess();
        port = service->start(TARVOLIN_SERVICE_BINARY, dataDir->filePath("e2e.db"), {}, 10000);
        ASSERT_NE(port, 0) << "tarvolin-service did not start";
    }
    static void TearDownTestSuite() {
        delete service;
        delete dataDir;
    }

    void SetUp() override {
        platform.setServiceUrl(QStringLiteral("http://127.0.0.1:%1").arg(port));
        enter(QString());
    }
    void TearDown() override { LevelsInfoReader::setResourceRoot(QStringLiteral(":/levels")); }

    // A player's own profile on this machine, as a fresh start of the game.
    void enter(const QString& profile) {
        if (!profile.isEmpty()) {
            platform.useProfile(profile);
        }
        registerScreens(Platform::shared().navigator());
        LevelsInfoReader::setResourceRoot(platform.folder());
        QFile f(QDir(platform.folder()).filePath("ok.wav"));
        if (!f.exists()) {
            platform.writePackFile(2, QStringLiteral("نجم"), QStringLiteral("ابتثجحخدذ"));
        }
        LevelsInfoReader::sharedInstance().loadAllPacksLevelsWithEnc("ok", false);
    }

    TwoAccounts twoAccounts(const QString& otherProfile, const QString& otherName,
                            const QString& localProfile, const QString& localName) {
        TwoAccounts out;
        enter(otherProfile);
        createAccount(otherName);
        out.otherToken = Platform::shared().gameService().token();
        out.other = GKLocalPlayer::localPlayer().playerID();
        enter(localProfile);
        createAccount(localName);
        out.local = GKLocalPlayer::localPlayer().playerID();
        return out;
    }

    // The player asks to log in from the main screen and, on the login screen, makes an account or logs in
    // to the one he has.
    void logIn(const QString& name, bool newAccount) {
        auto& nav = Platform::shared().navigator();
        auto* main = new MainViewController();
        nav.setRootViewController(main);
        main->loginToGameCenter();
        auto* login = qobject_cast<LoginViewController*>(nav.presentedViewController());
        ASSERT_NE(login, nullptr);
        login->submit(name, "password-" + QString::number(name.size()) + "x", newAccount);
        ASSERT_TRUE(QTest::qWaitFor(
            [] { return GameCenterManager::sharedInstance().currentStatus == "AUTHENTICATED"; }, 15000));
    }

    void createAccount(const QString& name) {
        logIn(name, true);
        if (::testing::Test::HasFatalFailure()) {
            return;
        }
        EXPECT_EQ(GameCenterManager::sharedInstance().lastAuthenticationSavedStatus, "AUTO");
        EXPECT_EQ(GKLocalPlayer::localPlayer().displayName(), name);
        ASSERT_TRUE(QTest::qWaitFor([] { return Platform::shared().alerts().isVisible(); }, 5000));
        EXPECT_EQ(Platform::shared().alerts().title(),
                  QStringLiteral("لقد تم تسجيل دخول الى الجيم سنتر بنجاح"));
        Platform::shared().alerts().press(0);
        // A new player's first login puts a score of 0 on the leaderboard; it is there before play goes on,
        // so that it cannot overtake the report of the first level.
        bool placed = false;
        for (int attempt = 0; attempt < 50 && !placed; ++attempt) {
            auto load = std::make_shared<GKLeaderboard>();
            bool done = false;
            load->loadScoresWithCompletionHandler([&done](auto, auto) { done = true; });
            ASSERT_TRUE(QTest::qWaitFor([&done] { return done; }, 10000));
            placed = load->localPlayerScore.has_value();
            if (!placed) {
                QTest::qWait(100);
            }
        }
        ASSERT_TRUE(placed);
    }

    // Solves the player's next level; the after-level screen reports the total and shows the place.
    LevelSuccessViewController* solveNextLevel() {
        auto& nav = Platform::shared().navigator();
        auto& levels = LevelManager::sharedInstance();
        auto game = Game::initWithGameLevelAndGameRound(levels.getCurrentGameId(), levels.getCurrentRound());
        game->setLevelInfo(
            LevelsInfoReader::sharedInstance().getLevelInfoPackId(game->gameLevel, game->gameRound));
        auto* play = new GameViewController();
        play->setGame(game);
        nav.setRootViewController(play);
        play->gameSuccess();
        auto* popup = qobject_cast<LevelSuccessViewController*>(nav.presentedViewController());
        EXPECT_NE(popup, nullptr);
        if (popup) {
            // The place that comes back for the total just reported (an earlier load may answer first).
            EXPECT_TRUE(QTest::qWaitFor(
                [popup] {
                    return !popup->currentRankText().isEmpty() &&
                           GameCenterManager::sharedInstance().playerScore ==
                               ScorePointsManager::sharedInstance().totalPoints();
                },
                15000));
        }
        return popup;
    }

    // The leaderboard page as the game opens it, around the player; with friends true, the friends' list of
    // the jump view.
    LeaderboardViewController* leaderboard(bool friends) {
        auto* board = new LeaderboardViewController();
        Platform::shared().navigator().presentViewController(board);
        const auto settled = [board] {
            return QTest::qWaitFor(
                [board] { return !Platform::shared().progressHud().isVisible() && !board->loading(); },
                15000);
        };
        EXPECT_TRUE(settled());
        if (friends) {
            board->initialSegmentChanged(0);
            EXPECT_TRUE(settled());
            board->mainSegmentChanged(5);
            EXPECT_TRUE(settled());
        }
        return board;
    }
    static QStringList names(const LeaderboardViewController* board) {
        QStringList out;
        for (const QVariant& row : board->rows()) {
            out << row.toMap()["rank"].toString() + ":" + row.toMap()["name"].toString();
        }
        return out;
    }

    static inline ServiceProcess* service = nullptr;
    static inline QTemporaryDir* dataDir = nullptr;
    static inline int port = 0;
    TestPlatform platform;
};

// The other player of a live match, speaking to the service directly: HTTP for the search and its event
// WebSocket for the relay.
class RawPlayer {
public:
    RawPlayer(int port, QString token) : m_port(port), m_token(std::move(token)) {
        QObject::connect(&m_socket, &QWebSocket::textMessageReceived, [this](const QString& text) {
            m_messages.append(QJsonDocument::fromJson(text.toUtf8()).object());
        });
        QNetworkRequest request(QUrl(QStringLiteral("ws://127.0.0.1:%1/v1/events").arg(port)));
        request.setRawHeader("Authorization", "Bearer " + m_token.toLatin1());
        m_socket.open(request);
        EXPECT_TRUE(
            QTest::qWaitFor([this] { return m_socket.state() == QAbstractSocket::ConnectedState; }, 10000));
    }

    QJsonObject call(const QByteArray& verb, const QString& path, const QJsonObject& body = {}) {
        QNetworkRequest request(QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path)));
        request.setRawHeader("Authorization", "Bearer " + m_token.toLatin1());
        request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
        QNetworkReply* reply =
            m_network.sendCustomRequest(request, verb, QJsonDocument(body).toJson(QJsonDocument::Compact));
        EXPECT_TRUE(QTest::qWaitFor([reply] { return reply->isFinished(); }, 10000));
        const QJsonObject out = QJsonDocument::fromJson(reply->readAll()).object();
        reply->deleteLater();
        return out;
    }

    void send(const QJsonObject& message) {
        m_socket.sendTextMessage(QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact)));
    }

    // The next message of a type (and of a state, for state messages), waiting for it.
    QJsonObject next(const QString& type, int state = -1) {
        QJsonObject found;
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                for (qsizetype i = 0; i < m_messages.size(); ++i) {
                    if (m_messages[i].value("type").toString() == type &&
                        (state < 0 || m_messages[i].value("state").toInt() == state)) {
                        found = m_messages.takeAt(i);
                        return true;
                    }
                }
                return false;
            },
            10000))
            << type.toStdString();
        return found;
    }

private:
    int m_port;
    QString m_token;
    QNetworkAccessManager m_network;
    QWebSocket m_socket;
    QList<QJsonObject> m_messages;
};

// The outside player asks the game's player to be friends, and the game's player accepts.
inline void befriendFrom(RawPlayer& other, const QString& local) {
    const QJsonObject request =
        other.call("POST", "/v1/friend-requests", {{"playerID", local}, {"message", "hi"}})
            .value("request")
            .toObject();
    bool befriended = false;
    GKFriendRequest::answerFriendRequest(request.value("requestID").toString(), true,
                                         [&befriended](auto) { befriended = true; });
    ASSERT_TRUE(QTest::qWaitFor([&befriended] { return befriended; }, 10000));
}

} // namespace
