#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>
#include <tuple>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

// identifier, percentComplete, lastReportedDate
using State = std::vector<std::tuple<std::string, double, std::int64_t>>;

json::object item(const std::string& identifier, json::value percent) {
    return json::object{{"identifier", identifier}, {"percentComplete", std::move(percent)}};
}

State stateOf(const Reply& r) {
    State out;
    for (const auto& a : r.json.at("achievements").as_array()) {
        out.emplace_back(std::string(a.at("identifier").as_string()),
                         a.at("percentComplete").to_number<double>(), a.at("lastReportedDate").as_int64());
    }
    return out;
}

class AchievementsTest : public ServiceTest {
protected:
    Reply report(const Account& a, json::array items) {
        return svc->http().post("/v1/achievements", json::object{{"achievements", std::move(items)}},
                                a.token);
    }

    // Reports and returns the stored state of the reported identifiers.
    State reported(const Account& a, json::array items) {
        Reply r = report(a, std::move(items));
        EXPECT_EQ(r.status, 200u) << r.body;
        return r.status == 200 ? stateOf(r) : State{};
    }

    State load(const Account& a) {
        Reply r = svc->http().get("/v1/achievements", a.token);
        EXPECT_EQ(r.status, 200u) << r.body;
        return r.status == 200 ? stateOf(r) : State{};
    }

    Reply reset(const Account& a) { return svc->http().request("DELETE", "/v1/achievements", {}, a.token); }
};

} // namespace

TEST_P(AchievementsTest, ThePercentageNeverGoesDownWhileTheDateFollowsEveryReport) {
    Account a = svc->signUp("Amal");
    std::int64_t t0 = svc->now();
    EXPECT_EQ(reported(a, {item("days:5", 40)}), (State{{"days:5", 40, t0}}));
    svc->advance(1000);
    std::int64_t t1 = svc->now();
    // A lower report keeps the higher percentage and still counts as the latest report.
    EXPECT_EQ(reported(a, {item("days:5", 25.5)}), (State{{"days:5", 40, t1}}));
    EXPECT_EQ(load(a), (State{{"days:5", 40, t1}}));
    svc->advance(1000);
    std::int64_t t2 = svc->now();
    EXPECT_EQ(reported(a, {item("days:5", 40.25)}), (State{{"days:5", 40.25, t2}}));
    // Within one request too: the same identifier twice is answered once, with what is stored at the end.
    EXPECT_EQ(reported(a, {item("levels:100", 30), item("days:5", 100), item("levels:100", 10)}),
              (State{{"levels:100", 30, t2}, {"days:5", 100, t2}}));
    EXPECT_EQ(load(a), (State{{"days:5", 100, t2}, {"levels:100", 30, t2}}));
}

TEST_P(AchievementsTest, PercentagesComeBackExactlyAsReported) {
    Account a = svc->signUp("Amal");
    std::int64_t t = svc->now();
    // Values that need all 17 significant digits, the bounds, an integer and a negative zero.
    json::array items{item("third", 100.0 / 3), item("tenth", 0.1), item("tiny", 5e-324),
                      item("full", 100),        item("none", 0),    item("signed-zero", -0.0)};
    State expected{{"full", 100, t},  {"none", 0, t},          {"signed-zero", 0, t},
                   {"tenth", 0.1, t}, {"third", 100.0 / 3, t}, {"tiny", 5e-324, t}};
    State stored = reported(a, items);
    std::sort(stored.begin(), stored.end());
    EXPECT_EQ(stored, expected);
    EXPECT_EQ(load(a), expected);
    Reply r = svc->http().get("/v1/achievements", a.token);
    EXPECT_FALSE(std::signbit(r.json.at("achievements").at(2).at("percentComplete").to_number<double>()));
    // A hair above what is stored is higher and replaces it.
    double above = std::nextafter(100.0 / 3, 100.0);
    EXPECT_EQ(reported(a, {item("third", above)}), (State{{"third", above, t}}));
}

TEST_P(AchievementsTest, TheListIsInByteOrderOfIdentifiers) {
    Account a = svc->signUp("Amal");
    EXPECT_EQ(load(a), State{});
    std::int64_t t = svc->now();
    reported(a, {item("levels:100", 1), item("days:5", 2), item("days:10", 3), item("Zeta", 4), item("_x", 5),
                 item("~", 6), item("!", 7)});
    EXPECT_EQ(load(a), (State{{"!", 7, t},
                              {"Zeta", 4, t},
                              {"_x", 5, t},
                              {"days:10", 3, t},
                              {"days:5", 2, t},
                              {"levels:100", 1, t},
                              {"~", 6, t}}));
}

