// The limits that keep one address from wearing the service down for the others.
#include "support.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/http.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <iostream>
#include <thread>

using namespace tarvolin;
using namespace tarvolin::testing;
namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace json = boost::json;
using tcp = asio::ip::tcp;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

// A plain TCP connection from a chosen loopback address (all of 127/8 reaches the service).
class Conn {
public:
    Conn(unsigned short port, const std::string& from = "127.0.0.1") : socket_(io_) {
        socket_.open(tcp::v4());
        socket_.bind(tcp::endpoint(asio::ip::make_address(from), 0));
        socket_.connect(tcp::endpoint(asio::ip::make_address("127.0.0.1"), port));
    }

    // False when the server has closed the connection.
    bool send(std::string_view bytes) {
        beast::error_code ec;
        asio::write(socket_, asio::buffer(bytes.data(), bytes.size()), ec);
        return !ec;
    }

    // One response, or nothing when none came within the limit or the connection ended first.
    std::optional<Reply> response(std::chrono::milliseconds limit = 5000ms) {
        http::response<http::string_body> res;
        std::optional<Reply> out;
        http::async_read(socket_, buffer_, res, [&](beast::error_code ec, std::size_t) {
            if (!ec) {
                Reply r;
                r.status = res.result_int();
                for (const auto& f : res) {
                    r.headers[std::string(f.name_string())] = std::string(f.value());
                }
                r.body = res.body();
                json::error_code jec;
                r.json = json::parse(r.body, jec);
                out = std::move(r);
            }
        });
        run(limit);
        return out;
    }

    Reply get(const std::string& target) {
        send("GET " + target + " HTTP/1.1\r\nHost: tarvolin\r\n\r\n");
        auto r = response();
        return r ? *r : Reply{};
    }

    // Reads (and keeps) whatever comes until the server closes or the limit passes; whether it closed.
    bool waitClosed(std::chrono::milliseconds limit) {
        const auto deadline = Clock::now() + limit;
        bool closed = false;
        std::array<char, 4096> chunk{};
        std::function<void()> readMore = [&] {
            socket_.async_read_some(asio::buffer(chunk), [&](beast::error_code ec, std::size_t n) {
                received_.append(chunk.data(), n);
                if (ec) {
                    closed = ec != asio::error::operation_aborted;
                    return;
                }
                readMore();
            });
        };
        readMore();
        run(std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()));
        return closed;
    }

    const std::string& received() const { return received_; }
    void close() {
        beast::error_code ec;
        socket_.close(ec);
    }

private:
    void run(std::chrono::milliseconds limit) {
        io_.restart();
        io_.run_for(limit);
        if (!io_.stopped()) {
            beast::error_code ec;
            socket_.cancel(ec);
            io_.restart();
            io_.run();
        }
    }

    asio::io_context io_;
    tcp::socket socket_;
    beast::flat_buffer buffer_;
    std::string received_;
};

std::string upgradeRequest(const std::string& token) {
    return "GET /v1/events HTTP/1.1\r\nHost: tarvolin\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n"
           "Authorization: Bearer " +
           token + "\r\n\r\n";
}

std::string signUpRequest(const std::string& name) {
    const std::string body =
        json::serialize(json::object{{"displayName", name}, {"password", "a long secret"}});
    return "POST /v1/accounts HTTP/1.1\r\nHost: tarvolin\r\nContent-Type: "
           "application/json\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
}

