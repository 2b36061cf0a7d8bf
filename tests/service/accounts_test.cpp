#include "support.h"

#include <cstdio>
#include <gtest/gtest.h>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

class AccountsTest : public ServiceTest {
protected:
    Reply login(const std::string& name, const std::string& password) {
        return svc->http().post("/v1/sessions", json::object{{"displayName", name}, {"password", password}});
    }
};

} // namespace

TEST_P(AccountsTest, SignUpLogInAndLogOut) {
    Account ali = svc->signUp("Ali", "sesame-open");
    EXPECT_EQ(ali.token.size(), 64u); // 256 bits
    Reply dup =
        svc->http().post("/v1/accounts", json::object{{"displayName", "ALI"}, {"password", "whatever1"}});
    EXPECT_EQ(dup.status, 409u);
    EXPECT_EQ(dup.errorCode(), "name_taken");

    Reply in = login("ali", "sesame-open");
    ASSERT_EQ(in.status, 200u);
    std::string second(in.json.at("token").as_string());
    EXPECT_NE(second, ali.token);
    EXPECT_EQ(in.json.at("player").at("playerID"), ali.id.c_str());

    Reply me = svc->http().get("/v1/players/me", second);
    ASSERT_EQ(me.status, 200u);
    EXPECT_EQ(me.json.at("player").at("displayName"), "Ali");

    EXPECT_EQ(svc->http().request("DELETE", "/v1/sessions/current", {}, second).status, 204u);
    EXPECT_EQ(svc->http().get("/v1/players/me", second).status, 401u);
    // Logging out one session leaves the other.
    EXPECT_EQ(svc->http().get("/v1/players/me", ali.token).status, 200u);
}

TEST_P(AccountsTest, EveryRouteButSignUpAndLogInNeedsAValidToken) {
    Account ali = svc->signUp("Ali");
    for (const auto& [method, path] :
         std::vector<std::pair<std::string, std::string>>{{"GET", "/v1/players/me"},
                                                          {"GET", "/v1/players?ids=" + ali.id},
                                                          {"GET", "/v1/players/" + ali.id + "/photo"},
                                                          {"GET", "/v1/friends"},
                                                          {"GET", "/v1/friend-requests"},
                                                          {"POST", "/v1/friend-requests"},
                                                          {"POST", "/v1/leaderboard/scores"},
                                                          {"GET", "/v1/leaderboard"},
                                                          {"GET", "/v1/achievements"},
                                                          {"POST", "/v1/achievements"},
                                                          {"DELETE", "/v1/achievements"},
                                                          {"DELETE", "/v1/sessions/current"}}) {
        for (const std::string& token :
             {std::string(), std::string(64, 'a'), ali.token + "0", std::string("x")}) {
            Reply r = svc->http().request(method, path, "{}", token);
            EXPECT_EQ(r.status, 401u) << method << " " << path << " with '" << token << "'";
            EXPECT_EQ(r.errorCode(), "unauthorized");
        }
    }
    EXPECT_EQ(svc->http().get("/v1/players/me", ali.token).status, 200u);
}

TEST_P(AccountsTest, TokensExpire) {
    Account ali = svc->signUp("Ali");
    svc->advance(89LL * 24 * 3600 * 1000);
    EXPECT_EQ(svc->http().get("/v1/players/me", ali.token).status, 200u);
    svc->advance(2LL * 24 * 3600 * 1000);
    EXPECT_EQ(svc->http().get("/v1/players/me", ali.token).status, 401u);
}

TEST_P(AccountsTest, WrongPasswordsAreLimitedPerAccount) {
    svc->signUp("Ali", "right password");
    for (int i = 0; i < 5; ++i) {
        Reply r = login("Ali", "wrong password");
        EXPECT_EQ(r.status, 401u);
        EXPECT_EQ(r.errorCode(), "invalid_credentials");
    }
    Reply blocked = login("Ali", "right password");
    EXPECT_EQ(blocked.status, 429u);
    EXPECT_EQ(blocked.errorCode(), "too_many_attempts");
    EXPECT_EQ(blocked.headers.at("Retry-After"), "900");
    svc->signUp("Bader", "right password");
    EXPECT_EQ(login("Bader", "right password").status, 200u);
    svc->advance(15 * 60 * 1000);
    EXPECT_EQ(login("Ali", "right password").status, 200u);
}

TEST_P(AccountsTest, WrongPasswordsAreLimitedPerAddress) {
    svc->signUp("Ali", "right password");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(login("guess" + std::to_string(i), "whatever1").status, 401u);
    }
    EXPECT_EQ(login("Ali", "right password").status, 429u);
}

TEST_P(AccountsTest, SignUpValidatesAndWritesNothingOnError) {
    struct Case {
        std::string body;
        std::string code;
    };
    for (const auto& c : std::vector<Case>{
             {"not json", "invalid_json"},
             {"[1,2]", "invalid_json"},
             {R"({"displayName":"Ali"})", "missing_field"},
             {R"({"displayName":5,"password":"long enough"})", "invalid_field"},
             {R"({"displayName":"A","password":"long enough"})", "invalid_display_name"},
             {R"({"displayName":" Ali","password":"long enough"})", "invalid_display_name"},
             {R"({"displayName":"Ali","password":"short"})", "invalid_password"},
             {"{\"displayName\":\"Ali\",\"password\":\"long\\u0000enough\",", "invalid_json"}}) {
        Reply r = svc->http().request("POST", "/v1/accounts", c.body);
        EXPECT_EQ(r.status, 400u) << c.body;
        EXPECT_EQ(r.errorCode(), c.code) << c.body;
    }
    EXPECT_EQ(login("Ali", "long enough").status, 401u);
    svc->signUp("Ali", "long enough");
}

