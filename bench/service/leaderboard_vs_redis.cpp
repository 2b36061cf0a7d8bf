// The leaderboard's hot paths against Redis on the same machine in the same run: the same players and scores
// go into the service's database and into a Redis sorted set; then each measure runs the same number of
// client connections against both, one request in flight per connection, and prints both figures and their
// ratio. bench/leaderboard-vs-redis.sh starts the two throwaway Redis servers this program talks to.
#include "bench_support.h"

#include "logic/rank_index.h"
#include "net/api.h"
#include "store/store.h"

#include <algorithm>
#include <atomic>
#include <barrier>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <functional>
#include <iostream>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <arpa/inet.h>
#include <malloc.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace tarvolin;
using namespace tarvolin::bench;

namespace {

// One blocking loopback connection that reads HTTP/1.1 responses or Redis replies: the same lean client for
// both sides, so that neither pays for a heavier client library.
class Wire {
public:
    explicit Wire(unsigned short port) {
        fd_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in a{};
        a.sin_family = AF_INET;
        a.sin_port = htons(port);
        a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        if (fd_ < 0 || ::connect(fd_, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
            std::string why = std::strerror(errno);
            if (fd_ >= 0) {
                ::close(fd_);
            }
            throw std::runtime_error("cannot connect to 127.0.0.1:" + std::to_string(port) + ": " + why);
        }
        int one = 1;
        ::setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    }
    ~Wire() { ::close(fd_); }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    void send(std::string_view s) {
        while (!s.empty()) {
            ssize_t n = ::write(fd_, s.data(), s.size());
            if (n <= 0) {
                if (n < 0 && errno == EINTR) {
                    continue;
                }
                throw std::runtime_error("the connection closed while writing");
            }
            s.remove_prefix(static_cast<std::size_t>(n));
        }
    }

    // One HTTP/1.1 response with a Content-Length; returns its status and puts its body in *body.
    int readHttp(std::string* body) {
        std::size_t end;
        while ((end = buf_.find("\r\n\r\n", pos_)) == std::string::npos) {
            fill();
        }
        std::string_view head(buf_.data() + pos_, end - pos_);
        if (head.size() < 12 || !head.starts_with("HTTP/1.1 ")) {
            throw std::runtime_error("not an HTTP/1.1 response");
        }
        int status = std::atoi(std::string(head.substr(9, 3)).c_str());
        std::size_t length = 0;
        std::size_t at = head.find("Content-Length: ");
        if (at == std::string_view::npos) {
            at = head.find("content-length: ");
        }
        if (at != std::string_view::npos) {
            length = std::strtoul(head.data() + at + 16, nullptr, 10);
        }
        std::size_t bodyAt = end + 4;
        while (buf_.size() - bodyAt < length) {
            fill();
        }
        if (body) {
            body->assign(buf_, bodyAt, length);
        }
        pos_ = bodyAt + length;
        compact();
        return status;
    }

    // One Redis reply; returns its type ('+', '-', ':', '$', '*') and its text or number in *text.
    char readResp(std::string* text) {
        std::string line = readLine();
        if (line.empty()) {
            throw std::runtime_error("an empty Redis reply");
        }
        char type = line[0];
        if (text) {
            *text = line.substr(1);
        }
        if (type == '$') {
            long n = std::strtol(line.c_str() + 1, nullptr, 10);
            if (n >= 0) {
                while (buf_.size() - pos_ < static_cast<std::size_t>(n) + 2) {
                    fill();
                }
                if (text) {
                    text->assign(buf_, pos_, static_cast<std::size_t>(n));
                }
                pos_ += static_cast<std::size_t>(n) + 2;
            }
        } else if (type == '*') {
            long n = std::strtol(line.c_str() + 1, nullptr, 10);
            for (long i = 0; i < n; ++i) {
                readResp(nullptr);
            }
        }
        compact();
        return type;
    }

private:
    std::string readLine() {
        std::size_t end;
        while ((end = buf_.find("\r\n", pos_)) == std::string::npos) {
            fill();
        }
        std::string line = buf_.substr(pos_, end - pos_);
        pos_ = end + 2;
        return line;
    }
    void fill() {
        char chunk[16384];
        ssize_t n;
        do {
            n = ::read(fd_, chunk, sizeof chunk);
        } while (n < 0 && errno == EINTR);
        if (n <= 0) {
            throw std::runtime_error("the connection closed while reading");
        }
        buf_.append(chunk, static_cast<std::size_t>(n));
    }
    void compact() {
        if (pos_ == buf_.size()) {
            buf_.clear();
            pos_ = 0;
        } else if (pos_ > 65536) {
            buf_.erase(0, pos_);
            pos_ = 0;
        }
    }

    int fd_ = -1;
    std::string buf_;
    std::size_t pos_ = 0;
};

std::string resp(std::initializer_list<std::string_view> args) {
    std::string out = "*" + std::to_string(args.size()) + "\r\n";
    for (std::string_view a : args) {
        out += "$" + std::to_string(a.size()) + "\r\n";
        out += a;
        out += "\r\n";
    }
    return out;
}

std::string httpGet(const std::string& target, const std::string& token) {
    return "GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: Bearer " + token + "\r\n\r\n";
}

std::string httpPost(const std::string& target, const std::string& token, const std::string& body) {
    return "POST " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nAuthorization: Bearer " + token +
           "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n\r\n" + body;
}

struct Figure {
    double opsPerSecond = 0;
    double p50us = 0;
    double p99us = 0;
    std::size_t ops = 0;
};

// One request-and-answer on a connection of its own; returns false when the answer was not the right one.
using Op = std::function<bool(Wire&, std::size_t connection, std::mt19937_64& rng)>;

// `connections` threads, each with its connection, run op for `seconds` after a short warm-up: back to back,
// or, with a rate, paced so that all connections together send `rate` requests a second. The figure is all
// the answers together over the time, with each answer's latency; paced, a latency counts from when the
// request was due, so a request held up behind a slow one is not measured as if it had been sent late on
// purpose.
Figure runLoad(unsigned short port, std::size_t connections, double seconds, const Op& op, double rate = 0) {
    std::vector<std::vector<float>> latencies(connections);
    std::vector<std::string> failures(connections);
    std::barrier start(static_cast<std::ptrdiff_t>(connections) + 1);
    std::atomic<bool> stop{false};
    std::vector<std::thread> threads;
    for (std::size_t c = 0; c < connections; ++c) {
        threads.emplace_back([&, c] {
            std::mt19937_64 rng(c * 7919 + 1);
            try {
                Wire wire(port);
                for (int i = 0; i < 50; ++i) {
                    op(wire, c, rng);
                }
                start.arrive_and_wait();
                auto& mine = latencies[c];
                mine.reserve(1 << 16);
                const auto interval = std::chrono::duration_cast<Clock::duration>(
                    std::chrono::duration<double>(rate > 0 ? static_cast<double>(connections) / rate : 0));
                // The connections' turns are spread over the interval.
                auto due = Clock::now() +
                           interval * static_cast<std::int64_t>(c) / static_cast<std::int64_t>(connections);
                while (!stop.load(std::memory_order_relaxed)) {
                    auto t = Clock::now();
                    if (rate > 0) {
                        std::this_thread::sleep_until(due);
                        t = due;
                        due += interval;
                    }
                    if (!op(wire, c, rng)) {
                        failures[c] = "a wrong answer";
                        break;
                    }
                    mine.push_back(static_cast<float>(
                        std::chrono::duration<double, std::micro>(Clock::now() - t).count()));
                }
            } catch (const std::exception& e) {
                failures[c] = e.what();
                start.arrive_and_drop();
            }
        });
    }
    start.arrive_and_wait();
    auto began = Clock::now();
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds));
    stop = true;
    for (auto& t : threads) {
        t.join();
    }
    double elapsed = secondsSince(began);
    for (const auto& f : failures) {
        if (!f.empty()) {
            throw std::runtime_error("a connection failed: " + f);
        }
    }
    std::vector<float> all;
    for (auto& l : latencies) {
        all.insert(all.end(), l.begin(), l.end());
    }
    std::sort(all.begin(), all.end());
    auto pct = [&](double p) {
        return all.empty()
                   ? 0.0
                   : static_cast<double>(
                         all[std::min(all.size() - 1, static_cast<std::size_t>(p * double(all.size())))]);
    };
    return Figure{static_cast<double>(all.size()) / elapsed, pct(0.50), pct(0.99), all.size()};
}

