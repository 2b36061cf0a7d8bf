// The network side: one port for HTTP/1.1 with keep-alive and for the event WebSockets.
#pragma once

#include "net/api.h"
#include "net/live_relay.h"
#include "net/log.h"
#include "net/metrics.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/http/string_body.hpp>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tarvolin::net {

// Every connection holds a descriptor: raises this process's soft limit on open files to the hard one, and
// returns both after the change (0 and 0 when they cannot be read).
std::pair<std::uint64_t, std::uint64_t> raiseOpenFileLimit();

// What the API sees of an HTTP request from this address: method, path, query, body and credentials. False
// when the query string has a malformed escape; the method and the path are filled in all the same.
bool apiRequest(boost::beast::http::request<boost::beast::http::string_body>&& req, std::string remote,
                Request& out);

struct ServerConfig {
    std::string address = "0.0.0.0";
    unsigned short port = 8470; // the game's own default; 0 picks a free port
    int threads = 2;
    // A serving thread that has just answered keeps looking for the next request this long before it
    // sleeps: a request that comes soon after is not held up by the thread's waking. 0: sleep at once.
    std::chrono::microseconds busyPoll{50};
    // Room for 64 KiB of match data in base64 and its JSON.
    std::size_t maxBodyBytes = 128 * 1024;
    // A keep-alive connection may wait this long for its next request; a request's body and a response's
    // write have as long again.
    std::chrono::seconds idleTimeout{60};
    // From the first byte of a request, its headers must be complete within this time, however the bytes
    // trickle in.
    std::chrono::seconds headerTimeout{10};
    // An event WebSocket silent for half of this is pinged, and closed when nothing has come by the end.
    std::chrono::seconds websocketTimeout{120};
    // Connections one address may hold open at once; 0: no limit.
    int connectionsPerAddress = 64;
    // WebSocket handshakes of one address: a burst, then a pace per minute (0: no limit).
    int handshakesPerMinute = 30;
    int handshakeBurst = 10;
    std::chrono::seconds shutdownGrace{10};
    // How often turns that have run out are moved on; 0 leaves it to the caller (tests).
    std::chrono::milliseconds turnSweep{1000};
};

// Something the server can ask to finish: an HTTP session or a WebSocket.
class Stoppable {
public:
    virtual ~Stoppable() = default;
    virtual void stop() = 0;
};

class WsSession;
class Server;

// One open connection counted for its address, released when the slot ends (the session that holds it does).
class ConnectionSlot {
public:
    ConnectionSlot(Server& server, std::string address) : server_(&server), address_(std::move(address)) {}
    ConnectionSlot(const ConnectionSlot&) = delete;
    ConnectionSlot& operator=(const ConnectionSlot&) = delete;
    ~ConnectionSlot();
    const std::string& address() const { return address_; }

private:
    Server* server_;
    std::string address_;
};

class Server : public EventListener {
public:
    Server(Api& api, ServerConfig config, Logger& log);
    ~Server() override;

    // Binds the port and starts the threads; returns the bound port.
    unsigned short start();
    // Stops accepting; requests in flight are answered, idle connections and WebSockets are closed.
    void shutdown();
    // Waits until every connection has ended or the grace period has passed, then stops the threads.
    void wait();

    void eventsAdded(const std::string& playerId) override;
    bool liveMessage(const std::string& playerId, const std::string& matchId,
                     const std::string& text) override;

    Api& api() { return api_; }
    Metrics& metrics() { return metrics_; }
    Logger& log() { return log_; }
    LiveRelay& relay() { return relay_; }
    // Live data a player may send: a burst, then a steady pace.
    bool allowLiveMessage(const std::string& playerId);
    const ServerConfig& config() const { return config_; }
    bool stopping() const { return stopping_; }

    // Session bookkeeping, used by the sessions themselves.
    void track(Stoppable* s, std::weak_ptr<Stoppable> w);
    void untrack(Stoppable* s);
    void subscribe(const std::string& playerId, WsSession* s, std::weak_ptr<WsSession> w);
    void unsubscribe(const std::string& playerId, WsSession* s);
    // Counts a new connection of the address; nothing when the address holds its most already.
    std::unique_ptr<ConnectionSlot> admit(const std::string& address);
    // Connections open now for an address.
    int openConnections(const std::string& address);
    // Takes a WebSocket handshake of the address: 0 when allowed, else the milliseconds to wait.
    std::int64_t handshakeWait(const std::string& address);

private:
    friend class ConnectionSlot;
    void release(const std::string& address);
    void refuse(boost::asio::ip::tcp::socket& socket, const std::string& address);
    void accept();
    void sweepTurns();
    // Runs one serving thread's io_context until it is stopped, looking for work for config_.busyPoll
    // after each piece of it before sleeping.
    void serve(boost::asio::io_context& io);

    Api& api_;
    ServerConfig config_;
    Logger& log_;
    // Sessions left after the grace period die with io_ and still reach these: they are declared before it.
    Metrics metrics_;
    std::mutex mutex_;
    std::unordered_map<Stoppable*, std::weak_ptr<Stoppable>> sessions_;
    std::unordered_map<std::string, std::unordered_map<WsSession*, std::weak_ptr<WsSession>>> subscribers_;
    std::atomic<bool> stopping_{false};
    LiveRelay relay_;
    logic::RequestLimiter liveMessages_{logic::live::kMessagesPerSecond, logic::live::kMessageBurst};
    logic::RequestLimiter handshakes_;
    // Open connections by address; declared before io_ like the metrics, for the sessions that outlive it.
    std::mutex addressMutex_;
    std::unordered_map<std::string, int> perAddress_;
    std::chrono::steady_clock::time_point lastRefusalWarning_{};
    std::uint64_t refusals_ = 0;

    // Each serving thread runs an io_context of its own, and a connection stays on the one it was accepted
    // to: a request is read, answered and written by one thread, with no hand-over between threads. io_ is
    // the first of them; it also holds the acceptor and the timers. An accept under way on io_ holds a
    // socket of the context it was meant for, so the others are declared first and outlive io_.
    std::vector<std::unique_ptr<boost::asio::io_context>> moreIo_;
    boost::asio::io_context io_{1};
    std::vector<boost::asio::executor_work_guard<boost::asio::io_context::executor_type>> keepRunning_;
    std::size_t nextIo_ = 0; // on the acceptor's strand
    boost::asio::ip::tcp::acceptor acceptor_;
    // After a failed accept the next one waits a little (on the acceptor's strand).
    static constexpr std::chrono::milliseconds kAcceptRetry{100};
    boost::asio::steady_timer acceptRetry_;
    std::chrono::steady_clock::time_point lastAcceptWarning_{};
    std::uint64_t acceptFailures_ = 0;
    boost::asio::steady_timer sweepTimer_;
    std::vector<std::thread> threads_;
};

} // namespace tarvolin::net
