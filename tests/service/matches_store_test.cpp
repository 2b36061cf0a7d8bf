#include "support.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>

using namespace tarvolin;
using namespace tarvolin::logic::match;
using tarvolin::testing::TestDatabase;

namespace {

constexpr std::int64_t kDay = 86400LL * 1000;

store::MatchChange change(const Result& r) {
    const Moved& m = std::get<Moved>(r);
    store::MatchChange c{m.match, {}};
    for (const Notice& n : m.notices) {
        c.events.push_back(store::NewEvent{n.playerId,
                                           n.kind == Notice::Kind::MatchEnded ? "match_ended" : "turn",
                                           "{\"matchID\":\"" + m.match.id + "\"}"});
    }
    return c;
}

// A move on the stored match made of a rule.
store::MatchMove by(std::function<Result(const Match&)> rule) {
    return [rule](const Match& m) -> std::variant<store::MatchChange, Refusal> {
        Result r = rule(m);
        if (refused(r)) {
            return std::get<Refusal>(r);
        }
        return change(r);
    };
}

class MatchesStoreTest : public ::testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        TARVOLIN_REQUIRE_BACKEND(GetParam());
        db = std::make_unique<TestDatabase>(GetParam());
        s = db->open();
        for (const char* id : {"A", "B", "C", "D", "E", "F", "G", "H"}) {
            ASSERT_TRUE(s->createPlayer(store::Credentials{store::PlayerRecord{id, id, 1}, id, "h"}));
        }
    }
    Match stored(const std::string& id) {
        std::optional<Match> m = s->match(id);
        EXPECT_TRUE(m.has_value());
        return m.value_or(Match{});
    }

    std::unique_ptr<TestDatabase> db;
    std::unique_ptr<store::Store> s;
};

} // namespace

TEST_P(MatchesStoreTest, AMatchComesBackAsItWasWrittenBytesAndAll) {
    s->insertMatch(change(createInvitation("m1", "A", "B", 1000)));
    std::string data(kMaxDataBytes, '\0');
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<char>(i * 7);
    }
    s->changeMatch("m1", by([](const Match& m) { return setMessage(m, "A", "gc.battle", {"أمل", "3"}); }));
    const auto r = s->changeMatch("m1", by([&](const Match& m) {
                                      return endTurn(m, "A", {1, 0}, kDay, data, 2000);
                                  }));
    ASSERT_TRUE(std::holds_alternative<Match>(r));
    const Match m = stored("m1");
    EXPECT_EQ(m.data, data);
    EXPECT_EQ(m.current, 1);
    EXPECT_EQ(m.fallThrough, std::vector<int>{0});
    EXPECT_EQ(m.turnDeadline, 2000 + kDay);
    EXPECT_EQ(m.turnTimeoutMs, kDay);
    EXPECT_EQ(m.messageKey, "gc.battle");
    EXPECT_EQ(m.messageArguments, (std::vector<std::string>{"أمل", "3"}));
    EXPECT_EQ(m.seats[0].lastTurnAt, 2000);
    EXPECT_EQ(m.seats[1].status, SeatStatus::Invited);
    EXPECT_EQ(m.status, Status::Open);
    // The invitation waits for B as an event; the move and the event were one transaction.
    const auto events = s->pendingEvents("B", 0, 10);
    ASSERT_EQ(events.size(), 1u);
    EXPECT_EQ(events[0].kind, "turn");

    // Reopened, as after a restart.
    s.reset();
    s = db->open();
    EXPECT_EQ(stored("m1").data, data);
    EXPECT_FALSE(s->match("nothing"));
    EXPECT_TRUE(std::holds_alternative<store::MatchNotFound>(
        s->changeMatch("nothing", by([](const Match& m) { return removeFromList(m, "A"); }))));
}

TEST_P(MatchesStoreTest, ARefusedMoveWritesNothing) {
    s->insertMatch(change(createInvitation("m1", "A", "B", 1000)));
    const Match before = stored("m1");
    auto r = s->changeMatch("m1", by([](const Match& m) { return endTurn(m, "B", {0}, kDay, "x", 2000); }));
    ASSERT_TRUE(std::holds_alternative<Refusal>(r));
    EXPECT_EQ(std::get<Refusal>(r), Refusal::NotYourTurn);
    r = s->changeMatch("m1", by([](const Match& m) {
                           return endTurn(m, "A", {1}, kDay, std::string(kMaxDataBytes + 1, 'x'), 2000);
                       }));
    EXPECT_EQ(std::get<Refusal>(r), Refusal::DataTooLarge);
    const Match after = stored("m1");
    EXPECT_EQ(after.updatedAt, before.updatedAt);
    EXPECT_EQ(after.current, 0);
    EXPECT_TRUE(s->pendingEvents("B", 0, 10).empty());
}

