// What the API's handlers share: errors that become JSON answers, body and query readers, the context of
// one request. Only the API's own files include it.
#pragma once

#include "net/api.h"

#include <boost/json.hpp>
#include <sodium.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <stdexcept>
#include <unordered_set>

namespace tarvolin::net {

namespace json = boost::json;

namespace detail {

constexpr std::size_t kMaxPage = 100;
constexpr std::size_t kMaxMessage = 200;
constexpr std::size_t kMaxAchievementReports = 100;
constexpr std::size_t kMaxAchievementIdentifier = 64;

struct ApiError : std::runtime_error {
    ApiError(unsigned s, std::string c, const std::string& m, std::int64_t retry = 0)
        : std::runtime_error(m), status(s), code(std::move(c)), retryAfterMs(retry) {}
    unsigned status;
    std::string code;
    std::int64_t retryAfterMs;
};

inline Response jsonResponse(unsigned status, const json::value& v) {
    Response r;
    r.status = status;
    r.body = json::serialize(v);
    return r;
}

inline json::object playerJson(const store::PlayerRecord& p, bool isFriend) {
    return json::object{{"playerID", p.id},
                        {"displayName", p.displayName},
                        {"isFriend", isFriend},
                        {"photoURL", "/v1/players/" + p.id + "/photo"}};
}

inline Response errorResponse(unsigned status, const std::string& code, const std::string& message) {
    return jsonResponse(status, json::object{{"error", json::object{{"code", code}, {"message", message}}}});
}

// An invitation to anyone but a friend or a former opponent; gkCode is the platform's code for it.
inline Response invitationRefused() {
    return jsonResponse(
        403, json::object{
                 {"error", json::object{{"code", "invitation_refused"},
                                        {"message", "invitations go to friends and former opponents only"},
                                        {"gkCode", logic::match::kInvitationRefusedCode}}}});
}

inline std::string randomHex(std::size_t bytes) {
    std::vector<unsigned char> buf(bytes);
    randombytes_buf(buf.data(), buf.size());
    std::string hex(bytes * 2 + 1, '\0');
    sodium_bin2hex(hex.data(), hex.size(), buf.data(), buf.size());
    hex.pop_back();
    return hex;
}

inline std::string sha256Hex(std::string_view s) {
    unsigned char digest[crypto_hash_sha256_BYTES];
    crypto_hash_sha256(digest, reinterpret_cast<const unsigned char*>(s.data()), s.size());
    std::string hex(sizeof digest * 2 + 1, '\0');
    sodium_bin2hex(hex.data(), hex.size(), digest, sizeof digest);
    hex.pop_back();
    return hex;
}

inline bool isIdentifier(std::string_view s) {
    return !s.empty() && s.size() <= 64 && std::all_of(s.begin(), s.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ||
               c == '_';
    });
}

inline json::object parseBody(const std::string& body) {
    json::error_code ec;
    json::value v = json::parse(body, ec);
    if (ec) {
        throw ApiError(400, "invalid_json", "the body is not valid JSON: " + ec.message());
    }
    if (!v.is_object()) {
        throw ApiError(400, "invalid_json", "the body must be a JSON object");
    }
    return std::move(v.as_object());
}

inline std::optional<std::string> optionalString(const json::object& o, std::string_view key) {
    const json::value* v = o.if_contains(key);
    if (!v || v->is_null()) {
        return std::nullopt;
    }
    if (!v->is_string()) {
        throw ApiError(400, "invalid_field", "\"" + std::string(key) + "\" must be a string");
    }
    return std::string(v->as_string());
}

inline std::string requiredString(const json::object& o, std::string_view key) {
    auto s = optionalString(o, key);
    if (!s) {
        throw ApiError(400, "missing_field", "\"" + std::string(key) + "\" is required");
    }
    return *s;
}

inline std::optional<std::int64_t> parseInt64(std::string_view s) {
    std::int64_t v = 0;
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (s.empty() || ec != std::errc() || p != s.data() + s.size()) {
        return std::nullopt;
    }
    return v;
}

// A signed 64-bit integer given as a JSON integer or as a decimal string.
inline std::optional<std::int64_t> optionalInt64(const json::object& o, std::string_view key) {
    const json::value* v = o.if_contains(key);
    if (!v || v->is_null()) {
        return std::nullopt;
    }
    if (v->is_int64()) {
        return v->as_int64();
    }
    if (v->is_uint64() &&
        v->as_uint64() <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
        return static_cast<std::int64_t>(v->as_uint64());
    }
    if (v->is_string()) {
        if (auto n = parseInt64(v->as_string())) {
            return n;
        }
    }
    throw ApiError(400, "invalid_field", "\"" + std::string(key) + "\" must be a signed 64-bit integer");
}

inline std::int64_t queryInt(const Request& req, const std::string& key, std::int64_t fallback,
                             std::int64_t min, std::int64_t max) {
    auto it = req.query.find(key);
    if (it == req.query.end()) {
        return fallback;
    }
    auto v = parseInt64(it->second);
    if (!v || *v < min || *v > max) {
        throw ApiError(400, "invalid_parameter",
                       "\"" + key + "\" must be an integer from " + std::to_string(min) + " to " +
                           std::to_string(max));
    }
    return *v;
}

inline std::vector<std::string> idList(const std::string& text, const std::string& name) {
    std::vector<std::string> ids;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t comma = text.find(',', start);
        std::string id = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (!isIdentifier(id)) {
            throw ApiError(400, "invalid_parameter",
                           "\"" + name + "\" must be a comma-separated list of identifiers");
        }
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) {
            ids.push_back(std::move(id));
        }
        if (comma == std::string::npos) {
            break;
        }
        start = comma + 1;
    }
    if (ids.size() > kMaxPage) {
        throw ApiError(400, "invalid_parameter", "at most 100 identifiers in \"" + name + "\"");
    }
    return ids;
}

} // namespace detail

struct Api::Ctx {
    const Request& req;
    std::vector<std::string> args; // the {…} parts of the path
    std::string playerId;          // the token's player
    std::optional<std::unordered_set<std::string>> friendSet;

    const std::unordered_set<std::string>& friendsOf(store::Store& s) {
        if (!friendSet) {
            auto ids = s.friendIds(playerId);
            friendSet.emplace(ids.begin(), ids.end());
        }
        return *friendSet;
    }
};

} // namespace tarvolin::net
