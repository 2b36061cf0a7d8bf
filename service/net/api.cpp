#include "net/api.h"

#include "net/api_support.h"

#include <boost/json.hpp>
#include <sodium.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <future>
#include <limits>
#include <stdexcept>
#include <unordered_set>

namespace tarvolin::net {

namespace json = boost::json;

using namespace detail;

std::int64_t systemClockMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

std::optional<std::map<std::string, std::string>> parseQuery(std::string_view q) {
    auto decode = [](std::string_view s) -> std::optional<std::string> {
        std::string out;
        for (std::size_t i = 0; i < s.size(); ++i) {
            if (s[i] == '+') {
                out += ' ';
            } else if (s[i] == '%') {
                if (i + 2 >= s.size()) {
                    return std::nullopt;
                }
                unsigned v = 0;
                auto [p, ec] = std::from_chars(s.data() + i + 1, s.data() + i + 3, v, 16);
                if (ec != std::errc() || p != s.data() + i + 3) {
                    return std::nullopt;
                }
                out += static_cast<char>(v);
                i += 2;
            } else {
                out += s[i];
            }
        }
        return out;
    };
    std::map<std::string, std::string> out;
    while (!q.empty()) {
        std::size_t amp = q.find('&');
        std::string_view item = q.substr(0, amp);
        q = amp == std::string_view::npos ? std::string_view{} : q.substr(amp + 1);
        if (item.empty()) {
            continue;
        }
        std::size_t eq = item.find('=');
        auto k = decode(item.substr(0, eq));
        auto v = decode(eq == std::string_view::npos ? std::string_view{} : item.substr(eq + 1));
        if (!k || !v) {
            return std::nullopt;
        }
        out[*k] = *v;
    }
    return out;
}

Api::Api(store::Store& store, ApiConfig config, ClockMs clock)
    : store_(store), config_(std::move(config)), clock_(std::move(clock)),
      accountFailures_(config_.failuresPerAccount, config_.failureWindowMs),
      addressFailures_(config_.failuresPerAddress, config_.failureWindowMs),
      requests_(config_.requestsPerSecond, config_.requestBurst),
      signups_(config_.signupsPerHour / 3600.0, config_.signupsPerHour) {
    if (sodium_init() < 0) {
        throw std::runtime_error("libsodium cannot be initialised");
    }
    if (config_.hashOpsLimit == 0) {
        config_.hashOpsLimit = crypto_pwhash_OPSLIMIT_INTERACTIVE;
    }
    if (config_.hashMemLimit == 0) {
        config_.hashMemLimit = crypto_pwhash_MEMLIMIT_INTERACTIVE;
    }
    dummyHash_ = hashPassword(randomHex(16));

    add("HEAD", "/", &Api::root, false);
    add("GET", "/", &Api::root, false);
    add("GET", "/healthz", &Api::health, false);
    add("GET", "/views/wallsettings.php", &Api::wallSettings, false);
    add("POST", "/v1/accounts", &Api::createAccount, false);
    add("POST", "/v1/sessions", &Api::login, false);
    add("DELETE", "/v1/sessions/current", &Api::logout, true);
    add("GET", "/v1/players/me", &Api::me, true);
    add("PATCH", "/v1/players/me", &Api::rename, true);
    add("GET", "/v1/players", &Api::playersByIds, true);
    add("GET", "/v1/players/{id}", &Api::player, true);
    add("GET", "/v1/players/{id}/photo", &Api::photo, true);
    add("GET", "/v1/friends", &Api::friends, true);
    add("POST", "/v1/friend-requests", &Api::sendFriendRequest, true);
    add("GET", "/v1/friend-requests", &Api::listFriendRequests, true);
    add("POST", "/v1/friend-requests/{id}/accept", &Api::acceptFriendRequest, true);
    add("POST", "/v1/friend-requests/{id}/decline", &Api::declineFriendRequest, true);
    add("POST", "/v1/leaderboard/scores", &Api::reportScore, true);
    add("GET", "/v1/leaderboard", &Api::loadScores, true);
    add("GET", "/v1/leaderboard/me", &Api::localScore, true);
    add("GET", "/v1/achievements", &Api::loadAchievements, true);
    add("POST", "/v1/achievements", &Api::reportAchievements, true);
    add("DELETE", "/v1/achievements", &Api::resetAchievements, true);
    addMatchRoutes();
    addLiveRoutes();
    addStoreRoutes();
    addAdRoutes();
    addProgressRoutes();
    reports_ = std::make_unique<GroupCommit<PendingReport>>(
        kMaxReportBatch, [this](std::vector<PendingReport>& batch) { commitReports(batch); });
}

void Api::add(std::string method, std::string pattern, Handler h, bool needsToken) {
    std::vector<std::string> parts;
    std::size_t start = 1;
    while (start <= pattern.size() && pattern != "/") {
        std::size_t slash = pattern.find('/', start);
        parts.push_back(
            pattern.substr(start, slash == std::string::npos ? std::string::npos : slash - start));
        if (slash == std::string::npos) {
            break;
        }
        start = slash + 1;
    }
    routes_.push_back(Route{std::move(method), std::move(pattern), std::move(parts), h, needsToken});
}

void Api::add(std::string method, std::string pattern, AsyncHandler h, bool needsToken) {
    add(std::move(method), std::move(pattern), Handler{}, needsToken);
    routes_.back().async = h;
}

std::vector<std::pair<std::string, std::string>> Api::routes() const {
    std::vector<std::pair<std::string, std::string>> out;
    out.reserve(routes_.size());
    for (const Route& r : routes_) {
        out.emplace_back(r.method, r.pattern);
    }
    return out;
}

void Api::setEventListener(EventListener* l) {
    std::lock_guard lock(listenerMutex_);
    listener_ = l;
}

void Api::eventsAdded(const std::string& playerId) {
    std::lock_guard lock(listenerMutex_);
    if (listener_) {
        listener_->eventsAdded(playerId);
    }
}

void Api::watchOtherInstances() {
    watch_ = store_.watchChanges([this](store::Change change, const std::string& payload) {
        try {
            if (change == store::Change::Events) {
                eventsAdded(payload);
            } else if (change == store::Change::Live) {
                relayFromOtherInstance(payload);
            } else if (change == store::Change::Session) {
                recentTokens_.forget(payload);
            } else if (change == store::Change::Player) {
                recentPlayers_.forget(payload);
            } else {
                refreshScore(payload);
            }
        } catch (const std::exception&) {
            // The database is away for now; the next change or a restart brings the index up to date.
        }
    });
}

void Api::refreshScore(const std::string& playerId) {
    // Read under the report lock, so that an older stored value never overtakes a newer local report.
    std::lock_guard report(reportMutex_);
    auto s = store_.score(playerId);
    if (!s) {
        return;
    }
    std::unique_lock lock(indexMutex_);
    index_.put(s->playerId, s->value, s->context, s->reachedAt, s->updatedAt);
    lastReachedAt_ = std::max(lastReachedAt_, s->reachedAt);
}

void Api::loadLeaderboard() {
    std::lock_guard report(reportMutex_);
    std::vector<store::ScoreRecord> all = store_.allScores();
    std::unique_lock lock(indexMutex_);
    index_.assign(all);
    for (const auto& s : all) {
        lastReachedAt_ = std::max(lastReachedAt_, s.reachedAt);
    }
}

std::int64_t Api::leaderboardSize() const {
    std::shared_lock lock(indexMutex_);
    return index_.size();
}

std::string Api::tokenKey(std::string_view credentials) {
    if (credentials.starts_with("Bearer ")) {
        credentials.remove_prefix(7);
    }
    if (credentials.size() != 64 || !std::all_of(credentials.begin(), credentials.end(), [](char c) {
            return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
        })) {
        return {};
    }
    return sha256Hex(credentials);
}

std::optional<std::string> Api::authenticate(std::string_view credentials) {
    std::string key = tokenKey(credentials);
    if (key.empty()) {
        return std::nullopt;
    }
    const std::int64_t now = clock_();
    if (auto player = recentTokens_.find(key, now)) {
        return player;
    }
    const std::uint64_t generation = recentTokens_.generation();
    auto player = store_.tokenPlayer(key, now);
    if (player) {
        recentTokens_.put(key, *player, now, generation);
    }
    return player;
}

std::vector<store::PlayerRecord> Api::recentPlayers(const std::vector<std::string>& ids) {
    const std::int64_t now = clock_();
    std::vector<store::PlayerRecord> out;
    std::vector<std::string> missing;
    for (const auto& id : ids) {
        if (auto p = recentPlayers_.find(id, now)) {
            out.push_back(std::move(*p));
        } else {
            missing.push_back(id);
        }
    }
    if (!missing.empty()) {
        const std::uint64_t generation = recentPlayers_.generation();
        for (auto& p : store_.players(missing)) {
            recentPlayers_.put(p.id, p, now, generation);
            out.push_back(std::move(p));
        }
    }
    return out;
}

bool Api::tokenValid(const std::string& key, const std::string& playerId) {
    if (store_.tokenPlayer(key, clock_()) == playerId) {
        return true;
    }
    recentTokens_.forget(key);
    return false;
}

Response Api::failureResponse(std::exception_ptr failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const ApiError& e) {
        Response res = errorResponse(e.status, e.code, e.what());
        if (e.retryAfterMs > 0) {
            res.headers.emplace_back("Retry-After", std::to_string((e.retryAfterMs + 999) / 1000));
        }
        return res;
    } catch (const store::StoreError&) {
        return errorResponse(503, "storage_unavailable",
                             "the database cannot be reached; nothing was changed");
    } catch (...) {
        return errorResponse(500, "internal", "the request failed; nothing was changed");
    }
}

