// Counters of the service, written out in the Prometheus text format.
#pragma once

#include "logic/ad_rules.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <tuple>

namespace tarvolin::net {

class Metrics {
public:
    void recordRequest(const std::string& route, const std::string& method, unsigned status, double seconds);
    void websocketOpened() { ++openWebSockets_; }
    void websocketClosed() { --openWebSockets_; }
    std::int64_t openWebSockets() const { return openWebSockets_; }
    // A piece of live data relayed, or refused (too large, too fast, nobody to take it).
    void liveRelayed() { ++liveRelayed_; }
    void liveRefused() { ++liveRefused_; }

    // extraGauges: further lines in the text format, written as they are.
    std::string render(const std::string& extraGauges) const;

    static constexpr std::array<double, 12> kBuckets{0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025,
                                                     0.05,   0.1,   0.25,   0.5,   1.0,  2.5};

private:
    struct Histogram {
        std::array<std::uint64_t, kBuckets.size()> buckets{};
        std::uint64_t count = 0;
        double sum = 0;
    };
    mutable std::mutex mutex_;
    std::map<std::tuple<std::string, std::string, unsigned>, std::uint64_t> requests_;
    std::map<std::string, Histogram> latency_;
    std::atomic<std::int64_t> openWebSockets_{0};
    std::atomic<std::uint64_t> liveRelayed_{0};
    std::atomic<std::uint64_t> liveRefused_{0};
};

// Counters of the payment sandbox and the house ads, kept by the API and written out with the others.
class CommerceMetrics {
public:
    enum class Payment { Created, Purchased, Failed, Finished, Restored };
    void payments(Payment p, std::uint64_t n = 1) { payments_.at(static_cast<std::size_t>(p)) += n; }
    void adServed(logic::ads::Format f) { ++served_.at(static_cast<std::size_t>(f)); }
    void impression(logic::ads::Format f) { ++impressions_.at(static_cast<std::size_t>(f)); }
    void rewarded(logic::ads::Format f) { ++rewards_.at(static_cast<std::size_t>(f)); }
    void rewardRefused(logic::ads::Refusal r) { ++refused_.at(static_cast<std::size_t>(r)); }

    std::string render() const;

private:
    std::array<std::atomic<std::uint64_t>, 5> payments_{};
    std::array<std::atomic<std::uint64_t>, logic::ads::kFormats> served_{};
    std::array<std::atomic<std::uint64_t>, logic::ads::kFormats> impressions_{};
    std::array<std::atomic<std::uint64_t>, logic::ads::kFormats> rewards_{};
    std::array<std::atomic<std::uint64_t>, 4> refused_{};
};

// Abuse limits that bit: refusals and connections cut off, by limit. The API and the server count into one.
class LimitMetrics {
public:
    enum class Limit {
        Signups,         // sign-ups refused for their address
        Handshakes,      // WebSocket handshakes refused for their address
        Connections,     // connections closed at once: their address had too many open
        HeaderTimeout,   // requests whose headers did not arrive in time
        WebSocketTimeout // WebSockets closed because they stopped answering
    };
    static constexpr std::size_t kLimits = 5;
    static const char* name(Limit l);

    void bit(Limit l) { ++counts_.at(static_cast<std::size_t>(l)); }
    std::uint64_t count(Limit l) const { return counts_.at(static_cast<std::size_t>(l)).load(); }
    std::string render() const;

private:
    std::array<std::atomic<std::uint64_t>, kLimits> counts_{};
};

} // namespace tarvolin::net
