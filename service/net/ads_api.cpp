// House ads: the next ad of a unit in the player's rotation, its picture, the impression that spends the
// ad's token, and the reward of a rewarded ad watched to its end.
#include "net/api_support.h"

namespace tarvolin::net {

using namespace detail;
namespace ads = logic::ads;

namespace {

// The time a picture may be kept by the game and the proxies between.
constexpr const char* kCreativeCaching = "public, max-age=86400";

json::object adJson(const ads::Ad& ad, const std::string& token) {
    return json::object{{"adIdentifier", ad.id},
                        {"format", ads::formatName(ad.format)},
                        {"kind", ad.kind},
                        {"promotion", ad.promotion},
                        {"title", ad.title},
                        {"body", ad.body},
                        {"callToAction", ad.callToAction},
                        {"actionUrl", ad.actionUrl},
                        {"imageUrl", ad.hasPicture ? json::value("/v1/ads/creatives/" + ad.id + ".svg")
                                                   : json::value(nullptr)},
                        {"background", ad.background},
                        {"foreground", ad.foreground},
                        {"accent", ad.accent},
                        {"durationSeconds", ad.durationSeconds},
                        {"width", ad.width},
                        {"height", ad.height},
                        {"impressionToken", token}};
}

Response adRefusal(ads::Refusal r) {
    switch (r) {
    case ads::Refusal::NotFound:
        return errorResponse(404, ads::refusalCode(r), "no impression of yours has this identifier");
    case ads::Refusal::AlreadyRecorded:
        return errorResponse(409, ads::refusalCode(r), "the impression token has been used already");
    case ads::Refusal::TooEarly:
        return errorResponse(409, ads::refusalCode(r), "the rewarded ad has not run its time yet");
    case ads::Refusal::AlreadyRewarded:
        return errorResponse(409, ads::refusalCode(r), "the reward of this impression has been claimed");
    }
    return errorResponse(404, ads::refusalCode(ads::Refusal::NotFound), "no such impression");
}

// A token or identifier of a length no impression has is no one's.
std::string impressionKey(const json::object& body, std::string_view key) {
    std::string value = requiredString(body, key);
    if (value.size() > ads::kMaxTokenBytes) {
        throw ApiError(404, ads::refusalCode(ads::Refusal::NotFound),
                       "no impression of yours has this " + std::string(key));
    }
    return value;
}

} // namespace

void Api::addAdRoutes() {
    add("GET", "/v1/ads/next", &Api::nextAd, true);
    add("GET", "/v1/ads/creatives/{id}.svg", &Api::adCreative, false);
    add("POST", "/v1/ads/impressions", &Api::recordImpression, true);
    add("POST", "/v1/ads/rewards", &Api::claimReward, true);
}

Response Api::nextAd(Ctx& c) {
    auto unit = c.req.query.find("unit");
    std::optional<ads::Format> format =
        unit == c.req.query.end() ? std::nullopt : ads::unitFormat(unit->second);
    if (!format) {
        throw ApiError(400, "invalid_ad_unit",
                       "\"unit\" must be tarvolin-interstitial, tarvolin-rewarded, tarvolin-banner-phone or "
                       "tarvolin-banner-tablet");
    }
    if (auto tracking = c.req.query.find("tracking");
        tracking != c.req.query.end() && !ads::trackingFrom(tracking->second)) {
        throw ApiError(400, "invalid_parameter", "\"tracking\" must be authorized, denied or notDetermined");
    }
    const std::string token = randomHex(16);
    std::optional<ads::Ad> ad = store_.serveAd(c.playerId, *format, token, clock_());
    if (!ad) {
        throw ApiError(404, "no_fill", "no ad of this unit's format is running");
    }
    commerce_.adServed(*format);
    return jsonResponse(200, json::object{{"ad", adJson(*ad, token)}});
}

Response Api::adCreative(Ctx& c) {
    std::optional<std::string> svg = store_.adPicture(c.args[0]);
    if (!svg) {
        throw ApiError(404, "not_found", "no ad picture has this identifier");
    }
    Response r;
    r.contentType = "image/svg+xml";
    r.body = std::move(*svg);
    r.headers.emplace_back("Cache-Control", kCreativeCaching);
    return r;
}

Response Api::recordImpression(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    const std::string token = impressionKey(body, "impressionToken");
    const std::optional<std::string> trackingName = optionalString(body, "tracking");
    const std::optional<ads::Tracking> tracking =
        trackingName ? ads::trackingFrom(*trackingName) : ads::Tracking::NotDetermined;
    if (!tracking) {
        throw ApiError(400, "invalid_field", "\"tracking\" must be authorized, denied or notDetermined");
    }
    store::ImpressionResult r =
        store_.recordImpression(c.playerId, token, "I" + randomHex(8), *tracking, clock_());
    if (const auto* refusal = std::get_if<ads::Refusal>(&r)) {
        return adRefusal(*refusal);
    }
    const ads::Impression& i = std::get<ads::Impression>(r);
    commerce_.impression(i.format);
    return jsonResponse(201, json::object{{"impressionIdentifier", i.id}});
}

Response Api::claimReward(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    const std::string id = impressionKey(body, "impressionIdentifier");
    store::ImpressionResult r = store_.claimReward(c.playerId, id, clock_());
    if (const auto* refusal = std::get_if<ads::Refusal>(&r)) {
        commerce_.rewardRefused(*refusal);
        return adRefusal(*refusal);
    }
    commerce_.rewarded(std::get<ads::Impression>(r).format);
    return jsonResponse(200, json::object{{"rewarded", true}});
}

} // namespace tarvolin::net
