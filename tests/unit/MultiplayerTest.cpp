// The game-service session and what the game does with it: the login states, the after-level screen's roads
// with and without a login or a service, the round's end, the round state, the context number and the main
// screen's place on the leaderboard.
#include "TestPlatform.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelSuccessViewController.h"
#include "core/LevelsInfoReader.h"
#include "core/RoundFinishViewController.h"
#include "core/RoundManager.h"
#include "multiplayer/GameCenterManager.h"
#include "multiplayer/LoginViewController.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "platform/gamekit/GKMatch.h"
#include "platform/gamekit/GKTurnBasedMatch.h"
#include "progress/CreditsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QTcpServer>
#include <gtest/gtest.h>
#include <limits>

namespace {

GKError error(const QString& code) {
    return GKError{code, code, 400, 0};
}

class Session : public ::testing::Test {
protected:
    // Starts a login and returns what the handler saw, call by call.
    QStringList& login() {
        GameCenterManager::sharedInstance().authenticateLocalUserWithCompletionHandler(
            [this](ViewController* screen, std::optional<GKError> e) {
                calls << (screen ? QStringLiteral("screen")
                          : e    ? "error:" + e->code
                                 : QStringLiteral("none"));
                delete screen;
            });
        return calls;
    }
    GKLocalPlayer::AuthenticateHandler service() {
        return GKLocalPlayer::localPlayer().authenticateHandler();
    }

    TestPlatform platform;
    QStringList calls;
};

TEST_F(Session, ScreenThenNeitherSavesAutoForASilentNextStart) {
    auto& gc = GameCenterManager::sharedInstance();
    EXPECT_TRUE(gc.currentStatus.isNull());
    EXPECT_TRUE(gc.lastAuthenticationSavedStatus.isNull());
    // No token kept: the service hands over its login screen at once.
    login();
    EXPECT_EQ(calls, QStringList{"screen"});
    EXPECT_EQ(gc.currentStatus, "LOGIN_DIALOGUE_SHOWN");
    EXPECT_EQ(gc.lastAuthenticationSavedStatus, "LOGIN");
    service()(nullptr, std::nullopt);
    EXPECT_EQ(gc.lastAuthenticationSavedStatus, "AUTO");
    // The status waits for the change notification.
    EXPECT_EQ(gc.currentStatus, "LOGIN_DIALOGUE_SHOWN");
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"T1", "علي", false, {}});
    EXPECT_EQ(gc.currentStatus, "AUTHENTICATED");
    EXPECT_TRUE(gc.userAuthenticated);
    EXPECT_EQ(calls, (QStringList{"screen", "none"}));
    // The login of the player's own, from the screen, keeps its token in the profile.
    EXPECT_TRUE(platform.defaults().stringForKey(GKLocalPlayer::kTokenKey).isEmpty());

    platform.restart();
    EXPECT_EQ(GameCenterManager::sharedInstance().lastAuthenticationSavedStatus, "AUTO");
}

TEST_F(Session, ErrorsAfterAScreenAndWithoutOne) {
    auto& gc = GameCenterManager::sharedInstance();
    login();
    service()(nullptr, error("cancelled"));
    EXPECT_EQ(gc.currentStatus, "LOGIN_CANCELLED");
    EXPECT_EQ(gc.lastAuthenticationSavedStatus, "ERROR");
    GameCenterManager::sharedInstance().currentStatus = QStringLiteral("AUTHENTICATING");
    service()(nullptr, error("network"));
    EXPECT_EQ(gc.currentStatus, "OVER_DISMISSED");
    EXPECT_EQ(calls, (QStringList{"screen", "error:cancelled", "error:network"}));
}

TEST_F(Session, AlreadyAuthenticatedStaysAuthenticatingAndCallsNothing) {
    auto& gc = GameCenterManager::sharedInstance();
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"T1", "علي", false, {}});
    EXPECT_EQ(gc.currentStatus, "AUTHENTICATED");
    login();
    EXPECT_EQ(gc.currentStatus, "AUTHENTICATING");
    EXPECT_TRUE(calls.isEmpty());
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(std::nullopt);
    EXPECT_EQ(gc.currentStatus, "NOT_AUTHENTICATED");
    EXPECT_FALSE(gc.userAuthenticated);
}

