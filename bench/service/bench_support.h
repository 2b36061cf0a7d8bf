// Shared pieces of the match and event benchmarks of tarvolin-service: a database of its own for each run,
// filled straight through the store; the service binary as a child process on loopback; asynchronous HTTP
// and event WebSocket clients on one io_context; and the load of turns that the match benchmarks drive.
#pragma once

#include "net/server.h"
#include "store/store.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket/stream.hpp>
#include <boost/json.hpp>

#include <array>
#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace tarvolin::bench {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace json = boost::json;
using tcp = asio::ip::tcp;
using Clock = std::chrono::steady_clock;

// Milliseconds since the epoch, by the system clock.
std::int64_t systemMs();
// `digits` random lowercase hexadecimal digits.
std::string randomHex(std::mt19937_64& rng, std::size_t digits);
double msBetween(Clock::time_point from, Clock::time_point to);
double secondsSince(Clock::time_point t);

// Latencies in milliseconds and their percentiles.
class Samples {
public:
    void add(double ms) {
        values_.push_back(ms);
        sorted_ = false;
    }
    std::size_t size() const { return values_.size(); }
    // p from 0 to 1; the nearest rank.
    double percentile(double p) const;
    double max() const { return values_.empty() ? 0.0 : percentile(1.0); }
    // "n 1234  p50 1.23 ms  p90 …  p99 …  p99.9 …  max …"
    std::string summary() const;

private:
    mutable std::vector<double> values_;
    mutable bool sorted_ = true;
};

using net::raiseOpenFileLimit;
// Raises this process's open-file limit and prints both limits; returns the soft one.
std::uint64_t raiseAndPrintOpenFileLimit();
// The soft and hard limits on open files of another process, from /proc/PID/limits.
std::pair<std::uint64_t, std::uint64_t> openFileLimitsOf(pid_t pid);

struct Memory {
    long residentKiB = 0; // VmRSS
    long peakKiB = 0;     // VmHWM
};
// The memory of a process from /proc/PID/status; pid 0 reads this process.
Memory memoryOf(pid_t pid);
double mib(long kib);

// CPU time a process has used so far, user and system, in seconds; pid 0 reads this process.
double cpuSecondsOf(pid_t pid);

// CPU use over a stretch of time, of some processes and of the whole machine: on a machine shared with
// other work, it tells a slow figure of the service from a busy machine.
class CpuWatch {
public:
    // Starts the stretch now; each process has a name for the report.
    explicit CpuWatch(std::vector<std::pair<std::string, pid_t>> processes);
    // "service 41% of a core, this client 7% of a core; the machine 66% busy of 2 cores"
    std::string report() const;

private:
    struct MachineTime {
        double busy = 0;
        double total = 0;
    };
    static MachineTime machineTime();

    std::vector<std::pair<std::string, pid_t>> processes_;
    std::vector<double> startCpu_;
    MachineTime startMachine_;
    Clock::time_point start_;
};

// A player of the benchmark: stored with a token, no password.
struct BenchPlayer {
    std::string id;
    std::string token;
};

// A database of its own for one run: a new SQLite file in a new temporary folder, or a new schema in the
// PostgreSQL database that a postgresql:// URL names. Removed when the object goes.
class BenchDatabase {
public:
    // location: empty for SQLite in the temporary folder, or a postgresql:// URL.
    explicit BenchDatabase(const std::string& location);
    ~BenchDatabase();
    BenchDatabase(const BenchDatabase&) = delete;
    BenchDatabase& operator=(const BenchDatabase&) = delete;

    bool postgres() const { return !schema_.empty(); }
    // What the service takes as --database: the SQLite path, or the URL with the schema as search path.
    const std::string& serviceLocation() const { return serviceLocation_; }
    std::string describe() const;
    const std::filesystem::path& folder() const { return dir_; }

    // The migrated store of this database.
    std::unique_ptr<store::Store> open();
    // Stores n players with a token each straight through the store, many to a transaction, so that no
    // password is hashed and no sign-up is paid for. Identifiers are "B" and 15 digits.
    std::vector<BenchPlayer> fillPlayers(std::size_t n);

private:
    std::string url_;
    std::string schema_;
    std::filesystem::path dir_; // the temporary folder: the SQLite file and the service logs
    std::string serviceLocation_;
};

// The tarvolin-service binary beside this program.
std::string defaultServiceBinary();