Response Api::handle(const Request& req) {
    std::promise<Response> answer;
    auto answered = answer.get_future();
    handle(req, [&answer](Response r) { answer.set_value(std::move(r)); });
    return answered.get();
}

void Api::handle(const Request& req, Done done) {
    std::vector<std::string_view> segs;
    if (req.path.empty() || req.path[0] != '/') {
        return done(errorResponse(400, "invalid_path", "the path must begin with '/'"));
    }
    std::string_view rest(req.path);
    rest.remove_prefix(1);
    while (!rest.empty()) {
        std::size_t slash = rest.find('/');
        segs.push_back(rest.substr(0, slash));
        rest = slash == std::string_view::npos ? std::string_view{} : rest.substr(slash + 1);
    }

    // A part of a route against a part of the path: "{id}" takes any, "{id}.svg" an identifier before a
    // fixed ending, anything else itself.
    auto matches = [](const std::string& part, std::string_view seg) {
        if (part == "{id}") {
            return true;
        }
        if (part.starts_with("{id}")) {
            const std::string_view ending = std::string_view(part).substr(4);
            return seg.size() > ending.size() && seg.ends_with(ending);
        }
        return part == seg;
    };
    const Route* found = nullptr;
    bool otherMethod = false;
    for (const Route& r : routes_) {
        if (r.parts.size() != segs.size()) {
            continue;
        }
        bool match = true;
        for (std::size_t i = 0; i < segs.size() && match; ++i) {
            match = matches(r.parts[i], segs[i]);
        }
        if (!match) {
            continue;
        }
        if (r.method != req.method) {
            otherMethod = true;
            continue;
        }
        // Routes are tried in the order they were added: "/v1/players/me" before "/v1/players/{id}".
        found = &r;
        break;
    }
    if (!found) {
        return done(otherMethod
                        ? errorResponse(405, "method_not_allowed", "this path does not take " + req.method)
                        : errorResponse(404, "not_found", "no such path"));
    }
    std::vector<std::string> args;
    for (std::size_t i = 0; i < segs.size(); ++i) {
        if (found->parts[i].starts_with("{id}")) {
            args.emplace_back(segs[i].substr(0, segs[i].size() - (found->parts[i].size() - 4)));
        }
    }

    Ctx ctx{req, std::move(args), {}, {}};
    // Every answer names its route and, when known, its player (for the log and the metrics).
    auto finish = [route = found->pattern](std::string playerId, Done& done, Response res) {
        res.route = route;
        if (res.playerId.empty()) {
            res.playerId = std::move(playerId);
        }
        done(std::move(res));
    };
    Response res;
    try {
        if (found->pattern.starts_with("/v1/") && !requests_.allow(req.remote, clock_())) {
            throw ApiError(429, "rate_limited", "too many requests from this address", 1000);
        }
        // The token first: a caller without one learns nothing of the path, not even that it names nothing.
        if (found->needsToken) {
            auto player = authenticate(req.authorization);
            if (!player) {
                throw ApiError(401, "unauthorized", "a valid bearer token is required");
            }
            ctx.playerId = *player;
        }
        for (const auto& a : ctx.args) {
            if (!isIdentifier(a)) {
                throw ApiError(404, "not_found", "no such identifier");
            }
        }
        if (found->async) {
            // Once handed on, the request is answered from where it went; what throws before is answered
            // here.
            return (this->*(found->async))(ctx,
                                           [finish, playerId = ctx.playerId, done](Response later) mutable {
                                               finish(std::move(playerId), done, std::move(later));
                                           });
        }
        res = (this->*(found->handler))(ctx);
    } catch (...) {
        res = failureResponse(std::current_exception());
    }
    finish(ctx.playerId, done, std::move(res));
}

