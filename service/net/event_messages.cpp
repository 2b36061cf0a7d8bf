#include "net/event_messages.h"

#include "net/server.h"
#include "store/match_rows.h"

#include <boost/json.hpp>

namespace tarvolin::net {

namespace json = boost::json;

void EventMessages::handle(const std::string& text) {
    json::error_code ec;
    json::value v = json::parse(text, ec);
    const json::object* o = ec ? nullptr : v.if_object();
    const json::value* type = o ? o->if_contains("type") : nullptr;
    if (!type || !type->is_string()) {
        return sendError("invalid_message", "a message is a JSON object with a \"type\"");
    }
    if (type->as_string() == "ping") {
        return peer_.send(R"({"type":"pong"})");
    }
    if (type->as_string().starts_with("live_")) {
        return handleLive(std::string(type->as_string()), *o);
    }
    if (type->as_string() != "ack") {
        return sendError("invalid_message", "unknown message type");
    }
    const json::value* seq = o->if_contains("seq");
    if (!seq || !seq->is_int64() || seq->as_int64() < 1 || seq->as_int64() > sentSeq_) {
        return sendError("invalid_ack", "\"seq\" must be the number of an event sent on this connection");
    }
    try {
        if (!peer_.stillAuthorized()) {
            return;
        }
        server_.api().store().ackEvents(playerId_, seq->as_int64());
    } catch (const std::exception& e) {
        server_.log().log(LogLevel::Error, "cannot acknowledge events",
                          {{"player", playerId_}, {"error", e.what()}});
        sendError("storage_unavailable", "the acknowledgement was not stored; send it again");
    }
}

void EventMessages::sendError(const std::string& code, const std::string& message,
                              const std::string& matchId) {
    json::object o{{"type", "error"}, {"error", json::object{{"code", code}, {"message", message}}}};
    if (!matchId.empty()) {
        o["match"] = matchId;
    }
    peer_.send(json::serialize(o));
}

// The live relay: connect to a found match, send data to the opponent, leave.
void EventMessages::handleLive(const std::string& type, const json::object& o) {
    const json::value* id = o.if_contains("match");
    if (!id || !id->is_string() || id->as_string().empty() || id->as_string().size() > 64) {
        return sendError("invalid_message", "a live message names its \"match\"");
    }
    const std::string matchId(id->as_string());
    try {
        if (!peer_.stillAuthorized()) {
            return;
        }
        if (type == "live_connect") {
            return connectLive(matchId);
        }
        if (type == "live_send") {
            return relayLive(matchId, o.if_contains("data"));
        }
        if (type == "live_leave") {
            server_.relay().unbind(matchId, playerId_, endpoint_);
            liveMatches_.erase(matchId);
            return server_.api().liveLeave(playerId_, matchId, "left");
        }
    } catch (const std::exception& e) {
        server_.log().log(LogLevel::Error, "live message failed",
                          {{"player", playerId_}, {"match", matchId}, {"error", e.what()}});
        return sendError("storage_unavailable", "the database cannot be reached; try again", matchId);
    }
    sendError("invalid_message", "unknown message type", matchId);
}

void EventMessages::connectLive(const std::string& matchId) {
    server_.relay().bind(matchId, playerId_, peer_.liveEndpoint());
    auto connected = server_.api().liveConnect(playerId_, matchId);
    if (const auto* code = std::get_if<std::string>(&connected)) {
        server_.relay().unbind(matchId, playerId_, endpoint_);
        return sendError(*code, "this live match cannot be connected to", matchId);
    }
    const auto& m = std::get<logic::live::Match>(connected);
    const std::string opponent = logic::live::opponentOf(m, playerId_);
    const bool opponentConnected = logic::live::expectedPlayerCount(m, playerId_) == 0 && !opponent.empty();
    server_.relay().learn(matchId, playerId_, opponent, opponentConnected);
    liveMatches_.insert(matchId);
    peer_.send(Api::liveStateText(matchId, playerId_, 1, opponentConnected ? 0 : 1));
    if (opponentConnected) {
        peer_.send(Api::liveStateText(matchId, opponent, 1, 0));
    }
}

void EventMessages::refuseLive(const std::string& code, const std::string& message,
                               const std::string& matchId) {
    server_.metrics().liveRefused();
    sendError(code, message, matchId);
}

void EventMessages::relayLive(const std::string& matchId, const json::value* data) {
    constexpr std::size_t kMaxText = (logic::live::kMaxDataBytes + 2) / 3 * 4;
    if (!data || !data->is_string()) {
        return refuseLive("invalid_message", "\"data\" must be base64 text", matchId);
    }
    if (data->as_string().size() > kMaxText) {
        return refuseLive("live_data_too_large",
                          "at most " + std::to_string(logic::live::kMaxDataBytes) + " bytes at once",
                          matchId);
    }
    if (!store::match_rows::decodeData(std::string(data->as_string()))) {
        return refuseLive("invalid_message", "\"data\" must be base64 text", matchId);
    }
    std::optional<std::string> opponent = server_.relay().connectedOpponent(matchId, playerId_);
    if (!opponent) {
        return refuseLive("live_not_connected", "both players must be connected to the match", matchId);
    }
    if (!server_.allowLiveMessage(playerId_)) {
        return refuseLive("live_too_fast", "too many live messages; slow down", matchId);
    }
    server_.metrics().liveRelayed();
    server_.api().sendLive(
        *opponent, matchId,
        json::serialize(json::object{
            {"type", "live_data"}, {"match", matchId}, {"from", playerId_}, {"data", data->as_string()}}));
}

void EventMessages::leaveLiveMatches() {
    for (const std::string& matchId : liveMatches_) {
        server_.relay().unbind(matchId, playerId_, endpoint_);
        try {
            server_.api().liveLeave(playerId_, matchId, "left");
        } catch (const std::exception& e) {
            server_.log().log(LogLevel::Warn, "cannot end a live match",
                              {{"player", playerId_}, {"match", matchId}, {"error", e.what()}});
        }
    }
    liveMatches_.clear();
}

} // namespace tarvolin::net