TEST_P(MatchesStoreTest, ListsEndingsRemovalAndFormerOpponents) {
    s->insertMatch(change(createInvitation("old", "A", "B", 1000)));
    s->insertMatch(change(createInvitation("new", "C", "A", 2000)));
    std::vector<std::string> ids;
    for (const Match& m : s->matchesOf("A")) {
        ids.push_back(m.id);
    }
    EXPECT_EQ(ids, (std::vector<std::string>{"new", "old"}));
    EXPECT_EQ(s->openMatchCount("A"), 2u);
    EXPECT_FALSE(s->haveEndedMatchTogether("A", "B"));

    s->changeMatch("old", by([](const Match& m) {
                       return endMatchInTurn(m, "A", {Outcome::Won, Outcome::Lost}, "", 3000);
                   }));
    EXPECT_TRUE(s->haveEndedMatchTogether("A", "B"));
    EXPECT_TRUE(s->haveEndedMatchTogether("B", "A"));
    EXPECT_FALSE(s->haveEndedMatchTogether("A", "C"));
    EXPECT_EQ(s->openMatchCount("A"), 1u);
    EXPECT_EQ(s->pendingEvents("A", 0, 10).size(), 1u);
    EXPECT_EQ(s->pendingEvents("B", 0, 10).size(), 1u);

    s->changeMatch("old", by([](const Match& m) { return removeFromList(m, "A"); }));
    EXPECT_EQ(s->matchesOf("A").size(), 1u);
    EXPECT_EQ(s->matchesOf("B").size(), 1u);
}

TEST_P(MatchesStoreTest, AutomaticMatchingSeatsEachPlayerOnceUnderConcurrency) {
    // Six waiting matches by three players, and five players joining at once.
    int n = 0;
    for (const char* creator : {"A", "B", "C"}) {
        for (int k = 0; k < 2; ++k) {
            s->insertMatch(store::MatchChange{createWaiting("w" + std::to_string(n), creator, 100 + n), {}});
            ++n;
        }
    }
    std::vector<std::string> joiners{"D", "E", "F", "G", "H"};
    std::vector<std::thread> threads;
    std::atomic<int> seated = 0;
    for (const std::string& p : joiners) {
        threads.emplace_back([&, p] {
            auto r = s->joinWaitingMatch(p, by([p](const Match& m) { return joinWaitingSeat(m, p, 500); }));
            if (r && std::holds_alternative<Match>(*r)) {
                ++seated;
            }
        });
    }
    for (auto& t : threads) {
        t.join();
    }
    EXPECT_EQ(seated.load(), 5);
    std::set<std::string> players;
    int full = 0;
    for (int i = 0; i < 6; ++i) {
        const Match m = stored("w" + std::to_string(i));
        if (!m.seats[1].playerId.empty()) {
            ++full;
            EXPECT_TRUE(players.insert(m.seats[1].playerId).second)
                << "seated twice: " << m.seats[1].playerId;
        }
    }
    EXPECT_EQ(full, 5);
    // The oldest went first: only the newest still waits; and nobody joins his own match.
    EXPECT_TRUE(stored("w5").seats[1].playerId.empty());
    EXPECT_FALSE(s->joinWaitingMatch("C", by([](const Match& m) { return joinWaitingSeat(m, "C", 600); })));
}

TEST_P(MatchesStoreTest, ADueTurnFallsThroughOnceEvenWhenTwoInstancesTry) {
    s->insertMatch(change(createInvitation("m", "A", "B", 0)));
    s->changeMatch("m", by([](const Match& m) { return endTurn(m, "A", {1, 0}, kDay, "d", 1000); }));
    EXPECT_TRUE(s->dueMatches(1000 + kDay - 1, 10).empty());
    ASSERT_EQ(s->dueMatches(1000 + kDay, 10), std::vector<std::string>{"m"});

    auto other = db->open(); // a second instance on the same database
    std::atomic<int> moved = 0;
    std::vector<std::thread> threads;
    for (store::Store* st : {s.get(), other.get(), s.get(), other.get()}) {
        threads.emplace_back([&, st] {
            auto r = st->changeMatch("m", by([](const Match& m) { return expire(m, 1000 + kDay); }));
            if (std::holds_alternative<Match>(r)) {
                ++moved;
            }
        });
    }
    for (auto& t : threads) {
        t.join();
    }
    EXPECT_EQ(moved.load(), 1);
    const Match m = stored("m");
    EXPECT_EQ(m.current, 0);
    EXPECT_EQ(m.turnDeadline, 1000 + 2 * kDay);
    EXPECT_EQ(s->pendingEvents("A", 0, 10).size(), 1u);
    EXPECT_TRUE(s->dueMatches(1000 + kDay + 1, 10).empty());
}

