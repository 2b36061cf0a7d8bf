// The leaderboard's order: highest score first, then whoever reached that score first.
// An order-statistic tree gives the rank of any player and the player at any rank in O(log n).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <ext/pb_ds/assoc_container.hpp>
#include <ext/pb_ds/tree_policy.hpp>

namespace tarvolin::logic {

struct RankedScore {
    std::string playerId;
    std::int64_t value = 0;
    std::int64_t context = 0;
    std::int64_t reachedAt = 0; // microseconds
    std::int64_t updatedAt = 0; // milliseconds
    std::int64_t rank = 0;      // from 1
};

class RankIndex {
public:
    // Sets a player's entry; the previous one, if any, is replaced.
    void put(const std::string& playerId, std::int64_t value, std::int64_t context, std::int64_t reachedAt,
             std::int64_t updatedAt);
    std::optional<RankedScore> find(const std::string& playerId) const;
    // Entries at ranks first .. first+count-1 (ranks from 1).
    std::vector<RankedScore> range(std::int64_t first, std::int64_t count) const;
    std::int64_t size() const { return static_cast<std::int64_t>(tree_.size()); }
    void reserve(std::size_t n);

private:
    struct Key {
        std::int64_t value;
        std::int64_t reachedAt;
        std::uint32_t slot;
    };
    struct KeyOrder {
        bool operator()(const Key& a, const Key& b) const {
            if (a.value != b.value) {
                return a.value > b.value;
            }
            if (a.reachedAt != b.reachedAt) {
                return a.reachedAt < b.reachedAt;
            }
            return a.slot < b.slot;
        }
    };
    struct Entry {
        std::string playerId;
        std::int64_t value;
        std::int64_t context;
        std::int64_t reachedAt;
        std::int64_t updatedAt;
    };
    using Tree = __gnu_pbds::tree<Key, __gnu_pbds::null_type, KeyOrder, __gnu_pbds::rb_tree_tag,
                                  __gnu_pbds::tree_order_statistics_node_update>;

    RankedScore ranked(std::uint32_t slot, std::int64_t rank) const;

    Tree tree_;
    std::vector<Entry> entries_;
    std::unordered_map<std::string, std::uint32_t> slots_;
};

} // namespace tarvolin::logic
