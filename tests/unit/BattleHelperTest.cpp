// The battle and exchange helper over a fake match service: the data it writes, the turns it passes, what
// each turn event and match end does, and the points, gold and messages that follow.
#include "FakeMatches.h"
#include "TestPlatform.h"
#include "multiplayer/GCMatchData.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"
#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "platform/Emitter.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/UserStatsManager.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

namespace {

QByteArray battleData(qint64 senderResult, const std::optional<QString>& reply = std::nullopt) {
    GCMatchData d;
    d.setString("type", "battle");
    d.setString("message", QStringLiteral("هل تقدر؟"));
    d.setNumber("level", 57);
    d.setNumber("senderResult", senderResult);
    if (reply) {
        d.setString("reply", *reply);
    }
    return d.archivedData();
}

QByteArray exchangeData(std::optional<qint64> gold) {
    GCMatchData d;
    d.setString("type", "exchange");
    d.setString("message", QStringLiteral("أعطني ذهبا"));
    if (gold) {
        d.setString("reply", QStringLiteral("تفضل"));
        d.setNumber("gold", *gold);
    }
    return d.archivedData();
}

class BattleHelper : public ::testing::Test {
protected:
    void SetUp() override {
        service = installFakeMatches();
        QObject::connect(&Platform::shared().emitter(), &MyEmitter::started,
                         [this](const QString& kind, double) { rains.append(kind); });
    }
    static GCTurnBasedMatchHelper& helper() { return GCTurnBasedMatchHelper::sharedInstance(); }
    static qint64 points() { return ScorePointsManager::sharedInstance().totalPoints(); }
    QString alertTitle() { return platform.alerts().title(); }

