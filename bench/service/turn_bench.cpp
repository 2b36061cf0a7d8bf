// Turn delivery under load: many players with their event WebSockets open and a match or more each, and a
// steady stream of turns ended by them. Measures the time from a POST /v1/matches/{id}/turn going out to
// the "turn" event reaching the other player's socket, with one service instance, or with two on one
// PostgreSQL database where the two players of every match are on different instances.
#include "bench_support.h"

#include <cstdio>
#include <iostream>
#include <string>

using namespace tarvolin::bench;

namespace {

struct Options {
    std::size_t players = 2000;
    std::size_t matchesPerPlayer = 1;
    std::size_t instances = 1;
    std::size_t connections = 32;
    int serviceThreads = 0;
    TurnLoadConfig load;
    std::string database;
    std::string service = defaultServiceBinary();
};

void usage(std::ostream& out) {
    out << "Usage: tarvolin_turn_bench [OPTIONS]\n"
           "  --players N             players, each with an event WebSocket (default 2000, even)\n"
           "  --matches-per-player K  matches each player sits in, 1 to 10 (default 1): N*K/2 matches\n"
           "  --rate R                turns ended a second, all matches together (default 100)\n"
           "  --seconds S             how long turns are ended (default 30)\n"
           "  --warmup S              first seconds left out of the figures (default 3)\n"
           "  --data-bytes B          match data sent with each turn (default 512)\n"
           "  --connections C         keep-alive HTTP connections to each instance (default 32)\n"
           "  --instances 1|2         service instances; 2 needs PostgreSQL and seats the two players of\n"
           "                          every match on different instances (default 1)\n"
           "  --database URL          a postgresql:// URL; the run works in a new schema, dropped at the\n"
           "                          end (default: a new SQLite file in the temporary folder)\n"
           "  --service PATH          the tarvolin-service binary (default: beside this program)\n"
           "  --service-threads T     the service's --threads (default: its own default)\n";
}

} // namespace

