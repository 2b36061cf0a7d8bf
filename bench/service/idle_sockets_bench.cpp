// Many idle event WebSockets on one service instance: how many it holds, its resident memory with them
// open, how fast /healthz answers beside them, and how fast a turn still reaches its player while some of
// the connected players play.
#include "bench_support.h"

#include <cstdio>
#include <iostream>
#include <string>

using namespace tarvolin::bench;

namespace {

struct Options {
    std::size_t sockets = 19000;
    std::size_t turnPlayers = 400;
    std::size_t probes = 200;
    std::chrono::milliseconds probeInterval{20};
    std::size_t parallel = 200;
    double idleSeconds = 5;
    int serviceThreads = 0;
    TurnLoadConfig load;
    std::string database;
    std::string service = defaultServiceBinary();
};

void usage(std::ostream& out) {
    out << "Usage: tarvolin_idle_sockets_bench [OPTIONS]\n"
           "  --sockets N            event WebSockets, one per player (default 19000)\n"
           "  --turn-players M       of those players, how many play: M/2 matches (default 400, even)\n"
           "  --turns T              turns among them (default 500)\n"
           "  --rate R               turns a second (default 50)\n"
           "  --probes P             /healthz probes in each phase (default 200)\n"
           "  --probe-interval MS    between probes (default 20)\n"
           "  --idle-seconds S       the sockets stay idle this long before memory is read (default 5)\n"
           "  --parallel-handshakes H  WebSocket handshakes under way at once (default 200)\n"
           "  --database URL         a postgresql:// URL; the run works in a new schema, dropped at the end\n"
           "                         (default: a new SQLite file in the temporary folder)\n"
           "  --service PATH         the tarvolin-service binary (default: beside this program)\n"
           "  --service-threads T    the service's --threads (default: its own default)\n";
}

// The service's own count of open event sockets, from /metrics.
long openSocketsMetric(const tcp::endpoint& ep) {
    HttpAnswer a = SyncHttp(ep).call(http::verb::get, "/metrics");
    const std::string key = "\ntarvolin_websockets_open ";
    std::size_t at = a.body.find(key);
    return at == std::string::npos ? -1 : std::stol(a.body.substr(at + key.size()));
}

// Runs health probes on io until they are done, while whatever else io carries goes on.
void runProbes(asio::io_context& io, const tcp::endpoint& ep, const Options& o, const std::string& title) {
    HealthProbe probe(io, ep, o.probeInterval, o.probes);
    probe.start();
    runUntil(
        io, [&] { return probe.finished(); }, std::chrono::minutes(5));
    std::printf("GET /healthz, %s:\n  %s, failed %zu\n", title.c_str(), probe.latencies().summary().c_str(),
                probe.failed());
}

} // namespace

