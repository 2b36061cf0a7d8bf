#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <latch>
#include <regex>
#include <thread>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

class AdsApiTest : public ServiceTest {
protected:
    void start() override {
        amal = svc->signUp("amal");
        badr = svc->signUp("badr");
    }

    json::object next(const Account& a, const std::string& unit) {
        Reply r = svc->http().get("/v1/ads/next?unit=" + unit + "&tracking=authorized", a.token);
        EXPECT_EQ(r.status, 200u) << r.body;
        return r.status == 200 ? r.json.at("ad").as_object() : json::object{};
    }
    Reply impression(const Account& a, const std::string& token, const std::string& tracking = "authorized") {
        return svc->http().post("/v1/ads/impressions",
                                json::object{{"impressionToken", token}, {"tracking", tracking}}, a.token);
    }
    // Serves an ad of the unit and records its impression; returns the impression's identifier.
    std::string watch(const Account& a, const std::string& unit, const std::string& tracking = "authorized") {
        Reply r = impression(a, str(next(a, unit).at("impressionToken")), tracking);
        EXPECT_EQ(r.status, 201u) << r.body;
        return r.status == 201 ? str(r.json.at("impressionIdentifier")) : std::string();
    }
    Reply reward(const Account& a, const std::string& impressionId) {
        return svc->http().post("/v1/ads/rewards", json::object{{"impressionIdentifier", impressionId}},
                                a.token);
    }
    void operatorSql(const std::string& sql) {
        svc->database()->connect()->transact([&](tarvolin::store::Tx& tx) { tx.exec(sql); });
    }
    double counted(const std::string& series) { return metricValue(svc->http(), series); }

    Account amal, badr;
};

} // namespace

TEST_P(AdsApiTest, EachUnitRotatesThroughTheActiveAdsOfItsFormat) {
    // Never served first, by identifier; then the one served longest ago. The inactive eid-gold is left out.
    std::vector<std::string> seen;
    for (int i = 0; i < 4; ++i) {
        seen.push_back(str(next(amal, "tarvolin-interstitial").at("adIdentifier")));
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"challenge-friends", "molvane-souq", "store-gold",
                                              "challenge-friends"}));
    EXPECT_EQ(next(badr, "tarvolin-interstitial").at("adIdentifier"),
              "challenge-friends"); // his own rotation

    operatorSql("UPDATE house_ads SET active = 1 WHERE id = 'eid-gold'");
    EXPECT_EQ(next(amal, "tarvolin-interstitial").at("adIdentifier"), "eid-gold");
    EXPECT_EQ(next(amal, "tarvolin-interstitial").at("adIdentifier"), "molvane-souq");

    // The two banner units share the banners and one rotation.
    EXPECT_EQ(next(amal, "tarvolin-banner-phone").at("adIdentifier"), "leaderboard-top");
    json::object banner = next(amal, "tarvolin-banner-tablet");
    EXPECT_EQ(banner.at("adIdentifier"), "molvane-najma");
    EXPECT_EQ(next(amal, "tarvolin-banner-phone").at("adIdentifier"), "leaderboard-top");

    EXPECT_EQ(banner.at("format"), "banner");
    EXPECT_EQ(banner.at("kind"), "picture");
    EXPECT_EQ(banner.at("promotion"), "cross");
    EXPECT_EQ(banner.at("imageUrl"), "/v1/ads/creatives/molvane-najma.svg");
    EXPECT_GE(banner.at("width").as_int64(), 320);
    EXPECT_GE(banner.at("height").as_int64(), 50);
    EXPECT_EQ(banner.at("durationSeconds"), 0);
    for (const char* colour : {"background", "foreground", "accent"}) {
        EXPECT_TRUE(std::regex_match(str(banner.at(colour)), std::regex("#[0-9A-Fa-f]{6}"))) << colour;
    }
    EXPECT_EQ(next(amal, "tarvolin-interstitial").at("adIdentifier"), "store-gold");
    json::object card = next(amal, "tarvolin-interstitial");
    EXPECT_EQ(card.at("adIdentifier"), "challenge-friends");
    EXPECT_EQ(card.at("kind"), "card");
    EXPECT_TRUE(card.at("imageUrl").is_null());
    EXPECT_EQ(card.at("width"), 0);
    json::object rewarded = next(amal, "tarvolin-rewarded");
    EXPECT_EQ(rewarded.at("format"), "rewarded");
    EXPECT_GE(rewarded.at("durationSeconds").as_int64(), 15);
    EXPECT_NE(rewarded.at("impressionToken"), card.at("impressionToken"));
    EXPECT_EQ(counted("tarvolin_ads_served_total{format=\"interstitial\"}"), 9);
    EXPECT_EQ(counted("tarvolin_ads_served_total{format=\"banner\"}"), 3);
}