void Api::finishReports() {
    reports_->drain();
}

GroupCommitCounts Api::reportCounts() const {
    return reports_->counts();
}

std::string Api::reportMetrics() const {
    const GroupCommitCounts n = reportCounts();
    return "# HELP tarvolin_score_report_commits_total Commits that stored score reports.\n"
           "# TYPE tarvolin_score_report_commits_total counter\n"
           "tarvolin_score_report_commits_total " +
           std::to_string(n.batches) +
           "\n# HELP tarvolin_score_reports_total Score reports stored (several to a commit under load).\n"
           "# TYPE tarvolin_score_reports_total counter\n"
           "tarvolin_score_reports_total " +
           std::to_string(n.items) +
           "\n# HELP tarvolin_score_reports_waiting Score reports waiting for the next commit.\n"
           "# TYPE tarvolin_score_reports_waiting gauge\n"
           "tarvolin_score_reports_waiting " +
           std::to_string(n.waiting) + "\n";
}

std::size_t Api::rekeyNames() {
    return store_.rekeyNames([](const std::string& name) { return logic::nameKey(name); });
}

Response Api::root(Ctx&) {
    Response r;
    r.contentType = "text/plain; charset=utf-8";
    r.body = "tarvolin-service\n";
    return r;
}

Response Api::health(Ctx&) {
    store_.ping();
    return jsonResponse(200, json::object{{"status", "ok"}, {"leaderboardPlayers", leaderboardSize()}});
}

