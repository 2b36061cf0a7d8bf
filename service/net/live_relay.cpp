#include "net/live_relay.h"

#include <boost/json.hpp>

namespace tarvolin::net {

namespace json = boost::json;

void LiveRelay::bind(const std::string& matchId, const std::string& playerId,
                     std::weak_ptr<LiveEndpoint> endpoint) {
    std::lock_guard lock(mutex_);
    bindings_[key(matchId, playerId)] = Binding{"", false, std::move(endpoint)};
}

void LiveRelay::learn(const std::string& matchId, const std::string& playerId, const std::string& opponentId,
                      bool opponentConnected) {
    std::lock_guard lock(mutex_);
    auto it = bindings_.find(key(matchId, playerId));
    if (it != bindings_.end()) {
        it->second.opponentId = opponentId;
        it->second.opponentConnected = it->second.opponentConnected || opponentConnected;
    }
}

void LiveRelay::unbind(const std::string& matchId, const std::string& playerId,
                       const LiveEndpoint* endpoint) {
    std::lock_guard lock(mutex_);
    auto it = bindings_.find(key(matchId, playerId));
    if (it == bindings_.end()) {
        return;
    }
    auto bound = it->second.endpoint.lock();
    if (!bound || bound.get() == endpoint) {
        bindings_.erase(it);
    }
}

LiveRelay::Delivery LiveRelay::deliver(const std::string& playerId, const std::string& matchId,
                                       const std::string& text) {
    std::shared_ptr<LiveEndpoint> target;
    {
        std::lock_guard lock(mutex_);
        auto it = bindings_.find(key(matchId, playerId));
        if (it == bindings_.end()) {
            return Delivery::NotBound;
        }
        target = it->second.endpoint.lock();
        if (!target) {
            bindings_.erase(it);
            return Delivery::Gone;
        }
        // State messages are written with their type first; only they need reading here.
        if (text.starts_with(R"({"type":"live_state")")) {
            json::error_code ec;
            const json::value v = json::parse(text, ec);
            const json::object* o = ec ? nullptr : v.if_object();
            const json::value* about = o ? o->if_contains("player") : nullptr;
            const json::value* state = o ? o->if_contains("state") : nullptr;
            if (about && about->is_string() && about->as_string() != playerId && state && state->is_int64()) {
                if (state->as_int64() == 1) {
                    it->second.opponentId = std::string(about->as_string());
                    it->second.opponentConnected = true;
                } else {
                    bindings_.erase(it);
                }
            }
        }
    }
    target->sendLiveText(text);
    return Delivery::Taken;
}

std::optional<std::string> LiveRelay::connectedOpponent(const std::string& matchId,
                                                        const std::string& playerId) {
    std::lock_guard lock(mutex_);
    auto it = bindings_.find(key(matchId, playerId));
    if (it == bindings_.end() || !it->second.opponentConnected || it->second.opponentId.empty()) {
        return std::nullopt;
    }
    return it->second.opponentId;
}

std::size_t LiveRelay::size() {
    std::lock_guard lock(mutex_);
    return bindings_.size();
}

} // namespace tarvolin::net