// tarvolin-service as a child process on a free loopback port, with --rate-limit 0 and --log-level warn.
// Its log goes to a file; when the service dies early, the end of the log is in the exception.
class ServiceProcess {
public:
    ServiceProcess(const std::string& binary, const std::string& database,
                   const std::filesystem::path& logFile, int threads = 0);
    ~ServiceProcess();
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    pid_t pid() const { return pid_; }
    unsigned short port() const { return port_; }
    tcp::endpoint endpoint() const;
    // SIGTERM, then SIGKILL when it has not ended within the wait; returns the exit status.
    int stop(std::chrono::seconds wait = std::chrono::seconds(30));

private:
    void waitUntilHealthy();
    std::string logTail() const;

    pid_t pid_ = -1;
    unsigned short port_ = 0;
    std::filesystem::path logFile_;
};

// Fills the database with players and says how long it took.
std::vector<BenchPlayer> fillPlayersAndReport(BenchDatabase& db, std::size_t players);
// Starts instances of the service on the database, each logging to a file of its own in the run's folder.
std::vector<std::unique_ptr<ServiceProcess>> startServices(const std::string& binary, const BenchDatabase& db,
                                                           std::size_t instances, int threads);

struct HttpAnswer {
    unsigned status = 0; // 0 when the connection failed
    std::string body;
    std::string error; // the connection's error, when status is 0
};

// One blocking keep-alive HTTP connection, for the steps around the measurements.
class SyncHttp {
public:
    explicit SyncHttp(const tcp::endpoint& ep);
    HttpAnswer call(http::verb verb, const std::string& target, const std::string& token = {},
                    const std::string& body = {});

private:
    asio::io_context io_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
};

// A request for the asynchronous connections. sent is called as its bytes start out, done with the answer.
struct HttpCall {
    http::verb verb = http::verb::get;
    std::string target;
    std::string token;
    std::string body;
    std::function<void(Clock::time_point)> sent;
    std::function<void(const HttpAnswer&, Clock::time_point)> done;
};

class HttpConnection;

// Keep-alive connections to one service instance on the caller's io_context. A call waits in one queue
// until a connection is free, so a figure measured from `sent` leaves out the client's own queue.
class HttpPool {
public:
    HttpPool(asio::io_context& io, tcp::endpoint ep, std::size_t connections);
    ~HttpPool();
    void submit(HttpCall call);
    std::size_t waiting() const { return queue_.size(); }
    std::size_t mostWaiting() const { return mostWaiting_; }

private:
    friend class HttpConnection;
    void idle(const std::shared_ptr<HttpConnection>& c);

    std::deque<HttpCall> queue_;
    std::vector<std::shared_ptr<HttpConnection>> idle_;
    std::vector<std::shared_ptr<HttpConnection>> all_;
    std::size_t mostWaiting_ = 0;
};

// A received event: the player's sequence number, its kind and its data.
struct EventMessage {
    std::int64_t seq = 0;
    std::string kind;
    json::object data;
};

// One event WebSocket of a player, on the caller's io_context. Every event is handed to the handler and
// then acknowledged, as the game does. The socket keeps a read waiting, which also answers the server's
// pings.
class EventSocket : public std::enable_shared_from_this<EventSocket> {
public:
    using Handler = std::function<void(std::size_t player, const EventMessage&, Clock::time_point received)>;

    EventSocket(asio::io_context& io, std::size_t player, std::string token, const Handler* handler);
    // Connects and upgrades; done tells how it went. Events are read from then on.
    void open(const tcp::endpoint& ep, std::function<void(beast::error_code)> done);
    void close();
    bool isOpen() const { return open_; }
    std::size_t player() const { return player_; }
    std::int64_t lastSeq() const { return lastSeq_; }

private:
    void read();
    void send(std::string text);
    void write();

    beast::websocket::stream<tcp::socket> ws_;
    std::size_t player_;
    std::string token_;
    const Handler* handler_;
    beast::flat_buffer buffer_;
    std::deque<std::string> outbox_;
    std::int64_t lastSeq_ = 0;
    bool open_ = false;
};

// Opens the sockets with at most `parallel` handshakes at a time, running io until all are done. Returns
// how many failed; the first failures are printed.
std::size_t openSockets(asio::io_context& io, const std::vector<std::shared_ptr<EventSocket>>& sockets,
                        const std::vector<tcp::endpoint>& endpointOf, std::size_t parallel);

// Runs io until done() holds or the time is up; returns done().
bool runUntil(asio::io_context& io, const std::function<bool()>& done, std::chrono::milliseconds limit);

