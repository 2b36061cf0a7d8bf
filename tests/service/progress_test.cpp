// Saved progress: the gold bound on its own, and the API over each backend.
#include "logic/progress_rules.h"
#include "store/match_rows.h"
#include "support.h"

#include <gtest/gtest.h>

using namespace tarvolin::testing;
namespace json = boost::json;
namespace rules = tarvolin::logic::progress;

namespace {

rules::Summary summary(std::int64_t level, std::int64_t gold) {
    rules::Summary s;
    s.level = level;
    s.gold = gold;
    return s;
}

} // namespace

TEST(ProgressGoldBound, LevelsPayTheirGoldAndEachRoundFinishedOnTheWay) {
    EXPECT_EQ(rules::levelGold(0, 1), 5);
    EXPECT_EQ(rules::levelGold(0, 24), 24 * 5);
    EXPECT_EQ(rules::levelGold(24, 25), 5 + 100); // the last level of a round finishes it
    EXPECT_EQ(rules::levelGold(10, 60), 50 * 5 + 2 * 100);
    EXPECT_EQ(rules::levelGold(30, 30), 0);
    EXPECT_EQ(rules::levelGold(60, 10), 0); // going back pays nothing
}

TEST(ProgressGoldBound, AFirstSaveHasTheStartingGoldAndWhatItsLevelsAndDaysPaid) {
    // Level 30 on the first day: the starting 150, 30 levels and one round, one day of bonuses.
    rules::Summary first = summary(30, 0);
    first.activeDays = 1;
    const std::int64_t allowed = 150 + 30 * 5 + 100 + rules::kGoldPerActiveDay;
    EXPECT_EQ(rules::goldAllowance(std::nullopt, first, 0, {}), allowed);
    first.gold = allowed;
    EXPECT_TRUE(rules::goldEarned(std::nullopt, first, 0, {}));
    first.gold = allowed + 1;
    EXPECT_FALSE(rules::goldEarned(std::nullopt, first, 0, {}));
    // A profile cannot claim more bonus days than a bonus history holds.
    first.activeDays = 5000;
    EXPECT_EQ(rules::goldAllowance(std::nullopt, first, 0, {}),
              150 + 30 * 5 + 100 + rules::kMaxBonusDays * rules::kGoldPerActiveDay);
}

TEST(ProgressGoldBound, NewActiveDaysCountOnlyAsFarAsTheTimeSinceTheLastSaveReaches) {
    rules::Summary before = summary(100, 500);
    before.activeDays = 10;
    rules::Summary next = before;
    next.activeDays = 13;
    const std::int64_t hour = 3'600'000;
    EXPECT_EQ(rules::goldAllowance(before, next, 0, {}), 0);
    EXPECT_EQ(rules::goldAllowance(before, next, hour, {}), rules::kGoldPerActiveDay); // past one midnight
    EXPECT_EQ(rules::goldAllowance(before, next, 30 * hour, {}), 2 * rules::kGoldPerActiveDay);
    EXPECT_EQ(rules::goldAllowance(before, next, 300 * hour, {}), 3 * rules::kGoldPerActiveDay);
    next.activeDays = 9; // a count that falls claims nothing
    EXPECT_EQ(rules::goldAllowance(before, next, 300 * hour, {}), 0);
}

TEST(ProgressGoldBound, AchievementsSharesAndTheServicesOwnRecordsAddTheirGold) {
    rules::Summary before = summary(40, 1000);
    before.rewardedAchievements = {"days:1"};
    before.levelsShared = 8;
    rules::Summary next = before;
    // A collected achievement pays its row's gold once; an unknown one pays nothing.
    next.rewardedAchievements = {"days:1", "gc:1", "made-up:9"};
    EXPECT_EQ(rules::goldAllowance(before, next, 0, {}), 1000);
    // Only the first ten shared levels pay.
    next.rewardedAchievements = before.rewardedAchievements;
    next.levelsShared = 30;
    EXPECT_EQ(rules::goldAllowance(before, next, 0, {}), 2 * 50);
    next.levelsShared = before.levelsShared;
    EXPECT_EQ(rules::goldAllowance(before, next, 0, rules::Earnings{900, 3, 40}), 900 + 3 * 25 + 40);
}