Response Api::wallSettings(Ctx& c) {
    auto it = c.req.query.find("appId");
    if (it == c.req.query.end() || !isIdentifier(it->second)) {
        std::string why = "\"appId\" is required: letters, digits, '-' and '_', at most 64";
        throw ApiError(400, "invalid_parameter", why);
    }
    Response r;
    r.contentType = "text/plain; charset=utf-8";
    r.body = logic::settingsRecord(config_.settings);
    return r;
}

std::string Api::hashPassword(const std::string& password) const {
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str(out, password.data(), password.size(), config_.hashOpsLimit,
                          config_.hashMemLimit) != 0) {
        throw std::runtime_error("out of memory while hashing a password");
    }
    return out;
}

std::pair<store::TokenRecord, Response> Api::newToken(const store::PlayerRecord& p, unsigned status) {
    std::string token = randomHex(32);
    std::int64_t now = clock_();
    std::int64_t expires = now + config_.tokenLifetimeMs;
    Response r = jsonResponse(
        status, json::object{{"player", playerJson(p, false)}, {"token", token}, {"expiresAt", expires}});
    r.playerId = p.id;
    return {store::TokenRecord{sha256Hex(token), now, expires}, std::move(r)};
}

Response Api::issueToken(const store::PlayerRecord& p, unsigned status) {
    auto [record, answer] = newToken(p, status);
    store_.addToken(record.hash, p.id, record.createdAt, record.expiresAt);
    return std::move(answer);
}

