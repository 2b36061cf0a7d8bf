// The storage interface of the service: every operation is one transaction.
#pragma once

#include "logic/ad_rules.h"
#include "logic/live_rules.h"
#include "logic/match_rules.h"
#include "logic/store_rules.h"
#include "store/progress_rows.h"
#include "store/sql.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarvolin::store {

struct PlayerRecord {
    std::string id;
    std::string displayName;
    std::int64_t createdAt = 0;
};

struct Credentials {
    PlayerRecord player;
    std::string nameKey;
    std::string passwordHash;
};

// A bearer token as stored: the SHA-256 digest of the token, and its times.
struct TokenRecord {
    std::string hash;
    std::int64_t createdAt = 0;
    std::int64_t expiresAt = 0;
};

struct FriendRequest {
    std::string id;
    std::string fromId;
    std::string toId;
    std::string message;
    std::string status; // "pending", "accepted", "declined"
    std::int64_t createdAt = 0;
    std::optional<std::int64_t> answeredAt;
};

struct ScoreRecord {
    std::string playerId;
    std::int64_t value = 0;
    std::int64_t context = 0;
    std::int64_t reachedAt = 0; // microseconds; the moment this value was first reached
    std::int64_t updatedAt = 0; // milliseconds; the latest report
};

struct Achievement {
    std::string identifier;
    double percentComplete = 0;  // 0 to 100
    std::int64_t reportedAt = 0; // milliseconds; the latest report
};

struct Event {
    std::int64_t seq = 0;
    std::string kind;
    std::string payload; // a JSON object
    std::int64_t createdAt = 0;
};

// An event to store for one player in the same transaction as the change that causes it.
struct NewEvent {
    std::string playerId;
    std::string kind;
    std::string payload;
};

// What another instance on the same database has changed: events stored for a player, a player's score, or
// a live message to relay (the payload is the message).
// What another instance changed: a player's events, score or live match; a token removed (the payload is its
// hash); a player's name (the payload is the player's id).
enum class Change { Events, Score, Live, Session, Player };
using ChangeHandler = std::function<void(Change, const std::string& payload)>;

enum class FriendRequestOutcome {
    Sent,
    NoSuchPlayer,
    AlreadyFriends,
    AlreadyRequested,
    ReverseRequestPending
};
enum class AnswerOutcome { Done, NotFound, NotPending };

using logic::match::Match;
using logic::match::Refusal;
// A match after a move, with the events the move sends, stored in the same transaction.
struct MatchChange {
    Match match;
    std::vector<NewEvent> events;
};
// A move on the stored match: the change to store, or the refusal that stores nothing.
using MatchMove = std::function<std::variant<MatchChange, Refusal>(const Match&)>;
struct MatchNotFound {};
using MatchMoveResult = std::variant<Match, Refusal, MatchNotFound>;
// A new match the caller's own check turned away.
struct MatchNotAdmitted {};
using MatchInsertResult = std::variant<Match, logic::match::ExchangeRefusal, MatchNotAdmitted>;

using LiveMatch = logic::live::Match;
using LiveMove = std::function<logic::live::Result(const LiveMatch&)>;
using LiveMoveResult = std::variant<LiveMatch, logic::live::Refusal, MatchNotFound>;

namespace shop = logic::shop;
// A payment opened, or why not.
enum class PaymentRefusal { ProductNotFound, TooManyPayments };
using PaymentResult = std::variant<shop::Transaction, PaymentRefusal>;
// A move on a stored transaction; it is given the owner's sandbox switch.
using TransactionMove = std::function<shop::Result(const shop::Transaction&, shop::Outcome sandbox)>;
// The transaction after a move, and whether the move changed it.
struct TransactionChange {
    shop::Transaction transaction;
    bool changed = false;
};
using TransactionResult = std::variant<TransactionChange, shop::Refusal>;
struct Restoration {
    std::vector<shop::Transaction> transactions;
    std::size_t added = 0;
};

