#include "net/server.h"
#include "net/event_messages.h"

#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/json.hpp>

#include <deque>
#include <sys/resource.h>

namespace tarvolin::net {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace websocket = beast::websocket;
namespace json = boost::json;
using tcp = asio::ip::tcp;

bool apiRequest(http::request<http::string_body>&& req, std::string remote, Request& out) {
    out.method = std::string(req.method_string());
    std::string_view target = req.target();
    std::size_t q = target.find('?');
    out.path = std::string(target.substr(0, q));
    out.authorization = std::string(req[http::field::authorization]);
    out.remote = std::move(remote);
    auto query = parseQuery(q == std::string_view::npos ? std::string_view{} : target.substr(q + 1));
    out.body = std::move(req.body());
    if (!query) {
        return false;
    }
    out.query = std::move(*query);
    return true;
}

namespace {

constexpr std::size_t kEventBatch = 100;

http::response<http::string_body> toHttp(const Response& r, bool head, unsigned version, bool keepAlive) {
    http::response<http::string_body> res{static_cast<http::status>(r.status), version};
    res.set(http::field::server, "tarvolin-service");
    res.set(http::field::date, httpDate(std::chrono::duration_cast<std::chrono::seconds>(
                                            std::chrono::system_clock::now().time_since_epoch())
                                            .count()));
    if (!r.contentType.empty()) {
        res.set(http::field::content_type, r.contentType);
    }
    if (r.contentType.starts_with("application/json")) {
        res.set(http::field::cache_control, "no-store");
    }
    for (const auto& [k, v] : r.headers) {
        res.set(k, v);
    }
    res.keep_alive(keepAlive);
    if (head) {
        res.content_length(r.body.size());
    } else {
        res.body() = r.body;
        res.prepare_payload();
    }
    return res;
}

// The client's address as the limits count it: an IPv4 client on an IPv6 socket counts as its IPv4 address.
std::string addressOf(const tcp::socket& socket) {
    beast::error_code ec;
    auto ep = socket.remote_endpoint(ec);
    if (ec) {
        return "unknown";
    }
    auto a = ep.address();
    if (a.is_v6() && a.to_v6().is_v4_mapped()) {
        return asio::ip::make_address_v4(asio::ip::v4_mapped, a.to_v6()).to_string();
    }
    return a.to_string();
}

Response jsonError(unsigned status, const std::string& code, const std::string& message) {
    Response r;
    r.status = status;
    r.body = json::serialize(json::object{{"error", json::object{{"code", code}, {"message", message}}}});
    return r;
}

} // namespace

std::pair<std::uint64_t, std::uint64_t> raiseOpenFileLimit() {
    rlimit r{};
    if (getrlimit(RLIMIT_NOFILE, &r) != 0) {
        return {0, 0};
    }
    if (r.rlim_cur < r.rlim_max) {
        rlimit wanted = r;
        wanted.rlim_cur = r.rlim_max;
        if (setrlimit(RLIMIT_NOFILE, &wanted) == 0) {
            r = wanted;
        }
    }
    return {r.rlim_cur, r.rlim_max};
}

// One event WebSocket of a logged-in player. Sends what waits in storage, in order, and drops what the
// client acknowledges.
class WsSession : public std::enable_shared_from_this<WsSession>,
                  public Stoppable,
                  public LiveEndpoint,
                  private EventPeer {
public:
    WsSession(tcp::socket&& socket, Server& server, std::unique_ptr<ConnectionSlot> slot,
              std::string playerId, std::string tokenKey)
        : ws_(std::move(socket)), server_(server), slot_(std::move(slot)), playerId_(std::move(playerId)),
          tokenKey_(std::move(tokenKey)), messages_(server, playerId_, *this, this) {}

    ~WsSession() override {
        server_.untrack(this);
        if (open_) {
            server_.unsubscribe(playerId_, this);
            server_.metrics().websocketClosed();
        }
    }

    void run(http::request<http::string_body> req) {
        server_.track(this, weak_from_this());
        // Pinged after half the timeout without a word from the client, closed after the whole.
        websocket::stream_base::timeout timeouts{};
        timeouts.handshake_timeout = std::chrono::seconds(30);
        timeouts.idle_timeout = server_.config().websocketTimeout;
        timeouts.keep_alive_pings = true;
        ws_.set_option(timeouts);
        ws_.set_option(websocket::stream_base::decorator(
            [](websocket::response_type& res) { res.set(http::field::server, "tarvolin-service"); }));
        // Room for the largest piece of live data in base64 and its JSON.
        ws_.read_message_max(8192);
        ws_.async_accept(req, beast::bind_front_handler(&WsSession::onAccept, shared_from_this()));
    }

    void wake() {
        asio::dispatch(ws_.get_executor(), [self = shared_from_this()] { self->deliver(); });
    }

    void sendLiveText(std::string text) override {
        asio::post(ws_.get_executor(), [self = shared_from_this(), text = std::move(text)]() mutable {
            self->send(std::move(text));
        });
    }

    void stop() override {
        asio::post(ws_.get_executor(), [self = shared_from_this()] {
            if (self->closing_ || !self->open_) {
                return;
            }
            self->closing_ = true;
            self->ws_.async_close(websocket::close_code::going_away, [self](beast::error_code) {});
        });
    }

private:
    void onAccept(beast::error_code ec) {
        if (ec) {
            return;
        }
        open_ = true;
        server_.metrics().websocketOpened();
        server_.subscribe(playerId_, this, weak_from_this());
        server_.log().log(LogLevel::Debug, "websocket opened", {{"player", playerId_}});
        deliver();
        read();
    }

    // Ends the socket of a token that has been logged out or has expired.
    bool stillAuthorized() override {
        if (server_.api().tokenValid(tokenKey_, playerId_)) {
            return true;
        }
        closing_ = true;
        ws_.async_close(websocket::close_reason(websocket::close_code::policy_error, "token no longer valid"),
                        [self = shared_from_this()](beast::error_code) {});
        return false;
    }

    void deliver() {
        if (closing_) {
            return;
        }
        std::vector<store::Event> events;
        try {
            if (!stillAuthorized()) {
                return;
            }
            events = server_.api().store().pendingEvents(playerId_, messages_.sentSeq(), kEventBatch);
        } catch (const std::exception& e) {
            server_.log().log(LogLevel::Error, "cannot read events",
                              {{"player", playerId_}, {"error", e.what()}});
            return;
        }
        for (const auto& e : events) {
            json::error_code jec;
            json::value data = json::parse(e.payload, jec);
            send(json::serialize(json::object{{"type", "event"},
                                              {"seq", e.seq},
                                              {"event", e.kind},
                                              {"createdAt", e.createdAt},
                                              {"data", jec ? json::value(nullptr) : std::move(data)}}));
            messages_.setSentSeq(e.seq);
        }
        if (events.size() == kEventBatch) {
            asio::post(ws_.get_executor(), [self = shared_from_this()] { self->deliver(); });
        }
    }

    void read() {
        ws_.async_read(buffer_, beast::bind_front_handler(&WsSession::onRead, shared_from_this()));
    }

    void onRead(beast::error_code ec, std::size_t) {
        if (ec) {
            // Closed, timed out or failed: the player leaves his live matches, and the session ends with its
            // last handler.
            if (ec == beast::error::timeout) {
                server_.api().limitMetrics().bit(LimitMetrics::Limit::WebSocketTimeout);
                server_.log().log(LogLevel::Info, "websocket timed out",
                                  {{"player", playerId_}, {"remote", slot_ ? slot_->address() : ""}});
            }
            messages_.leaveLiveMatches();
            return;
        }
        std::string text = beast::buffers_to_string(buffer_.data());
        buffer_.consume(buffer_.size());
        messages_.handle(text);
        read();
    }

    std::weak_ptr<LiveEndpoint> liveEndpoint() override {
        return std::weak_ptr<LiveEndpoint>(shared_from_this());
    }

    void send(std::string msg) override {
        queue_.push_back(std::move(msg));
        if (queue_.size() == 1) {
            write();
        }
    }

    void write() {
        ws_.text(true);
        ws_.async_write(asio::buffer(queue_.front()),
                        [self = shared_from_this()](beast::error_code ec, std::size_t) {
                            if (ec) {
                                return;
                            }
                            self->queue_.pop_front();
                            if (!self->queue_.empty()) {
                                self->write();
                            }
                        });
    }

    websocket::stream<beast::tcp_stream> ws_;
    Server& server_;
    std::unique_ptr<ConnectionSlot> slot_;
    std::string playerId_;
    std::string tokenKey_;
    beast::flat_buffer buffer_;
    std::deque<std::string> queue_;
    EventMessages messages_;
    bool open_ = false;
    bool closing_ = false;
};

// One HTTP connection: reads requests one after the other and answers each.
class HttpSession : public std::enable_shared_from_this<HttpSession>, public Stoppable {
public:
    HttpSession(tcp::socket&& socket, Server& server, std::unique_ptr<ConnectionSlot> slot)
        : stream_(std::move(socket)), server_(server), slot_(std::move(slot)), remote_(slot_->address()) {}