Response Api::createAccount(Ctx& c) {
    json::object body = parseBody(c.req.body);
    std::string name = requiredString(body, "displayName");
    std::string password = requiredString(body, "password");
    if (auto why = logic::displayNameProblem(name)) {
        throw ApiError(400, "invalid_display_name", *why);
    }
    name = logic::displayNameForm(name);
    if (auto why = logic::passwordProblem(password)) {
        throw ApiError(400, "invalid_password", *why);
    }
    // Counted before the costly hash: every well-formed attempt of the address, taken names too.
    if (std::int64_t wait = signups_.take(c.req.remote, clock_())) {
        limits_.bit(LimitMetrics::Limit::Signups);
        throw ApiError(429, "rate_limited", "too many sign-ups from this address; try again later", wait);
    }
    store::Credentials cred{store::PlayerRecord{"T" + randomHex(8), name, clock_()}, logic::nameKey(name),
                            hashPassword(password)};
    // The player and his first token go in one transaction: a sign-up cut off halfway leaves no account
    // that nobody was told of.
    auto [token, answer] = newToken(cred.player, 201);
    if (!store_.createPlayer(cred, token)) {
        throw ApiError(409, "name_taken", "another player has this display name");
    }
    return std::move(answer);
}

Response Api::login(Ctx& c) {
    json::object body = parseBody(c.req.body);
    std::string name = requiredString(body, "displayName");
    std::string password = requiredString(body, "password");
    if (name.size() > 256 || password.size() > 256) {
        throw ApiError(401, "invalid_credentials", "the display name or the password is wrong");
    }
    std::string accountKey = logic::nameKey(name);
    std::int64_t now = clock_();
    std::int64_t wait = std::max(accountFailures_.retryAfter(accountKey, now),
                                 addressFailures_.retryAfter(c.req.remote, now));
    if (wait > 0) {
        throw ApiError(429, "too_many_attempts", "too many failed logins; try again later", wait);
    }
    // Usually one player has the key; names kept from before the present rules may share it, and the
    // password tells which of them logs in.
    auto namesakes = store_.credentialsSharingKey(accountKey);
    std::optional<store::Credentials> cred;
    for (auto& n : namesakes) {
        if (crypto_pwhash_str_verify(n.passwordHash.c_str(), password.data(), password.size()) == 0) {
            cred = std::move(n);
            break;
        }
    }
    if (namesakes.empty()) {
        // The same cost as a known name, so that the time does not tell which names exist.
        [[maybe_unused]] const bool never =
            crypto_pwhash_str_verify(dummyHash_.c_str(), password.data(), password.size()) == 0;
    }
    if (!cred) {
        accountFailures_.recordFailure(accountKey, now);
        addressFailures_.recordFailure(c.req.remote, now);
        throw ApiError(401, "invalid_credentials", "the display name or the password is wrong");
    }
    accountFailures_.clear(accountKey);
    return issueToken(cred->player, 200);
}

