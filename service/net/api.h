// The service's API: routes a request to its handler and answers it. Knows nothing of sockets, so that
// the HTTP session and the tests drive it alike.
#pragma once

#include "logic/limits.h"
#include "logic/live_rules.h"
#include "logic/rank_index.h"
#include "logic/text_rules.h"
#include "net/group_commit.h"
#include "net/metrics.h"
#include "net/recent_cache.h"
#include "store/store.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tarvolin::net {

struct Request {
    std::string method;
    std::string path;
    std::map<std::string, std::string> query;
    std::string body;
    std::string authorization; // the Authorization header
    std::string remote;        // the client's address
};

struct Response {
    unsigned status = 200;
    std::string contentType = "application/json";
    std::string body;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string route = "unmatched"; // the route pattern, for metrics and the log
    std::string playerId;            // the authenticated player, for the log
};

// Told when a player has new events waiting.
class EventListener {
public:
    virtual ~EventListener() = default;
    virtual void eventsAdded(const std::string& playerId) = 0;
    // A live-match message for a player. A data message goes to the player's connection of that match on
    // this instance; any other also to every connection of the player here while none is bound to the match.
    // Returns whether a connection here took it.
    virtual bool liveMessage(const std::string& /*playerId*/, const std::string& /*matchId*/,
                             const std::string& /*text*/) {
        return false;
    }
};

struct ApiConfig {
    std::int64_t tokenLifetimeMs = 90LL * 24 * 3600 * 1000;
    // argon2id cost; the defaults are libsodium's recommendation for interactive logins.
    unsigned long long hashOpsLimit = 0;
    std::size_t hashMemLimit = 0;
    int failuresPerAccount = 5;
    int failuresPerAddress = 20;
    std::int64_t failureWindowMs = 15 * 60 * 1000;
    double requestsPerSecond = 50; // per address; 0 turns the limit off
    double requestBurst = 100;
    // Accounts one address may create in an hour (all at once, then one every 3600/n seconds); 0: no limit.
    int signupsPerHour = 10;
    logic::SettingsItems settings;
};

using ClockMs = std::function<std::int64_t()>;
std::int64_t systemClockMs();

// Parses "a=b&c=d" with percent-decoding; nullopt when an escape is malformed.
std::optional<std::map<std::string, std::string>> parseQuery(std::string_view q);

class Api {
public:
    Api(store::Store& store, ApiConfig config, ClockMs clock = systemClockMs);

    // Gives every stored name the key of the present rules (at start, before serving); returns how many
    // keys changed.
    std::size_t rekeyNames();
    // Builds the rank index from storage.
    void loadLeaderboard();
    // Follows the changes of other instances on the same database: their scores enter the rank index and
    // their events reach this instance's WebSockets. Call before loadLeaderboard, so that nothing slips
    // between the two. Does nothing on a database of one instance.
    void watchOtherInstances();
    void setEventListener(EventListener* l);

    // Answers the request: calls done once with the response, at once on this thread, or later on another
    // (a score report is answered once its commit is on disk).
    using Done = std::function<void(Response)>;
    void handle(const Request& req, Done done);
    // The same, waiting for the response.
    Response handle(const Request& req);
    // Waits until every score report handed in so far is committed and answered (before the server stops).
    void finishReports();
    // Score reports: commits so far, the reports they stored, and the reports waiting for the next commit.
    GroupCommitCounts reportCounts() const;
    // The same as Prometheus text.
    std::string reportMetrics() const;
    // Every route this API answers, as its method and pattern ("/v1/matches/{id}"), in the order tried.
    std::vector<std::pair<std::string, std::string>> routes() const;