TEST_F(Session, ARefusedLoginSaysWhenToTryAgainInWholeMinutes) {
    EXPECT_EQ(LoginViewController::messageForError(GKError{"too_many_attempts", "", 429, 601}),
              QStringLiteral("محاولات خاطئة كثيرة، حاول مرة أخرى بعد 11 دقيقة"));
    EXPECT_EQ(LoginViewController::messageForError(error("something_new")),
              QStringLiteral("حدث خطأ غير متوقع، حاول مرة أخرى"));
}

TEST_F(Session, MainScreenLogsInSilentlyOnlyAfterAnAutomaticLogin) {
    auto* prompt = new MainViewController();
    Platform::shared().navigator().setRootViewController(prompt);
    EXPECT_EQ(prompt->notLoggedLabel(), MainViewController::kLoginPrompt);
    EXPECT_TRUE(GameCenterManager::sharedInstance().currentStatus.isNull());

    GameCenterManager::sharedInstance().saveLastAuthStatus("AUTO");
    auto* silent = new MainViewController();
    Platform::shared().navigator().setRootViewController(silent);
    // Without a kept token the service hands over a login screen: it is not shown, and the prompt appears.
    EXPECT_EQ(GameCenterManager::sharedInstance().currentStatus, "LOGIN_DIALOGUE_SHOWN");
    EXPECT_EQ(silent->notLoggedLabel(), MainViewController::kLoginPrompt);
    EXPECT_EQ(Platform::shared().navigator().presentedViewController(), nullptr);
}

TEST_F(Session, AskedLoginGivesUpAfterTwelveSeconds) {
    auto* main = new MainViewController();
    Platform::shared().navigator().setRootViewController(main);
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"T1", "علي", false, {}});
    main->loginToGameCenter();
    EXPECT_TRUE(Platform::shared().progressHud().isVisible());
    platform.scheduler().advance(11.9);
    EXPECT_FALSE(platform.alerts().isVisible());
    platform.scheduler().advance(0.1);
    EXPECT_FALSE(Platform::shared().progressHud().isVisible());
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("تعذر تسجيل الدخول"));
}

TEST_F(Session, PlaceAndTheTwoDayArrow) {
    auto* main = new MainViewController();
    Platform::shared().navigator().setRootViewController(main);
    auto& gc = GameCenterManager::sharedInstance();
    auto& stats = UserStatsManager::sharedInstance();
    gc.playerRank = 1500;
    Platform::shared().notificationCenter().postNotificationName(scoreLoadedNotification);
    EXPECT_FALSE(main->notLoggedVisible());
    EXPECT_EQ(main->playerRankLabel(), "1,500");
    EXPECT_TRUE(main->gcRankChange().isEmpty()); // no place two days back

    stats.updateGamecenterRankForCurrentDay(1500);
    platform.scheduler().advance(24 * 3600);
    stats.updateGamecenterRankForCurrentDay(1400);
    Platform::shared().notificationCenter().postNotificationName(scoreLoadedNotification);
    EXPECT_EQ(main->gcRankChange(), "+0");
    EXPECT_EQ(main->gcRankArrow(), "green-arrow.png");
    gc.playerRank = 1700;
    Platform::shared().notificationCenter().postNotificationName(scoreLoadedNotification);
    EXPECT_EQ(main->gcRankChange(), "-200");
    EXPECT_EQ(main->gcRankArrow(), "red-arrow.png");
}

class AfterLevel : public ::testing::Test {
protected:
    void SetUp() override { platform.writePackFile(3, QStringLiteral("قلم"), QStringLiteral("ابتثجحخدذ")); }

    // Main screen, rounds, a round's levels and a level, then the level solved.
    LevelSuccessViewController* solveAt(qint64 level, bool previous = false) {
        auto& nav = Platform::shared().navigator();
        auto* main = new MainViewController();
        nav.setRootViewController(main);
        main->startAction();
        auto* rounds = qobject_cast<RoundSelectorViewController*>(nav.topViewController());
        rounds->tableViewDidSelectRowAtIndexPath(static_cast<int>(level / 25));
        auto* levels = nav.topViewController();
        QMetaObject::invokeMethod(levels, "collectionViewDidSelectItemAtIndexPath",
                                  Q_ARG(int, int(level % 25)));
        play = qobject_cast<GameViewController*>(nav.topViewController());
        EXPECT_EQ(play->isPreviousGame, previous);
        play->gameSuccess();
        return qobject_cast<LevelSuccessViewController*>(nav.presentedViewController());
    }

