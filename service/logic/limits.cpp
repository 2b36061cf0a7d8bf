#include "logic/limits.h"

#include <algorithm>
#include <cmath>

namespace tarvolin::logic {

void FailureLimiter::prune(std::deque<std::int64_t>& times, std::int64_t nowMs) const {
    while (!times.empty() && times.front() <= nowMs - window_) {
        times.pop_front();
    }
}

std::int64_t FailureLimiter::retryAfter(const std::string& key, std::int64_t nowMs) {
    std::lock_guard lock(mutex_);
    auto it = failures_.find(key);
    if (it == failures_.end()) {
        return 0;
    }
    prune(it->second, nowMs);
    if (static_cast<int>(it->second.size()) < max_) {
        return 0;
    }
    // Allowed again when the oldest failure that still counts leaves the window.
    return it->second[it->second.size() - static_cast<std::size_t>(max_)] + window_ - nowMs;
}

void FailureLimiter::recordFailure(const std::string& key, std::int64_t nowMs) {
    std::lock_guard lock(mutex_);
    if (nowMs - lastSweep_ > window_) {
        lastSweep_ = nowMs;
        for (auto it = failures_.begin(); it != failures_.end();) {
            prune(it->second, nowMs);
            it = it->second.empty() ? failures_.erase(it) : std::next(it);
        }
    }
    auto& times = failures_[key];
    prune(times, nowMs);
    times.push_back(nowMs);
    // Keep the memory of one key bounded; only the newest max_ failures decide.
    while (static_cast<int>(times.size()) > max_) {
        times.pop_front();
    }
}

void FailureLimiter::clear(const std::string& key) {
    std::lock_guard lock(mutex_);
    failures_.erase(key);
}

std::int64_t RequestLimiter::take(const std::string& key, std::int64_t nowMs) {
    if (rate_ <= 0) {
        return 0;
    }
    std::lock_guard lock(mutex_);
    if (nowMs - lastSweep_ > 60'000) {
        lastSweep_ = nowMs;
        std::erase_if(buckets_, [&](const auto& kv) {
            return kv.second.tokens + (static_cast<double>(nowMs - kv.second.at) / 1000.0) * rate_ >= burst_;
        });
    }
    auto [it, inserted] = buckets_.try_emplace(key, Bucket{burst_, nowMs});
    Bucket& b = it->second;
    double elapsed = static_cast<double>(std::max<std::int64_t>(0, nowMs - b.at)) / 1000.0;
    b.tokens = std::min(burst_, b.tokens + elapsed * rate_);
    b.at = nowMs;
    // Tokens add up in small steps: a token short by rounding alone counts as whole.
    constexpr double kSlack = 1e-9;
    if (b.tokens < 1.0 - kSlack) {
        const double ms = (1.0 - b.tokens) / rate_ * 1000.0;
        return std::max<std::int64_t>(1, static_cast<std::int64_t>(std::ceil(ms - 1e-6)));
    }
    b.tokens = std::max(0.0, b.tokens - 1.0);
    return 0;
}

} // namespace tarvolin::logic
