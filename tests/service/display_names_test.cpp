#include "support.h"

#include "logic/text_rules.h"

#include <gtest/gtest.h>
#include <sodium.h>

using namespace tarvolin;
using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

const std::string kFullWidthBader =
    "\xEF\xBC\xA2\xEF\xBD\x81\xEF\xBD\x84\xEF\xBD\x85\xEF\xBD\x92"; // Ｂａｄｅｒ

class DisplayNamesTest : public ServiceTest {
protected:
    Reply signUp(const std::string& name) {
        return svc->http().post("/v1/accounts",
                                json::object{{"displayName", name}, {"password", "a long secret"}});
    }
    Reply login(const std::string& name, const std::string& password) {
        return svc->http().post("/v1/sessions", json::object{{"displayName", name}, {"password", password}});
    }
    // A player as an older version stored it: the name unchecked, the key only lower-cased in ASCII.
    void addLegacyPlayer(const std::string& id, const std::string& name, std::int64_t createdAt,
                         const std::string& password) {
        std::string key = name;
        for (char& c : key) {
            c = (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
        }
        char hash[crypto_pwhash_STRBYTES];
        ASSERT_EQ(crypto_pwhash_str(hash, password.data(), password.size(), crypto_pwhash_OPSLIMIT_MIN,
                                    crypto_pwhash_MEMLIMIT_MIN),
                  0);
        ASSERT_TRUE(svc->api().store().createPlayer(store::Credentials{{id, name, createdAt}, key, hash}));
    }
};

} // namespace

TEST_P(DisplayNamesTest, NamesAreKeptInNfkcAndLookAlikesAreTaken) {
    Reply bader = signUp(kFullWidthBader);
    ASSERT_EQ(bader.status, 201u) << bader.body;
    EXPECT_EQ(bader.obj().at("player").at("displayName"), "Bader");

    const std::pair<std::string, std::string> pairs[] = {
        {"\xEF\xAC\x81nn", "finn"},                      // the ligature ﬁ
        {"\xEF\xBB\x8B\xEF\xBB\xA0\xEF\xBB\xB2", "علي"}, // Arabic presentation forms
        {"Sa\xE2\x80\x8D"
         "ra",
         "Sara"}, // a zero-width joiner (refused)
        {"\xE2\x80\xAE"
         "ruoY",
         "ruoY"},            // a right-to-left override (refused)
        {"محـــمد", "محمد"}, // tatweel
    };
    for (const auto& [first, second] : pairs) {
        Reply a = signUp(first);
        if (a.status == 400) {
            // Invisible characters are refused outright, and the plain name is free.
            EXPECT_EQ(a.errorCode(), "invalid_display_name") << first;
            EXPECT_EQ(signUp(second).status, 201u) << second;
            continue;
        }
        ASSERT_EQ(a.status, 201u) << first << ": " << a.body;
        Reply b = signUp(second);
        EXPECT_EQ(b.status, 409u) << second;
        EXPECT_EQ(b.errorCode(), "name_taken");
    }
    EXPECT_EQ(signUp("BADER").errorCode(), "name_taken");
    EXPECT_EQ(signUp("Bader \xEF\xB8\x8F").errorCode(), "invalid_display_name");

    // A rename follows the same rules; the look-alike of one's own name is one's own.
    const std::string token = str(bader.obj().at("token"));
    auto rename = [&](const std::string& name) {
        return svc->http().request("PATCH", "/v1/players/me",
                                   json::serialize(json::object{{"displayName", name}}), token);
    };
    EXPECT_EQ(rename("Fi\xE2\x80\x8Bnn").errorCode(), "invalid_display_name");
    EXPECT_EQ(rename("\xEF\xAC\x81NN").errorCode(), "name_taken");
    Reply renamed = rename("\xEF\xBC\xA2\xEF\xBC\xA1\xEF\xBC\xA4\xEF\xBC\xA5\xEF\xBC\xB2"); // ＢＡＤＥＲ
    ASSERT_EQ(renamed.status, 200u) << renamed.body;
    EXPECT_EQ(renamed.obj().at("player").at("displayName"), "BADER");
    // Logging in and searching go by the key, whatever form is typed.
    EXPECT_EQ(login(kFullWidthBader, "a long secret").status, 200u);
    Reply found = svc->http().get("/v1/players?name=ba", token);
    EXPECT_EQ(found.obj().at("players").as_array().size(), 0u); // only oneself, who is left out
}

TEST_P(DisplayNamesTest, OldNamesThatComeToShareAKeyKeepWorking) {
    // Three players stored before the present rules: "Bader" holds its key; the full-width one is older but
    // comes second. "ｆｏｏ" and "Ｆｏｏ" share a key no one held: the older gets it.
    addLegacyPlayer("Tlegacy01", "Bader", 2000, "bader's secret");
    addLegacyPlayer("Tlegacy02", kFullWidthBader, 1000, "wide secret");
    addLegacyPlayer("Tlegacy03", "\xEF\xBD\x86\xEF\xBD\x8F\xEF\xBD\x8F", 3000, "small secret"); // ｆｏｏ
    addLegacyPlayer("Tlegacy04", "\xEF\xBC\xA6\xEF\xBD\x8F\xEF\xBD\x8F", 4000, "big secret");   // Ｆｏｏ
    svc->restart();

    auto cred = svc->api().store().credentialsByNameKey("bader");
    ASSERT_TRUE(cred);
    EXPECT_EQ(cred->player.id, "Tlegacy01");
    cred = svc->api().store().credentialsByNameKey("foo");
    ASSERT_TRUE(cred);
    EXPECT_EQ(cred->player.id, "Tlegacy03");
    EXPECT_EQ(svc->api().store().credentialsSharingKey("bader").size(), 2u);

    // Each logs in with the name it had and its own password; the names are shown as they were.
    for (const auto& [name, password, id] :
         {std::tuple<std::string, std::string, std::string>{"Bader", "bader's secret", "Tlegacy01"},
          {kFullWidthBader, "wide secret", "Tlegacy02"},
          {"foo", "small secret", "Tlegacy03"},
          {"FOO", "big secret", "Tlegacy04"}}) {
        Reply r = login(name, password);
        ASSERT_EQ(r.status, 200u) << name << ": " << r.body;
        EXPECT_EQ(str(r.obj().at("player").at("playerID")), id);
    }
    EXPECT_EQ(login("bader", "wide secret!").status, 401u);
    EXPECT_EQ(str(login(kFullWidthBader, "wide secret").obj().at("player").at("displayName")),
              kFullWidthBader);

    // No new name takes a key that is held, and the keys stay as they are from one start to the next.
    EXPECT_EQ(signUp("bader").errorCode(), "name_taken");
    EXPECT_EQ(signUp("Foo").errorCode(), "name_taken");
    EXPECT_EQ(svc->api().rekeyNames(), 0u);
    // Searching finds both namesakes.
    Reply someone = signUp("Searcher");
    Reply found = svc->http().get("/v1/players?name=BAD", str(someone.obj().at("token")));
    EXPECT_EQ(found.obj().at("players").as_array().size(), 2u);
}

INSTANTIATE_TEST_SUITE_P(Backends, DisplayNamesTest, ::testing::ValuesIn(backends()), backendName);