struct Goal {
    double minRatio = 0; // 0: none
    double minOps = 0;   // the service's own ops/s, 0: none
    double maxP99us = 0; // 0: none
};

struct Row {
    std::string measure;
    std::size_t connections;
    Figure service;
    Figure redis;
    Goal goal;
    bool met() const {
        double ratio = service.opsPerSecond / std::max(1.0, redis.opsPerSecond);
        return (goal.minRatio == 0 || ratio >= goal.minRatio) &&
               (goal.minOps == 0 || service.opsPerSecond >= goal.minOps) &&
               (goal.maxP99us == 0 || service.p99us <= goal.maxP99us);
    }
    bool hasGoal() const { return goal.minRatio > 0 || goal.minOps > 0 || goal.maxP99us > 0; }
};

std::string goalText(const Goal& g) {
    std::string out;
    auto add = [&](const std::string& s) { out += (out.empty() ? "" : ", ") + s; };
    char b[64];
    if (g.minRatio > 0) {
        std::snprintf(b, sizeof b, ">= %.1fx", g.minRatio);
        add(b);
    }
    if (g.minOps > 0) {
        std::snprintf(b, sizeof b, ">= %.0f/s", g.minOps);
        add(b);
    }
    if (g.maxP99us > 0) {
        std::snprintf(b, sizeof b, "p99 < %.0f us", g.maxP99us);
        add(b);
    }
    return out.empty() ? "-" : out;
}

