// The exchanges page over a fake match service: what it lists and how each row reads, answering a request
// with gold or a refusal and when the gold leaves, a failed answer, and removal.
#include "FakeMatches.h"
#include "TestPlatform.h"
#include "multiplayer/ExchangesViewController.h"
#include "progress/CreditsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/MainViewController.h"

#include <gtest/gtest.h>

namespace {

GKTurnBasedMatch exchange(const QString& id, int status, const QString& asker, const QString& giver,
                          const QDateTime& created, std::optional<qint64> gold) {
    GCMatchData d;
    d.setString("type", "exchange");
    d.setString("message", QStringLiteral("أعطني ذهبا"));
    if (gold) {
        d.setString("reply", *gold > 0 ? QStringLiteral("تفضل") : QString());
        d.setNumber("gold", *gold);
    }
    return twoSeats(asker, giver, gold ? 0 : 1, d.archivedData(), status, id, created);
}

class ExchangesScreen : public ::testing::Test {
protected:
    void SetUp() override {
        Platform::shared().navigator().setRootViewController(new MainViewController());
        service = installFakeMatches();
        now = platform.scheduler().now();
        CreditsManager::sharedInstance().setCreditsTo(100);
    }

    ExchangesViewController* openPage() {
        auto* page = new ExchangesViewController();
        Platform::shared().navigator().presentViewController(page);
        return page;
    }
    static QVariantMap row(ExchangesViewController* page, int i) { return page->rows().at(i).toMap(); }
    static qint64 gold() { return CreditsManager::sharedInstance().currentCredits(); }

    TestPlatform platform;
    FakeMatches* service = nullptr;
    QDateTime now;
};

TEST_F(ExchangesScreen, ListsExchangesOnlyByWhoAskedNewestFirstWithEachRowsLook) {
    GKTurnBasedMatch battle = exchange("battle", GKTurnBasedMatchStatusOpen, kOther, kMe, now, std::nullopt);
    GCMatchData battleData;
    battleData.setString("type", "battle");
    battle.matchData = battleData.archivedData();
    GKTurnBasedMatch empty = exchange("empty", GKTurnBasedMatchStatusOpen, kOther, kMe, now, std::nullopt);
    empty.participants.clear();
    service->stored = {
        exchange("old-open", GKTurnBasedMatchStatusOpen, kOther, kMe, now.addSecs(-600), std::nullopt),
        exchange("given", GKTurnBasedMatchStatusOpen, kOther, kMe, now.addSecs(-60), 12),
        exchange("never-answered", GKTurnBasedMatchStatusEnded, kOther, kMe, now.addSecs(-6000),
                 std::nullopt),
        exchange("asked", GKTurnBasedMatchStatusOpen, kMe, kOther, now.addSecs(-30), std::nullopt),
        exchange("refused-me", GKTurnBasedMatchStatusEnded, kMe, kOther, now.addSecs(-3000), 0),
        exchange("paid-me", GKTurnBasedMatchStatusEnded, kMe, kOther, now.addSecs(-4000), 7),
        battle,
        empty};
    UserStatsManager::sharedInstance().incrementTotalExchangeSent(30);
    ExchangesViewController* page = openPage();

    ASSERT_EQ(page->receivedExchanges.size(), 3);
    EXPECT_EQ(page->receivedExchanges[0].matchID, "given");
    EXPECT_EQ(page->receivedExchanges[1].matchID, "old-open");
    EXPECT_EQ(page->receivedExchanges[2].matchID, "never-answered");
    EXPECT_EQ(row(page, 0).value("kind"), "FinishedReceivedRequestCell");
    EXPECT_EQ(row(page, 0).value("goldText"), QStringLiteral("لقد ارسلت 12 ذهبة"));
    EXPECT_EQ(row(page, 1).value("kind"), "ReceivedRequestCell");
    EXPECT_EQ(row(page, 1).value("otherName"), QStringLiteral("سلمى"));
    // A request that was never answered and is no longer open reads as refused.
    EXPECT_EQ(row(page, 2).value("goldText"), QStringLiteral("لقد رفضت الطلب"));
    // The received tab shows the gold sent.
    EXPECT_EQ(page->totalGold(), "30");
    EXPECT_EQ(page->goldText(), QStringLiteral("مجموع الذهبات التي ارسلتها"));

    page->segmentChanged(1);
    ASSERT_EQ(page->sentExchanges.size(), 3);
    EXPECT_EQ(page->sentExchanges[0].matchID, "asked");
    // On the sent side a refusal keeps reading as waiting: the gold alone is looked at.
    EXPECT_EQ(row(page, 0).value("goldText"), QStringLiteral("بالانتظار"));
    EXPECT_EQ(row(page, 1).value("goldText"), QStringLiteral("بالانتظار"));
    EXPECT_EQ(row(page, 1).value("reply"), QString());
    EXPECT_EQ(row(page, 2).value("goldText"), "7");
    EXPECT_EQ(row(page, 2).value("goldTint"), "green");
    EXPECT_EQ(page->totalGold(), "0");
    EXPECT_EQ(page->goldText(), QStringLiteral("مجموع الذهبات التي جاءتك"));
}

TEST_F(ExchangesScreen, GoldLeavesTheGiverOnlyWhenTheAnswerIsTaken) {
    service->stored = {exchange("m", GKTurnBasedMatchStatusOpen, kOther, kMe, now, std::nullopt)};
    ExchangesViewController* page = openPage();
    EXPECT_EQ(page->maximumGift(), 100);
    EXPECT_EQ(row(page, 0).value("amount"), "1");

    // More than the giver holds is refused before anything goes out.
    page->stepperTapped(0, 150.7);
    EXPECT_EQ(row(page, 0).value("amount"), "150");
    service->calls.clear();
    page->sendGoldButtonTapped(0, QStringLiteral("خذ"));
    EXPECT_TRUE(service->calls.isEmpty());
    EXPECT_EQ(gold(), 100);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("ذهبك لا يكفي"));
    platform.alerts().press(0);