bool eventually(const std::function<bool()>& done, std::chrono::milliseconds limit = 5000ms) {
    const auto deadline = Clock::now() + limit;
    while (!done()) {
        if (Clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

double limited(TestService& svc, const std::string& limit) {
    return metricValue(svc.http(), "tarvolin_limited_total{limit=\"" + limit + "\"}");
}

} // namespace

TEST(AbuseLimits, SignUpsPerAddress) {
    auto config = TestService::fastConfig();
    config.signupsPerHour = 3;
    TestService svc("sqlite", config);
    for (int i = 0; i < 3; ++i) {
        svc.signUp("Player " + std::to_string(i));
    }
    Reply refused = svc.http().raw(signUpRequest("Player 3"));
    EXPECT_EQ(refused.status, 429u);
    EXPECT_EQ(refused.errorCode(), "rate_limited");
    EXPECT_EQ(refused.headers["Retry-After"], "1200"); // three an hour: one every twenty minutes
    // A malformed sign-up hears what is wrong with it first, and costs nothing.
    Reply bad =
        svc.http().post("/v1/accounts", json::object{{"displayName", "Player 3"}, {"password", "short"}});
    EXPECT_EQ(bad.errorCode(), "invalid_password");
    // Another address is not held back, and this one may go on when its time has come.
    Conn other(svc.port(), "127.0.0.2");
    other.send(signUpRequest("Player 3"));
    EXPECT_EQ(other.response().value_or(Reply{}).status, 201u);
    svc.advance(1'199'000);
    EXPECT_EQ(svc.http().raw(signUpRequest("Player 4")).headers["Retry-After"], "1");
    svc.advance(1000);
    svc.signUp("Player 4");
    EXPECT_EQ(svc.http().raw(signUpRequest("Player 5")).status, 429u);
    EXPECT_EQ(limited(svc, "signups"), 3);
}

TEST(AbuseLimits, WebSocketHandshakesPerAddress) {
    auto sc = TestService::serverConfig();
    sc.handshakesPerMinute = 6;
    sc.handshakeBurst = 2;
    TestService svc("sqlite", TestService::fastConfig(), sc);
    Account a = svc.signUp("Walker");
    EXPECT_EQ(wsHandshakeStatus(svc.port(), "/v1/events", "Bearer " + a.token), 101u);
    EXPECT_EQ(wsHandshakeStatus(svc.port(), "/v1/events", "Bearer " + a.token), 101u);
    // The limit comes before the token is looked at: a flood of bad tokens is as cheap to refuse.
    Conn flood(svc.port());
    flood.send(upgradeRequest("not-a-token"));
    Reply refused = flood.response().value_or(Reply{});
    EXPECT_EQ(refused.status, 429u);
    EXPECT_EQ(refused.errorCode(), "rate_limited");
    EXPECT_EQ(refused.headers["Retry-After"], "10");
    EXPECT_TRUE(flood.waitClosed(2000ms));
    EXPECT_EQ(Conn(svc.port(), "127.0.0.3").get("/healthz").status, 200u);
    EXPECT_EQ(wsHandshakeStatus(svc.port(), "/v1/events", "Bearer " + a.token), 429u);
    svc.advance(10'000);
    EXPECT_EQ(wsHandshakeStatus(svc.port(), "/v1/events", "Bearer " + a.token), 101u);
    // Plain requests of the address are not affected.
    EXPECT_EQ(svc.http().get("/v1/players/me", a.token).status, 200u);
    EXPECT_EQ(limited(svc, "handshakes"), 2);
}

TEST(AbuseLimits, ConnectionsPerAddressAreCountedAndReleasedOnEveryPath) {
    auto sc = TestService::serverConfig();
    sc.connectionsPerAddress = 4;
    sc.headerTimeout = 1s;
    TestService svc("sqlite", TestService::fastConfig(), sc);
    Account a = svc.signUp("Holder"); // svc.http() holds the first connection
    auto& server = svc.server();
    std::vector<std::unique_ptr<Conn>> held;
    for (int i = 0; i < 3; ++i) {
        held.push_back(std::make_unique<Conn>(svc.port()));
    }
    ASSERT_TRUE(eventually([&] { return server.openConnections("127.0.0.1") == 4; }));

    Conn extra(svc.port());
    Reply refused = extra.response().value_or(Reply{});
    EXPECT_EQ(refused.status, 503u);
    EXPECT_EQ(refused.errorCode(), "too_many_connections");
    EXPECT_TRUE(extra.waitClosed(2000ms));
    // The others' connections go on, and another address is not counted with this one.
    EXPECT_EQ(held[0]->get("/healthz").status, 200u);
    EXPECT_EQ(svc.http().get("/v1/players/me", a.token).status, 200u);
    EXPECT_EQ(Conn(svc.port(), "127.0.0.2").get("/healthz").status, 200u);
    EXPECT_EQ(server.openConnections("127.0.0.1"), 4);

    // Closed by the client, ended by a bad request, timed out in its headers: each gives its place back.
    held[0]->close();
    ASSERT_TRUE(eventually([&] { return server.openConnections("127.0.0.1") == 3; }));
    held[1]->send("NOT HTTP AT ALL\r\n\r\n");
    EXPECT_EQ(held[1]->response().value_or(Reply{}).status, 400u);
    ASSERT_TRUE(eventually([&] { return server.openConnections("127.0.0.1") == 2; }));
    held[2]->send("GET /healthz HTTP/1.1\r\n");
    EXPECT_TRUE(held[2]->waitClosed(3000ms));
    ASSERT_TRUE(eventually([&] { return server.openConnections("127.0.0.1") == 1; }));

    // A WebSocket keeps the place of its connection while it is open.
    {
        WsClient ws(svc.port(), a.token);
        ws.drain();
        EXPECT_EQ(server.openConnections("127.0.0.1"), 2);
    }
    ASSERT_TRUE(eventually([&] { return server.openConnections("127.0.0.1") == 1; }));
    EXPECT_EQ(Conn(svc.port()).get("/healthz").status, 200u);
    EXPECT_EQ(limited(svc, "connections"), 1);
}

TEST(AbuseLimits, SlowHeadersAreCutOffButIdleConnectionsWaitTheirTime) {
    auto sc = TestService::serverConfig();
    sc.headerTimeout = 1s;
    sc.idleTimeout = 3s;
    TestService svc("sqlite", TestService::fastConfig(), sc);

    // A byte every 100 ms keeps the connection busy but does not buy more time than the headers have.
    Conn slow(svc.port());
    const auto began = Clock::now();
    std::string header = "GET /healthz HTTP/1.1\r\nHost: tarvolin\r\nX-Slow: ";
    bool open = true;
    for (std::size_t i = 0; open && Clock::now() - began < 5s; ++i) {
        open = slow.send(std::string(1, i < header.size() ? header[i] : 'a'));
        std::this_thread::sleep_for(100ms);
        open = open && !slow.waitClosed(1ms);
    }
    const auto cutOff = Clock::now() - began;
    EXPECT_FALSE(open);
    EXPECT_GE(cutOff, 900ms);
    EXPECT_LT(cutOff, 2500ms);
    EXPECT_EQ(slow.received(), ""); // closed without an answer
    EXPECT_EQ(limited(svc, "header_timeout"), 1);

    // Waiting for the next request is not sending one: past the header time it is still answered.
    Conn idle(svc.port());
    EXPECT_FALSE(idle.waitClosed(1500ms));
    EXPECT_EQ(idle.get("/healthz").status, 200u);
    const auto answered = Clock::now();
    EXPECT_TRUE(idle.waitClosed(5000ms));
    EXPECT_GE(Clock::now() - answered, 2500ms);
}

TEST(AbuseLimits, WebSocketsThatStopAnsweringAreClosed) {
    auto sc = TestService::serverConfig();
    sc.websocketTimeout = 2s;
    TestService svc("sqlite", TestService::fastConfig(), sc);
    Account a = svc.signUp("Sleeper");

    // A client that talks stays, well past the timeout.
    {
        WsClient ws(svc.port(), a.token);
        for (int i = 0; i < 8; ++i) {
            std::this_thread::sleep_for(500ms);
            EXPECT_NO_THROW(ws.drain());
        }
    }
    // One that upgrades and then goes silent is pinged, and closed when it does not answer.
    Conn silent(svc.port());
    silent.send(upgradeRequest(a.token));
    const auto began = Clock::now();
    EXPECT_TRUE(silent.waitClosed(6000ms));
    const auto closed = Clock::now() - began;
    EXPECT_GE(closed, 1800ms);
    EXPECT_LT(closed, 4500ms);
    const std::string& got = silent.received();
    ASSERT_NE(got.find("101 Switching Protocols"), std::string::npos);
    const std::size_t frames = got.find("\r\n\r\n") + 4;
    ASSERT_LT(frames, got.size());
    EXPECT_EQ(static_cast<unsigned char>(got[frames]), 0x89u); // a ping came first
    EXPECT_TRUE(eventually([&] { return limited(svc, "websocket_timeout") == 1; }));
    EXPECT_TRUE(eventually([&] { return svc.server().openConnections("127.0.0.1") == 1; }));
}

// While one address holds hundreds of connections, trickles headers, and floods sign-ups and handshakes,
// the health check of another address is answered at once.
TEST(AbuseLimits, HealthStaysFastWhileAnAddressAbusesTheService) {
    auto config = TestService::fastConfig();
    config.signupsPerHour = 10;
    auto sc = TestService::serverConfig();
    sc.handshakesPerMinute = 30;
    sc.handshakeBurst = 10;
    TestService svc("sqlite", config, sc);
    Account a = svc.signUp("Abuser");

    std::atomic<bool> stop{false};
    std::atomic<int> signUps{0}, handshakes{0};
    // Sign-ups on a connection of its own, as fast as they are answered.
    Conn signUpConn(svc.port());
    std::thread signUpFlood([&] {
        for (int i = 0; !stop; ++i) {
            if (!signUpConn.send(signUpRequest("Flood " + std::to_string(i))) || !signUpConn.response()) {
                break;
            }
            ++signUps;
        }
    });
    // Handshakes, each on a new connection (refused ones are closed after the answer).
    std::thread handshakeFlood([&] {
        while (!stop) {
            try {
                Conn c(svc.port());
                c.send(upgradeRequest(a.token));
                c.response(1000ms);
                ++handshakes;
            } catch (const std::exception&) {
            }
        }
    });
    // The floods get going first, then hundreds of connections are held open, the first fifty trickling
    // their headers; from then on the handshake flood mostly meets the connection limit.
    std::this_thread::sleep_for(200ms);
    std::vector<std::unique_ptr<Conn>> held;
    for (int i = 0; i < 300; ++i) {
        held.push_back(std::make_unique<Conn>(svc.port()));
    }
    std::thread trickle([&] {
        while (!stop) {
            for (int i = 0; i < 50 && !stop; ++i) {
                held[static_cast<std::size_t>(i)]->send(i % 2 ? "X" : "G");
            }
            std::this_thread::sleep_for(50ms);
        }
    });
    std::this_thread::sleep_for(300ms);

    std::vector<double> ms;
    for (int i = 0; i < 200; ++i) {
        const auto began = Clock::now();
        Conn probe(svc.port(), "127.0.0.2");
        Reply r = probe.get("/healthz");
        ms.push_back(std::chrono::duration<double, std::milli>(Clock::now() - began).count());
        ASSERT_EQ(r.status, 200u) << r.body;
        std::this_thread::sleep_for(5ms);
    }
    const int openDuringAbuse = svc.server().openConnections("127.0.0.1");
    stop = true;
    signUpFlood.join();
    handshakeFlood.join();
    trickle.join();

    std::sort(ms.begin(), ms.end());
    const double median = ms[ms.size() / 2];
    const double worst = ms.back();
    std::cout << "[ health ] " << ms.size() << " checks under abuse: median " << median << " ms, worst "
              << worst << " ms; sign-ups sent " << signUps << ", handshakes " << handshakes << "\n";
    RecordProperty("health_median_ms", std::to_string(median));
    RecordProperty("health_worst_ms", std::to_string(worst));
    EXPECT_LT(worst, 100.0);
    EXPECT_LE(openDuringAbuse, 64);
    EXPECT_GT(signUps, 10);
    EXPECT_GT(handshakes, 10);
    EXPECT_GT(limited(svc, "connections"), 200);
    EXPECT_EQ(limited(svc, "signups"), signUps - 9); // the account above was the first of the ten
    EXPECT_GT(limited(svc, "handshakes"), 0);
}
