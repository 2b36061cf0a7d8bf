#include "support.h"

#include <gtest/gtest.h>

#include <latch>
#include <regex>
#include <thread>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

const std::string kPack = "com.molvane.tarvolin.pack";
constexpr std::int64_t kFifteenMinutes = 15 * 60 * 1000;

class StoreApiTest : public ServiceTest {
protected:
    void start() override {
        amal = svc->signUp("amal");
        badr = svc->signUp("badr");
    }

    json::object catalogue(const std::string& query) {
        Reply r = svc->http().get("/v1/store/products?" + query, amal.token);
        EXPECT_EQ(r.status, 200u) << r.body;
        return r.json.is_object() ? r.obj() : json::object{};
    }
    Reply pay(const Account& a, json::object body) {
        return svc->http().post("/v1/store/payments", body, a.token);
    }
    // A new payment on the sheet; returns its identifier.
    std::string open(const Account& a, int pack = 1) {
        Reply r = pay(a, json::object{{"productIdentifier", kPack + std::to_string(pack)}});
        EXPECT_EQ(r.status, 201u) << r.body;
        return r.status == 201 ? str(r.json.at("transaction").at("transactionIdentifier")) : std::string();
    }
    Reply act(const Account& a, const std::string& id, const std::string& what) {
        const std::string base = what == "finish" ? "/v1/store/transactions/" : "/v1/store/payments/";
        return svc->http().post(base + id + "/" + what, json::object{}, a.token);
    }
    json::array unfinished(const Account& a) {
        Reply r = svc->http().get("/v1/store/transactions", a.token);
        EXPECT_EQ(r.status, 200u) << r.body;
        return r.json.at("transactions").as_array();
    }
    void setSandbox(const Account& a, const std::string& outcome) {
        Reply r = svc->http().request("PUT", "/v1/store/sandbox",
                                      json::serialize(json::object{{"outcome", outcome}}), a.token);
        ASSERT_EQ(r.status, 200u) << r.body;
    }
    double counted(const std::string& event) {
        return metricValue(svc->http(), "tarvolin_store_transactions_total{event=\"" + event + "\"}");
    }

    Account amal, badr;
};

} // namespace

TEST_P(StoreApiTest, TheCatalogueIsInDollarsUnlessTheLocalesCountryHasPrices) {
    json::object usd = catalogue("ids=" + kPack + "5," + kPack + "1");
    ASSERT_EQ(usd.at("products").as_array().size(), 2u);
    const json::object& first = usd.at("products").as_array()[0].as_object();
    EXPECT_EQ(first.at("productIdentifier"), (kPack + "5").c_str()); // the order of ids
    EXPECT_EQ(first.at("price"), "12.99");
    EXPECT_EQ(first.at("currencyCode"), "USD");
    EXPECT_EQ(first.at("priceLocale"), "en_US");
    EXPECT_FALSE(first.at("localizedTitle").as_string().empty());
    EXPECT_EQ(usd.at("products").as_array()[1].at("price"), "1.99");
    EXPECT_TRUE(usd.at("invalidProductIdentifiers").as_array().empty());

    struct Case {
        std::string locale, price, currency, priceLocale;
    };
    for (const Case& c : {Case{"ar_SA", "7.49", "SAR", "ar_SA"}, Case{"ar-SA", "7.49", "SAR", "ar_SA"},
                          Case{"ar_KW", "0.599", "KWD", "ar_KW"}, Case{"ar_JO", "1.399", "JOD", "ar_JO"},
                          Case{"ar_EG", "99.99", "EGP", "ar_EG"}, Case{"fr-MA", "19.99", "MAD", "fr_MA"},
                          Case{"de_AT", "1.99", "EUR", "de_AT"}, Case{"en_GB", "1.79", "GBP", "en_GB"},
                          Case{"ar_US", "1.99", "USD", "ar_US"}, Case{"ar_BR", "1.99", "USD", "en_US"},
                          Case{"ar", "1.99", "USD", "en_US"}, Case{"not a locale", "1.99", "USD", "en_US"}}) {
        json::object o =
            catalogue("ids=" + kPack + "1&locale=" + std::regex_replace(c.locale, std::regex(" "), "+"));
        ASSERT_EQ(o.at("products").as_array().size(), 1u) << c.locale;
        const json::object& p = o.at("products").as_array()[0].as_object();
        EXPECT_EQ(p.at("price"), c.price.c_str()) << c.locale;
        EXPECT_EQ(p.at("currencyCode"), c.currency.c_str()) << c.locale;
        EXPECT_EQ(p.at("priceLocale"), c.priceLocale.c_str()) << c.locale;
    }
    EXPECT_EQ(catalogue("ids=" + kPack + "5&locale=ar_KW").at("products").as_array()[0].at("price"), "3.999");

    // A currency a product has no price in falls back to dollars for that product alone.
    auto conn = svc->database()->connect();
    conn->transact([&](tarvolin::store::Tx& tx) {
        tx.exec("DELETE FROM store_prices WHERE product_id = $1 AND currency = 'SAR'", {kPack + "2"});
    });
    json::object mixed = catalogue("ids=" + kPack + "1," + kPack + "2&locale=ar_SA");
    EXPECT_EQ(mixed.at("products").as_array()[0].at("currencyCode"), "SAR");
    EXPECT_EQ(mixed.at("products").as_array()[1].at("currencyCode"), "USD");
    EXPECT_EQ(mixed.at("products").as_array()[1].at("priceLocale"), "en_US");
}