using ImpressionResult = std::variant<logic::ads::Impression, logic::ads::Refusal>;

// A save of progress based on an older version than the newest: the newest, document and all.
struct ProgressConflict {
    ProgressVersion newest;
};
// A save whose gold rose more than the game pays: the gold it could have had at most.
struct GoldNotEarned {
    std::int64_t allowed = 0;
};
using ProgressSaveResult = std::variant<ProgressVersion, ProgressConflict, GoldNotEarned>;

class Store {
public:
    virtual ~Store() = default;

    // Applies the migrations that the database lacks; returns the schema version.
    virtual int migrate() = 0;
    virtual void ping() = 0;

    // Returns false when the name key is taken. A first token is stored in the same transaction, so that a
    // sign-up is stored whole or not at all.
    virtual bool createPlayer(const Credentials& c,
                              const std::optional<TokenRecord>& token = std::nullopt) = 0;
    virtual std::optional<Credentials> credentialsByNameKey(const std::string& nameKey) = 0;
    // The player of the key first, then the players whose older names came to share it (see rekeyNames).
    virtual std::vector<Credentials> credentialsSharingKey(const std::string& nameKey) = 0;
    // Gives every player the key keyOf(display name), in one transaction; returns how many keys changed.
    // Players whose names come to share a key keep their names: the one that already has the key, or else
    // the oldest, gets it; each other gets the key followed by kSharedKeyMark and its identifier, which no
    // name can give, so that no new name takes the key while it is held.
    virtual std::size_t rekeyNames(const std::function<std::string(const std::string&)>& keyOf) = 0;
    static constexpr char kSharedKeyMark = '\x1f';
    // Returns false when the name key belongs to another player.
    virtual bool renamePlayer(const std::string& id, const std::string& displayName,
                              const std::string& nameKey) = 0;
    // Players in the order of ids; unknown ids are left out.
    virtual std::vector<PlayerRecord> players(const std::vector<std::string>& ids) = 0;
    // Players whose name key starts with keyPrefix, in the order of their keys, at most `limit`.
    virtual std::vector<PlayerRecord> playersNamed(const std::string& keyPrefix, std::size_t limit) = 0;
    // Imports players and their scores in one transaction (moving a leaderboard over, benchmarks).
    virtual void importPlayers(const std::vector<Credentials>& players,
                               const std::vector<ScoreRecord>& scores) = 0;

    virtual void addToken(const std::string& tokenHash, const std::string& playerId, std::int64_t now,
                          std::int64_t expiresAt) = 0;
    // The player of a token that has not expired.
    virtual std::optional<std::string> tokenPlayer(const std::string& tokenHash, std::int64_t now) = 0;
    virtual void removeToken(const std::string& tokenHash) = 0;

    // Stores the request and its event for the receiver.
    virtual FriendRequestOutcome sendFriendRequest(const FriendRequest& r, const NewEvent& event) = 0;
    // Requests of a player that are still pending, oldest first.
    virtual std::vector<FriendRequest> incomingRequests(const std::string& playerId) = 0;
    virtual std::vector<FriendRequest> outgoingRequests(const std::string& playerId) = 0;
    virtual std::optional<FriendRequest> friendRequest(const std::string& id) = 0;
    // Accepts or declines a pending request sent to playerId; on acceptance both become friends and the
    // sender gets the event.
    virtual AnswerOutcome answerFriendRequest(const std::string& requestId, const std::string& playerId,
                                              bool accept, std::int64_t now,
                                              const std::optional<NewEvent>& event) = 0;
    virtual std::vector<std::string> friendIds(const std::string& playerId) = 0;

    virtual void putScore(const ScoreRecord& s) = 0;
    // Stores the scores in one transaction, in order (a later one of the same player stands).
    virtual void putScores(const std::vector<ScoreRecord>& scores) = 0;
    virtual std::optional<ScoreRecord> score(const std::string& playerId) = 0;
    virtual std::vector<ScoreRecord> allScores() = 0;

