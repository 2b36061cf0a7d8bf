// The authorisation matrix: every route of the service against every kind of caller. Each row names a route,
// builds a fresh object for each cell, and says what each caller is answered: the owner of the object, the
// other party of a two-party object, a player who has nothing to do with it, a logged-out token of the owner,
// and no token at all. A refused caller must leave the object as it was, and nobody but the owner may see it.
#include "support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <functional>
#include <iostream>
#include <set>
#include <sstream>

using namespace tarvolin::testing;
namespace json = boost::json;
namespace net = tarvolin::net;

namespace {

enum Caller { Owner, Party, Other, LoggedOut, NoToken, kCallers };
const std::array<const char*, kCallers> kCallerNames{"owner", "other party", "another player",
                                                     "logged-out token", "no token"};

// What a caller is answered. A status of 0 leaves the cell out (a one-party object has no other party).
struct Expect {
    unsigned status = 0;
    std::string code; // the error code of a refusal; empty for a success
};
using Answers = std::array<Expect, kCallers>;

Expect ok(unsigned status) {
    return {status, {}};
}
Expect refused(unsigned status, std::string code) {
    return {status, std::move(code)};
}
const Expect kNone{};
const Expect kUnauthorized{401, "unauthorized"};

// A route that needs no token: everybody is answered alike.
Answers open(unsigned status) {
    return {ok(status), kNone, ok(status), ok(status), ok(status)};
}
// A route that acts on the caller's own things (or reads what every player may read): any valid token.
Answers own(unsigned status) {
    return {ok(status), kNone, ok(status), kUnauthorized, kUnauthorized};
}
// A route on an object of the owner's: the other party and an outsider are answered as given.
Answers held(unsigned status, Expect party, Expect outsider) {
    return {ok(status), std::move(party), std::move(outsider), kUnauthorized, kUnauthorized};
}

struct World {
    Account owner, party, other;
    std::string ended; // a token of the owner's that was logged out
};

// The object of one cell and the request that acts on it.
struct Target {
    std::string target; // path and query
    std::string body;
    std::string id;     // the object, for reading it back
    std::string secret; // what the owner's answer shows and nobody else's may
    std::shared_ptr<WsClient> ownerWs, partyWs;
};

Target to(std::string target, std::string body = {}, std::string id = {}, std::string secret = {}) {
    Target t;
    t.target = std::move(target);
    t.body = std::move(body);
    t.id = std::move(id);
    t.secret = std::move(secret);
    return t;
}

enum class Via { Api, Http, Socket };

struct Row {
    std::string method;
    std::string pattern;
    std::string form; // the query parameters of the documented form ("ids", "unit,tracking"), comma-separated
    Via via = Via::Api;
    std::function<Target(World&)> build;
    Answers answers;
    // The object as its owner reads it back; compared before and after every caller but the owner.
    std::function<std::string(World&, const Target&)> state;
    // Whether the other party's success may change what the owner reads (declining a live invitation).
    bool partyChanges = false;
    // Run after a refused cell: the owner's own action on the object still works.
    std::function<void(World&, const Target&)> stillWorks;
    // Further checks of an answer.
    std::function<void(World&, const Target&, Caller, const Reply&)> check;
    // Sends the request of the cell when it does not go to the API directly.
    std::function<Reply(World&, Target&, Caller)> perform;
};

std::set<std::string> keysOf(const std::string& commaList) {
    std::set<std::string> out;
    std::stringstream in(commaList);
    for (std::string k; std::getline(in, k, ',');) {
        if (!k.empty()) {
            out.insert(k);
        }
    }
    return out;
}

std::set<std::string> queryKeys(const std::string& target) {
    std::set<std::string> out;
    const std::size_t q = target.find('?');
    if (q == std::string::npos) {
        return out;
    }
    std::stringstream in(target.substr(q + 1));
    for (std::string item; std::getline(in, item, '&');) {
        out.insert(item.substr(0, item.find('=')));
    }
    return out;
}

std::string bearer(const std::string& token) {
    return token.empty() ? std::string() : "Bearer " + token;
}

// A documented route: "GET /v1/players?ids=ID,ID,…" gives GET, /v1/players and {ids}.
struct DocRoute {
    std::string method;
    std::string path;
    std::set<std::string> keys;
};

// Every "### METHOD /path" heading of the API document; a heading may name several joined by " and ".
std::vector<DocRoute> documentedRoutes(const std::string& file) {
    std::ifstream in(file);
    EXPECT_TRUE(in) << "cannot read " << file;
    std::vector<DocRoute> out;
    for (std::string line; std::getline(in, line);) {
        if (!line.starts_with("### ")) {
            continue;
        }
        std::string rest = line.substr(4);
        for (std::size_t at = 0; at <= rest.size();) {
            std::size_t sep = rest.find(" and ", at);
            std::string part = rest.substr(at, sep == std::string::npos ? std::string::npos : sep - at);
            at = sep == std::string::npos ? rest.size() + 1 : sep + 5;
            const std::size_t space = part.find(' ');
            if (space == std::string::npos || space + 1 >= part.size() || part[space + 1] != '/' ||
                !std::all_of(part.begin(), part.begin() + static_cast<long>(space),
                             [](char c) { return c >= 'A' && c <= 'Z'; })) {
                continue; // a heading that names no route ("The relay")
            }
            std::string target = part.substr(space + 1);
            out.push_back(
                DocRoute{part.substr(0, space), target.substr(0, target.find('?')), queryKeys(target)});
        }
    }
    return out;
}

class AuthorizationMatrix : public ServiceTest {
protected:
    // A request straight to the API, each from an address of its own so that no per-address limit counts.
    Reply call(const std::string& method, const std::string& target, const std::string& body = {},
               const std::string& token = {}) {
        net::Request req;
        req.method = method;
        const std::size_t q = target.find('?');
        req.path = target.substr(0, q);
        auto query = net::parseQuery(q == std::string::npos ? std::string_view{}
                                                            : std::string_view(target).substr(q + 1));
        EXPECT_TRUE(query) << target;
        req.query = query.value_or(std::map<std::string, std::string>{});
        req.body = body;
        req.authorization = bearer(token);
        ++addresses_;
        req.remote = "10.9." + std::to_string(addresses_ / 250) + "." + std::to_string(addresses_ % 250 + 1);
        const net::Response res = svc->api().handle(req);
        Reply r;
        r.status = res.status;
        r.body = res.body;
        json::error_code ec;
        r.json = res.contentType == "application/json" ? json::parse(res.body, ec) : json::value();
        if (ec) {
            r.json = nullptr;
        }
        return r;
    }
    Reply call(const std::string& method, const std::string& target, const json::value& body,
               const std::string& token) {
        return call(method, target, json::serialize(body), token);
    }
    // Asks and insists on the status; the answer's JSON.
    json::value must(unsigned status, const std::string& method, const std::string& target,
                     const json::value& body, const std::string& token) {
        Reply r = call(method, target, body.is_null() ? std::string() : json::serialize(body), token);
        if (r.status != status) {
            ADD_FAILURE() << method << " " << target << ": " << r.status << " " << r.body;
            throw std::runtime_error("a step of building the object failed");
        }
        return r.json;
    }

