#include "support.h"

#include <gtest/gtest.h>

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

class EventsTest : public ServiceTest {
protected:
    void start() override {
        ali = svc->signUp("Ali");
        bader = svc->signUp("Bader");
        chadi = svc->signUp("Chadi");
    }
    std::string ask(const Account& from, const Account& to, const std::string& message) {
        Reply r = svc->http().post("/v1/friend-requests",
                                   json::object{{"playerID", to.id}, {"message", message}}, from.token);
        EXPECT_EQ(r.status, 201u) << r.body;
        return std::string(r.json.at("request").at("requestID").as_string());
    }
    static std::vector<std::string> messages(const std::vector<json::value>& events) {
        std::vector<std::string> out;
        for (const auto& e : events) {
            out.emplace_back(e.at("data").at("request").at("message").as_string());
        }
        return out;
    }

    Account ali, bader, chadi;
};

} // namespace

TEST_P(EventsTest, TheSocketNeedsAValidToken) {
    EXPECT_EQ(wsHandshakeStatus(svc->port(), "/v1/events", ""), 401u);
    EXPECT_EQ(wsHandshakeStatus(svc->port(), "/v1/events", "Bearer " + std::string(64, '0')), 401u);
    EXPECT_EQ(wsHandshakeStatus(svc->port(), "/v1/elsewhere", "Bearer " + ali.token), 404u);
    EXPECT_EQ(wsHandshakeStatus(svc->port(), "/v1/events?access_token=" + ali.token, ""), 101u);
    EXPECT_EQ(wsHandshakeStatus(svc->port(), "/v1/events", "Bearer " + ali.token), 101u);
}

TEST_P(EventsTest, AConnectedPlayerGetsAFriendRequestAtOnce) {
    WsClient ws(svc->port(), bader.token);
    EXPECT_TRUE(ws.drain().empty());
    ask(ali, bader, "play?");
    auto e = ws.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->at("type"), "event");
    EXPECT_EQ(e->at("event"), "friend_request");
    EXPECT_EQ(e->at("seq"), 1);
    EXPECT_EQ(e->at("data").at("request").at("from").at("playerID"), ali.id.c_str());
    EXPECT_EQ(e->at("data").at("request").at("message"), "play?");
}

TEST_P(EventsTest, MissedEventsArriveInOrderAndAcknowledgedOnesNeverAgain) {
    ask(ali, bader, "first");
    ask(chadi, bader, "second");
    {
        WsClient ws(svc->port(), bader.token);
        auto got = ws.drain();
        EXPECT_EQ(messages(got), (std::vector<std::string>{"first", "second"}));
        ws.ack(got.at(0).at("seq").as_int64());
        EXPECT_TRUE(ws.drain().empty());
    }
    // The second was not acknowledged: it comes again, and then the one sent while away.
    Account dana = svc->signUp("Dana");
    ask(dana, bader, "third");
    {
        WsClient ws(svc->port(), bader.token);
        auto got = ws.drain();
        EXPECT_EQ(messages(got), (std::vector<std::string>{"second", "third"}));
        ws.ack(got.back().at("seq").as_int64());
        EXPECT_TRUE(ws.drain().empty());
    }
    WsClient again(svc->port(), bader.token);
    EXPECT_TRUE(again.drain().empty());
}

TEST_P(EventsTest, AcceptanceReachesTheSenderAndEventsSurviveARestart) {
    std::string id = ask(ali, bader, "hi");
    ASSERT_EQ(svc->http().post("/v1/friend-requests/" + id + "/accept", json::object{}, bader.token).status,
              200u);
    svc->restart();
    WsClient ws(svc->port(), ali.token);
    auto got = ws.drain();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].at("event"), "friend_accepted");
    EXPECT_EQ(got[0].at("data").at("friend").at("playerID"), bader.id.c_str());
    EXPECT_EQ(got[0].at("data").at("friend").at("isFriend"), true);
}

TEST_P(EventsTest, LoggingOutEndsTheSocketOfThatTokenOnly) {
    Reply second = svc->http().post("/v1/sessions",
                                    json::object{{"displayName", "Bader"}, {"password", "correct horse"}});
    ASSERT_EQ(second.status, 200u);
    std::string otherToken(second.json.at("token").as_string());
    WsClient kept(svc->port(), bader.token);
    WsClient ended(svc->port(), otherToken);
    EXPECT_TRUE(kept.drain().empty());
    EXPECT_TRUE(ended.drain().empty());
    ASSERT_EQ(svc->http().request("DELETE", "/v1/sessions/current", {}, otherToken).status, 204u);
    ask(ali, bader, "after logout");
    // The logged-out socket is closed without receiving the event; the other one receives it.
    EXPECT_FALSE(ended.next().has_value());
    auto e = kept.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->at("data").at("request").at("message"), "after logout");
    EXPECT_EQ(wsHandshakeStatus(svc->port(), "/v1/events", "Bearer " + otherToken), 401u);
}

TEST_P(EventsTest, BadMessagesAreAnsweredAndTheSocketStays) {
    WsClient ws(svc->port(), bader.token);
    ws.send("hello");
    EXPECT_EQ(ws.next()->at("error").at("code"), "invalid_message");
    ws.send(json::object{{"type", "dance"}});
    EXPECT_EQ(ws.next()->at("error").at("code"), "invalid_message");
    ws.ack(5); // nothing was sent yet
    EXPECT_EQ(ws.next()->at("error").at("code"), "invalid_ack");
    ask(ali, bader, "still here");
    auto e = ws.next();
    ASSERT_TRUE(e);
    EXPECT_EQ(e->at("data").at("request").at("message"), "still here");
}

TEST_P(EventsTest, ASocketCountsAsOpenInTheMetrics) {
    auto open = [&] {
        std::string m = svc->http().get("/metrics", "").body;
        auto at = m.find("\ntarvolin_websockets_open ");
        return std::stoi(m.substr(at + 26));
    };
    EXPECT_EQ(open(), 0);
    {
        WsClient ws(svc->port(), bader.token);
        ws.drain();
        EXPECT_EQ(open(), 1);
    }
    // The server notices the close on its own strand; ask until it has.
    for (int i = 0; i < 1000 && open() != 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(open(), 0);
}

INSTANTIATE_TEST_SUITE_P(Backends, EventsTest, ::testing::ValuesIn(backends()), backendName);