    TestPlatform platform;
    GameViewController* play = nullptr;
};

TEST_F(AfterLevel, WithoutALoginTheButtonsOpenAtOnce) {
    LevelManager::sharedInstance().saveCurrentLevelTo(3);
    auto* popup = solveAt(3);
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->rankIsChangedLabel(), QStringLiteral("انت غير متصل بالجيم سنتر."));
    EXPECT_TRUE(popup->buttonsEnabled());
}

TEST_F(AfterLevel, AServiceThatNeverAnswersHoldsTheButtonsThreeSeconds) {
    QTcpServer silent; // accepts and never answers
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    platform.setServiceUrl(QStringLiteral("http://127.0.0.1:%1").arg(silent.serverPort()));
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"T1", "علي", false, {}});
    auto* popup = solveAt(0);
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->rankIsChangedLabel(), QStringLiteral("جاري حساب ترتيبك الجديد..."));
    EXPECT_FALSE(popup->buttonsEnabled());
    platform.scheduler().advance(2.9);
    EXPECT_FALSE(popup->buttonsEnabled());
    platform.scheduler().advance(0.1);
    EXPECT_TRUE(popup->buttonsEnabled());
}

TEST_F(AfterLevel, ARiseInPlaceIsShownAndNoChangeIsSaid) {
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{"T1", "علي", false, {}});
    auto& gc = GameCenterManager::sharedInstance();
    gc.playerRank = 40;
    auto* popup = solveAt(0);
    EXPECT_EQ(gc.playerRankBeforeReportingLastScore, 40);
    gc.playerRank = 12;
    Platform::shared().notificationCenter().postNotificationName(scoreLoadedNotification);
    EXPECT_TRUE(popup->buttonsEnabled());
    EXPECT_EQ(popup->rankIsChangedLabel(), QStringLiteral("** مبروك لقد ارتفع ترتيبك **"));
    EXPECT_EQ(popup->rankChangeText(), "+28");
    EXPECT_EQ(popup->currentRankText(), "12");
    gc.playerRank = 40;
    Platform::shared().notificationCenter().postNotificationName(scoreLoadedNotification);
    EXPECT_EQ(popup->rankIsChangedLabel(), QStringLiteral("ترتيبك لم يتغير"));
}

TEST_F(AfterLevel, APreviousLevelLeadsBackToTheRounds) {
    LevelManager::sharedInstance().saveCurrentLevelTo(10);
    auto* popup = solveAt(2, true);
    ASSERT_NE(popup, nullptr);
    EXPECT_EQ(popup->type, 1);
    popup->nextLevelAction();
    auto& nav = Platform::shared().navigator();
    EXPECT_EQ(nav.depth(), 2);
    EXPECT_NE(qobject_cast<RoundSelectorViewController*>(nav.topViewController()), nullptr);
}

TEST_F(AfterLevel, TheRoundsPrizeComesWithTheNextButtonOnly) {
    LevelManager::sharedInstance().saveCurrentLevelTo(24);
    auto* popup = solveAt(24);
    ASSERT_EQ(popup->type, 3);
    const qint64 before = CreditsManager::sharedInstance().currentCredits();
    popup->nextLevelAction();
    auto& nav = Platform::shared().navigator();
    auto* finish = qobject_cast<RoundFinishViewController*>(nav.presentedViewController());
    ASSERT_NE(finish, nullptr);
    EXPECT_EQ(finish->finishedRound, 1);
    EXPECT_EQ(finish->rewardedCredits, 100);
    EXPECT_EQ(finish->currentBadge(), "badge2.png");
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), before + 100);
    EXPECT_EQ(nav.depth(), 2); // the round selector waits under it
    finish->startNextRound();
    EXPECT_EQ(nav.presentedViewController(), nullptr);

    // The menu button skips the round's screen, and its gold.
    LevelManager::sharedInstance().saveCurrentLevelTo(49);
    auto* second = solveAt(49);
    const qint64 held = CreditsManager::sharedInstance().currentCredits();
    second->goHomeAction();
    EXPECT_EQ(nav.presentedViewController(), nullptr);
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits(), held);

    // Offline the round pays nothing.
    platform.reachability().setForcedOffline(true);
    LevelManager::sharedInstance().saveCurrentLevelTo(74);
    auto* third = solveAt(74);
    third->nextLevelAction();
    finish = qobject_cast<RoundFinishViewController*>(nav.presentedViewController());
    ASSERT_NE(finish, nullptr);
    EXPECT_EQ(finish->rewardedCredits, 0);
}

