// Fills a leaderboard with many players straight through the store, starts the service on loopback, and
// measures score reports, rank look-ups at the top, middle and bottom, and range loads over HTTP keep-alive.
#include "net/api.h"
#include "net/log.h"
#include "net/server.h"
#include "store/store.h"

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <boost/json.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
namespace json = boost::json;
using namespace tarvolin;
using Clock = std::chrono::steady_clock;

namespace {

double secondsSince(Clock::time_point t) {
    return std::chrono::duration<double>(Clock::now() - t).count();
}

// Resident memory of this process in MiB.
double residentMiB() {
    std::FILE* f = std::fopen("/proc/self/statm", "r");
    long pages = 0, resident = 0;
    if (f) {
        if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) {
            resident = 0;
        }
        std::fclose(f);
    }
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

class Client {
public:
    explicit Client(unsigned short port) : stream_(io_) {
        stream_.connect(asio::ip::tcp::endpoint(asio::ip::make_address("127.0.0.1"), port));
    }

    json::value call(http::verb verb, const std::string& target, const std::string& token,
                     const std::string& body = {}) {
        http::request<http::string_body> req{verb, target, 11};
        req.set(http::field::host, "127.0.0.1");
        if (!token.empty()) {
            req.set(http::field::authorization, "Bearer " + token);
        }
        req.body() = body;
        req.keep_alive(true);
        req.prepare_payload();
        http::write(stream_, req);
        http::response<http::string_body> res;
        http::read(stream_, buffer_, res);
        if (res.result_int() >= 300) {
            throw std::runtime_error(target + " answered " + std::to_string(res.result_int()) + ": " +
                                     res.body());
        }
        return json::parse(res.body());
    }

private:
    asio::io_context io_;
    beast::tcp_stream stream_;
    beast::flat_buffer buffer_;
};

struct Figures {
    std::string name;
    std::size_t ops = 0;
    double seconds = 0;
    std::vector<double> latencies; // microseconds
};

// Runs op until maxOps or maxSeconds, recording each call's latency.
Figures measure(const std::string& name, std::size_t maxOps, double maxSeconds,
                const std::function<void(std::size_t)>& op) {
    Figures f{name, 0, 0, {}};
    f.latencies.reserve(maxOps);
    auto start = Clock::now();
    while (f.ops < maxOps && secondsSince(start) < maxSeconds) {
        auto t = Clock::now();
        op(f.ops);
        f.latencies.push_back(secondsSince(t) * 1e6);
        ++f.ops;
    }
    f.seconds = secondsSince(start);
    return f;
}

void print(const Figures& f) {
    std::vector<double> l = f.latencies;
    std::sort(l.begin(), l.end());
    auto pct = [&](double p) {
        return l.empty()
                   ? 0.0
                   : l[std::min(l.size() - 1, static_cast<std::size_t>(p * static_cast<double>(l.size())))];
    };
    std::printf("%-34s %8zu ops %9.0f ops/s   p50 %8.1f us   p99 %8.1f us\n", f.name.c_str(), f.ops,
                static_cast<double>(f.ops) / f.seconds, pct(0.50), pct(0.99));
}

} // namespace

