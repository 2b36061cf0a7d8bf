#include "logic/rank_index.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>

namespace tarvolin::logic {

namespace {

// Room for `extra` more elements without a reallocation later, growing geometrically.
template <class V> void roomFor(V& v, std::size_t extra) {
    if (v.capacity() - v.size() < extra) {
        v.reserve(std::max(v.size() + extra, v.capacity() * 2));
    }
}

template <class T> std::size_t bytesOf(const std::vector<T>& v) {
    return v.capacity() * sizeof(T);
}

} // namespace

// ---- The identifier table ----

std::uint64_t RankIndex::hashOf(std::string_view id) {
    return static_cast<std::uint64_t>(std::hash<std::string_view>{}(id));
}

std::string_view RankIndex::idOf(std::uint32_t slot) const {
    std::size_t at = idStarts_[slot];
    std::size_t length = 0;
    for (int shift = 0;; shift += 7) {
        auto byte = static_cast<unsigned char>(ids_[at++]);
        length |= static_cast<std::size_t>(byte & 0x7f) << shift;
        if ((byte & 0x80) == 0) {
            break;
        }
    }
    return std::string_view(&ids_[at], length);
}

std::uint32_t RankIndex::lookup(std::string_view id, std::uint64_t hash) const {
    if (table_.empty()) {
        return kNone;
    }
    std::size_t mask = table_.size() - 1;
    auto high = static_cast<std::uint32_t>(hash >> 32);
    for (std::size_t i = home(high);; i = (i + 1) & mask) {
        std::uint64_t e = table_[i];
        if (e == 0) {
            return kNone;
        }
        if ((e >> 32) == high) {
            auto slot = static_cast<std::uint32_t>(e) - 1;
            if (idOf(slot) == id) {
                return slot;
            }
        }
    }
}

void RankIndex::placeInTable(std::uint64_t entry) {
    std::size_t mask = table_.size() - 1;
    std::size_t i = home(static_cast<std::uint32_t>(entry >> 32));
    while (table_[i] != 0) {
        i = (i + 1) & mask;
    }
    table_[i] = entry;
}

// At most three quarters full, so that a probe ends soon. The table holds what it needs to move its
// entries: no identifier is read or hashed again.
void RankIndex::growTable(std::size_t players) {
    int bits = std::max(tableBits_, 4);
    while (players * 4 > (std::size_t{3} << bits)) {
        ++bits;
    }
    if (bits > 32) {
        throw std::length_error("the rank index holds no more players");
    }
    if (bits == tableBits_) {
        return;
    }
    std::vector<std::uint64_t> old(std::size_t{1} << bits);
    old.swap(table_);
    tableBits_ = bits;
    for (std::uint64_t e : old) {
        if (e != 0) {
            placeInTable(e);
        }
    }
}

namespace {

// The identifier's length and characters as ids_ holds them.
std::size_t encodedLength(std::size_t length) {
    std::size_t bytes = 1;
    for (std::size_t rest = length >> 7; rest != 0; rest >>= 7) {
        ++bytes;
    }
    return bytes + length;
}

} // namespace

void RankIndex::makeRoomForPlayer(std::size_t idChars) {
    if (entries_.size() >= kNone - 1) {
        throw std::length_error("the rank index holds no more players");
    }
    std::size_t encoded = encodedLength(idChars);
    if (encoded > decltype(ids_)::kBlock) {
        throw std::length_error("a player identifier too long for the rank index");
    }
    if (ids_.contiguousStart(encoded) > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("the rank index holds no more player identifiers");
    }
    entries_.makeRoom(1);
    idStarts_.makeRoom(1);
    ids_.makeRoom(encoded);
    growTable(entries_.size() + 1);
}

std::uint32_t RankIndex::appendPlayer(std::string_view id, std::uint64_t hash) {
    auto slot = static_cast<std::uint32_t>(entries_.size());
    entries_.append(Entry{});
    std::size_t at = ids_.grow(encodedLength(id.size()));
    idStarts_.append(static_cast<std::uint32_t>(at));
    char* out = &ids_[at];
    std::size_t length = id.size();
    while (length >= 0x80) {
        *out++ = static_cast<char>((length & 0x7f) | 0x80);
        length >>= 7;
    }
    *out++ = static_cast<char>(length);
    std::copy(id.begin(), id.end(), out);
    placeInTable((hash & 0xffffffff00000000ull) | (static_cast<std::uint64_t>(slot) + 1));
    return slot;
}

void RankIndex::reserve(std::size_t n) {
    if (n > entries_.size()) {
        entries_.makeRoom(n - entries_.size());
        idStarts_.makeRoom(n - idStarts_.size());
    }
    growTable(n);
}

std::size_t RankIndex::memoryBytes() const {
    return entries_.bytes() + idStarts_.bytes() + ids_.bytes() + bytesOf(table_) + leaves_.bytes() +
           inners_.bytes() + bytesOf(freeLeaves_) + bytesOf(freeInners_);
}

// ---- Entries ----

void RankIndex::put(const std::string& playerId, std::int64_t value, std::int64_t context,
                    std::int64_t reachedAt, std::int64_t updatedAt) {
    std::uint64_t hash = hashOf(playerId);
    std::uint32_t slot = lookup(playerId, hash);
    if (slot != kNone && entries_[slot].value == value && entries_[slot].reachedAt == reachedAt) {
        entries_[slot].context = context; // the same place
        entries_[slot].updatedAt = updatedAt;
        return;
    }
    // Every allocation happens before the first change: a failure leaves the index as it was.
    makeRoomForNodes();
    if (slot == kNone) {
        makeRoomForPlayer(playerId.size());
        slot = appendPlayer(playerId, hash);
    } else {
        eraseKey(keyOf(slot));
    }
    entries_[slot] = Entry{value, reachedAt, context, updatedAt};
    insertKey(keyOf(slot));
}

void RankIndex::stage(std::string_view id, std::int64_t value, std::int64_t context, std::int64_t reachedAt,
                      std::int64_t updatedAt) {
    std::uint64_t hash = hashOf(id);
    std::uint32_t slot = lookup(id, hash);
    if (slot == kNone) {
        makeRoomForPlayer(id.size());
        slot = appendPlayer(id, hash);
    }
    entries_[slot] = Entry{value, reachedAt, context, updatedAt};
}

std::optional<RankedScore> RankIndex::find(const std::string& playerId) const {
    std::uint32_t slot = lookup(playerId, hashOf(playerId));
    if (slot == kNone) {
        return std::nullopt;
    }
    Key k = keyOf(slot);
    std::int64_t above = 0;
    std::uint32_t node = root_;
    for (int level = height_; level > 0; --level) {
        const Inner& in = inners_[node];
        int i = route(in, k);
        for (int j = 0; j < i; ++j) {
            above += in.count[j];
        }
        node = in.child[i];
    }
    above += lowerBound(leaves_[node], k);
    return ranked(slot, above + 1);
}

std::vector<RankedScore> RankIndex::range(std::int64_t first, std::int64_t count) const {
    std::vector<RankedScore> out;
    if (first < 1 || count < 1 || first > size()) {
        return out;
    }
    std::int64_t last = first + std::min(count - 1, size() - first);
    out.reserve(static_cast<std::size_t>(last - first + 1));
    // Down to the leaf that holds rank `first`, skipping whole subtrees by their sizes.
    auto skip = static_cast<std::uint64_t>(first - 1);
    std::uint32_t node = root_;
    for (int level = height_; level > 0; --level) {
        const Inner& in = inners_[node];
        int j = 0;
        while (skip >= in.count[j]) {
            skip -= in.count[j];
            ++j;
        }
        node = in.child[j];
    }
    const Leaf* leaf = &leaves_[node];
    auto pos = static_cast<std::uint32_t>(skip);
    for (std::int64_t rank = first; rank <= last; ++rank, ++pos) {
        if (pos == leaf->n) {
            leaf = &leaves_[leaf->next];
            pos = 0;
        }
        out.push_back(ranked(leaf->slotIds[pos], rank));
    }
    return out;
}

RankedScore RankIndex::ranked(std::uint32_t slot, std::int64_t rank) const {
    const Entry& e = entries_[slot];
    return RankedScore{std::string(idOf(slot)), e.value, e.context, e.reachedAt, e.updatedAt, rank};
}

// ---- The tree ----

int RankIndex::route(const Inner& in, const Key& k) {
    // The last child whose lower bound is not above k.
    int lo = 1, hi = static_cast<int>(in.n);
    while (lo < hi) {
        int mid = (lo + hi) / 2;
        if (before(k, in.low[mid])) {
            hi = mid;
        } else {
            lo = mid + 1;
        }
    }
    return lo - 1;
}

int RankIndex::lowerBound(const Leaf& leaf, const Key& k) {
    int lo = 0, hi = static_cast<int>(leaf.n);
    while (lo < hi) {
        int mid = (lo + hi) / 2;
        if (before(leaf.key(mid), k)) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    return lo;
}

// An insert makes at most one leaf and one inner node per level and a root; an erase frees at most one
// node per level.
void RankIndex::makeRoomForNodes() {
    leaves_.makeRoom(1);
    inners_.makeRoom(static_cast<std::size_t>(height_) + 2);
    roomFor(freeLeaves_, 1);
    roomFor(freeInners_, static_cast<std::size_t>(height_) + 1);
}

std::uint32_t RankIndex::newLeaf() {
    if (!freeLeaves_.empty()) {
        std::uint32_t i = freeLeaves_.back();
        freeLeaves_.pop_back();
        leaves_[i].n = 0;
        leaves_[i].next = kNone;
        return i;
    }
    return static_cast<std::uint32_t>(leaves_.append(Leaf{}));
}

std::uint32_t RankIndex::newInner() {
    if (!freeInners_.empty()) {
        std::uint32_t i = freeInners_.back();
        freeInners_.pop_back();
        inners_[i].n = 0;
        return i;
    }
    return static_cast<std::uint32_t>(inners_.append(Inner{}));
}

int RankIndex::childSize(std::uint32_t node, int level) const {
    return static_cast<int>(level == 0 ? leaves_[node].n : inners_[node].n);
}

namespace {

template <class A> void shiftRight(A& a, int from, int end, int by) {
    std::copy_backward(a.begin() + from, a.begin() + end, a.begin() + end + by);
}

template <class A> void shiftLeft(A& a, int from, int end, int by) {
    std::copy(a.begin() + from, a.begin() + end, a.begin() + from - by);
}

} // namespace

// Splits the full child i of `parent` (which has room) into two halves.
void RankIndex::splitChild(std::uint32_t parent, int i, int childLevel) {
    std::uint32_t right = childLevel == 0 ? newLeaf() : newInner();
    Inner& p = inners_[parent];
    Key low{};
    std::uint32_t moved = 0;
    if (childLevel == 0) {
        Leaf& a = leaves_[p.child[i]];
        Leaf& b = leaves_[right];
        int half = static_cast<int>(a.n) / 2;
        int n = static_cast<int>(a.n) - half;
        std::copy_n(a.pairs.begin() + half, n, b.pairs.begin());
        std::copy_n(a.slotIds.begin() + half, n, b.slotIds.begin());
        a.n = static_cast<std::uint32_t>(half);
        b.n = static_cast<std::uint32_t>(n);
        b.next = a.next;
        a.next = right;
        low = b.key(0);
        moved = b.n;
    } else {
        Inner& a = inners_[p.child[i]];
        Inner& b = inners_[right];
        int half = static_cast<int>(a.n) / 2;
        int n = static_cast<int>(a.n) - half;
        std::copy_n(a.low.begin() + half, n, b.low.begin());
        std::copy_n(a.child.begin() + half, n, b.child.begin());
        std::copy_n(a.count.begin() + half, n, b.count.begin());
        a.n = static_cast<std::uint32_t>(half);
        b.n = static_cast<std::uint32_t>(n);
        for (int j = 0; j < n; ++j) {
            moved += b.count[j];
        }
        low = b.low[0];
    }
    int n = static_cast<int>(p.n);
    shiftRight(p.low, i + 1, n, 1);
    shiftRight(p.child, i + 1, n, 1);
    shiftRight(p.count, i + 1, n, 1);
    p.low[i + 1] = low;
    p.child[i + 1] = right;
    p.count[i + 1] = moved;
    p.count[i] -= moved;
    ++p.n;
}

void RankIndex::insertKey(const Key& k) {
    if (root_ == kNone) {
        root_ = newLeaf();
        height_ = 0;
    }
    if (childSize(root_, height_) == (height_ == 0 ? kLeafCap : kInnerCap)) {
        std::uint32_t total = 0;
        if (height_ == 0) {
            total = leaves_[root_].n;
        } else {
            const Inner& old = inners_[root_];
            for (std::uint32_t j = 0; j < old.n; ++j) {
                total += old.count[j];
            }
        }
        std::uint32_t r = newInner();
        Inner& in = inners_[r];
        in.n = 1;
        in.child[0] = root_;
        in.count[0] = total;
        in.low[0] = k;
        root_ = r;
        ++height_;
        splitChild(r, 0, height_ - 1);
    }
    // Down from the root, splitting any full node before entering it, so that a split always has room
    // in its parent.
    std::uint32_t node = root_;
    for (int level = height_; level > 0; --level) {
        int i = route(inners_[node], k);
        if (childSize(inners_[node].child[i], level - 1) == (level == 1 ? kLeafCap : kInnerCap)) {
            splitChild(node, i, level - 1);
            if (!before(k, inners_[node].low[i + 1])) {
                ++i;
            }
        }
        Inner& in = inners_[node];
        ++in.count[i];
        node = in.child[i];
    }
    Leaf& leaf = leaves_[node];
    int pos = lowerBound(leaf, k);
    int n = static_cast<int>(leaf.n);
    shiftRight(leaf.pairs, pos, n, 1);
    shiftRight(leaf.slotIds, pos, n, 1);
    leaf.pairs[pos] = Pair{k.value, k.reachedAt};
    leaf.slotIds[pos] = k.slot;
    ++leaf.n;
}

// Child i of `parent` is at its minimum: merges it with a sibling, or evens the two out, so that it can
// lose a key. Returns the index of the child that now holds k.
int RankIndex::fixChild(std::uint32_t parent, int i, int childLevel, const Key& k) {
    Inner& p = inners_[parent];
    int a = i + 1 < static_cast<int>(p.n) ? i : i - 1;
    int b = a + 1;
    int sa = childSize(p.child[a], childLevel);
    int sb = childSize(p.child[b], childLevel);
    bool merge = sa + sb <= (childLevel == 0 ? kLeafMerge : kInnerMerge);
    if (childLevel == 0) {
        Leaf& left = leaves_[p.child[a]];
        Leaf& right = leaves_[p.child[b]];
        if (merge) {
            std::copy_n(right.pairs.begin(), sb, left.pairs.begin() + sa);
            std::copy_n(right.slotIds.begin(), sb, left.slotIds.begin() + sa);
            left.n += right.n;
            left.next = right.next;
        } else if (sa < sb) {
            int m = (sb - sa) / 2;
            std::copy_n(right.pairs.begin(), m, left.pairs.begin() + sa);
            std::copy_n(right.slotIds.begin(), m, left.slotIds.begin() + sa);
            shiftLeft(right.pairs, m, sb, m);
            shiftLeft(right.slotIds, m, sb, m);
            left.n += static_cast<std::uint32_t>(m);
            right.n -= static_cast<std::uint32_t>(m);
            p.count[a] += static_cast<std::uint32_t>(m);
            p.count[b] -= static_cast<std::uint32_t>(m);
        } else {
            int m = (sa - sb) / 2;
            shiftRight(right.pairs, 0, sb, m);
            shiftRight(right.slotIds, 0, sb, m);
            std::copy_n(left.pairs.begin() + (sa - m), m, right.pairs.begin());
            std::copy_n(left.slotIds.begin() + (sa - m), m, right.slotIds.begin());
            left.n -= static_cast<std::uint32_t>(m);
            right.n += static_cast<std::uint32_t>(m);
            p.count[a] -= static_cast<std::uint32_t>(m);
            p.count[b] += static_cast<std::uint32_t>(m);
        }
        if (!merge) {
            p.low[b] = right.key(0);
        }
    } else {
        Inner& left = inners_[p.child[a]];
        Inner& right = inners_[p.child[b]];
        if (merge) {
            std::copy_n(right.low.begin(), sb, left.low.begin() + sa);
            std::copy_n(right.child.begin(), sb, left.child.begin() + sa);
            std::copy_n(right.count.begin(), sb, left.count.begin() + sa);
            left.low[sa] = p.low[b];
            left.n += right.n;
        } else if (sa < sb) {
            int m = (sb - sa) / 2;
            std::uint32_t keys = 0;
            for (int j = 0; j < m; ++j) {
                keys += right.count[j];
            }
            std::copy_n(right.low.begin(), m, left.low.begin() + sa);
            std::copy_n(right.child.begin(), m, left.child.begin() + sa);
            std::copy_n(right.count.begin(), m, left.count.begin() + sa);
            left.low[sa] = p.low[b];
            p.low[b] = right.low[m];
            shiftLeft(right.low, m, sb, m);
            shiftLeft(right.child, m, sb, m);
            shiftLeft(right.count, m, sb, m);
            left.n += static_cast<std::uint32_t>(m);
            right.n -= static_cast<std::uint32_t>(m);
            p.count[a] += keys;
            p.count[b] -= keys;
        } else {
            int m = (sa - sb) / 2;
            std::uint32_t keys = 0;
            for (int j = sa - m; j < sa; ++j) {
                keys += left.count[j];
            }
            shiftRight(right.low, 0, sb, m);
            shiftRight(right.child, 0, sb, m);
            shiftRight(right.count, 0, sb, m);
            right.low[m] = p.low[b];
            std::copy_n(left.low.begin() + (sa - m), m, right.low.begin());
            std::copy_n(left.child.begin() + (sa - m), m, right.child.begin());
            std::copy_n(left.count.begin() + (sa - m), m, right.count.begin());
            p.low[b] = right.low[0];
            left.n -= static_cast<std::uint32_t>(m);
            right.n += static_cast<std::uint32_t>(m);
            p.count[a] -= keys;
            p.count[b] += keys;
        }
    }
    if (merge) {
        (childLevel == 0 ? freeLeaves_ : freeInners_).push_back(p.child[b]);
        p.count[a] += p.count[b];
        int n = static_cast<int>(p.n);
        shiftLeft(p.low, b + 1, n, 1);
        shiftLeft(p.child, b + 1, n, 1);
        shiftLeft(p.count, b + 1, n, 1);
        --p.n;
        return a;
    }
    return before(k, p.low[b]) ? a : b;
}

void RankIndex::eraseKey(const Key& k) {
    // Down from the root, filling up any node at its minimum before entering it, so that no node
    // below the root ever falls under it.
    std::uint32_t node = root_;
    for (int level = height_; level > 0; --level) {
        int i = route(inners_[node], k);
        if (childSize(inners_[node].child[i], level - 1) <= (level == 1 ? kLeafMin : kInnerMin)) {
            i = fixChild(node, i, level - 1, k);
        }
        Inner& in = inners_[node];
        --in.count[i];
        node = in.child[i];
    }
    Leaf& leaf = leaves_[node];
    int pos = lowerBound(leaf, k);
    int n = static_cast<int>(leaf.n);
    shiftLeft(leaf.pairs, pos + 1, n, 1);
    shiftLeft(leaf.slotIds, pos + 1, n, 1);
    --leaf.n;
    while (height_ > 0 && inners_[root_].n == 1) {
        freeInners_.push_back(root_);
        root_ = inners_[root_].child[0];
        --height_;
    }
}

// Sorts every staged entry once and fills the leaves left to right, then each level of inner nodes above
// them, every node about 7/8 full. The index holds entries only, no tree yet.
void RankIndex::buildTree() {
    std::size_t n = entries_.size();
    if (n == 0) {
        return;
    }
    std::vector<Key> keys(n);
    for (std::uint32_t slot = 0; slot < n; ++slot) {
        keys[slot] = keyOf(slot);
    }
    std::sort(keys.begin(), keys.end(), before);

    // Groups of nearly equal size, none above `most` and, when there are several, none below half of it.
    auto groupsOf = [](std::size_t items, std::size_t most) { return (items + most - 1) / most; };
    std::vector<std::uint32_t> level;
    std::vector<Key> lows;
    std::vector<std::uint32_t> counts;
    std::size_t groups = groupsOf(n, kLeafBuild);
    for (std::size_t g = 0, at = 0; g < groups; ++g) {
        std::size_t size = n / groups + (g < n % groups ? 1 : 0);
        leaves_.makeRoom(1);
        std::uint32_t id = newLeaf(); // the leaves are numbered 0, 1, ... in rank order
        Leaf& leaf = leaves_[id];
        for (std::size_t j = 0; j < size; ++j) {
            leaf.pairs[j] = Pair{keys[at + j].value, keys[at + j].reachedAt};
            leaf.slotIds[j] = keys[at + j].slot;
        }
        leaf.n = static_cast<std::uint32_t>(size);
        leaf.next = g + 1 < groups ? id + 1 : kNone;
        level.push_back(id);
        lows.push_back(keys[at]);
        counts.push_back(static_cast<std::uint32_t>(size));
        at += size;
    }
    keys = std::vector<Key>();
    while (level.size() > 1) {
        std::size_t m = level.size();
        groups = groupsOf(m, kInnerBuild);
        std::vector<std::uint32_t> upper;
        std::vector<Key> upperLows;
        std::vector<std::uint32_t> upperCounts;
        for (std::size_t g = 0, at = 0; g < groups; ++g) {
            std::size_t size = m / groups + (g < m % groups ? 1 : 0);
            inners_.makeRoom(1);
            std::uint32_t id = newInner();
            Inner& in = inners_[id];
            std::uint32_t total = 0;
            for (std::size_t j = 0; j < size; ++j) {
                in.low[j] = lows[at + j];
                in.child[j] = level[at + j];
                in.count[j] = counts[at + j];
                total += counts[at + j];
            }
            in.n = static_cast<std::uint32_t>(size);
            upper.push_back(id);
            upperLows.push_back(lows[at]);
            upperCounts.push_back(total);
            at += size;
        }
        level.swap(upper);
        lows.swap(upperLows);
        counts.swap(upperCounts);
        ++height_;
    }
    root_ = level[0];
}

} // namespace tarvolin::logic
