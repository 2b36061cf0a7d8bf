// Rate limits: failed logins per key in a sliding window, and requests per key as a token bucket.
// Both take the time from the caller, so that tests drive them with a clock of their own.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>

namespace tarvolin::logic {

class FailureLimiter {
public:
    FailureLimiter(int maxFailures, std::int64_t windowMs) : max_(maxFailures), window_(windowMs) {}

    // Milliseconds until the next attempt is allowed; 0 when it is allowed now.
    std::int64_t retryAfter(const std::string& key, std::int64_t nowMs);
    void recordFailure(const std::string& key, std::int64_t nowMs);
    void clear(const std::string& key);

private:
    void prune(std::deque<std::int64_t>& times, std::int64_t nowMs) const;

    int max_;
    std::int64_t window_;
    std::mutex mutex_;
    std::unordered_map<std::string, std::deque<std::int64_t>> failures_;
    std::int64_t lastSweep_ = 0;
};

class RequestLimiter {
public:
    // perSecond of 0 turns the limit off.
    RequestLimiter(double perSecond, double burst) : rate_(perSecond), burst_(burst) {}

    bool allow(const std::string& key, std::int64_t nowMs) { return take(key, nowMs) == 0; }
    // Takes one request of the key: 0 when it is allowed, otherwise the milliseconds until it would be
    // (nothing is taken then).
    std::int64_t take(const std::string& key, std::int64_t nowMs);

private:
    struct Bucket {
        double tokens;
        std::int64_t at;
    };
    double rate_;
    double burst_;
    std::mutex mutex_;
    std::unordered_map<std::string, Bucket> buckets_;
    std::int64_t lastSweep_ = 0;
};

} // namespace tarvolin::logic
