#include "logic/progress_rules.h"

#include <boost/json.hpp>

#include <algorithm>
#include <array>
#include <utility>

namespace tarvolin::logic::progress {

namespace json = boost::json;

namespace {

// The achievements of the game and their gold.
constexpr std::array<std::pair<std::string_view, std::int64_t>, 41> kAchievementGold{{
    {"days:1", 50},         {"days:5", 100},         {"days:10", 150},        {"days:20", 200},
    {"days:30", 300},       {"days:60", 400},        {"days:90", 600},        {"share", 200},
    {"rate", 300},          {"ourgames", 300},       {"rank:2", 50},          {"rank:3", 100},
    {"rank:4", 100},        {"rank:6", 150},         {"rank:8", 200},         {"rank:10", 300},
    {"gc:5000", 50},        {"gc:2000", 100},        {"gc:1000", 100},        {"gc:500", 150},
    {"gc:200", 200},        {"gc:100", 300},         {"gc:50", 400},          {"gc:10", 500},
    {"gc:5", 800},          {"gc:1", 1000},          {"shareLevel:1", 50},    {"shareLevel:6", 100},
    {"shareLevel:10", 100}, {"shareLevel:20", 150},  {"shareLevel:30", 200},  {"shareLevel:50", 250},
    {"shareLevel:75", 300}, {"shareLevel:100", 400}, {"shareLevel:150", 600}, {"levels:25", 50},
    {"levels:50", 100},     {"levels:75", 150},      {"levels:100", 200},     {"levels:150", 300},
    {"levels:200", 500},
}};

// Reads one document, or throws the error that refuses it.
class Reader {
public:
    static const json::object& object(const json::value& v, const std::string& where) {
        if (!v.is_object()) {
            throw DocumentError{where + " must be an object"};
        }
        return v.as_object();
    }
    static const json::value& field(const json::object& o, std::string_view key, const std::string& where) {
        const json::value* v = o.if_contains(key);
        if (!v) {
            throw DocumentError{path(where, key) + " is missing"};
        }
        return *v;
    }
    static std::int64_t integer(const json::value& v, const std::string& where, std::int64_t min,
                                std::int64_t max = kMaxCount) {
        std::int64_t n = 0;
        if (v.is_int64()) {
            n = v.as_int64();
        } else if (v.is_uint64() && v.as_uint64() <= static_cast<std::uint64_t>(kMaxCount)) {
            n = static_cast<std::int64_t>(v.as_uint64());
        } else {
            throw DocumentError{where + " must be a whole number"};
        }
        if (n < min || n > max) {
            throw DocumentError{where + " must be from " + std::to_string(min) + " to " +
                                std::to_string(max)};
        }
        return n;
    }
    static std::int64_t count(const json::object& o, std::string_view key, const std::string& where) {
        return integer(field(o, key, where), path(where, key), 0);
    }
    static bool boolean(const json::object& o, std::string_view key, const std::string& where) {
        const json::value& v = field(o, key, where);
        if (!v.is_bool()) {
            throw DocumentError{path(where, key) + " must be true or false"};
        }
        return v.as_bool();
    }
    static const json::array& array(const json::object& o, std::string_view key, const std::string& where) {
        const json::value& v = field(o, key, where);
        if (!v.is_array()) {
            throw DocumentError{path(where, key) + " must be an array"};
        }
        if (v.as_array().size() > kMaxListItems) {
            throw DocumentError{path(where, key) + " has more than " + std::to_string(kMaxListItems) +
                                " items"};
        }
        return v.as_array();
    }
    // Only the keys the schema has.
    static void only(const json::object& o, std::initializer_list<std::string_view> keys,
                     const std::string& where) {
        for (const auto& kv : o) {
            if (std::find(keys.begin(), keys.end(), kv.key()) == keys.end()) {
                throw DocumentError{path(where, kv.key()) + " is not a field of the progress document"};
            }
        }
    }
    static std::string path(const std::string& where, std::string_view key) {
        return where.empty() ? "\"" + std::string(key) + "\"" : where + "." + std::string(key);
    }

    static void records(const json::object& stats, std::string_view key) {
        const std::string where = path("stats", key);
        for (std::size_t i = 0; const json::value& item : array(stats, key, "stats")) {
            const std::string at = where + "[" + std::to_string(i++) + "]";
            const json::object& r = object(item, at);
            only(r, {"day", "date", "value"}, at);
            count(r, "day", at);
            integer(field(r, "value", at), path(at, "value"), -kMaxCount);
            const json::value& date = field(r, "date", at);
            if (!date.is_string() || date.as_string().size() > kMaxKeyBytes) {
                throw DocumentError{path(at, "date") + " must be a date text"};
            }
        }
    }