int main(int argc, char** argv) {
    Options o;
    o.load.turnsPerSecond = 50;
    o.load.maxTurns = 500;
    o.load.seconds = 3600;
    o.load.warmupSeconds = 0;
    try {
        for (int i = 1; i < argc; ++i) {
            const std::string a = argv[i];
            auto value = [&]() -> std::string {
                if (i + 1 >= argc) {
                    throw std::invalid_argument(a + " needs a value");
                }
                return argv[++i];
            };
            if (a == "--sockets") {
                o.sockets = std::stoul(value());
            } else if (a == "--turn-players") {
                o.turnPlayers = std::stoul(value());
            } else if (a == "--turns") {
                o.load.maxTurns = std::stoul(value());
            } else if (a == "--rate") {
                o.load.turnsPerSecond = std::stod(value());
            } else if (a == "--probes") {
                o.probes = std::stoul(value());
            } else if (a == "--probe-interval") {
                o.probeInterval = std::chrono::milliseconds(std::stol(value()));
            } else if (a == "--idle-seconds") {
                o.idleSeconds = std::stod(value());
            } else if (a == "--parallel-handshakes") {
                o.parallel = std::stoul(value());
            } else if (a == "--database") {
                o.database = value();
            } else if (a == "--service") {
                o.service = value();
            } else if (a == "--service-threads") {
                o.serviceThreads = std::stoi(value());
            } else if (a == "--help") {
                usage(std::cout);
                return 0;
            } else {
                throw std::invalid_argument("unknown option " + a);
            }
        }
        if (o.turnPlayers % 2 != 0 || o.turnPlayers > o.sockets || o.load.turnsPerSecond <= 0 ||
            o.parallel == 0) {
            throw std::invalid_argument("turn players must be even and at most the sockets");
        }
    } catch (const std::exception& e) {
        std::cerr << "tarvolin_idle_sockets_bench: " << e.what() << "\n\n";
        usage(std::cerr);
        return 2;
    }

    try {
        // The client holds one descriptor per socket too, besides a few of its own.
        const std::uint64_t soft = raiseAndPrintOpenFileLimit();
        constexpr std::size_t kReserve = 64;
        if (o.sockets + kReserve > soft) {
            std::size_t possible = soft > kReserve ? soft - kReserve : 0;
            std::printf("the client can hold only %zu sockets under its limit: measuring with those\n",
                        possible);
            o.sockets = possible;
            o.turnPlayers = std::min(o.turnPlayers, o.sockets - o.sockets % 2);
        }

        BenchDatabase db(o.database);
        std::vector<BenchPlayer> players = fillPlayersAndReport(db, o.sockets);

        ServiceProcess service(o.service, db.serviceLocation(), db.folder() / "service.log",
                               o.serviceThreads);
        auto [serviceSoft, serviceHard] = openFileLimitsOf(service.pid());
        std::printf("open files of the service: soft %llu, hard %llu\n",
                    static_cast<unsigned long long>(serviceSoft),
                    static_cast<unsigned long long>(serviceHard));
        Memory before = memoryOf(service.pid());
        std::printf("service before any socket: resident %.1f MiB\n", mib(before.residentKiB));

        asio::io_context io;
        TurnLoad* load = nullptr;
        const EventSocket::Handler dispatch = [&](std::size_t player, const EventMessage& e,
                                                  Clock::time_point t) {
            if (load) {
                load->onEvent(player, e, t);
            }
        };
        std::vector<std::shared_ptr<EventSocket>> sockets;
        sockets.reserve(players.size());
        for (std::size_t p = 0; p < players.size(); ++p) {
            sockets.push_back(std::make_shared<EventSocket>(io, p, players[p].token, &dispatch));
        }
        const std::vector<tcp::endpoint> endpointOf(players.size(), service.endpoint());
        auto start = Clock::now();
        std::size_t failed = openSockets(io, sockets, endpointOf, o.parallel);
        double openSeconds = secondsSince(start);
        std::printf("event sockets: %zu opened in %.1f s (%.0f a second), %zu failed\n",
                    sockets.size() - failed, openSeconds,
                    static_cast<double>(sockets.size() - failed) / openSeconds, failed);

        // Idle: nothing but the server's own pings would cross them.
        runUntil(
            io, [] { return false; },
            std::chrono::milliseconds(static_cast<long long>(o.idleSeconds * 1000)));
        Memory idle = memoryOf(service.pid());
        long held = openSocketsMetric(service.endpoint());
        std::printf("the service counts %ld open event sockets; resident %.1f MiB (%.1f KiB a socket above "
                    "the start)\n",
                    held, mib(idle.residentKiB),
                    held > 0 ? static_cast<double>(idle.residentKiB - before.residentKiB) /
                                   static_cast<double>(held)
                             : 0.0);
        std::fflush(stdout);
        runProbes(io, service.endpoint(), o, "every socket idle");

        // Some of the connected players play: matches among the first M of them.
        std::vector<std::pair<std::size_t, std::size_t>> pairs;
        for (std::size_t i = 0; i + 1 < o.turnPlayers; i += 2) {
            pairs.emplace_back(i, i + 1);
        }
        start = Clock::now();
        std::vector<LoadMatch> matches = matchPairs(players, pairs, endpointOf);
        std::printf("matches: %zu among the first %zu players in %.1f s\n", matches.size(), o.turnPlayers,
                    secondsSince(start));
        HttpPool pool(io, service.endpoint(), 16);
        TurnLoad turns(io, players, std::vector<std::size_t>(players.size(), 0), {&pool}, std::move(matches),
                       o.load);
        load = &turns;
        // The probes run beside the turns, on the same client thread.
        HealthProbe probe(io, service.endpoint(), o.probeInterval, o.probes);
        probe.start();
        CpuWatch cpu({{"service", service.pid()}, {"this client", 0}});
        TurnFigures f = turns.run();
        const std::string cpuUse = cpu.report();
        runUntil(
            io, [&] { return probe.finished(); }, std::chrono::minutes(5));
        load = nullptr;
        std::printf("GET /healthz, while turns are ended:\n  %s, failed %zu\n",
                    probe.latencies().summary().c_str(), probe.failed());
        char title[160];
        std::snprintf(title, sizeof title,
                      "turns among %zu connected players, %.0f a second, beside %zu open sockets",
                      o.turnPlayers, o.load.turnsPerSecond, sockets.size() - failed);
        printTurnFigures(title, f);
        std::printf("  CPU over the turns: %s\n", cpuUse.c_str());

        std::size_t stillOpen = 0;
        for (const auto& s : sockets) {
            stillOpen += s->isOpen() ? 1 : 0;
        }
        Memory after = memoryOf(service.pid());
        std::printf("at the end: %zu sockets still open (the service counts %ld); service resident %.1f MiB, "
                    "peak %.1f MiB; this client resident %.1f MiB\n",
                    stillOpen, openSocketsMetric(service.endpoint()), mib(after.residentKiB),
                    mib(after.peakKiB), mib(memoryOf(0).residentKiB));

        for (auto& s : sockets) {
            s->close();
        }
        service.stop();
        return failed == 0 && f.failed == 0 && f.missing == 0 ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "tarvolin_idle_sockets_bench: " << e.what() << "\n";
        return 1;
    }
}
