#include "logic/live_rules.h"
#include "support.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

using namespace tarvolin::testing;
namespace json = boost::json;
namespace live = tarvolin::logic::live;

namespace {

std::string matchIdOf(const Reply& r) {
    return std::string(r.json.at("match").at("matchID").as_string());
}

json::object sendData(const std::string& match, const std::string& base64) {
    return json::object{{"type", "live_send"}, {"match", match}, {"data", base64}};
}

class LiveTest : public ServiceTest {
protected:
    void start() override {
        ali = svc->signUp("Ali");
        bader = svc->signUp("Bader");
    }

    // Ali invites Bader, a friend, and Bader accepts; both event sockets are open and drained.
    std::string invitedAndAccepted(WsClient& aliWs, WsClient& baderWs) {
        svc->befriend(ali, bader);
        aliWs.drain();
        baderWs.drain();
        Reply invited = svc->http().post(
            "/v1/live", json::object{{"recipients", json::array{bader.id.c_str()}}}, ali.token);
        EXPECT_EQ(invited.status, 201u) << invited.body;
        const std::string id = matchIdOf(invited);
        auto invitation = baderWs.nextOfType("live_invitation");
        EXPECT_TRUE(invitation);
        Reply accepted = svc->http().post("/v1/live/" + id + "/accept", json::object{}, bader.token);
        EXPECT_EQ(accepted.status, 200u) << accepted.body;
        EXPECT_TRUE(aliWs.nextOfType("live_match"));
        return id;
    }

    // Both connect to the relay; each hears that the other is there.
    void connectBoth(const std::string& id, WsClient& aliWs, WsClient& baderWs) {
        aliWs.send(json::object{{"type", "live_connect"}, {"match", id}});
        auto own = aliWs.nextOfType("live_state");
        ASSERT_TRUE(own);
        EXPECT_EQ(own->at("player"), ali.id.c_str());
        EXPECT_EQ(own->at("expectedPlayerCount"), 1);
        baderWs.send(json::object{{"type", "live_connect"}, {"match", id}});
        EXPECT_EQ(baderWs.nextOfType("live_state")->at("expectedPlayerCount"), 0);
        auto aliThere = baderWs.nextOfType("live_state");
        ASSERT_TRUE(aliThere);
        EXPECT_EQ(aliThere->at("player"), ali.id.c_str());
        auto baderThere = aliWs.nextOfType("live_state");
        ASSERT_TRUE(baderThere);
        EXPECT_EQ(baderThere->at("player"), bader.id.c_str());
        EXPECT_EQ(baderThere->at("state"), 1);
        EXPECT_EQ(baderThere->at("expectedPlayerCount"), 0);
    }

