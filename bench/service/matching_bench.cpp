// Automatic matching at scale: many players each ask POST /v1/matches without recipients at the same time,
// over many connections. Reports the time and throughput, then reads every match back from the database to
// check that no player sits in two matches, and counts the pairs.
#include "bench_support.h"

#include <cstdio>
#include <iostream>
#include <map>
#include <set>
#include <string>

using namespace tarvolin::bench;
namespace match = tarvolin::logic::match;

namespace {

struct Options {
    std::size_t players = 10000;
    std::size_t connections = 100;
    std::size_t instances = 1;
    int serviceThreads = 0;
    std::string database;
    std::string service = defaultServiceBinary();
};

void usage(std::ostream& out) {
    out << "Usage: tarvolin_matching_bench [OPTIONS]\n"
           "  --players N          players who each ask for an automatic match once (default 10000)\n"
           "  --connections C      keep-alive HTTP connections to each instance, all busy (default 100)\n"
           "  --instances 1|2      service instances; 2 needs PostgreSQL, players alternate between them\n"
           "                       (default 1)\n"
           "  --database URL       a postgresql:// URL; the run works in a new schema, dropped at the end\n"
           "                       (default: a new SQLite file in the temporary folder)\n"
           "  --service PATH       the tarvolin-service binary (default: beside this program)\n"
           "  --service-threads T  the service's --threads (default: its own default)\n";
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
        if (o.players < 2 || o.connections < 1 || o.instances < 1 || o.instances > 2) {
            throw std::invalid_argument("at least 2 players and 1 connection; instances 1 or 2");
        }
        if (o.instances == 2 && o.database.empty()) {
            throw std::invalid_argument("two instances need a PostgreSQL --database");
        }
    } catch (const std::exception& e) {
        std::cerr << "tarvolin_matching_bench: " << e.what() << "\n\n";
        usage(std::cerr);
        return 2;
    }