TEST(ProgressGoldBound, GoldThatFallsIsAlwaysFine) {
    const rules::Summary before = summary(400, 9000);
    EXPECT_TRUE(rules::goldEarned(before, summary(400, 0), 0, {}));
    EXPECT_TRUE(rules::goldEarned(before, summary(2, 8999), 0, {}));
    EXPECT_FALSE(rules::goldEarned(before, summary(400, 9001), 0, {}));
    EXPECT_TRUE(rules::goldEarned(before, summary(401, 9005), 0, {}));
}

TEST(ProgressGoldBound, TheGoldOfAnExchangeIsReadFromItsMatchData) {
    EXPECT_EQ(rules::exchangeGold(R"({"gold":120,"reply":"خذ","type":"exchange"})"), 120);
    EXPECT_EQ(rules::exchangeGold(R"({"type":"exchange"})"), 0);
    EXPECT_EQ(rules::exchangeGold(R"({"gold":-50})"), 0);
    EXPECT_EQ(rules::exchangeGold(R"({"gold":"120"})"), 0);
    EXPECT_EQ(rules::exchangeGold("not json"), 0);
}

TEST(ProgressDocument, EverySavedFieldIsCheckedForItsTypeAndRange) {
    const std::string good = json::serialize(progressDocument(12, 200));
    ASSERT_TRUE(std::holds_alternative<rules::Summary>(rules::readDocument(good)));
    const auto refusal = [](json::object doc) {
        auto r = rules::readDocument(json::serialize(doc));
        return std::holds_alternative<rules::DocumentError>(r) ? std::get<rules::DocumentError>(r).message
                                                               : std::string();
    };
    json::object d = progressDocument(12, 200);
    d["schema"] = 2;
    EXPECT_NE(refusal(d).find("\"schema\""), std::string::npos);
    d = progressDocument(12, -1);
    EXPECT_NE(refusal(d).find("\"gold\""), std::string::npos);
    d = progressDocument(12, 200);
    d.erase("level");
    EXPECT_NE(refusal(d).find("\"level\" is missing"), std::string::npos);
    d = progressDocument(12, 200);
    d["stats"].as_object()["activeDays"] = "many";
    EXPECT_NE(refusal(d).find("stats.activeDays"), std::string::npos);
    d = progressDocument(12, 200);
    d["round"].as_object()["previousRound"] = 1;
    EXPECT_NE(refusal(d).find("round.previousRound"), std::string::npos);
    d = progressDocument(12, 200);
    d["cheats"] = true;
    EXPECT_NE(refusal(d).find("\"cheats\""), std::string::npos);
    d = progressDocument(12, 200, 1, json::object{{"days:1", json::object{{"achieved", true}}}});
    EXPECT_NE(refusal(d).find("rewarded"), std::string::npos);
    d = progressDocument(12, 200);
    d["stats"].as_object()["dailyLevels"] = json::array{json::object{{"day", 1}, {"value", 2}}};
    EXPECT_NE(refusal(d).find("dailyLevels[0].date"), std::string::npos);
    EXPECT_TRUE(std::holds_alternative<rules::DocumentError>(rules::readDocument("[1, 2]")));
    EXPECT_TRUE(std::holds_alternative<rules::DocumentError>(rules::readDocument("{\"level\": ")));
}

