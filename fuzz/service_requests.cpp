// Raw HTTP requests through Beast's parser into the service's API, as the HTTP session hands them over.
//
// An input is one or more requests separated by a line "@@@". Before a request is parsed, "$A", "$B" and "$C"
// become the bearer tokens of three signed-up players, "$a", "$b" and "$c" their identifiers, and "$m" the
// last "id" an answer gave (a match, a friend request, a payment…), so that the fuzzer reaches the routes
// behind a token with its own JSON bodies.
//
// Every answer must be a valid status, and a JSON answer must be JSON.

#include "net/server.h"
#include "service_fixture.h"

#include <boost/beast/core/error.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace http = boost::beast::http;
namespace json = boost::json;
using tarvolin::fuzz::ServiceFixture;

namespace {

constexpr std::size_t kMaxRequests = 16;
constexpr std::string_view kSeparator = "\n@@@\n";

void replaceAll(std::string& s, std::string_view from, const std::string& to) {
    for (std::size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size())) {
        s.replace(at, from.size(), to);
    }
}

// The first identifier an answer names, looked for where the service puts the one of what it made.
std::string firstId(const json::value& v) {
    if (const auto* o = v.if_object()) {
        for (const char* key :
             {"matchID", "requestID", "transactionIdentifier", "impressionToken", "impressionIdentifier"}) {
            if (const auto* id = o->if_contains(key); id && id->is_string()) {
                return std::string(id->as_string());
            }
        }
        for (const auto& [k, child] : *o) {
            if (std::string found = firstId(child); !found.empty()) {
                return found;
            }
        }
    } else if (const auto* a = v.if_array()) {
        for (const auto& child : *a) {
            if (std::string found = firstId(child); !found.empty()) {
                return found;
            }
        }
    }
    return {};
}

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

void handleOne(ServiceFixture& f, std::string text, std::string& lastId) {
    const auto& players = f.players();
    const char* const tokenMarks[] = {"$A", "$B", "$C"};
    const char* const idMarks[] = {"$a", "$b", "$c"};
    for (std::size_t i = 0; i < players.size(); ++i) {
        replaceAll(text, tokenMarks[i], players[i].token);
        replaceAll(text, idMarks[i], players[i].id);
    }
    replaceAll(text, "$m", lastId);

    // The limits of the HTTP session.
    http::request_parser<http::string_body> parser;
    parser.body_limit(128 * 1024);
    parser.header_limit(16 * 1024);
    parser.eager(true);
    boost::beast::error_code ec;
    std::size_t used = parser.put(boost::asio::buffer(text.data(), text.size()), ec);
    (void)used;
    if (!ec && !parser.is_done()) {
        parser.put_eof(ec);
    }
    if (ec || !parser.is_done()) {
        return;
    }
    http::request<http::string_body> req = parser.release();

    tarvolin::net::Request r;
    if (!tarvolin::net::apiRequest(std::move(req), "192.0.2.1", r)) {
        return;
    }
    tarvolin::net::Response res = f.api().handle(r);

    check(res.status >= 100 && res.status <= 599);
    if (res.contentType.starts_with("application/json") && !res.body.empty()) {
        json::error_code jec;
        json::value v = json::parse(res.body, jec);
        check(!jec);
        if (res.status < 300) {
            if (std::string id = firstId(v); !id.empty()) {
                lastId = id;
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static ServiceFixture fixture;
    fixture.tick();
    fixture.renewTokens();

    std::string_view input(reinterpret_cast<const char*>(data), size);
    std::string lastId;
    for (std::size_t n = 0; n < kMaxRequests && !input.empty(); ++n) {
        std::size_t end = input.find(kSeparator);
        handleOne(fixture, std::string(input.substr(0, end)), lastId);
        input = end == std::string_view::npos ? std::string_view{} : input.substr(end + kSeparator.size());
    }
    return 0;
}