    // The player of a bearer token ("Bearer …" or the bare token), when it is valid.
    std::optional<std::string> authenticate(std::string_view credentials);
    // The stored key of a token: empty when the credentials are no token at all.
    static std::string tokenKey(std::string_view credentials);
    // Whether the token with this key still belongs to the player (not logged out, not expired).
    bool tokenValid(const std::string& key, const std::string& playerId);
    store::Store& store() { return store_; }
    std::int64_t leaderboardSize() const;
    std::int64_t now() const { return clock_(); }
    const CommerceMetrics& commerceMetrics() const { return commerce_; }
    LimitMetrics& limitMetrics() { return limits_; }
    // Moves every turn that has run out by now to its next player; returns how many moved.
    std::size_t expireDueTurns();
    // Live matches, over the event WebSocket. Connects the player to a found match; the opponent hears of it
    // when he is connected too. Returns the match, or the refusal's code.
    std::variant<logic::live::Match, std::string> liveConnect(const std::string& playerId,
                                                              const std::string& matchId);
    // The player leaves (or cancels, or declines) a live match: it ends and the other player hears of it.
    void liveLeave(const std::string& playerId, const std::string& matchId, const std::string& reason);
    // Hands a live message to the player's connection here, or to the other instances.
    void sendLive(const std::string& playerId, const std::string& matchId, const std::string& text);
    // Ends the live matches that have outlived their search, connection or life; returns how many.
    std::size_t expireLiveMatches();
    static std::string liveStateText(const std::string& matchId, const std::string& playerId, int state,
                                     int expectedPlayerCount, const std::string& reason = {});

    // Limits of turn-based matches: in play at once, and created per minute (a burst of 10, then one every
    // six seconds).
    static constexpr std::size_t kMaxOpenMatches = 50;
    // The most players a search by name gives.
    static constexpr std::size_t kMaxNamedPlayers = 20;
    static constexpr double kMatchesPerSecond = 10.0 / 60.0;
    static constexpr double kMatchBurst = 10;

private:
    struct Ctx;
    using Handler = Response (Api::*)(Ctx&);
    // A handler that answers later through done; what it throws before it hands the request on is answered
    // at once.
    using AsyncHandler = void (Api::*)(Ctx&, Done done);
    struct Route {
        std::string method;
        std::string pattern;
        std::vector<std::string> parts;
        Handler handler;
        bool needsToken;
        AsyncHandler async = nullptr;
    };
    // A score report waiting for its group's commit.
    struct PendingReport {
        std::string playerId;
        std::int64_t value = 0;
        std::int64_t context = 0;
        Done done;
    };

    void add(std::string method, std::string pattern, Handler h, bool needsToken);
    void add(std::string method, std::string pattern, AsyncHandler h, bool needsToken);
    // The response to a failed request: the API's own refusals as they are, storage and other faults as
    // 503 and 500 that say nothing was changed.
    static Response failureResponse(std::exception_ptr failure);
    // Players by id as store_.players gives them, the recently read ones from memory.
    std::vector<store::PlayerRecord> recentPlayers(const std::vector<std::string>& ids);
    // Stores a group of score reports in one transaction, then puts them in the index in the order they
    // came and answers each.
    void commitReports(std::vector<PendingReport>& batch);