namespace {

class ProgressApiTest : public ServiceTest {
protected:
    void start() override {
        amal = svc->signUp("amal");
        badr = svc->signUp("badr");
    }
    Reply save(const Account& a, std::int64_t base, const json::value& progress) {
        return svc->http().request(
            "PUT", "/v1/progress",
            json::serialize(json::object{{"baseVersion", base}, {"progress", progress}}), a.token);
    }
    // Saves and insists on success; the new version.
    std::int64_t saved(const Account& a, std::int64_t base, const json::value& progress) {
        Reply r = save(a, base, progress);
        EXPECT_EQ(r.status, 200u) << r.body;
        return r.status == 200 ? r.json.at("version").as_int64() : -1;
    }
    std::vector<std::int64_t> versions(const Account& a) {
        Reply r = svc->http().get("/v1/progress/versions", a.token);
        EXPECT_EQ(r.status, 200u) << r.body;
        std::vector<std::int64_t> out;
        for (const json::value& v : r.json.at("versions").as_array()) {
            out.push_back(v.at("version").as_int64());
        }
        return out;
    }

    Account amal, badr;
};

} // namespace

TEST_P(ProgressApiTest, ASaveReadsBackWholeAndOnlyForItsPlayer) {
    EXPECT_EQ(svc->http().get("/v1/progress", amal.token).errorCode(), "no_progress");
    const json::object doc =
        progressDocument(40, 300, 1, json::object{{"days:1", {{"achieved", true}, {"rewarded", true}}}});
    EXPECT_EQ(saved(amal, 0, doc), 1);

    Reply r = svc->http().get("/v1/progress", amal.token);
    ASSERT_EQ(r.status, 200u) << r.body;
    EXPECT_EQ(r.json.at("version"), 1);
    EXPECT_EQ(r.json.at("savedAt"), svc->now());
    EXPECT_EQ(r.json.at("progress"), doc);
    EXPECT_EQ(svc->http().get("/v1/progress", badr.token).errorCode(), "no_progress");
    EXPECT_TRUE(versions(badr).empty());
}

