#include "support.h"

#include <gtest/gtest.h>

using namespace tarvolin::testing;
namespace json = boost::json;

TEST(Operations, HeadOfTheRootCarriesTheServerDate) {
    TestService svc("sqlite");
    Reply r = svc.http().request("HEAD", "/");
    EXPECT_EQ(r.status, 200u);
    const std::string& date = r.headers.at("Date");
    // "Sun, 22 Nov 2026 01:48:00 GMT"
    ASSERT_EQ(date.size(), 29u) << date;
    EXPECT_EQ(date.substr(25), " GMT");
    EXPECT_EQ(date[3], ',');
}

TEST(Operations, HealthMetricsAndTheSettingsRecord) {
    TestService svc("sqlite");
    Reply health = svc.http().get("/healthz", "");
    EXPECT_EQ(health.status, 200u);
    EXPECT_EQ(health.json.at("status"), "ok");

    Reply settings = svc.http().get("/views/wallsettings.php?appId=com.example.tarvolin", "");
    EXPECT_EQ(settings.status, 400u); // dots are not in an identifier
    settings = svc.http().get("/views/wallsettings.php?appId=tarvolin", "");
    EXPECT_EQ(settings.status, 200u);
    EXPECT_EQ(settings.body, "service=tarvolin,bonus=on");
    EXPECT_EQ(svc.http().get("/views/wallsettings.php", "").status, 400u);

    svc.http().get("/v1/players/me", "");
    svc.http().get("/v1/players/me", "");
    std::string m = svc.http().get("/metrics", "").body;
    EXPECT_NE(m.find(R"(tarvolin_http_requests_total{route="/v1/players/me",method="GET",status="401"} 2)"),
              std::string::npos)
        << m;
    EXPECT_NE(m.find(R"(tarvolin_http_request_duration_seconds_count{route="/healthz"} 1)"),
              std::string::npos);
    EXPECT_NE(m.find(R"(tarvolin_http_request_duration_seconds_bucket{route="/healthz",le="+Inf"} 1)"),
              std::string::npos);
    EXPECT_NE(m.find("# TYPE tarvolin_http_request_duration_seconds histogram"), std::string::npos);
    EXPECT_NE(m.find("tarvolin_leaderboard_players 0"), std::string::npos);
}

TEST(Operations, BadRequestsGetJsonErrorsAndTheConnectionGoesOn) {
    TestService svc("sqlite");
    Account a = svc.signUp("Amal");
    EXPECT_EQ(svc.http().get("/nowhere", "").errorCode(), "not_found");
    EXPECT_EQ(svc.http().request("PUT", "/v1/accounts", "{}").errorCode(), "method_not_allowed");
    EXPECT_EQ(svc.http().get("/v1/leaderboard?from=%zz", a.token).errorCode(), "invalid_query");
    EXPECT_EQ(svc.http().get("/v1/leaderboard?from=%32", a.token).status, 200u);
    EXPECT_TRUE(svc.http().connected());
    EXPECT_EQ(svc.http().get("/v1/players/me", a.token).status, 200u);
}

TEST(Operations, ATooLargeBodyIsRefusedAndNothingIsWritten) {
    TestService svc("sqlite");
    std::string name(tarvolin::net::ServerConfig{}.maxBodyBytes + 1000, 'x');
    Reply r = svc.http().request("POST", "/v1/accounts",
                                 R"({"displayName":")" + name + R"(","password":"12345678"})");
    EXPECT_EQ(r.status, 413u);
    EXPECT_EQ(r.errorCode(), "body_too_large");
    HttpClient other(svc.port());
    EXPECT_EQ(other.request("POST", "/v1/sessions", R"({"displayName":"x","password":"12345678"})").status,
              401u);
}

TEST(Operations, GarbageInsteadOfHttpIsAnsweredWithBadRequest) {
    TestService svc("sqlite");
    HttpClient raw(svc.port());
    Reply r = raw.raw("HELLO\x01 THERE\r\n\r\n");
    EXPECT_EQ(r.status, 400u);
    EXPECT_EQ(svc.http().get("/healthz", "").status, 200u);
}

TEST(Operations, RequestsPerAddressAreLimited) {
    auto config = TestService::fastConfig();
    config.requestsPerSecond = 1;
    config.requestBurst = 3;
    TestService svc("sqlite", config);
    Account a = svc.signUp("Amal");
    EXPECT_EQ(svc.http().get("/v1/players/me", a.token).status, 200u);
    EXPECT_EQ(svc.http().get("/v1/players/me", a.token).status, 200u);
    Reply limited = svc.http().get("/v1/players/me", a.token);
    EXPECT_EQ(limited.status, 429u);
    EXPECT_EQ(limited.errorCode(), "rate_limited");
    EXPECT_EQ(svc.http().get("/healthz", "").status, 200u); // operations are not limited
    svc.advance(1000);
    EXPECT_EQ(svc.http().get("/v1/players/me", a.token).status, 200u);
}

TEST(Operations, ShutdownClosesIdleConnectionsAndRefusesNewOnes) {
    TestService svc("sqlite");
    HttpClient idle(svc.port());
    EXPECT_EQ(idle.get("/healthz", "").status, 200u);
    Account a = svc.signUp("Amal");
    WsClient ws(svc.port(), a.token);
    ws.drain();
    auto started = std::chrono::steady_clock::now();
    svc.server().shutdown();
    EXPECT_FALSE(ws.next().has_value()); // the socket is closed by the server
    svc.server().wait();
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(4));
    EXPECT_THROW(HttpClient(svc.port()).get("/healthz", ""), std::exception);
}

TEST(Operations, ConnectionsLeftAfterTheGracePeriodAreCutOff) {
    TestDatabase db("sqlite");
    auto store = db.open();
    tarvolin::net::Api api(*store, TestService::fastConfig());
    tarvolin::net::Logger log(tarvolin::net::LogLevel::Off);
    tarvolin::net::ServerConfig config;
    config.address = "127.0.0.1";
    config.port = 0;
    config.shutdownGrace = std::chrono::seconds(0);
    auto server = std::make_unique<tarvolin::net::Server>(api, config, log);
    unsigned short port = server->start();
    HttpClient c(port);
    Reply r = c.post("/v1/accounts", json::object{{"displayName", "Amal"}, {"password", "long enough"}});
    ASSERT_EQ(r.status, 201u);
    WsClient ws(port, std::string(r.json.at("token").as_string()));
    ws.drain();
    server->shutdown();
    server->wait();
    // The sessions still open end with the server, which they still report to as they go.
    server.reset();
    EXPECT_FALSE(ws.next().has_value());
}
