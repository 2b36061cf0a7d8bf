#include "support.h"

#include <boost/asio/connect.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <sodium.h>

#include <cstdlib>
#include <random>

namespace tarvolin::testing {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace json = boost::json;
using tcp = asio::ip::tcp;

namespace {

constexpr auto kSafetyLimit = std::chrono::seconds(10);

std::string randomSuffix() {
    static std::mt19937_64 rng{std::random_device{}()};
    std::string s;
    for (int i = 0; i < 12; ++i) {
        s += static_cast<char>('a' + rng() % 26);
    }
    return s;
}

const char* testDatabaseUrl() {
    const char* url = std::getenv("TARVOLIN_TEST_DATABASE");
    return url && *url ? url : nullptr;
}

} // namespace

std::vector<std::string> backends() {
    return {"sqlite", "postgresql"};
}

bool backendAvailable(const std::string& backend) {
    return backend == "sqlite" || testDatabaseUrl() != nullptr;
}

std::string backendName(const ::testing::TestParamInfo<std::string>& info) {
    return info.param;
}

TestDatabase::TestDatabase(std::string backend) : backend_(std::move(backend)) {
    if (backend_ == "sqlite") {
        dir_ = std::filesystem::temp_directory_path() / ("tarvolin-test-" + randomSuffix());
        std::filesystem::create_directories(dir_);
    } else {
        schema_ = "t_" + randomSuffix();
    }
}

TestDatabase::~TestDatabase() {
    if (!dir_.empty()) {
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    } else {
        try {
            store::openPostgres(testDatabaseUrl())->transact([&](store::Tx& tx) {
                tx.script("DROP SCHEMA IF EXISTS \"" + schema_ + "\" CASCADE");
            });
        } catch (const std::exception&) {
            // The schema stays behind; the cluster is a throwaway one.
        }
    }
}

std::unique_ptr<store::Connection> TestDatabase::connect() {
    return backend_ == "sqlite" ? store::openSqlite((dir_ / "service.db").string())
                                : store::openPostgres(testDatabaseUrl(), schema_);
}

std::unique_ptr<store::Store> TestDatabase::open() {
    auto s = store::makeSqlStore(connect());
    s->migrate();
    return s;
}

std::string Reply::errorCode() const {
    if (!json.is_object() || !json.as_object().contains("error")) {
        return {};
    }
    return std::string(json.at("error").at("code").as_string());
}

HttpClient::HttpClient(unsigned short port) : port_(port), stream_(io_) {
    stream_.connect(tcp::endpoint(asio::ip::make_address("127.0.0.1"), port_));
}

bool HttpClient::connected() const {
    return stream_.socket().is_open();
}

Reply HttpClient::request(const std::string& method, const std::string& target, const std::string& body,
                          const std::string& token) {
    http::request<http::string_body> req{http::string_to_verb(method), target, 11};
    req.set(http::field::host, "127.0.0.1");
    if (!token.empty()) {
        req.set(http::field::authorization, "Bearer " + token);
    }
    if (!body.empty()) {
        req.set(http::field::content_type, "application/json");
        req.body() = body;
    }
    req.keep_alive(true);
    req.prepare_payload();
    http::write(stream_, req);
    if (method == "HEAD") {
        http::response_parser<http::string_body> parser;
        parser.skip(true);
        http::read(stream_, buffer_, parser);
        Reply r;
        r.status = parser.get().result_int();
        for (const auto& f : parser.get()) {
            r.headers[std::string(f.name_string())] = std::string(f.value());
        }
        return r;
    }
    return readReply();
}

Reply HttpClient::raw(const std::string& bytes) {
    asio::write(stream_.socket(), asio::buffer(bytes));
    return readReply();
}

Reply HttpClient::readReply() {
    http::response<http::string_body> res;
    http::read(stream_, buffer_, res);
    Reply r;
    r.status = res.result_int();
    for (const auto& f : res) {
        r.headers[std::string(f.name_string())] = std::string(f.value());
    }
    r.body = res.body();
    json::error_code ec;
    r.json = json::parse(r.body, ec);
    if (ec) {
        r.json = nullptr;
    }
    if (!res.keep_alive()) {
        beast::error_code ignored;
        stream_.socket().close(ignored);
    }
    return r;
}

WsClient::WsClient(unsigned short port, const std::string& token) : ws_(io_) {
    beast::get_lowest_layer(ws_).connect(tcp::endpoint(asio::ip::make_address("127.0.0.1"), port));
    ws_.set_option(beast::websocket::stream_base::decorator([token](beast::websocket::request_type& req) {
        req.set(http::field::authorization, "Bearer " + token);
    }));
    ws_.handshake("127.0.0.1", "/v1/events");
    open_ = true;
}

WsClient::~WsClient() {
    close();
}

std::optional<json::value> WsClient::next() {
    std::optional<json::value> out;
    bool done = false;
    ws_.async_read(buffer_, [&](beast::error_code ec, std::size_t) {
        done = true;
        if (!ec) {
            out = json::parse(beast::buffers_to_string(buffer_.data()));
            buffer_.consume(buffer_.size());
        } else {
            open_ = false;
        }
    });
    io_.restart();
    io_.run_for(kSafetyLimit);
    if (!done) {
        beast::get_lowest_layer(ws_).cancel();
        io_.restart();
        io_.run();
        open_ = false;
    }
    return out;
}

void WsClient::send(const json::value& v) {
    ws_.write(asio::buffer(json::serialize(v)));
}

std::optional<json::value> WsClient::nextOfType(const std::string& type) {
    while (auto m = next()) {
        if (m->at("type").is_string() && m->at("type").as_string() == type) {
            return m;
        }
    }
    return std::nullopt;
}

std::vector<json::value> WsClient::drain() {
    send(json::object{{"type", "ping"}});
    std::vector<json::value> out;
    while (auto m = next()) {
        if (m->at("type") == "pong") {
            return out;
        }
        out.push_back(std::move(*m));
    }
    throw std::runtime_error("the WebSocket ended before the pong");
}

void WsClient::close() {
    if (!open_) {
        return;
    }
    open_ = false;
    beast::error_code ec;
    beast::get_lowest_layer(ws_).expires_after(std::chrono::seconds(2));
    ws_.async_close(beast::websocket::close_code::normal, [](beast::error_code) {});
    io_.restart();
    io_.run_for(std::chrono::seconds(2));
}

Reply wsHandshake(unsigned short port, const std::string& target, const std::string& authorization) {
    asio::io_context io;
    beast::websocket::stream<beast::tcp_stream> ws(io);
    beast::get_lowest_layer(ws).connect(tcp::endpoint(asio::ip::make_address("127.0.0.1"), port));
    if (!authorization.empty()) {
        ws.set_option(
            beast::websocket::stream_base::decorator([authorization](beast::websocket::request_type& req) {
                req.set(http::field::authorization, authorization);
            }));
    }
    beast::websocket::response_type res;
    beast::error_code ec;
    ws.handshake(res, "127.0.0.1", target, ec);
    Reply out;
    out.status = res.result_int();
    out.body = res.body();
    json::error_code jec;
    out.json = json::parse(out.body, jec);
    if (jec) {
        out.json = nullptr;
    }
    return out;
}

TestService::TestService(const std::string& backend, net::ApiConfig config, net::ServerConfig server)
    : TestService(std::make_shared<TestDatabase>(backend), std::move(config), std::move(server)) {}

TestService::TestService(std::shared_ptr<TestDatabase> db, net::ApiConfig config, net::ServerConfig server)
    : db_(std::move(db)), config_(std::move(config)), serverConfig_(std::move(server)),
      clockRef_(std::make_shared<std::atomic<std::int64_t>>(1'800'000'000'000)), clock_(*clockRef_) {
    start();
}

TestService::~TestService() {
    stop();
}

net::ApiConfig TestService::fastConfig() {
    net::ApiConfig c;
    c.hashOpsLimit = crypto_pwhash_OPSLIMIT_MIN;
    c.hashMemLimit = crypto_pwhash_MEMLIMIT_MIN;
    c.requestsPerSecond = 0;
    c.signupsPerHour = 0; // the cases of the limit turn it on
    c.settings = {{"service", "tarvolin"}, {"bonus", "on"}};
    return c;
}

net::ServerConfig TestService::serverConfig() {
    net::ServerConfig sc;
    sc.address = "127.0.0.1";
    sc.port = 0;
    sc.threads = 2;
    sc.turnSweep = std::chrono::milliseconds(0); // tests move turns on by the clock they drive
    sc.shutdownGrace = std::chrono::seconds(5);
    sc.handshakesPerMinute = 0; // the cases of the limit turn it on
    return sc;
}

void TestService::start() {
    store_ = db_->open();
    auto clock = clockRef_;
    api_ = std::make_unique<net::Api>(*store_, config_, [clock] { return clock->load(); });
    api_->rekeyNames();
    api_->watchOtherInstances();
    api_->loadLeaderboard();
    server_ = std::make_unique<net::Server>(*api_, serverConfig_, log_);
    port_ = server_->start();
    client_ = std::make_unique<HttpClient>(port_);
}

void TestService::stop() {
    client_.reset();
    if (server_) {
        server_->shutdown();
        server_->wait();
    }
    server_.reset();
    api_.reset();
    store_.reset();
}

void TestService::restart() {
    stop();
    start();
}

Account TestService::signUp(const std::string& name, const std::string& password) {
    Reply r = http().post("/v1/accounts", json::object{{"displayName", name}, {"password", password}});
    if (r.status != 201) {
        throw std::runtime_error("sign-up of " + name + " failed: " + r.body);
    }
    return Account{std::string(r.json.at("player").at("playerID").as_string()), name,
                   std::string(r.json.at("token").as_string())};
}

json::object TestService::report(const Account& a, std::int64_t value, std::int64_t context) {
    advance(1); // reports come one after the other
    Reply r =
        http().post("/v1/leaderboard/scores", json::object{{"value", value}, {"context", context}}, a.token);
    if (r.status != 200) {
        throw std::runtime_error("report failed: " + r.body);
    }
    return r.json.at("score").as_object();
}

void TestService::befriend(const Account& a, const Account& b) {
    Reply sent =
        http().post("/v1/friend-requests", json::object{{"playerID", b.id}, {"message", "hi"}}, a.token);
    if (sent.status != 201) {
        throw std::runtime_error("friend request failed: " + sent.body);
    }
    std::string id(sent.json.at("request").at("requestID").as_string());
    Reply accepted = http().post("/v1/friend-requests/" + id + "/accept", json::object{}, b.token);
    if (accepted.status != 200) {
        throw std::runtime_error("accept failed: " + accepted.body);
    }
}

double metricValue(HttpClient& http, const std::string& series) {
    const std::string text = http.get("/metrics", {}).body;
    const std::string head = series + " ";
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = text.find('\n', at);
        std::string_view line(text.data() + at, (end == std::string::npos ? text.size() : end) - at);
        if (line.starts_with(head)) {
            return std::stod(std::string(line.substr(head.size())));
        }
        at = end == std::string::npos ? text.size() : end + 1;
    }
    return -1;
}

