#include "logic/rank_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

using tarvolin::logic::RankIndex;

namespace {

std::vector<std::string> idsOf(const std::vector<tarvolin::logic::RankedScore>& v) {
    std::vector<std::string> out;
    for (const auto& s : v) {
        out.push_back(s.playerId);
    }
    return out;
}

} // namespace

TEST(RankIndex, HigherScoreFirstAndEqualScoresByWhoReachedThemFirst) {
    RankIndex idx;
    idx.put("late", 500, 0, 30, 0);
    idx.put("early", 500, 0, 10, 0);
    idx.put("top", 900, 7, 40, 0);
    idx.put("low", -5, 0, 5, 0);
    EXPECT_EQ(idsOf(idx.range(1, 10)), (std::vector<std::string>{"top", "early", "late", "low"}));
    EXPECT_EQ(idx.find("early")->rank, 2);
    EXPECT_EQ(idx.find("late")->rank, 3);
    EXPECT_EQ(idx.find("top")->context, 7);
    EXPECT_FALSE(idx.find("nobody").has_value());
}

TEST(RankIndex, ReplacingAnEntryMovesThePlayerAndKeepsOneEntry) {
    RankIndex idx;
    idx.put("a", 100, 0, 1, 0);
    idx.put("b", 200, 0, 2, 0);
    idx.put("c", 300, 0, 3, 0);
    EXPECT_EQ(idx.find("a")->rank, 3);
    idx.put("a", 1000, 5, 4, 9);
    EXPECT_EQ(idx.size(), 3);
    EXPECT_EQ(idx.find("a")->rank, 1);
    EXPECT_EQ(idx.find("a")->updatedAt, 9);
    idx.put("a", 0, 0, 5, 10); // a lower total stands too: the latest report is the whole total
    EXPECT_EQ(idx.find("a")->rank, 3);
    EXPECT_EQ(idsOf(idx.range(1, 3)), (std::vector<std::string>{"c", "b", "a"}));
}

TEST(RankIndex, RangeEdges) {
    RankIndex idx;
    EXPECT_TRUE(idx.range(1, 100).empty());
    for (int i = 0; i < 250; ++i) {
        idx.put("p" + std::to_string(i), 1000 - i, 0, i, 0);
    }
    auto last = idx.range(201, 100);
    ASSERT_EQ(last.size(), 50u);
    EXPECT_EQ(last.front().rank, 201);
    EXPECT_EQ(last.front().playerId, "p200");
    EXPECT_EQ(last.back().rank, 250);
    EXPECT_EQ(idx.range(250, 100).size(), 1u);
    EXPECT_TRUE(idx.range(251, 100).empty());
    EXPECT_TRUE(idx.range(0, 10).empty());
    EXPECT_TRUE(idx.range(1, 0).empty());
    EXPECT_EQ(idx.range(1, 1).at(0).playerId, "p0");
}

// Random puts against a plain sort: every rank and every page agrees.
TEST(RankIndex, AgreesWithASortedCopyUnderRandomChanges) {
    std::mt19937 rng(42);
    RankIndex idx;
    std::map<std::string, std::pair<std::int64_t, std::int64_t>> truth;
    for (int step = 0; step < 4000; ++step) {
        std::string id = "p" + std::to_string(rng() % 600);
        std::int64_t value = static_cast<std::int64_t>(rng() % 50); // many ties
        idx.put(id, value, 0, step, 0);
        truth[id] = {value, step};
    }
    std::vector<std::tuple<std::int64_t, std::int64_t, std::string>> sorted;
    for (const auto& [id, v] : truth) {
        sorted.emplace_back(-v.first, v.second, id);
    }
    std::sort(sorted.begin(), sorted.end());
    ASSERT_EQ(idx.size(), static_cast<std::int64_t>(sorted.size()));
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        ASSERT_EQ(idx.find(std::get<2>(sorted[i]))->rank, static_cast<std::int64_t>(i + 1));
    }
    auto page = idx.range(101, 100);
    for (std::size_t i = 0; i < page.size(); ++i) {
        EXPECT_EQ(page[i].playerId, std::get<2>(sorted[100 + i]));
        EXPECT_EQ(page[i].rank, static_cast<std::int64_t>(101 + i));
    }
}

namespace {

// The order the index must keep, worked out the plain way: every player's latest entry, sorted by value
// (highest first), then reachedAt (earliest first), then by who entered the index first.
class Reference {
public:
    void put(const std::string& id, std::int64_t value, std::int64_t context, std::int64_t reachedAt,
             std::int64_t updatedAt) {
        auto [it, added] = entries_.try_emplace(id, Entry{value, context, reachedAt, updatedAt, next_});
        if (added) {
            ++next_;
        } else {
            it->second = Entry{value, context, reachedAt, updatedAt, it->second.arrival};
        }
    }

