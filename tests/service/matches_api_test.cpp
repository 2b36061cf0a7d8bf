#include "store/match_rows.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

std::string b64(const std::string& s) {
    return tarvolin::store::match_rows::encodeData(s);
}

class MatchesApiTest : public ServiceTest {
protected:
    void start() override {
        amal = svc->signUp("amal");
        badr = svc->signUp("badr");
        cyrine = svc->signUp("cyrine");
    }

    json::object find(const Account& a, json::object body, unsigned expected) {
        Reply r = svc->http().post("/v1/matches", body, a.token);
        EXPECT_EQ(r.status, expected) << r.body;
        return r.status == expected && r.json.is_object() && r.obj().contains("match")
                   ? r.json.at("match").as_object()
                   : json::object{};
    }
    json::object invite(const Account& from, const Account& to) {
        return find(from, json::object{{"recipients", json::array{to.id.c_str()}}}, 201);
    }
    Reply turn(const Account& a, const std::string& id, json::array next, std::int64_t timeout,
               const std::string& data) {
        return svc->http().post("/v1/matches/" + id + "/turn",
                                json::object{{"nextParticipants", std::move(next)},
                                             {"timeout", timeout},
                                             {"matchData", b64(data)}},
                                a.token);
    }
    Reply end(const Account& a, const std::string& id, json::array outcomes) {
        return svc->http().post("/v1/matches/" + id + "/end",
                                json::object{{"outcomes", std::move(outcomes)}, {"matchData", b64("done")}},
                                a.token);
    }
    Reply exchange(const Account& from, const Account& to) {
        return svc->http().post(
            "/v1/matches", json::object{{"recipients", json::array{to.id.c_str()}}, {"purpose", "exchange"}},
            from.token);
    }
    Reply rematch(const Account& a, const std::string& id) {
        return svc->http().post("/v1/matches/" + id + "/rematch", json::object{}, a.token);
    }
    std::size_t listed(const Account& a) {
        return svc->http().get("/v1/matches", a.token).json.at("matches").as_array().size();
    }
    static std::string idOf(const json::object& m) { return std::string(m.at("matchID").as_string()); }

    Account amal, badr, cyrine;
};

} // namespace

TEST_P(MatchesApiTest, ABattleByInvitationFromTheFirstTurnToTheOutcomes) {
    svc->befriend(amal, badr);
    WsClient badrEvents(svc->port(), badr.token);
    badrEvents.drain();
    const json::object m = invite(amal, badr);
    EXPECT_EQ(m.at("status"), 1);
    EXPECT_EQ(m.at("currentParticipant"), 0);
    EXPECT_EQ(m.at("participants").as_array()[1].at("status"), 1); // invited
    const std::string id = idOf(m);

    EXPECT_EQ(turn(badr, id, {0}, 86400, "x").errorCode(), "not_your_turn");
    EXPECT_EQ(turn(cyrine, id, {1}, 86400, "x").status, 404u);
    EXPECT_EQ(svc->http().get("/v1/matches/" + id, cyrine.token).status, 404u);
    Reply passed = turn(amal, id, {1}, 86400, "battle: level 7");
    ASSERT_EQ(passed.status, 200u) << passed.body;
    // Badr learns of it as an invitation, with the match and its data.
    auto e = badrEvents.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->at("event"), "invitation");
    EXPECT_EQ(e->at("data").at("match").at("matchID"), id.c_str());
    EXPECT_EQ(e->at("data").at("match").at("matchData"), b64("battle: level 7").c_str());

    Reply listed = svc->http().get("/v1/matches", badr.token);
    ASSERT_EQ(listed.json.at("matches").as_array().size(), 1u);
    EXPECT_EQ(end(badr, id, {3}).errorCode(), "invalid_outcomes");
    WsClient amalEvents(svc->port(), amal.token);
    amalEvents.drain();
    Reply ended = end(badr, id, {3, 2});
    ASSERT_EQ(ended.status, 200u) << ended.body;
    EXPECT_EQ(ended.json.at("match").at("status"), 2);
    EXPECT_EQ(ended.json.at("match").at("participants").as_array()[1].at("matchOutcome"), 2);
    auto over = amalEvents.next();
    ASSERT_TRUE(over);
    EXPECT_EQ(over->at("event"), "match_ended");
    EXPECT_EQ(turn(amal, id, {1}, 60, "late").errorCode(), "match_ended");
}

