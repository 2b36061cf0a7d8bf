#include "bench_support.h"

#include "net/api.h"
#include "store/match_rows.h"

#include <boost/beast/core.hpp>
#include <boost/beast/websocket.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tarvolin::bench {

namespace websocket = beast::websocket;

std::int64_t systemMs() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string randomHex(std::mt19937_64& rng, std::size_t digits) {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string s;
    s.reserve(digits);
    for (std::size_t i = 0; i < digits; ++i) {
        s += kDigits[rng() % 16];
    }
    return s;
}

namespace {

// Runs the store's transactions inside one outer transaction while a batch is open, so that a fill of
// thousands of small store calls commits, and reaches the disk, once. Outside a batch it passes through.
class BatchingConnection : public store::Connection {
public:
    explicit BatchingConnection(std::unique_ptr<store::Connection> inner) : inner_(std::move(inner)) {}

    void transact(const std::function<void(store::Tx&)>& fn) override {
        if (outer_) {
            fn(*outer_);
        } else {
            inner_->transact(fn);
        }
    }
    void read(const std::function<void(store::Tx&)>& fn) override {
        if (outer_) {
            fn(*outer_);
        } else {
            inner_->read(fn);
        }
    }
    std::string dialect() const override { return inner_->dialect(); }
    std::unique_ptr<store::Watch> watch(const std::vector<std::string>& channels,
                                        store::NotificationHandler fn) override {
        return inner_->watch(channels, std::move(fn));
    }

    void batch(const std::function<void()>& body) {
        inner_->transact([&](store::Tx& tx) {
            outer_ = &tx;
            try {
                body();
            } catch (...) {
                outer_ = nullptr;
                throw;
            }
            outer_ = nullptr;
        });
    }

private:
    std::unique_ptr<store::Connection> inner_;
    store::Tx* outer_ = nullptr;
};

unsigned short freeLoopbackPort() {
    asio::io_context io;
    tcp::acceptor a(io, tcp::endpoint(asio::ip::make_address("127.0.0.1"), 0));
    return a.local_endpoint().port();
}

// A failed handshake or request prints its reason; more than a few would only repeat it.
void reportFailure(std::size_t& count, const std::string& what) {
    if (++count <= 5) {
        std::fprintf(stderr, "  %s\n", what.c_str());
    }
}

} // namespace

double msBetween(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
}

double secondsSince(Clock::time_point t) {
    return std::chrono::duration<double>(Clock::now() - t).count();
}

double Samples::percentile(double p) const {
    if (values_.empty()) {
        return 0;
    }
    if (!sorted_) {
        std::sort(values_.begin(), values_.end());
        sorted_ = true;
    }
    // The nearest rank: the smallest value with at least p of all values at or below it.
    auto rank = static_cast<std::size_t>(std::ceil(p * static_cast<double>(values_.size())));
    return values_[std::clamp<std::size_t>(rank, 1, values_.size()) - 1];
}

std::string Samples::summary() const {
    char buf[200];
    std::snprintf(buf, sizeof buf, "n %zu  p50 %.2f  p90 %.2f  p99 %.2f  p99.9 %.2f  max %.2f ms", size(),
                  percentile(0.5), percentile(0.9), percentile(0.99), percentile(0.999), max());
    return buf;
}

std::pair<std::uint64_t, std::uint64_t> openFileLimitsOf(pid_t pid) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/limits");
    std::string line;
    while (std::getline(in, line)) {
        if (line.starts_with("Max open files")) {
            std::istringstream fields(line.substr(std::string("Max open files").size()));
            std::uint64_t soft = 0, hard = 0;
            fields >> soft >> hard;
            return {soft, hard};
        }
    }
    return {0, 0};
}

Memory memoryOf(pid_t pid) {
    std::ifstream in(pid == 0 ? std::string("/proc/self/status")
                              : "/proc/" + std::to_string(pid) + "/status");
    Memory m;
    std::string line;
    while (std::getline(in, line)) {
        // "VmRSS:\t  123456 kB"
        if (line.starts_with("VmRSS:")) {
            m.residentKiB = std::stol(line.substr(6));
        } else if (line.starts_with("VmHWM:")) {
            m.peakKiB = std::stol(line.substr(6));
        }
    }
    return m;
}