TEST_P(StoreApiTest, UnknownProductsAreListedAsInvalidAndRequestsAreBounded) {
    json::object o = catalogue("ids=" + kPack + "3,com.other.game.gold," + kPack + "1," + kPack + "3");
    ASSERT_EQ(o.at("products").as_array().size(), 2u);
    EXPECT_EQ(o.at("products").as_array()[0].at("productIdentifier"), (kPack + "3").c_str());
    EXPECT_EQ(o.at("products").as_array()[1].at("productIdentifier"), (kPack + "1").c_str());
    EXPECT_EQ(o.at("invalidProductIdentifiers"), (json::array{"com.other.game.gold"}));

    std::string twenty;
    for (int i = 0; i < 20; ++i) {
        twenty += (i ? "," : "") + kPack + "x" + std::to_string(i);
    }
    EXPECT_EQ(catalogue("ids=" + twenty).at("invalidProductIdentifiers").as_array().size(), 20u);
    auto refused = [&](const std::string& query) {
        return svc->http().get("/v1/store/products?" + query, amal.token).errorCode();
    };
    EXPECT_EQ(refused("ids=" + twenty + ",one.more"), "invalid_parameter");
    EXPECT_EQ(refused("ids=" + std::string(101, 'a')), "invalid_parameter");
    EXPECT_EQ(refused("ids=bad%01id"), "invalid_parameter");
    EXPECT_EQ(refused("ids=%C3%28"), "invalid_parameter"); // not UTF-8
    EXPECT_EQ(refused("locale=ar_SA"), "invalid_parameter");
    // The catalogue is open: prices show before a login; paying is not.
    EXPECT_EQ(svc->http().get("/v1/store/products?ids=" + kPack + "1", "").status, 200u);
    EXPECT_EQ(
        svc->http().post("/v1/store/payments", json::object{{"productIdentifier", kPack + "1"}}, "").status,
        401u);
}