    Response root(Ctx&);
    Response health(Ctx&);
    Response wallSettings(Ctx&);
    Response createAccount(Ctx&);
    Response login(Ctx&);
    Response logout(Ctx&);
    Response me(Ctx&);
    Response rename(Ctx&);
    Response playersByIds(Ctx&);
    Response playersNamed(Ctx&, const std::string& name);
    Response player(Ctx&);
    Response photo(Ctx&);
    Response friends(Ctx&);
    Response sendFriendRequest(Ctx&);
    Response listFriendRequests(Ctx&);
    Response acceptFriendRequest(Ctx&);
    Response declineFriendRequest(Ctx&);
    void reportScore(Ctx&, Done done);
    Response loadScores(Ctx&);
    Response localScore(Ctx&);
    Response loadAchievements(Ctx&);
    Response reportAchievements(Ctx&);
    Response resetAchievements(Ctx&);
    Response findMatch(Ctx&);
    Response listMatches(Ctx&);
    Response getMatch(Ctx&);
    Response endTurn(Ctx&);
    Response setMatchMessage(Ctx&);
    Response endMatch(Ctx&);
    Response removeMatch(Ctx&);
    Response rematch(Ctx&);
    void addMatchRoutes();
    Response findLiveMatch(Ctx&);
    Response getLiveMatch(Ctx&);
    Response acceptLiveMatch(Ctx&);
    Response leaveLiveMatch(Ctx&);
    void addLiveRoutes();
    Response storeProducts(Ctx&);
    Response openPayment(Ctx&);
    Response approvePayment(Ctx&);
    Response cancelPayment(Ctx&);
    Response answerPayment(Ctx&, logic::shop::Answer answer);
    Response listTransactions(Ctx&);
    Response finishTransaction(Ctx&);
    Response restorePurchases(Ctx&);
    Response sandbox(Ctx&);
    Response setSandbox(Ctx&);
    // Fails the caller's payments whose sheet was left, so that they are handed over and finished too.
    void failLeftPayments(const std::string& playerId);
    void addStoreRoutes();
    Response nextAd(Ctx&);
    Response adCreative(Ctx&);
    Response recordImpression(Ctx&);
    Response claimReward(Ctx&);
    void addAdRoutes();
    Response loadProgress(Ctx&);
    Response saveProgress(Ctx&);
    Response progressVersions(Ctx&);
    void addProgressRoutes();
    // Tells both players that a removed live match has ended, except the one who ended it.
    void tellLiveEnded(const logic::live::Match& m, const std::string& by, const std::string& reason);
    // Applies a move to a stored match and wakes the players it tells; the answer is the match or the error.
    Response moveMatch(Ctx& c, const std::function<logic::match::Result(const logic::match::Match&)>& rule,
                       unsigned okStatus = 200);
    Response createMatch(Ctx& c, const logic::match::Result& created);

    Response answerFriendRequest(Ctx&, bool accept);
    void eventsAdded(const std::string& playerId);
    bool tellLiveListener(const std::string& playerId, const std::string& matchId, const std::string& text);
    void relayFromOtherInstance(const std::string& payload);
    void refreshScore(const std::string& playerId);
    // A new token for the player, and the answer that hands it over.
    std::pair<store::TokenRecord, Response> newToken(const store::PlayerRecord& p, unsigned status);
    Response issueToken(const store::PlayerRecord& p, unsigned status);
    std::string hashPassword(const std::string& password) const;

    store::Store& store_;
    ApiConfig config_;
    ClockMs clock_;
    std::mutex listenerMutex_;
    EventListener* listener_ = nullptr;
    std::vector<Route> routes_;
    logic::FailureLimiter accountFailures_;
    logic::FailureLimiter addressFailures_;
    logic::RequestLimiter requests_;
    logic::RequestLimiter signups_;
    logic::RequestLimiter matchCreations_{kMatchesPerSecond, kMatchBurst};
    logic::RequestLimiter liveCreations_{kMatchesPerSecond, kMatchBurst};
    std::string dummyHash_; // verified against when a name is unknown, so both cases cost the same

    mutable std::shared_mutex indexMutex_;
    logic::RankIndex index_;
    std::mutex reportMutex_; // one score change at a time: storage first, then the index
    std::int64_t lastReachedAt_ = 0;

    CommerceMetrics commerce_;
    LimitMetrics limits_;

    // Tokens and names read from storage a moment ago: every request checks a token, and the leaderboard's
    // answers name players. See RecentCache for how they stay true.
    static constexpr std::int64_t kRecentMs = 30'000;
    static constexpr std::size_t kRecentEntries = 200'000;
    RecentCache<std::string> recentTokens_{kRecentMs, kRecentEntries};
    RecentCache<store::PlayerRecord> recentPlayers_{kRecentMs, kRecentEntries};
    // Score reports are committed in groups; before the watch, so that it ends after it.
    static constexpr std::size_t kMaxReportBatch = 512;
    std::unique_ptr<GroupCommit<PendingReport>> reports_;

    std::unique_ptr<store::Watch> watch_; // last, so that it ends first
};

} // namespace tarvolin::net
