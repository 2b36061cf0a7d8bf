// The live relay of one instance: which connection here speaks for which player of which live match, and
// whether that player's opponent is connected (here or on another instance).
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace tarvolin::net {

// A connection that takes live messages: sends the text to its player.
class LiveEndpoint {
public:
    virtual ~LiveEndpoint() = default;
    virtual void sendLiveText(std::string text) = 0;
};

class LiveRelay {
public:
    // Binds before the player's connection is stored, so that the opponent's news is not missed between the
    // two; what the store answered is learnt afterwards.
    void bind(const std::string& matchId, const std::string& playerId, std::weak_ptr<LiveEndpoint> endpoint);
    void learn(const std::string& matchId, const std::string& playerId, const std::string& opponentId,
               bool opponentConnected);
    // Drops the binding when it is this endpoint's (a later connection of the player keeps its own).
    void unbind(const std::string& matchId, const std::string& playerId, const LiveEndpoint* endpoint);

    enum class Delivery { Taken, NotBound, Gone };
    // Hands the text to the player's bound connection of the match. A state message about the opponent
    // updates what is known of him; his leaving ends the binding.
    Delivery deliver(const std::string& playerId, const std::string& matchId, const std::string& text);

    // The opponent of a bound player while he is connected.
    std::optional<std::string> connectedOpponent(const std::string& matchId, const std::string& playerId);
    std::size_t size();

private:
    struct Binding {
        std::string opponentId;
        bool opponentConnected = false;
        std::weak_ptr<LiveEndpoint> endpoint;
    };
    static std::string key(const std::string& matchId, const std::string& playerId) {
        return matchId + '/' + playerId;
    }

    std::mutex mutex_;
    std::unordered_map<std::string, Binding> bindings_;
};

} // namespace tarvolin::net
