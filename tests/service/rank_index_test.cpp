#include "logic/rank_index.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <tuple>

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