TEST_P(AchievementsTest, OneInvalidItemRefusesTheWholeRequestAndNothingIsWritten) {
    Account a = svc->signUp("Amal");
    std::int64_t t = svc->now();
    reported(a, {item("days:5", 50)});
    const State before{{"days:5", 50, t}};
    svc->advance(1000);

    json::array hundredOne;
    for (int i = 0; i < 101; ++i) {
        hundredOne.push_back(item("n:" + std::to_string(i), 1));
    }
    const std::string longId(65, 'x');
    // Each body starts with reports that would change what is stored, were they taken alone.
    auto withBad = [](json::value bad) {
        return json::serialize(json::object{
            {"achievements", json::array{item("days:5", 90), item("days:6", 10), std::move(bad)}}});
    };
    struct Case {
        std::string body;
        std::string code;
    };
    std::vector<Case> cases{
        {"not json", "invalid_json"},
        {R"([{"identifier": "days:5", "percentComplete": 90}])", "invalid_json"},
        {"{}", "missing_field"},
        {R"({"achievements": null})", "missing_field"},
        {R"({"achievements": "days:5"})", "invalid_field"},
        {R"({"achievements": {"identifier": "days:5", "percentComplete": 90}})", "invalid_field"},
        {R"({"achievements": []})", "invalid_field"},
        {json::serialize(json::object{{"achievements", hundredOne}}), "invalid_field"},
        {withBad("days:7"), "invalid_field"},
        {withBad(json::object{{"percentComplete", 10}}), "missing_field"},
        {withBad(json::object{{"identifier", "days:7"}}), "missing_field"},
        {withBad(item("", 10)), "invalid_field"},
        {withBad(item(longId, 10)), "invalid_field"},
        {withBad(item("days 7", 10)), "invalid_field"},
        {withBad(item("days:7\t", 10)), "invalid_field"},
        {withBad(item("days\x7f", 10)), "invalid_field"},
        {withBad(item("أيام:7", 10)), "invalid_field"},
        {withBad(json::object{{"identifier", 7}, {"percentComplete", 10}}), "invalid_field"},
        {withBad(item("days:7", "50")), "invalid_field"},
        {withBad(item("days:7", true)), "invalid_field"},
        {withBad(item("days:7", -0.5)), "invalid_field"},
        {withBad(item("days:7", -1)), "invalid_field"},
        {withBad(item("days:7", 100.000001)), "invalid_field"},
        {withBad(item("days:7", 101)), "invalid_field"},
        {R"({"achievements": [{"identifier": "days:5", "percentComplete": 90},
                              {"identifier": "days:7", "percentComplete": 1e400}]})",
         "invalid_field"},
    };
    for (const auto& c : cases) {
        Reply r = svc->http().request("POST", "/v1/achievements", c.body, a.token);
        EXPECT_EQ(r.status, 400u) << c.body;
        EXPECT_EQ(r.errorCode(), c.code) << c.body;
    }
    EXPECT_EQ(load(a), before);

    // The limits themselves are accepted.
    json::array hundred(hundredOne.begin(), hundredOne.end() - 1);
    EXPECT_EQ(reported(a, hundred).size(), 100u);
    EXPECT_EQ(reported(a, {item(std::string(64, 'x'), 100), item("!~", 0)}).size(), 2u);
    EXPECT_EQ(load(a).size(), 103u);
}

TEST_P(AchievementsTest, ATokenReachesOnlyItsOwnPlayersAchievements) {
    Account amal = svc->signUp("Amal"), badr = svc->signUp("Badr");
    std::int64_t t = svc->now();
    reported(amal, {item("days:5", 80)});
    // A player identifier in the body does not choose whose achievements change.
    Reply r = svc->http().post(
        "/v1/achievements",
        json::object{{"playerID", amal.id}, {"achievements", json::array{item("days:5", 20)}}}, badr.token);
    EXPECT_EQ(r.status, 200u);
    EXPECT_EQ(load(amal), (State{{"days:5", 80, t}}));
    EXPECT_EQ(load(badr), (State{{"days:5", 20, t}}));
    EXPECT_EQ(reset(badr).status, 204u);
    EXPECT_EQ(load(badr), State{});
    EXPECT_EQ(load(amal), (State{{"days:5", 80, t}}));
}

TEST_P(AchievementsTest, ResetRemovesEverythingAndProgressStartsAfresh) {
    Account a = svc->signUp("Amal");
    EXPECT_EQ(reset(a).status, 204u); // nothing to remove is fine too
    reported(a, {item("days:5", 100), item("levels:100", 60)});
    Reply r = reset(a);
    EXPECT_EQ(r.status, 204u);
    EXPECT_TRUE(r.body.empty());
    EXPECT_EQ(load(a), State{});
    svc->advance(5);
    // After a reset a lower percentage than before is stored as it is.
    EXPECT_EQ(reported(a, {item("days:5", 10)}), (State{{"days:5", 10, svc->now()}}));
}

TEST_P(AchievementsTest, AchievementsOutlastARestart) {
    Account a = svc->signUp("Amal");
    std::int64_t t = svc->now();
    reported(a, {item("days:5", 100.0 / 3), item("levels:100", 100)});
    svc->restart();
    const State stored{{"days:5", 100.0 / 3, t}, {"levels:100", 100, t}};
    EXPECT_EQ(load(a), stored);
    svc->advance(10);
    EXPECT_EQ(reported(a, {item("levels:100", 5)}), (State{{"levels:100", 100, t + 10}}));
}

TEST_P(AchievementsTest, ConcurrentReportsKeepTheHighest) {
    Account a = svc->signUp("Amal");
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int k = 0; k < 4; ++k) {
        threads.emplace_back([&, k] {
            HttpClient client(svc->port());
            for (int i = 0; i < 20; ++i) {
                // The highest value, 97.5, comes early from one client; everything after it is lower.
                double p = k == 1 && i == 2 ? 97.5 : (i * 4 + k) % 90;
                Reply r =
                    client.post("/v1/achievements",
                                json::object{{"achievements", json::array{item("days:5", p)}}}, a.token);
                if (r.status != 200 ||
                    r.json.at("achievements").at(0).at("percentComplete").to_number<double>() < p) {
                    ++failures;
                }
            }
        });
    }
    for (auto& t : threads) {
        t.join();
    }
    EXPECT_EQ(failures, 0);
    ASSERT_EQ(load(a).size(), 1u);
    EXPECT_EQ(std::get<1>(load(a)[0]), 97.5);
}

INSTANTIATE_TEST_SUITE_P(Backends, AchievementsTest, ::testing::ValuesIn(backends()), backendName);
