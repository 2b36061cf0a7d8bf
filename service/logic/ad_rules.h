// The rules of house ads, with no storage and no clock of their own: which format an ad unit shows, which ad
// comes next in a player's rotation, what an impression keeps and when it earns its reward.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvolin::logic::ads {

// The names are the wire's and the database's.
enum class Format { Interstitial, Rewarded, Banner };
constexpr std::size_t kFormats = 3;
const char* formatName(Format f);
std::optional<Format> formatFrom(std::string_view name);

// Whether the player allowed tracking, as the game was told.
enum class Tracking { Authorized, Denied, NotDetermined };
const char* trackingName(Tracking t);
std::optional<Tracking> trackingFrom(std::string_view name);

// The format an ad unit of the game shows; nothing for an unknown unit.
std::optional<Format> unitFormat(std::string_view unit);

// An impression token or identifier longer than this is no one's.
constexpr std::size_t kMaxTokenBytes = 100;

struct Ad {
    std::string id;
    Format format = Format::Interstitial;
    std::string kind;      // "picture" (with an SVG) or "card"
    std::string promotion; // "house" or "cross"
    std::string title;
    std::string body;
    std::string callToAction;
    std::string actionUrl;
    bool hasPicture = false;
    std::string background; // #RRGGBB
    std::string foreground;
    std::string accent;
    std::int64_t durationSeconds = 0; // rewarded: what must be watched for the reward
    std::int64_t width = 0;           // banners
    std::int64_t height = 0;
};

// An active ad of a format, and when the player was last served it (a rising number of his; nothing when
// never).
struct Candidate {
    Ad ad;
    std::optional<std::int64_t> lastServed;
};
// The ad the player was served longest ago, one never served before any other, ties by identifier in byte
// order; nothing when there are no candidates.
std::optional<std::size_t> nextInRotation(const std::vector<Candidate>& candidates);

struct Impression {
    std::string id;
    std::string adId;
    Format format = Format::Interstitial;
    std::string playerId; // empty when the impression does not keep who saw it
    std::int64_t recordedAt = 0;
    std::int64_t durationSeconds = 0;
    std::optional<std::int64_t> rewardedAt;
};

// An impression keeps its player when tracking is authorized; of a rewarded ad always, for the reward check
// alone.
bool keepsPlayer(Format f, Tracking t);

enum class Refusal {
    NotFound,        // unknown, another player's, or (for a reward) not of a rewarded ad
    AlreadyRecorded, // an impression token is used once
    TooEarly,        // the rewarded ad has not run its time
    AlreadyRewarded, // a reward is claimed once
};
const char* refusalCode(Refusal r);
// Why the player may not have the impression's reward now; nothing when he may.
std::optional<Refusal> rewardRefusal(const Impression& i, const std::string& playerId, std::int64_t now);

} // namespace tarvolin::logic::ads