    static Summary read(const json::value& doc) {
        const json::object& o = object(doc, "the progress document");
        only(o,
             {"schema", "level", "gold", "skips", "points", "round", "rewardedLevels", "stats",
              "achievements"},
             "");
        const std::int64_t schema = integer(field(o, "schema", ""), "\"schema\"", 0);
        if (schema != kSchemaVersion) {
            throw DocumentError{"\"schema\" " + std::to_string(schema) +
                                " is not known; this service reads " + std::to_string(kSchemaVersion)};
        }
        Summary s;
        s.level = count(o, "level", "");
        s.gold = count(o, "gold", "");
        s.skips = count(o, "skips", "");
        s.points = count(o, "points", "");

        const json::object& round = object(field(o, "round", ""), "\"round\"");
        only(round, {"previousRound", "travelRound", "travelLevel", "flyOverPassed", "flipImagePassed"},
             "round");
        boolean(round, "previousRound", "round");
        count(round, "travelRound", "round");
        count(round, "travelLevel", "round");
        boolean(round, "flyOverPassed", "round");
        boolean(round, "flipImagePassed", "round");

        for (std::size_t i = 0; const json::value& level : array(o, "rewardedLevels", "")) {
            integer(level, "rewardedLevels[" + std::to_string(i++) + "]", 0);
        }

        const json::object& stats = object(field(o, "stats", ""), "\"stats\"");
        only(stats,
             {"creditsUsed", "skipsUsed", "exchangeSent", "exchangeReceived", "wins", "draws", "losses",
              "battlePoints", "wikipediaRead", "timeTraveled", "flyOverPassed", "activeDays",
              "activeSessions", "levelsShared", "dailyLevels", "dailyRanks"},
             "stats");
        for (std::string_view key : {"creditsUsed", "skipsUsed", "exchangeSent", "exchangeReceived", "wins",
                                     "draws", "losses", "wikipediaRead", "flyOverPassed", "activeSessions"}) {
            count(stats, key, "stats");
        }
        integer(field(stats, "battlePoints", "stats"), "stats.battlePoints", -kMaxCount);
        count(stats, "timeTraveled", "stats");
        s.activeDays = count(stats, "activeDays", "stats");
        s.levelsShared = count(stats, "levelsShared", "stats");
        records(stats, "dailyLevels");
        records(stats, "dailyRanks");

        const json::object& achievements = object(field(o, "achievements", ""), "\"achievements\"");
        if (achievements.size() > kMaxListItems) {
            throw DocumentError{"\"achievements\" has more than " + std::to_string(kMaxListItems) + " items"};
        }
        for (const auto& kv : achievements) {
            if (kv.key().empty() || kv.key().size() > kMaxKeyBytes) {
                throw DocumentError{"an achievement's identifier must have 1 to " +
                                    std::to_string(kMaxKeyBytes) + " bytes"};
            }
            const std::string at = path("achievements", kv.key());
            const json::object& flags = object(kv.value(), at);
            only(flags, {"achieved", "rewarded"}, at);
            boolean(flags, "achieved", at);
            if (boolean(flags, "rewarded", at)) {
                s.rewardedAchievements.emplace(kv.key());
            }
        }
        return s;
    }
};

} // namespace

std::int64_t achievementGold(std::string_view id) {
    for (const auto& [name, gold] : kAchievementGold) {
        if (name == id) {
            return gold;
        }
    }
    return 0;
}

std::variant<Summary, DocumentError> readDocument(std::string_view text) {
    if (text.size() > kMaxDocumentBytes) {
        return DocumentError{"the progress document is larger than " + std::to_string(kMaxDocumentBytes) +
                             " bytes"};
    }
    json::error_code ec;
    json::value v = json::parse(text, ec);
    if (ec) {
        return DocumentError{"the progress document is not valid JSON: " + ec.message()};
    }
    try {
        return Reader::read(v);
    } catch (const DocumentError& e) {
        return e;
    }
}

std::int64_t exchangeGold(std::string_view matchData) {
    json::error_code ec;
    json::value v = json::parse(matchData, ec);
    if (ec || !v.is_object()) {
        return 0;
    }
    const json::value* gold = v.as_object().if_contains("gold");
    if (!gold || !gold->is_int64()) {
        return 0;
    }
    return std::clamp<std::int64_t>(gold->as_int64(), 0, kMaxCount);
}

std::int64_t levelGold(std::int64_t from, std::int64_t to) {
    if (to <= from) {
        return 0;
    }
    const std::int64_t roundsFinished = to / kLevelsPerRound - from / kLevelsPerRound;
    return (to - from) * kLevelGold + roundsFinished * kRoundGold;
}

std::int64_t goldAllowance(const std::optional<Summary>& previous, const Summary& next,
                           std::int64_t elapsedMs, const Earnings& earned) {
    const Summary before = previous.value_or(Summary{});
    std::int64_t allowed = previous ? 0 : kStartingGold;
    allowed += levelGold(before.level, next.level);
    for (const std::string& id : next.rewardedAchievements) {
        if (!before.rewardedAchievements.contains(id)) {
            allowed += achievementGold(id);
        }
    }
    const std::int64_t sharesPaid =
        std::min(next.levelsShared, kSharesPaid) - std::min(before.levelsShared, kSharesPaid);
    allowed += std::max<std::int64_t>(0, sharesPaid) * kShareGold;
    // The usage bonuses come once per new active day. A first save claims the days its profile counts, as
    // many as a bonus history holds; a later one no more new days than the time since the last save can
    // hold (each midnight crossed can start one).
    const std::int64_t newDays = std::max<std::int64_t>(0, next.activeDays - before.activeDays);
    const std::int64_t possibleDays =
        previous ? (std::max<std::int64_t>(0, elapsedMs) + kDayMs - 1) / kDayMs : kMaxBonusDays;
    allowed += std::min(newDays, possibleDays) * kGoldPerActiveDay;
    allowed += std::max<std::int64_t>(0, earned.purchasedGold);
    allowed += std::max<std::int64_t>(0, earned.adRewards) * kAdRewardGold;
    allowed += std::max<std::int64_t>(0, earned.exchangeGold);
    return allowed;
}

bool goldEarned(const std::optional<Summary>& previous, const Summary& next, std::int64_t elapsedMs,
                const Earnings& earned) {
    const std::int64_t before = previous ? previous->gold : 0;
    return next.gold - before <= goldAllowance(previous, next, elapsedMs, earned);
}

} // namespace tarvolin::logic::progress