void printHeader() {
    std::printf("%-30s %5s | %11s %9s %9s | %11s %9s %9s | %6s  %s\n", "measure", "conns", "service/s",
                "p50 us", "p99 us", "redis/s", "p50 us", "p99 us", "ratio", "goal");
}

void printRow(const Row& r) {
    std::printf("%-30s %5zu | %11.0f %9.1f %9.1f | %11.0f %9.1f %9.1f | %5.2fx  %s%s\n", r.measure.c_str(),
                r.connections, r.service.opsPerSecond, r.service.p50us, r.service.p99us, r.redis.opsPerSecond,
                r.redis.p50us, r.redis.p99us, r.service.opsPerSecond / std::max(1.0, r.redis.opsPerSecond),
                goalText(r.goal).c_str(), r.hasGoal() ? (r.met() ? "  met" : "  NOT MET") : "");
    std::fflush(stdout);
}

std::int64_t redisUsedMemory(unsigned short port) {
    Wire w(port);
    w.send(resp({"INFO", "memory"}));
    std::string info;
    if (w.readResp(&info) != '$') {
        throw std::runtime_error("INFO memory failed");
    }
    std::size_t at = info.find("used_memory:");
    return at == std::string::npos ? 0 : std::strtoll(info.c_str() + at + 12, nullptr, 10);
}

void redisOk(Wire& w, const std::string& command) {
    w.send(command);
    std::string text;
    char t = w.readResp(&text);
    if (t == '-') {
        throw std::runtime_error("Redis: " + text);
    }
}

struct Player {
    std::string id;
    std::int64_t value;
};

} // namespace

