// The leaderboard's in-memory rank index on its own: resident memory at a million players, the bulk build
// done at start, and the cost of find, range and put at the top, in the middle and at the bottom.
#include "bench_support.h"

#include "logic/rank_index.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

using tarvolin::bench::Clock;
using tarvolin::bench::secondsSince;
using tarvolin::logic::RankIndex;

namespace {

struct Record {
    std::string playerId;
    std::int64_t value = 0;
    std::int64_t context = 0;
    std::int64_t reachedAt = 0;
    std::int64_t updatedAt = 0;
};

// Resident memory of this process in MiB.
double residentMiB() {
    return tarvolin::bench::mib(tarvolin::bench::memoryOf(0).residentKiB);
}

// Players as the service names them ("T" and 16 hex digits), values with many ties (about 20 players on
// each value, some negative), reaching times in microseconds with a few ties of their own.
std::vector<Record> makeRecords(std::size_t players, std::uint64_t seed) {
    std::mt19937_64 rng(seed);
    std::vector<Record> out(players);
    for (auto& r : out) {
        char id[20];
        std::snprintf(id, sizeof id, "T%016llx", static_cast<unsigned long long>(rng()));
        r.playerId = id;
        auto spread = static_cast<std::uint64_t>(std::max<std::size_t>(players / 20, 1));
        r.value = static_cast<std::int64_t>(rng() % spread) - static_cast<std::int64_t>(spread / 50);
        r.context = static_cast<std::int64_t>(rng() % 1000);
        r.reachedAt = 1'700'000'000'000'000 + static_cast<std::int64_t>(rng() % 1'000'000'000);
        r.updatedAt = r.reachedAt / 1000;
    }
    return out;
}

// Runs fn in a child process, so that each measurement of memory starts from the same clean heap.
bool inChild(const std::function<void()>& fn) {
    std::fflush(stdout);
    pid_t pid = ::fork();
    if (pid < 0) {
        std::perror("fork");
        return false;
    }
    if (pid == 0) {
        fn();
        std::fflush(stdout);
        std::_Exit(0);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Nanoseconds per call of fn(i) for i = 0, 1, ... over about the given time.
double nsPerCall(double seconds, const std::function<void(std::size_t)>& fn) {
    std::size_t calls = 0;
    auto start = Clock::now();
    double elapsed = 0;
    do {
        for (std::size_t k = 0; k < 1000; ++k, ++calls) {
            fn(calls);
        }
        elapsed = secondsSince(start);
    } while (elapsed < seconds);
    return elapsed * 1e9 / static_cast<double>(calls);
}

} // namespace

int main(int argc, char** argv) {
    std::size_t players = 1'000'000;
    double seconds = 1;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if (a == "--players" && i + 1 < argc) {
            players = std::stoul(argv[++i]);
        } else if (a == "--seconds" && i + 1 < argc) {
            seconds = std::stod(argv[++i]);
        } else {
            std::cout << "Usage: tarvolin_rank_index_bench [--players N] [--seconds S]\n"
                         "  --players  players in the index (default 1000000)\n"
                         "  --seconds  time for each measurement of speed (default 1)\n";
            return a == "--help" ? 0 : 2;
        }
    }
    if (players < 1000) {
        std::cerr << "--players must be at least 1000\n";
        return 2;
    }
    std::vector<Record> records = makeRecords(players, 11);
    std::printf("%zu players, %zu distinct values\n", players, [&] {
        std::vector<std::int64_t> v;
        for (const auto& r : records) {
            v.push_back(r.value);
        }
        std::sort(v.begin(), v.end());
        return static_cast<std::size_t>(std::unique(v.begin(), v.end()) - v.begin());
    }());

    bool ok = inChild([&] {
        double before = residentMiB();
        RankIndex index;
        for (const auto& r : records) {
            index.put(r.playerId, r.value, r.context, r.reachedAt, r.updatedAt);
        }
        std::printf("filled by put one at a time: %.1f MiB resident growth, %.1f MiB counted\n",
                    residentMiB() - before, static_cast<double>(index.memoryBytes()) / (1024.0 * 1024.0));
    });

    ok =
        inChild([&] {
            double before = residentMiB();
            auto start = Clock::now();
            RankIndex index;
            index.assign(records);
            double built = secondsSince(start);
            std::printf("bulk build: %.3f s, %.1f MiB resident growth, %.1f MiB counted\n", built,
                        residentMiB() - before, static_cast<double>(index.memoryBytes()) / (1024.0 * 1024.0));
            if (index.size() != static_cast<std::int64_t>(players)) {
                std::printf("FAILED: %lld entries after the build\n", static_cast<long long>(index.size()));
                std::_Exit(1);
            }

            auto n = static_cast<std::int64_t>(players);
            struct Band {
                const char* name;
                std::int64_t first;
            };
            const Band bands[] = {{"top", 1}, {"middle", n / 2}, {"bottom", n - 999}};
            std::printf("%-8s %12s %16s %12s\n", "", "find ns", "range(100) ns", "put ns");
            std::int64_t clock = 1'800'000'000'000'000;
            for (const Band& band : bands) {
                // A thousand players around the band; the puts move them within it.
                std::vector<tarvolin::logic::RankedScore> around = index.range(band.first, 1000);
                double find = nsPerCall(seconds, [&](std::size_t i) {
                    auto s = index.find(around[i % around.size()].playerId);
                    if (!s) {
                        std::_Exit(1);
                    }
                });
                double range = nsPerCall(seconds, [&](std::size_t i) {
                    auto page = index.range(band.first + static_cast<std::int64_t>(i % 900), 100);
                    if (page.size() != 100) {
                        std::_Exit(1);
                    }
                });
                std::int64_t low = around.back().value, high = around.front().value;
                std::mt19937_64 rng(band.first);
                double put = nsPerCall(seconds, [&](std::size_t i) {
                    const auto& p = around[i % around.size()];
                    auto span = static_cast<std::uint64_t>(high - low + 1);
                    ++clock;
                    index.put(p.playerId, low + static_cast<std::int64_t>(rng() % span), p.context, clock,
                              clock / 1000);
                });
                std::printf("%-8s %12.0f %16.0f %12.0f\n", band.name, find, range, put);
            }
            std::mt19937_64 rng(5);
            double randomFind = nsPerCall(seconds, [&](std::size_t) {
                if (!index.find(records[rng() % records.size()].playerId)) {
                    std::_Exit(1);
                }
            });
            double randomRange = nsPerCall(seconds, [&](std::size_t) {
                auto first = 1 + static_cast<std::int64_t>(rng() % static_cast<std::uint64_t>(n - 99));
                if (index.range(first, 100).size() != 100) {
                    std::_Exit(1);
                }
            });
            double randomPut = nsPerCall(seconds, [&](std::size_t) {
                const auto& r = records[rng() % records.size()];
                ++clock;
                index.put(r.playerId, r.value + static_cast<std::int64_t>(rng() % 100) - 50, r.context, clock,
                          clock / 1000);
            });
            std::printf("anywhere (random players and ranks, cold caches): find %.0f ns, range(100) %.0f ns, "
                        "put %.0f ns\n",
                        randomFind, randomRange, randomPut);
        }) &&
        ok;
    return ok ? 0 : 1;
}