TEST_P(ProgressApiTest, TheNewestFiveVersionsAreKeptNewestFirst) {
    std::int64_t version = 0;
    for (int i = 1; i <= 7; ++i) {
        svc->advance(60'000);
        version = saved(amal, version, progressDocument(10 * i, 150 + 50 * i));
    }
    EXPECT_EQ(version, 7);
    EXPECT_EQ(versions(amal), (std::vector<std::int64_t>{7, 6, 5, 4, 3}));
    Reply r = svc->http().get("/v1/progress/versions", amal.token);
    const json::object& newest = r.json.at("versions").as_array()[0].as_object();
    EXPECT_EQ(newest.at("level"), 70);
    EXPECT_EQ(newest.at("gold"), 150 + 350);
    EXPECT_EQ(newest.at("savedAt"), svc->now());
    EXPECT_FALSE(newest.contains("progress")); // the list is a summary
    EXPECT_EQ(svc->http().get("/v1/progress", amal.token).json.at("progress").at("level"), 70);
}

TEST_P(ProgressApiTest, ASaveBasedOnAnOlderVersionIsRefusedWithTheNewest) {
    EXPECT_EQ(saved(amal, 0, progressDocument(20, 200)), 1);
    EXPECT_EQ(saved(amal, 1, progressDocument(30, 250)), 2); // another device of hers
    // The first device still stands on version 1: it gets version 2 to choose from, and nothing is stored.
    Reply r = save(amal, 1, progressDocument(25, 220));
    ASSERT_EQ(r.status, 409u) << r.body;
    EXPECT_EQ(r.errorCode(), "progress_conflict");
    EXPECT_EQ(r.json.at("newest").at("version"), 2);
    EXPECT_EQ(r.json.at("newest").at("progress").at("level"), 30);
    EXPECT_EQ(versions(amal), (std::vector<std::int64_t>{2, 1}));
    // A first save on a player who has saved already conflicts too; one from the future as well.
    EXPECT_EQ(save(amal, 0, progressDocument(25, 220)).status, 409u);
    EXPECT_EQ(save(amal, 9, progressDocument(25, 220)).status, 409u);
    // Keeping this device's progress after seeing the newest: a save based on it overwrites it.
    EXPECT_EQ(saved(amal, 2, progressDocument(25, 220)), 3);
    EXPECT_EQ(svc->http().get("/v1/progress", amal.token).json.at("progress").at("level"), 25);
}

TEST_P(ProgressApiTest, GoldBeyondWhatTheGameAndTheServicePaidIsRefused) {
    // A fresh player claiming gold at level 0: the starting gold and one day of bonuses at most.
    Reply minted = save(amal, 0, progressDocument(0, 5000));
    ASSERT_EQ(minted.status, 422u) << minted.body;
    EXPECT_EQ(minted.errorCode(), "gold_not_earned");
    EXPECT_EQ(minted.json.at("error").at("allowedGold"), 150 + rules::kGoldPerActiveDay);
    EXPECT_EQ(svc->http().get("/v1/progress", amal.token).errorCode(), "no_progress");
    EXPECT_EQ(saved(amal, 0, progressDocument(0, 150 + rules::kGoldPerActiveDay)), 1);

    // Levels: ten levels pay 50 gold, not 51.
    EXPECT_EQ(save(amal, 1, progressDocument(10, 150 + rules::kGoldPerActiveDay + 51)).errorCode(),
              "gold_not_earned");
    std::int64_t gold = 150 + rules::kGoldPerActiveDay + 50;
    EXPECT_EQ(saved(amal, 1, progressDocument(10, gold)), 2);

    // A purchase of the first pack (900 gold) is known to the service.
    Reply opened = svc->http().post(
        "/v1/store/payments", json::object{{"productIdentifier", "com.molvane.tarvolin.pack1"}}, amal.token);
    ASSERT_EQ(opened.status, 201u) << opened.body;
    const std::string id = str(opened.json.at("transaction").at("transactionIdentifier"));
    EXPECT_EQ(save(amal, 2, progressDocument(10, gold + 900)).errorCode(), "gold_not_earned"); // not paid yet
    svc->advance(1);
    ASSERT_EQ(svc->http().post("/v1/store/payments/" + id + "/approve", json::object{}, amal.token).status,
              200u);
    gold += 900;
    EXPECT_EQ(saved(amal, 2, progressDocument(10, gold)), 3);
    // The same purchase pays once.
    EXPECT_EQ(save(amal, 3, progressDocument(10, gold + 900)).errorCode(), "gold_not_earned");

    // A rewarded ad watched to its end.
    Reply next = svc->http().get("/v1/ads/next?unit=tarvolin-rewarded&tracking=denied", amal.token);
    ASSERT_EQ(next.status, 200u) << next.body;
    Reply seen = svc->http().post(
        "/v1/ads/impressions",
        json::object{{"impressionToken", next.json.at("ad").at("impressionToken")}, {"tracking", "denied"}},
        amal.token);
    ASSERT_EQ(seen.status, 201u) << seen.body;
    svc->advance(next.json.at("ad").at("durationSeconds").as_int64() * 1000 + 1);
    ASSERT_EQ(svc->http()
                  .post("/v1/ads/rewards",
                        json::object{{"impressionIdentifier", seen.json.at("impressionIdentifier")}},
                        amal.token)
                  .status,
              200u);
    EXPECT_EQ(save(amal, 3, progressDocument(10, gold + rules::kAdRewardGold + 1)).errorCode(),
              "gold_not_earned");
    gold += rules::kAdRewardGold;
    EXPECT_EQ(saved(amal, 3, progressDocument(10, gold)), 4);

    // Spending is always fine; another player's purchase is no help to her.
    EXPECT_EQ(saved(amal, 4, progressDocument(10, 3)), 5);
    EXPECT_EQ(versions(amal).front(), 5);
}

TEST_P(ProgressApiTest, GoldGivenInAnExchangeCountsOnceTheAskerEndsIt) {
    svc->befriend(amal, badr);
    EXPECT_EQ(saved(amal, 0, progressDocument(4, 170)), 1);
    const auto data = [](const std::string& json) { return tarvolin::store::match_rows::encodeData(json); };
    Reply asked = svc->http().post(
        "/v1/matches", json::object{{"recipients", json::array{badr.id.c_str()}}, {"purpose", "exchange"}},
        amal.token);
    ASSERT_EQ(asked.status, 201u) << asked.body;
    const std::string id = str(asked.json.at("match").at("matchID"));
    const auto turn = [&](const Account& a, int next, const std::string& matchData) {
        Reply r = svc->http().post("/v1/matches/" + id + "/turn",
                                   json::object{{"nextParticipants", json::array{next}},
                                                {"timeout", 86400},
                                                {"matchData", data(matchData)}},
                                   a.token);
        ASSERT_EQ(r.status, 200u) << r.body;
    };
    turn(amal, 1, R"({"type":"exchange"})");
    svc->advance(1);
    turn(badr, 0, R"({"gold":120,"reply":"تفضلي","type":"exchange"})");
    // Answered but not ended: the asker has not been paid yet.
    EXPECT_EQ(save(amal, 1, progressDocument(4, 290)).errorCode(), "gold_not_earned");
    Reply ended = svc->http().post(
        "/v1/matches/" + id + "/end",
        json::object{{"outcomes", json::array{2, 3}},
                     {"matchData", data(R"({"gold":120,"reply":"تفضلي","type":"exchange"})")}},
        amal.token);
    ASSERT_EQ(ended.status, 200u) << ended.body;
    EXPECT_EQ(save(amal, 1, progressDocument(4, 291)).errorCode(), "gold_not_earned");
    EXPECT_EQ(saved(amal, 1, progressDocument(4, 290)), 2);
    // Counted once: the next save has no more of it, and the giver gains nothing by it.
    svc->advance(1);
    EXPECT_EQ(save(amal, 2, progressDocument(4, 410)).errorCode(), "gold_not_earned");
    EXPECT_EQ(save(badr, 0, progressDocument(0, 150 + rules::kGoldPerActiveDay + 120)).errorCode(),
              "gold_not_earned");
}

TEST_P(ProgressApiTest, MalformedSavesAreRefusedAndStoreNothing) {
    struct Case {
        std::string body;
        std::string code;
    };
    json::object tooLarge = progressDocument(5, 100);
    tooLarge["padding"] = std::string(rules::kMaxDocumentBytes, 'x');
    json::object badType = progressDocument(5, 100);
    badType["skips"] = 1.5;
    const std::vector<Case> cases{
        {"{", "invalid_json"},
        {R"({"progress": {}})", "invalid_field"},
        {R"({"baseVersion": -1, "progress": {}})", "invalid_field"},
        {R"({"baseVersion": 0})", "missing_field"},
        {R"({"baseVersion": 0, "progress": "level 9"})", "invalid_progress"},
        {json::serialize(json::object{{"baseVersion", 0}, {"progress", badType}}), "invalid_progress"},
        {json::serialize(json::object{{"baseVersion", 0}, {"progress", tooLarge}}), "progress_too_large"},
    };
    for (const Case& c : cases) {
        Reply r = svc->http().request("PUT", "/v1/progress", c.body, amal.token);
        EXPECT_EQ(r.status, 400u) << c.body.substr(0, 80) << ": " << r.body;
        EXPECT_EQ(r.errorCode(), c.code) << c.body.substr(0, 80);
        EXPECT_FALSE(r.json.at("error").at("message").as_string().empty());
    }
    EXPECT_EQ(svc->http().get("/v1/progress", amal.token).errorCode(), "no_progress");
    EXPECT_EQ(svc->http().request("PUT", "/v1/progress", "{}", "").status, 401u);
}

INSTANTIATE_TEST_SUITE_P(Backends, ProgressApiTest, ::testing::ValuesIn(backends()), backendName);
