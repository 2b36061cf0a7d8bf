// The battles page and the matched battle over a fake match service: what the list keeps and shows, answering
// from a row, remove and rematch, and both sides of a matched battle.
#include "FakeMatches.h"
#include "TestPlatform.h"
#include "core/GameViewController.h"
#include "core/LevelsInfoReader.h"
#include "multiplayer/BattlesViewController.h"
#include "multiplayer/GCPlayerViewController.h"
#include "multiplayer/GameCenterManager.h"
#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "multiplayer/LeaderboardViewController.h"
#include "multiplayer/RandomBattleViewController.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/MainViewController.h"

#include <gtest/gtest.h>

namespace {

GKTurnBasedMatch battle(const QString& id, int status, const QString& sender, const QString& receiver,
                        int current, const QDateTime& created, const QByteArray& data) {
    return twoSeats(sender, receiver, current, data, status, id, created);
}

QByteArray data(const QString& type, qint64 level = 3, const std::optional<QString>& reply = std::nullopt) {
    GCMatchData d;
    d.setString("type", type);
    d.setString("message", QStringLiteral("تحدّ"));
    d.setNumber("level", level);
    d.setNumber("senderResult", 1);
    if (reply) {
        d.setString("reply", *reply);
    }
    return d.archivedData();
}

class BattleScreens : public ::testing::Test {
protected:
    void SetUp() override {
        platform.writePackFile(2, QStringLiteral("سمكة"), QStringLiteral("ابتثجحخد"));
        LevelsInfoReader::sharedInstance().loadAllPacksLevelsWithEnc("ok", false);
        Platform::shared().navigator().setRootViewController(new MainViewController());
        service = installFakeMatches();
        service->names = {{kMe, QStringLiteral("أنا")}, {kOther, QStringLiteral("سلمى")}};
        now = platform.scheduler().now();
    }

    BattlesViewController* openList() {
        auto* list = new BattlesViewController();
        Platform::shared().navigator().presentViewController(list);
        return list;
    }
    QVariantMap row(BattlesViewController* list, int i) { return list->rows().at(i).toMap(); }

    // From the rules in front: a new battle level opens, is played first, and is left at once.
    void leaveNewBattleLevel() {
        platform.random().queue({0}); // the level
        platform.keepTrayOrder();
        platform.alerts().press(0);
        auto* play =
            qobject_cast<GameViewController*>(Platform::shared().navigator().presentedViewController());
        ASSERT_NE(play, nullptr);
        EXPECT_EQ(play->battleGameType, 1);
        platform.alerts().press(0);
        play->closeBattleButtonTapped();
        platform.alerts().pressTitled(QStringLiteral("موافق"));
    }