TEST_P(StoreApiTest, APaymentIsApprovedHandedOverAndFinishedOnce) {
    Reply opened = pay(amal, json::object{{"productIdentifier", kPack + "2"}, {"quantity", 3}});
    ASSERT_EQ(opened.status, 201u) << opened.body;
    const json::object& t = opened.json.at("transaction").as_object();
    const std::string id = str(t.at("transactionIdentifier"));
    EXPECT_TRUE(std::regex_match(id, std::regex("P[0-9a-f]{16}"))) << id;
    EXPECT_EQ(t.at("state"), "purchasing");
    EXPECT_EQ(t.at("quantity"), 3);
    EXPECT_TRUE(t.at("error").is_null());
    EXPECT_TRUE(t.at("originalTransactionIdentifier").is_null());
    EXPECT_EQ(t.at("finished"), false);
    EXPECT_EQ(t.at("createdAt"), svc->now());
    ASSERT_EQ(unfinished(amal).size(), 1u); // a young payment on the sheet is listed too
    EXPECT_EQ(unfinished(amal)[0].at("state"), "purchasing");

    svc->advance(1000);
    Reply approved = act(amal, id, "approve");
    ASSERT_EQ(approved.status, 200u) << approved.body;
    EXPECT_EQ(approved.json.at("transaction").at("state"), "purchased");
    EXPECT_EQ(approved.json.at("transaction").at("updatedAt"), svc->now());
    json::array listed = unfinished(amal);
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0].at("transactionIdentifier"), id.c_str());
    EXPECT_EQ(listed[0].at("state"), "purchased");

    // A replayed approval changes nothing and pays nothing, before and after finishing.
    EXPECT_EQ(act(amal, id, "approve").errorCode(), "transaction_not_purchasing");
    EXPECT_EQ(act(amal, id, "cancel").errorCode(), "transaction_not_purchasing");
    svc->advance(1000);
    Reply finished = act(amal, id, "finish");
    ASSERT_EQ(finished.status, 200u) << finished.body;
    EXPECT_EQ(finished.json.at("transaction").at("finished"), true);
    EXPECT_EQ(finished.json.at("transaction").at("state"), "purchased");
    EXPECT_TRUE(unfinished(amal).empty());
    svc->advance(1000);
    Reply again = act(amal, id, "finish");
    ASSERT_EQ(again.status, 200u);
    EXPECT_EQ(again.json, finished.json);
    Reply replayed = act(amal, id, "approve");
    EXPECT_EQ(replayed.status, 409u);
    EXPECT_TRUE(unfinished(amal).empty());

    EXPECT_EQ(counted("created"), 1);
    EXPECT_EQ(counted("purchased"), 1);
    EXPECT_EQ(counted("finished"), 1);
    EXPECT_EQ(counted("failed"), 0);
}

TEST_P(StoreApiTest, AnotherPlayersOrAForgedTransactionIsNotFound) {
    const std::string id = open(amal);
    for (const char* what : {"approve", "cancel", "finish"}) {
        Reply r = act(badr, id, what);
        EXPECT_EQ(r.status, 404u) << what;
        EXPECT_EQ(r.errorCode(), "transaction_not_found") << what;
        EXPECT_EQ(act(amal, "P0123456789abcdef", what).errorCode(), "transaction_not_found") << what;
        EXPECT_EQ(act(amal, std::string(65, 'P'), what).status, 404u) << what;
    }
    EXPECT_TRUE(unfinished(badr).empty());
    json::array mine = unfinished(amal);
    ASSERT_EQ(mine.size(), 1u);
    EXPECT_EQ(mine[0].at("state"), "purchasing");
    ASSERT_EQ(act(amal, id, "approve").status, 200u);
    EXPECT_EQ(act(badr, id, "finish").status, 404u);
    ASSERT_EQ(unfinished(amal).size(), 1u);
    EXPECT_EQ(unfinished(amal)[0].at("finished"), false);
}