    std::string freshName() { return "mx" + std::to_string(++names_); }

    Account signUp() {
        Account a;
        a.name = freshName();
        json::value v = must(201, "POST", "/v1/accounts",
                             json::object{{"displayName", a.name}, {"password", kPassword}}, {});
        a.id = str(v.at("player").at("playerID"));
        a.token = str(v.at("token"));
        return a;
    }

    World world() {
        World w{signUp(), signUp(), signUp(), {}};
        json::value login = must(200, "POST", "/v1/sessions",
                                 json::object{{"displayName", w.owner.name}, {"password", kPassword}}, {});
        w.ended = str(login.at("token"));
        must(204, "DELETE", "/v1/sessions/current", nullptr, w.ended);
        return w;
    }

    static std::string token(const World& w, Caller c) {
        switch (c) {
        case Owner:
            return w.owner.token;
        case Party:
            return w.party.token;
        case Other:
            return w.other.token;
        case LoggedOut:
            return w.ended;
        default:
            return {};
        }
    }

    std::string friendRequest(const Account& from, const Account& to) {
        return str(must(201, "POST", "/v1/friend-requests", json::object{{"playerID", to.id}}, from.token)
                       .at("request")
                       .at("requestID"));
    }
    void befriend(const Account& a, const Account& b) {
        must(200, "POST", "/v1/friend-requests/" + friendRequest(a, b) + "/accept", nullptr, b.token);
    }
    // A match of the owner's with the other party, the owner holding the first turn.
    std::string invitation(World& w, const std::string& purpose) {
        befriend(w.owner, w.party);
        return str(must(201, "POST", "/v1/matches",
                        json::object{{"recipients", json::array{w.party.id.c_str()}}, {"purpose", purpose}},
                        w.owner.token)
                       .at("match")
                       .at("matchID"));
    }
    std::string endedMatch(World& w, const std::string& purpose) {
        const std::string id = invitation(w, purpose);
        must(200, "POST", "/v1/matches/" + id + "/end", json::object{{"outcomes", json::array{2, 3}}},
             w.owner.token);
        return id;
    }
    std::string liveInvitation(const Account& from, const Account& to) {
        befriend(from, to);
        return str(must(201, "POST", "/v1/live", json::object{{"recipients", json::array{to.id.c_str()}}},
                        from.token)
                       .at("match")
                       .at("matchID"));
    }
    // A found live match of the owner's with the other party, who accepted his invitation.
    std::string foundLiveMatch(World& w) {
        const std::string id = liveInvitation(w.owner, w.party);
        must(200, "POST", "/v1/live/" + id + "/accept", nullptr, w.party.token);
        return id;
    }
    std::string payment(const Account& a) {
        return str(must(201, "POST", "/v1/store/payments",
                        json::object{{"productIdentifier", "com.molvane.tarvolin.pack1"}}, a.token)
                       .at("transaction")
                       .at("transactionIdentifier"));
    }
    std::string purchase(const Account& a) {
        const std::string id = payment(a);
        must(200, "POST", "/v1/store/payments/" + id + "/approve", nullptr, a.token);
        return id;
    }
    json::object ad(const Account& a, const std::string& unit) {
        return must(200, "GET", "/v1/ads/next?unit=" + unit + "&tracking=authorized", nullptr, a.token)
            .at("ad")
            .as_object();
    }