TEST_P(AdsApiTest, UnknownUnitsAreRefusedAndAFormatWithNothingActiveHasNoFill) {
    for (const std::string query : {"unit=tarvolin-video", "unit=", "tracking=denied"}) {
        Reply r = svc->http().get("/v1/ads/next?" + query, amal.token);
        EXPECT_EQ(r.status, 400u) << query;
        EXPECT_EQ(r.errorCode(), "invalid_ad_unit") << query;
    }
    EXPECT_EQ(svc->http().get("/v1/ads/next?unit=tarvolin-rewarded&tracking=yes", amal.token).errorCode(),
              "invalid_parameter");
    EXPECT_EQ(svc->http().get("/v1/ads/next?unit=tarvolin-rewarded", "").status, 401u);

    operatorSql("UPDATE house_ads SET active = 0 WHERE format = 'banner'");
    for (const char* unit : {"tarvolin-banner-phone", "tarvolin-banner-tablet"}) {
        Reply r = svc->http().get(std::string("/v1/ads/next?unit=") + unit, amal.token);
        EXPECT_EQ(r.status, 404u) << unit;
        EXPECT_EQ(r.errorCode(), "no_fill") << unit;
    }
    EXPECT_EQ(svc->http().get("/v1/ads/next?unit=tarvolin-interstitial", amal.token).status, 200u);
}

TEST_P(AdsApiTest, AnImpressionTokenIsSpentOnceByItsOwnPlayer) {
    const std::string token = str(next(amal, "tarvolin-interstitial").at("impressionToken"));
    Reply stolen = impression(badr, token);
    EXPECT_EQ(stolen.status, 404u);
    EXPECT_EQ(stolen.errorCode(), "impression_not_found");
    Reply recorded = impression(amal, token, "denied");
    ASSERT_EQ(recorded.status, 201u) << recorded.body;
    EXPECT_TRUE(std::regex_match(str(recorded.json.at("impressionIdentifier")), std::regex("I[0-9a-f]{16}")));
    Reply again = impression(amal, token);
    EXPECT_EQ(again.status, 409u);
    EXPECT_EQ(again.errorCode(), "impression_already_recorded");
    EXPECT_EQ(impression(amal, "0123456789abcdef0123456789abcdef").errorCode(), "impression_not_found");
    EXPECT_EQ(impression(amal, std::string(4096, 'a')).errorCode(), "impression_not_found");

    const std::string fresh = str(next(amal, "tarvolin-interstitial").at("impressionToken"));
    EXPECT_EQ(impression(amal, fresh, "maybe").errorCode(), "invalid_field");
    auto code = [&](const std::string& body) {
        return svc->http().request("POST", "/v1/ads/impressions", body, amal.token).errorCode();
    };
    EXPECT_EQ(code("{\"impressionToken\""), "invalid_json");
    EXPECT_EQ(code("{}"), "missing_field");
    EXPECT_EQ(code(R"({"impressionToken":12})"), "invalid_field");
    // Refused requests spent nothing; without a tracking answer the impression counts as not determined.
    EXPECT_EQ(code(R"({"impressionToken":")" + fresh + "\"}"), "");
    EXPECT_EQ(counted("tarvolin_ad_impressions_total{format=\"interstitial\"}"), 2);
}