    try {
        raiseAndPrintOpenFileLimit();
        BenchDatabase db(o.database);
        std::vector<BenchPlayer> players = fillPlayersAndReport(db, o.players);

        std::vector<std::unique_ptr<ServiceProcess>> services =
            startServices(o.service, db, o.instances, o.serviceThreads);

        // Every player asks once; the calls wait in each instance's queue for one of its connections.
        asio::io_context io;
        std::vector<std::unique_ptr<HttpPool>> pools;
        for (const auto& s : services) {
            pools.push_back(std::make_unique<HttpPool>(io, s->endpoint(), o.connections));
        }
        std::size_t answered = 0, joined = 0, opened = 0, refused = 0;
        std::map<unsigned, std::size_t> refusals;
        std::vector<std::string> firstRefusals;
        std::vector<Clock::time_point> sentAt(players.size());
        Samples latency;
        std::vector<std::pair<std::string, pid_t>> watched;
        for (std::size_t i = 0; i < services.size(); ++i) {
            watched.emplace_back(services.size() == 1 ? "service" : "service " + std::to_string(i),
                                 services[i]->pid());
        }
        watched.emplace_back("this client", 0);
        CpuWatch cpu(watched);
        auto start = Clock::now();
        Clock::time_point last = start;
        for (std::size_t p = 0; p < players.size(); ++p) {
            HttpCall call;
            call.verb = http::verb::post;
            call.target = "/v1/matches";
            call.token = players[p].token;
            call.body = "{}";
            call.sent = [&, p](Clock::time_point t) { sentAt[p] = t; };
            call.done = [&, p](const HttpAnswer& a, Clock::time_point t) {
                ++answered;
                last = t;
                latency.add(msBetween(sentAt[p], t));
                if (a.status == 200) {
                    ++joined;
                } else if (a.status == 201) {
                    ++opened;
                } else {
                    ++refused;
                    ++refusals[a.status];
                    if (firstRefusals.size() < 5) {
                        firstRefusals.push_back(a.status ? std::to_string(a.status) + " " + a.body : a.error);
                    }
                }
            };
            pools[p % o.instances]->submit(std::move(call));
        }
        runUntil(
            io, [&] { return answered == players.size(); }, std::chrono::minutes(30));
        const std::string cpuUse = cpu.report();
        const double seconds = msBetween(start, last) / 1000.0;
        std::printf("automatic matching: %zu players over %zu connection(s) to each of %zu instance(s)\n",
                    players.size(), o.connections, o.instances);
        std::printf(
            "  %.2f s, %.0f players a second; %zu joined a waiting match (200), %zu opened one (201), "
            "%zu refused\n",
            seconds, static_cast<double>(players.size()) / seconds, joined, opened, refused);
        std::printf("  answer time: %s\n", latency.summary().c_str());
        std::printf("  CPU: %s\n", cpuUse.c_str());
        for (const std::string& r : firstRefusals) {
            std::printf("  refused: %s\n", r.c_str());
        }
        pools.clear();
        for (auto& s : services) {
            s->stop();
        }

        // The database's word: every player's list of matches, and every match's seats.
        start = Clock::now();
        auto store = db.open();
        std::map<std::string, match::Match> matches;
        std::map<std::size_t, std::size_t> listSizes; // matches in a player's list → how many players
        std::vector<std::string> faults;
        for (const BenchPlayer& p : players) {
            std::vector<match::Match> list = store->matchesOf(p.id);
            ++listSizes[list.size()];
            if (list.size() > 1 && faults.size() < 10) {
                faults.push_back(p.id + " is listed in " + std::to_string(list.size()) + " matches");
            }
            for (match::Match& m : list) {
                matches.emplace(m.id, std::move(m));
            }
        }
        std::map<std::string, std::size_t> seatsOf; // player → seats held over all matches
        std::size_t pairs = 0, waiting = 0;
        for (const auto& [id, m] : matches) {
            const std::string& a = m.seats.at(0).playerId;
            const std::string& b = m.seats.at(1).playerId;
            if (a.empty()) {
                faults.push_back("match " + id + " has nobody in its first seat");
            }
            if (!a.empty() && a == b) {
                faults.push_back("match " + id + " seats " + a + " twice");
            }
            if (b.empty()) {
                ++waiting;
                if (m.status != match::Status::Matching) {
                    faults.push_back("match " + id + " has an empty seat but is not matching");
                }
            } else {
                ++pairs;
                if (m.status != match::Status::Open) {
                    faults.push_back("match " + id + " is full but not open");
                }
            }
            for (const std::string& s : {a, b}) {
                if (!s.empty()) {
                    ++seatsOf[s];
                }
            }
        }
        std::size_t doubleSeated = 0, unseated = 0;
        for (const BenchPlayer& p : players) {
            auto it = seatsOf.find(p.id);
            if (it == seatsOf.end()) {
                ++unseated;
            } else if (it->second > 1) {
                ++doubleSeated;
            }
        }
        if (joined != pairs) {
            faults.push_back(std::to_string(joined) + " players were told they joined, but " +
                             std::to_string(pairs) + " matches are full");
        }
        if (opened != matches.size()) {
            faults.push_back(std::to_string(opened) + " matches were reported opened, but " +
                             std::to_string(matches.size()) + " are stored");
        }
        std::printf("check from the database (%.1f s): %zu matches, %zu pairs, %zu waiting for a second "
                    "player\n",
                    secondsSince(start), matches.size(), pairs, waiting);
        std::printf("  players in no match %zu, in one %zu, in two or more %zu\n", unseated,
                    players.size() - unseated - doubleSeated, doubleSeated);
        std::printf("  lists: ");
        for (const auto& [size, count] : listSizes) {
            std::printf("%zu player(s) with %zu match(es)  ", count, size);
        }
        std::printf("\n  %s\n", faults.empty() && doubleSeated == 0 && unseated == 0
                                    ? "no player is in two matches, and every player is in one"
                                    : "FAULTS:");
        for (const std::string& f : faults) {
            std::printf("  - %s\n", f.c_str());
        }
        return faults.empty() && doubleSeated == 0 && unseated == 0 && refused == 0 ? 0 : 1;
    } catch (const std::exception& e) {
        std::cerr << "tarvolin_matching_bench: " << e.what() << "\n";
        return 1;
    }
}