boost::json::object progressDocument(std::int64_t level, std::int64_t gold, std::int64_t activeDays,
                                     boost::json::object achievements) {
    namespace json = boost::json;
    return json::object{
        {"schema", 1},
        {"level", level},
        {"gold", gold},
        {"skips", 2},
        {"points", level * 3},
        {"round",
         {{"previousRound", false},
          {"travelRound", 0},
          {"travelLevel", 0},
          {"flyOverPassed", true},
          {"flipImagePassed", false}}},
        {"rewardedLevels", json::array{3, 7}},
        {"stats",
         {{"creditsUsed", 40},
          {"skipsUsed", 1},
          {"exchangeSent", 0},
          {"exchangeReceived", 0},
          {"wins", 2},
          {"draws", 0},
          {"losses", 1},
          {"battlePoints", -4},
          {"wikipediaRead", 0},
          {"timeTraveled", 0},
          {"flyOverPassed", 1},
          {"activeDays", activeDays},
          {"activeSessions", 3},
          {"levelsShared", 0},
          {"dailyLevels",
           json::array{json::object{{"day", 1}, {"date", "2026-11-20T10:00:00Z"}, {"value", 4}}}},
          {"dailyRanks", json::array{}}}},
        {"achievements", std::move(achievements)},
    };
}

} // namespace tarvolin::testing
