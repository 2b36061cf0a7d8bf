#include "support.h"

#include <gtest/gtest.h>

#include <thread>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

// Asks until the answer is the expected one; the other instance's notice travels through the database.
std::int64_t eventualRank(TestService& svc, const Account& a, std::int64_t expected) {
    std::int64_t rank = -1;
    for (int i = 0; i < 500; ++i) {
        Reply r = svc.http().get("/v1/leaderboard/me", a.token);
        rank = r.json.at("local").is_null() ? 0 : r.json.at("local").at("rank").as_int64();
        if (rank == expected) {
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return rank;
}

} // namespace

TEST(Instances, TwoInstancesOnOneDatabaseShareEventsAndRanks) {
    TARVOLIN_REQUIRE_BACKEND("postgresql");
    TestService one("postgresql");
    TestService two(one.database());
    Account ali = one.signUp("Ali");
    Account bader = two.signUp("Bader");

    WsClient ws(two.port(), bader.token);
    EXPECT_TRUE(ws.drain().empty());
    Reply sent = one.http().post("/v1/friend-requests",
                                 json::object{{"playerID", bader.id}, {"message", "across"}}, ali.token);
    ASSERT_EQ(sent.status, 201u);
    auto e = ws.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->at("data").at("request").at("message"), "across");

    one.report(ali, 500);
    two.report(bader, 400);
    EXPECT_EQ(eventualRank(two, bader, 2), 2);
    EXPECT_EQ(eventualRank(one, bader, 2), 2);
    // A lower total reported through one instance moves the player down in the other too.
    one.report(ali, 100);
    EXPECT_EQ(eventualRank(two, bader, 1), 1);
    EXPECT_EQ(eventualRank(two, ali, 2), 2);
}

TEST(Instances, ATurnCrossesTwoInstancesAndARunOutTurnMovesOnce) {
    TARVOLIN_REQUIRE_BACKEND("postgresql");
    TestService one("postgresql");
    TestService two(one.database());
    Account ali = one.signUp("Ali");
    Account bader = two.signUp("Bader");
    one.befriend(ali, bader);

    // Ali plays on one instance; Bader, connected to the other, is told at once.
    WsClient baderEvents(two.port(), bader.token);
    baderEvents.drain();
    Reply found = one.http().post("/v1/matches", json::object{{"recipients", json::array{bader.id.c_str()}}},
                                  ali.token);
    ASSERT_EQ(found.status, 201u) << found.body;
    const std::string id(found.json.at("match").at("matchID").as_string());
    Reply passed =
        one.http().post("/v1/matches/" + id + "/turn",
                        json::object{{"nextParticipants", json::array{1, 0}}, {"timeout", 60}}, ali.token);
    ASSERT_EQ(passed.status, 200u) << passed.body;
    auto e = baderEvents.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->at("event"), "invitation");

    // Both instances sweep at once when the turn runs out: it moves once, and Ali hears it once.
    WsClient aliEvents(two.port(), ali.token);
    aliEvents.drain();
    one.advance(60'000);
    two.advance(60'000);
    std::size_t moved = 0;
    std::thread other([&] { moved += two.api().expireDueTurns(); });
    const std::size_t here = one.api().expireDueTurns();
    other.join();
    EXPECT_EQ(here + moved, 1u);
    auto turn = aliEvents.next();
    ASSERT_TRUE(turn);
    EXPECT_EQ(turn->at("event"), "turn");
    EXPECT_TRUE(aliEvents.drain().empty());
}

TEST(Instances, TheTwoPlayersOfALiveMatchSitOnDifferentInstances) {
    TARVOLIN_REQUIRE_BACKEND("postgresql");
    TestService one("postgresql");
    TestService two(one.database());
    Account ali = one.signUp("Ali");
    Account bader = two.signUp("Bader");
    one.befriend(ali, bader);
    WsClient aliWs(one.port(), ali.token);
    WsClient baderWs(two.port(), bader.token);
    aliWs.drain();
    baderWs.drain();

    Reply invited =
        one.http().post("/v1/live", json::object{{"recipients", json::array{bader.id.c_str()}}}, ali.token);
    ASSERT_EQ(invited.status, 201u) << invited.body;
    const std::string id(invited.json.at("match").at("matchID").as_string());
    ASSERT_TRUE(baderWs.nextOfType("live_invitation"));
    ASSERT_EQ(two.http().post("/v1/live/" + id + "/accept", json::object{}, bader.token).status, 200u);
    ASSERT_TRUE(aliWs.nextOfType("live_match"));

    aliWs.send(json::object{{"type", "live_connect"}, {"match", id}});
    ASSERT_TRUE(aliWs.nextOfType("live_state"));
    baderWs.send(json::object{{"type", "live_connect"}, {"match", id}});
    auto aliThere = baderWs.nextOfType("live_state");
    aliThere = baderWs.nextOfType("live_state");
    ASSERT_TRUE(aliThere);
    EXPECT_EQ(aliThere->at("player"), ali.id.c_str());
    auto baderThere = aliWs.nextOfType("live_state");
    ASSERT_TRUE(baderThere);
    EXPECT_EQ(baderThere->at("player"), bader.id.c_str());

    // Data crosses in order both ways.
    for (int i = 0; i < 20; ++i) {
        aliWs.send(json::object{{"type", "live_send"}, {"match", id}, {"data", std::to_string(5000 + i)}});
    }
    baderWs.send(json::object{{"type", "live_send"}, {"match", id}, {"data", "back"}});
    for (int i = 0; i < 20; ++i) {
        auto m = baderWs.nextOfType("live_data");
        ASSERT_TRUE(m);
        EXPECT_EQ(m->at("data"), std::to_string(5000 + i).c_str());
    }
    EXPECT_EQ(aliWs.nextOfType("live_data")->at("data"), "back");

    baderWs.send(json::object{{"type", "live_leave"}, {"match", id}});
    auto gone = aliWs.nextOfType("live_state");
    ASSERT_TRUE(gone);
    EXPECT_EQ(gone->at("state"), 2);
    EXPECT_EQ(gone->at("player"), bader.id.c_str());
}

TEST(Instances, ALogoutAndARenameOnOneInstanceReachWhatTheOtherKeepsInMemory) {
    TARVOLIN_REQUIRE_BACKEND("postgresql");
    TestService one("postgresql");
    TestService two(one.database());
    Account ali = one.signUp("Ali");
    one.report(ali, 10);
    // The second instance reads the token and the name once; from then on it answers from memory.
    auto seenByTwo = [&] { return two.http().get("/v1/leaderboard/me", ali.token); };
    Reply first = seenByTwo();
    ASSERT_EQ(first.status, 200u) << first.body;
    EXPECT_EQ(first.json.at("local").at("player").at("displayName"), "Ali");

    ASSERT_EQ(one.http().request("PATCH", "/v1/players/me", R"({"displayName":"Alia"})", ali.token).status,
              200u);
    std::string name;
    for (int i = 0; i < 500 && name != "Alia"; ++i) {
        name = std::string(seenByTwo().json.at("local").at("player").at("displayName").as_string());
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(name, "Alia");

    ASSERT_EQ(one.http().request("DELETE", "/v1/sessions/current", {}, ali.token).status, 204u);
    unsigned status = 200;
    for (int i = 0; i < 500 && status != 401; ++i) {
        status = seenByTwo().status;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(status, 401u);
}