    // The answer fails: nothing moves, and the request is back in the list.
    page->stepperTapped(0, 40.9);
    service->failTurn = GKError{"network", "down", 0, 0};
    page->sendGoldButtonTapped(0, QStringLiteral("خذ"));
    EXPECT_EQ(gold(), 100);
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("حدثت مشكلة ولم يتم ارسال الطلب"));
    platform.alerts().press(0);
    ASSERT_EQ(page->receivedExchanges.size(), 1);

    // It goes through: the reply and the amount ride with the turn back to the asker, and the gold leaves.
    service->failTurn.reset();
    service->calls.clear();
    page->sendGoldButtonTapped(0, QStringLiteral("خذ"));
    ASSERT_EQ(service->calls.first().op, "endTurn");
    EXPECT_EQ(service->calls.first().next, QList<int>{0});
    EXPECT_EQ(service->dataOf(0).number("gold"), 40);
    EXPECT_EQ(service->dataOf(0).string("reply"), QStringLiteral("خذ"));
    EXPECT_EQ(gold(), 60);
    EXPECT_EQ(UserStatsManager::sharedInstance().totalExchangeSent(), 40);
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("لقد تم ارسال الذهب بنجاح"));
    EXPECT_FALSE(Platform::shared().progressHud().isVisible());
}

TEST_F(ExchangesScreen, ARefusalSendsNoGoldAndATapWhileAnsweringSendsNothingMore) {
    service->stored = {exchange("m", GKTurnBasedMatchStatusOpen, kOther, kMe, now, std::nullopt)};
    ExchangesViewController* page = openPage();
    service->calls.clear();
    service->stored.clear(); // answered: the next load no longer has it open
    page->rejectButtonTapped(0, QString());
    EXPECT_EQ(service->dataOf(0).number("gold"), 0);
    EXPECT_EQ(service->dataOf(0).string("reply"), QString());
    EXPECT_EQ(gold(), 100);
    EXPECT_EQ(platform.alerts().title(), QStringLiteral("رفض"));
    platform.alerts().press(0);
    const auto calls = service->calls.size();
    page->sendGoldButtonTapped(0, QString());
    EXPECT_EQ(service->calls.size(), calls);
}

TEST_F(ExchangesScreen, RemovalTakesTheShownSegmentsMatch) {
    service->stored = {exchange("in", GKTurnBasedMatchStatusEnded, kOther, kMe, now, 3),
                       exchange("out", GKTurnBasedMatchStatusEnded, kMe, kOther, now, 5)};
    ExchangesViewController* page = openPage();
    page->segmentChanged(1);
    service->calls.clear();
    page->removeButtonTapped(0);
    EXPECT_EQ(service->calls.first().op, "remove");
    EXPECT_EQ(service->calls.first().match.matchID, "out");
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("لقد تم حذف التبادل"));
    platform.alerts().press(0);
    service->fail = GKError{"network", "down", 0, 0};
    page->removeButtonTapped(0);
    EXPECT_EQ(platform.alerts().message(), QStringLiteral("لقد حدث خطأ في حذف التبادل"));
}

} // namespace
