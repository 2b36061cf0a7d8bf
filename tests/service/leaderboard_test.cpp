#include "support.h"

#include <gtest/gtest.h>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

class LeaderboardTest : public ServiceTest {
protected:
    Reply load(const Account& a, const std::string& query) {
        return svc->http().get("/v1/leaderboard?" + query, a.token);
    }

    static std::vector<std::pair<std::string, std::int64_t>> rows(const Reply& r) {
        std::vector<std::pair<std::string, std::int64_t>> out;
        for (const auto& s : r.json.at("scores").as_array()) {
            out.emplace_back(std::string(s.at("player").at("displayName").as_string()),
                             s.at("rank").as_int64());
        }
        return out;
    }
    using Rows = std::vector<std::pair<std::string, std::int64_t>>;
};

} // namespace

TEST_P(LeaderboardTest, RanksByScoreWithTiesToWhoeverReachedTheScoreFirst) {
    Account a = svc->signUp("Amal"), b = svc->signUp("Badr"), c = svc->signUp("Dana");
    svc->report(b, 300);
    svc->report(a, 300);
    svc->report(c, 500, 77);
    EXPECT_EQ(rows(load(a, "from=1&count=10")), (Rows{{"Dana", 1}, {"Badr", 2}, {"Amal", 3}}));
    // The same total again keeps its place; a new total is a new arrival among its equals.
    svc->report(b, 300, 5);
    EXPECT_EQ(rows(load(a, "")), (Rows{{"Dana", 1}, {"Badr", 2}, {"Amal", 3}}));
    svc->report(b, 301);
    svc->report(b, 300);
    EXPECT_EQ(rows(load(a, "")), (Rows{{"Dana", 1}, {"Amal", 2}, {"Badr", 3}}));
    // The latest report stands, also when it is lower.
    json::object lower = svc->report(c, 10);
    EXPECT_EQ(lower.at("rank"), 3);
    Reply r = load(c, "");
    EXPECT_EQ(r.json.at("scores").at(2).at("value"), 10);
    EXPECT_EQ(r.json.at("scores").at(2).at("context"), 0);
    EXPECT_EQ(r.json.at("total"), 3);
}

TEST_P(LeaderboardTest, RangesAndTheLocalPlayerOutsideThem) {
    std::vector<Account> players;
    for (int i = 0; i < 7; ++i) {
        players.push_back(svc->signUp("Player" + std::to_string(i)));
        svc->report(players.back(), 100 - i);
    }
    const Account& sixth = players[5];
    Reply page = load(sixth, "from=2&count=3");
    EXPECT_EQ(rows(page), (Rows{{"Player1", 2}, {"Player2", 3}, {"Player3", 4}}));
    EXPECT_EQ(page.json.at("local").at("rank"), 6);
    EXPECT_EQ(page.json.at("local").at("value"), 95);
    EXPECT_EQ(rows(load(sixth, "from=6&count=100")), (Rows{{"Player5", 6}, {"Player6", 7}}));
    EXPECT_TRUE(rows(load(sixth, "from=8&count=5")).empty());
    EXPECT_EQ(load(sixth, "from=8").json.at("local").at("rank"), 6);
    for (const char* bad :
         {"from=0", "from=-1", "count=0", "count=101", "from=x", "from=1.5", "scope=world"}) {
        Reply r = load(sixth, bad);
        EXPECT_EQ(r.status, 400u) << bad;
        EXPECT_EQ(r.errorCode(), "invalid_parameter") << bad;
    }
    Account fresh = svc->signUp("Newcomer");
    Reply none = load(fresh, "");
    EXPECT_TRUE(none.json.at("local").is_null());
    EXPECT_EQ(svc->http().get("/v1/leaderboard/me", sixth.token).json.at("local").at("rank"), 6);
    EXPECT_TRUE(svc->http().get("/v1/leaderboard/me", fresh.token).json.at("local").is_null());
}

