// The messages a client sends on its event WebSocket, as the WebSocket session hands them over, with two
// players of a live match found for each input so that the relay is reached.
//
// An input whose first byte is 'F' is raw WebSocket frames from the client: they are read by a server-side
// Beast WebSocket stream after its handshake, with the server's message limit, and each message read is
// handled. Any other input is text messages, one a line, each sent by player A unless the line begins with
// "B:". In both, "$m" is the live match's identifier.
//
// Every message the service sends back must be a JSON object with a "type".

#include "service_fixture.h"

#include "net/event_messages.h"
#include "net/log.h"
#include "net/server.h"

#include <boost/beast/_experimental/test/stream.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/json.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace beast = boost::beast;
namespace http = beast::http;
namespace json = boost::json;
namespace websocket = beast::websocket;
using namespace tarvolin;

namespace {

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

void checkMessage(const std::string& text) {
    json::error_code ec;
    json::value v = json::parse(text, ec);
    check(!ec && v.is_object() && v.as_object().contains("type") && v.as_object().at("type").is_string());
}

// One player's event WebSocket.
class Connection : public net::EventPeer,
                   public net::LiveEndpoint,
                   public std::enable_shared_from_this<Connection> {
public:
    Connection(net::Server& server, fuzz::ServiceFixture& fixture, const fuzz::FuzzPlayer& player)
        : fixture_(fixture), player_(player), messages_(server, player.id, *this, this) {
        // The events waiting for the player were sent when the socket opened: they may be acknowledged.
        for (const auto& e : fixture.api().store().pendingEvents(player.id, 0, 100)) {
            messages_.setSentSeq(e.seq);
        }
    }

    void send(std::string text) override { checkMessage(text); }
    void sendLiveText(std::string text) override { checkMessage(text); }
    bool stillAuthorized() override {
        return fixture_.api().tokenValid(net::Api::tokenKey(player_.token), player_.id);
    }
    std::weak_ptr<net::LiveEndpoint> liveEndpoint() override {
        return std::weak_ptr<net::LiveEndpoint>(shared_from_this());
    }
    net::EventMessages& messages() { return messages_; }

private:
    fuzz::ServiceFixture& fixture_;
    fuzz::FuzzPlayer player_;
    net::EventMessages messages_;
};

std::string foundMatchId(const net::Response& r) {
    json::error_code ec;
    json::value v = json::parse(r.body, ec);
    if (ec || !v.is_object()) {
        return {};
    }
    const json::value* m = v.as_object().if_contains("match");
    const json::value* id = m && m->is_object() ? m->as_object().if_contains("matchID") : nullptr;
    return id && id->is_string() ? std::string(id->as_string()) : std::string();
}

void replaceAll(std::string& s, std::string_view from, const std::string& to) {
    for (std::size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size())) {
        s.replace(at, from.size(), to);
    }
}

// Raw frames through a server-side WebSocket stream, as WsSession reads them.
void readFrames(Connection& c, std::string_view frames) {
    beast::net::io_context io;
    beast::test::stream server(io);
    beast::test::stream client(io);
    server.connect(client);
    websocket::stream<beast::test::stream&> ws(server);
    ws.read_message_max(8192);

    http::request<http::string_body> upgrade{http::verb::get, "/v1/events", 11};
    upgrade.set(http::field::host, "localhost");
    upgrade.set(http::field::upgrade, "websocket");
    upgrade.set(http::field::connection, "upgrade");
    upgrade.set(http::field::sec_websocket_key, "dGhlIHNhbXBsZSBub25jZQ==");
    upgrade.set(http::field::sec_websocket_version, "13");
    beast::error_code ec;
    ws.accept(upgrade, ec);
    check(!ec);

    client.write_some(beast::net::buffer(frames.data(), frames.size()), ec);
    client.close();
    beast::flat_buffer buffer;
    for (int n = 0; n < 64; ++n) {
        ws.read(buffer, ec);
        if (ec) {
            break;
        }
        c.messages().handle(beast::buffers_to_string(buffer.data()));
        buffer.consume(buffer.size());
    }
}

struct EventFixture {
    fuzz::ServiceFixture service;
    net::Logger log{net::LogLevel::Off};
    net::Server server{service.api(), net::ServerConfig{}, log};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static EventFixture f;
    f.service.tick();
    f.service.renewTokens();
    const auto& players = f.service.players();

    // A finds a live match, B takes its waiting seat.
    f.service.call("POST", "/v1/live", "{}", &players[0]);
    const std::string matchId = foundMatchId(f.service.call("POST", "/v1/live", "{}", &players[1]));

    auto a = std::make_shared<Connection>(f.server, f.service, players[0]);
    auto b = std::make_shared<Connection>(f.server, f.service, players[1]);

    std::string input(reinterpret_cast<const char*>(data), size);
    replaceAll(input, "$m", matchId);
    if (!input.empty() && input[0] == 'F') {
        readFrames(*a, std::string_view(input).substr(1));
    } else {
        std::string_view rest(input);
        for (int n = 0; n < 64 && !rest.empty(); ++n) {
            std::size_t end = rest.find('\n');
            std::string_view line = rest.substr(0, end);
            rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
            Connection& from = line.starts_with("B:") ? *b : *a;
            if (line.starts_with("B:") || line.starts_with("A:")) {
                line.remove_prefix(2);
            }
            from.messages().handle(std::string(line));
        }
    }

    // The sockets close; whatever is left of the match goes with it.
    a->messages().leaveLiveMatches();
    b->messages().leaveLiveMatches();
    if (!matchId.empty()) {
        f.service.call("DELETE", "/v1/live/" + matchId, "", &players[0]);
        f.service.call("DELETE", "/v1/live/" + matchId, "", &players[1]);
    }
    return 0;
}