    // The owner's read-back of a route: its status and body.
    std::string read(const World& w, const std::string& target) {
        Reply r = call("GET", target, std::string(), w.owner.token);
        return std::to_string(r.status) + " " + r.body;
    }
    // The events waiting for a player, as a new socket of his receives them.
    std::string pendingEvents(const std::string& token) {
        WsClient ws(svc->port(), token);
        const std::vector<json::value> events = ws.drain();
        return json::serialize(json::array(events.begin(), events.end()));
    }
    Reply socketHandshake(const std::string& target, const std::string& authorization) {
        return wsHandshake(svc->port(), target, authorization);
    }
    // A relay message on the caller's event socket; the answer is the socket's messages up to a pong, with
    // the first error among them as the JSON of the reply.
    Reply relay(World& w, Target& t, Caller c, json::object message) {
        if (c == LoggedOut || c == NoToken) {
            return socketHandshake("/v1/events", bearer(token(w, c)));
        }
        std::shared_ptr<WsClient> ws = c == Owner && t.ownerWs ? t.ownerWs
                                       : c == Party && t.partyWs
                                           ? t.partyWs
                                           : std::make_shared<WsClient>(svc->port(), token(w, c));
        message["match"] = t.id;
        ws->send(message);
        return socketReply(ws->drain());
    }
    static Reply socketReply(const std::vector<json::value>& messages) {
        Reply r;
        r.status = 101;
        json::array all(messages.begin(), messages.end());
        r.body = json::serialize(all);
        for (const json::value& m : messages) {
            if (m.at("type") == "error") {
                r.json = m;
                break;
            }
        }
        return r;
    }
    // Both players of a found live match connected to it on sockets of their own.
    Target connected(World& w, bool partyToo) {
        Target t;
        t.id = foundLiveMatch(w);
        t.ownerWs = std::make_shared<WsClient>(svc->port(), w.owner.token);
        t.ownerWs->send(json::object{{"type", "live_connect"}, {"match", t.id}});
        EXPECT_TRUE(t.ownerWs->nextOfType("live_state"));
        if (partyToo) {
            t.partyWs = std::make_shared<WsClient>(svc->port(), w.party.token);
            t.partyWs->send(json::object{{"type", "live_connect"}, {"match", t.id}});
            EXPECT_TRUE(t.partyWs->nextOfType("live_state"));
            t.ownerWs->drain();
            t.partyWs->drain();
        }
        return t;
    }

    std::vector<Row> rows();
    void runCell(const Row& row, Caller c);