TEST_P(StoreApiTest, TheSandboxSwitchAndTheSheetsCancelFailPayments) {
    EXPECT_EQ(svc->http().get("/v1/store/sandbox", amal.token).json.at("outcome"), "purchase");
    setSandbox(amal, "fail");
    EXPECT_EQ(svc->http().get("/v1/store/sandbox", amal.token).json.at("outcome"), "fail");
    Reply declined = act(amal, open(amal), "approve");
    ASSERT_EQ(declined.status, 200u) << declined.body;
    EXPECT_EQ(declined.json.at("transaction").at("state"), "failed");
    EXPECT_EQ(declined.json.at("transaction").at("error"),
              (json::object{{"code", 0}, {"message", "The sandbox declined the payment."}}));

    setSandbox(amal, "cancel");
    Reply cancelledBySwitch = act(amal, open(amal), "approve");
    EXPECT_EQ(cancelledBySwitch.json.at("transaction").at("error").at("code"), 2);

    // The switch is the player's own.
    Reply bought = act(badr, open(badr), "approve");
    EXPECT_EQ(bought.json.at("transaction").at("state"), "purchased");

    setSandbox(amal, "purchase");
    Reply cancelled = act(amal, open(amal), "cancel");
    ASSERT_EQ(cancelled.status, 200u);
    EXPECT_EQ(cancelled.json.at("transaction").at("state"), "failed");
    EXPECT_EQ(cancelled.json.at("transaction").at("error"),
              (json::object{{"code", 2}, {"message", "The player cancelled the payment."}}));

    // Failed ones are handed over like purchases, and finished.
    json::array listed = unfinished(amal);
    ASSERT_EQ(listed.size(), 3u);
    for (const json::value& t : listed) {
        EXPECT_EQ(t.at("state"), "failed");
        EXPECT_EQ(act(amal, str(t.at("transactionIdentifier")), "finish").status, 200u);
    }
    EXPECT_TRUE(unfinished(amal).empty());
    EXPECT_EQ(counted("failed"), 3);

    Reply bad = svc->http().request("PUT", "/v1/store/sandbox", R"({"outcome":"refund"})", amal.token);
    EXPECT_EQ(bad.errorCode(), "invalid_field");
    EXPECT_EQ(svc->http().request("PUT", "/v1/store/sandbox", R"({"outcome":2})", amal.token).errorCode(),
              "invalid_field");
    EXPECT_EQ(svc->http().request("PUT", "/v1/store/sandbox", "{}", amal.token).errorCode(), "missing_field");
    EXPECT_EQ(svc->http().get("/v1/store/sandbox", amal.token).json.at("outcome"), "purchase");
}

TEST_P(StoreApiTest, APaymentOnTheSheetIsNotFinishedAndALeftSheetFailsAfterFifteenMinutes) {
    const std::string id = open(amal);
    Reply early = act(amal, id, "finish");
    EXPECT_EQ(early.status, 409u);
    EXPECT_EQ(early.errorCode(), "transaction_not_settled");

    svc->advance(kFifteenMinutes);
    EXPECT_EQ(unfinished(amal)[0].at("state"), "purchasing");
    svc->advance(1);
    json::array listed = unfinished(amal);
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0].at("state"), "failed");
    EXPECT_EQ(listed[0].at("error"), (json::object{{"code", 2}, {"message", "The payment sheet was left."}}));
    EXPECT_EQ(listed[0].at("updatedAt"), svc->now());

    // An approval that comes after the sheet was left finds it failed, even before anything was listed.
    const std::string late = open(amal);
    svc->advance(kFifteenMinutes + 1);
    EXPECT_EQ(act(amal, late, "approve").errorCode(), "transaction_not_purchasing");
    EXPECT_EQ(act(amal, id, "finish").status, 200u);
    EXPECT_EQ(act(amal, late, "finish").status, 200u);
    EXPECT_TRUE(unfinished(amal).empty());
    EXPECT_EQ(counted("failed"), 2);
}

TEST_P(StoreApiTest, AtMostFivePaymentsWaitOnTheSheet) {
    std::vector<std::string> ids;
    for (int i = 1; i <= 5; ++i) {
        ids.push_back(open(amal, i));
    }
    Reply refused = pay(amal, json::object{{"productIdentifier", kPack + "1"}});
    EXPECT_EQ(refused.status, 429u);
    EXPECT_EQ(refused.errorCode(), "too_many_payments");
    EXPECT_EQ(unfinished(amal).size(), 5u);
    open(badr); // another player's sheet is his own

    ASSERT_EQ(act(amal, ids[0], "approve").status, 200u);
    open(amal);
    EXPECT_EQ(pay(amal, json::object{{"productIdentifier", kPack + "1"}}).status, 429u);
    // Left sheets stop counting once they are old enough, without a listing in between.
    svc->advance(kFifteenMinutes + 1);
    EXPECT_EQ(pay(amal, json::object{{"productIdentifier", kPack + "1"}}).status, 201u);
}