    // A player's achievements, by identifier in byte order.
    virtual std::vector<Achievement> achievements(const std::string& playerId) = 0;
    // Stores the reports of one player in one transaction. Each identifier keeps the higher of its stored
    // and its reported percentage and takes the report's time. Returns the stored state of each reported
    // identifier once, in the order of its first report.
    virtual std::vector<Achievement> reportAchievements(const std::string& playerId,
                                                        const std::vector<Achievement>& reports) = 0;
    // Removes all of a player's achievements.
    virtual void resetAchievements(const std::string& playerId) = 0;

    // Returns the new event's sequence number.
    virtual std::int64_t appendEvent(const NewEvent& e, std::int64_t now) = 0;
    // Undelivered events with a sequence number above afterSeq, in order.
    virtual std::vector<Event> pendingEvents(const std::string& playerId, std::int64_t afterSeq,
                                             std::size_t limit) = 0;
    // Marks every event up to seq as delivered and drops it.
    virtual void ackEvents(const std::string& playerId, std::int64_t seq) = 0;

    // Turn-based matches. Each change reads the match, moves it and writes it in one transaction, the match's
    // row locked against every other instance.
    // Inserts a new match and its events. An exchange is first weighed against its creator's exchanges
    // (logic::match::checkExchange) with his player row locked, so that two of his requests cannot both pass;
    // then `admit`, when given, has the last word. A refusal stores nothing.
    virtual MatchInsertResult insertMatch(const MatchChange& change, const std::function<bool()>& admit) = 0;
    MatchInsertResult insertMatch(const MatchChange& change) { return insertMatch(change, nullptr); }
    virtual std::optional<Match> match(const std::string& id) = 0;
    // The matches in a player's list, newest first.
    virtual std::vector<Match> matchesOf(const std::string& playerId) = 0;
    virtual MatchMoveResult changeMatch(const std::string& id, const MatchMove& move) = 0;
    // Seats the player in the oldest match whose second seat waits, not his own: move makes the change.
    // Nothing when no match waits (the caller then opens one).
    virtual std::optional<MatchMoveResult> joinWaitingMatch(const std::string& playerId,
                                                            const MatchMove& move) = 0;
    // The matches whose turn has run out by `now`, oldest deadline first.
    virtual std::vector<std::string> dueMatches(std::int64_t now, std::size_t limit) = 0;
    // How many matches in play a player has a seat in.
    virtual std::size_t openMatchCount(const std::string& playerId) = 0;
    // Whether the two players have ended a match together.
    virtual bool haveEndedMatchTogether(const std::string& a, const std::string& b) = 0;

    // Live matches, kept only while they last.
    virtual void insertLiveMatch(const LiveMatch& m) = 0;
    virtual std::optional<LiveMatch> liveMatch(const std::string& id) = 0;
    // Seats the player in the oldest automatic match that has searched since `since`, not his own; nothing
    // when none waits.
    virtual std::optional<LiveMatch> joinWaitingLiveMatch(const std::string& playerId, std::int64_t since,
                                                          std::int64_t now) = 0;
    // The player's own automatic match still searching since `since`.
    virtual std::optional<LiveMatch> ownWaitingLiveMatch(const std::string& playerId, std::int64_t since) = 0;
    virtual LiveMoveResult changeLiveMatch(const std::string& id, const LiveMove& move) = 0;
    // Removes the match when `whether` holds for it; returns what was removed, so that only one caller tells
    // the players.
    virtual std::optional<LiveMatch>
    removeLiveMatch(const std::string& id, const std::function<bool(const LiveMatch&)>& whether) = 0;
    virtual std::vector<std::string> staleLiveMatches(std::int64_t now, std::size_t limit) = 0;
    virtual std::size_t liveMatchCount(const std::string& playerId) = 0;
    // Hands a live message to every instance on this database; nothing on a database of one instance.
    virtual void publishLive(const std::string& payload) = 0;