TEST_P(AccountsTest, PlayersAreLookedUpByIdentifier) {
    Account ali = svc->signUp("علي");
    Account bader = svc->signUp("Bader");
    Reply r = svc->http().get("/v1/players?ids=" + bader.id + ",Tunknown," + ali.id, ali.token);
    ASSERT_EQ(r.status, 200u);
    const auto& list = r.json.at("players").as_array();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].at("displayName"), "Bader");
    EXPECT_EQ(list[1].at("displayName"), "علي");
    EXPECT_EQ(list[0].at("isFriend"), false);

    EXPECT_EQ(svc->http().get("/v1/players/" + bader.id, ali.token).json.at("player").at("playerID"),
              bader.id.c_str());
    EXPECT_EQ(svc->http().get("/v1/players/Tnobody", ali.token).errorCode(), "player_not_found");
    EXPECT_EQ(svc->http().get("/v1/players?ids=a;b", ali.token).errorCode(), "invalid_parameter");
    std::string many;
    for (int i = 0; i < 101; ++i) {
        many += (i ? ",p" : "p") + std::to_string(i);
    }
    EXPECT_EQ(svc->http().get("/v1/players?ids=" + many, ali.token).status, 400u);

    Reply photo = svc->http().get("/v1/players/" + ali.id + "/photo", bader.token);
    EXPECT_EQ(photo.status, 200u);
    EXPECT_EQ(photo.headers.at("Content-Type"), "image/svg+xml");
    EXPECT_NE(photo.body.find("ع"), std::string::npos);
}

TEST_P(AccountsTest, PlayersAreFoundByTheStartOfTheirNames) {
    const auto encoded = [](const std::string& text) {
        std::string out;
        for (unsigned char ch : text) {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", ch);
            out += hex;
        }
        return out;
    };
    Account ali = svc->signUp("علي");
    svc->signUp("عليا");
    svc->signUp("Alia_x");
    svc->signUp("Aliaa");
    svc->signUp("AliXa");
    const auto names = [&](const std::string& prefix) {
        std::vector<std::string> out;
        Reply r = svc->http().get("/v1/players?name=" + encoded(prefix), ali.token);
        EXPECT_EQ(r.status, 200u) << prefix;
        for (const auto& p : r.json.at("players").as_array()) {
            out.emplace_back(p.at("displayName").as_string());
        }
        return out;
    };
    // The caller is left out; ASCII letters match either case; LIKE's wildcards match only themselves.
    EXPECT_EQ(names("علي"), std::vector<std::string>{"عليا"});
    EXPECT_EQ(names("ALIA"), (std::vector<std::string>{"Alia_x", "Aliaa"}));
    EXPECT_EQ(names("alia_"), std::vector<std::string>{"Alia_x"});
    EXPECT_EQ(names("%"), std::vector<std::string>{});
    EXPECT_EQ(svc->http().get("/v1/players?name=", ali.token).errorCode(), "invalid_parameter");
    EXPECT_EQ(svc->http().get("/v1/players?name=" + encoded(std::string(65, 'a')), ali.token).errorCode(),
              "invalid_parameter");
    EXPECT_EQ(svc->http().get("/v1/players?name=%FF", ali.token).errorCode(), "invalid_parameter");
}

TEST_P(AccountsTest, RenamingKeepsTheIdentifierAndMovesTheLogin) {
    Account ali = svc->signUp("Ali", "sesame-open");
    Account bader = svc->signUp("Bader");
    auto rename = [&](const Account& a, const std::string& name) {
        return svc->http().request("PATCH", "/v1/players/me",
                                   json::serialize(json::object{{"displayName", name}}), a.token);
    };
    Reply r = rename(ali, "علي");
    ASSERT_EQ(r.status, 200u) << r.body;
    EXPECT_EQ(r.json.at("player").at("playerID"), ali.id.c_str());
    EXPECT_EQ(r.json.at("player").at("displayName"), "علي");
    EXPECT_EQ(svc->http().get("/v1/players/" + ali.id, bader.token).json.at("player").at("displayName"),
              "علي");
    EXPECT_EQ(login("علي", "sesame-open").status, 200u);
    EXPECT_EQ(login("Ali", "sesame-open").status, 401u);
    // Another player's name, in any case, is refused, and so is a bad one; nothing changes.
    EXPECT_EQ(rename(ali, "BADER").errorCode(), "name_taken");
    EXPECT_EQ(rename(ali, "x").errorCode(), "invalid_display_name");
    EXPECT_EQ(svc->http().get("/v1/players/me", ali.token).json.at("player").at("displayName"), "علي");
    // The freed name can be taken by someone else; a new case of one's own name is a rename too.
    EXPECT_EQ(svc->signUp("ali").name, "ali");
    EXPECT_EQ(rename(bader, "bADER").status, 200u);
}

INSTANTIATE_TEST_SUITE_P(Backends, AccountsTest, ::testing::ValuesIn(backends()), backendName);
