#include "support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

using namespace tarvolin;
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

TEST_P(LeaderboardTest, ReportsThatWaitTogetherAreCommittedTogetherInTheOrderTheyCame) {
    Account a = svc->signUp("Amal"), b = svc->signUp("Badr"), c = svc->signUp("Dana");
    net::Api& api = svc->api();
    const auto before = api.reportCounts();
    auto until = [&](const std::function<bool(const net::GroupCommitCounts&)>& test) {
        for (int i = 0; i < 1000 && !test(api.reportCounts()); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return test(api.reportCounts());
    };

    // Another connection holds the scores table, so the first report's commit waits on it.
    std::mutex mutex;
    std::condition_variable changed;
    bool held = false, release = false;
    std::thread holder([&] {
        svc->database()->connect()->transact([&](store::Tx& tx) {
            if (GetParam() == "postgresql") {
                tx.script("LOCK TABLE scores IN EXCLUSIVE MODE");
            } else {
                tx.exec("UPDATE scores SET value = value WHERE player_id = $1", {a.id});
            }
            std::unique_lock lock(mutex);
            held = true;
            changed.notify_all();
            changed.wait(lock, [&] { return release; });
        });
    });
    {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return held; });
    }

    // Each report waits for its answer on a connection of its own; each is handed in once the one before it
    // is in line.
    struct Sent {
        const Account* who;
        std::int64_t value;
    };
    const std::vector<Sent> sent{{&a, 300}, {&b, 300}, {&c, 300}, {&b, 300}, {&c, 500}, {&c, 10}};
    std::vector<Reply> replies(sent.size());
    std::vector<std::thread> reporters;
    for (std::size_t i = 0; i < sent.size(); ++i) {
        reporters.emplace_back([&, i] {
            HttpClient client(svc->port());
            replies[i] = client.post("/v1/leaderboard/scores", json::object{{"value", sent[i].value}},
                                     sent[i].who->token);
        });
        if (i == 0) {
            ASSERT_TRUE(until([](const auto& n) { return n.inCommit == 1; }));
        } else {
            ASSERT_TRUE(until([i](const auto& n) { return n.waiting == i; }));
        }
    }
    {
        std::lock_guard lock(mutex);
        release = true;
        changed.notify_all();
    }
    holder.join();
    for (auto& r : reporters) {
        r.join();
    }

    // One commit for the first, one for the five that waited behind it.
    const auto after = api.reportCounts();
    EXPECT_EQ(after.batches - before.batches, 2u);
    EXPECT_EQ(after.items - before.items, 6u);
    // Each answer is the place right after that report. Badr's second 300, in the same commit as his first,
    // keeps his place ahead of Dana's; Dana is first with 500, last with 10.
    std::vector<std::int64_t> ranks;
    for (const Reply& r : replies) {
        ASSERT_EQ(r.status, 200u) << r.body;
        ranks.push_back(r.json.at("score").at("rank").as_int64());
    }
    EXPECT_EQ(ranks, (std::vector<std::int64_t>{1, 2, 3, 2, 1, 3}));
    // Dana's lower total stands. Storage agrees with memory.
    const Rows expected{{"Amal", 1}, {"Badr", 2}, {"Dana", 3}};
    EXPECT_EQ(rows(load(a, "")), expected);
    svc->restart();
    EXPECT_EQ(rows(load(a, "")), expected);
}

TEST_P(LeaderboardTest, ManyPlayersReportingAtOnceLeaveMemoryAndStorageAgreeing) {
    constexpr int kPlayers = 8, kReports = 25;
    std::vector<Account> players;
    for (int i = 0; i < kPlayers; ++i) {
        players.push_back(svc->signUp("Racer" + std::to_string(i)));
    }
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int t = 0; t < kPlayers; ++t) {
        threads.emplace_back([&, t] {
            HttpClient client(svc->port());
            for (int i = 0; i < kReports; ++i) {
                // Everyone ends on one of two totals, so ties are decided by who reached them first.
                const std::int64_t value = i + 1 == kReports ? 1000 + t % 2 : (t * 37 + i * 11) % 500;
                if (client.post("/v1/leaderboard/scores", json::object{{"value", value}}, players[t].token)
                        .status != 200) {
                    ++failures;
                }
            }
        });
    }
    for (auto& t : threads) {
        t.join();
    }
    EXPECT_EQ(failures.load(), 0);
    Reply live = load(players[0], "count=20");
    ASSERT_EQ(live.status, 200u);
    std::vector<std::int64_t> values;
    for (const auto& s : live.json.at("scores").as_array()) {
        values.push_back(s.at("value").as_int64());
    }
    EXPECT_EQ(values, (std::vector<std::int64_t>{1001, 1001, 1001, 1001, 1000, 1000, 1000, 1000}));
    svc->restart();
    EXPECT_EQ(rows(load(players[0], "count=20")), rows(live));
}

INSTANTIATE_TEST_SUITE_P(Backends, LeaderboardTest, ::testing::ValuesIn(backends()), backendName);
