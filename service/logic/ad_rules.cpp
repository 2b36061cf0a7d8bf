#include "logic/ad_rules.h"

#include <array>
#include <utility>

namespace tarvolin::logic::ads {
namespace {

constexpr std::array<std::string_view, kFormats> kFormatNames{"interstitial", "rewarded", "banner"};
constexpr std::array<std::string_view, 3> kTrackingNames{"authorized", "denied", "notDetermined"};

constexpr std::array<std::pair<std::string_view, Format>, 4> kUnits{{
    {"tarvolin-interstitial", Format::Interstitial},
    {"tarvolin-rewarded", Format::Rewarded},
    {"tarvolin-banner-phone", Format::Banner},
    {"tarvolin-banner-tablet", Format::Banner},
}};

template <typename E, std::size_t N>
std::optional<E> fromName(const std::array<std::string_view, N>& names, std::string_view name) {
    for (std::size_t i = 0; i < N; ++i) {
        if (names[i] == name) {
            return static_cast<E>(i);
        }
    }
    return std::nullopt;
}

} // namespace

const char* formatName(Format f) {
    return kFormatNames.at(static_cast<std::size_t>(f)).data();
}

std::optional<Format> formatFrom(std::string_view name) {
    return fromName<Format>(kFormatNames, name);
}

const char* trackingName(Tracking t) {
    return kTrackingNames.at(static_cast<std::size_t>(t)).data();
}

std::optional<Tracking> trackingFrom(std::string_view name) {
    return fromName<Tracking>(kTrackingNames, name);
}

std::optional<Format> unitFormat(std::string_view unit) {
    for (const auto& [name, format] : kUnits) {
        if (name == unit) {
            return format;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> nextInRotation(const std::vector<Candidate>& candidates) {
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (!best) {
            best = i;
            continue;
        }
        const Candidate& a = candidates[i];
        const Candidate& b = candidates[*best];
        // Never served (nothing) sorts before any serving; std::optional orders it so.
        if (a.lastServed < b.lastServed || (a.lastServed == b.lastServed && a.ad.id < b.ad.id)) {
            best = i;
        }
    }
    return best;
}

bool keepsPlayer(Format f, Tracking t) {
    return t == Tracking::Authorized || f == Format::Rewarded;
}

const char* refusalCode(Refusal r) {
    switch (r) {
    case Refusal::NotFound:
        return "impression_not_found";
    case Refusal::AlreadyRecorded:
        return "impression_already_recorded";
    case Refusal::TooEarly:
        return "reward_too_early";
    case Refusal::AlreadyRewarded:
        return "already_rewarded";
    }
    return "impression_not_found";
}

std::optional<Refusal> rewardRefusal(const Impression& i, const std::string& playerId, std::int64_t now) {
    if (i.format != Format::Rewarded || i.playerId.empty() || i.playerId != playerId) {
        return Refusal::NotFound;
    }
    if (i.rewardedAt) {
        return Refusal::AlreadyRewarded;
    }
    if (now - i.recordedAt < i.durationSeconds * 1000) {
        return Refusal::TooEarly;
    }
    return std::nullopt;
}

} // namespace tarvolin::logic::ads