    // The payment sandbox. Products of the catalogue among ids, in the order of ids; unknown ids are left
    // out.
    virtual std::vector<shop::Product> products(const std::vector<std::string>& ids) = 0;
    // Stores a new payment on the sheet, numbered after the player's latest transaction, unless its product
    // is unknown or the player has maxPurchasing on the sheet already. His store row is locked meanwhile.
    virtual PaymentResult openPayment(const shop::Transaction& t, std::size_t maxPurchasing) = 0;
    // Reads the transaction with its row locked, moves it and writes the move only while the transaction is
    // still as it was read: of two moves at once, the second sees the first's result.
    virtual TransactionResult changeTransaction(const std::string& id, const TransactionMove& move) = 0;
    // Fails the player's payments opened before `openedBefore` and still on the sheet; returns how many.
    virtual std::size_t failLeftPayments(const std::string& playerId, std::int64_t openedBefore,
                                         std::int64_t now, const shop::Failure& failure) = 0;
    // The player's unfinished transactions, oldest first.
    virtual std::vector<shop::Transaction> unfinishedTransactions(const std::string& playerId) = 0;
    // While restored transactions of the player are unfinished, those; otherwise a new restored transaction
    // for each of his finished purchases, oldest first. His store row is locked meanwhile.
    virtual Restoration restorePurchases(const std::string& playerId, std::int64_t now,
                                         const std::function<std::string()>& newId) = 0;
    virtual shop::Outcome sandboxOutcome(const std::string& playerId) = 0;
    virtual void setSandboxOutcome(const std::string& playerId, shop::Outcome outcome) = 0;

    // House ads. The next active ad of the format in the player's rotation, noted as served to him, with a
    // new impression token for it; nothing when no ad of the format is active.
    virtual std::optional<logic::ads::Ad> serveAd(const std::string& playerId, logic::ads::Format format,
                                                  const std::string& token, std::int64_t now) = 0;
    // The SVG of a picture ad, active or not.
    virtual std::optional<std::string> adPicture(const std::string& adId) = 0;
    // Spends the player's impression token on a new impression.
    virtual ImpressionResult recordImpression(const std::string& playerId, const std::string& token,
                                              const std::string& impressionId, logic::ads::Tracking tracking,
                                              std::int64_t now) = 0;
    // Grants the reward of the player's rewarded impression once, when logic::ads::rewardRefusal allows it.
    virtual ImpressionResult claimReward(const std::string& playerId, const std::string& impressionId,
                                         std::int64_t now) = 0;

    // Saved progress. The player's newest version, document and all.
    virtual std::optional<ProgressVersion> progress(const std::string& playerId) = 0;
    // The kept versions, newest first, without their documents.
    virtual std::vector<ProgressVersion> progressVersions(const std::string& playerId) = 0;
    // Stores the next version of the document (read into `summary`) when it is based on the newest version
    // (0: on none) and its gold rises no more than logic::progress::goldEarned allows since the newest, with
    // what the player earned at the service since then; keeps the newest logic::progress::kKeptVersions. His
    // player row is locked meanwhile.
    virtual ProgressSaveResult saveProgress(const std::string& playerId, std::int64_t baseVersion,
                                            const logic::progress::Summary& summary,
                                            const std::string& document, std::int64_t now) = 0;

    // Calls fn, from a thread of its own, whenever any instance on this database has stored events for a
    // player or changed a score, until the watch is destroyed. nullptr for a database of one instance.
    virtual std::unique_ptr<Watch> watchChanges(ChangeHandler fn) = 0;
};

// The store over a SQL connection (SQLite or PostgreSQL); the schema comes from the numbered migrations.
std::unique_ptr<Store> makeSqlStore(std::unique_ptr<Connection> conn);

struct Migration {
    int version;
    const char* name;
    const char* sql;
};
const std::vector<Migration>& migrations();

} // namespace tarvolin::store
