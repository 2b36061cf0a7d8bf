// The leaderboard's routes: score reports, which are committed in groups and answered once on disk; the
// player's own place; pages of the global order, of the player and their friends, or of chosen players.
#include "net/api.h"

#include "net/api_support.h"

#include <algorithm>
#include <unordered_map>

namespace tarvolin::net {

using namespace detail;

namespace {

json::object scoreJson(const logic::RankedScore& s, const store::PlayerRecord& p, bool isFriend) {
    return json::object{{"rank", s.rank},
                        {"value", s.value},
                        {"context", s.context},
                        {"date", s.updatedAt},
                        {"player", playerJson(p, isFriend)}};
}

} // namespace

void Api::reportScore(Ctx& c, Done done) {
    json::object body = parseBody(c.req.body);
    auto value = optionalInt64(body, "value");
    if (!value) {
        throw ApiError(400, "missing_field", "\"value\" is required");
    }
    std::int64_t context = optionalInt64(body, "context").value_or(0);
    // Answered once the report's group is committed: an answered report is on disk.
    reports_->submit(PendingReport{c.playerId, *value, context, std::move(done)});
}

void Api::commitReports(std::vector<PendingReport>& batch) {
    std::vector<std::optional<logic::RankedScore>> mine(batch.size());
    std::exception_ptr failure;
    try {
        std::lock_guard report(reportMutex_);
        const std::int64_t now = clock_();
        // Where each player stands as the group goes: the index, then their own earlier reports in the group.
        std::unordered_map<std::string, std::pair<std::int64_t, std::int64_t>> standing; // value, reachedAt
        std::vector<store::ScoreRecord> rows;
        rows.reserve(batch.size());
        for (const PendingReport& r : batch) {
            auto before = standing.find(r.playerId);
            if (before == standing.end()) {
                std::shared_lock lock(indexMutex_);
                if (auto old = index_.find(r.playerId)) {
                    before = standing.emplace(r.playerId, std::pair{old->value, old->reachedAt}).first;
                }
            }
            std::int64_t reachedAt = 0;
            if (before != standing.end() && before->second.first == r.value) {
                reachedAt = before->second.second; // the same total again keeps its place among equals
            } else {
                reachedAt = std::max(now * 1000, lastReachedAt_ + 1);
                lastReachedAt_ = reachedAt;
            }
            standing.insert_or_assign(r.playerId, std::pair{r.value, reachedAt});
            rows.push_back(store::ScoreRecord{r.playerId, r.value, r.context, reachedAt, now});
        }
        store_.putScores(rows);
        // In the order they came, each report's answer is its place right after it was put.
        std::unique_lock lock(indexMutex_);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const store::ScoreRecord& s = rows[i];
            index_.put(s.playerId, s.value, s.context, s.reachedAt, s.updatedAt);
            mine[i] = index_.find(s.playerId);
        }
    } catch (...) {
        failure = std::current_exception();
    }
    std::unordered_map<std::string, store::PlayerRecord> players;
    if (!failure) {
        try {
            std::vector<std::string> ids;
            for (const PendingReport& r : batch) {
                ids.push_back(r.playerId);
            }
            for (auto& p : recentPlayers(ids)) {
                players.emplace(p.id, std::move(p));
            }
        } catch (...) {
            // The scores are stored: the answers go out without a name rather than as a failure.
        }
    }
    for (std::size_t i = 0; i < batch.size(); ++i) {
        Response res;
        if (failure) {
            res = failureResponse(failure);
        } else if (auto p = players.find(batch[i].playerId); p != players.end() && mine[i]) {
            res = jsonResponse(200, json::object{{"score", scoreJson(*mine[i], p->second, false)}});
        } else {
            res = errorResponse(404, "player_not_found", "no such player");
        }
        try {
            batch[i].done(std::move(res));
        } catch (...) {
            // One caller gone wrong must not keep the others of its group from their answers.
        }
    }
}

Response Api::localScore(Ctx& c) {
    std::optional<logic::RankedScore> mine;
    std::int64_t total = 0;
    {
        std::shared_lock lock(indexMutex_);
        mine = index_.find(c.playerId);
        total = index_.size();
    }
    auto ps = recentPlayers({c.playerId});
    if (ps.empty()) {
        throw ApiError(404, "player_not_found", "no such player");
    }
    json::value local = mine ? json::value(scoreJson(*mine, ps[0], false)) : json::value(nullptr);
    return jsonResponse(200, json::object{{"local", std::move(local)}, {"total", total}});
}

Response Api::loadScores(Ctx& c) {
    auto it = c.req.query.find("scope");
    std::string scope = it == c.req.query.end() ? "global" : it->second;
    bool byPlayers = c.req.query.contains("players");
    if (byPlayers) {
        scope = "players";
    } else if (scope != "global" && scope != "friends") {
        throw ApiError(400, "invalid_parameter", "\"scope\" must be global or friends");
    }
    std::int64_t first = queryInt(c.req, "from", 1, 1, std::int64_t{1} << 53);
    std::int64_t count = queryInt(c.req, "count", static_cast<std::int64_t>(kMaxPage), 1, kMaxPage);

    std::vector<logic::RankedScore> page;
    std::optional<logic::RankedScore> mine;
    std::int64_t total = 0;
    const auto& friends = c.friendsOf(store_);
    if (scope == "global") {
        std::shared_lock lock(indexMutex_);
        page = index_.range(first, count);
        mine = index_.find(c.playerId);
        total = index_.size();
    } else {
        std::vector<std::string> ids;
        if (byPlayers) {
            ids = idList(c.req.query.at("players"), "players");
        } else {
            ids.assign(friends.begin(), friends.end());
            ids.push_back(c.playerId);
        }
        std::vector<logic::RankedScore> all;
        {
            std::shared_lock lock(indexMutex_);
            for (const auto& id : ids) {
                if (auto s = index_.find(id)) {
                    all.push_back(*s);
                }
            }
            mine = index_.find(c.playerId);
        }
        std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.rank < b.rank; });
        if (byPlayers) {
            page = std::move(all);
        } else {
            // Ranks among the player and their friends, in the global order.
            for (std::size_t i = 0; i < all.size(); ++i) {
                all[i].rank = static_cast<std::int64_t>(i) + 1;
                if (all[i].playerId == c.playerId) {
                    mine = all[i];
                }
            }
            total = static_cast<std::int64_t>(all.size());
            for (std::int64_t r = first; r < first + count && r <= total; ++r) {
                page.push_back(all[static_cast<std::size_t>(r - 1)]);
            }
        }
    }
    if (byPlayers) {
        total = static_cast<std::int64_t>(page.size());
    }

    std::vector<std::string> ids{c.playerId};
    for (const auto& s : page) {
        ids.push_back(s.playerId);
    }
    std::map<std::string, store::PlayerRecord> byId;
    for (auto& p : recentPlayers(ids)) {
        byId.emplace(p.id, std::move(p));
    }
    json::array scores;
    for (const auto& s : page) {
        if (auto p = byId.find(s.playerId); p != byId.end()) {
            scores.push_back(scoreJson(s, p->second, friends.contains(s.playerId)));
        }
    }
    json::value local = nullptr;
    if (mine && byId.contains(c.playerId)) {
        local = scoreJson(*mine, byId[c.playerId], false);
    }
    return jsonResponse(200, json::object{{"scope", scope},
                                          {"from", first},
                                          {"total", total},
                                          {"scores", std::move(scores)},
                                          {"local", std::move(local)}});
}

} // namespace tarvolin::net