    TestPlatform platform;
    FakeMatches* service = nullptr;
    QStringList rains;
};

TEST(MatchData, ReadsBackWhatItWroteAndNothingElse) {
    GCMatchData d;
    d.setString("type", "battle");
    d.setString("message", QStringLiteral("مرحبا \"بك\""));
    d.setNumber("level", 1234);
    d.setNumber("senderResult", -1);
    const std::optional<GCMatchData> back = GCMatchData::unarchive(d.archivedData());
    ASSERT_TRUE(back);
    EXPECT_EQ(*back, d);
    // A missing number reads 0 and a missing string null; a value of the other kind counts as missing.
    EXPECT_EQ(back->number("gold"), 0);
    EXPECT_FALSE(back->string("reply"));
    EXPECT_FALSE(back->string("level"));
    EXPECT_EQ(back->number("type"), 0);

    for (const QByteArray& bad :
         {QByteArray(), QByteArray("{\"type\":\"bat"), QByteArray("[1,2]"),
          QByteArray("{\"type\":{\"x\":1}}"), QByteArray("{\"level\":1.5}"), QByteArray("{\"level\":true}"),
          QByteArray("{\"level\":1e300}"), QByteArray("\x89PNG\r\n\x1a\n", 8), QByteArray(70 * 1024, ' ')}) {
        EXPECT_FALSE(GCMatchData::unarchive(bad)) << bad.left(20).toStdString();
    }
}

TEST_F(BattleHelper, AChallengeGoesToTheChosenPlayerWithTheSenderSecondInLine) {
    service->found = twoSeats(kMe, kOther, 0);
    std::optional<std::optional<GKError>> result;
    helper().sendBattleMatchRequestToPlayerWithMessageAndLevelAndSenderResultOnCompletion(
        GKPlayer{kOther, QStringLiteral("سلمى"), true, {}}, QStringLiteral("هل تقدر؟"), 57, 1,
        [&result](std::optional<GKError> e) { result = e; });
    ASSERT_TRUE(result);
    EXPECT_FALSE(*result);
    ASSERT_EQ(service->calls.size(), 2);
    const GKMatchRequest& request = service->calls[0].request;
    EXPECT_EQ(request.recipients, QStringList{kOther});
    EXPECT_EQ(request.minPlayers, 2);
    EXPECT_EQ(request.maxPlayers, 2);
    EXPECT_EQ(request.purpose, "battle");
    EXPECT_FALSE(request.inviteMessage.isEmpty());
    EXPECT_EQ(service->calls[1].next, (QList<int>{1, 0}));
    EXPECT_EQ(service->calls[1].timeout, 86400.0);
    const GCMatchData data = service->dataOf(1);
    EXPECT_EQ(data.string("type"), "battle");
    EXPECT_EQ(data.number("level"), 57);
    EXPECT_EQ(data.number("senderResult"), 1);
    EXPECT_FALSE(data.contains("reply"));
    EXPECT_EQ(helper().sentBattlesToPlayers, QStringList{kOther});

    // A first turn that fails still counts the player as sent to; an exchange request does not.
    const QString third = QStringLiteral("Tthird");
    service->found = twoSeats(kMe, third, 0);
    service->failTurn = GKError{"network", "down", 0, 0};
    helper().sendBattleMatchRequestToPlayerWithMessageAndLevelAndSenderResultOnCompletion(
        GKPlayer{third, {}, true, {}}, "x", 5, 0, [&result](std::optional<GKError> e) { result = e; });
    EXPECT_EQ(result->value().code, "network");
    EXPECT_EQ(helper().sentBattlesToPlayers, (QStringList{kOther, third}));
    helper().sendExchangeMatchRequestToPlayerWithMessageOnCompletion(
        GKPlayer{third, {}, true, {}}, "x", [&result](std::optional<GKError> e) { result = e; });
    EXPECT_EQ(result->value().code, "network");
    EXPECT_EQ(service->calls.last().op, "endTurn");
    EXPECT_EQ(service->calls.at(service->calls.size() - 2).request.purpose, "exchange");
    EXPECT_TRUE(helper().sentExchangesToPlayers.isEmpty());
}

TEST_F(BattleHelper, TheAutomaticSenderAndTheGiverPassTheTurnWithThePlatformTimeout) {
    GKTurnBasedMatch matched = twoSeats(kMe, QString(), 0);
    helper().finishTurnInMatchWithMessageAndLevelAndSenderResultOnCompletion(matched, "go", 9, 0, {});
    EXPECT_EQ(service->calls.last().next, QList<int>{1});
    EXPECT_EQ(service->calls.last().timeout, GKTurnTimeoutDefault);
    EXPECT_TRUE(helper().sentBattlesToPlayers.isEmpty());

    GKTurnBasedMatch request = twoSeats(kOther, kMe, 1);
    request.matchData = exchangeData(std::nullopt);
    helper().replayToExchangeMatchWithMessageAndGoldOnCompletion(request, QStringLiteral("خذ"), 40, {});
    const FakeMatches::Call& answer = service->calls.last();
    EXPECT_EQ(answer.next, QList<int>{0});
    EXPECT_EQ(answer.timeout, GKTurnTimeoutDefault);
    EXPECT_EQ(answer.match.messageKey, "gc.exchange.replyMessage");
    EXPECT_EQ(answer.match.messageArguments, QStringList{QStringLiteral("الذهبات")});
    EXPECT_EQ(service->dataOf(service->calls.size() - 1).number("gold"), 40);
    EXPECT_EQ(service->dataOf(service->calls.size() - 1).string("message"), QStringLiteral("أعطني ذهبا"));
}

TEST_F(BattleHelper, TheReceiverSettlesTheOutcomeByTheHigherResult) {
    struct Case {
        qint64 s, r;
        int sender, receiver;
    };
    for (const Case& c : {Case{1, 0, 2, 3}, Case{0, 1, 3, 2}, Case{1, 1, 4, 4}}) {
        GKTurnBasedMatch m = twoSeats(kOther, kMe, 1);
        m.matchData = battleData(c.s);
        std::optional<GKError> error{GKError{}};
        helper().finishBattleWithMessageAndReceiverResultOnCompletion(m, QStringLiteral("أحسنت"), c.r,
                                                                      [&error](auto e) { error = e; });
        EXPECT_FALSE(error);
        EXPECT_EQ(m.participants[0].matchOutcome, c.sender) << c.s << " " << c.r;
        EXPECT_EQ(m.participants[1].matchOutcome, c.receiver) << c.s << " " << c.r;
        EXPECT_EQ(service->calls.last().op, "endMatch");
        EXPECT_EQ(service->dataOf(service->calls.size() - 1).string("reply"), QStringLiteral("أحسنت"));
    }
    EXPECT_EQ(helper().playersBattledWith, QStringList{kOther});
    EXPECT_EQ(platform.defaults().stringArrayForKey("battledPlayersList"), QStringList{kOther});
}

TEST_F(BattleHelper, EachOutcomeMovesItsPointsAndCountersAndShowsItsMessage) {
    auto& stats = UserStatsManager::sharedInstance();
    const auto& rank = RankManager::sharedInstance();
    qint64 before = points();
    helper().handlePlayerReceivedBattleOutcome(GKTurnBasedMatchOutcomeWon);
    EXPECT_EQ(points(), before + rank.getBattleWinPoints());
    EXPECT_EQ(stats.totalWins(), 1);
    EXPECT_EQ(alertTitle(), QStringLiteral("فوز!"));
    EXPECT_EQ(rains, QStringList{MyEmitter::kBattleWin});
    EXPECT_EQ(platform.alerts().tone(), "won");
    platform.alerts().press(0);

    before = points();
    helper().handlePlayerReceivedBattleOutcome(GKTurnBasedMatchOutcomeLost);
    EXPECT_EQ(points(), before + rank.getBattleLossPoints());
    EXPECT_EQ(stats.totalLosses(), 1);
    EXPECT_TRUE(platform.alerts().message().contains(QString::number(-rank.getBattleLossPoints())));
    EXPECT_EQ(platform.alerts().tone(), "lost");
    platform.alerts().press(0);

    before = points();
    helper().handlePlayerReceivedBattleOutcome(GKTurnBasedMatchOutcomeTied);
    EXPECT_EQ(points(), before + rank.getBattleDrawPoints());
    EXPECT_EQ(stats.totalDraws(), 1);
    EXPECT_EQ(platform.alerts().tone(), "tied");
    platform.alerts().press(0);

    // An outcome the game does not know moves nothing but says so.
    before = points();
    helper().handlePlayerReceivedBattleOutcome(GKTurnBasedMatchOutcomeTimeExpired);
    EXPECT_EQ(points(), before);
    EXPECT_EQ(stats.totalBattles(), 3);
    EXPECT_EQ(alertTitle(), QStringLiteral("حدثت مشكلة"));
    EXPECT_EQ(platform.alerts().tone(), "");
}

TEST_F(BattleHelper, TurnEventsOfBattles) {
    // The receiver is challenged: an alert with the sender's name and message, leading to the battles page.
    GKTurnBasedMatch challenge = twoSeats(kOther, kMe, 1);
    challenge.matchData = battleData(1);
    helper().playerReceivedTurnEventForMatchDidBecomeActive(challenge, true);
    EXPECT_EQ(alertTitle(), QStringLiteral("سلمى يتحداك في معركة!"));
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("هل تقدر؟"));
    platform.alerts().press(0);
    auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(
        Platform::shared().navigator().presentedViewController());
    ASSERT_NE(pages, nullptr);
    EXPECT_EQ(pages->currentPageIndex(), 1);
    EXPECT_EQ(pages->viewControllerArray().at(1)->identifier(), "BattlesViewController");
    // Only the loads of the battles and exchanges pages went out.
    ASSERT_EQ(service->calls.size(), 2);
    EXPECT_EQ(service->calls.at(0).op, "load");
    EXPECT_EQ(service->calls.at(1).op, "load");
    service->calls.clear();