    TestPlatform platform;
    FakeMatches* service = nullptr;
    QDateTime now;
};

TEST_F(BattleScreens, TheListKeepsBattlesOnlyNewestFirstInTwoSegments) {
    service->stored = {
        battle("sent", GKTurnBasedMatchStatusOpen, kMe, kOther, 1, now.addSecs(-7200), data("battle")),
        battle("exchange", GKTurnBasedMatchStatusOpen, kOther, kMe, 1, now, data("exchange")),
        battle("received", GKTurnBasedMatchStatusOpen, kOther, kMe, 1, now.addSecs(-3600), data("battle")),
        battle("nodata", GKTurnBasedMatchStatusOpen, kOther, kMe, 1, now, QByteArray()),
        battle("odd", 7, kOther, kMe, 1, now, data("battle")),
        battle("ended", GKTurnBasedMatchStatusEnded, kMe, kOther, -1, now.addSecs(-99999),
               data("battle", 3, QStringLiteral("سهلة"))),
    };
    service->stored[5].participants[0].matchOutcome = GKTurnBasedMatchOutcomeLost;
    auto* list = openList();
    EXPECT_EQ(list->allBattles.size(), 4);
    ASSERT_EQ(list->openBattles.size(), 2);
    EXPECT_EQ(list->openBattles[0].matchID, "received");
    EXPECT_EQ(list->openBattles[1].matchID, "sent");
    EXPECT_EQ(row(list, 0).value("kind").toString(), "ReceivedBattleCell");
    EXPECT_EQ(row(list, 1).value("kind").toString(), "SentBattleCell");
    EXPECT_EQ(row(list, 0).value("senderName").toString(), QStringLiteral("سلمى"));
    // Hours left count from the creation: 23 whole hours to the deadline, shown as 23 + 1.
    EXPECT_EQ(row(list, 0).value("hoursLeft").toString(), "24");
    EXPECT_EQ(row(list, 0).value("senderAnswered").toString(), QStringLiteral("لا"));

    list->segmentChanged(1);
    ASSERT_EQ(list->rows().size(), 1);
    EXPECT_EQ(row(list, 0).value("outcomeText").toString(), QStringLiteral("خسارة"));
    EXPECT_EQ(row(list, 0).value("reply").toString(), QStringLiteral("سهلة"));
    EXPECT_EQ(row(list, 0).value("pointsText"),
              QStringLiteral("لقد خسرت %1 نقاط").arg(-RankManager::sharedInstance().getBattleLossPoints()));
}

TEST_F(BattleScreens, AnsweringFromTheListPlaysTheSendersLevelAndSettlesIt) {
    service->stored = {
        battle("received", GKTurnBasedMatchStatusOpen, kOther, kMe, 1, now, data("battle", 30))};
    auto* list = openList();
    list->playBattleButtonTapped(0, QString());
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("اكتب رسالة"));
    platform.alerts().press(0);

    list->playBattleButtonTapped(0, QStringLiteral("سأفوز"));
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("العب دورك"));
    platform.keepTrayOrder();
    platform.alerts().press(0);
    auto* play = qobject_cast<GameViewController*>(Platform::shared().navigator().presentedViewController());
    ASSERT_NE(play, nullptr);
    EXPECT_EQ(play->game->gameLevel, 30);
    EXPECT_EQ(play->battleGameType, 2);
    platform.alerts().press(0); // the battle's rule

    // The time runs out: a score of 0 against the sender's 1 loses, and the end goes out with the reply.
    const qint64 before = ScorePointsManager::sharedInstance().totalPoints() + 10;
    ScorePointsManager::sharedInstance().addPoints(10);
    platform.scheduler().advance(40.0);
    platform.alerts().press(0);
    const FakeMatches::Call& end = service->calls.at(service->calls.size() - 2);
    EXPECT_EQ(end.op, "endMatch");
    EXPECT_EQ(GCMatchData::unarchive(end.data)->string("reply"), QStringLiteral("سأفوز"));
    EXPECT_EQ(end.match.participants[1].matchOutcome, GKTurnBasedMatchOutcomeLost);
    EXPECT_EQ(ScorePointsManager::sharedInstance().totalPoints(),
              before + RankManager::sharedInstance().getBattleLossPoints());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalLosses(), 1);
    EXPECT_EQ(service->calls.last().op, "load");
    EXPECT_EQ(list->clickedBattle, -1);
}

TEST_F(BattleScreens, RemoveAndRematchTellTheirOutcome) {
    service->stored = {battle("ended", GKTurnBasedMatchStatusEnded, kMe, kOther, -1, now, data("battle"))};
    auto* list = openList();
    list->segmentChanged(1);
    list->removeButtonTapped(0);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("تمت العملية"));
    platform.alerts().press(0);
    service->fail = GKError{"network", "down", 0, 0};
    list->removeButtonTapped(0);
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("لقد حدث خطأ في حذف المعركة"));
    platform.alerts().press(0);
    list->rematchButtonTapped(0);
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("لقد حدث خطأ في حذف المعركة"));
    platform.alerts().press(0);
    EXPECT_FALSE(Platform::shared().progressHud().isVisible());

    // A rematch opens the matched battle with the new match, in which the local player answers.
    service->fail.reset();
    list->rematchButtonTapped(0);
    auto* matched =
        qobject_cast<RandomBattleViewController*>(Platform::shared().navigator().presentedViewController());
    ASSERT_NE(matched, nullptr);
    EXPECT_FALSE(matched->isNewMatch);
    EXPECT_EQ(matched->receiverName(), QStringLiteral("سلمى"));
}