    Account ali;
    Account bader;
};

TEST_P(LiveTest, AutomaticMatchingPairsTwoSearchesAndNeverAPlayerWithHimself) {
    WsClient aliWs(svc->port(), ali.token);
    aliWs.drain();
    Reply first = svc->http().post("/v1/live", json::object{}, ali.token);
    ASSERT_EQ(first.status, 201u) << first.body;
    EXPECT_FALSE(first.json.at("match").at("found").as_bool());
    EXPECT_EQ(first.json.at("match").at("expectedPlayerCount"), 1);
    // Asking again while the search runs is the same search.
    Reply again = svc->http().post("/v1/live", json::object{}, ali.token);
    EXPECT_EQ(again.status, 200u);
    EXPECT_EQ(matchIdOf(again), matchIdOf(first));

    Reply joined =
        svc->http().post("/v1/live", json::object{{"minPlayers", 2}, {"maxPlayers", 2}}, bader.token);
    ASSERT_EQ(joined.status, 200u) << joined.body;
    EXPECT_EQ(matchIdOf(joined), matchIdOf(first));
    EXPECT_TRUE(joined.json.at("match").at("found").as_bool());
    auto told = aliWs.nextOfType("live_match");
    ASSERT_TRUE(told);
    EXPECT_EQ(told->at("match").at("players").at(1).at("playerID"), bader.id.c_str());

    EXPECT_EQ(svc->http().post("/v1/live", json::object{{"maxPlayers", 4}}, ali.token).errorCode(),
              "invalid_field");
    // A search that nobody joins ends after two minutes.
    Reply lonely = svc->http().post("/v1/live", json::object{}, ali.token);
    ASSERT_EQ(lonely.status, 201u);
    svc->advance(live::kWaitMs + 1);
    svc->api().expireLiveMatches();
    EXPECT_EQ(svc->http().get("/v1/live/" + matchIdOf(lonely), ali.token).status, 404u);
}

TEST_P(LiveTest, InvitationsGoToFriendsOnlyAndTheInvitedOneAccepts) {
    Account stranger = svc->signUp("Stranger");
    Reply refused = svc->http().post(
        "/v1/live", json::object{{"recipients", json::array{stranger.id.c_str()}}}, ali.token);
    EXPECT_EQ(refused.status, 403u);
    EXPECT_EQ(refused.json.at("error").at("gkCode"), 8);
    EXPECT_EQ(svc->http().get("/v1/players/me", ali.token).status, 200u);

    WsClient aliWs(svc->port(), ali.token);
    WsClient baderWs(svc->port(), bader.token);
    svc->befriend(ali, bader);
    baderWs.drain();
    Reply invited =
        svc->http().post("/v1/live", json::object{{"recipients", json::array{bader.id.c_str()}}}, ali.token);
    ASSERT_EQ(invited.status, 201u) << invited.body;
    const std::string id = matchIdOf(invited);
    auto invitation = baderWs.nextOfType("live_invitation");
    ASSERT_TRUE(invitation);
    EXPECT_EQ(invitation->at("from").at("alias"), "Ali");
    EXPECT_EQ(invitation->at("match").at("matchID"), id.c_str());

    EXPECT_EQ(svc->http().post("/v1/live/" + id + "/accept", json::object{}, ali.token).errorCode(),
              "not_invited");
    EXPECT_EQ(svc->http().post("/v1/live/" + id + "/accept", json::object{}, stranger.token).status, 404u);
    EXPECT_EQ(svc->http().get("/v1/live/" + id, stranger.token).status, 404u);
    // Connecting before the match is found is refused.
    aliWs.send(json::object{{"type", "live_connect"}, {"match", id}});
    EXPECT_EQ(aliWs.nextOfType("error")->at("error").at("code"), "live_match_not_found_yet");

    Reply accepted = svc->http().post("/v1/live/" + id + "/accept", json::object{}, bader.token);
    ASSERT_EQ(accepted.status, 200u);
    EXPECT_EQ(accepted.json.at("match").at("players").at(1).at("status"), "seated");
    EXPECT_TRUE(aliWs.nextOfType("live_match"));
}

TEST_P(LiveTest, TheRelayCarriesDataInOrderWithinItsLimits) {
    WsClient aliWs(svc->port(), ali.token);
    WsClient baderWs(svc->port(), bader.token);
    const std::string id = invitedAndAccepted(aliWs, baderWs);

    // Before Bader connects, nothing can be sent to him.
    aliWs.send(json::object{{"type", "live_connect"}, {"match", id}});
    aliWs.nextOfType("live_state");
    aliWs.send(sendData(id, "AA=="));
    EXPECT_EQ(aliWs.nextOfType("error")->at("error").at("code"), "live_not_connected");
    baderWs.send(json::object{{"type", "live_connect"}, {"match", id}});
    baderWs.nextOfType("live_state");
    baderWs.nextOfType("live_state");
    aliWs.nextOfType("live_state");

    for (int i = 0; i < 40; ++i) {
        aliWs.send(sendData(id, std::to_string(1000 + i)));
    }
    for (int i = 0; i < 40; ++i) {
        auto m = baderWs.nextOfType("live_data");
        ASSERT_TRUE(m);
        EXPECT_EQ(m->at("data"), std::to_string(1000 + i).c_str());
        EXPECT_EQ(m->at("from"), ali.id.c_str());
    }
    // The largest piece goes through; one byte more is refused.
    const std::size_t largest = (live::kMaxDataBytes + 2) / 3 * 4;
    baderWs.send(sendData(id, std::string(largest, 'A')));
    EXPECT_EQ(aliWs.nextOfType("live_data")->at("data").as_string().size(), largest);
    baderWs.send(sendData(id, std::string(largest + 1, 'A')));
    EXPECT_EQ(baderWs.nextOfType("error")->at("error").at("code"), "live_data_too_large");

    // A flood is slowed down: the burst passes, the rest is refused.
    for (int i = 0; i < 100; ++i) {
        baderWs.send(sendData(id, "AA=="));
    }
    int refused = 0;
    for (const json::value& m : baderWs.drain()) {
        refused += m.at("type") == "error" && m.at("error").at("code") == "live_too_fast";
    }
    // The test clock stands still: Bader's burst of 60 had one piece spent already.
    EXPECT_EQ(refused, 100 - static_cast<int>(live::kMessageBurst) + 1);
    const std::string metrics = svc->http().get("/metrics", "").body;
    EXPECT_NE(metrics.find("tarvolin_live_messages_total{outcome=\"relayed\"} 100\n"), std::string::npos);
    EXPECT_NE(metrics.find("tarvolin_live_messages_total{outcome=\"refused\"} 43\n"), std::string::npos);
}

TEST_P(LiveTest, LeavingEndsTheMatchAndTheOtherHearsIt) {
    WsClient aliWs(svc->port(), ali.token);
    auto baderWs = std::make_unique<WsClient>(svc->port(), bader.token);
    const std::string id = invitedAndAccepted(aliWs, *baderWs);
    connectBoth(id, aliWs, *baderWs);

    // Bader's connection drops: Ali hears that he has gone, and nothing of the match stays.
    baderWs->close();
    auto gone = aliWs.nextOfType("live_state");
    ASSERT_TRUE(gone);
    EXPECT_EQ(gone->at("player"), bader.id.c_str());
    EXPECT_EQ(gone->at("state"), 2);
    EXPECT_EQ(gone->at("reason"), "left");
    EXPECT_EQ(svc->http().get("/v1/live/" + id, ali.token).status, 404u);
    aliWs.send(sendData(id, "AA=="));
    EXPECT_EQ(aliWs.nextOfType("error")->at("error").at("code"), "live_not_connected");

    // Declining an invitation tells the inviter why.
    Reply invited =
        svc->http().post("/v1/live", json::object{{"recipients", json::array{bader.id.c_str()}}}, ali.token);
    Reply declined = svc->http().request("DELETE", "/v1/live/" + matchIdOf(invited), {}, bader.token);
    EXPECT_EQ(declined.status, 204u);
    auto why = aliWs.nextOfType("live_state");
    ASSERT_TRUE(why);
    EXPECT_EQ(why->at("reason"), "declined");
}

TEST_P(LiveTest, AFoundMatchNotConnectedInAMinuteEndsForBoth) {
    WsClient aliWs(svc->port(), ali.token);
    WsClient baderWs(svc->port(), bader.token);
    const std::string id = invitedAndAccepted(aliWs, baderWs);
    aliWs.send(json::object{{"type", "live_connect"}, {"match", id}});
    aliWs.nextOfType("live_state");
    svc->advance(live::kConnectMs - 1);
    EXPECT_EQ(svc->api().expireLiveMatches(), 0u);
    svc->advance(2);
    EXPECT_EQ(svc->api().expireLiveMatches(), 1u);
    for (WsClient* ws : {&aliWs, &baderWs}) {
        auto ended = ws->nextOfType("live_state");
        ASSERT_TRUE(ended);
        EXPECT_EQ(ended->at("state"), 2);
        EXPECT_EQ(ended->at("reason"), "expired");
    }
    EXPECT_EQ(svc->api().expireLiveMatches(), 0u);
}

TEST_P(LiveTest, APlayerHasAtMostFiveLiveMatches) {
    std::vector<Account> friends;
    for (std::size_t i = 0; i <= live::kMaxMatches; ++i) {
        friends.push_back(svc->signUp("Friend" + std::to_string(i)));
        svc->befriend(ali, friends.back());
    }
    for (std::size_t i = 0; i < live::kMaxMatches; ++i) {
        EXPECT_EQ(
            svc->http()
                .post("/v1/live", json::object{{"recipients", json::array{friends[i].id.c_str()}}}, ali.token)
                .status,
            201u);
    }
    Reply over = svc->http().post(
        "/v1/live", json::object{{"recipients", json::array{friends.back().id.c_str()}}}, ali.token);
    EXPECT_EQ(over.errorCode(), "too_many_live_matches");
}

TEST_P(LiveTest, ConcurrentSearchesSeatEveryPlayerOnce) {
    constexpr int kPlayers = 24;
    std::vector<Account> players;
    for (int i = 0; i < kPlayers; ++i) {
        players.push_back(svc->signUp("Seeker" + std::to_string(i)));
    }
    std::vector<std::string> matchOf(kPlayers);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            HttpClient http(svc->port());
            for (int i = t; i < kPlayers; i += 4) {
                matchOf[i] = matchIdOf(http.post("/v1/live", json::object{}, players[i].token));
            }
        });
    }
    for (auto& th : threads) {
        th.join();
    }
    std::map<std::string, std::set<std::string>> seated;
    for (int i = 0; i < kPlayers; ++i) {
        auto m = svc->api().store().liveMatch(matchOf[i]);
        ASSERT_TRUE(m);
        EXPECT_GE(live::seatOf(*m, players[i].id), 0);
        seated[matchOf[i]].insert(players[i].id);
    }
    for (const auto& [id, who] : seated) {
        EXPECT_LE(who.size(), 2u) << id;
    }
    // Every player is in exactly one match, so the matches hold all of them between them.
    std::size_t total = 0;
    for (const auto& [id, who] : seated) {
        total += who.size();
    }
    EXPECT_EQ(total, static_cast<std::size_t>(kPlayers));
}