    // On the sender's side a battle without a reply is the receiver's timeout: the sender wins.
    GKTurnBasedMatch timedOut = twoSeats(kMe, kOther, 0);
    timedOut.matchData = battleData(0);
    const qint64 before = points();
    helper().playerReceivedTurnEventForMatchDidBecomeActive(timedOut, false);
    ASSERT_EQ(service->calls.size(), 1);
    EXPECT_EQ(service->calls[0].match.participants[0].matchOutcome, GKTurnBasedMatchOutcomeWon);
    EXPECT_EQ(service->calls[0].match.participants[1].matchOutcome, GKTurnBasedMatchOutcomeLost);
    EXPECT_EQ(service->calls[0].data, timedOut.matchData);
    EXPECT_EQ(points(), before + RankManager::sharedInstance().getBattleWinPoints());
    platform.alerts().press(0);

    // When that end fails nothing moves.
    service->fail = GKError{"network", "down", 0, 0};
    helper().playerReceivedTurnEventForMatchDidBecomeActive(timedOut, false);
    EXPECT_EQ(points(), before + RankManager::sharedInstance().getBattleWinPoints());
    EXPECT_FALSE(platform.alerts().isVisible());

    // An answered battle waits for the match end; foreign and broken data are left alone.
    service->calls.clear();
    GKTurnBasedMatch answered = twoSeats(kMe, kOther, 0);
    answered.matchData = battleData(1, QStringLiteral("ok"));
    helper().playerReceivedTurnEventForMatchDidBecomeActive(answered, true);
    for (const QByteArray& data : {QByteArray("{\"level\":3}"), QByteArray("garbage"), QByteArray()}) {
        answered.matchData = data;
        helper().playerReceivedTurnEventForMatchDidBecomeActive(answered, true);
        helper().playerMatchEnded(answered);
    }
    EXPECT_TRUE(service->calls.isEmpty());
    EXPECT_FALSE(platform.alerts().isVisible());
}

