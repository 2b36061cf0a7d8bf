// The service the service fuzzers talk to: an Api over a SQLite database in a folder of its own (removed at
// exit), a clock that the fuzzers move on, cheap password hashing, and three players with valid tokens.
#pragma once

#include "net/api.h"
#include "store/store.h"

#include <boost/json.hpp>
#include <sodium.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace tarvolin::fuzz {

struct FuzzPlayer {
    std::string id;
    std::string token;
};

class ServiceFixture {
public:
    ServiceFixture() {
        if (sodium_init() < 0) {
            std::abort();
        }
        char folder[] = "/tmp/tarvolin-fuzz-XXXXXX";
        if (!mkdtemp(folder)) {
            std::abort();
        }
        dir_ = folder;
        store_ = store::makeSqlStore(store::openSqlite((dir_ / "service.db").string()));
        store_->migrate();
        net::ApiConfig config;
        config.hashOpsLimit = crypto_pwhash_OPSLIMIT_MIN;
        config.hashMemLimit = crypto_pwhash_MEMLIMIT_MIN;
        config.requestsPerSecond = 0;
        // Tokens outlive any campaign however far the clock moves.
        config.tokenLifetimeMs = std::int64_t{1} << 60;
        config.settings = {{"service", "tarvolin"}, {"bonus", "on"}};
        api_ = std::make_unique<net::Api>(*store_, config, [this] { return clock_; });
        api_->loadLeaderboard();
        for (auto& p : players_) {
            p = signUp();
        }
    }

    ~ServiceFixture() {
        api_.reset();
        store_.reset();
        std::error_code ec;
        std::filesystem::remove_all(dir_, ec);
    }

    net::Api& api() { return *api_; }
    std::array<FuzzPlayer, 3>& players() { return players_; }

    // A request of a player's (or of no one's, with no player).
    net::Response call(const std::string& method, const std::string& path, const std::string& body,
                       const FuzzPlayer* player) {
        net::Request req;
        req.method = method;
        req.path = path;
        req.body = body;
        req.remote = "192.0.2.1";
        if (player) {
            req.authorization = "Bearer " + player->token;
        }
        return api_->handle(req);
    }

    // Moves the clock past every per-minute limit, so that each input starts afresh.
    void tick() { clock_ += 60'000; }

    // An input may log a player out: he gets a new account and token before the next input.
    void renewTokens() {
        for (auto& p : players_) {
            if (!api_->tokenValid(net::Api::tokenKey(p.token), p.id)) {
                p = signUp();
            }
        }
    }

private:
    FuzzPlayer signUp() {
        net::Request req;
        req.method = "POST";
        req.path = "/v1/accounts";
        req.remote = "127.0.0.1";
        req.body = boost::json::serialize(boost::json::object{
            {"displayName", "player" + std::to_string(++signUps_)}, {"password", "fuzz-pw-1"}});
        net::Response res = api_->handle(req);
        boost::json::error_code ec;
        boost::json::value v = boost::json::parse(res.body, ec);
        if (ec || res.status != 201 || !v.is_object()) {
            std::abort();
        }
        const auto& o = v.as_object();
        return {std::string(o.at("player").at("playerID").as_string()),
                std::string(o.at("token").as_string())};
    }

    std::filesystem::path dir_;
    std::unique_ptr<store::Store> store_;
    std::unique_ptr<net::Api> api_;
    std::int64_t clock_ = 1'700'000'000'000;
    int signUps_ = 0;
    std::array<FuzzPlayer, 3> players_;
};

} // namespace tarvolin::fuzz