TEST_P(AdsApiTest, OnlyAuthorizedTrackingOrARewardKeepsWhoSawAnImpression) {
    const std::string denied = watch(amal, "tarvolin-interstitial", "denied");
    const std::string undetermined = watch(amal, "tarvolin-banner-phone", "notDetermined");
    const std::string authorized = watch(amal, "tarvolin-interstitial", "authorized");
    const std::string rewarded = watch(amal, "tarvolin-rewarded", "denied");
    std::map<std::string, bool> kept;
    svc->database()->connect()->transact([&](tarvolin::store::Tx& tx) {
        for (const auto& row : tx.exec("SELECT id, player_id FROM ad_impressions")) {
            kept[row.text(0)] = !row.isNull(1);
        }
    });
    EXPECT_EQ(kept, (std::map<std::string, bool>{
                        {denied, false}, {undetermined, false}, {authorized, true}, {rewarded, true}}));
}

TEST_P(AdsApiTest, ARewardWaitsForTheAdsDurationAndIsGrantedOnce) {
    json::object ad = next(amal, "tarvolin-rewarded");
    const std::int64_t durationMs = ad.at("durationSeconds").as_int64() * 1000;
    Reply recorded = impression(amal, str(ad.at("impressionToken")));
    ASSERT_EQ(recorded.status, 201u);
    const std::string id = str(recorded.json.at("impressionIdentifier"));

    Reply early = reward(amal, id);
    EXPECT_EQ(early.status, 409u);
    EXPECT_EQ(early.errorCode(), "reward_too_early");
    svc->advance(durationMs - 1);
    EXPECT_EQ(reward(amal, id).errorCode(), "reward_too_early");
    svc->advance(1);
    EXPECT_EQ(reward(badr, id).errorCode(), "impression_not_found");
    Reply granted = reward(amal, id);
    ASSERT_EQ(granted.status, 200u) << granted.body;
    EXPECT_EQ(granted.json, (json::object{{"rewarded", true}}));
    Reply twice = reward(amal, id);
    EXPECT_EQ(twice.status, 409u);
    EXPECT_EQ(twice.errorCode(), "already_rewarded");

    // The next rewarded ad runs longer, and its own duration counts.
    const std::string second = watch(amal, "tarvolin-rewarded", "notDetermined");
    svc->advance(durationMs);
    EXPECT_EQ(reward(amal, second).errorCode(), "reward_too_early");
    svc->advance(60'000);
    EXPECT_EQ(reward(amal, second).status, 200u);

    EXPECT_EQ(counted("tarvolin_ad_rewards_total{format=\"rewarded\"}"), 2);
    EXPECT_EQ(counted("tarvolin_ad_rewards_refused_total{code=\"reward_too_early\"}"), 3);
    EXPECT_EQ(counted("tarvolin_ad_rewards_refused_total{code=\"already_rewarded\"}"), 1);
    EXPECT_EQ(counted("tarvolin_ad_rewards_refused_total{code=\"impression_not_found\"}"), 1);
}

TEST_P(AdsApiTest, AnImpressionOfAnAdThatIsNotRewardedEarnsNothing) {
    for (const char* unit : {"tarvolin-interstitial", "tarvolin-banner-phone"}) {
        const std::string id = watch(amal, unit);
        svc->advance(3'600'000);
        Reply r = reward(amal, id);
        EXPECT_EQ(r.status, 404u) << unit;
        EXPECT_EQ(r.errorCode(), "impression_not_found") << unit;
    }
    EXPECT_EQ(reward(amal, "I0123456789abcdef").errorCode(), "impression_not_found");
    EXPECT_EQ(svc->http().request("POST", "/v1/ads/rewards", "{}", amal.token).errorCode(), "missing_field");
    EXPECT_EQ(counted("tarvolin_ad_rewards_total{format=\"interstitial\"}"), 0);
}

TEST_P(AdsApiTest, PicturesAreServedWithoutAToken) {
    EXPECT_TRUE(next(amal, "tarvolin-banner-phone").at("imageUrl").is_null()); // leaderboard-top, a card
    const std::string url = str(next(amal, "tarvolin-banner-tablet").at("imageUrl"));
    Reply picture = svc->http().get(url, "");
    ASSERT_EQ(picture.status, 200u) << url;
    EXPECT_EQ(picture.headers["Content-Type"], "image/svg+xml");
    EXPECT_NE(picture.headers["Cache-Control"].find("max-age="), std::string::npos);
    EXPECT_TRUE(picture.body.starts_with("<svg xmlns=\"http://www.w3.org/2000/svg\"")) << picture.body;
    EXPECT_TRUE(picture.body.ends_with("</svg>"));

    // A disabled ad's picture stays reachable for a game that was served it.
    EXPECT_EQ(svc->http().get("/v1/ads/creatives/eid-gold.svg", "").status, 200u);
    for (const char* missing : {"/v1/ads/creatives/challenge-friends.svg", "/v1/ads/creatives/nothing.svg",
                                "/v1/ads/creatives/store-gold.png", "/v1/ads/creatives/.svg",
                                "/v1/ads/creatives/store%20gold.svg"}) {
        Reply r = svc->http().get(missing, "");
        EXPECT_EQ(r.status, 404u) << missing;
        EXPECT_EQ(r.errorCode(), "not_found") << missing;
    }
}

INSTANTIATE_TEST_SUITE_P(Backends, AdsApiTest, ::testing::ValuesIn(backends()), backendName);

// Racers on two instances spend one impression token and claim one reward at once: each happens once.
TEST(AdRaces, ATokenAndARewardRacedOnTwoInstancesCountOnce) {
    TARVOLIN_REQUIRE_BACKEND("postgresql");
    TestService one("postgresql");
    TestService two(one.database());
    Account amal = one.signUp("amal");
    constexpr int kRacers = 4;
    auto race = [&](const std::string& path, const json::object& body) {
        std::latch start(kRacers);
        std::vector<unsigned> statuses(kRacers);
        std::vector<std::thread> racers;
        for (int i = 0; i < kRacers; ++i) {
            racers.emplace_back([&, i] {
                HttpClient http(i % 2 ? two.port() : one.port());
                start.arrive_and_wait();
                statuses[i] = http.post(path, body, amal.token).status;
            });
        }
        for (auto& t : racers) {
            t.join();
        }
        return statuses;
    };
    for (int round = 0; round < 3; ++round) {
        Reply served = one.http().get("/v1/ads/next?unit=tarvolin-rewarded", amal.token);
        ASSERT_EQ(served.status, 200u) << served.body;
        auto spent = race("/v1/ads/impressions",
                          json::object{{"impressionToken", served.json.at("ad").at("impressionToken")}});
        EXPECT_EQ(std::count(spent.begin(), spent.end(), 201u), 1) << "round " << round;
        EXPECT_EQ(std::count(spent.begin(), spent.end(), 409u), kRacers - 1) << "round " << round;
    }
    Reply served = two.http().get("/v1/ads/next?unit=tarvolin-rewarded", amal.token);
    Reply recorded = two.http().post(
        "/v1/ads/impressions", json::object{{"impressionToken", served.json.at("ad").at("impressionToken")}},
        amal.token);
    ASSERT_EQ(recorded.status, 201u);
    one.advance(60'000);
    two.advance(60'000);
    auto claimed = race("/v1/ads/rewards",
                        json::object{{"impressionIdentifier", recorded.json.at("impressionIdentifier")}});
    EXPECT_EQ(std::count(claimed.begin(), claimed.end(), 200u), 1);
    EXPECT_EQ(std::count(claimed.begin(), claimed.end(), 409u), kRacers - 1);
}