Response Api::logout(Ctx& c) {
    const std::string key = tokenKey(c.req.authorization);
    store_.removeToken(key);
    recentTokens_.forget(key);
    // The player's event sockets check their tokens again: the one of this token closes.
    eventsAdded(c.playerId);
    Response r;
    r.status = 204;
    r.contentType.clear();
    return r;
}

Response Api::me(Ctx& c) {
    auto ps = store_.players({c.playerId});
    if (ps.empty()) {
        throw ApiError(404, "player_not_found", "no such player");
    }
    return jsonResponse(200, json::object{{"player", playerJson(ps[0], false)}});
}

Response Api::rename(Ctx& c) {
    json::object body = parseBody(c.req.body);
    std::string name = requiredString(body, "displayName");
    if (auto why = logic::displayNameProblem(name)) {
        throw ApiError(400, "invalid_display_name", *why);
    }
    name = logic::displayNameForm(name);
    if (!store_.renamePlayer(c.playerId, name, logic::nameKey(name))) {
        throw ApiError(409, "name_taken", "another player has this display name");
    }
    recentPlayers_.forget(c.playerId);
    return me(c);
}

Response Api::playersByIds(Ctx& c) {
    if (auto named = c.req.query.find("name"); named != c.req.query.end()) {
        return playersNamed(c, named->second);
    }
    auto it = c.req.query.find("ids");
    if (it == c.req.query.end()) {
        throw ApiError(400, "invalid_parameter", "\"ids\" or \"name\" is required");
    }
    auto ids = idList(it->second, "ids");
    const auto& friends = c.friendsOf(store_);
    json::array out;
    for (const auto& p : store_.players(ids)) {
        out.push_back(playerJson(p, friends.contains(p.id)));
    }
    return jsonResponse(200, json::object{{"players", std::move(out)}});
}

Response Api::playersNamed(Ctx& c, const std::string& name) {
    const std::string key = logic::nameKey(name);
    if (key.empty() || name.size() > 64 || logic::messageProblem(name, 64)) {
        throw ApiError(400, "invalid_parameter", "\"name\" must hold 1 to 64 bytes of a name");
    }
    const auto& friends = c.friendsOf(store_);
    json::array out;
    for (const auto& p : store_.playersNamed(key, kMaxNamedPlayers + 1)) {
        if (p.id != c.playerId && out.size() < kMaxNamedPlayers) {
            out.push_back(playerJson(p, friends.contains(p.id)));
        }
    }
    return jsonResponse(200, json::object{{"players", std::move(out)}});
}

Response Api::player(Ctx& c) {
    auto ps = store_.players({c.args[0]});
    if (ps.empty()) {
        throw ApiError(404, "player_not_found", "no such player");
    }
    return jsonResponse(200,
                        json::object{{"player", playerJson(ps[0], c.friendsOf(store_).contains(ps[0].id))}});
}

Response Api::photo(Ctx& c) {
    auto ps = store_.players({c.args[0]});
    if (ps.empty()) {
        throw ApiError(404, "player_not_found", "no such player");
    }
    Response r;
    r.contentType = "image/svg+xml";
    r.body = logic::avatarSvg(ps[0].id, ps[0].displayName);
    r.headers.emplace_back("Cache-Control", "max-age=3600");
    return r;
}

Response Api::friends(Ctx& c) {
    json::array out;
    for (const auto& p : store_.players(store_.friendIds(c.playerId))) {
        out.push_back(playerJson(p, true));
    }
    return jsonResponse(200, json::object{{"players", std::move(out)}});
}

namespace {

json::object requestJson(const store::FriendRequest& r, const store::PlayerRecord& from,
                         const store::PlayerRecord& to) {
    return json::object{{"requestID", r.id},           {"from", playerJson(from, false)},
                        {"to", playerJson(to, false)}, {"message", r.message},
                        {"status", r.status},          {"createdAt", r.createdAt}};
}

} // namespace