    ~HttpSession() override { server_.untrack(this); }

    void run() {
        server_.track(this, weak_from_this());
        asio::dispatch(stream_.get_executor(),
                       beast::bind_front_handler(&HttpSession::read, shared_from_this()));
    }

    void stop() override {
        asio::post(stream_.get_executor(), [self = shared_from_this()] {
            self->stopping_ = true;
            if (!self->busy_) {
                self->close();
            }
        });
    }

private:
    void read() {
        if (stopping_) {
            return close();
        }
        parser_.emplace();
        parser_->body_limit(server_.config().maxBodyBytes);
        parser_->header_limit(16 * 1024);
        if (buffer_.size() > 0) {
            return readHeader();
        }
        // Idle between requests: the next one may take its time to begin.
        stream_.expires_after(server_.config().idleTimeout);
        stream_.async_read_some(buffer_.prepare(4096),
                                [self = shared_from_this()](beast::error_code ec, std::size_t n) {
                                    self->buffer_.commit(n);
                                    if (ec || self->stopping_) {
                                        return self->close();
                                    }
                                    self->readHeader();
                                });
    }

    // The request has begun: its headers have headerTimeout in all, however slowly the bytes come.
    void readHeader() {
        stream_.expires_after(server_.config().headerTimeout);
        http::async_read_header(stream_, buffer_, *parser_,
                                beast::bind_front_handler(&HttpSession::onHeader, shared_from_this()));
    }