TEST_P(MatchesApiTest, InvitationsGoToFriendsAndFormerOpponentsOnly) {
    Reply refused = svc->http().post(
        "/v1/matches", json::object{{"recipients", json::array{cyrine.id.c_str()}}}, amal.token);
    EXPECT_EQ(refused.status, 403u);
    EXPECT_EQ(refused.errorCode(), "invitation_refused");
    EXPECT_EQ(refused.json.at("error").at("gkCode"), 8);
    EXPECT_EQ(svc->http()
                  .post("/v1/matches", json::object{{"recipients", json::array{"nobody"}}}, amal.token)
                  .status,
              404u);

    // An automatic match ended together makes them former opponents.
    const std::string id = idOf(find(amal, json::object{}, 201));
    ASSERT_EQ(turn(amal, id, {1}, 3600, "level").status, 200u);
    const json::object joined = find(cyrine, json::object{}, 200);
    EXPECT_EQ(idOf(joined), id);
    ASSERT_EQ(end(cyrine, id, {4, 4}).status, 200u);
    EXPECT_EQ(invite(amal, cyrine).at("status"), 1);
    // And either may play again with the other.
    Reply again = svc->http().post("/v1/matches/" + id + "/rematch", json::object{}, cyrine.token);
    EXPECT_EQ(again.status, 201u);
    EXPECT_EQ(again.json.at("match").at("participants").as_array()[1].at("playerID"), amal.id.c_str());
}