TEST_P(LeaderboardTest, FriendsScopeRanksAmongFriendsOnly) {
    Account ali = svc->signUp("Ali"), bader = svc->signUp("Bader"), chadi = svc->signUp("Chadi"),
            dana = svc->signUp("Dana");
    svc->befriend(ali, bader);
    svc->befriend(dana, ali);
    svc->report(chadi, 1000); // a stranger at the top
    svc->report(bader, 500);
    svc->report(ali, 200);
    svc->report(dana, 200);

    Reply global = load(ali, "scope=global");
    EXPECT_EQ(global.json.at("local").at("rank"), 3);
    EXPECT_EQ(global.json.at("scores").at(0).at("player").at("isFriend"), false);
    EXPECT_EQ(global.json.at("scores").at(1).at("player").at("isFriend"), true);

    Reply friends = load(ali, "scope=friends");
    EXPECT_EQ(rows(friends), (Rows{{"Bader", 1}, {"Ali", 2}, {"Dana", 3}}));
    EXPECT_EQ(friends.json.at("local").at("rank"), 2);
    EXPECT_EQ(friends.json.at("total"), 3);
    EXPECT_EQ(rows(load(ali, "scope=friends&from=2&count=1")), (Rows{{"Ali", 2}}));

    // Bader's friends are Ali alone.
    Reply theirs = load(bader, "scope=friends");
    EXPECT_EQ(rows(theirs), (Rows{{"Bader", 1}, {"Ali", 2}}));
    // Chadi has no friends: the list holds Chadi alone, at rank 1.
    EXPECT_EQ(rows(load(chadi, "scope=friends")), (Rows{{"Chadi", 1}}));
}

TEST_P(LeaderboardTest, ScoresOfChosenPlayersKeepTheirGlobalRanks) {
    Account a = svc->signUp("Amal"), b = svc->signUp("Badr"), c = svc->signUp("Dana"),
            d = svc->signUp("Eyad");
    svc->report(a, 4);
    svc->report(b, 3);
    svc->report(c, 2);
    Reply r = load(a, "players=" + c.id + "," + d.id + "," + b.id);
    EXPECT_EQ(rows(r), (Rows{{"Badr", 2}, {"Dana", 3}}));
    EXPECT_EQ(r.json.at("local").at("rank"), 1);
}

TEST_P(LeaderboardTest, ReportsAreValidatedAndActOnlyForTheTokensPlayer) {
    Account a = svc->signUp("Amal"), b = svc->signUp("Badr");
    svc->report(a, 50, 12345678901234567);
    for (const char* body : {R"({"value":1.5})", R"({"value":"12x"})", R"({"value":18446744073709551615})",
                             R"({"context":3})", R"({"value":1,"context":[1]})", R"({"value":true})", "{"}) {
        Reply r = svc->http().request("POST", "/v1/leaderboard/scores", body, a.token);
        EXPECT_EQ(r.status, 400u) << body;
    }
    // Naming another player in the body changes nothing: the token decides who reports.
    Reply r = svc->http().request("POST", "/v1/leaderboard/scores",
                                  R"({"value":"-9","playerID":")" + a.id + "\"}", b.token);
    ASSERT_EQ(r.status, 200u);
    EXPECT_EQ(r.json.at("score").at("player").at("playerID"), b.id.c_str());
    Reply board = load(a, "");
    EXPECT_EQ(rows(board), (Rows{{"Amal", 1}, {"Badr", 2}}));
    EXPECT_EQ(board.json.at("local").at("value"), 50);
    EXPECT_EQ(board.json.at("local").at("context"), 12345678901234567);
    EXPECT_EQ(board.json.at("scores").at(1).at("value"), -9);
}

TEST_P(LeaderboardTest, RestartKeepsAccountsFriendsScoresAndTies) {
    Account a = svc->signUp("Amal"), b = svc->signUp("Badr"), c = svc->signUp("Dana");
    svc->befriend(a, b);
    svc->report(b, 70, 1);
    svc->report(a, 70, 2);
    svc->report(c, 90, 3);
    svc->restart();
    Reply board = load(a, "");
    ASSERT_EQ(board.status, 200u) << board.body;
    EXPECT_EQ(rows(board), (Rows{{"Dana", 1}, {"Badr", 2}, {"Amal", 3}}));
    EXPECT_EQ(board.json.at("local").at("context"), 2);
    EXPECT_EQ(rows(load(a, "scope=friends")), (Rows{{"Badr", 1}, {"Amal", 2}}));
    // A report after the restart still comes after earlier equals.
    svc->report(c, 70);
    EXPECT_EQ(rows(load(b, "")), (Rows{{"Badr", 1}, {"Amal", 2}, {"Dana", 3}}));
    Reply in = svc->http().post("/v1/sessions",
                                json::object{{"displayName", "dana"}, {"password", "correct horse"}});
    EXPECT_EQ(in.status, 200u);
}

INSTANTIATE_TEST_SUITE_P(Backends, LeaderboardTest, ::testing::ValuesIn(backends()), backendName);