    void onHeader(beast::error_code ec, std::size_t n) {
        if (ec == beast::error::timeout) {
            server_.api().limitMetrics().bit(LimitMetrics::Limit::HeaderTimeout);
            server_.log().log(LogLevel::Debug, "request headers timed out", {{"remote", remote_}});
            return close();
        }
        if (ec || parser_->is_done()) {
            return onRead(ec, n);
        }
        stream_.expires_after(server_.config().idleTimeout);
        http::async_read(stream_, buffer_, *parser_,
                         beast::bind_front_handler(&HttpSession::onRead, shared_from_this()));
    }

    void onRead(beast::error_code ec, std::size_t) {
        if (ec == http::error::end_of_stream || ec == beast::error::timeout ||
            ec == asio::error::operation_aborted) {
            return close();
        }
        if (ec == http::error::body_limit) {
            busy_ = true;
            return reply(jsonError(413, "body_too_large",
                                   "the body is larger than " +
                                       std::to_string(server_.config().maxBodyBytes) + " bytes"),
                         false, 11, false);
        }
        if (ec == http::error::header_limit) {
            busy_ = true;
            return reply(jsonError(431, "headers_too_large", "the request headers are too large"), false, 11,
                         false);
        }
        if (ec) {
            if (ec.category() == beast::error_code(http::error::bad_target).category()) {
                busy_ = true;
                return reply(jsonError(400, "bad_request", "the request is not valid HTTP/1.1"), false, 11,
                             false);
            }
            return close();
        }
        busy_ = true;
        http::request<http::string_body> req = parser_->release();
        if (server_.log().enabled(LogLevel::Debug)) {
            server_.log().log(LogLevel::Debug, "request read",
                              {{"method", std::string(req.method_string())}, {"remote", remote_}});
        }
        if (websocket::is_upgrade(req)) {
            return upgrade(std::move(req));
        }
        auto started = std::chrono::steady_clock::now();
        const unsigned version = req.version();
        const bool keepAlive = req.keep_alive();
        auto r = std::make_shared<Request>();
        const bool wellFormed = apiRequest(std::move(req), remote_, *r);
        auto answer = [self = shared_from_this(), r, started, version, keepAlive](Response res) {
            // Most answers come on this connection's own strand at once; a score report's comes from the
            // thread that committed it.
            asio::dispatch(self->stream_.get_executor(),
                           [self, r, started, version, keepAlive, res = std::move(res)]() mutable {
                               self->answered(*r, std::move(res), started, version, keepAlive);
                           });
        };
        if (!wellFormed) {
            answer(jsonError(400, "invalid_query", "the query string has a malformed escape"));
        } else if (r->path == "/metrics" && (r->method == "GET" || r->method == "HEAD")) {
            Response res;
            res.contentType = "text/plain; version=0.0.4";
            res.body = server_.metrics().render(
                "# HELP tarvolin_leaderboard_players Players with a "
                "score.\n# TYPE tarvolin_leaderboard_players gauge\n"
                "tarvolin_leaderboard_players " +
                std::to_string(server_.api().leaderboardSize()) + "\n" + server_.api().reportMetrics() +
                server_.api().commerceMetrics().render() + server_.api().limitMetrics().render());
            res.route = "/metrics";
            answer(std::move(res));
        } else {
            server_.api().handle(*r, std::move(answer));
        }
    }