double mib(long kib) {
    return static_cast<double>(kib) / 1024.0;
}

double cpuSecondsOf(pid_t pid) {
    std::ifstream in(pid == 0 ? std::string("/proc/self/stat") : "/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    std::getline(in, line);
    // The name in parentheses may hold blanks: the fields are counted after it. utime and stime are the
    // 14th and 15th fields, the 12th and 13th after the name.
    std::size_t close = line.rfind(')');
    if (close == std::string::npos) {
        return 0;
    }
    std::istringstream fields(line.substr(close + 1));
    std::string field;
    double ticks = 0;
    for (int i = 1; i <= 13 && fields >> field; ++i) {
        if (i >= 12) {
            ticks += std::stod(field);
        }
    }
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}

CpuWatch::CpuWatch(std::vector<std::pair<std::string, pid_t>> processes)
    : processes_(std::move(processes)), startMachine_(machineTime()), start_(Clock::now()) {
    for (const auto& [name, pid] : processes_) {
        startCpu_.push_back(cpuSecondsOf(pid));
    }
}

CpuWatch::MachineTime CpuWatch::machineTime() {
    // "cpu  user nice system idle iowait irq softirq steal guest guest_nice", in ticks
    std::ifstream in("/proc/stat");
    std::string cpu;
    in >> cpu;
    MachineTime t;
    double v = 0;
    for (int i = 0; i < 8 && in >> v; ++i) {
        t.total += v;
        if (i != 3 && i != 4) {
            t.busy += v;
        }
    }
    return t;
}

std::string CpuWatch::report() const {
    const double wall = secondsSince(start_);
    std::string out;
    char buf[120];
    for (std::size_t i = 0; i < processes_.size(); ++i) {
        std::snprintf(buf, sizeof buf, "%s%s %.0f%% of a core", i ? ", " : "", processes_[i].first.c_str(),
                      100.0 * (cpuSecondsOf(processes_[i].second) - startCpu_[i]) / wall);
        out += buf;
    }
    const MachineTime now = machineTime();
    std::snprintf(buf, sizeof buf, "; the machine %.0f%% busy of %ld cores",
                  100.0 * (now.busy - startMachine_.busy) / std::max(1.0, now.total - startMachine_.total),
                  sysconf(_SC_NPROCESSORS_ONLN));
    return out + buf;
}

// A database of its own ----------------------------------------------------------------------------------

BenchDatabase::BenchDatabase(const std::string& location) {
    std::mt19937_64 rng{std::random_device{}()};
    const std::string suffix = std::to_string(::getpid()) + "_" + randomHex(rng, 8);
    dir_ = std::filesystem::temp_directory_path() / ("tarvolin-bench-" + suffix);
    std::filesystem::create_directories(dir_);
    if (location.empty()) {
        serviceLocation_ = (dir_ / "service.db").string();
        return;
    }
    if (!location.starts_with("postgresql://") && !location.starts_with("postgres://")) {
        throw std::invalid_argument("--database takes a postgresql:// URL; without it SQLite is used");
    }
    url_ = location;
    schema_ = "bench_" + suffix;
    // The service takes no schema of its own: libpq's options parameter sets its search path.
    serviceLocation_ =
        url_ + (url_.find('?') == std::string::npos ? "?" : "&") + "options=-c%20search_path%3D" + schema_;
}

BenchDatabase::~BenchDatabase() {
    if (!schema_.empty()) {
        try {
            store::openPostgres(url_)->transact(
                [&](store::Tx& tx) { tx.script("DROP SCHEMA IF EXISTS \"" + schema_ + "\" CASCADE"); });
        } catch (const std::exception& e) {
            std::fprintf(stderr, "the schema %s stays behind: %s\n", schema_.c_str(), e.what());
        }
    }
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
}

std::string BenchDatabase::describe() const {
    return postgres() ? "PostgreSQL, schema " + schema_ : "SQLite, " + serviceLocation_;
}

std::unique_ptr<store::Store> BenchDatabase::open() {
    auto s = store::makeSqlStore(postgres() ? store::openPostgres(url_, schema_)
                                            : store::openSqlite(serviceLocation_));
    s->migrate();
    return s;
}

std::vector<BenchPlayer> BenchDatabase::fillPlayers(std::size_t n) {
    auto conn = std::make_unique<BatchingConnection>(postgres() ? store::openPostgres(url_, schema_)
                                                                : store::openSqlite(serviceLocation_));
    BatchingConnection* batching = conn.get();
    auto s = store::makeSqlStore(std::move(conn));
    s->migrate();

    std::mt19937_64 rng{std::random_device{}()};
    const std::int64_t now = systemMs();
    const std::int64_t expires = now + 90LL * 24 * 3600 * 1000;
    std::vector<BenchPlayer> players;
    players.reserve(n);
    constexpr std::size_t kChunk = 2000;
    for (std::size_t base = 0; base < n; base += kChunk) {
        std::vector<store::Credentials> creds;
        for (std::size_t i = base; i < std::min(n, base + kChunk); ++i) {
            char id[24];
            std::snprintf(id, sizeof id, "B%015zu", i);
            const std::string name = "bench" + std::to_string(i);
            creds.push_back(store::Credentials{store::PlayerRecord{id, name, now}, name, "!"});
            players.push_back(BenchPlayer{id, randomHex(rng, 64)});
        }
        s->importPlayers(creds, {});
        batching->batch([&] {
            for (std::size_t i = base; i < players.size(); ++i) {
                s->addToken(net::Api::tokenKey(players[i].token), players[i].id, now, expires);
            }
        });
    }
    return players;
}

// The service as a child process ---------------------------------------------------------------------------

std::string defaultServiceBinary() {
    std::error_code ec;
    auto self = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::string("tarvolin-service") : (self.parent_path() / "tarvolin-service").string();
}

ServiceProcess::ServiceProcess(const std::string& binary, const std::string& database,
                               const std::filesystem::path& logFile, int threads)
    : port_(freeLoopbackPort()), logFile_(logFile) {
    std::vector<std::string> args{binary,       "--address", "127.0.0.1",    "--port", std::to_string(port_),
                                  "--database", database,    "--rate-limit", "0",      "--log-level",
                                  "warn"};
    // The load comes from one address: the per-address abuse limits would be what is measured.
    for (const char* off :
         {"--signups-per-hour", "--connections-per-address", "--ws-handshakes-per-minute"}) {
        args.push_back(off);
        args.push_back("0");
    }
    if (threads > 0) {
        args.push_back("--threads");
        args.push_back(std::to_string(threads));
    }
    std::vector<char*> argv;
    for (auto& a : args) {
        argv.push_back(a.data());
    }
    argv.push_back(nullptr);
    int log = ::open(logFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (log < 0) {
        throw std::runtime_error("cannot write " + logFile.string());
    }
    pid_ = ::fork();
    if (pid_ == 0) {
        ::dup2(log, STDOUT_FILENO);
        ::dup2(log, STDERR_FILENO);
        ::execv(binary.c_str(), argv.data());
        std::fprintf(stderr, "cannot run %s\n", binary.c_str());
        ::_exit(127);
    }
    ::close(log);
    if (pid_ < 0) {
        throw std::runtime_error("cannot start a process");
    }
    try {
        waitUntilHealthy();
    } catch (...) {
        stop(std::chrono::seconds(5));
        throw;
    }
}

ServiceProcess::~ServiceProcess() {
    stop();
}

tcp::endpoint ServiceProcess::endpoint() const {
    return tcp::endpoint(asio::ip::make_address("127.0.0.1"), port_);
}

void ServiceProcess::waitUntilHealthy() {
    auto deadline = Clock::now() + std::chrono::seconds(120);
    while (Clock::now() < deadline) {
        int status = 0;
        if (::waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            throw std::runtime_error("tarvolin-service ended at its start:\n" + logTail());
        }
        try {
            if (SyncHttp(endpoint()).call(http::verb::get, "/healthz").status == 200) {
                return;
            }
        } catch (const std::exception&) {
            // Not listening yet.
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("tarvolin-service did not answer /healthz within 120 s:\n" + logTail());
}

std::string ServiceProcess::logTail() const {
    std::ifstream in(logFile_);
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return all.size() > 4000 ? all.substr(all.size() - 4000) : all;
}

int ServiceProcess::stop(std::chrono::seconds wait) {
    if (pid_ <= 0) {
        return 0;
    }
    ::kill(pid_, SIGTERM);
    int status = 0;
    auto deadline = Clock::now() + wait;
    while (::waitpid(pid_, &status, WNOHANG) == 0) {
        if (Clock::now() >= deadline) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, &status, 0);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    pid_ = -1;
    return status;
}

// HTTP ----------------------------------------------------------------------------------------------------

SyncHttp::SyncHttp(const tcp::endpoint& ep) : stream_(io_) {
    stream_.connect(ep);
}

HttpAnswer SyncHttp::call(http::verb verb, const std::string& target, const std::string& token,
                          const std::string& body) {
    http::request<http::string_body> req{verb, target, 11};
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
    stream_.expires_after(std::chrono::seconds(60));
    http::write(stream_, req);
    http::response<http::string_body> res;
    http::read(stream_, buffer_, res);
    return HttpAnswer{res.result_int(), std::move(res.body()), {}};
}

// One asynchronous keep-alive connection of a pool: one call at a time.
class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
public:
    HttpConnection(asio::io_context& io, tcp::endpoint ep, HttpPool* pool)
        : stream_(io), ep_(ep), pool_(pool) {}

    void run(HttpCall call) {
        call_ = std::move(call);
        // The service closes a keep-alive connection after 60 s of silence: start afresh well before.
        if (connected_ && Clock::now() - lastUsed_ > std::chrono::seconds(30)) {
            close();
        }
        if (connected_) {
            return write();
        }
        stream_.expires_after(std::chrono::seconds(30));
        stream_.async_connect(ep_, [self = shared_from_this()](beast::error_code ec) {
            if (ec) {
                return self->fail(ec);
            }
            self->connected_ = true;
            self->write();
        });
    }

    void close() {
        beast::error_code ec;
        stream_.socket().shutdown(tcp::socket::shutdown_both, ec);
        stream_.socket().close(ec);
        connected_ = false;
    }

    void detach() { pool_ = nullptr; }

private:
    void write() {
        req_ = {};
        req_.method(call_.verb);
        req_.target(call_.target);
        req_.version(11);
        req_.set(http::field::host, "127.0.0.1");
        if (!call_.token.empty()) {
            req_.set(http::field::authorization, "Bearer " + call_.token);
        }
        if (!call_.body.empty()) {
            req_.set(http::field::content_type, "application/json");
            req_.body() = std::move(call_.body);
        }
        req_.keep_alive(true);
        req_.prepare_payload();
        if (call_.sent) {
            call_.sent(Clock::now());
        }
        stream_.expires_after(std::chrono::seconds(30));
        http::async_write(stream_, req_, [self = shared_from_this()](beast::error_code ec, std::size_t) {
            if (ec) {
                return self->fail(ec);
            }
            self->res_ = {};
            http::async_read(self->stream_, self->buffer_, self->res_,
                             [self](beast::error_code ec2, std::size_t) { self->onRead(ec2); });
        });
    }

    void onRead(beast::error_code ec) {
        const Clock::time_point received = Clock::now();
        if (ec) {
            return fail(ec);
        }
        lastUsed_ = received;
        if (!res_.keep_alive()) {
            close();
        }
        finish(HttpAnswer{res_.result_int(), std::move(res_.body()), {}}, received);
    }

    void fail(beast::error_code ec) {
        close();
        finish(HttpAnswer{0, {}, ec.message()}, Clock::now());
    }

    void finish(const HttpAnswer& answer, Clock::time_point received) {
        auto done = std::move(call_.done);
        call_ = {};
        if (done) {
            done(answer, received);
        }
        if (pool_) {
            pool_->idle(shared_from_this());
        }
    }

    beast::tcp_stream stream_;
    tcp::endpoint ep_;
    HttpPool* pool_;
    beast::flat_buffer buffer_;
    HttpCall call_;
    http::request<http::string_body> req_;
    http::response<http::string_body> res_;
    bool connected_ = false;
    Clock::time_point lastUsed_{};
};

HttpPool::HttpPool(asio::io_context& io, tcp::endpoint ep, std::size_t connections) {
    for (std::size_t i = 0; i < std::max<std::size_t>(1, connections); ++i) {
        all_.push_back(std::make_shared<HttpConnection>(io, ep, this));
        idle_.push_back(all_.back());
    }
}

HttpPool::~HttpPool() {
    for (auto& c : all_) {
        c->detach();
        c->close();
    }
}

void HttpPool::submit(HttpCall call) {
    if (!idle_.empty() && queue_.empty()) {
        auto c = std::move(idle_.back());
        idle_.pop_back();
        return c->run(std::move(call));
    }
    queue_.push_back(std::move(call));
    mostWaiting_ = std::max(mostWaiting_, queue_.size());
}

void HttpPool::idle(const std::shared_ptr<HttpConnection>& c) {
    if (queue_.empty()) {
        idle_.push_back(c);
        return;
    }
    HttpCall next = std::move(queue_.front());
    queue_.pop_front();
    c->run(std::move(next));
}

// Event WebSockets ----------------------------------------------------------------------------------------

EventSocket::EventSocket(asio::io_context& io, std::size_t player, std::string token, const Handler* handler)
    : ws_(io), player_(player), token_(std::move(token)), handler_(handler) {}

void EventSocket::open(const tcp::endpoint& ep, std::function<void(beast::error_code)> done) {
    ws_.next_layer().async_connect(ep, [self = shared_from_this(), ep,
                                        done = std::move(done)](beast::error_code ec) mutable {
        if (ec) {
            return done(ec);
        }
        self->ws_.set_option(websocket::stream_base::timeout::suggested(beast::role_type::client));
        self->ws_.set_option(
            websocket::stream_base::decorator([token = self->token_](websocket::request_type& req) {
                req.set(http::field::authorization, "Bearer " + token);
            }));
        const std::string host = "127.0.0.1:" + std::to_string(ep.port());
        self->ws_.async_handshake(host, "/v1/events", [self, done = std::move(done)](beast::error_code ec2) {
            if (!ec2) {
                self->open_ = true;
                self->ws_.text(true);
                self->read();
            }
            done(ec2);
        });
    });
}

void EventSocket::close() {
    open_ = false;
    beast::error_code ec;
    ws_.next_layer().shutdown(tcp::socket::shutdown_both, ec);
    ws_.next_layer().close(ec);
}

void EventSocket::read() {
    ws_.async_read(buffer_, [self = shared_from_this()](beast::error_code ec, std::size_t) {
        const Clock::time_point received = Clock::now();
        if (ec) {
            self->open_ = false;
            return;
        }
        const auto data = self->buffer_.cdata();
        json::error_code jec;
        json::value v =
            json::parse(std::string_view(static_cast<const char*>(data.data()), data.size()), jec);
        self->buffer_.consume(self->buffer_.size());
        const json::object* o = jec ? nullptr : v.if_object();
        const json::value* type = o ? o->if_contains("type") : nullptr;
        if (type && *type == "event") {
            EventMessage e;
            e.seq = o->at("seq").to_number<std::int64_t>();
            e.kind = std::string(o->at("event").as_string());
            if (const json::value* d = o->if_contains("data"); d && d->is_object()) {
                e.data = d->as_object();
            }
            if (self->handler_ && *self->handler_) {
                (*self->handler_)(self->player_, e, received);
            }
            self->lastSeq_ = e.seq;
            self->send(json::serialize(json::object{{"type", "ack"}, {"seq", e.seq}}));
        } else if (type && *type == "error") {
            static std::size_t errors = 0;
            reportFailure(errors, "the service answered a socket message: " + json::serialize(v));
        }
        self->read();
    });
}

void EventSocket::send(std::string text) {
    outbox_.push_back(std::move(text));
    if (outbox_.size() == 1) {
        write();
    }
}

void EventSocket::write() {
    ws_.async_write(asio::buffer(outbox_.front()),
                    [self = shared_from_this()](beast::error_code ec, std::size_t) {
                        if (ec) {
                            return;
                        }
                        self->outbox_.pop_front();
                        if (!self->outbox_.empty()) {
                            self->write();
                        }
                    });
}

std::size_t openSockets(asio::io_context& io, const std::vector<std::shared_ptr<EventSocket>>& sockets,
                        const std::vector<tcp::endpoint>& endpointOf, std::size_t parallel) {
    std::size_t next = 0, active = 0, finished = 0, failed = 0;
    std::function<void()> launch = [&] {
        while (active < parallel && next < sockets.size()) {
            const auto& s = sockets[next++];
            ++active;
            s->open(endpointOf[s->player()], [&](beast::error_code ec) {
                --active;
                ++finished;
                if (ec) {
                    reportFailure(failed, "socket " + std::to_string(finished) + ": " + ec.message());
                }
                launch();
            });
        }
    };
    launch();
    if (!runUntil(
            io, [&] { return finished == sockets.size(); }, std::chrono::minutes(10))) {
        failed += sockets.size() - finished;
    }
    return failed;
}

bool runUntil(asio::io_context& io, const std::function<bool()>& done, std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (!done()) {
        if (Clock::now() >= deadline) {
            return false;
        }
        if (io.stopped()) {
            io.restart();
        }
        io.run_one_for(std::chrono::milliseconds(50));
    }
    return true;
}

// Matches and their turns ----------------------------------------------------------------------------------

std::vector<LoadMatch> matchPairs(const std::vector<BenchPlayer>& players,
                                  const std::vector<std::pair<std::size_t, std::size_t>>& pairs,
                                  const std::vector<tcp::endpoint>& instanceOf) {
    std::vector<std::pair<tcp::endpoint, std::unique_ptr<SyncHttp>>> clients;
    auto clientFor = [&](std::size_t player) -> SyncHttp& {
        const tcp::endpoint& ep = instanceOf[player];
        for (auto& [e, c] : clients) {
            if (e == ep) {
                return *c;
            }
        }
        clients.emplace_back(ep, std::make_unique<SyncHttp>(ep));
        return *clients.back().second;
    };
    auto matchOf = [](const HttpAnswer& a) { return json::parse(a.body).at("match").as_object(); };
    std::vector<LoadMatch> out;
    out.reserve(pairs.size());
    for (const auto& [first, second] : pairs) {
        HttpAnswer opened =
            clientFor(first).call(http::verb::post, "/v1/matches", players[first].token, "{}");
        if (opened.status != 201) {
            throw std::runtime_error("automatic matching of " + players[first].id + " answered " +
                                     std::to_string(opened.status) + " " + opened.body +
                                     " instead of opening a match");
        }
        const std::string id(matchOf(opened).at("matchID").as_string());
        HttpAnswer joined =
            clientFor(second).call(http::verb::post, "/v1/matches", players[second].token, "{}");
        if (joined.status != 200 || matchOf(joined).at("matchID").as_string() != id) {
            throw std::runtime_error("automatic matching of " + players[second].id + " answered " +
                                     std::to_string(joined.status) + " " + joined.body +
                                     " instead of joining " + id);
        }
        LoadMatch m;
        m.id = id;
        m.seats = {first, second};
        m.holder = static_cast<int>(matchOf(joined).at("currentParticipant").to_number<std::int64_t>());
        out.push_back(std::move(m));
    }
    return out;
}

TurnLoad::TurnLoad(asio::io_context& io, const std::vector<BenchPlayer>& players,
                   std::vector<std::size_t> instanceOfPlayer, std::vector<HttpPool*> pools,
                   std::vector<LoadMatch> matches, TurnLoadConfig config)
    : io_(io), players_(players), instanceOf_(std::move(instanceOfPlayer)), pools_(std::move(pools)),
      matches_(std::move(matches)), config_(config), timer_(io), gap_(config.turnsPerSecond) {
    for (std::size_t i = 0; i < matches_.size(); ++i) {
        byId_.emplace(matches_[i].id, i);
    }
    // The board of a word game in progress: bytes that do not compress, as base64.
    std::mt19937_64 rng(17);
    std::string bytes(config_.dataBytes, '\0');
    for (char& c : bytes) {
        c = static_cast<char>(rng() & 0xff);
    }
    body_ = "],\"timeout\":86400,\"matchData\":\"" + store::match_rows::encodeData(bytes) + "\"}";
}

TurnFigures TurnLoad::run() {
    figures_ = {};
    ready_.clear();
    for (std::size_t i = 0; i < matches_.size(); ++i) {
        ready_.push_back(i);
    }
    start_ = Clock::now();
    lastDone_ = start_;
    measureFrom_ = start_ + std::chrono::duration_cast<Clock::duration>(
                                std::chrono::duration<double>(config_.warmupSeconds));
    end_ =
        start_ + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(config_.seconds));
    nextAt_ = start_;
    due_ = 0;
    inFlight_ = 0;
    stopped_ = false;
    tick();
    runUntil(
        io_, [&] { return stopped_; },
        std::chrono::milliseconds(static_cast<long long>(config_.seconds * 1000) + 600'000));
    // The turns still under way may finish; what has not come within 10 s is counted as lost.
    runUntil(
        io_, [&] { return inFlight_ == 0; }, std::chrono::seconds(10));
    timer_.cancel();
    for (LoadMatch& m : matches_) {
        if (m.inFlight) {
            ++(m.answered ? figures_.missing : figures_.failed);
            m.inFlight = false;
        }
    }
    figures_.seconds = msBetween(start_, lastDone_) / 1000.0;
    for (HttpPool* p : pools_) {
        figures_.mostWaiting = std::max(figures_.mostWaiting, p->mostWaiting());
    }
    return figures_;
}

void TurnLoad::tick() {
    const Clock::time_point now = Clock::now();
    auto finished = [&] { return (config_.maxTurns > 0 && due_ >= config_.maxTurns) || nextAt_ >= end_; };
    // Every turn whose moment has come, also those a late timer has let pass.
    while (!finished() && nextAt_ <= now) {
        ++due_;
        nextAt_ += std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(gap_(rng_)));
        if (ready_.empty()) {
            ++figures_.noneReady;
            continue;
        }
        const std::size_t m = ready_.front();
        ready_.pop_front();
        issue(m);
    }
    if (finished()) {
        stopped_ = true;
        return;
    }
    timer_.expires_at(nextAt_);
    timer_.async_wait([this](beast::error_code ec) {
        if (!ec) {
            tick();
        }
    });
}

void TurnLoad::issue(std::size_t m) {
    LoadMatch& lm = matches_[m];
    lm.inFlight = true;
    lm.answered = false;
    lm.delivered = false;
    ++inFlight_;
    ++figures_.sent;
    const std::size_t player = lm.seats[static_cast<std::size_t>(lm.holder)];
    const int other = 1 - lm.holder;
    HttpCall call;
    call.verb = http::verb::post;
    call.target = "/v1/matches/" + lm.id + "/turn";
    call.token = players_[player].token;
    // The turn goes to the other seat, and would fall back to this one.
    call.body = "{\"nextParticipants\":[" + std::to_string(other) + "," + std::to_string(lm.holder) + body_;
    call.sent = [this, m](Clock::time_point t) {
        matches_[m].sentAt = t;
        matches_[m].measured = t >= measureFrom_;
    };
    call.done = [this, m](const HttpAnswer& a, Clock::time_point t) {
        LoadMatch& lm = matches_[m];
        if (!lm.inFlight) {
            return;
        }
        if (a.status != 200) {
            ++figures_.failed;
            if (figures_.firstErrors.size() < 5) {
                figures_.firstErrors.push_back(a.status ? std::to_string(a.status) + " " + a.body : a.error);
            }
            // The match leaves the load: who holds its turn is no longer known.
            lm.inFlight = false;
            --inFlight_;
            return;
        }
        lm.answered = true;
        if (lm.measured) {
            figures_.answer.add(msBetween(lm.sentAt, t));
        }
        settle(m);
    };
    pools_[instanceOf_[player]]->submit(std::move(call));
}

void TurnLoad::onEvent(std::size_t player, const EventMessage& e, Clock::time_point received) {
    if (e.kind != "turn") {
        return;
    }
    const json::value* match = e.data.if_contains("match");
    const json::value* id = match && match->is_object() ? match->as_object().if_contains("matchID") : nullptr;
    if (!id || !id->is_string()) {
        return;
    }
    auto it = byId_.find(std::string(id->as_string()));
    if (it == byId_.end()) {
        return;
    }
    LoadMatch& lm = matches_[it->second];
    if (!lm.inFlight || lm.delivered || player != lm.seats[static_cast<std::size_t>(1 - lm.holder)]) {
        return;
    }
    lm.delivered = true;
    if (lm.measured) {
        figures_.delivery.add(msBetween(lm.sentAt, received));
    }
    settle(it->second);
}

void TurnLoad::settle(std::size_t m) {
    LoadMatch& lm = matches_[m];
    if (!lm.answered || !lm.delivered) {
        return;
    }
    lm.inFlight = false;
    lm.holder = 1 - lm.holder;
    --inFlight_;
    ++figures_.completed;
    lastDone_ = Clock::now();
    ready_.push_back(m);
}

void printTurnFigures(const std::string& title, const TurnFigures& f) {
    std::printf("%s\n", title.c_str());
    std::printf("  turns sent %zu, completed %zu (%.1f a second), failed %zu, event missing %zu\n", f.sent,
                f.completed, f.seconds > 0 ? static_cast<double>(f.completed) / f.seconds : 0.0, f.failed,
                f.missing);
    if (f.noneReady > 0) {
        std::printf("  turns due while every match had one in flight: %zu\n", f.noneReady);
    }
    std::printf("  most calls waiting for a free client connection: %zu\n", f.mostWaiting);
    std::printf("  POST turn → \"turn\" event at the other player:  %s\n", f.delivery.summary().c_str());
    std::printf("  POST turn → its answer:                        %s\n", f.answer.summary().c_str());
    for (const std::string& e : f.firstErrors) {
        std::printf("  error: %s\n", e.c_str());
    }
}

// Health probes -------------------------------------------------------------------------------------------

HealthProbe::HealthProbe(asio::io_context& io, tcp::endpoint ep, std::chrono::milliseconds interval,
                         std::size_t count)
    : pool_(io, ep, 1), timer_(io), interval_(interval), count_(count) {}

void HealthProbe::start() {
    probe();
}

void HealthProbe::probe() {
    if (issued_ >= count_) {
        return;
    }
    ++issued_;
    auto sentAt = std::make_shared<Clock::time_point>();
    HttpCall call;
    call.target = "/healthz";
    call.sent = [sentAt](Clock::time_point t) { *sentAt = t; };
    call.done = [this, sentAt](const HttpAnswer& a, Clock::time_point t) {
        if (a.status == 200) {
            ++answered_;
            latencies_.add(msBetween(*sentAt, t));
        } else {
            ++failed_;
        }
    };
    pool_.submit(std::move(call));
    timer_.expires_after(interval_);
    timer_.async_wait([this](beast::error_code ec) {
        if (!ec) {
            probe();
        }
    });
}

std::uint64_t raiseAndPrintOpenFileLimit() {
    auto [soft, hard] = raiseOpenFileLimit();
    std::printf("open files of this process: soft %llu, hard %llu\n", static_cast<unsigned long long>(soft),
                static_cast<unsigned long long>(hard));
    return soft;
}

std::vector<BenchPlayer> fillPlayersAndReport(BenchDatabase& db, std::size_t players) {
    const auto start = Clock::now();
    std::vector<BenchPlayer> filled = db.fillPlayers(players);
    std::printf("database: %s\nfill: %zu players with tokens stored in %.1f s\n", db.describe().c_str(),
                filled.size(), secondsSince(start));
    return filled;
}

std::vector<std::unique_ptr<ServiceProcess>> startServices(const std::string& binary, const BenchDatabase& db,
                                                           std::size_t instances, int threads) {
    std::vector<std::unique_ptr<ServiceProcess>> services;
    for (std::size_t i = 0; i < instances; ++i) {
        services.push_back(std::make_unique<ServiceProcess>(
            binary, db.serviceLocation(), db.folder() / ("service" + std::to_string(i) + ".log"), threads));
    }
    return services;
}

} // namespace tarvolin::bench