TEST_P(MatchesApiTest, ARunOutTurnFallsThroughOnceAndAcrossARestart) {
    svc->befriend(amal, badr);
    const std::string id = idOf(invite(amal, badr));
    ASSERT_EQ(turn(amal, id, {1, 0}, 60, "d").status, 200u);
    svc->advance(59'999);
    EXPECT_EQ(svc->api().expireDueTurns(), 0u);
    svc->restart(); // the deadline is in storage
    svc->advance(1);
    WsClient amalEvents(svc->port(), amal.token);
    amalEvents.drain();
    EXPECT_EQ(svc->api().expireDueTurns(), 1u);
    EXPECT_EQ(svc->api().expireDueTurns(), 0u);
    auto e = amalEvents.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->at("event"), "turn");
    Reply m = svc->http().get("/v1/matches/" + id, amal.token);
    EXPECT_EQ(m.json.at("match").at("currentParticipant"), 0);
    // The list ran out: the turn stays with Amal for good.
    svc->advance(60'000);
    EXPECT_EQ(svc->api().expireDueTurns(), 1u);
    svc->advance(10LL * 86400 * 1000);
    EXPECT_EQ(svc->api().expireDueTurns(), 0u);
    EXPECT_EQ(svc->http().get("/v1/matches/" + id, amal.token).json.at("match").at("turnDeadline"), 0);
}

TEST_P(MatchesApiTest, DataUpToTheLimitAndRefusalsWriteNothing) {
    svc->befriend(amal, badr);
    const std::string id = idOf(invite(amal, badr));
    ASSERT_EQ(turn(amal, id, {0}, 60, std::string(64 * 1024, 'x')).status, 200u);
    Reply over = turn(amal, id, {1}, 60, std::string(64 * 1024 + 1, 'y'));
    EXPECT_EQ(over.status, 413u);
    EXPECT_EQ(over.errorCode(), "data_too_large");
    EXPECT_EQ(turn(amal, id, {1, 1}, 60, "z").errorCode(), "invalid_next_participants");
    EXPECT_EQ(turn(amal, id, {1}, 0, "z").errorCode(), "invalid_timeout");
    Reply bad = svc->http().post(
        "/v1/matches/" + id + "/turn",
        json::object{{"nextParticipants", json::array{1}}, {"matchData", "not base64!"}}, amal.token);
    EXPECT_EQ(bad.errorCode(), "invalid_field");
    const Reply now = svc->http().get("/v1/matches/" + id, amal.token);
    EXPECT_EQ(now.json.at("match").at("matchData"), b64(std::string(64 * 1024, 'x')).c_str());
    EXPECT_EQ(now.json.at("match").at("currentParticipant"), 0);

    // A match in play stays in both lists; once ended, each removes it from his own.
    EXPECT_EQ(svc->http().request("DELETE", "/v1/matches/" + id, {}, amal.token).errorCode(),
              "match_not_ended");
    ASSERT_EQ(end(amal, id, {2, 3}).status, 200u);
    EXPECT_EQ(svc->http().request("DELETE", "/v1/matches/" + id, {}, amal.token).status, 200u);
    EXPECT_TRUE(svc->http().get("/v1/matches", amal.token).json.at("matches").as_array().empty());
    EXPECT_EQ(svc->http().get("/v1/matches", badr.token).json.at("matches").as_array().size(), 1u);
}

TEST_P(MatchesApiTest, NewMatchesAreLimitedPerMinuteAndInPlay) {
    for (int i = 0; i < 10; ++i) {
        find(amal, json::object{}, 201);
    }
    Reply eleventh = svc->http().post("/v1/matches", json::object{}, amal.token);
    EXPECT_EQ(eleventh.status, 429u);
    EXPECT_EQ(eleventh.errorCode(), "too_many_new_matches");
    // Joining someone else's waiting match creates nothing.
    EXPECT_EQ(find(badr, json::object{}, 200).at("participants").as_array()[1].at("playerID"),
              badr.id.c_str());
    svc->advance(6'000);
    find(amal, json::object{}, 201);
    // Fifty in play is the most: 11 so far, 39 more.
    for (int i = 0; i < 39; ++i) {
        svc->advance(6'000);
        find(amal, json::object{}, 201);
    }
    svc->advance(6'000);
    EXPECT_EQ(svc->http().post("/v1/matches", json::object{}, amal.token).errorCode(), "too_many_matches");
}

TEST_P(MatchesApiTest, APurposeIsCheckedGivenBackAndKeptByARematch) {
    svc->befriend(amal, badr);
    for (const json::value& wrong :
         {json::value("trade"), json::value(""), json::value(7), json::value(true)}) {
        Reply r = svc->http().post(
            "/v1/matches", json::object{{"recipients", json::array{badr.id.c_str()}}, {"purpose", wrong}},
            amal.token);
        EXPECT_EQ(r.status, 400u) << json::serialize(wrong);
        EXPECT_EQ(r.errorCode(), "invalid_field") << json::serialize(wrong);
    }
    // An exchange asks one chosen player, never whoever automatic matching brings.
    for (const json::object& body : {json::object{{"purpose", "exchange"}},
                                     json::object{{"purpose", "exchange"}, {"recipients", nullptr}}}) {
        EXPECT_EQ(svc->http().post("/v1/matches", body, amal.token).errorCode(), "invalid_field");
    }
    EXPECT_EQ(listed(amal), 0u);

    EXPECT_EQ(find(amal, json::object{{"purpose", nullptr}}, 201).at("purpose"), "");
    EXPECT_EQ(find(amal, json::object{{"purpose", "battle"}}, 201).at("purpose"), "battle");
    Reply asked = exchange(amal, badr);
    ASSERT_EQ(asked.status, 201u) << asked.body;
    const std::string id = idOf(asked.json.at("match").as_object());
    EXPECT_EQ(asked.json.at("match").at("purpose"), "exchange");
    ASSERT_EQ(turn(amal, id, {1}, 3600, "50 gold").json.at("match").at("purpose"), "exchange");
    ASSERT_EQ(end(badr, id, {3, 2}).status, 200u);
    EXPECT_EQ(svc->http().get("/v1/matches/" + id, badr.token).json.at("match").at("purpose"), "exchange");

    // Whoever asks again asks for the same thing, now as the one who asks.
    Reply again = rematch(badr, id);
    ASSERT_EQ(again.status, 201u) << again.body;
    EXPECT_EQ(again.json.at("match").at("purpose"), "exchange");
    EXPECT_EQ(again.json.at("match").at("participants").as_array()[0].at("playerID"), badr.id.c_str());
    const std::string battle = idOf(
        find(amal, json::object{{"recipients", json::array{badr.id.c_str()}}, {"purpose", "battle"}}, 201));
    ASSERT_EQ(end(amal, battle, {2, 3}).status, 200u);
    EXPECT_EQ(rematch(badr, battle).json.at("match").at("purpose"), "battle");
}

TEST_P(MatchesApiTest, TenExchangeRequestsInAnyTwentyFourHours) {
    constexpr std::int64_t kHour = 3600LL * 1000;
    svc->befriend(amal, badr);
    svc->befriend(amal, cyrine);
    // Ten exchanges an hour apart, each ended at once: ended ones count as well.
    std::string first;
    for (int i = 0; i < 10; ++i) {
        Reply r = exchange(amal, badr);
        ASSERT_EQ(r.status, 201u) << i << r.body;
        const std::string id = idOf(r.json.at("match").as_object());
        first = first.empty() ? id : first;
        ASSERT_EQ(end(amal, id, {1, 2}).status, 200u);
        svc->advance(kHour);
    }
    // Ten hours after the first: the first leaves the window in fourteen.
    Reply eleventh = exchange(amal, badr);
    EXPECT_EQ(eleventh.status, 429u);
    EXPECT_EQ(eleventh.errorCode(), "too_many_exchange_requests");
    EXPECT_EQ(eleventh.headers["Retry-After"], "50400");
    // Asking again through a rematch is asking all the same.
    Reply viaRematch = rematch(amal, first);
    EXPECT_EQ(viaRematch.errorCode(), "too_many_exchange_requests");
    EXPECT_EQ(viaRematch.headers["Retry-After"], "50400");
    EXPECT_EQ(listed(amal), 10u);
    // The refusals took nothing of the minute's new matches: ten battles still fit in it.
    for (int i = 0; i < 10; ++i) {
        find(amal, json::object{{"purpose", "battle"}}, 201);
    }
    // Badr's own rematch is his request, not Amal's.
    EXPECT_EQ(rematch(badr, first).status, 201u);

    svc->advance(14 * kHour - 1);
    Reply almost = exchange(amal, badr);
    EXPECT_EQ(almost.errorCode(), "too_many_exchange_requests");
    EXPECT_EQ(almost.headers["Retry-After"], "1");
    svc->advance(1);
    EXPECT_EQ(exchange(amal, badr).status, 201u);
    // The window slides: the next request waits for the second oldest, an hour later.
    Reply next = exchange(amal, cyrine);
    EXPECT_EQ(next.errorCode(), "too_many_exchange_requests");
    EXPECT_EQ(next.headers["Retry-After"], "3600");
}

TEST_P(MatchesApiTest, OneOpenExchangeFromOnePlayerToAnother) {
    svc->befriend(amal, badr);
    svc->befriend(amal, cyrine);
    Reply firstAsk = exchange(amal, badr);
    ASSERT_EQ(firstAsk.status, 201u) << firstAsk.body;
    const std::string first = idOf(firstAsk.json.at("match").as_object());
    ASSERT_EQ(end(amal, first, {1, 2}).status, 200u);
    Reply open = exchange(amal, badr);
    ASSERT_EQ(open.status, 201u) << open.body;
    const std::string id = idOf(open.json.at("match").as_object());
    ASSERT_EQ(turn(amal, id, {1}, 3600, "50 gold").status, 200u);

    Reply again = exchange(amal, badr);
    EXPECT_EQ(again.status, 409u);
    EXPECT_EQ(again.errorCode(), "exchange_already_open");
    EXPECT_EQ(rematch(amal, first).errorCode(), "exchange_already_open");
    EXPECT_EQ(listed(amal), 2u);
    // Another pair, the other direction, and a battle between the two are not held back.
    EXPECT_EQ(exchange(amal, cyrine).status, 201u);
    EXPECT_EQ(exchange(badr, amal).status, 201u);
    EXPECT_EQ(
        find(amal, json::object{{"recipients", json::array{badr.id.c_str()}}, {"purpose", "battle"}}, 201)
            .at("purpose"),
        "battle");
    // Once the open one has ended, Amal may ask Badr again.
    ASSERT_EQ(end(badr, id, {3, 2}).status, 200u);
    EXPECT_EQ(exchange(amal, badr).status, 201u);
}

INSTANTIATE_TEST_SUITE_P(Backends, MatchesApiTest, ::testing::ValuesIn(backends()), backendName);