TEST_P(StoreApiTest, RestoringHandsFinishedPurchasesOverOnceUntilFinished) {
    EXPECT_TRUE(svc->http()
                    .post("/v1/store/restore", json::object{}, amal.token)
                    .json.at("transactions")
                    .as_array()
                    .empty());
    const std::string first = open(amal, 4);
    const std::string second = open(amal, 2);
    const std::string failed = open(amal, 3);
    const std::string unfinishedPurchase = open(amal, 5);
    for (const std::string& id : {first, second, unfinishedPurchase}) {
        ASSERT_EQ(act(amal, id, "approve").status, 200u);
    }
    ASSERT_EQ(act(amal, failed, "cancel").status, 200u);
    for (const std::string& id : {first, second, failed}) {
        ASSERT_EQ(act(amal, id, "finish").status, 200u);
    }
    const std::string others = open(badr);
    ASSERT_EQ(act(badr, others, "approve").status, 200u);
    ASSERT_EQ(act(badr, others, "finish").status, 200u);

    svc->advance(1000);
    Reply restored = svc->http().post("/v1/store/restore", json::object{}, amal.token);
    ASSERT_EQ(restored.status, 200u) << restored.body;
    const json::array& list = restored.json.at("transactions").as_array();
    ASSERT_EQ(list.size(), 2u); // the finished purchases alone, oldest first
    EXPECT_EQ(list[0].at("originalTransactionIdentifier"), first.c_str());
    EXPECT_EQ(list[0].at("productIdentifier"), (kPack + "4").c_str());
    EXPECT_EQ(list[1].at("originalTransactionIdentifier"), second.c_str());
    for (const json::value& r : list) {
        EXPECT_EQ(r.at("state"), "restored");
        EXPECT_EQ(r.at("finished"), false);
        EXPECT_EQ(r.at("createdAt"), svc->now());
        EXPECT_TRUE(std::regex_match(str(r.at("transactionIdentifier")), std::regex("P[0-9a-f]{16}")));
        EXPECT_NE(r.at("transactionIdentifier"), r.at("originalTransactionIdentifier"));
    }
    // The unfinished purchase first, then the restored ones.
    json::array listed = unfinished(amal);
    ASSERT_EQ(listed.size(), 3u);
    EXPECT_EQ(listed[0].at("transactionIdentifier"), unfinishedPurchase.c_str());
    EXPECT_EQ(listed[1], list[0]);
    EXPECT_EQ(listed[2], list[1]);

    // Asked again while they wait: the same ones, none added.
    Reply repeated = svc->http().post("/v1/store/restore", json::object{}, amal.token);
    EXPECT_EQ(repeated.json.at("transactions"), list);
    ASSERT_EQ(act(amal, str(list[0].at("transactionIdentifier")), "finish").status, 200u);
    EXPECT_EQ(svc->http().post("/v1/store/restore", json::object{}, amal.token).json.at("transactions"),
              (json::array{list[1]}));
    ASSERT_EQ(act(amal, str(list[1].at("transactionIdentifier")), "finish").status, 200u);

    Reply anew = svc->http().post("/v1/store/restore", json::object{}, amal.token);
    ASSERT_EQ(anew.json.at("transactions").as_array().size(), 2u);
    EXPECT_NE(anew.json.at("transactions").as_array()[0].at("transactionIdentifier"),
              list[0].at("transactionIdentifier"));
    EXPECT_EQ(anew.json.at("transactions").as_array()[0].at("originalTransactionIdentifier"), first.c_str());
    EXPECT_EQ(counted("restored"), 4);
}

