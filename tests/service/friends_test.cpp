#include "support.h"

#include <gtest/gtest.h>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

class FriendsTest : public ServiceTest {
protected:
    void start() override {
        ali = svc->signUp("Ali");
        bader = svc->signUp("Bader");
        chadi = svc->signUp("Chadi");
    }
    Reply ask(const Account& from, const Account& to, const std::string& message = "hello") {
        return svc->http().post("/v1/friend-requests",
                                json::object{{"playerID", to.id}, {"message", message}}, from.token);
    }
    Reply answer(const std::string& requestId, const std::string& what, const Account& by) {
        return svc->http().post("/v1/friend-requests/" + requestId + "/" + what, json::object{}, by.token);
    }
    std::vector<std::string> friendNames(const Account& a) {
        std::vector<std::string> out;
        Reply r = svc->http().get("/v1/friends", a.token);
        for (const auto& p : r.json.at("players").as_array()) {
            out.emplace_back(p.at("displayName").as_string());
            EXPECT_EQ(p.at("isFriend"), true);
        }
        return out;
    }

    Account ali, bader, chadi;
};

} // namespace

TEST_P(FriendsTest, RequestListAcceptAndBothSeeTheFriendship) {
    Reply sent = ask(ali, bader, "نلعب؟");
    ASSERT_EQ(sent.status, 201u);
    std::string id(sent.json.at("request").at("requestID").as_string());
    EXPECT_EQ(sent.json.at("request").at("to").at("playerID"), bader.id.c_str());

    Reply incoming = svc->http().get("/v1/friend-requests?direction=incoming", bader.token);
    ASSERT_EQ(incoming.json.at("requests").as_array().size(), 1u);
    EXPECT_EQ(incoming.json.at("requests").at(0).at("message"), "نلعب؟");
    EXPECT_EQ(incoming.json.at("requests").at(0).at("from").at("displayName"), "Ali");
    EXPECT_EQ(svc->http()
                  .get("/v1/friend-requests?direction=outgoing", ali.token)
                  .json.at("requests")
                  .as_array()
                  .size(),
              1u);
    EXPECT_TRUE(svc->http().get("/v1/friend-requests", ali.token).json.at("requests").as_array().empty());

    Reply ok = answer(id, "accept", bader);
    ASSERT_EQ(ok.status, 200u);
    EXPECT_EQ(ok.json.at("friend").at("playerID"), ali.id.c_str());
    EXPECT_EQ(friendNames(ali), std::vector<std::string>{"Bader"});
    EXPECT_EQ(friendNames(bader), std::vector<std::string>{"Ali"});
    EXPECT_TRUE(friendNames(chadi).empty());
    EXPECT_TRUE(svc->http().get("/v1/friend-requests", bader.token).json.at("requests").as_array().empty());

    // "isFriend" in every player record, from the asker's side.
    Reply looked = svc->http().get("/v1/players?ids=" + bader.id + "," + chadi.id, ali.token);
    EXPECT_EQ(looked.json.at("players").at(0).at("isFriend"), true);
    EXPECT_EQ(looked.json.at("players").at(1).at("isFriend"), false);
    EXPECT_EQ(svc->http().get("/v1/players/" + ali.id, bader.token).json.at("player").at("isFriend"), true);
    EXPECT_EQ(svc->http().get("/v1/players/" + ali.id, chadi.token).json.at("player").at("isFriend"), false);
}

TEST_P(FriendsTest, OnlyTheReceiverAnswersAndOnlyOnce) {
    std::string id(ask(ali, bader).json.at("request").at("requestID").as_string());
    EXPECT_EQ(answer(id, "accept", ali).errorCode(), "request_not_found");
    EXPECT_EQ(answer(id, "accept", chadi).errorCode(), "request_not_found");
    EXPECT_TRUE(friendNames(ali).empty());
    EXPECT_EQ(answer(id, "decline", bader).status, 200u);
    EXPECT_EQ(answer(id, "accept", bader).errorCode(), "request_not_pending");
    EXPECT_TRUE(friendNames(bader).empty());
    EXPECT_EQ(answer("Fnothing", "accept", bader).status, 404u);
    EXPECT_EQ(svc->http().post("/v1/friend-requests/" + id + "/maybe", json::object{}, bader.token).status,
              404u);
    // After a refusal a new request may go out.
    EXPECT_EQ(ask(ali, bader).status, 201u);
}

TEST_P(FriendsTest, RefusedRequests) {
    EXPECT_EQ(ask(ali, ali).errorCode(), "cannot_befriend_self");
    EXPECT_EQ(
        svc->http().post("/v1/friend-requests", json::object{{"playerID", "Tghost"}}, ali.token).errorCode(),
        "player_not_found");
    EXPECT_EQ(ask(ali, bader).status, 201u);
    EXPECT_EQ(ask(ali, bader).errorCode(), "already_requested");
    EXPECT_EQ(ask(bader, ali).errorCode(), "reverse_request_pending");
    svc->befriend(ali, chadi);
    EXPECT_EQ(ask(chadi, ali).errorCode(), "already_friends");
    EXPECT_EQ(ask(ali, chadi, std::string(201, 'x')).errorCode(), "invalid_message");
    EXPECT_EQ(svc->http().post("/v1/friend-requests", json::object{{"playerID", 12}}, ali.token).errorCode(),
              "invalid_field");
    EXPECT_EQ(
        svc->http().post("/v1/friend-requests", json::object{{"playerID", "../x"}}, ali.token).errorCode(),
        "invalid_field");
    EXPECT_EQ(svc->http().get("/v1/friend-requests?direction=sideways", ali.token).errorCode(),
              "invalid_parameter");
    // Only the one good request is pending for Bader.
    EXPECT_EQ(svc->http().get("/v1/friend-requests", bader.token).json.at("requests").as_array().size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Backends, FriendsTest, ::testing::ValuesIn(backends()), backendName);