TEST(RoundState, TravelAndPassesAreKept) {
    TestPlatform platform;
    LevelManager::sharedInstance().saveCurrentLevelTo(5 * 25);
    auto& rounds = RoundManager::sharedInstance();
    rounds.setFlyOverPassed(true);
    platform.random().queue({7});
    rounds.goToPreviousRound();
    EXPECT_EQ(rounds.travelRound(), 7 % 3);
    EXPECT_EQ(rounds.travelLevel(), 25 * (7 % 3));
    EXPECT_TRUE(rounds.isPreviousRound());
    EXPECT_FALSE(rounds.isRoundFlyOverPassed());
    rounds.incrementTravelLevel();
    rounds.setFlipImagePassed(true);
    rounds.setTravelRound(9); // memory only
    platform.restart();
    auto& again = RoundManager::sharedInstance();
    EXPECT_TRUE(again.isPreviousRound());
    EXPECT_EQ(again.travelRound(), 1);
    EXPECT_EQ(again.travelLevel(), 26);
    again.resetBackToOriginalRound();
    EXPECT_FALSE(again.isPreviousRound());
    EXPECT_EQ(again.travelLevel(), 0);
    EXPECT_TRUE(again.isRoundFlipImagePassed());
    again.resetRoundBonusValues();
    EXPECT_FALSE(again.isRoundFlipImagePassed());
}

TEST(Achievements, CachedByIdentifierAndACompleteOneIsNotSentAgain) {
    TestPlatform platform;
    auto& gc = GameCenterManager::sharedInstance();
    GKAchievement& made = gc.getAchievementForIdentifier("days:5");
    EXPECT_EQ(made.percentComplete, 0.0);
    EXPECT_EQ(&gc.getAchievementForIdentifier("days:5"), &made);
    gc.reportAchievementIdentifierPercentComplete("days:5", 99.9f);
    EXPECT_NEAR(gc.getAchievementForIdentifier("days:5").percentComplete, 99.9, 1e-4);
    EXPECT_TRUE(gc.getAchievementForIdentifier("days:5").showsCompletionBanner);
    gc.reportAchievementIdentifierPercentComplete("days:5", 100.0f);
    gc.reportAchievementIdentifierPercentComplete("days:5", 40.0f);
    EXPECT_EQ(gc.getAchievementForIdentifier("days:5").percentComplete, 100.0);
    gc.resetAchievements();
    EXPECT_TRUE(gc.achievementsDictionary.isEmpty());
}

TEST(TurnBasedMatches, AReplyThatBreaksTheContractIsNoMatch) {
    const auto seat = [](const QJsonValue& id) {
        return QJsonObject{{"playerID", id}, {"status", 4}, {"matchOutcome", 0}, {"lastTurnDate", 0}};
    };
    QJsonObject good{{"matchID", "m"},
                     {"status", 1},
                     {"creationDate", 1763861280000.0},
                     {"currentParticipant", 1},
                     {"participants", QJsonArray{seat("a"), seat(QJsonValue::Null)}},
                     {"matchData", QString::fromLatin1(QByteArray("level=7").toBase64())},
                     {"message", QJsonObject{{"key", "k"}, {"arguments", QJsonArray{"x"}}}}};
    const std::optional<GKTurnBasedMatch> m = GKTurnBasedMatch::fromJson(good);
    ASSERT_TRUE(m);
    EXPECT_EQ(m->matchData, QByteArray("level=7"));
    EXPECT_TRUE(m->participants.at(1).playerID.isEmpty());
    EXPECT_EQ(m->currentParticipant(), &m->participants.at(1));
    EXPECT_EQ(m->indexOfPlayer("a"), 0);
    EXPECT_EQ(m->indexOfPlayer(""), -1);
    EXPECT_EQ(m->messageArguments, QStringList{"x"});

    for (const auto& [key, value] :
         std::vector<std::pair<QString, QJsonValue>>{{"matchID", 5},
                                                     {"status", "open"},
                                                     {"currentParticipant", 2},
                                                     {"matchData", "not base64!"},
                                                     {"participants", QJsonArray{seat("a")}},
                                                     {"participants", QJsonArray{seat("a"), seat(7)}}}) {
        QJsonObject bad = good;
        bad.insert(key, value);
        EXPECT_FALSE(GKTurnBasedMatch::fromJson(bad)) << key.toStdString();
    }
    EXPECT_FALSE(GKTurnBasedMatch::fromJson({}));
}