int main(int argc, char** argv) {
    std::size_t players = 1'000'000;
    double seconds = 5;
    std::string database, serviceBinary = defaultServiceBinary();
    unsigned short redisRank = 0, redisDurable = 0;
    int threads = 0;
    std::string only;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto next = [&]() -> std::string {
            if (i + 1 >= argc) {
                throw std::invalid_argument(a + " needs a value");
            }
            return argv[++i];
        };
        if (a == "--players") {
            players = std::stoul(next());
        } else if (a == "--seconds") {
            seconds = std::stod(next());
        } else if (a == "--database") {
            database = next();
        } else if (a == "--service") {
            serviceBinary = next();
        } else if (a == "--only") {
            only = next();
        } else if (a == "--threads") {
            threads = std::stoi(next());
        } else if (a == "--redis-rank") {
            redisRank = static_cast<unsigned short>(std::stoi(next()));
        } else if (a == "--redis-durable") {
            redisDurable = static_cast<unsigned short>(std::stoi(next()));
        } else {
            std::cout
                << "Usage: tarvolin_leaderboard_vs_redis_bench --redis-rank PORT --redis-durable PORT\n"
                   "         [--players N] [--seconds S] [--database URL] [--service BIN] [--threads N] "
                   "[--only TEXT]\n"
                   "  Run through bench/leaderboard-vs-redis.sh, which starts the two Redis servers:\n"
                   "  --redis-rank     a Redis without persistence, for rank look-ups and range loads\n"
                   "  --redis-durable  a Redis with appendfsync always, for durable score reports\n"
                   "  --players        players on both sides (default 1000000)\n"
                   "  --seconds        length of each measure on each side (default 5)\n"
                   "  --database       a postgresql:// URL; default a new SQLite file\n"
                   "  --threads        the service's --threads (default: its own)\n"
                   "  --only TEXT      only the measures whose name holds TEXT (rank, range, durable)\n";
            return a == "--help" ? 0 : 2;
        }
    }
    if (!redisRank || !redisDurable || players < 1000) {
        std::cerr << "tarvolin_leaderboard_vs_redis_bench: --redis-rank and --redis-durable are needed, and "
                     "at least 1000 players (--help)\n";
        return 2;
    }

    // The same players and scores on both sides: ids as the service makes them, scores with many ties.
    std::mt19937_64 rng(20261124);
    std::vector<Player> all(players);
    for (std::size_t i = 0; i < players; ++i) {
        char id[24];
        std::snprintf(id, sizeof id, "T%016" PRIx64, rng());
        all[i] = Player{id, static_cast<std::int64_t>(rng() % 2'000'000)};
    }
    // Probes at the top, the middle and the bottom of the service's order (ties: who was first), and the
    // reporters, who report new scores in the durable measure.
    std::vector<std::size_t> order(players);
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return all[a].value != all[b].value ? all[a].value > all[b].value : a < b;
    });
    const std::vector<std::pair<std::string, std::size_t>> probes{
        {"top", order.front()}, {"middle", order[players / 2]}, {"bottom", order.back()}};
    constexpr std::size_t kReporters = 64;

    BenchDatabase db(database);
    std::printf("leaderboard against Redis: %zu players, %.1f s a measure, %s\n", players, seconds,
                db.describe().c_str());
    auto began = Clock::now();
    std::vector<std::string> tokens(players);
    {
        auto store = db.open();
        constexpr std::size_t kChunk = 50'000;
        const std::int64_t now = systemMs();
        for (std::size_t base = 0; base < players; base += kChunk) {
            std::vector<store::Credentials> creds;
            std::vector<store::ScoreRecord> scores;
            for (std::size_t i = base; i < std::min(players, base + kChunk); ++i) {
                creds.push_back(
                    store::Credentials{store::PlayerRecord{all[i].id, "player " + std::to_string(i), now},
                                       "player " + std::to_string(i), "!"});
                scores.push_back(
                    store::ScoreRecord{all[i].id, all[i].value, 0, static_cast<std::int64_t>(i), now});
            }
            store->importPlayers(creds, scores);
        }
        std::vector<std::size_t> withToken;
        for (const auto& [name, p] : probes) {
            withToken.push_back(p);
        }
        for (std::size_t r = 0; r < kReporters; ++r) {
            withToken.push_back(order[r * (players / kReporters)]);
        }
        for (std::size_t p : withToken) {
            tokens[p] = randomHex(rng, 64);
            store->addToken(net::Api::tokenKey(tokens[p]), all[p].id, now, now + 24LL * 3600 * 1000);
        }
    }
    std::printf("service database filled in %.1f s\n", secondsSince(began));

    began = Clock::now();
    const std::int64_t redisBefore = redisUsedMemory(redisRank);
    for (unsigned short port : {redisRank, redisDurable}) {
        Wire w(port);
        redisOk(w, resp({"DEL", "leaderboard"}));
        constexpr std::size_t kChunk = 1000;
        for (std::size_t base = 0; base < players; base += kChunk) {
            std::string cmd;
            std::size_t n = std::min(players, base + kChunk) - base;
            cmd = "*" + std::to_string(2 + 2 * n) + "\r\n$4\r\nZADD\r\n$11\r\nleaderboard\r\n";
            for (std::size_t i = base; i < base + n; ++i) {
                std::string v = std::to_string(all[i].value);
                cmd += "$" + std::to_string(v.size()) + "\r\n" + v + "\r\n$" +
                       std::to_string(all[i].id.size()) + "\r\n" + all[i].id + "\r\n";
            }
            redisOk(w, cmd);
        }
    }
    const std::int64_t redisSet = redisUsedMemory(redisRank) - redisBefore;
    std::printf("Redis filled in %.1f s\n", secondsSince(began));

    // The rank index as the service builds it at its start, in this process, where its memory can be seen.
    double indexMiB = 0, rebuildSeconds = 0;
    std::int64_t indexed = 0;
    {
        auto store = db.open();
        net::ApiConfig config;
        net::Api api(*store, config);
        malloc_trim(0);
        long before = memoryOf(0).residentKiB;
        auto t = Clock::now();
        api.loadLeaderboard();
        rebuildSeconds = secondsSince(t);
        malloc_trim(0);
        indexMiB = mib(memoryOf(0).residentKiB - before);
        indexed = api.leaderboardSize();
    }
    malloc_trim(0);
    std::printf("rank index: %" PRId64 " players rebuilt from storage in %.2f s\n\n", indexed,
                rebuildSeconds);

    ServiceProcess service(serviceBinary, db.serviceLocation(), db.folder() / "service.log", threads);
    const unsigned short sp = service.port();

    // The probes' ranks on both sides, and that both answer at all.
    for (const auto& [name, p] : probes) {
        Wire s(sp), r(redisRank);
        std::string body, rank;
        s.send(httpGet("/v1/leaderboard/me", tokens[p]));
        int status = s.readHttp(&body);
        r.send(resp({"ZREVRANK", "leaderboard", all[p].id}));
        r.readResp(&rank);
        if (status != 200) {
            throw std::runtime_error("the service answered " + std::to_string(status) + ": " + body);
        }
        auto v = json::parse(body);
        std::printf("%-6s player: rank %" PRId64
                    " in the service, %lld in Redis (which breaks ties by name)\n",
                    name.c_str(), v.at("local").at("rank").as_int64(), std::atoll(rank.c_str()) + 1);
    }
    std::printf("\n");
    printHeader();

    std::vector<Row> rows;
    auto measure = [&](const std::string& name, std::size_t conns, Goal goal, unsigned short redisPort,
                       const Op& serviceOp, const Op& redisOp, double rate = 0) {
        if (name.find(only) == std::string::npos) {
            return;
        }
        Row row{name, conns, runLoad(sp, conns, seconds, serviceOp, rate),
                runLoad(redisPort, conns, seconds, redisOp, rate), goal};
        printRow(row);
        rows.push_back(row);
    };
    auto answered = [](Wire& w, const std::string& request) {
        w.send(request);
        return w.readHttp(nullptr) == 200;
    };
    auto integerReply = [](Wire& w, const std::string& command) {
        w.send(command);
        return w.readResp(nullptr) == ':';
    };

    for (const auto& [where, p] : probes) {
        const std::string get = httpGet("/v1/leaderboard/me", tokens[p]);
        const std::string rank = resp({"ZREVRANK", "leaderboard", all[p].id});
        for (std::size_t conns : {1, 2, 8}) {
            Goal goal = conns <= 2 ? Goal{1.0, 0, 250} : Goal{};
            measure(
                "rank look-up, " + where, conns, goal, redisRank,
                [&](Wire& w, std::size_t, std::mt19937_64&) { return answered(w, get); },
                [&](Wire& w, std::size_t, std::mt19937_64&) { return integerReply(w, rank); });
        }
    }
    for (std::size_t conns : {1, 2, 8}) {
        measure(
            "range load of 100", conns, Goal{}, redisRank,
            [&](Wire& w, std::size_t, std::mt19937_64& r) {
                std::size_t from = 1 + r() % (players - 100);
                return answered(w, httpGet("/v1/leaderboard?from=" + std::to_string(from) + "&count=100",
                                           tokens[probes[1].second]));
            },
            [&](Wire& w, std::size_t, std::mt19937_64& r) {
                std::size_t from = r() % (players - 100);
                w.send(resp({"ZREVRANGE", "leaderboard", std::to_string(from), std::to_string(from + 99),
                             "WITHSCORES"}));
                return w.readResp(nullptr) == '*';
            });
    }
    const Op report = [&](Wire& w, std::size_t c, std::mt19937_64& r) {
        std::size_t p = order[c * (players / kReporters)];
        return answered(w, httpPost("/v1/leaderboard/scores", tokens[p],
                                    "{\"value\":" + std::to_string(r() % 2'000'000) + ",\"context\":0}"));
    };
    const Op zadd = [&](Wire& w, std::size_t c, std::mt19937_64& r) {
        std::size_t p = order[c * (players / kReporters)];
        return integerReply(w, resp({"ZADD", "leaderboard", std::to_string(r() % 2'000'000), all[p].id}));
    };
    // As fast as the connections go: how many reports a second the disk takes.
    for (std::size_t conns : {1, 8, 64}) {
        measure("durable score report", conns, conns >= 8 ? Goal{0, 5000, 0} : Goal{}, redisDurable, report,
                zadd);
    }
    // At 5,000 a second: how long a report waits for its answer at that rate.
    for (std::size_t conns : {8, 64}) {
        measure("durable report at 5000/s", conns, Goal{0, 0, 5000}, redisDurable, report, zadd, 5000);
    }

    // The goals are set for a million players; a larger run may take proportionally more.
    const double millions = std::max(1.0, static_cast<double>(players) / 1e6);
    std::printf(
        "\n%-30s %11.1f MiB of the service's index, %.1f MiB of Redis's sorted set: %.2fx  goal <= 120 "
        "MiB%s\n",
        ("memory at " + std::to_string(players) + " players").c_str(), indexMiB,
        static_cast<double>(redisSet) / 1048576.0,
        static_cast<double>(redisSet) / 1048576.0 / std::max(0.1, indexMiB),
        indexMiB <= 120.0 * millions ? "  met" : "  NOT MET");
    std::printf("%-30s %11.2f s   goal <= 2 s%s\n", "rank index rebuilt at start", rebuildSeconds,
                rebuildSeconds <= 2.0 * millions ? "  met" : "  NOT MET");
    bool allMet = indexMiB <= 120.0 * millions && rebuildSeconds <= 2.0 * millions;
    for (const Row& r : rows) {
        allMet = allMet && (!r.hasGoal() || r.met());
    }
    std::printf("%s\n", allMet ? "every goal met" : "some goals NOT MET");
    service.stop();
    return allMet ? 0 : 1;
}