int main(int argc, char** argv) {
    Options o;
    try {
        for (int i = 1; i < argc; ++i) {
            const std::string a = argv[i];
            auto value = [&]() -> std::string {
                if (i + 1 >= argc) {
                    throw std::invalid_argument(a + " needs a value");
                }
                return argv[++i];
            };
            if (a == "--players") {
                o.players = std::stoul(value());
            } else if (a == "--matches-per-player") {
                o.matchesPerPlayer = std::stoul(value());
            } else if (a == "--rate") {
                o.load.turnsPerSecond = std::stod(value());
            } else if (a == "--seconds") {
                o.load.seconds = std::stod(value());
            } else if (a == "--warmup") {
                o.load.warmupSeconds = std::stod(value());
            } else if (a == "--data-bytes") {
                o.load.dataBytes = std::stoul(value());
            } else if (a == "--connections") {
                o.connections = std::stoul(value());
            } else if (a == "--instances") {
                o.instances = std::stoul(value());
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
        // Each player opens or joins K matches; the service allows a burst of 10 new matches a player.
        if (o.players < 2 || o.players % 2 != 0 || o.matchesPerPlayer < 1 || o.matchesPerPlayer > 10 ||
            o.instances < 1 || o.instances > 2 || o.load.turnsPerSecond <= 0) {
            throw std::invalid_argument("players must be even, matches per player 1 to 10, instances 1 or 2");
        }
        if (o.instances == 2 && o.database.empty()) {
            throw std::invalid_argument("two instances need a PostgreSQL --database");
        }
    } catch (const std::exception& e) {
        std::cerr << "tarvolin_turn_bench: " << e.what() << "\n\n";
        usage(std::cerr);
        return 2;
    }

    try {
        raiseAndPrintOpenFileLimit();

        BenchDatabase db(o.database);
        std::vector<BenchPlayer> players = fillPlayersAndReport(db, o.players);

        std::vector<std::unique_ptr<ServiceProcess>> services =
            startServices(o.service, db, o.instances, o.serviceThreads);
        // Player p is at instance p % instances: with two, the even players on one and the odd on the other.
        std::vector<std::size_t> instanceOf(players.size());
        std::vector<tcp::endpoint> endpointOf(players.size());
        for (std::size_t p = 0; p < players.size(); ++p) {
            instanceOf[p] = p % o.instances;
            endpointOf[p] = services[instanceOf[p]]->endpoint();
        }

        asio::io_context io;
        TurnLoad* load = nullptr;
        const EventSocket::Handler dispatch = [&](std::size_t player, const EventMessage& e,
                                                  Clock::time_point t) {
            if (load) {
                load->onEvent(player, e, t);
            }
        };
        std::vector<std::shared_ptr<EventSocket>> sockets;
        for (std::size_t p = 0; p < players.size(); ++p) {
            sockets.push_back(std::make_shared<EventSocket>(io, p, players[p].token, &dispatch));
        }
        auto start = Clock::now();
        std::size_t failedSockets = openSockets(io, sockets, endpointOf, 200);
        std::printf("event sockets: %zu open in %.1f s, %zu failed\n", sockets.size() - failedSockets,
                    secondsSince(start), failedSockets);
        if (failedSockets > 0) {
            return 1;
        }

        // Round r pairs even player 2i, who opens, with odd player 2(i+r)+1, who joins: different partners
        // in each round, and with two instances always one player on each.
        const std::size_t half = players.size() / 2;
        std::vector<std::pair<std::size_t, std::size_t>> pairs;
        for (std::size_t r = 0; r < o.matchesPerPlayer; ++r) {
            for (std::size_t i = 0; i < half; ++i) {
                pairs.emplace_back(2 * i, 2 * ((i + r) % half) + 1);
            }
        }
        start = Clock::now();
        std::vector<LoadMatch> matches = matchPairs(players, pairs, endpointOf);
        std::printf("matches: %zu in play, seated by automatic matching one pair at a time in %.1f s\n",
                    matches.size(), secondsSince(start));

        std::vector<std::unique_ptr<HttpPool>> pools;
        std::vector<HttpPool*> poolOf;
        for (const auto& s : services) {
            pools.push_back(std::make_unique<HttpPool>(io, s->endpoint(), o.connections));
            poolOf.push_back(pools.back().get());
        }
        TurnLoad turns(io, players, instanceOf, poolOf, std::move(matches), o.load);
        load = &turns;
        std::printf("ending %.0f turns a second for %.0f s (the first %.0f s left out), %zu bytes of match "
                    "data each\n\n",
                    o.load.turnsPerSecond, o.load.seconds, o.load.warmupSeconds, o.load.dataBytes);
        std::fflush(stdout);
        std::vector<std::pair<std::string, pid_t>> watched;
        for (std::size_t i = 0; i < services.size(); ++i) {
            watched.emplace_back(services.size() == 1 ? "service" : "service " + std::to_string(i),
                                 services[i]->pid());
        }
        watched.emplace_back("this client", 0);
        CpuWatch cpu(watched);
        TurnFigures f = turns.run();
        const std::string cpuUse = cpu.report();
        load = nullptr;

        std::size_t stillOpen = 0;
        for (const auto& s : sockets) {
            stillOpen += s->isOpen() ? 1 : 0;
        }
        printTurnFigures(o.instances == 2 ? "turns across two instances (every turn crosses to the other one)"
                                          : "turns on one instance",
                         f);
        std::printf("  CPU over the load: %s\n", cpuUse.c_str());
        std::printf("  event sockets still open at the end: %zu of %zu\n", stillOpen, sockets.size());
        for (std::size_t i = 0; i < services.size(); ++i) {
            Memory m = memoryOf(services[i]->pid());
            std::printf("  service instance %zu: resident %.0f MiB, peak %.0f MiB\n", i, mib(m.residentKiB),
                        mib(m.peakKiB));
        }
        Memory self = memoryOf(0);
        std::printf("  this client: resident %.0f MiB\n", mib(self.residentKiB));

        for (auto& s : sockets) {
            s->close();
        }
        for (auto& s : services) {
            s->stop();
        }
        return f.failed == 0 && f.missing == 0 ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "tarvolin_turn_bench: " << e.what() << "\n";
        return 1;
    }
}
