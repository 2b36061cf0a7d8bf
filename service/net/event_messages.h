// What a client says on its event WebSocket: acknowledgements, pings and the live relay. Knows nothing of
// sockets: the WebSocket session hands over each text message it reads, and so does the fuzzer.
#pragma once

#include "net/live_relay.h"

#include <boost/json/fwd.hpp>

#include <cstdint>
#include <memory>
#include <set>
#include <string>

namespace tarvolin::net {

class Server;

// The connection the messages come from.
class EventPeer {
public:
    virtual ~EventPeer() = default;
    // Sends a text message to the client.
    virtual void send(std::string text) = 0;
    // Whether the connection's token is still valid; when it is not, the peer closes the connection.
    virtual bool stillAuthorized() = 0;
    // The connection as the live relay holds it.
    virtual std::weak_ptr<LiveEndpoint> liveEndpoint() = 0;
};

class EventMessages {
public:
    // `endpoint` is the address of the peer's live endpoint, by which the relay drops its bindings.
    EventMessages(Server& server, std::string playerId, EventPeer& peer, const LiveEndpoint* endpoint)
        : server_(server), playerId_(std::move(playerId)), peer_(peer), endpoint_(endpoint) {}

    // Answers one text message of the client.
    void handle(const std::string& text);
    // The connection ends: the player leaves the live matches it spoke for.
    void leaveLiveMatches();

    // The last event sent on the connection: acknowledgements go up to it.
    std::int64_t sentSeq() const { return sentSeq_; }
    void setSentSeq(std::int64_t seq) { sentSeq_ = seq; }

    void sendError(const std::string& code, const std::string& message, const std::string& matchId = {});

private:
    void handleLive(const std::string& type, const boost::json::object& o);
    void connectLive(const std::string& matchId);
    void refuseLive(const std::string& code, const std::string& message, const std::string& matchId);
    void relayLive(const std::string& matchId, const boost::json::value* data);

    Server& server_;
    std::string playerId_;
    EventPeer& peer_;
    const LiveEndpoint* endpoint_;
    std::int64_t sentSeq_ = 0;
    std::set<std::string> liveMatches_; // the live matches this connection speaks for
};

} // namespace tarvolin::net
