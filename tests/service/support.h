// Shared pieces of the service tests: fresh databases of both kinds, a running service on loopback,
// and small HTTP and WebSocket clients.
#pragma once

#include "net/api.h"
#include "net/log.h"
#include "net/server.h"
#include "store/store.h"

#include <boost/asio/io_context.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <boost/json.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarvolin::testing {

// "sqlite" and "postgresql"; the second runs only when TARVOLIN_TEST_DATABASE names a database.
std::vector<std::string> backends();
bool backendAvailable(const std::string& backend);

// Skips the running test when its backend is not available.
#define TARVOLIN_REQUIRE_BACKEND(backend)                                                                    \
    do {                                                                                                     \
        if (!::tarvolin::testing::backendAvailable(backend)) {                                               \
            GTEST_SKIP() << "TARVOLIN_TEST_DATABASE is not set";                                             \
        }                                                                                                    \
    } while (false)

// A database of its own for one test, removed at the end; open() may be called again to reopen it.
class TestDatabase {
public:
    explicit TestDatabase(std::string backend);
    ~TestDatabase();
    std::unique_ptr<store::Store> open();
    // A connection of its own, for changes an operator makes in SQL.
    std::unique_ptr<store::Connection> connect();
    const std::string& backend() const { return backend_; }

private:
    std::string backend_;
    std::filesystem::path dir_;
    std::string schema_;
};

struct Reply {
    unsigned status = 0;
    std::map<std::string, std::string> headers;
    std::string body;
    boost::json::value json; // null when the body is not JSON

    const boost::json::object& obj() const { return json.as_object(); }
    std::string errorCode() const;
};

// One keep-alive HTTP connection.
class HttpClient {
public:
    explicit HttpClient(unsigned short port);
    Reply request(const std::string& method, const std::string& target, const std::string& body = {},
                  const std::string& token = {});
    Reply get(const std::string& target, const std::string& token) {
        return request("GET", target, {}, token);
    }
    Reply post(const std::string& target, const boost::json::value& body, const std::string& token = {}) {
        return request("POST", target, boost::json::serialize(body), token);
    }
    // Sends raw bytes and reads one response.
    Reply raw(const std::string& bytes);
    bool connected() const;

private:
    Reply readReply();
    unsigned short port_;
    boost::asio::io_context io_;
    boost::beast::tcp_stream stream_;
    boost::beast::flat_buffer buffer_;
};

// An event WebSocket with reads bounded by a safety time limit.
class WsClient {
public:
    // Throws when the handshake is refused; status holds the HTTP status then.
    WsClient(unsigned short port, const std::string& token);
    ~WsClient();
    std::optional<boost::json::value> next();
    // The next message of a type, passing over events and other messages.
    std::optional<boost::json::value> nextOfType(const std::string& type);
    void send(const boost::json::value& v);
    // Messages before the answer to a ping: everything the server had sent up to then.
    std::vector<boost::json::value> drain();
    void ack(std::int64_t seq) { send(boost::json::object{{"type", "ack"}, {"seq", seq}}); }
    void close();

private:
    boost::asio::io_context io_;
    boost::beast::websocket::stream<boost::beast::tcp_stream> ws_;
    boost::beast::flat_buffer buffer_;
    bool open_ = false;
};

// The answer to a WebSocket handshake: 101 when it was accepted, else the refusal with its body.
Reply wsHandshake(unsigned short port, const std::string& target, const std::string& authorization);
// HTTP status of a refused WebSocket handshake, or 101 when it was accepted.
inline unsigned wsHandshakeStatus(unsigned short port, const std::string& target,
                                  const std::string& authorization) {
    return wsHandshake(port, target, authorization).status;
}

struct Account {
    std::string id;
    std::string name;
    std::string token;
};

// The service on 127.0.0.1 with an ephemeral port, a clock that tests move, and cheap password hashing.
class TestService {
public:
    explicit TestService(const std::string& backend, net::ApiConfig config = fastConfig(),
                         net::ServerConfig server = serverConfig());
    // A further instance on the database of another.
    explicit TestService(std::shared_ptr<TestDatabase> db, net::ApiConfig config = fastConfig(),
                         net::ServerConfig server = serverConfig());
    ~TestService();

    static net::ApiConfig fastConfig();
    // Loopback, an ephemeral port, two threads, no handshake limit.
    static net::ServerConfig serverConfig();

    unsigned short port() const { return port_; }
    HttpClient& http() { return *client_; }
    net::Server& server() { return *server_; }
    net::Api& api() { return *api_; }
    void advance(std::int64_t ms) { clock_ += ms; }
    std::int64_t now() const { return clock_; }

    Account signUp(const std::string& name, const std::string& password = "correct horse");
    // Reports a score and returns the reply's score object.
    boost::json::object report(const Account& a, std::int64_t value, std::int64_t context = 0);
    void befriend(const Account& a, const Account& b);

    // Stops everything and starts again on the same database.
    void restart();
    std::shared_ptr<TestDatabase> database() const { return db_; }

private:
    void start();
    void stop();

    std::shared_ptr<TestDatabase> db_;
    net::ApiConfig config_;
    net::ServerConfig serverConfig_;
    std::shared_ptr<std::atomic<std::int64_t>> clockRef_;
    std::atomic<std::int64_t>& clock_;
    net::Logger log_{net::LogLevel::Off};
    std::unique_ptr<store::Store> store_;
    std::unique_ptr<net::Api> api_;
    std::unique_ptr<net::Server> server_;
    std::unique_ptr<HttpClient> client_;
    unsigned short port_ = 0;
};

// A case run on each backend against a service of its own; start() runs once the service is up.
class ServiceTest : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        TARVOLIN_REQUIRE_BACKEND(GetParam());
        svc = std::make_unique<TestService>(GetParam());
        start();
    }
    virtual void start() {}

    std::unique_ptr<TestService> svc;
};

// A JSON string's value; an error (the test fails) when it is not one.
inline std::string str(const boost::json::value& v) {
    return std::string(v.as_string());
}

// The value of a line of /metrics ("name{labels}"); -1 when there is no such line.
double metricValue(HttpClient& http, const std::string& series);

// A progress document of the game's form with the figures that matter for its gold; the other fields hold
// values of their own type.
boost::json::object progressDocument(std::int64_t level, std::int64_t gold, std::int64_t activeDays = 1,
                                     boost::json::object achievements = {});

// Names the parameter of a test suite run over the backends.
std::string backendName(const ::testing::TestParamInfo<std::string>& info);

} // namespace tarvolin::testing