int main(int argc, char** argv) {
    std::size_t players = 1'000'000;
    std::string database;
    double seconds = 5;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--players" && i + 1 < argc) {
            players = std::stoul(argv[++i]);
        } else if (a == "--database" && i + 1 < argc) {
            database = argv[++i];
        } else if (a == "--seconds" && i + 1 < argc) {
            seconds = std::stod(argv[++i]);
        } else {
            std::cout
                << "Usage: tarvolin_leaderboard_bench [--players N] [--database LOCATION] [--seconds S]\n"
                   "  --players   players in the leaderboard (default 1000000)\n"
                   "  --database  an empty database; default a new SQLite file in the temporary folder\n"
                   "  --seconds   longest time for each measurement (default 5)\n";
            return a == "--help" ? 0 : 2;
        }
    }
    std::filesystem::path dir;
    if (database.empty()) {
        dir = std::filesystem::temp_directory_path() / ("tarvolin-bench-" + std::to_string(::getpid()));
        std::filesystem::create_directories(dir);
        database = (dir / "bench.db").string();
    }

    auto store = store::makeSqlStore(store::openDatabase(database));
    store->migrate();

    // The fill goes straight to storage in batches; the scores have many ties, as real ones do.
    std::mt19937_64 rng(7);
    auto start = Clock::now();
    constexpr std::size_t kChunk = 50'000;
    for (std::size_t base = 0; base < players; base += kChunk) {
        std::vector<store::Credentials> creds;
        std::vector<store::ScoreRecord> scores;
        for (std::size_t i = base; i < std::min(players, base + kChunk); ++i) {
            char id[24];
            std::snprintf(id, sizeof id, "B%015zu", i);
            creds.push_back(store::Credentials{store::PlayerRecord{id, "bench" + std::to_string(i), 0},
                                               "bench" + std::to_string(i), "!"});
            scores.push_back(store::ScoreRecord{id, static_cast<std::int64_t>(rng() % 2'000'000) + 1000, 0,
                                                static_cast<std::int64_t>(i), 0});
        }
        store->importPlayers(creds, scores);
    }
    std::printf("fill: %zu players with scores stored in %.1f s\n", players, secondsSince(start));

    net::ApiConfig config;
    config.requestsPerSecond = 0;
    net::Api api(*store, config);
    double before = residentMiB();
    start = Clock::now();
    api.loadLeaderboard();
    std::printf("rank index rebuilt from storage: %lld players in %.2f s, %.0f MiB of memory\n",
                static_cast<long long>(api.leaderboardSize()), secondsSince(start), residentMiB() - before);

    net::Logger log(net::LogLevel::Warn);
    net::ServerConfig sc;
    sc.address = "127.0.0.1";
    sc.port = 0;
    sc.threads = 2;
    net::Server server(api, sc, log);
    unsigned short port = server.start();

    Client client(port);
    auto signUp = [&](const std::string& name) {
        json::value r =
            client.call(http::verb::post, "/v1/accounts", "",
                        json::serialize(json::object{{"displayName", name}, {"password", "bench password"}}));
        return std::string(r.at("token").as_string());
    };
    std::string top = signUp("bench-top"), middle = signUp("bench-middle"), bottom = signUp("bench-bottom"),
                reporter = signUp("bench-reporter");
    auto put = [&](const std::string& token, std::int64_t value) {
        client.call(http::verb::post, "/v1/leaderboard/scores", token,
                    json::serialize(json::object{{"value", value}, {"context", 0}}));
    };
    put(top, 10'000'000);
    put(middle, 1'001'000); // about half of the random scores lie above
    put(bottom, 0);
    auto rankOf = [&](const std::string& token) {
        return client.call(http::verb::get, "/v1/leaderboard/me", token).at("local").at("rank").as_int64();
    };
    std::printf("ranks: top %lld, middle %lld, bottom %lld of %lld\n\n", static_cast<long long>(rankOf(top)),
                static_cast<long long>(rankOf(middle)), static_cast<long long>(rankOf(bottom)),
                static_cast<long long>(api.leaderboardSize()));

    std::vector<Figures> all;
    all.push_back(measure("score report (POST, 1 client)", 1'000'000, seconds, [&](std::size_t i) {
        put(reporter, static_cast<std::int64_t>(rng() % 2'000'000) + static_cast<std::int64_t>(i % 2));
    }));
    for (const auto& [name, token] : std::vector<std::pair<std::string, std::string>>{
             {"top", top}, {"middle", middle}, {"bottom", bottom}}) {
        all.push_back(measure("rank look-up at the " + name, 1'000'000, seconds, [&, t = token](std::size_t) {
            client.call(http::verb::get, "/v1/leaderboard/me", t);
        }));
    }
    auto total = static_cast<std::int64_t>(api.leaderboardSize());
    for (const auto& [name, from] : std::vector<std::pair<std::string, std::int64_t>>{
             {"top", 1}, {"middle", total / 2}, {"bottom", std::max<std::int64_t>(1, total - 99)}}) {
        all.push_back(
            measure("range load of 100 at the " + name, 1'000'000, seconds, [&, f = from](std::size_t) {
                client.call(http::verb::get,
                            "/v1/leaderboard?scope=global&from=" + std::to_string(f) + "&count=100", middle);
            }));
    }
    for (const auto& f : all) {
        print(f);
    }

    // Two clients at once, the machine's share of parallel work.
    std::vector<std::thread> threads;
    std::vector<Figures> parallel(2);
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&, t] {
            Client c(port);
            parallel[static_cast<std::size_t>(t)] =
                measure("rank look-up, 2 clients", 1'000'000, seconds, [&](std::size_t) {
                    c.call(http::verb::get, "/v1/leaderboard/me", t == 0 ? middle : bottom);
                });
        });
    }
    for (auto& t : threads) {
        t.join();
    }
    std::printf("%-34s %8zu ops %9.0f ops/s (both clients together)\n", "rank look-up, 2 clients",
                parallel[0].ops + parallel[1].ops,
                static_cast<double>(parallel[0].ops) / parallel[0].seconds +
                    static_cast<double>(parallel[1].ops) / parallel[1].seconds);

    // Look-ups while another client reports: readers do not wait for the writer's commits.
    {
        std::vector<Figures> mixed(2);
        std::thread writer([&] {
            Client c(port);
            std::mt19937_64 wrng(11);
            mixed[0] = measure("  reports beside look-ups", 1'000'000, seconds, [&](std::size_t) {
                c.call(
                    http::verb::post, "/v1/leaderboard/scores", reporter,
                    json::serialize(json::object{{"value", static_cast<std::int64_t>(wrng() % 2'000'000)}}));
            });
        });
        std::thread reader([&] {
            Client c(port);
            mixed[1] = measure("  rank look-ups beside reports", 1'000'000, seconds,
                               [&](std::size_t) { c.call(http::verb::get, "/v1/leaderboard/me", middle); });
        });
        writer.join();
        reader.join();
        std::printf("mixed load, 2 clients:\n");
        print(mixed[0]);
        print(mixed[1]);
    }

    server.shutdown();
    server.wait();
    if (!dir.empty()) {
        store.reset();
        std::filesystem::remove_all(dir);
    }
    return 0;
}