TEST_F(BattleScreens, AMatchedBattleWithAnEmptySeatPlaysFirstAndOneWithAPlayerAnswers) {
    // Nobody waits: the search opens a match, and the local player plays first.
    service->found = battle("new", GKTurnBasedMatchStatusMatching, kMe, QString(), 0, now, QByteArray());
    auto* matched = new RandomBattleViewController();
    bool dismissed = false;
    matched->setDidDismiss([&dismissed](const QString& extra) { dismissed = extra == "some extra data"; });
    Platform::shared().navigator().presentViewController(matched);
    EXPECT_TRUE(matched->isNewMatch);
    EXPECT_EQ(matched->receiverName(), "???");
    EXPECT_EQ(
        matched->loseTitle(),
        QStringLiteral("خسارة - ستخسر %1 نقطة").arg(RankManager::sharedInstance().getBattleWinPoints()));
    matched->playTheTurn(QString());
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("اكتب رسالة"));
    platform.alerts().press(0);
    matched->playTheTurn(QStringLiteral("هيا"));
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("معركة تحدي مع لاعب اخر"));
    leaveNewBattleLevel();
    // The first turn goes to the empty seat with the platform's timeout, then the screen closes.
    const FakeMatches::Call& turn = service->calls.last();
    EXPECT_EQ(turn.op, "endTurn");
    EXPECT_EQ(turn.next, QList<int>{1});
    EXPECT_EQ(GCMatchData::unarchive(turn.data)->number("senderResult"), 0);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("تم انشاء معركة بنجاح"));
    EXPECT_TRUE(dismissed);

    // A search that finds a waiting match: the local player answers its sender's level.
    platform.alerts().press(0);
    service->found = battle("joined", GKTurnBasedMatchStatusOpen, kOther, kMe, 1, now, data("battle", 44));
    auto* answering = new RandomBattleViewController();
    Platform::shared().navigator().presentViewController(answering);
    EXPECT_FALSE(answering->isNewMatch);
    EXPECT_EQ(answering->senderMessage(), QStringLiteral("تحدّ"));
    EXPECT_EQ(answering->senderName(), QStringLiteral("سلمى"));
}

TEST_F(BattleScreens, TheMainScreensBattleAlertLeadsToTheBattlesOrToAFriend) {
    auto* main = qobject_cast<MainViewController*>(Platform::shared().navigator().topViewController());
    ASSERT_NE(main, nullptr);
    for (int choice : {0, 1}) {
        main->startBattle();
        EXPECT_EQ(platform.alerts().title(), QStringLiteral("معركة جديدة"));
        EXPECT_EQ(platform.alerts().buttons(), (QStringList{QStringLiteral("معركة مع لاعب عشوائي"),
                                                            QStringLiteral("تعارك مع احد اصدقائك")}));
        platform.alerts().press(choice);
        auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(
            Platform::shared().navigator().presentedViewController());
        ASSERT_NE(pages, nullptr);
        EXPECT_EQ(pages->buttonText().first(), QStringLiteral("ترتيبي"));
        EXPECT_EQ(pages->viewControllerArray().at(pages->currentPageIndex())->identifier(),
                  choice == 0 ? "BattlesViewController" : "LeaderboardViewController");
        pages->close();
    }
}

GKScore scoreOf(qint64 context, const QDateTime& date) {
    GKScore s;
    s.player = GKPlayer{kOther, QStringLiteral("سلمى"), false, {}};
    s.rank = 12;
    s.value = 340;
    s.context = context;
    s.date = date;
    return s;
}