    void answered(const Request& r, Response res, std::chrono::steady_clock::time_point started,
                  unsigned version, bool keepAlive) {
        double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        server_.metrics().recordRequest(res.route, r.method, res.status, secs);
        if (server_.log().enabled(LogLevel::Info)) {
            server_.log().log(LogLevel::Info, "request",
                              {{"method", r.method},
                               {"path", r.path},
                               {"route", res.route},
                               {"status", res.status},
                               {"us", static_cast<std::int64_t>(secs * 1e6)},
                               {"remote", remote_},
                               {"player", res.playerId}});
        }
        reply(res, r.method == "HEAD", version, keepAlive);
    }

    void upgrade(http::request<http::string_body> req) {
        auto started = std::chrono::steady_clock::now();
        std::string_view target = req.target();
        std::size_t q = target.find('?');
        std::string path(target.substr(0, q));
        Response refusal;
        std::optional<std::string> player;
        std::string credentials;
        if (path != "/v1/events") {
            refusal = jsonError(404, "not_found", "WebSockets are served at /v1/events");
        } else if (server_.stopping()) {
            refusal = jsonError(503, "shutting_down", "the service is shutting down");
        } else if (std::int64_t wait = server_.handshakeWait(remote_)) {
            server_.api().limitMetrics().bit(LimitMetrics::Limit::Handshakes);
            refusal = jsonError(429, "rate_limited", "too many WebSocket handshakes from this address");
            refusal.headers.emplace_back("Retry-After", std::to_string((wait + 999) / 1000));
        } else {
            credentials = std::string(req[http::field::authorization]);
            if (credentials.empty() && q != std::string_view::npos) {
                if (auto query = parseQuery(target.substr(q + 1)); query && query->contains("access_token")) {
                    credentials = query->at("access_token");
                }
            }
            try {
                player = server_.api().authenticate(credentials);
                if (!player) {
                    refusal = jsonError(401, "unauthorized", "a valid bearer token is required");
                }
            } catch (const std::exception&) {
                refusal = jsonError(503, "storage_unavailable", "the database cannot be reached");
            }
        }
        unsigned status = player ? 101 : refusal.status;
        std::string route = path == "/v1/events" ? path : "unmatched";
        double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
        server_.metrics().recordRequest(route, "GET", status, secs);
        if (server_.log().enabled(LogLevel::Info)) {
            server_.log().log(LogLevel::Info, "request",
                              {{"method", "GET"},
                               {"path", path},
                               {"route", route},
                               {"status", status},
                               {"us", static_cast<std::int64_t>(secs * 1e6)},
                               {"remote", remote_},
                               {"player", player.value_or("")},
                               {"upgrade", "websocket"}});
        }
        if (!player) {
            return reply(refusal, false, req.version(), false);
        }
        stream_.expires_never();
        std::make_shared<WsSession>(stream_.release_socket(), server_, std::move(slot_), *player,
                                    Api::tokenKey(credentials))
            ->run(std::move(req));
    }