TEST_P(StoreApiTest, MalformedPaymentsAreRefusedAndStoreNothing) {
    auto code = [&](const std::string& body) {
        return svc->http().request("POST", "/v1/store/payments", body, amal.token).errorCode();
    };
    EXPECT_EQ(code("{\"productIdentifier\":"), "invalid_json");
    EXPECT_EQ(code("[1]"), "invalid_json");
    EXPECT_EQ(code("{}"), "missing_field");
    EXPECT_EQ(code(R"({"productIdentifier":7})"), "invalid_field");
    for (const char* quantity : {"0", "11", "-1", "1.5", "\"x\"", "[]", "99999999999999999999"}) {
        EXPECT_EQ(code(R"({"productIdentifier":"com.molvane.tarvolin.pack1","quantity":)" +
                       std::string(quantity) + "}"),
                  "invalid_field")
            << quantity;
    }
    Reply unknown = pay(amal, json::object{{"productIdentifier", "com.molvane.tarvolin.pack9"}});
    EXPECT_EQ(unknown.status, 404u);
    EXPECT_EQ(unknown.errorCode(), "product_not_found");
    EXPECT_EQ(pay(amal, json::object{{"productIdentifier", std::string(5000, 'p')}}).errorCode(),
              "product_not_found");
    const std::string id = open(amal);
    EXPECT_EQ(
        svc->http().request("POST", "/v1/store/payments/" + id + "/approve", "{oops", amal.token).errorCode(),
        "invalid_json");
    EXPECT_EQ(svc->http().request("GET", "/v1/store/payments/" + id + "/approve", "", amal.token).status,
              405u);
    EXPECT_EQ(svc->http().post("/v1/store/payments/" + id + "/approve", json::object{}).status, 401u);
    json::array listed = unfinished(amal);
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0].at("state"), "purchasing");
    EXPECT_EQ(counted("created"), 1);
}

INSTANTIATE_TEST_SUITE_P(Backends, StoreApiTest, ::testing::ValuesIn(backends()), backendName);

// Two instances on one database: every racer approves the same payment at once, and it is bought once.
TEST(StoreRaces, APaymentApprovedByRacersOnTwoInstancesIsBoughtOnce) {
    TARVOLIN_REQUIRE_BACKEND("postgresql");
    TestService one("postgresql");
    TestService two(one.database());
    Account amal = one.signUp("amal");
    constexpr int kPayments = 5;
    constexpr int kRacers = 4;
    for (int round = 0; round < kPayments; ++round) {
        Reply opened = one.http().post("/v1/store/payments", json::object{{"productIdentifier", kPack + "1"}},
                                       amal.token);
        ASSERT_EQ(opened.status, 201u) << opened.body;
        const std::string id = str(opened.json.at("transaction").at("transactionIdentifier"));
        std::latch start(kRacers);
        std::vector<unsigned> statuses(kRacers);
        std::vector<std::thread> racers;
        for (int i = 0; i < kRacers; ++i) {
            racers.emplace_back([&, i] {
                HttpClient http(i % 2 ? two.port() : one.port());
                start.arrive_and_wait();
                statuses[i] =
                    http.post("/v1/store/payments/" + id + "/approve", json::object{}, amal.token).status;
            });
        }
        for (auto& t : racers) {
            t.join();
        }
        EXPECT_EQ(std::count(statuses.begin(), statuses.end(), 200u), 1) << "round " << round;
        EXPECT_EQ(std::count(statuses.begin(), statuses.end(), 409u), kRacers - 1) << "round " << round;
    }
    const std::string purchased = "tarvolin_store_transactions_total{event=\"purchased\"}";
    EXPECT_EQ(metricValue(one.http(), purchased) + metricValue(two.http(), purchased), kPayments);
    Reply listed = two.http().get("/v1/store/transactions", amal.token);
    ASSERT_EQ(listed.json.at("transactions").as_array().size(), static_cast<std::size_t>(kPayments));
    for (const json::value& t : listed.json.at("transactions").as_array()) {
        EXPECT_EQ(t.at("state"), "purchased");
    }
}
