// The leaderboard's order: highest score first, then whoever reached that score first.
//
// Compact enough for millions of players: an order-statistic B+tree of (value, reachedAt, slot) keys, whose
// inner nodes hold the size of each child's subtree, so that a rank is the sum of the sizes passed on the way
// down and the entry at a rank is found the same way; the entries themselves as arrays indexed by slot; the
// player identifiers in one character arena, found through an open-addressing table of slots. Nothing is
// allocated per player. Const members change nothing, so they may run concurrently under a shared lock.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvolin::logic {

namespace detail {

// A growable array kept in blocks of 2^kShift elements: growing never moves, copies or frees what is
// there, so a large index grows without pauses and without leaving freed memory behind in the heap.
template <class T, unsigned kShift> class BlockArray {
public:
    static constexpr std::size_t kBlock = std::size_t{1} << kShift;

    BlockArray() = default;
    BlockArray(BlockArray&&) noexcept = default;
    BlockArray& operator=(BlockArray&&) noexcept = default;
    BlockArray(const BlockArray&) = delete;
    BlockArray& operator=(const BlockArray&) = delete;

    std::size_t size() const { return size_; }
    T& operator[](std::size_t i) { return blocks_[i >> kShift][i & (kBlock - 1)]; }
    const T& operator[](std::size_t i) const { return blocks_[i >> kShift][i & (kBlock - 1)]; }

    // Where n elements that must lie together would start: here, or at the next block.
    std::size_t contiguousStart(std::size_t n) const {
        std::size_t at = size_;
        if ((at & (kBlock - 1)) + n > kBlock) {
            at = (at + kBlock - 1) & ~(kBlock - 1);
        }
        return at;
    }
    // Blocks for n more elements that lie together (n at most kBlock): may throw, and changes nothing
    // that can be seen. After it, append cannot fail.
    void makeRoom(std::size_t n) {
        std::size_t end = contiguousStart(n) + n;
        while (blocks_.size() * kBlock < end) {
            auto block = std::make_unique_for_overwrite<T[]>(kBlock);
            blocks_.push_back(std::move(block));
        }
    }
    // Adds n elements that lie together (room made before), to be written through &a[returned index].
    std::size_t grow(std::size_t n) {
        std::size_t at = contiguousStart(n);
        size_ = at + n;
        return at;
    }
    std::size_t append(const T& v) {
        std::size_t at = grow(1);
        (*this)[at] = v;
        return at;
    }
    std::size_t bytes() const {
        return blocks_.size() * kBlock * sizeof(T) + blocks_.capacity() * sizeof(void*);
    }

private:
    std::vector<std::unique_ptr<T[]>> blocks_;
    std::size_t size_ = 0;
};

} // namespace detail

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
    // Sets a player's entry; the previous one, if any, is replaced. Throws std::length_error past the
    // index's capacity (about four thousand million players or 4 GiB of identifiers), changing nothing.
    void put(const std::string& playerId, std::int64_t value, std::int64_t context, std::int64_t reachedAt,
             std::int64_t updatedAt);
    std::optional<RankedScore> find(const std::string& playerId) const;
    // Entries at ranks first .. first+count-1 (ranks from 1).
    std::vector<RankedScore> range(std::int64_t first, std::int64_t count) const;
    std::int64_t size() const { return static_cast<std::int64_t>(entries_.size()); }
    void reserve(std::size_t n);

    // Replaces the whole index with these records (each with playerId, value, context, reachedAt and
    // updatedAt), sorted once and loaded leaf by leaf: much faster than a put for each. A player listed
    // twice keeps the later record, as with put. Throws std::length_error past the capacity, leaving the
    // index empty.
    template <class Records> void assign(const Records& records) {
        *this = RankIndex();
        try {
            reserve(static_cast<std::size_t>(std::size(records)));
            for (const auto& r : records) {
                stage(r.playerId, r.value, r.context, r.reachedAt, r.updatedAt);
            }
            buildTree();
        } catch (...) {
            *this = RankIndex();
            throw;
        }
    }

    // Bytes held by the index's containers (their capacity), for the operators' figures.
    std::size_t memoryBytes() const;

