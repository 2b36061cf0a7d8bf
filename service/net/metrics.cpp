#include "net/metrics.h"

#include <sstream>

namespace tarvolin::net {
namespace {

std::string label(const std::string& s) {
    std::string out;
    for (char c : s) {
        if (c == '\\' || c == '"') {
            out += '\\';
        }
        out += c == '\n' ? ' ' : c;
    }
    return out;
}

} // namespace

void Metrics::recordRequest(const std::string& route, const std::string& method, unsigned status,
                            double seconds) {
    std::lock_guard lock(mutex_);
    ++requests_[{route, method, status}];
    Histogram& h = latency_[route];
    for (std::size_t i = 0; i < kBuckets.size(); ++i) {
        if (seconds <= kBuckets[i]) {
            ++h.buckets[i];
        }
    }
    ++h.count;
    h.sum += seconds;
}

std::string Metrics::render(const std::string& extraGauges) const {
    std::ostringstream out;
    std::lock_guard lock(mutex_);
    out << "# HELP tarvolin_http_requests_total HTTP requests by route, method and status.\n"
        << "# TYPE tarvolin_http_requests_total counter\n";
    for (const auto& [key, n] : requests_) {
        const auto& [route, method, status] = key;
        out << "tarvolin_http_requests_total{route=\"" << label(route) << "\",method=\"" << label(method)
            << "\",status=\"" << status << "\"} " << n << "\n";
    }
    out << "# HELP tarvolin_http_request_duration_seconds Time from a complete request to its response.\n"
        << "# TYPE tarvolin_http_request_duration_seconds histogram\n";
    for (const auto& [route, h] : latency_) {
        std::string r = label(route);
        for (std::size_t i = 0; i < kBuckets.size(); ++i) {
            out << "tarvolin_http_request_duration_seconds_bucket{route=\"" << r << "\",le=\"" << kBuckets[i]
                << "\"} " << h.buckets[i] << "\n";
        }
        out << "tarvolin_http_request_duration_seconds_bucket{route=\"" << r << "\",le=\"+Inf\"} " << h.count
            << "\n"
            << "tarvolin_http_request_duration_seconds_sum{route=\"" << r << "\"} " << h.sum << "\n"
            << "tarvolin_http_request_duration_seconds_count{route=\"" << r << "\"} " << h.count << "\n";
    }
    out << "# HELP tarvolin_websockets_open Open event WebSockets.\n"
        << "# TYPE tarvolin_websockets_open gauge\n"
        << "tarvolin_websockets_open " << openWebSockets_.load() << "\n"
        << "# HELP tarvolin_live_messages_total Live data sent on by the relay, and refused.\n"
        << "# TYPE tarvolin_live_messages_total counter\n"
        << "tarvolin_live_messages_total{outcome=\"relayed\"} " << liveRelayed_.load() << "\n"
        << "tarvolin_live_messages_total{outcome=\"refused\"} " << liveRefused_.load() << "\n"
        << extraGauges;
    return out.str();
}

std::string CommerceMetrics::render() const {
    namespace ads = logic::ads;
    std::ostringstream out;
    static constexpr std::array<const char*, 5> kPaymentNames{"created", "purchased", "failed", "finished",
                                                              "restored"};
    out << "# HELP tarvolin_store_transactions_total Sandbox payments opened, purchased, failed, finished, "
           "and transactions restored.\n"
        << "# TYPE tarvolin_store_transactions_total counter\n";
    for (std::size_t i = 0; i < kPaymentNames.size(); ++i) {
        out << "tarvolin_store_transactions_total{event=\"" << kPaymentNames[i] << "\"} "
            << payments_[i].load() << "\n";
    }
    auto byFormat = [&](const char* name, const char* help,
                        const std::array<std::atomic<std::uint64_t>, ads::kFormats>& counts) {
        out << "# HELP " << name << " " << help << "\n# TYPE " << name << " counter\n";
        for (std::size_t i = 0; i < ads::kFormats; ++i) {
            out << name << "{format=\"" << ads::formatName(static_cast<ads::Format>(i)) << "\"} "
                << counts[i].load() << "\n";
        }
    };
    byFormat("tarvolin_ads_served_total", "House ads served, by format.", served_);
    byFormat("tarvolin_ad_impressions_total", "Impressions recorded, by format.", impressions_);
    byFormat("tarvolin_ad_rewards_total", "Rewards granted, by format.", rewards_);
    out << "# HELP tarvolin_ad_rewards_refused_total Reward claims refused, by the refusal's code.\n"
        << "# TYPE tarvolin_ad_rewards_refused_total counter\n";
    for (ads::Refusal r : {ads::Refusal::NotFound, ads::Refusal::TooEarly, ads::Refusal::AlreadyRewarded}) {
        out << "tarvolin_ad_rewards_refused_total{code=\"" << ads::refusalCode(r) << "\"} "
            << refused_.at(static_cast<std::size_t>(r)).load() << "\n";
    }
    return out.str();
}

const char* LimitMetrics::name(Limit l) {
    switch (l) {
    case Limit::Signups:
        return "signups";
    case Limit::Handshakes:
        return "handshakes";
    case Limit::Connections:
        return "connections";
    case Limit::HeaderTimeout:
        return "header_timeout";
    case Limit::WebSocketTimeout:
        return "websocket_timeout";
    }
    return "unknown";
}

std::string LimitMetrics::render() const {
    std::ostringstream out;
    out << "# HELP tarvolin_limited_total Requests refused and connections closed by the abuse limits, by "
           "limit.\n"
        << "# TYPE tarvolin_limited_total counter\n";
    for (std::size_t i = 0; i < kLimits; ++i) {
        out << "tarvolin_limited_total{limit=\"" << name(static_cast<Limit>(i)) << "\"} " << counts_[i].load()
            << "\n";
    }
    return out.str();
}

} // namespace tarvolin::net
