#include "logic/rank_index.h"

#include <algorithm>

namespace tarvolin::logic {

void RankIndex::put(const std::string& playerId, std::int64_t value, std::int64_t context,
                    std::int64_t reachedAt, std::int64_t updatedAt) {
    auto [it, inserted] = slots_.try_emplace(playerId, static_cast<std::uint32_t>(entries_.size()));
    std::uint32_t slot = it->second;
    if (inserted) {
        entries_.push_back(Entry{playerId, value, context, reachedAt, updatedAt});
    } else {
        Entry& e = entries_[slot];
        tree_.erase(Key{e.value, e.reachedAt, slot});
        e.value = value;
        e.context = context;
        e.reachedAt = reachedAt;
        e.updatedAt = updatedAt;
    }
    tree_.insert(Key{value, reachedAt, slot});
}

std::optional<RankedScore> RankIndex::find(const std::string& playerId) const {
    auto it = slots_.find(playerId);
    if (it == slots_.end()) {
        return std::nullopt;
    }
    const Entry& e = entries_[it->second];
    auto rank = static_cast<std::int64_t>(tree_.order_of_key(Key{e.value, e.reachedAt, it->second})) + 1;
    return ranked(it->second, rank);
}

std::vector<RankedScore> RankIndex::range(std::int64_t first, std::int64_t count) const {
    std::vector<RankedScore> out;
    if (first < 1 || count < 1 || first > size()) {
        return out;
    }
    std::int64_t last = std::min(size(), first + count - 1);
    out.reserve(static_cast<std::size_t>(last - first + 1));
    auto it = tree_.find_by_order(static_cast<std::size_t>(first - 1));
    for (std::int64_t rank = first; rank <= last; ++rank, ++it) {
        out.push_back(ranked(it->slot, rank));
    }
    return out;
}

void RankIndex::reserve(std::size_t n) {
    entries_.reserve(n);
    slots_.reserve(n);
}

RankedScore RankIndex::ranked(std::uint32_t slot, std::int64_t rank) const {
    const Entry& e = entries_[slot];
    return RankedScore{e.playerId, e.value, e.context, e.reachedAt, e.updatedAt, rank};
}

} // namespace tarvolin::logic