// A match of the turn load: the players (indexes) in seat 0 and seat 1, and who holds the turn.
struct LoadMatch {
    std::string id;
    std::array<std::size_t, 2> seats{};
    int holder = 0;
    // The turn in flight: when the POST went out, and which of its two ends have come back.
    bool inFlight = false;
    bool answered = false;
    bool delivered = false;
    bool measured = false; // sent after the warm-up
    Clock::time_point sentAt{};
};

// Seats pairs of players in matches by automatic matching, one pair at a time: the first of a pair opens a
// match whose second seat waits, the second takes that seat. instanceOf[p] is the endpoint of player p's
// instance. Throws when the service answers otherwise.
std::vector<LoadMatch> matchPairs(const std::vector<BenchPlayer>& players,
                                  const std::vector<std::pair<std::size_t, std::size_t>>& pairs,
                                  const std::vector<tcp::endpoint>& instanceOf);

struct TurnLoadConfig {
    double turnsPerSecond = 100;
    double seconds = 30;
    double warmupSeconds = 3;
    std::size_t maxTurns = 0; // 0: no limit but the time
    std::size_t dataBytes = 512;
};

struct TurnFigures {
    Samples delivery; // POST sent → "turn" event received by the other player, measured turns only
    Samples answer;   // POST sent → its 200 answer
    std::size_t sent = 0;
    std::size_t completed = 0;
    std::size_t failed = 0;    // answered with an error or not at all
    std::size_t missing = 0;   // answered 200, but the event never came
    std::size_t noneReady = 0; // a turn was due and every match still had one in flight
    double seconds = 0;        // from the first turn to the end of the last one
    std::size_t mostWaiting = 0;
    std::vector<std::string> firstErrors;
};

// Ends turns at a steady average rate: each due turn is taken by the match that has waited longest since its
// previous turn arrived, whose holder posts it to his own instance; the other player's socket sees the
// "turn" event. A match takes its next turn only when both the answer and the event of the last one are in.
class TurnLoad {
public:
    // pools[i] serves instance i; instanceOfPlayer[p] is player p's instance.
    TurnLoad(asio::io_context& io, const std::vector<BenchPlayer>& players,
             std::vector<std::size_t> instanceOfPlayer, std::vector<HttpPool*> pools,
             std::vector<LoadMatch> matches, TurnLoadConfig config);

    // Runs the load on io to its end and returns the figures.
    TurnFigures run();
    // Takes an event that reached a player's socket; the sockets' handler calls it.
    void onEvent(std::size_t player, const EventMessage& e, Clock::time_point received);

private:
    void tick();
    void issue(std::size_t m);
    void settle(std::size_t m);

    asio::io_context& io_;
    const std::vector<BenchPlayer>& players_;
    std::vector<std::size_t> instanceOf_;
    std::vector<HttpPool*> pools_;
    std::vector<LoadMatch> matches_;
    std::unordered_map<std::string, std::size_t> byId_;
    TurnLoadConfig config_;
    std::string body_; // the turn's body after the seat list: timeout and match data
    asio::steady_timer timer_;
    std::deque<std::size_t> ready_;
    Clock::time_point start_{};
    Clock::time_point measureFrom_{};
    // Turns come as players end them, independently of each other: the gaps between them are exponential
    // (a Poisson stream), so that some come close together, as in play.
    std::mt19937_64 rng_{23};
    std::exponential_distribution<double> gap_;
    Clock::time_point nextAt_{};
    Clock::time_point end_{};
    std::size_t due_ = 0; // turns scheduled so far
    std::size_t inFlight_ = 0;
    bool stopped_ = false;
    Clock::time_point lastDone_{};
    TurnFigures figures_;
};

// Health probes on a connection of their own, one every interval, on the caller's io_context.
class HealthProbe {
public:
    HealthProbe(asio::io_context& io, tcp::endpoint ep, std::chrono::milliseconds interval,
                std::size_t count);
    void start();
    bool finished() const { return answered_ + failed_ >= count_; }
    const Samples& latencies() const { return latencies_; }
    std::size_t failed() const { return failed_; }

private:
    void probe();

    HttpPool pool_;
    asio::steady_timer timer_;
    std::chrono::milliseconds interval_;
    std::size_t count_;
    std::size_t issued_ = 0;
    std::size_t answered_ = 0;
    std::size_t failed_ = 0;
    Samples latencies_;
};

// Prints the figures of a turn load under a title.
void printTurnFigures(const std::string& title, const TurnFigures& f);

} // namespace tarvolin::bench