INSTANTIATE_TEST_SUITE_P(Backends, LiveTest, ::testing::ValuesIn(backends()), backendName);

TEST(LiveRules, ExpectedPlayersAndStaleness) {
    live::Match m = live::createInvitation("m", "a", "b", 1000);
    EXPECT_EQ(live::expectedPlayerCount(m, "a"), 1);
    EXPECT_FALSE(live::stale(m, 1000 + live::kWaitMs));
    EXPECT_TRUE(live::stale(m, 1001 + live::kWaitMs));
    EXPECT_EQ(std::get<live::Refusal>(live::connect(m, "a")), live::Refusal::NotFound);
    m = std::get<live::Match>(live::accept(m, "b", 5000));
    m = std::get<live::Match>(live::connect(m, "a"));
    EXPECT_EQ(live::expectedPlayerCount(m, "b"), 0);
    EXPECT_EQ(live::expectedPlayerCount(m, "a"), 1);
    EXPECT_TRUE(live::stale(m, 5001 + live::kConnectMs));
    m = std::get<live::Match>(live::connect(m, "b"));
    EXPECT_FALSE(live::stale(m, 5001 + live::kConnectMs));
    EXPECT_TRUE(live::stale(m, 1001 + live::kMaxLifeMs));
}

} // namespace