Response Api::sendFriendRequest(Ctx& c) {
    json::object body = parseBody(c.req.body);
    std::string to = requiredString(body, "playerID");
    std::string message = optionalString(body, "message").value_or("");
    if (!isIdentifier(to)) {
        throw ApiError(400, "invalid_field", "\"playerID\" is not a player identifier");
    }
    if (auto why = logic::messageProblem(message, kMaxMessage)) {
        throw ApiError(400, "invalid_message", *why);
    }
    if (to == c.playerId) {
        throw ApiError(400, "cannot_befriend_self", "a player cannot befriend themselves");
    }
    auto ps = store_.players({c.playerId, to});
    if (ps.size() != 2) {
        throw ApiError(404, "player_not_found", "no such player");
    }
    store::FriendRequest r{"F" + randomHex(8), c.playerId, to, message, "pending", clock_(), std::nullopt};
    json::object rj = requestJson(r, ps[0], ps[1]);
    store::NewEvent ev{to, "friend_request", json::serialize(json::object{{"request", rj}})};
    switch (store_.sendFriendRequest(r, ev)) {
    case store::FriendRequestOutcome::Sent:
        break;
    case store::FriendRequestOutcome::NoSuchPlayer:
        throw ApiError(404, "player_not_found", "no such player");
    case store::FriendRequestOutcome::AlreadyFriends:
        throw ApiError(409, "already_friends", "the players are friends already");
    case store::FriendRequestOutcome::AlreadyRequested:
        throw ApiError(409, "already_requested", "a request to this player is pending");
    case store::FriendRequestOutcome::ReverseRequestPending:
        throw ApiError(409, "reverse_request_pending", "this player has sent you a request; accept it");
    }
    eventsAdded(to);
    return jsonResponse(201, json::object{{"request", std::move(rj)}});
}

Response Api::listFriendRequests(Ctx& c) {
    auto it = c.req.query.find("direction");
    std::string direction = it == c.req.query.end() ? "incoming" : it->second;
    if (direction != "incoming" && direction != "outgoing") {
        throw ApiError(400, "invalid_parameter", "\"direction\" must be incoming or outgoing");
    }
    auto list =
        direction == "incoming" ? store_.incomingRequests(c.playerId) : store_.outgoingRequests(c.playerId);
    std::vector<std::string> ids{c.playerId};
    for (const auto& r : list) {
        ids.push_back(direction == "incoming" ? r.fromId : r.toId);
    }
    std::map<std::string, store::PlayerRecord> byId;
    for (auto& p : store_.players(ids)) {
        byId.emplace(p.id, std::move(p));
    }
    json::array out;
    for (const auto& r : list) {
        if (byId.contains(r.fromId) && byId.contains(r.toId)) {
            out.push_back(requestJson(r, byId[r.fromId], byId[r.toId]));
        }
    }
    return jsonResponse(200, json::object{{"requests", std::move(out)}});
}

Response Api::acceptFriendRequest(Ctx& c) {
    return answerFriendRequest(c, true);
}
Response Api::declineFriendRequest(Ctx& c) {
    return answerFriendRequest(c, false);
}

Response Api::answerFriendRequest(Ctx& c, bool accept) {
    auto r = store_.friendRequest(c.args[0]);
    if (!r || r->toId != c.playerId) {
        throw ApiError(404, "request_not_found", "no such friend request to you");
    }
    auto ps = store_.players({r->fromId, c.playerId});
    if (ps.size() != 2) {
        throw ApiError(404, "player_not_found", "no such player");
    }
    std::optional<store::NewEvent> ev;
    if (accept) {
        ev = store::NewEvent{
            r->fromId, "friend_accepted",
            json::serialize(json::object{{"requestID", r->id}, {"friend", playerJson(ps[1], true)}})};
    }
    switch (store_.answerFriendRequest(r->id, c.playerId, accept, clock_(), ev)) {
    case store::AnswerOutcome::Done:
        break;
    case store::AnswerOutcome::NotFound:
        throw ApiError(404, "request_not_found", "no such friend request to you");
    case store::AnswerOutcome::NotPending:
        throw ApiError(409, "request_not_pending", "the request has been answered already");
    }
    if (!accept) {
        return jsonResponse(200, json::object{{"requestID", r->id}, {"status", "declined"}});
    }
    eventsAdded(r->fromId);
    return jsonResponse(
        200, json::object{{"requestID", r->id}, {"status", "accepted"}, {"friend", playerJson(ps[0], true)}});
}