TEST_P(MatchesStoreTest, ExchangesOfOneCreatorAreCountedOneRequestAtATime) {
    auto other = db->open(); // a second instance on the same database
    // Each thread asks once; the stores run them side by side.
    const auto askAtOnce = [&](int n, const std::function<Match(int)>& make) {
        std::vector<store::MatchInsertResult> results(static_cast<std::size_t>(n));
        std::vector<std::thread> threads;
        for (int i = 0; i < n; ++i) {
            store::Store* st = i % 2 ? other.get() : s.get();
            threads.emplace_back([&, st, i] {
                try {
                    results[static_cast<std::size_t>(i)] = st->insertMatch(store::MatchChange{make(i), {}});
                } catch (const store::StoreError& e) {
                    ADD_FAILURE() << e.what();
                    results[static_cast<std::size_t>(i)] = store::MatchNotAdmitted{};
                }
            });
        }
        for (auto& t : threads) {
            t.join();
        }
        return results;
    };
    const auto count = [](const std::vector<store::MatchInsertResult>& rs, auto pick) {
        return std::count_if(rs.begin(), rs.end(), pick);
    };
    const auto stored = [](const store::MatchInsertResult& r) { return std::holds_alternative<Match>(r); };

    const auto open = askAtOnce(6, [](int i) {
        return std::get<Moved>(
                   createInvitation("open" + std::to_string(i), "A", "B", 1000, Purpose::Exchange))
            .match;
    });
    EXPECT_EQ(count(open, stored), 1);
    EXPECT_EQ(count(open,
                    [](const store::MatchInsertResult& r) {
                        const auto* refusal = std::get_if<ExchangeRefusal>(&r);
                        return refusal && refusal->kind == ExchangeRefusal::Kind::AlreadyOpen;
                    }),
              5);

    // Ended exchanges to C: with the open one, ten in the window and no more.
    const auto ended = askAtOnce(14, [](int i) {
        const Match m =
            std::get<Moved>(createInvitation("ended" + std::to_string(i), "A", "C", 2000, Purpose::Exchange))
                .match;
        return std::get<Moved>(endMatchInTurn(m, "A", {Outcome::Quit, Outcome::Won}, "", 2000)).match;
    });
    EXPECT_EQ(count(ended, stored), 9);
    EXPECT_EQ(s->matchesOf("A").size(), 10u);
    EXPECT_EQ(s->matchesOf("C").size(), 9u);
    for (const auto& r : ended) {
        if (const auto* refusal = std::get_if<ExchangeRefusal>(&r)) {
            EXPECT_EQ(refusal->kind, ExchangeRefusal::Kind::TooMany);
            EXPECT_EQ(refusal->retryAfterMs, kExchangeWindowMs - 1000); // until the open one leaves
        }
    }
    // Players asking each other at the same moment all get through: neither locks the other out.
    const std::vector<std::string> others{"D", "E", "F", "G", "H"};
    const auto crossed = askAtOnce(10, [&](int i) {
        const std::string& x = others[static_cast<std::size_t>(i / 2)];
        const std::string& y = others[static_cast<std::size_t>((i / 2 + 1) % others.size())];
        return std::get<Moved>(createInvitation("crossed" + std::to_string(i), i % 2 ? x : y, i % 2 ? y : x,
                                                3000, Purpose::Exchange))
            .match;
    });
    EXPECT_EQ(count(crossed, stored), 10);

    // The caller's own check comes last and stores nothing when it says no.
    EXPECT_TRUE(std::holds_alternative<store::MatchNotAdmitted>(s->insertMatch(
        store::MatchChange{std::get<Moved>(createInvitation("battle", "A", "D", 3000)).match, {}},
        [] { return false; })));
    EXPECT_FALSE(s->match("battle"));
}

INSTANTIATE_TEST_SUITE_P(Backends, MatchesStoreTest, ::testing::ValuesIn(tarvolin::testing::backends()),
                         tarvolin::testing::backendName);