    std::vector<tarvolin::logic::RankedScore> sorted() const {
        std::vector<std::pair<std::string, Entry>> all(entries_.begin(), entries_.end());
        std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) {
            const Entry& x = a.second;
            const Entry& y = b.second;
            if (x.value != y.value) {
                return x.value > y.value;
            }
            return std::tie(x.reachedAt, x.arrival) < std::tie(y.reachedAt, y.arrival);
        });
        std::vector<tarvolin::logic::RankedScore> out;
        for (const auto& [id, e] : all) {
            out.push_back({id, e.value, e.context, e.reachedAt, e.updatedAt,
                           static_cast<std::int64_t>(out.size()) + 1});
        }
        return out;
    }

private:
    struct Entry {
        std::int64_t value, context, reachedAt, updatedAt;
        std::size_t arrival;
    };
    std::map<std::string, Entry> entries_;
    std::size_t next_ = 0;
};

void expectSame(const tarvolin::logic::RankedScore& got, const tarvolin::logic::RankedScore& want) {
    EXPECT_EQ(std::tie(got.playerId, got.value, got.context, got.reachedAt, got.updatedAt, got.rank),
              std::tie(want.playerId, want.value, want.context, want.reachedAt, want.updatedAt, want.rank));
}

// Every player's find, the whole order in one range, and pages at and past both ends.
void expectAgrees(const RankIndex& idx, const Reference& ref) {
    auto want = ref.sorted();
    auto n = static_cast<std::int64_t>(want.size());
    ASSERT_EQ(idx.size(), n);
    for (const auto& w : want) {
        auto got = idx.find(w.playerId);
        ASSERT_TRUE(got.has_value()) << w.playerId;
        expectSame(*got, w);
        if (got->rank != w.rank) {
            return;
        }
    }
    auto all = idx.range(1, n + 10);
    ASSERT_EQ(all.size(), want.size());
    for (std::size_t i = 0; i < all.size(); ++i) {
        expectSame(all[i], want[i]);
    }
    for (std::int64_t first : {std::int64_t{1}, std::int64_t{2}, n / 2, n - 99, n - 1, n}) {
        if (first < 1 || first > n) {
            continue;
        }
        auto page = idx.range(first, 100);
        ASSERT_EQ(static_cast<std::int64_t>(page.size()), std::min<std::int64_t>(100, n - first + 1))
            << first;
        for (std::size_t i = 0; i < page.size(); ++i) {
            expectSame(page[i], want[static_cast<std::size_t>(first - 1) + i]);
        }
    }
    EXPECT_TRUE(idx.range(n + 1, 100).empty());
    EXPECT_TRUE(idx.range(n + 1000, 1).empty());
}

// Identifiers as the service names its players, and as an import may: 1 to 64 of [0-9A-Za-z_-].
std::string randomId(std::mt19937_64& rng) {
    static constexpr char kChars[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_-";
    if (rng() % 4 != 0) {
        char id[20];
        std::snprintf(id, sizeof id, "T%016llx", static_cast<unsigned long long>(rng()));
        return id;
    }
    std::string id(1 + rng() % 64, ' ');
    for (char& c : id) {
        c = kChars[rng() % 64];
    }
    return id;
}

} // namespace