namespace {

// 1 to 64 printable ASCII characters without blanks ("days:5", "levels:100").
bool isAchievementIdentifier(std::string_view s) {
    return !s.empty() && s.size() <= kMaxAchievementIdentifier &&
           std::all_of(s.begin(), s.end(), [](char c) { return c > ' ' && c <= '~'; });
}

json::object achievementJson(const store::Achievement& a) {
    return json::object{{"identifier", a.identifier},
                        {"percentComplete", a.percentComplete},
                        {"lastReportedDate", a.reportedAt}};
}

json::object achievementsJson(const std::vector<store::Achievement>& list) {
    json::array out;
    for (const auto& a : list) {
        out.push_back(achievementJson(a));
    }
    return json::object{{"achievements", std::move(out)}};
}

// The reports of a request, all checked before any is stored.
std::vector<store::Achievement> achievementReports(const json::object& body, std::int64_t now) {
    const json::value* list = body.if_contains("achievements");
    if (!list || list->is_null()) {
        throw ApiError(400, "missing_field", "\"achievements\" is required");
    }
    if (!list->is_array() || list->as_array().empty() || list->as_array().size() > kMaxAchievementReports) {
        throw ApiError(400, "invalid_field", "\"achievements\" must be a list of 1 to 100 achievements");
    }
    std::vector<store::Achievement> out;
    for (std::size_t i = 0; i < list->as_array().size(); ++i) {
        const json::value& item = list->as_array()[i];
        std::string at = "achievements[" + std::to_string(i) + "]";
        if (!item.is_object()) {
            throw ApiError(400, "invalid_field", "\"" + at + "\" must be an object");
        }
        const json::object& o = item.as_object();
        const json::value* id = o.if_contains("identifier");
        if (!id || id->is_null()) {
            throw ApiError(400, "missing_field", "\"" + at + ".identifier\" is required");
        }
        if (!id->is_string() || !isAchievementIdentifier(id->as_string())) {
            throw ApiError(400, "invalid_field",
                           "\"" + at +
                               ".identifier\" must be 1 to 64 printable ASCII characters without blanks");
        }
        const json::value* percent = o.if_contains("percentComplete");
        if (!percent || percent->is_null()) {
            throw ApiError(400, "missing_field", "\"" + at + ".percentComplete\" is required");
        }
        double p = percent->is_number() ? percent->to_number<double>() : -1;
        if (!(p >= 0 && p <= 100)) {
            throw ApiError(400, "invalid_field",
                           "\"" + at + ".percentComplete\" must be a number from 0 to 100");
        }
        out.push_back(store::Achievement{std::string(id->as_string()), p + 0.0, now}); // -0 becomes 0
    }
    return out;
}

} // namespace

Response Api::loadAchievements(Ctx& c) {
    return jsonResponse(200, achievementsJson(store_.achievements(c.playerId)));
}

Response Api::reportAchievements(Ctx& c) {
    json::object body = parseBody(c.req.body);
    auto reports = achievementReports(body, clock_());
    return jsonResponse(200, achievementsJson(store_.reportAchievements(c.playerId, reports)));
}

Response Api::resetAchievements(Ctx& c) {
    store_.resetAchievements(c.playerId);
    Response r;
    r.status = 204;
    r.contentType.clear();
    return r;
}

} // namespace tarvolin::net
