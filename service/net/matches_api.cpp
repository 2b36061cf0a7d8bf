// The turn-based match routes: find (an invitation or automatic matching), list, read, end a turn, set the
// notice, end the match, remove, rematch; and the sweep of turns that have run out.
#include "net/api_support.h"
#include "store/match_rows.h"

namespace tarvolin::net {

using namespace detail;
namespace match = logic::match;

namespace {

json::object matchJson(const match::Match& m) {
    json::array participants;
    for (const match::Seat& s : m.seats) {
        participants.push_back(
            json::object{{"playerID", s.playerId.empty() ? json::value(nullptr) : json::value(s.playerId)},
                         {"status", static_cast<int>(s.status)},
                         {"matchOutcome", static_cast<int>(s.outcome)},
                         {"lastTurnDate", s.lastTurnAt}});
    }
    json::array arguments;
    for (const std::string& a : m.messageArguments) {
        arguments.emplace_back(a);
    }
    return json::object{{"matchID", m.id},
                        {"status", static_cast<int>(m.status)},
                        {"creationDate", m.createdAt},
                        {"currentParticipant", m.current},
                        {"participants", std::move(participants)},
                        {"matchData", store::match_rows::encodeData(m.data)},
                        {"message", json::object{{"key", m.messageKey}, {"arguments", std::move(arguments)}}},
                        {"turnDeadline", m.turnDeadline},
                        {"purpose", match::purposeName(m.purpose)}};
}

std::string eventKind(match::Notice::Kind k) {
    switch (k) {
    case match::Notice::Kind::Turn:
        return "turn";
    case match::Notice::Kind::MatchEnded:
        return "match_ended";
    case match::Notice::Kind::Invitation:
        return "invitation";
    }
    return "turn";
}

unsigned refusalStatus(match::Refusal r) {
    switch (r) {
    case match::Refusal::NotAParticipant:
        return 404;
    case match::Refusal::DataTooLarge:
        return 413;
    case match::Refusal::BadNextSeats:
    case match::Refusal::BadTimeout:
    case match::Refusal::BadOutcomes:
    case match::Refusal::SamePlayer:
        return 400;
    default:
        return 409;
    }
}

Response tooManyMatches() {
    return errorResponse(409, "too_many_matches",
                         "at most " + std::to_string(Api::kMaxOpenMatches) + " matches in play at once");
}

// An absent or null purpose is none.
match::Purpose purposeField(const json::object& body) {
    const std::optional<std::string> name = optionalString(body, "purpose");
    const std::optional<match::Purpose> purpose = match::purposeFrom(name.value_or(""));
    if (!purpose || (name && purpose == match::Purpose::None)) {
        throw ApiError(400, "invalid_field", "\"purpose\" must be \"battle\" or \"exchange\"");
    }
    return *purpose;
}

Response tooManyNewMatches() {
    return errorResponse(429, "too_many_new_matches", "at most 10 new matches a minute");
}

Response refusalResponse(match::Refusal r) {
    if (r == match::Refusal::NotAParticipant) {
        return errorResponse(404, "no_such_match", "no match of yours has this identifier");
    }
    return errorResponse(refusalStatus(r), match::refusalCode(r), match::refusalCode(r));
}

// The change to store for a move: the moved match and one event for each player it tells.
store::MatchChange changeOf(const match::Moved& moved, std::vector<std::string>* told) {
    store::MatchChange change{moved.match, {}};
    const std::string payload = json::serialize(json::object{{"match", matchJson(moved.match)}});
    for (const match::Notice& n : moved.notices) {
        change.events.push_back(store::NewEvent{n.playerId, eventKind(n.kind), payload});
        told->push_back(n.playerId);
    }
    return change;
}

store::MatchMove asMove(const std::function<match::Result(const match::Match&)>& rule,
                        std::vector<std::string>* told) {
    return [rule, told](const match::Match& m) -> std::variant<store::MatchChange, match::Refusal> {
        told->clear();
        match::Result r = rule(m);
        if (match::refused(r)) {
            return std::get<match::Refusal>(r);
        }
        return changeOf(std::get<match::Moved>(r), told);
    };
}

// Match data travels as base64; a missing field is empty data.
std::string dataField(const json::object& body) {
    const std::optional<std::string> text = optionalString(body, "matchData");
    if (!text) {
        return {};
    }
    std::optional<std::string> bytes = store::match_rows::decodeData(*text);
    if (!bytes) {
        throw ApiError(400, "invalid_field", "\"matchData\" must be base64");
    }
    return *bytes;
}

std::vector<int> seatList(const json::object& body, std::string_view key) {
    const json::value* v = body.if_contains(key);
    if (!v || !v->is_array()) {
        throw ApiError(400, "missing_field", "\"" + std::string(key) + "\" must be a list of seat numbers");
    }
    std::vector<int> out;
    for (const json::value& item : v->as_array()) {
        if (!item.is_int64()) {
            throw ApiError(400, "invalid_field", "\"" + std::string(key) + "\" must hold seat numbers");
        }
        out.push_back(static_cast<int>(item.as_int64()));
    }
    return out;
}

} // namespace

void Api::addMatchRoutes() {
    add("POST", "/v1/matches", &Api::findMatch, true);
    add("GET", "/v1/matches", &Api::listMatches, true);
    add("GET", "/v1/matches/{id}", &Api::getMatch, true);
    add("POST", "/v1/matches/{id}/turn", &Api::endTurn, true);
    add("POST", "/v1/matches/{id}/message", &Api::setMatchMessage, true);
    add("POST", "/v1/matches/{id}/end", &Api::endMatch, true);
    add("DELETE", "/v1/matches/{id}", &Api::removeMatch, true);
    add("POST", "/v1/matches/{id}/rematch", &Api::rematch, true);
}

Response Api::createMatch(Ctx& c, const match::Result& created) {
    if (match::refused(created)) {
        return refusalResponse(std::get<match::Refusal>(created));
    }
    const std::string player = c.playerId;
    const std::function<bool()> admit = [this, player] { return matchCreations_.allow(player, clock_()); };
    std::vector<std::string> told;
    store::MatchChange change = changeOf(std::get<match::Moved>(created), &told);
    // An exchange is weighed against its creator's exchanges before it takes a new match of the minute, so
    // that a refused one costs none; anything else takes it before storage is asked.
    const bool exchange = change.match.purpose == match::Purpose::Exchange;
    if (!exchange && !admit()) {
        return tooManyNewMatches();
    }
    const store::MatchInsertResult inserted =
        store_.insertMatch(change, exchange ? admit : std::function<bool()>{});
    if (const auto* refusal = std::get_if<match::ExchangeRefusal>(&inserted)) {
        if (refusal->kind == match::ExchangeRefusal::Kind::AlreadyOpen) {
            return errorResponse(409, "exchange_already_open",
                                 "an exchange of yours with this player is still in play");
        }
        throw ApiError(429, "too_many_exchange_requests",
                       "at most " + std::to_string(match::kMaxExchangesPerWindow) +
                           " exchanges in 24 hours; try again later",
                       refusal->retryAfterMs);
    }
    if (std::holds_alternative<store::MatchNotAdmitted>(inserted)) {
        return tooManyNewMatches();
    }
    for (const std::string& p : told) {
        eventsAdded(p);
    }
    return jsonResponse(201, json::object{{"match", matchJson(change.match)}});
}

Response Api::findMatch(Ctx& c) {
    const json::object body = c.req.body.empty() ? json::object{} : parseBody(c.req.body);
    const match::Purpose purpose = purposeField(body);
    const json::value* recipients = body.if_contains("recipients");
    const bool invitation = recipients && !recipients->is_null();
    if (purpose == match::Purpose::Exchange && !invitation) {
        throw ApiError(400, "invalid_field", "an exchange goes to exactly one recipient");
    }
    if (store_.openMatchCount(c.playerId) >= kMaxOpenMatches) {
        return tooManyMatches();
    }
    const std::int64_t now = clock_();
    if (invitation) {
        if (!recipients->is_array() || recipients->as_array().size() != 1 ||
            !recipients->as_array()[0].is_string()) {
            throw ApiError(400, "invalid_field", "\"recipients\" must hold exactly one player identifier");
        }
        const std::string to(recipients->as_array()[0].as_string());
        if (!isIdentifier(to) || store_.players({to}).empty()) {
            return errorResponse(404, "no_such_player", "no player has this identifier");
        }
        if (to != c.playerId && !match::mayInvite(c.friendsOf(store_).count(to) > 0,
                                                  store_.haveEndedMatchTogether(c.playerId, to))) {
            return invitationRefused();
        }
        return createMatch(c, match::createInvitation(randomHex(16), c.playerId, to, now, purpose));
    }
    // Automatic matching: the oldest waiting seat of someone else's match, or a new match that waits.
    std::vector<std::string> told;
    const std::string player = c.playerId;
    std::optional<store::MatchMoveResult> joined = store_.joinWaitingMatch(
        player,
        asMove([player, now](const match::Match& m) { return match::joinWaitingSeat(m, player, now); },
               &told));
    if (joined && std::holds_alternative<match::Match>(*joined)) {
        for (const std::string& p : told) {
            eventsAdded(p);
        }
        return jsonResponse(200, json::object{{"match", matchJson(std::get<match::Match>(*joined))}});
    }
    return createMatch(c, match::Moved{match::createWaiting(randomHex(16), c.playerId, now, purpose), {}});
}

Response Api::listMatches(Ctx& c) {
    json::array list;
    for (const match::Match& m : store_.matchesOf(c.playerId)) {
        list.push_back(matchJson(m));
    }
    return jsonResponse(200, json::object{{"matches", std::move(list)}});
}

Response Api::getMatch(Ctx& c) {
    std::optional<match::Match> m = store_.match(c.args[0]);
    // Nobody outside a match reads it.
    if (!m || match::seatOf(*m, c.playerId) < 0) {
        return refusalResponse(match::Refusal::NotAParticipant);
    }
    return jsonResponse(200, json::object{{"match", matchJson(*m)}});
}

Response Api::moveMatch(Ctx& c, const std::function<match::Result(const match::Match&)>& rule,
                        unsigned okStatus) {
    std::vector<std::string> told;
    store::MatchMoveResult r = store_.changeMatch(c.args[0], asMove(rule, &told));
    if (std::holds_alternative<store::MatchNotFound>(r)) {
        return refusalResponse(match::Refusal::NotAParticipant);
    }
    if (const auto* refusal = std::get_if<match::Refusal>(&r)) {
        return refusalResponse(*refusal);
    }
    for (const std::string& p : told) {
        eventsAdded(p);
    }
    return jsonResponse(okStatus, json::object{{"match", matchJson(std::get<match::Match>(r))}});
}

Response Api::endTurn(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    const std::vector<int> next = seatList(body, "nextParticipants");
    const std::optional<std::int64_t> seconds = optionalInt64(body, "timeout");
    const std::int64_t timeoutMs = seconds
                                       ? (*seconds > match::kMaxTurnTimeoutMs / 1000 ? -1 : *seconds * 1000)
                                       : match::kDefaultTurnTimeoutMs;
    const std::string data = dataField(body);
    const std::string player = c.playerId;
    const std::int64_t now = clock_();
    return moveMatch(
        c, [&](const match::Match& m) { return match::endTurn(m, player, next, timeoutMs, data, now); });
}

Response Api::setMatchMessage(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    const std::string key = requiredString(body, "key");
    std::vector<std::string> arguments;
    if (const json::value* a = body.if_contains("arguments"); a && !a->is_null()) {
        if (!a->is_array() || a->as_array().size() > 10) {
            throw ApiError(400, "invalid_field", "\"arguments\" must be a list of at most 10 strings");
        }
        for (const json::value& item : a->as_array()) {
            if (!item.is_string() || item.as_string().size() > kMaxMessage) {
                throw ApiError(400, "invalid_field", "\"arguments\" must be a list of short strings");
            }
            arguments.emplace_back(item.as_string());
        }
    }
    if (key.size() > kMaxMessage) {
        throw ApiError(400, "invalid_field", "\"key\" is too long");
    }
    const std::string player = c.playerId;
    return moveMatch(c, [&](const match::Match& m) { return match::setMessage(m, player, key, arguments); });
}

Response Api::endMatch(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    std::vector<match::Outcome> outcomes;
    for (int o : seatList(body, "outcomes")) {
        if (o < 0 || o > static_cast<int>(match::Outcome::Second)) {
            throw ApiError(400, "invalid_field", "an outcome is a number from 0 to 7");
        }
        outcomes.push_back(static_cast<match::Outcome>(o));
    }
    const std::string data = dataField(body);
    const std::string player = c.playerId;
    const std::int64_t now = clock_();
    return moveMatch(
        c, [&](const match::Match& m) { return match::endMatchInTurn(m, player, outcomes, data, now); });
}

Response Api::removeMatch(Ctx& c) {
    const std::string player = c.playerId;
    return moveMatch(c, [&](const match::Match& m) { return match::removeFromList(m, player); });
}

Response Api::rematch(Ctx& c) {
    std::optional<match::Match> m = store_.match(c.args[0]);
    if (!m || match::seatOf(*m, c.playerId) < 0) {
        return refusalResponse(match::Refusal::NotAParticipant);
    }
    if (store_.openMatchCount(c.playerId) >= kMaxOpenMatches) {
        return tooManyMatches();
    }
    return createMatch(c, match::rematch(*m, c.playerId, randomHex(16), clock_()));
}

std::size_t Api::expireDueTurns() {
    const std::int64_t now = clock_();
    std::size_t moved = 0;
    for (const std::string& id : store_.dueMatches(now, 200)) {
        std::vector<std::string> told;
        store::MatchMoveResult r = store_.changeMatch(
            id, asMove([now](const match::Match& m) { return match::expire(m, now); }, &told));
        // Another instance may have moved it first: then nothing is due any more.
        if (std::holds_alternative<match::Match>(r)) {
            ++moved;
            for (const std::string& p : told) {
                eventsAdded(p);
            }
        }
    }
    return moved;
}

} // namespace tarvolin::net
