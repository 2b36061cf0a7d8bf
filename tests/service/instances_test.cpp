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