TEST(Leaderboard, AScoreTakesOnlyWholeNumbersA64BitIntegerHolds) {
    const QJsonObject player{{"playerID", "T1"}, {"displayName", "لاعب"}};
    const auto score = [&](const QJsonValue& value) {
        return GKScore::fromJson({{"player", player}, {"value", value}, {"context", 0}, {"rank", 1}});
    };
    ASSERT_TRUE(score(5400));
    EXPECT_EQ(score(5400)->value, 5400);
    EXPECT_EQ(score("9223372036854775807")->value, std::numeric_limits<qint64>::max());
    EXPECT_EQ(score(-9.223372036854775808e18)->value, std::numeric_limits<qint64>::min());
    // Beyond the range, a fraction, or no number at all: no score, and no overflow on the way.
    for (const QJsonValue& bad : {QJsonValue(9.223372036854775808e18), QJsonValue(1e300), QJsonValue(-1e19),
                                  QJsonValue(12.5), QJsonValue("12x")}) {
        EXPECT_FALSE(score(bad)) << bad.toVariant().toString().toStdString();
    }
}

TEST(GameServiceReplies, ErrorsAreKnownByTheirCodeOrTheirStatus) {
    QJsonObject body;
    EXPECT_FALSE(GameService::readReply(200, R"({"player":{}})", {}, &body));
    EXPECT_TRUE(body.contains("player"));
    const auto coded = GameService::readReply(429, R"({"error":{"code":"rate_limited"}})", "3", &body);
    ASSERT_TRUE(coded);
    EXPECT_EQ(coded->code, "rate_limited");
    EXPECT_EQ(coded->retryAfterSeconds, 3);
    for (const QByteArray& reply : {QByteArray(R"({"error":{"code":""}})"),
                                    QByteArray(R"({"error":{"code":7}})"), QByteArray("{}"), QByteArray()}) {
        const auto e = GameService::readReply(503, reply, {}, &body);
        ASSERT_TRUE(e);
        EXPECT_EQ(e->code, "http_503") << reply.toStdString();
    }
    const auto notJson = GameService::readReply(200, "<html>", {}, &body);
    ASSERT_TRUE(notJson);
    EXPECT_EQ(notJson->code, "bad_reply");
    EXPECT_TRUE(body.isEmpty());
}

TEST(LiveMatches, AReplyThatBreaksTheContractIsNoMatch) {
    const auto seat = [](const QJsonValue& id) {
        return QJsonObject{{"playerID", id}, {"status", "seated"}};
    };
    const QJsonObject good{{"matchID", "live"},
                           {"found", false},
                           {"players", QJsonArray{seat("me"), seat(QJsonValue::Null)}},
                           {"expectedPlayerCount", 1}};
    const std::shared_ptr<GKMatch> m = GKMatch::fromJson(good, "me");
    ASSERT_TRUE(m);
    EXPECT_TRUE(m->players().isEmpty());
    EXPECT_EQ(m->expectedPlayerCount(), 1);
    std::optional<GKError> error;
    EXPECT_FALSE(m->sendDataToAllPlayersWithDataModeError("x", GKMatchSendDataReliable, &error));
    EXPECT_EQ(error->code, "live_not_connected");
    // A match the local player has no seat in is not his.
    EXPECT_FALSE(GKMatch::fromJson(good, "someone else"));
    for (const auto& [key, value] :
         std::vector<std::pair<QString, QJsonValue>>{{"matchID", ""},
                                                     {"players", QJsonArray{seat("me")}},
                                                     {"players", QJsonArray{seat("me"), seat(3)}},
                                                     {"expectedPlayerCount", "one"}}) {
        QJsonObject bad = good;
        bad.insert(key, value);
        EXPECT_FALSE(GKMatch::fromJson(bad, "me")) << key.toStdString();
    }
}

} // namespace