    static constexpr const char* kPassword = "correct horse";
    int addresses_ = 0;
    int names_ = 0;
};

std::vector<Row> AuthorizationMatrix::rows() {
    std::vector<Row> out;
    auto add = [&out](std::string method, std::string pattern, std::string form, Via via,
                      std::function<Target(World&)> build, Answers answers) -> Row& {
        Row r;
        r.method = std::move(method);
        r.pattern = std::move(pattern);
        r.form = std::move(form);
        r.via = via;
        r.build = std::move(build);
        r.answers = std::move(answers);
        out.push_back(std::move(r));
        return out.back();
    };
    auto at = [](std::string target) { return [target](World&) { return to(target); }; };
    auto reading = [this](std::string target) {
        return [this, target](World& w, const Target&) { return read(w, target); };
    };

    // Operations: nobody needs a token.
    add("HEAD", "/", "", Via::Api, at("/"), open(200));
    add("GET", "/", "", Via::Api, at("/"), open(200));
    add("GET", "/healthz", "", Via::Api, at("/healthz"), open(200));
    add("GET", "/views/wallsettings.php", "appId", Via::Api, at("/views/wallsettings.php?appId=tarvolin"),
        open(200));
    add("GET", "/metrics", "", Via::Http, at("/metrics"), open(200));

    // Accounts and sessions.
    add(
        "POST", "/v1/accounts", "", Via::Api,
        [this](World&) {
            return to("/v1/accounts",
                      json::serialize(json::object{{"displayName", freshName()}, {"password", kPassword}}));
        },
        open(201));
    add(
        "POST", "/v1/sessions", "", Via::Api,
        [](World& w) {
            return to("/v1/sessions",
                      json::serialize(json::object{{"displayName", w.owner.name}, {"password", kPassword}}));
        },
        open(200));
    add("DELETE", "/v1/sessions/current", "", Via::Api, at("/v1/sessions/current"), own(204)).state =
        reading("/v1/players/me");

    // Players: anyone with a token reads a player; each changes only himself.
    add(
        "GET", "/v1/players/me", "", Via::Api,
        [](World& w) { return to("/v1/players/me", {}, {}, w.owner.id); }, own(200));
    add(
        "PATCH", "/v1/players/me", "", Via::Api,
        [this](World&) {
            return to("/v1/players/me", json::serialize(json::object{{"displayName", freshName()}}));
        },
        own(200))
        .state = reading("/v1/players/me");
    add(
        "GET", "/v1/players", "ids", Via::Api, [](World& w) { return to("/v1/players?ids=" + w.owner.id); },
        own(200));
    add(
        "GET", "/v1/players", "name", Via::Api,
        [](World& w) { return to("/v1/players?name=" + w.owner.name); }, own(200));
    add(
        "GET", "/v1/players/{id}", "", Via::Api, [](World& w) { return to("/v1/players/" + w.owner.id); },
        own(200));
    add(
        "GET", "/v1/players/{id}/photo", "", Via::Api,
        [](World& w) { return to("/v1/players/" + w.owner.id + "/photo"); }, own(200));

    // Friends: a request from the other party to the owner, who alone may answer it.
    add(
        "GET", "/v1/friends", "", Via::Api,
        [this](World& w) {
            befriend(w.owner, w.party);
            return to("/v1/friends", {}, {}, w.party.id);
        },
        own(200));
    add(
        "POST", "/v1/friend-requests", "", Via::Api,
        [](World& w) {
            return to("/v1/friend-requests", json::serialize(json::object{{"playerID", w.party.id}}));
        },
        own(201))
        .state = reading("/v1/friend-requests?direction=outgoing");
    add(
        "GET", "/v1/friend-requests", "direction", Via::Api,
        [this](World& w) {
            const std::string id = friendRequest(w.party, w.owner);
            return to("/v1/friend-requests?direction=incoming", {}, id, id);
        },
        own(200));
    for (const std::string answer : {"accept", "decline"}) {
        Row& r = add(
            "POST", "/v1/friend-requests/{id}/" + answer, "", Via::Api,
            [this, answer](World& w) {
                const std::string id = friendRequest(w.party, w.owner);
                return to("/v1/friend-requests/" + id + "/" + answer, {}, id);
            },
            held(200, refused(404, "request_not_found"), refused(404, "request_not_found")));
        r.state = [this](World& w, const Target&) {
            return read(w, "/v1/friend-requests?direction=incoming") + read(w, "/v1/friends");
        };
        r.stillWorks = [this, answer](World& w, const Target& t) {
            must(200, "POST", "/v1/friend-requests/" + t.id + "/" + answer, nullptr, w.owner.token);
        };
    }

    // The leaderboard: the owner has a score; another player's report leaves the owner's alone.
    auto scored = [this](std::string target, std::string body, bool secret) {
        return [this, target, body, secret](World& w) {
            must(200, "POST", "/v1/leaderboard/scores", json::object{{"value", 5400}, {"context", 7}},
                 w.owner.token);
            return to(target, body, {}, secret ? w.owner.id : std::string());
        };
    };
    add("POST", "/v1/leaderboard/scores", "", Via::Api,
        scored("/v1/leaderboard/scores", R"({"value": 12, "context": 1})", false), own(200))
        .state = [this](World& w, const Target&) {
        return json::serialize(
            call("GET", "/v1/leaderboard/me", std::string(), w.owner.token).json.at("local"));
    };
    add("GET", "/v1/leaderboard", "scope", Via::Api, scored("/v1/leaderboard?scope=friends", {}, true),
        own(200));
    add("GET", "/v1/leaderboard/me", "", Via::Api, scored("/v1/leaderboard/me", {}, true), own(200));

    // Achievements: the owner has one.
    auto achieved = [this](std::string body, std::string secret) {
        return [this, body, secret](World& w) {
            must(
                200, "POST", "/v1/achievements",
                json::parse(R"({"achievements": [{"identifier": "owner-only:1", "percentComplete": 40.5}]})"),
                w.owner.token);
            return to("/v1/achievements", body, {}, secret);
        };
    };
    add("GET", "/v1/achievements", "", Via::Api, achieved({}, "owner-only:1"), own(200));
    add("POST", "/v1/achievements", "", Via::Api,
        achieved(R"({"achievements": [{"identifier": "owner-only:1", "percentComplete": 100}]})", {}),
        own(200))
        .state = reading("/v1/achievements");
    add("DELETE", "/v1/achievements", "", Via::Api, achieved({}, {}), own(204)).state =
        reading("/v1/achievements");

    // Turn-based matches, of both purposes: the owner invited the other party and holds the first turn.
    const Expect noSuchMatch = refused(404, "no_such_match");
    const Expect notYourTurn = refused(409, "not_your_turn");
    for (const std::string purpose : {"battle", "exchange"}) {
        auto match = [this, purpose](std::string suffix, std::string body, bool ended) {
            return [this, purpose, suffix, body, ended](World& w) {
                const std::string id = ended ? endedMatch(w, purpose) : invitation(w, purpose);
                return to("/v1/matches/" + id + suffix, body, id);
            };
        };
        auto readMatch = [this](World& w, const Target& t) { return read(w, "/v1/matches/" + t.id); };
        add(
            "POST", "/v1/matches", "", Via::Api,
            [this, purpose](World& w) {
                befriend(w.owner, w.party);
                json::object body{{"recipients", json::array{w.party.id.c_str()}}, {"purpose", purpose}};
                return to("/v1/matches", json::serialize(body));
            },
            held(201, kNone, refused(403, "invitation_refused")))
            .state = reading("/v1/matches");
        add(
            "GET", "/v1/matches", "", Via::Api,
            [this, purpose](World& w) {
                const std::string id = invitation(w, purpose);
                return to("/v1/matches", {}, id, id);
            },
            own(200));
        add("GET", "/v1/matches/{id}", "", Via::Api, match("", {}, false), held(200, ok(200), noSuchMatch))
            .check = [](World&, const Target& t, Caller c, const Reply& r) {
            if (c == Owner) {
                EXPECT_EQ(r.json.at("match").at("matchID"), t.id.c_str());
            }
        };
        const std::vector<std::pair<std::string, std::string>> moves{
            {"/turn", R"({"nextParticipants": [1, 0], "matchData": "b3duZXI="})"},
            {"/message", R"({"key": "gc.battle.turnMessage", "arguments": ["x"]})"},
            {"/end", R"({"outcomes": [2, 3], "matchData": "ZW5k"})"}};
        for (const auto& [suffix, body] : moves) {
            Row& r = add("POST", "/v1/matches/{id}" + suffix, "", Via::Api, match(suffix, body, false),
                         held(200, notYourTurn, noSuchMatch));
            r.state = readMatch;
            r.stillWorks = [this, suffix, body](World& w, const Target& t) {
                must(200, "POST", "/v1/matches/" + t.id + suffix, json::parse(body), w.owner.token);
            };
        }
        // The other party takes the match out of his own list; the owner keeps it.
        Row& removal = add("DELETE", "/v1/matches/{id}", "", Via::Api, match("", {}, true),
                           held(200, ok(200), noSuchMatch));
        removal.state = [this](World& w, const Target& t) {
            return read(w, "/v1/matches") + read(w, "/v1/matches/" + t.id);
        };
        removal.stillWorks = [this](World& w, const Target& t) {
            must(200, "DELETE", "/v1/matches/" + t.id, nullptr, w.owner.token);
        };
        Row& rematch = add("POST", "/v1/matches/{id}/rematch", "", Via::Api, match("/rematch", {}, true),
                           held(201, ok(201), noSuchMatch));
        rematch.state = readMatch;
        rematch.check = [purpose](World&, const Target&, Caller c, const Reply& r) {
            if (r.status == 201) {
                EXPECT_EQ(r.json.at("match").at("purpose"), purpose.c_str()) << kCallerNames[c];
            }
        };
    }

    // Live matches.
    const Expect noSuchLive = refused(404, "no_such_live_match");
    auto readLive = [this](World& w, const Target& t) { return read(w, "/v1/live/" + t.id); };
    add(
        "POST", "/v1/live", "", Via::Api,
        [this](World& w) {
            befriend(w.owner, w.party);
            return to("/v1/live",
                      json::serialize(json::object{{"recipients", json::array{w.party.id.c_str()}}}));
        },
        held(201, kNone, refused(403, "invitation_refused")));
    add(
        "GET", "/v1/live/{id}", "", Via::Api,
        [this](World& w) {
            const std::string id = liveInvitation(w.owner, w.party);
            return to("/v1/live/" + id, {}, id);
        },
        held(200, ok(200), noSuchLive));
    // Accepting is the invited player's: here the owner is the one invited.
    Row& accept = add(
        "POST", "/v1/live/{id}/accept", "", Via::Api,
        [this](World& w) {
            const std::string id = liveInvitation(w.party, w.owner);
            return to("/v1/live/" + id + "/accept", {}, id);
        },
        held(200, refused(409, "not_invited"), noSuchLive));
    accept.state = readLive;
    accept.stillWorks = [this](World& w, const Target& t) {
        must(200, "POST", "/v1/live/" + t.id + "/accept", nullptr, w.owner.token);
    };
    // The other party may leave too: he declines the invitation, and the match is gone for both.
    Row& leave = add(
        "DELETE", "/v1/live/{id}", "", Via::Api,
        [this](World& w) {
            const std::string id = liveInvitation(w.owner, w.party);
            return to("/v1/live/" + id, {}, id);
        },
        held(204, ok(204), noSuchLive));
    leave.state = readLive;
    leave.partyChanges = true;
    leave.stillWorks = [this](World& w, const Target& t) {
        must(204, "DELETE", "/v1/live/" + t.id, nullptr, w.owner.token);
    };

    // The event WebSocket: the owner has a friend request waiting as an event.
    const Answers socket{ok(101), kNone, ok(101), kUnauthorized, kUnauthorized};
    add(
        "GET", "/v1/events", "", Via::Socket,
        [this](World& w) {
            const std::string id = friendRequest(w.party, w.owner);
            return to("/v1/events", {}, id, id);
        },
        socket)
        .perform = [this](World& w, Target&, Caller c) {
        if (c == Owner || c == Other) {
            return socketReply(WsClient(svc->port(), token(w, c)).drain());
        }
        return socketHandshake("/v1/events", bearer(token(w, c)));
    };
    out.back().check = [this](World& w, const Target&, Caller c, const Reply&) {
        if (c != LoggedOut) {
            return;
        }
        // A socket that was open when its token was logged out is closed before any further event.
        const std::string session =
            str(must(200, "POST", "/v1/sessions",
                     json::object{{"displayName", w.owner.name}, {"password", kPassword}}, {})
                    .at("token"));
        WsClient ws(svc->port(), session);
        ws.drain();
        must(204, "DELETE", "/v1/sessions/current", nullptr, session);
        const std::string later = friendRequest(w.other, w.owner);
        while (std::optional<json::value> m = ws.next()) {
            EXPECT_EQ(json::serialize(*m).find(later), std::string::npos)
                << "an ended token still hears events";
        }
    };
    // Acknowledging: each player acknowledges only his own events.
    Row& ack = add("ack", "/v1/events", "", Via::Socket,
                   [this](World& w) { return to("/v1/events", {}, friendRequest(w.party, w.owner)); },
                   {ok(101), kNone, refused(101, "invalid_ack"), kUnauthorized, kUnauthorized});
    ack.state = [this](World& w, const Target&) { return pendingEvents(w.owner.token); };
    ack.perform = [this](World& w, Target&, Caller c) {
        if (c == LoggedOut || c == NoToken) {
            return socketHandshake("/v1/events", bearer(token(w, c)));
        }
        WsClient ws(svc->port(), token(w, c));
        ws.drain();
        ws.ack(1);
        return socketReply(ws.drain());
    };
    ack.check = [this](World& w, const Target& t, Caller c, const Reply&) {
        const bool waiting = pendingEvents(w.owner.token).find(t.id) != std::string::npos;
        EXPECT_EQ(waiting, c != Owner) << kCallerNames[c];
    };
    add("GET", "/v1/events", "access_token", Via::Socket, at("/v1/events?access_token="), socket).perform =
        [this](World& w, Target&, Caller c) {
            const std::string t = token(w, c);
            return socketHandshake(t.empty() ? "/v1/events" : "/v1/events?access_token=" + t, {});
        };

    // The live relay on the event WebSocket, for a found match of the owner's with the other party.
    Row& connect = add("live_connect", "/v1/events", "", Via::Socket,
                       [this](World& w) { return to("/v1/events", {}, foundLiveMatch(w)); },
                       {ok(101), ok(101), refused(101, "no_such_live_match"), kUnauthorized, kUnauthorized});
    connect.state = readLive;
    connect.partyChanges = true; // he is connected now
    connect.perform = [this](World& w, Target& t, Caller c) {
        return relay(w, t, c, json::object{{"type", "live_connect"}});
    };
    connect.check = [](World& w, const Target&, Caller c, const Reply& r) {
        if (c == Owner) {
            EXPECT_NE(r.body.find(R"("type":"live_state")"), std::string::npos) << r.body;
            EXPECT_NE(r.body.find(w.owner.id), std::string::npos) << r.body;
        }
    };
    Row& send =
        add("live_send", "/v1/events", "", Via::Socket, [this](World& w) { return connected(w, true); },
            {ok(101), kNone, refused(101, "live_not_connected"), kUnauthorized, kUnauthorized});
    send.state = readLive;
    send.perform = [this](World& w, Target& t, Caller c) {
        return relay(w, t, c, json::object{{"type", "live_send"}, {"data", "aGVsbG8="}});
    };
    send.check = [](World&, const Target& t, Caller c, const Reply&) {
        // The data reaches the other party from the owner alone.
        std::vector<json::value> heard = t.partyWs->drain();
        const bool data = std::any_of(heard.begin(), heard.end(),
                                      [](const json::value& m) { return m.at("type") == "live_data"; });
        EXPECT_EQ(data, c == Owner) << kCallerNames[c];
    };
    Row& quit =
        add("live_leave", "/v1/events", "", Via::Socket, [this](World& w) { return connected(w, false); },
            {ok(101), ok(101), ok(101), kUnauthorized, kUnauthorized});
    quit.state = readLive;
    quit.partyChanges = true;
    quit.perform = [this](World& w, Target& t, Caller c) {
        return relay(w, t, c, json::object{{"type", "live_leave"}});
    };
    quit.check = [this](World& w, const Target& t, Caller c, const Reply&) {
        const unsigned status = call("GET", "/v1/live/" + t.id, std::string(), w.owner.token).status;
        EXPECT_EQ(status, c == Owner || c == Party ? 404u : 200u) << kCallerNames[c];
    };

    // The store: the owner's payments and transactions are his alone.
    const Expect noSuchTransaction = refused(404, "transaction_not_found");
    const auto transactions = reading("/v1/store/transactions");
    add("GET", "/v1/store/products", "ids,locale", Via::Api,
        at("/v1/store/products?ids=com.molvane.tarvolin.pack1,com.molvane.tarvolin.pack2&locale=ar_SA"),
        open(200));
    add(
        "POST", "/v1/store/payments", "", Via::Api,
        [](World&) {
            return to("/v1/store/payments", R"({"productIdentifier": "com.molvane.tarvolin.pack2"})");
        },
        own(201))
        .state = transactions;
    for (const std::string answer : {"approve", "cancel"}) {
        Row& r = add(
            "POST", "/v1/store/payments/{id}/" + answer, "", Via::Api,
            [this, answer](World& w) {
                const std::string id = payment(w.owner);
                return to("/v1/store/payments/" + id + "/" + answer, {}, id);
            },
            held(200, kNone, noSuchTransaction));
        r.state = transactions;
        r.stillWorks = [this, answer](World& w, const Target& t) {
            must(200, "POST", "/v1/store/payments/" + t.id + "/" + answer, nullptr, w.owner.token);
        };
    }
    add(
        "GET", "/v1/store/transactions", "", Via::Api,
        [this](World& w) {
            const std::string id = payment(w.owner);
            return to("/v1/store/transactions", {}, id, id);
        },
        own(200));
    Row& finish = add(
        "POST", "/v1/store/transactions/{id}/finish", "", Via::Api,
        [this](World& w) {
            const std::string id = purchase(w.owner);
            return to("/v1/store/transactions/" + id + "/finish", {}, id);
        },
        held(200, kNone, noSuchTransaction));
    finish.state = transactions;
    finish.stillWorks = [this](World& w, const Target& t) {
        must(200, "POST", "/v1/store/transactions/" + t.id + "/finish", nullptr, w.owner.token);
    };
    add(
        "POST", "/v1/store/restore", "", Via::Api,
        [this](World& w) {
            const std::string id = purchase(w.owner);
            must(200, "POST", "/v1/store/transactions/" + id + "/finish", nullptr, w.owner.token);
            return to("/v1/store/restore", {}, id, id);
        },
        own(200))
        .state = transactions;
    auto sandboxFails = [this](std::string body, std::string secret) {
        return [this, body, secret](World& w) {
            must(200, "PUT", "/v1/store/sandbox", json::object{{"outcome", "fail"}}, w.owner.token);
            return to("/v1/store/sandbox", body, {}, secret);
        };
    };
    add("GET", "/v1/store/sandbox", "", Via::Api, sandboxFails({}, R"("fail")"), own(200));
    add("PUT", "/v1/store/sandbox", "", Via::Api, sandboxFails(R"({"outcome": "cancel"})", {}), own(200))
        .state = reading("/v1/store/sandbox");

    // House ads: an impression and a reward are the player's who was served the ad.
    const Expect noSuchImpression = refused(404, "impression_not_found");
    add("GET", "/v1/ads/next", "unit,tracking", Via::Api,
        at("/v1/ads/next?unit=tarvolin-interstitial&tracking=authorized"), own(200));
    add("GET", "/v1/ads/creatives/{id}.svg", "", Via::Api, at("/v1/ads/creatives/molvane-najma.svg"),
        open(200));
    add(
        "POST", "/v1/ads/impressions", "", Via::Api,
        [this](World& w) {
            const std::string token = str(ad(w.owner, "tarvolin-interstitial").at("impressionToken"));
            json::object body{{"impressionToken", token}, {"tracking", "authorized"}};
            return to("/v1/ads/impressions", json::serialize(body), token);
        },
        held(201, kNone, noSuchImpression))
        .stillWorks = [this](World& w, const Target& t) {
        must(201, "POST", "/v1/ads/impressions", json::object{{"impressionToken", t.id}}, w.owner.token);
    };
    add(
        "POST", "/v1/ads/rewards", "", Via::Api,
        [this](World& w) {
            const json::object served = ad(w.owner, "tarvolin-rewarded");
            const std::string id = str(
                must(201, "POST", "/v1/ads/impressions",
                     json::object{{"impressionToken", served.at("impressionToken")}, {"tracking", "denied"}},
                     w.owner.token)
                    .at("impressionIdentifier"));
            svc->advance(served.at("durationSeconds").to_number<std::int64_t>() * 1000 + 1);
            return to("/v1/ads/rewards", json::serialize(json::object{{"impressionIdentifier", id}}), id);
        },
        held(200, kNone, noSuchImpression))
        .stillWorks = [this](World& w, const Target& t) {
        must(200, "POST", "/v1/ads/rewards", json::object{{"impressionIdentifier", t.id}}, w.owner.token);
    };

    // Saved progress: each player reads and writes only his own, so another player's request is about his.
    auto withProgress = [this](std::string target, std::string body, std::string secret) {
        return [this, target, body, secret](World& w) {
            must(200, "PUT", "/v1/progress",
                 json::object{{"baseVersion", 0}, {"progress", progressDocument(9, 177)}}, w.owner.token);
            return to(target, body, {}, secret);
        };
    };
    add("GET", "/v1/progress", "", Via::Api, withProgress("/v1/progress", {}, R"("gold":177)"),
        held(200, kNone, refused(404, "no_progress")));
    add("PUT", "/v1/progress", "", Via::Api,
        withProgress(
            "/v1/progress",
            json::serialize(json::object{{"baseVersion", 1}, {"progress", progressDocument(9, 100)}}), {}),
        held(200, kNone, refused(409, "progress_conflict")))
        .state = reading("/v1/progress");
    add("GET", "/v1/progress/versions", "", Via::Api,
        withProgress("/v1/progress/versions", {}, R"("gold":177)"), own(200));
    return out;
}

void AuthorizationMatrix::runCell(const Row& row, Caller c) {
    const Expect& expect = row.answers[c];
    World w = world();
    Target t = row.build(w);
    EXPECT_EQ(queryKeys(t.target), keysOf(row.form)) << "the request is not of the row's form: " << t.target;
    const std::string before = row.state ? row.state(w, t) : std::string();

    Reply r;
    if (row.perform) {
        r = row.perform(w, t, c);
    } else if (row.via == Via::Http) {
        r = svc->http().request(row.method, t.target, t.body, token(w, c));
    } else {
        r = call(row.method, t.target, t.body, token(w, c));
    }
    EXPECT_EQ(r.status, expect.status) << r.body;
    EXPECT_EQ(r.errorCode(), expect.code) << r.body;

    const bool success = expect.status < 400 && expect.code.empty();
    if (!t.secret.empty()) {
        if (c == Owner) {
            EXPECT_NE(r.body.find(t.secret), std::string::npos) << "the owner does not see " << t.secret;
        } else if (c != Party) {
            EXPECT_EQ(r.body.find(t.secret), std::string::npos) << t.secret << " leaks: " << r.body;
        }
    }
    if (row.check) {
        row.check(w, t, c, r);
    }
    if (row.state && c != Owner && !(c == Party && success && row.partyChanges)) {
        EXPECT_EQ(row.state(w, t), before) << "the owner's object changed";
    }
    if (row.stillWorks && !success) {
        row.stillWorks(w, t);
    }
}

TEST_P(AuthorizationMatrix, EveryRouteAnswersEveryKindOfCallerAsDocumented) {
    const std::vector<Row> table = rows();

    // The table covers the API: every route has a row, every row of the API is a route, and every route
    // that the document heads has a row of its form.
    const auto apiRoutes = svc->api().routes();
    std::set<std::pair<std::string, std::string>> rowRoutes;
    for (const Row& row : table) {
        rowRoutes.emplace(row.method, row.pattern);
        const bool inApi = std::find(apiRoutes.begin(), apiRoutes.end(),
                                     std::pair{row.method, row.pattern}) != apiRoutes.end();
        EXPECT_EQ(inApi, row.via == Via::Api)
            << row.method << " " << row.pattern
            << (inApi ? " is answered by the API" : " is no route of the API");
    }
    for (const auto& [method, pattern] : apiRoutes) {
        EXPECT_TRUE(rowRoutes.contains({method, pattern})) << method << " " << pattern << " has no row";
    }
    const std::vector<DocRoute> documented = documentedRoutes(TARVOLIN_API_DOC);
    EXPECT_GE(documented.size(), apiRoutes.size());
    for (const DocRoute& d : documented) {
        const bool covered = std::any_of(table.begin(), table.end(), [&](const Row& row) {
            return row.method == d.method && row.pattern == d.path &&
                   (d.keys.empty() || keysOf(row.form) == d.keys);
        });
        std::string keys;
        for (const std::string& k : d.keys) {
            keys += " " + k;
        }
        EXPECT_TRUE(covered) << "the documented " << d.method << " " << d.path << keys << " has no row";
    }

    std::size_t cells = 0;
    for (const Row& row : table) {
        for (int c = 0; c < kCallers; ++c) {
            if (row.answers[c].status == 0) {
                continue;
            }
            SCOPED_TRACE(row.method + " " + row.pattern + (row.form.empty() ? "" : "?" + row.form) + " by " +
                         kCallerNames[c]);
            ++cells;
            try {
                runCell(row, static_cast<Caller>(c));
            } catch (const std::exception& e) {
                ADD_FAILURE() << e.what();
            }
        }
    }

    // A malformed identifier in the path names nothing, but a token route still asks for a token first.
    World w = world();
    const std::size_t tableCells = cells;
    std::set<std::pair<std::string, std::string>> tried;
    for (const Row& row : table) {
        const std::size_t id = row.pattern.find("{id}");
        if (row.via != Via::Api || id == std::string::npos ||
            !tried.emplace(row.method, row.pattern).second) {
            continue;
        }
        const std::string target = std::string(row.pattern).replace(id, 4, "no%20such%20id");
        for (Caller c : {Owner, Other, LoggedOut, NoToken}) {
            SCOPED_TRACE(row.method + " " + target + " by " + kCallerNames[c]);
            ++cells;
            const Expect expect = row.answers[c].status == 401 ? kUnauthorized : refused(404, "not_found");
            Reply r = call(row.method, target, std::string(), token(w, c));
            EXPECT_EQ(r.status, expect.status) << r.body;
            EXPECT_EQ(r.errorCode(), expect.code) << r.body;
        }
    }

    std::cout << "[ matrix   ] " << GetParam() << ": " << rowRoutes.size() << " routes (" << apiRoutes.size()
              << " of the API; the metrics, the event socket and its messages) in " << table.size()
              << " rows x " << kCallers << " kinds of caller, " << cells << " cells checked (" << tableCells
              << " of the table, " << cells - tableCells << " with a malformed identifier)" << std::endl;
    RecordProperty("routes", static_cast<int>(rowRoutes.size()));
    RecordProperty("cells", static_cast<int>(cells));
}

INSTANTIATE_TEST_SUITE_P(Backends, AuthorizationMatrix, ::testing::ValuesIn(backends()), backendName);

} // namespace
