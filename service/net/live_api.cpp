// Live matches: finding one (an invitation or automatic matching), accepting, leaving, and the messages that
// tell the players over their event WebSockets. The relay of data itself is the server's.
#include "net/api_support.h"

namespace tarvolin::net {

using namespace detail;
namespace live = logic::live;

namespace {

const char* seatStatusName(live::SeatStatus s) {
    switch (s) {
    case live::SeatStatus::Waiting:
        return "waiting";
    case live::SeatStatus::Invited:
        return "invited";
    case live::SeatStatus::Seated:
        return "seated";
    case live::SeatStatus::Connected:
        return "connected";
    }
    return "waiting";
}

// The match as one of its players sees it.
json::object liveJson(const live::Match& m, const std::string& viewer) {
    json::array players;
    for (const live::Seat& s : m.seats) {
        players.push_back(
            json::object{{"playerID", s.playerId.empty() ? json::value(nullptr) : json::value(s.playerId)},
                         {"status", seatStatusName(s.status)}});
    }
    return json::object{{"matchID", m.id},
                        {"createdAt", m.createdAt},
                        {"automatic", m.automatic},
                        {"found", m.foundAt > 0},
                        {"players", std::move(players)},
                        {"expectedPlayerCount", live::expectedPlayerCount(m, viewer)}};
}

std::string foundText(const live::Match& m, const std::string& viewer) {
    return json::serialize(json::object{{"type", "live_match"}, {"match", liveJson(m, viewer)}});
}

Response liveRefusal(live::Refusal r) {
    if (r == live::Refusal::NotAParticipant) {
        return errorResponse(404, "no_such_live_match", "no live match of yours has this identifier");
    }
    if (r == live::Refusal::NotInvited) {
        return errorResponse(409, "not_invited", "only the invited player accepts, and only once");
    }
    return errorResponse(409, "live_match_not_found_yet", "the second player has not joined yet");
}

} // namespace

void Api::addLiveRoutes() {
    add("POST", "/v1/live", &Api::findLiveMatch, true);
    add("GET", "/v1/live/{id}", &Api::getLiveMatch, true);
    add("POST", "/v1/live/{id}/accept", &Api::acceptLiveMatch, true);
    add("DELETE", "/v1/live/{id}", &Api::leaveLiveMatch, true);
}

std::string Api::liveStateText(const std::string& matchId, const std::string& playerId, int state,
                               int expectedPlayerCount, const std::string& reason) {
    json::object o{{"type", "live_state"},
                   {"match", matchId},
                   {"player", playerId},
                   {"state", state},
                   {"expectedPlayerCount", expectedPlayerCount}};
    if (!reason.empty()) {
        o["reason"] = reason;
    }
    return json::serialize(o);
}

bool Api::tellLiveListener(const std::string& playerId, const std::string& matchId, const std::string& text) {
    std::lock_guard lock(listenerMutex_);
    return listener_ && listener_->liveMessage(playerId, matchId, text);
}

void Api::sendLive(const std::string& playerId, const std::string& matchId, const std::string& text) {
    if (playerId.empty() || tellLiveListener(playerId, matchId, text)) {
        return;
    }
    store_.publishLive(json::serialize(json::object{{"to", playerId}, {"match", matchId}, {"text", text}}));
}

void Api::relayFromOtherInstance(const std::string& payload) {
    json::error_code ec;
    const json::value v = json::parse(payload, ec);
    const json::object* o = ec ? nullptr : v.if_object();
    const json::value* to = o ? o->if_contains("to") : nullptr;
    const json::value* matchId = o ? o->if_contains("match") : nullptr;
    const json::value* text = o ? o->if_contains("text") : nullptr;
    if (to && to->is_string() && matchId && matchId->is_string() && text && text->is_string()) {
        tellLiveListener(std::string(to->as_string()), std::string(matchId->as_string()),
                         std::string(text->as_string()));
    }
}

void Api::tellLiveEnded(const live::Match& m, const std::string& by, const std::string& reason) {
    for (const live::Seat& s : m.seats) {
        if (s.playerId.empty() || s.playerId == by) {
            continue;
        }
        // Each player hears that the other has gone.
        const std::string gone = by.empty() ? live::opponentOf(m, s.playerId) : by;
        sendLive(s.playerId, m.id, liveStateText(m.id, gone, 2, 0, reason));
    }
}

Response Api::findLiveMatch(Ctx& c) {
    const json::object body = c.req.body.empty() ? json::object{} : parseBody(c.req.body);
    for (const char* key : {"minPlayers", "maxPlayers"}) {
        if (std::optional<std::int64_t> n = optionalInt64(body, key); n && *n != 2) {
            throw ApiError(400, "invalid_field", "a live match has exactly two players");
        }
    }
    if (store_.liveMatchCount(c.playerId) >= live::kMaxMatches) {
        return errorResponse(409, "too_many_live_matches",
                             "at most " + std::to_string(live::kMaxMatches) + " live matches at once");
    }
    const std::int64_t now = clock_();
    const json::value* recipients = body.if_contains("recipients");
    if (recipients && !recipients->is_null() && !(recipients->is_array() && recipients->as_array().empty())) {
        if (!recipients->is_array() || recipients->as_array().size() != 1 ||
            !recipients->as_array()[0].is_string()) {
            throw ApiError(400, "invalid_field", "\"recipients\" must hold exactly one player identifier");
        }
        const std::string to(recipients->as_array()[0].as_string());
        if (to == c.playerId) {
            throw ApiError(400, "same_player", "a player cannot invite himself");
        }
        std::vector<store::PlayerRecord> found =
            isIdentifier(to) ? store_.players({c.playerId, to}) : std::vector<store::PlayerRecord>{};
        if (found.size() != 2) {
            return errorResponse(404, "no_such_player", "no player has this identifier");
        }
        if (!logic::match::mayInvite(c.friendsOf(store_).count(to) > 0,
                                     store_.haveEndedMatchTogether(c.playerId, to))) {
            return invitationRefused();
        }
        if (!liveCreations_.allow(c.playerId, now)) {
            return errorResponse(429, "too_many_new_live_matches", "at most 10 new live matches a minute");
        }
        const live::Match m = live::createInvitation(randomHex(16), c.playerId, to, now);
        store_.insertLiveMatch(m);
        sendLive(to, m.id,
                 json::serialize(json::object{
                     {"type", "live_invitation"},
                     {"match", liveJson(m, to)},
                     {"from", json::object{{"playerID", c.playerId}, {"alias", found[0].displayName}}}}));
        return jsonResponse(201, json::object{{"match", liveJson(m, c.playerId)}});
    }
    // Automatic matching: a search already under way is answered again; else the oldest search of someone
    // else is joined; else a new one waits.
    const std::int64_t since = now - live::kWaitMs;
    if (std::optional<live::Match> own = store_.ownWaitingLiveMatch(c.playerId, since)) {
        return jsonResponse(200, json::object{{"match", liveJson(*own, c.playerId)}});
    }
    if (std::optional<live::Match> joined = store_.joinWaitingLiveMatch(c.playerId, since, now)) {
        const std::string& creator = joined->seats[0].playerId;
        sendLive(creator, joined->id, foundText(*joined, creator));
        return jsonResponse(200, json::object{{"match", liveJson(*joined, c.playerId)}});
    }
    if (!liveCreations_.allow(c.playerId, now)) {
        return errorResponse(429, "too_many_new_live_matches", "at most 10 new live matches a minute");
    }
    const live::Match m = live::createWaiting(randomHex(16), c.playerId, now);
    store_.insertLiveMatch(m);
    return jsonResponse(201, json::object{{"match", liveJson(m, c.playerId)}});
}

Response Api::getLiveMatch(Ctx& c) {
    std::optional<live::Match> m = store_.liveMatch(c.args[0]);
    if (!m || live::seatOf(*m, c.playerId) < 0) {
        return liveRefusal(live::Refusal::NotAParticipant);
    }
    return jsonResponse(200, json::object{{"match", liveJson(*m, c.playerId)}});
}

Response Api::acceptLiveMatch(Ctx& c) {
    const std::string player = c.playerId;
    const std::int64_t now = clock_();
    store::LiveMoveResult r =
        store_.changeLiveMatch(c.args[0], [&](const live::Match& m) { return live::accept(m, player, now); });
    if (std::holds_alternative<store::MatchNotFound>(r)) {
        return liveRefusal(live::Refusal::NotAParticipant);
    }
    if (const auto* refusal = std::get_if<live::Refusal>(&r)) {
        return liveRefusal(*refusal);
    }
    const live::Match& m = std::get<live::Match>(r);
    const std::string inviter = live::opponentOf(m, player);
    sendLive(inviter, m.id, foundText(m, inviter));
    return jsonResponse(200, json::object{{"match", liveJson(m, player)}});
}

Response Api::leaveLiveMatch(Ctx& c) {
    std::optional<live::Match> m = store_.liveMatch(c.args[0]);
    const int seat = m ? live::seatOf(*m, c.playerId) : -1;
    if (seat < 0) {
        return liveRefusal(live::Refusal::NotAParticipant);
    }
    // Before the match is found, leaving is declining an invitation or cancelling one's own search.
    const std::string reason = m->foundAt > 0 ? "left" : seat == 1 ? "declined" : "cancelled";
    liveLeave(c.playerId, c.args[0], reason);
    Response r;
    r.status = 204;
    r.contentType.clear();
    return r;
}

std::variant<live::Match, std::string> Api::liveConnect(const std::string& playerId,
                                                        const std::string& matchId) {
    store::LiveMoveResult r =
        store_.changeLiveMatch(matchId, [&](const live::Match& m) { return live::connect(m, playerId); });
    if (std::holds_alternative<store::MatchNotFound>(r)) {
        return live::refusalCode(live::Refusal::NotAParticipant);
    }
    if (const auto* refusal = std::get_if<live::Refusal>(&r)) {
        return live::refusalCode(*refusal);
    }
    const live::Match& m = std::get<live::Match>(r);
    const std::string opponent = live::opponentOf(m, playerId);
    const int seat = live::seatOf(m, opponent);
    // The row lock orders two connections: the second one finds the first connected and tells it.
    if (seat >= 0 && m.seats[seat].status == live::SeatStatus::Connected) {
        sendLive(opponent, m.id, liveStateText(m.id, playerId, 1, 0));
    }
    return m;
}

void Api::liveLeave(const std::string& playerId, const std::string& matchId, const std::string& reason) {
    std::optional<live::Match> removed =
        store_.removeLiveMatch(matchId, [&](const live::Match& m) { return live::seatOf(m, playerId) >= 0; });
    if (removed) {
        tellLiveEnded(*removed, playerId, reason);
    }
}

std::size_t Api::expireLiveMatches() {
    const std::int64_t now = clock_();
    std::size_t ended = 0;
    for (const std::string& id : store_.staleLiveMatches(now, 200)) {
        std::optional<live::Match> removed =
            store_.removeLiveMatch(id, [now](const live::Match& m) { return live::stale(m, now); });
        if (removed) {
            ++ended;
            tellLiveEnded(*removed, "", "expired");
        }
    }
    return ended;
}

} // namespace tarvolin::net