    void reply(const Response& r, bool head, unsigned version, bool keepAlive) {
        auto res = std::make_shared<http::response<http::string_body>>(
            toHttp(r, head, version, keepAlive && !stopping_ && !server_.stopping()));
        bool close = !res->keep_alive();
        stream_.expires_after(server_.config().idleTimeout);
        http::async_write(stream_, *res,
                          [self = shared_from_this(), res, close](beast::error_code ec, std::size_t) {
                              self->busy_ = false;
                              if (ec || close) {
                                  return self->close();
                              }
                              self->read();
                          });
    }

    void close() {
        beast::error_code ec;
        stream_.socket().shutdown(tcp::socket::shutdown_both, ec);
        stream_.socket().close(ec);
    }

    beast::tcp_stream stream_;
    Server& server_;
    std::unique_ptr<ConnectionSlot> slot_; // moves to the WebSocket on an upgrade
    beast::flat_buffer buffer_;
    std::optional<http::request_parser<http::string_body>> parser_;
    std::string remote_;
    bool busy_ = false;
    bool stopping_ = false;
};

Server::Server(Api& api, ServerConfig config, Logger& log)
    : api_(api), config_(std::move(config)), log_(log),
      handshakes_(config_.handshakesPerMinute / 60.0, std::max(1, config_.handshakeBurst)),
      acceptor_(asio::make_strand(io_)), acceptRetry_(acceptor_.get_executor()),
      sweepTimer_(asio::make_strand(io_)) {
    api_.setEventListener(this);
}

Server::~Server() {
    api_.setEventListener(nullptr);
    if (!threads_.empty()) {
        shutdown();
        wait();
    }
}

unsigned short Server::start() {
    tcp::endpoint ep(asio::ip::make_address(config_.address), config_.port);
    acceptor_.open(ep.protocol());
    acceptor_.set_option(asio::socket_base::reuse_address(true));
    acceptor_.bind(ep);
    acceptor_.listen(asio::socket_base::max_listen_connections);
    unsigned short port = acceptor_.local_endpoint().port();
    // Every context is there before the first accept hands connections out among them.
    const int n = std::max(1, config_.threads);
    keepRunning_.push_back(asio::make_work_guard(io_));
    for (int i = 1; i < n; ++i) {
        keepRunning_.push_back(
            asio::make_work_guard(*moreIo_.emplace_back(std::make_unique<asio::io_context>(1))));
    }
    accept();
    if (config_.turnSweep.count() > 0) {
        sweepTurns();
    }
    threads_.emplace_back([this] { serve(io_); });
    for (auto& io : moreIo_) {
        threads_.emplace_back([this, &io = *io] { serve(io); });
    }
    return port;
}

void Server::serve(asio::io_context& io) {
    if (config_.busyPoll.count() <= 0) {
        io.run();
        return;
    }
    using Clock = std::chrono::steady_clock;
    while (!io.stopped()) {
        // Sleeps until something is to be done, and does it.
        io.run_one();
        // Then looks again without sleeping (each look is one epoll_wait that returns at once) until
        // nothing has come for the busy-poll time.
        auto last = Clock::now();
        while (!io.stopped()) {
            if (io.poll() > 0) {
                last = Clock::now();
            } else if (Clock::now() - last >= config_.busyPoll) {
                break;
            } else {
                // Whatever else wants this processor (the thread that will send the request, on a small
                // machine) goes first.
                std::this_thread::yield();
            }
        }
    }
}

void Server::accept() {
    // The connections take the serving threads in turn.
    const std::size_t turn = nextIo_++ % (moreIo_.size() + 1);
    asio::io_context& io = turn == 0 ? io_ : *moreIo_[turn - 1];
    acceptor_.async_accept(asio::make_strand(io), [this](beast::error_code ec, tcp::socket socket) {
        if (stopping_ || !acceptor_.is_open()) {
            return;
        }
        if (!ec) {
            std::string address = addressOf(socket);
            if (auto slot = admit(address)) {
                std::make_shared<HttpSession>(std::move(socket), *this, std::move(slot))->run();
            } else {
                refuse(socket, address);
            }
            accept();
            return;
        }
        // Out of descriptors, say: the waiting connection stays in the backlog, so an accept at once would
        // fail again at once. Pause, and say so once a second at most.
        const auto now = std::chrono::steady_clock::now();
        ++acceptFailures_;
        if (now - lastAcceptWarning_ >= std::chrono::seconds(1)) {
            log_.log(LogLevel::Warn, "accept failed",
                     {{"error", ec.message()}, {"failures", static_cast<std::int64_t>(acceptFailures_)}});
            lastAcceptWarning_ = now;
            acceptFailures_ = 0;
        }
        acceptRetry_.expires_after(kAcceptRetry);
        acceptRetry_.async_wait([this](beast::error_code waited) {
            if (!waited && !stopping_) {
                accept();
            }
        });
    });
}

ConnectionSlot::~ConnectionSlot() {
    server_->release(address_);
}

std::unique_ptr<ConnectionSlot> Server::admit(const std::string& address) {
    std::lock_guard lock(addressMutex_);
    int& n = perAddress_[address];
    if (config_.connectionsPerAddress > 0 && n >= config_.connectionsPerAddress) {
        return nullptr;
    }
    ++n;
    return std::make_unique<ConnectionSlot>(*this, address);
}

void Server::release(const std::string& address) {
    std::lock_guard lock(addressMutex_);
    auto it = perAddress_.find(address);
    if (it != perAddress_.end() && --it->second <= 0) {
        perAddress_.erase(it);
    }
}

int Server::openConnections(const std::string& address) {
    std::lock_guard lock(addressMutex_);
    auto it = perAddress_.find(address);
    return it == perAddress_.end() ? 0 : it->second;
}

std::int64_t Server::handshakeWait(const std::string& address) {
    return handshakes_.take(address, api_.now());
}

// On the acceptor's strand: the connection of an address over its limit gets a short answer, written without
// waiting (a new socket's send buffer is empty), and is closed.
void Server::refuse(tcp::socket& socket, const std::string& address) {
    api_.limitMetrics().bit(LimitMetrics::Limit::Connections);
    beast::error_code ec;
    static const std::string kBody =
        R"({"error":{"code":"too_many_connections","message":"this address has too many open connections"}})";
    static const std::string kReply =
        "HTTP/1.1 503 Service Unavailable\r\nServer: tarvolin-service\r\n"
        "Content-Type: application/json\r\nRetry-After: 1\r\nConnection: close\r\n"
        "Content-Length: " +
        std::to_string(kBody.size()) + "\r\n\r\n" + kBody;
    socket.non_blocking(true, ec);
    if (!ec) {
        socket.write_some(asio::buffer(kReply), ec);
    }
    socket.shutdown(tcp::socket::shutdown_both, ec);
    socket.close(ec);
    const auto now = std::chrono::steady_clock::now();
    ++refusals_;
    if (now - lastRefusalWarning_ >= std::chrono::seconds(1)) {
        log_.log(LogLevel::Warn, "too many connections from an address",
                 {{"remote", address},
                  {"limit", config_.connectionsPerAddress},
                  {"refused", static_cast<std::int64_t>(refusals_)}});
        lastRefusalWarning_ = now;
        refusals_ = 0;
    }
}

void Server::sweepTurns() {
    sweepTimer_.expires_after(config_.turnSweep);
    sweepTimer_.async_wait([this](beast::error_code ec) {
        if (ec || stopping_) {
            return;
        }
        try {
            if (std::size_t moved = api_.expireDueTurns()) {
                log_.log(LogLevel::Info, "turns timed out", {{"count", std::to_string(moved)}});
            }
            if (std::size_t ended = api_.expireLiveMatches()) {
                log_.log(LogLevel::Info, "stale live matches ended", {{"count", std::to_string(ended)}});
            }
        } catch (const std::exception& e) {
            log_.log(LogLevel::Warn, "turn sweep failed", {{"error", e.what()}});
        }
        sweepTurns();
    });
}

void Server::shutdown() {
    if (stopping_.exchange(true)) {
        return;
    }
    asio::post(io_, [this] { sweepTimer_.cancel(); });
    asio::post(acceptor_.get_executor(), [this] {
        beast::error_code ec;
        acceptRetry_.cancel();
        acceptor_.close(ec);
    });
    std::vector<std::shared_ptr<Stoppable>> live;
    {
        std::lock_guard lock(mutex_);
        for (auto& [p, w] : sessions_) {
            if (auto s = w.lock()) {
                live.push_back(std::move(s));
            }
        }
    }
    for (auto& s : live) {
        s->stop();
    }
}

void Server::wait() {
    auto deadline = std::chrono::steady_clock::now() + config_.shutdownGrace;
    for (;;) {
        {
            std::lock_guard lock(mutex_);
            if (sessions_.empty()) {
                break;
            }
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            log_.log(LogLevel::Warn, "grace period over; closing the remaining connections");
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    // Score reports still on their way to the disk are answered before the threads that write the answers
    // end.
    api_.finishReports();
    keepRunning_.clear();
    io_.stop();
    for (auto& io : moreIo_) {
        io->stop();
    }
    for (auto& t : threads_) {
        t.join();
    }
    threads_.clear();
}

void Server::eventsAdded(const std::string& playerId) {
    std::vector<std::shared_ptr<WsSession>> targets;
    {
        std::lock_guard lock(mutex_);
        auto it = subscribers_.find(playerId);
        if (it == subscribers_.end()) {
            return;
        }
        for (auto& [p, w] : it->second) {
            if (auto s = w.lock()) {
                targets.push_back(std::move(s));
            }
        }
    }
    for (auto& s : targets) {
        s->wake();
    }
}

bool Server::liveMessage(const std::string& playerId, const std::string& matchId, const std::string& text) {
    switch (relay_.deliver(playerId, matchId, text)) {
    case LiveRelay::Delivery::Taken:
    case LiveRelay::Delivery::Gone:
        return true;
    case LiveRelay::Delivery::NotBound:
        break;
    }
    // Data goes only to a connection of the match; news of a match not yet connected to goes to every
    // connection of the player here.
    if (text.starts_with(R"({"type":"live_data")")) {
        return false;
    }
    std::vector<std::shared_ptr<WsSession>> targets;
    {
        std::lock_guard lock(mutex_);
        if (auto it = subscribers_.find(playerId); it != subscribers_.end()) {
            for (auto& [p, w] : it->second) {
                if (auto s = w.lock()) {
                    targets.push_back(std::move(s));
                }
            }
        }
    }
    for (auto& s : targets) {
        s->sendLiveText(text);
    }
    return !targets.empty();
}

bool Server::allowLiveMessage(const std::string& playerId) {
    return liveMessages_.allow(playerId, api_.now());
}

void Server::track(Stoppable* s, std::weak_ptr<Stoppable> w) {
    std::lock_guard lock(mutex_);
    sessions_[s] = std::move(w);
    if (stopping_) {
        if (auto p = sessions_[s].lock()) {
            asio::post(io_, [p] { p->stop(); });
        }
    }
}

void Server::untrack(Stoppable* s) {
    std::lock_guard lock(mutex_);
    sessions_.erase(s);
}

void Server::subscribe(const std::string& playerId, WsSession* s, std::weak_ptr<WsSession> w) {
    std::lock_guard lock(mutex_);
    subscribers_[playerId][s] = std::move(w);
}

void Server::unsubscribe(const std::string& playerId, WsSession* s) {
    std::lock_guard lock(mutex_);
    auto it = subscribers_.find(playerId);
    if (it != subscribers_.end()) {
        it->second.erase(s);
        if (it->second.empty()) {
            subscribers_.erase(it);
        }
    }
}

} // namespace tarvolin::net