TEST_F(BattleScreens, APlayersDetailsShowWhatHisScoreCarries) {
    struct Case {
        qint64 context;
        QStringList shown;
    };
    for (const Case& c :
         {Case{57, {"badge", "badgeLabel", "currentLevel", "currentRound"}},
          Case{99994299999999999LL,
               {"achievements", "activeDays", "badge", "badgeLabel", "currentLevel", "currentRound",
                "levelsShared", "timeTraveled", "totalBattles", "trainingsTaken", "usedCredits"}}}) {
        GCPlayerViewController details;
        details.setScore(scoreOf(c.context, now));
        details.viewDidLoad();
        EXPECT_EQ(details.details().keys(), c.shown) << c.context;
    }
    GCPlayerViewController details;
    details.setScore(scoreOf(99994299999999999LL, now.addDays(-3)));
    details.viewDidLoad();
    EXPECT_EQ(details.details().value("currentLevel").toString(), "9999");
    EXPECT_EQ(details.details().value("currentRound").toString(), "400");
    EXPECT_EQ(details.details().value("totalBattles").toString(), "999");
    EXPECT_EQ(details.details().value("usedCredits").toString(), "99999");
    EXPECT_EQ(details.lastPlayed(), QStringLiteral("منذ 3 يوم"));
    details.setScore(scoreOf(57, now));
    EXPECT_EQ(details.lastPlayed(), QStringLiteral("اليوم"));
}

TEST_F(BattleScreens, AChallengeFromAPlayersDetailsIsPlayedThenSentAndItsRefusalExplained) {
    auto* details = new GCPlayerViewController();
    details->setScore(scoreOf(57, now));
    Platform::shared().navigator().presentViewController(details);
    details->sendBattleRequest(QString());
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("اكتب رسالة"));
    platform.alerts().press(0);

    // The stranger refuses through the service: the game says who may be challenged.
    service->fail = GKError{"invitation_refused", "friends only", 403, 0};
    details->sendBattleRequest(QStringLiteral("تعالي"));
    EXPECT_TRUE(platform.alerts().message().contains(
        QStringLiteral("%1 نقطة").arg(RankManager::sharedInstance().getBattleWinPoints())));
    leaveNewBattleLevel();
    EXPECT_EQ(platform.alerts().message(),
              QStringLiteral("يمكنك بدء معركة فقط مع اصدقائك أو لاعبين لعبت معارك ضدهم من قبل"));
    platform.alerts().press(0);
    EXPECT_EQ(Platform::shared().navigator().presentedViewController(), details);

    // A friend: the first turn goes out and the details close when the message does.
    service->fail.reset();
    service->found = battle("m", GKTurnBasedMatchStatusOpen, kMe, kOther, 0, now, QByteArray());
    details->sendBattleRequest(QStringLiteral("تعالي"));
    leaveNewBattleLevel();
    EXPECT_EQ(service->calls.last().op, "endTurn");
    EXPECT_EQ(service->calls.last().next, (QList<int>{1, 0}));
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("تم الارسال"));
    platform.alerts().press(0);
    EXPECT_NE(Platform::shared().navigator().presentedViewController(), details);

    // Gold may be asked of friends and former opponents only, too.
    GCPlayerViewController::showRequestOutcome(GKError{"invitation_refused", "", 403, 0}, false, {});
    EXPECT_EQ(platform.alerts().message(),
              QStringLiteral("يمكنك طلب الذهب فقط من اصدقائك أو لاعبين لعبت معارك ضدهم من قبل"));
}

TEST(LeaderboardPage, AsksForTheConnectionOrTheLoginBeforeItLoads) {
    TestPlatform platform;
    Platform::shared().reachability().setForcedOffline(true);
    LeaderboardViewController offline;
    offline.viewDidLoad();
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("غير متصل"));
    platform.alerts().press(0);

    Platform::shared().reachability().setForcedOffline(false);
    LeaderboardViewController never;
    never.viewDidLoad();
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("تسجيل الدخول بالجيم سنتر"));
    platform.alerts().press(0);

    // A player who closed the login screen gets it again.
    GameCenterManager::sharedInstance().currentStatus = QStringLiteral("LOGIN_CANCELLED");
    LeaderboardViewController cancelled;
    cancelled.viewDidLoad();
    EXPECT_FALSE(platform.alerts().isVisible());
    ASSERT_NE(Platform::shared().navigator().presentedViewController(), nullptr);
    EXPECT_EQ(Platform::shared().navigator().presentedViewController()->identifier(), "LoginViewController");
}

} // namespace
