// What the database said a moment ago, kept in memory for the hottest requests: which player a token belongs
// to, a player's name. An entry is trusted for `ttlMs` after it was read; whoever changes the stored value
// forgets the entry (this instance at once, other instances when the database tells them), so the time only
// bounds how long a missed notice could leave a stale value. Safe to use from several threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <unordered_map>

namespace tarvolin::net {

template <typename Value> class RecentCache {
public:
    RecentCache(std::int64_t ttlMs, std::size_t capacity) : ttlMs_(ttlMs), capacity_(capacity) {}

    std::optional<Value> find(const std::string& key, std::int64_t nowMs) const {
        std::shared_lock lock(mutex_);
        auto it = entries_.find(key);
        // A clock that went back (a test's, or the machine's) makes the entry as doubtful as an old one.
        if (it == entries_.end() || nowMs < it->second.readAt || nowMs - it->second.readAt >= ttlMs_) {
            return std::nullopt;
        }
        return it->second.value;
    }

    // Where the forgetting stands: read it before reading the database, and give it to put, which then
    // keeps nothing when an entry was forgotten in between (the value read may be the one just removed).
    std::uint64_t generation() const {
        std::shared_lock lock(mutex_);
        return generation_;
    }

    void put(const std::string& key, Value value, std::int64_t nowMs, std::uint64_t readInGeneration) {
        std::unique_lock lock(mutex_);
        if (readInGeneration != generation_) {
            return;
        }
        // Full: start again rather than keep a second structure for the age of every entry. Refilling costs
        // one database read per active key.
        if (entries_.size() >= capacity_ && !entries_.contains(key)) {
            entries_.clear();
        }
        entries_.insert_or_assign(key, Entry{std::move(value), nowMs});
    }

    void forget(const std::string& key) {
        std::unique_lock lock(mutex_);
        entries_.erase(key);
        ++generation_;
    }

    std::size_t size() const {
        std::shared_lock lock(mutex_);
        return entries_.size();
    }

private:
    struct Entry {
        Value value;
        std::int64_t readAt;
    };
    const std::int64_t ttlMs_;
    const std::size_t capacity_;
    mutable std::shared_mutex mutex_;
    std::unordered_map<std::string, Entry> entries_;
    std::uint64_t generation_ = 0;
};

} // namespace tarvolin::net