TEST_F(BattleHelper, TheSendersSideOfAnEndedBattle) {
    GKTurnBasedMatch ended = twoSeats(kMe, kOther, -1);
    ended.status = GKTurnBasedMatchStatusEnded;
    ended.matchData = battleData(0, QStringLiteral("gg"));
    ended.participants[0].matchOutcome = GKTurnBasedMatchOutcomeLost;
    ended.participants[1].matchOutcome = GKTurnBasedMatchOutcomeWon;
    ScorePointsManager::sharedInstance().addPoints(100);
    const qint64 before = points();
    helper().playerMatchEnded(ended);
    EXPECT_EQ(points(), before + RankManager::sharedInstance().getBattleLossPoints());
    EXPECT_EQ(helper().playersBattledWith, QStringList{kOther});
    // A known player is not written again.
    platform.defaults().removeObjectForKey("battledPlayersList");
    helper().addBattledPlayer(kOther);
    EXPECT_FALSE(platform.defaults().hasKey("battledPlayersList"));

    // An exchange's end is not a battle's.
    platform.alerts().press(0);
    ended.matchData = exchangeData(5);
    helper().playerMatchEnded(ended);
    EXPECT_FALSE(platform.alerts().isVisible());
}

TEST_F(BattleHelper, TurnEventsOfExchanges) {
    auto& credits = CreditsManager::sharedInstance();
    // A request arrives: the alert names the asker and leads to the exchanges page.
    GKTurnBasedMatch request = twoSeats(kOther, kMe, 1);
    request.matchData = exchangeData(std::nullopt);
    helper().playerReceivedTurnEventForMatchDidBecomeActive(request, true);
    EXPECT_EQ(alertTitle(), QStringLiteral("سلمى يطلب منك بعض الذهبات"));
    platform.alerts().press(0);

    service->calls.clear();

    // An answer with gold: the match ends tied for both, and the gold arrives when the message goes.
    GKTurnBasedMatch answer = twoSeats(kMe, kOther, 0);
    answer.matchData = exchangeData(25);
    const qint64 before = credits.currentCredits();
    helper().playerReceivedTurnEventForMatchDidBecomeActive(answer, true);
    ASSERT_EQ(service->calls.size(), 1);
    EXPECT_EQ(service->calls[0].match.participants[0].matchOutcome, GKTurnBasedMatchOutcomeTied);
    EXPECT_EQ(service->calls[0].match.participants[1].matchOutcome, GKTurnBasedMatchOutcomeTied);
    EXPECT_EQ(alertTitle(), QStringLiteral("وصلتك 25 ذهبة من صديقك"));
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("تفضل"));
    EXPECT_EQ(credits.currentCredits(), before);
    platform.alerts().press(0);
    EXPECT_EQ(credits.currentCredits(), before + 25);
    EXPECT_EQ(UserStatsManager::sharedInstance().totalExchangeReceived(), 25);
    EXPECT_EQ(rains, QStringList{MyEmitter::kGold});

    // A refusal (0) has its own title and still rains.
    answer.matchData = exchangeData(0);
    helper().playerReceivedTurnEventForMatchDidBecomeActive(answer, true);
    EXPECT_EQ(alertTitle(), QStringLiteral("اعتذر صديقك عن إرسال الذهب"));
    platform.alerts().press(0);
    EXPECT_EQ(credits.currentCredits(), before + 25);
    EXPECT_EQ(rains.size(), 2);

    // Paid already (ended), or the end fails: nothing is shown and no gold moves.
    service->calls.clear();
    answer.matchData = exchangeData(25);
    answer.status = GKTurnBasedMatchStatusEnded;
    helper().playerReceivedTurnEventForMatchDidBecomeActive(answer, true);
    EXPECT_TRUE(service->calls.isEmpty());
    answer.status = GKTurnBasedMatchStatusOpen;
    service->fail = GKError{"network", "down", 0, 0};
    helper().playerReceivedTurnEventForMatchDidBecomeActive(answer, true);
    EXPECT_FALSE(platform.alerts().isVisible());
    EXPECT_EQ(credits.currentCredits(), before + 25);
}

} // namespace