private:
    static constexpr std::uint32_t kNone = 0xffffffffu;
    static constexpr int kLeafCap = 64;
    static constexpr int kInnerCap = 64;
    // A node below the root holds at least this many keys or children; two siblings are merged when their
    // sum fits in kMergeLimit, and otherwise evened out.
    static constexpr int kLeafMin = kLeafCap / 4;
    static constexpr int kInnerMin = kInnerCap / 4;
    static constexpr int kLeafMerge = kLeafCap * 3 / 4;
    static constexpr int kInnerMerge = kInnerCap * 3 / 4;
    // How full the bulk build makes the nodes, leaving room for later puts.
    static constexpr int kLeafBuild = kLeafCap * 7 / 8;
    static constexpr int kInnerBuild = kInnerCap * 7 / 8;

    struct Key {
        std::int64_t value;
        std::int64_t reachedAt;
        std::uint32_t slot;
    };
    // Higher value first, then the earlier reachedAt, then the lower slot: every key is unique.
    static bool before(const Key& a, const Key& b) {
        if (a.value != b.value) {
            return a.value > b.value;
        }
        if (a.reachedAt != b.reachedAt) {
            return a.reachedAt < b.reachedAt;
        }
        return a.slot < b.slot;
    }

    struct Pair {
        std::int64_t value;
        std::int64_t reachedAt;
    };
    struct Leaf {
        std::uint32_t n = 0;
        std::uint32_t next = kNone; // the leaf that follows in rank order
        std::array<Pair, kLeafCap> pairs;
        std::array<std::uint32_t, kLeafCap> slotIds;

        Key key(int i) const { return Key{pairs[i].value, pairs[i].reachedAt, slotIds[i]}; }
    };
    // low[i] bounds child i's keys from below and child i-1's from above; low[0] is never compared.
    struct Inner {
        std::uint32_t n = 0;
        std::array<Key, kInnerCap> low;
        std::array<std::uint32_t, kInnerCap> child;
        std::array<std::uint32_t, kInnerCap> count; // keys in each child's subtree
    };

    // The identifier table.
    static std::uint64_t hashOf(std::string_view id);
    std::string_view idOf(std::uint32_t slot) const;
    std::size_t home(std::uint32_t hashHigh) const { return hashHigh >> (32 - tableBits_); }
    std::uint32_t lookup(std::string_view id, std::uint64_t hash) const;
    void growTable(std::size_t players);
    void placeInTable(std::uint64_t entry);
    // Adds a new player's identifier and entry (room must have been made); returns the slot.
    std::uint32_t appendPlayer(std::string_view id, std::uint64_t hash);
    void makeRoomForPlayer(std::size_t idChars);
    // A record of assign: its entry is set, the tree is built afterwards by buildTree.
    void stage(std::string_view id, std::int64_t value, std::int64_t context, std::int64_t reachedAt,
               std::int64_t updatedAt);
    void buildTree();

    // The tree.
    Key keyOf(std::uint32_t slot) const { return Key{entries_[slot].value, entries_[slot].reachedAt, slot}; }
    void makeRoomForNodes();
    std::uint32_t newLeaf();
    std::uint32_t newInner();
    int childSize(std::uint32_t node, int level) const;
    void splitChild(std::uint32_t parent, int i, int childLevel);
    int fixChild(std::uint32_t parent, int i, int childLevel, const Key& k);
    void insertKey(const Key& k);
    void eraseKey(const Key& k);
    static int route(const Inner& in, const Key& k);
    static int lowerBound(const Leaf& leaf, const Key& k);
    RankedScore ranked(std::uint32_t slot, std::int64_t rank) const;

    struct Entry {
        std::int64_t value;
        std::int64_t reachedAt;
        std::int64_t context;
        std::int64_t updatedAt;
    };
    // Entries by slot; a player's slot is fixed once given.
    detail::BlockArray<Entry, 14> entries_;
    // Where each slot's identifier starts in ids_: its length (7 bits a byte, low bits first, the top bit
    // set on all but the last byte), then its characters, never across two blocks.
    detail::BlockArray<std::uint32_t, 16> idStarts_;
    detail::BlockArray<char, 19> ids_;
    // Open addressing with linear probing of 2^tableBits_ places: the upper half of the identifier's hash
    // (which also gives the place to start from) above slot + 1, or 0 for an empty place.
    std::vector<std::uint64_t> table_;
    int tableBits_ = 0;

    detail::BlockArray<Leaf, 8> leaves_;
    detail::BlockArray<Inner, 6> inners_;
    std::vector<std::uint32_t> freeLeaves_;
    std::vector<std::uint32_t> freeInners_;
    std::uint32_t root_ = kNone;
    int height_ = 0; // levels of inner nodes above the leaves
};

} // namespace tarvolin::logic