// Enough players for several levels of inner nodes; they arrive, then drift to one end of the order, then
// jump between the extremes of 64-bit values, so that leaves and inner nodes split, merge and even out.
TEST(RankIndex, AgreesWithAReferenceThroughSplitsAndMerges) {
    std::mt19937_64 rng(3);
    RankIndex idx;
    Reference ref;
    std::vector<std::string> ids;
    auto put = [&](const std::string& id, std::int64_t value, std::int64_t reachedAt) {
        auto context = static_cast<std::int64_t>(rng() % 1000);
        auto updatedAt = static_cast<std::int64_t>(rng());
        idx.put(id, value, context, reachedAt, updatedAt);
        ref.put(id, value, context, reachedAt, updatedAt);
    };
    for (int i = 0; i < 12000; ++i) {
        ids.push_back(randomId(rng));
        put(ids.back(), static_cast<std::int64_t>(rng() % 200), static_cast<std::int64_t>(rng() % 40));
    }
    ASSERT_NO_FATAL_FAILURE(expectAgrees(idx, ref));
    EXPECT_FALSE(idx.find("T0000000000000000x").has_value());

    // Most players move above everyone, in a narrow band where values and times tie often; the region
    // they leave empties out.
    for (int i = 0; i < 24000; ++i) {
        put(ids[rng() % ids.size()], 1000 + static_cast<std::int64_t>(rng() % 3),
            static_cast<std::int64_t>(rng() % 5));
    }
    ASSERT_NO_FATAL_FAILURE(expectAgrees(idx, ref));

    // And back to the bottom, now at the extremes of the value range.
    constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
    const std::int64_t extremes[] = {kMin, kMin + 1, -1, 0, 1, kMax - 1, kMax};
    for (int i = 0; i < 24000; ++i) {
        std::int64_t reachedAt = rng() % 2 ? kMin : static_cast<std::int64_t>(rng() % 3);
        put(ids[rng() % ids.size()], extremes[rng() % 7], reachedAt);
    }
    ASSERT_NO_FATAL_FAILURE(expectAgrees(idx, ref));

    // The same entry again keeps the player's place; a new context and time still count.
    auto before = *idx.find(ids[0]);
    put(ids[0], before.value, before.reachedAt);
    EXPECT_EQ(idx.find(ids[0])->rank, before.rank);
    ASSERT_NO_FATAL_FAILURE(expectAgrees(idx, ref));
}

// The build at start sorts once; it must give exactly the order that putting each record would.
TEST(RankIndex, BulkBuildGivesTheOrderOfPuts) {
    std::mt19937_64 rng(9);
    for (std::size_t players : {std::size_t{0}, std::size_t{1}, std::size_t{56}, std::size_t{57},
                                std::size_t{3137}, std::size_t{20000}}) {
        SCOPED_TRACE(players);
        std::vector<tarvolin::logic::RankedScore> records;
        for (std::size_t i = 0; i < players; ++i) {
            records.push_back({randomId(rng), static_cast<std::int64_t>(rng() % 50) - 25,
                               static_cast<std::int64_t>(rng() % 9), static_cast<std::int64_t>(rng() % 20),
                               static_cast<std::int64_t>(i), 0});
        }
        // Some players are listed twice: the later record stands.
        for (std::size_t i = 0; i < players / 10; ++i) {
            auto again = records[rng() % players];
            again.value = static_cast<std::int64_t>(rng() % 50);
            records.push_back(again);
        }
        RankIndex built;
        built.put("left over from before", 5, 0, 0, 0);
        built.assign(records);
        Reference ref;
        for (const auto& r : records) {
            ref.put(r.playerId, r.value, r.context, r.reachedAt, r.updatedAt);
        }
        ASSERT_NO_FATAL_FAILURE(expectAgrees(built, ref));
        EXPECT_FALSE(built.find("left over from before").has_value());

        // A built tree takes changes like any other.
        for (std::size_t i = 0; i < 2 * players + 100; ++i) {
            std::string id =
                players > 0 && rng() % 4 != 0 ? records[rng() % players].playerId : randomId(rng);
            auto value = static_cast<std::int64_t>(rng() % 60) - 30;
            auto reachedAt = static_cast<std::int64_t>(rng() % 20);
            built.put(id, value, 1, reachedAt, 2);
            ref.put(id, value, 1, reachedAt, 2);
        }
        ASSERT_NO_FATAL_FAILURE(expectAgrees(built, ref));
    }
}

// Entries that move around must not leave emptied nodes behind: a long churn of replaced entries, with the
// number of players unchanged, keeps the index about the size it had.
TEST(RankIndex, ReplacingEntriesForLongDoesNotGrowTheIndex) {
    std::mt19937_64 rng(4);
    RankIndex idx;
    std::vector<std::string> ids;
    for (int i = 0; i < 20000; ++i) {
        ids.push_back("T" + std::to_string(rng()));
        idx.put(ids.back(), static_cast<std::int64_t>(rng() % 1000), 0, i, 0);
    }
    std::size_t filled = idx.memoryBytes();
    std::int64_t clock = 20000;
    for (int round = 0; round < 8; ++round) {
        // Everyone moves to one end and then the other, in order, so that whole regions empty out.
        std::int64_t base = round % 2 ? -1'000'000 : 1'000'000;
        for (const auto& id : ids) {
            idx.put(id, base + static_cast<std::int64_t>(rng() % 100), 0, ++clock, 0);
        }
    }
    EXPECT_EQ(idx.size(), 20000);
    EXPECT_LE(idx.memoryBytes(), filled + filled / 2);
}
