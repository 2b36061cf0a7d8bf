#include "store/store.h"

#include "store/ad_rows.h"
#include "store/live_rows.h"
#include "store/match_rows.h"
#include "store/progress_rows.h"
#include "store/store_rows.h"

#include <algorithm>
#include <unordered_map>

namespace tarvolin::store {
namespace {

// A LIKE pattern (ESCAPE '!') for the values that start with prefix as it stands.
std::string likePrefix(std::string_view prefix) {
    std::string pattern;
    for (char ch : prefix) {
        if (ch == '%' || ch == '_' || ch == '!') {
            pattern += '!';
        }
        pattern += ch;
    }
    pattern += '%';
    return pattern;
}

PlayerRecord playerFrom(const Row& r, std::size_t at = 0) {
    return PlayerRecord{r.text(at), r.text(at + 1), r.integer(at + 2)};
}

FriendRequest requestFrom(const Row& r) {
    return FriendRequest{r.text(0), r.text(1),    r.text(2),           r.text(3),
                         r.text(4), r.integer(5), r.optionalInteger(6)};
}

ScoreRecord scoreFrom(const Row& r) {
    return ScoreRecord{r.text(0), r.integer(1), r.integer(2), r.integer(3), r.integer(4)};
}

Achievement achievementFrom(const Row& r) {
    return Achievement{r.text(0), r.real(1), r.integer(2)};
}

constexpr const char* kEventsChannel = "tarvolin_events";
constexpr const char* kScoresChannel = "tarvolin_scores";
constexpr const char* kLiveChannel = "tarvolin_live";
constexpr const char* kSessionsChannel = "tarvolin_sessions";
constexpr const char* kPlayersChannel = "tarvolin_players";

constexpr const char* kRequestColumns = "id, from_id, to_id, message, status, created_at, answered_at";

std::int64_t insertEvent(Tx& tx, const NewEvent& e, std::int64_t now) {
    Rows seq = tx.exec("UPDATE players SET event_seq = event_seq + 1 WHERE id = $1 RETURNING event_seq",
                       {e.playerId});
    if (seq.empty()) {
        throw StoreError("event for unknown player " + e.playerId);
    }
    std::int64_t n = seq[0].integer(0);
    tx.exec("INSERT INTO events (player_id, seq, kind, payload, created_at) VALUES ($1, $2, $3, $4, $5)",
            {e.playerId, n, e.kind, e.payload, now});
    tx.notify(kEventsChannel, e.playerId);
    return n;
}

// Inserts rows in batches of multi-row VALUES lists.
template <typename T, typename Fn>
void insertBatched(Tx& tx, const std::string& head, std::size_t width, const std::vector<T>& items,
                   Fn&& values) {
    constexpr std::size_t kBatch = 200;
    for (std::size_t start = 0; start < items.size(); start += kBatch) {
        std::size_t end = std::min(items.size(), start + kBatch);
        std::string sql = head + " VALUES ";
        Params params;
        params.reserve((end - start) * width);
        for (std::size_t i = start; i < end; ++i) {
            sql += i == start ? "(" : ", (";
            for (std::size_t c = 0; c < width; ++c) {
                sql += (c ? ", $" : "$") + std::to_string(params.size() + c + 1);
            }
            sql += ")";
            values(items[i], params);
        }
        tx.exec(sql, params);
    }
}

class SqlStore : public Store {
public:
    explicit SqlStore(std::unique_ptr<Connection> c) : conn_(std::move(c)) {}

    int migrate() override {
        int version = 0;
        conn_->transact([&](Tx& tx) {
            tx.exec("CREATE TABLE IF NOT EXISTS schema_migrations (version INTEGER PRIMARY KEY, name TEXT "
                    "NOT NULL)");
        });
        for (const Migration& m : migrations()) {
            conn_->transact([&](Tx& tx) {
                if (!tx.exec("SELECT version FROM schema_migrations WHERE version = $1",
                             {std::int64_t{m.version}})
                         .empty()) {
                    return;
                }
                tx.script(m.sql);
                tx.exec("INSERT INTO schema_migrations (version, name) VALUES ($1, $2)",
                        {std::int64_t{m.version}, std::string(m.name)});
            });
            version = m.version;
        }
        return version;
    }

    void ping() override {
        conn_->read([](Tx& tx) { tx.exec("SELECT 1"); });
    }

    bool createPlayer(const Credentials& c, const std::optional<TokenRecord>& token) override {
        try {
            conn_->transact([&](Tx& tx) {
                tx.exec("INSERT INTO players (id, display_name, name_key, password_hash, created_at) "
                        "VALUES ($1, $2, $3, $4, $5)",
                        {c.player.id, c.player.displayName, c.nameKey, c.passwordHash, c.player.createdAt});
                if (token) {
                    tx.exec(
                        "INSERT INTO tokens (token_hash, player_id, created_at, expires_at) VALUES ($1, $2, "
                        "$3, $4)",
                        {token->hash, c.player.id, token->createdAt, token->expiresAt});
                }
            });
            return true;
        } catch (const ConflictError&) {
            return false;
        }
    }

    std::optional<Credentials> credentialsByNameKey(const std::string& nameKey) override {
        std::optional<Credentials> out;
        conn_->read([&](Tx& tx) {
            Rows r = tx.exec("SELECT id, display_name, created_at, name_key, password_hash FROM players "
                             "WHERE name_key = $1",
                             {nameKey});
            if (!r.empty()) {
                out = Credentials{playerFrom(r[0]), r[0].text(3), r[0].text(4)};
            }
        });
        return out;
    }

    std::vector<Credentials> credentialsSharingKey(const std::string& nameKey) override {
        std::vector<Credentials> out;
        conn_->read([&](Tx& tx) {
            // Shared keys are the key, the mark and an identifier; LIKE finds them, and the exact test below
            // keeps only those.
            const std::string shared = nameKey + Store::kSharedKeyMark;
            for (const Row& r :
                 tx.exec("SELECT id, display_name, created_at, name_key, password_hash FROM players "
                         "WHERE name_key = $1 OR name_key LIKE $2 ESCAPE '!' ORDER BY created_at, id",
                         {nameKey, likePrefix(shared)})) {
                Credentials c{playerFrom(r), r.text(3), r.text(4)};
                if (c.nameKey == nameKey) {
                    out.insert(out.begin(), std::move(c));
                } else if (c.nameKey.starts_with(shared)) {
                    out.push_back(std::move(c));
                }
            }
        });
        return out;
    }

    std::size_t rekeyNames(const std::function<std::string(const std::string&)>& keyOf) override {
        std::size_t changed = 0;
        conn_->transact([&](Tx& tx) {
            struct Name {
                std::string id;
                std::string key;
                std::int64_t createdAt;
                std::string wanted;
            };
            std::vector<Name> names;
            for (const Row& r : tx.exec("SELECT id, display_name, name_key, created_at FROM players")) {
                names.push_back(Name{r.text(0), r.text(2), r.integer(3), keyOf(r.text(1))});
            }
            // Who holds each key: the player who has it already, else the oldest.
            std::unordered_map<std::string, const Name*> holder;
            for (const Name& n : names) {
                auto [it, inserted] = holder.try_emplace(n.wanted, &n);
                const Name* h = it->second;
                if (!inserted && h->key != h->wanted &&
                    (n.key == n.wanted || n.createdAt < h->createdAt ||
                     (n.createdAt == h->createdAt && n.id < h->id))) {
                    it->second = &n;
                }
            }
            std::vector<std::pair<std::string, std::string>> moves;
            for (const Name& n : names) {
                std::string key =
                    holder.at(n.wanted) == &n ? n.wanted : n.wanted + Store::kSharedKeyMark + n.id;
                if (key != n.key) {
                    moves.emplace_back(n.id, std::move(key));
                }
            }
            // Out of the way first, so that no key is held twice between two updates.
            for (const auto& [id, key] : moves) {
                tx.exec("UPDATE players SET name_key = $2 WHERE id = $1", {id, std::string(1, '\x1e') + id});
            }
            for (const auto& [id, key] : moves) {
                tx.exec("UPDATE players SET name_key = $2 WHERE id = $1", {id, key});
            }
            changed = moves.size();
        });
        return changed;
    }

    bool renamePlayer(const std::string& id, const std::string& displayName,
                      const std::string& nameKey) override {
        try {
            conn_->transact([&](Tx& tx) {
                tx.exec("UPDATE players SET display_name = $2, name_key = $3 WHERE id = $1",
                        {id, displayName, nameKey});
                tx.notify(kPlayersChannel, id);
            });
            return true;
        } catch (const ConflictError&) {
            return false;
        }
    }

    std::vector<PlayerRecord> playersNamed(const std::string& keyPrefix, std::size_t limit) override {
        const std::string pattern = likePrefix(keyPrefix);
        std::vector<PlayerRecord> out;
        conn_->read([&](Tx& tx) {
            for (const Row& r : tx.exec("SELECT id, display_name, created_at FROM players "
                                        "WHERE name_key LIKE $1 ESCAPE '!' ORDER BY name_key LIMIT $2",
                                        {pattern, std::int64_t(limit)})) {
                out.push_back(playerFrom(r));
            }
        });
        return out;
    }

    std::vector<PlayerRecord> players(const std::vector<std::string>& ids) override {
        std::vector<PlayerRecord> out;
        if (ids.empty()) {
            return out;
        }
        conn_->read([&](Tx& tx) {
            std::unordered_map<std::string, PlayerRecord> found;
            constexpr std::size_t kBatch = 500; // well below the parameter limits of both databases
            for (std::size_t start = 0; start < ids.size(); start += kBatch) {
                std::size_t end = std::min(ids.size(), start + kBatch);
                std::string sql = "SELECT id, display_name, created_at FROM players WHERE id IN (";
                Params params;
                for (std::size_t i = start; i < end; ++i) {
                    sql += (i > start ? ", $" : "$") + std::to_string(i - start + 1);
                    params.emplace_back(ids[i]);
                }
                sql += ")";
                for (const Row& r : tx.exec(sql, params)) {
                    PlayerRecord p = playerFrom(r);
                    found.emplace(p.id, std::move(p));
                }
            }
            for (const auto& id : ids) {
                if (auto it = found.find(id); it != found.end()) {
                    out.push_back(it->second);
                }
            }
        });
        return out;
    }

    void importPlayers(const std::vector<Credentials>& players,
                       const std::vector<ScoreRecord>& scores) override {
        conn_->transact([&](Tx& tx) {
            insertBatched(tx, "INSERT INTO players (id, display_name, name_key, password_hash, created_at)",
                          5, players, [](const Credentials& c, Params& p) {
                              p.emplace_back(c.player.id);
                              p.emplace_back(c.player.displayName);
                              p.emplace_back(c.nameKey);
                              p.emplace_back(c.passwordHash);
                              p.emplace_back(c.player.createdAt);
                          });
            insertBatched(tx, "INSERT INTO scores (player_id, value, context, reached_at, updated_at)", 5,
                          scores, [](const ScoreRecord& s, Params& p) {
                              p.emplace_back(s.playerId);
                              p.emplace_back(s.value);
                              p.emplace_back(s.context);
                              p.emplace_back(s.reachedAt);
                              p.emplace_back(s.updatedAt);
                          });
        });
    }

    void addToken(const std::string& tokenHash, const std::string& playerId, std::int64_t now,
                  std::int64_t expiresAt) override {
        conn_->transact([&](Tx& tx) {
            tx.exec("DELETE FROM tokens WHERE player_id = $1 AND expires_at <= $2", {playerId, now});
            tx.exec(
                "INSERT INTO tokens (token_hash, player_id, created_at, expires_at) VALUES ($1, $2, $3, $4)",
                {tokenHash, playerId, now, expiresAt});
        });
    }

    std::optional<std::string> tokenPlayer(const std::string& tokenHash, std::int64_t now) override {
        std::optional<std::string> out;
        conn_->read([&](Tx& tx) {
            Rows r = tx.exec("SELECT player_id FROM tokens WHERE token_hash = $1 AND expires_at > $2",
                             {tokenHash, now});
            if (!r.empty()) {
                out = r[0].text(0);
            }
        });
        return out;
    }

    void removeToken(const std::string& tokenHash) override {
        conn_->transact([&](Tx& tx) {
            tx.exec("DELETE FROM tokens WHERE token_hash = $1", {tokenHash});
            tx.notify(kSessionsChannel, tokenHash);
        });
    }

    FriendRequestOutcome sendFriendRequest(const FriendRequest& r, const NewEvent& event) override {
        FriendRequestOutcome out = FriendRequestOutcome::Sent;
        conn_->transact([&](Tx& tx) {
            if (tx.exec("SELECT id FROM players WHERE id = $1", {r.toId}).empty()) {
                out = FriendRequestOutcome::NoSuchPlayer;
                return;
            }
            if (!tx.exec("SELECT 1 FROM friendships WHERE player_id = $1 AND friend_id = $2",
                         {r.fromId, r.toId})
                     .empty()) {
                out = FriendRequestOutcome::AlreadyFriends;
                return;
            }
            const char* pending =
                "SELECT id FROM friend_requests WHERE from_id = $1 AND to_id = $2 AND status = "
                "'pending'";
            if (!tx.exec(pending, {r.fromId, r.toId}).empty()) {
                out = FriendRequestOutcome::AlreadyRequested;
                return;
            }
            if (!tx.exec(pending, {r.toId, r.fromId}).empty()) {
                out = FriendRequestOutcome::ReverseRequestPending;
                return;
            }
            tx.exec("INSERT INTO friend_requests (id, from_id, to_id, message, status, created_at) "
                    "VALUES ($1, $2, $3, $4, 'pending', $5)",
                    {r.id, r.fromId, r.toId, r.message, r.createdAt});
            insertEvent(tx, NewEvent{r.toId, event.kind, event.payload}, r.createdAt);
        });
        return out;
    }

    std::vector<FriendRequest> incomingRequests(const std::string& playerId) override {
        return requests("to_id", playerId);
    }

    std::vector<FriendRequest> outgoingRequests(const std::string& playerId) override {
        return requests("from_id", playerId);
    }

    std::optional<FriendRequest> friendRequest(const std::string& id) override {
        std::optional<FriendRequest> out;
        conn_->read([&](Tx& tx) {
            Rows r = tx.exec(std::string("SELECT ") + kRequestColumns + " FROM friend_requests WHERE id = $1",
                             {id});
            if (!r.empty()) {
                out = requestFrom(r[0]);
            }
        });
        return out;
    }

    AnswerOutcome answerFriendRequest(const std::string& requestId, const std::string& playerId, bool accept,
                                      std::int64_t now, const std::optional<NewEvent>& event) override {
        AnswerOutcome out = AnswerOutcome::Done;
        conn_->transact([&](Tx& tx) {
            Rows r = tx.exec(std::string("SELECT ") + kRequestColumns + " FROM friend_requests WHERE id = $1",
                             {requestId});
            if (r.empty() || r[0].text(2) != playerId) {
                out = AnswerOutcome::NotFound;
                return;
            }
            FriendRequest req = requestFrom(r[0]);
            if (req.status != "pending") {
                out = AnswerOutcome::NotPending;
                return;
            }
            tx.exec("UPDATE friend_requests SET status = $1, answered_at = $2 WHERE id = $3",
                    {std::string(accept ? "accepted" : "declined"), now, requestId});
            if (!accept) {
                return;
            }
            const char* befriend =
                "INSERT INTO friendships (player_id, friend_id, created_at) VALUES ($1, $2, $3) "
                "ON CONFLICT (player_id, friend_id) DO NOTHING";
            tx.exec(befriend, {req.fromId, req.toId, now});
            tx.exec(befriend, {req.toId, req.fromId, now});
            if (event) {
                insertEvent(tx, NewEvent{req.fromId, event->kind, event->payload}, now);
            }
        });
        return out;
    }

    std::vector<std::string> friendIds(const std::string& playerId) override {
        std::vector<std::string> out;
        conn_->read([&](Tx& tx) {
            for (const Row& r : tx.exec(
                     "SELECT friend_id FROM friendships WHERE player_id = $1 ORDER BY created_at, friend_id",
                     {playerId})) {
                out.push_back(r.text(0));
            }
        });
        return out;
    }

    void putScore(const ScoreRecord& s) override { putScores({s}); }

    void putScores(const std::vector<ScoreRecord>& scores) override {
        if (scores.empty()) {
            return;
        }
        conn_->transact([&](Tx& tx) {
            for (const ScoreRecord& s : scores) {
                tx.exec(
                    "INSERT INTO scores (player_id, value, context, reached_at, updated_at) VALUES ($1, $2, "
                    "$3, $4, $5) "
                    "ON CONFLICT (player_id) DO UPDATE SET value = excluded.value, context = "
                    "excluded.context, "
                    "reached_at = excluded.reached_at, updated_at = excluded.updated_at",
                    {s.playerId, s.value, s.context, s.reachedAt, s.updatedAt});
                tx.notify(kScoresChannel, s.playerId);
            }
        });
    }

    std::optional<ScoreRecord> score(const std::string& playerId) override {
        std::optional<ScoreRecord> out;
        conn_->read([&](Tx& tx) {
            Rows r = tx.exec(
                "SELECT player_id, value, context, reached_at, updated_at FROM scores WHERE player_id = $1",
                {playerId});
            if (!r.empty()) {
                out = scoreFrom(r[0]);
            }
        });
        return out;
    }

    std::vector<ScoreRecord> allScores() override {
        std::vector<ScoreRecord> out;
        conn_->read([&](Tx& tx) {
            Rows rows = tx.exec("SELECT player_id, value, context, reached_at, updated_at FROM scores");
            out.reserve(rows.size());
            for (const Row& r : rows) {
                out.push_back(scoreFrom(r));
            }
        });
        return out;
    }

    std::vector<Achievement> achievements(const std::string& playerId) override {
        std::vector<Achievement> out;
        conn_->read([&](Tx& tx) {
            for (const Row& r : tx.exec("SELECT identifier, percent_complete, reported_at FROM achievements "
                                        "WHERE player_id = $1",
                                        {playerId})) {
                out.push_back(achievementFrom(r));
            }
        });
        // Sorted here rather than by the database, whose collation may not be the byte order.
        std::sort(out.begin(), out.end(),
                  [](const Achievement& a, const Achievement& b) { return a.identifier < b.identifier; });
        return out;
    }

    std::vector<Achievement> reportAchievements(const std::string& playerId,
                                                const std::vector<Achievement>& reports) override {
        std::vector<Achievement> out;
        conn_->transact([&](Tx& tx) {
            std::unordered_map<std::string, std::size_t> at;
            for (const Achievement& a : reports) {
                Rows r =
                    tx.exec("INSERT INTO achievements (player_id, identifier, percent_complete, reported_at) "
                            "VALUES ($1, $2, $3, $4) "
                            "ON CONFLICT (player_id, identifier) DO UPDATE SET percent_complete = CASE WHEN "
                            "excluded.percent_complete > achievements.percent_complete THEN "
                            "excluded.percent_complete "
                            "ELSE achievements.percent_complete END, reported_at = excluded.reported_at "
                            "RETURNING identifier, percent_complete, reported_at",
                            {playerId, a.identifier, a.percentComplete, a.reportedAt});
                if (r.empty()) {
                    throw StoreError("an achievement was not stored");
                }
                auto [it, fresh] = at.emplace(a.identifier, out.size());
                if (fresh) {
                    out.push_back(achievementFrom(r[0]));
                } else {
                    out[it->second] = achievementFrom(r[0]);
                }
            }
        });
        return out;
    }

    void resetAchievements(const std::string& playerId) override {
        conn_->transact(
            [&](Tx& tx) { tx.exec("DELETE FROM achievements WHERE player_id = $1", {playerId}); });
    }

    std::int64_t appendEvent(const NewEvent& e, std::int64_t now) override {
        std::int64_t seq = 0;
        conn_->transact([&](Tx& tx) { seq = insertEvent(tx, e, now); });
        return seq;
    }

    std::vector<Event> pendingEvents(const std::string& playerId, std::int64_t afterSeq,
                                     std::size_t limit) override {
        std::vector<Event> out;
        conn_->read([&](Tx& tx) {
            for (const Row& r :
                 tx.exec("SELECT seq, kind, payload, created_at FROM events WHERE player_id = $1 AND "
                         "seq > $2 ORDER BY seq LIMIT $3",
                         {playerId, afterSeq, static_cast<std::int64_t>(limit)})) {
                out.push_back(Event{r.integer(0), r.text(1), r.text(2), r.integer(3)});
            }
        });
        return out;
    }

    void ackEvents(const std::string& playerId, std::int64_t seq) override {
        conn_->transact([&](Tx& tx) {
            tx.exec("DELETE FROM events WHERE player_id = $1 AND seq <= $2", {playerId, seq});
            tx.exec("UPDATE players SET acked_seq = $2 WHERE id = $1 AND acked_seq < $2", {playerId, seq});
        });
    }

    using Store::insertMatch;
    MatchInsertResult insertMatch(const MatchChange& change, const std::function<bool()>& admit) override {
        MatchInsertResult out = change.match;
        conn_->transact([&](Tx& tx) {
            const Match& m = change.match;
            if (m.purpose == logic::match::Purpose::Exchange) {
                const std::string& creator = m.seats.at(0).playerId;
                // The creator's exchanges are counted by one transaction at a time (SQLite has one writer
                // anyway). NO KEY UPDATE, not UPDATE: the seats inserted below reference players rows, and
                // a stronger lock would make two players asking each other at once wait for one another.
                if (locks()) {
                    tx.exec("SELECT id FROM players WHERE id = $1 FOR NO KEY UPDATE", {creator});
                }
                const std::vector<std::int64_t> recent =
                    match_rows::exchangeTimes(tx, creator, m.createdAt - logic::match::kExchangeWindowMs);
                const std::size_t open = match_rows::openExchanges(tx, creator, m.seats.at(1).playerId);
                if (auto refusal = logic::match::checkExchange(recent, open, m.createdAt)) {
                    out = *refusal;
                    return;
                }
            }
            if (admit && !admit()) {
                out = MatchNotAdmitted{};
                return;
            }
            match_rows::insert(tx, m);
            for (const NewEvent& e : change.events) {
                insertEvent(tx, e, m.updatedAt);
            }
        });
        return out;
    }

    std::optional<Match> match(const std::string& id) override {
        std::optional<Match> out;
        conn_->read([&](Tx& tx) { out = match_rows::load(tx, id, false); });
        return out;
    }

    std::vector<Match> matchesOf(const std::string& playerId) override {
        std::vector<Match> out;
        conn_->read([&](Tx& tx) {
            for (const std::string& id : match_rows::listedIds(tx, playerId)) {
                if (auto m = match_rows::load(tx, id, false)) {
                    out.push_back(std::move(*m));
                }
            }
        });
        return out;
    }

    MatchMoveResult changeMatch(const std::string& id, const MatchMove& move) override {
        MatchMoveResult out = MatchNotFound{};
        conn_->transact([&](Tx& tx) { out = applyMove(tx, id, move); });
        return out;
    }

    std::optional<MatchMoveResult> joinWaitingMatch(const std::string& playerId,
                                                    const MatchMove& move) override {
        std::optional<MatchMoveResult> out;
        conn_->transact([&](Tx& tx) {
            // Rows that another instance is seating a player in are passed over, never waited for.
            for (const std::string& id : match_rows::waitingIds(tx, playerId, locks(), 1)) {
                out = applyMove(tx, id, move);
            }
        });
        return out;
    }

    std::vector<std::string> dueMatches(std::int64_t now, std::size_t limit) override {
        std::vector<std::string> out;
        conn_->read([&](Tx& tx) {
            for (const Row& r :
                 tx.exec("SELECT id FROM matches WHERE turn_deadline > 0 AND turn_deadline <= $1 "
                         "AND status <> $2 ORDER BY turn_deadline, id LIMIT $3",
                         {now, std::int64_t(logic::match::Status::Ended), std::int64_t(limit)})) {
                out.push_back(r.text(0));
            }
        });
        return out;
    }

    std::size_t openMatchCount(const std::string& playerId) override {
        std::size_t n = 0;
        conn_->read([&](Tx& tx) {
            n = static_cast<std::size_t>(
                tx.exec("SELECT COUNT(*) FROM matches m JOIN match_seats s ON s.match_id = m.id "
                        "WHERE s.player_id = $1 AND m.status <> $2",
                        {playerId, std::int64_t(logic::match::Status::Ended)})[0]
                    .integer(0));
        });
        return n;
    }

    bool haveEndedMatchTogether(const std::string& a, const std::string& b) override {
        bool found = false;
        conn_->read([&](Tx& tx) {
            found = !tx.exec("SELECT 1 FROM matches m JOIN match_seats x ON x.match_id = m.id "
                             "JOIN match_seats y ON y.match_id = m.id "
                             "WHERE m.status = $1 AND x.player_id = $2 AND y.player_id = $3 LIMIT 1",
                             {std::int64_t(logic::match::Status::Ended), a, b})
                         .empty();
        });
        return found;
    }

    void insertLiveMatch(const LiveMatch& m) override {
        conn_->transact([&](Tx& tx) { live_rows::insert(tx, m); });
    }

    std::optional<LiveMatch> liveMatch(const std::string& id) override {
        std::optional<LiveMatch> out;
        conn_->read([&](Tx& tx) { out = live_rows::load(tx, id, false); });
        return out;
    }

    std::optional<LiveMatch> joinWaitingLiveMatch(const std::string& playerId, std::int64_t since,
                                                  std::int64_t now) override {
        std::optional<LiveMatch> out;
        conn_->transact([&](Tx& tx) {
            // A match another instance is seating a player in is passed over, never waited for.
            if (auto id = live_rows::oldestWaiting(tx, playerId, since, locks())) {
                if (auto m = live_rows::load(tx, *id, false)) {
                    out = logic::live::takeWaitingSeat(*m, playerId, now);
                    live_rows::update(tx, *out);
                }
            }
        });
        return out;
    }

    std::optional<LiveMatch> ownWaitingLiveMatch(const std::string& playerId, std::int64_t since) override {
        std::optional<LiveMatch> out;
        conn_->read([&](Tx& tx) {
            if (auto id = live_rows::ownWaiting(tx, playerId, since)) {
                out = live_rows::load(tx, *id, false);
            }
        });
        return out;
    }

    LiveMoveResult changeLiveMatch(const std::string& id, const LiveMove& move) override {
        LiveMoveResult out = MatchNotFound{};
        conn_->transact([&](Tx& tx) {
            std::optional<LiveMatch> before = live_rows::load(tx, id, locks());
            if (!before) {
                out = MatchNotFound{};
                return;
            }
            logic::live::Result moved = move(*before);
            if (auto* refusal = std::get_if<logic::live::Refusal>(&moved)) {
                out = *refusal;
                return;
            }
            live_rows::update(tx, std::get<LiveMatch>(moved));
            out = std::get<LiveMatch>(moved);
        });
        return out;
    }

    std::optional<LiveMatch> removeLiveMatch(const std::string& id,
                                             const std::function<bool(const LiveMatch&)>& whether) override {
        std::optional<LiveMatch> out;
        conn_->transact([&](Tx& tx) {
            std::optional<LiveMatch> m = live_rows::load(tx, id, locks());
            if (m && whether(*m)) {
                live_rows::remove(tx, id);
                out = std::move(m);
            }
        });
        return out;
    }

    std::vector<std::string> staleLiveMatches(std::int64_t now, std::size_t limit) override {
        std::vector<std::string> out;
        conn_->read([&](Tx& tx) { out = live_rows::staleCandidates(tx, now, limit); });
        return out;
    }

    std::size_t liveMatchCount(const std::string& playerId) override {
        std::size_t n = 0;
        conn_->read([&](Tx& tx) { n = live_rows::countOf(tx, playerId); });
        return n;
    }

    void publishLive(const std::string& payload) override {
        if (locks()) {
            conn_->transact([&](Tx& tx) { tx.notify(kLiveChannel, payload); });
        }
    }

    std::vector<shop::Product> products(const std::vector<std::string>& ids) override {
        std::vector<shop::Product> out;
        conn_->read([&](Tx& tx) { out = store_rows::products(tx, ids); });
        return out;
    }

    PaymentResult openPayment(const shop::Transaction& t, std::size_t maxPurchasing) override {
        PaymentResult out = t;
        conn_->transact([&](Tx& tx) {
            if (!store_rows::productExists(tx, t.productId)) {
                out = PaymentRefusal::ProductNotFound;
                return;
            }
            const std::int64_t latest = store_rows::lockPlayer(tx, t.playerId);
            if (store_rows::purchasingCount(tx, t.playerId) >= maxPurchasing) {
                out = PaymentRefusal::TooManyPayments;
                return;
            }
            shop::Transaction opened = t;
            opened.seq = latest + 1;
            store_rows::insert(tx, opened);
            store_rows::setLatest(tx, t.playerId, opened.seq);
            out = opened;
        });
        return out;
    }

    TransactionResult changeTransaction(const std::string& id, const TransactionMove& move) override {
        TransactionResult out = shop::Refusal::NotFound;
        conn_->transact([&](Tx& tx) {
            // The row is locked where the database has row locks, and SQLite has one writer: the write's
            // guard holds anyway, and should it ever miss, the move is made again on what is stored.
            for (int attempt = 0; attempt < 3; ++attempt) {
                std::optional<shop::Transaction> before = store_rows::load(tx, id, locks());
                if (!before) {
                    out = shop::Refusal::NotFound;
                    return;
                }
                shop::Result moved = move(*before, store_rows::sandbox(tx, before->playerId));
                if (auto* refusal = std::get_if<shop::Refusal>(&moved)) {
                    out = *refusal;
                    return;
                }
                const shop::Transaction& after = std::get<shop::Transaction>(moved);
                if (after.state == before->state && after.finished == before->finished) {
                    out = TransactionChange{*before, false};
                    return;
                }
                if (store_rows::update(tx, after, *before)) {
                    out = TransactionChange{after, true};
                    return;
                }
            }
            throw StoreError("transaction " + id + " kept changing");
        });
        return out;
    }

    std::size_t failLeftPayments(const std::string& playerId, std::int64_t openedBefore, std::int64_t now,
                                 const shop::Failure& failure) override {
        std::size_t n = 0;
        conn_->transact(
            [&](Tx& tx) { n = store_rows::failOpenedBefore(tx, playerId, openedBefore, now, failure); });
        return n;
    }

    std::vector<shop::Transaction> unfinishedTransactions(const std::string& playerId) override {
        std::vector<shop::Transaction> out;
        conn_->read([&](Tx& tx) { out = store_rows::unfinished(tx, playerId); });
        return out;
    }

    Restoration restorePurchases(const std::string& playerId, std::int64_t now,
                                 const std::function<std::string()>& newId) override {
        Restoration out;
        conn_->transact([&](Tx& tx) {
            out = Restoration{};
            std::int64_t latest = store_rows::lockPlayer(tx, playerId);
            out.transactions = store_rows::unfinished(tx, playerId, shop::State::Restored);
            if (!out.transactions.empty()) {
                return;
            }
            for (const shop::Transaction& purchase : store_rows::finishedPurchases(tx, playerId)) {
                shop::Transaction r = shop::restoration(purchase, newId(), now);
                r.seq = ++latest;
                store_rows::insert(tx, r);
                out.transactions.push_back(std::move(r));
            }
            out.added = out.transactions.size();
            store_rows::setLatest(tx, playerId, latest);
        });
        return out;
    }

    shop::Outcome sandboxOutcome(const std::string& playerId) override {
        shop::Outcome out = shop::Outcome::Purchase;
        conn_->read([&](Tx& tx) { out = store_rows::sandbox(tx, playerId); });
        return out;
    }

    void setSandboxOutcome(const std::string& playerId, shop::Outcome outcome) override {
        conn_->transact([&](Tx& tx) { store_rows::setSandbox(tx, playerId, outcome); });
    }

    std::optional<logic::ads::Ad> serveAd(const std::string& playerId, logic::ads::Format format,
                                          const std::string& token, std::int64_t now) override {
        std::optional<logic::ads::Ad> out;
        conn_->transact([&](Tx& tx) {
            out.reset();
            std::vector<logic::ads::Candidate> candidates = ad_rows::candidates(tx, playerId, format);
            std::optional<std::size_t> next = logic::ads::nextInRotation(candidates);
            if (!next) {
                return;
            }
            out = candidates[*next].ad;
            ad_rows::markServed(tx, playerId, out->id);
            ad_rows::insertToken(tx, token, playerId, *out, now);
        });
        return out;
    }

    std::optional<std::string> adPicture(const std::string& adId) override {
        std::optional<std::string> out;
        conn_->read([&](Tx& tx) { out = ad_rows::picture(tx, adId); });
        return out;
    }

    ImpressionResult recordImpression(const std::string& playerId, const std::string& token,
                                      const std::string& impressionId, logic::ads::Tracking tracking,
                                      std::int64_t now) override {
        ImpressionResult out = logic::ads::Refusal::NotFound;
        conn_->transact([&](Tx& tx) {
            std::optional<ad_rows::Token> t = ad_rows::token(tx, token, locks());
            if (!t || t->playerId != playerId) {
                out = logic::ads::Refusal::NotFound;
                return;
            }
            if (t->spent || !ad_rows::spend(tx, token)) {
                out = logic::ads::Refusal::AlreadyRecorded;
                return;
            }
            logic::ads::Impression i{
                impressionId, t->adId,
                t->format,    logic::ads::keepsPlayer(t->format, tracking) ? playerId : std::string(),
                now,          t->durationSeconds,
                std::nullopt};
            ad_rows::insertImpression(tx, i, tracking);
            out = i;
        });
        return out;
    }

    ImpressionResult claimReward(const std::string& playerId, const std::string& impressionId,
                                 std::int64_t now) override {
        ImpressionResult out = logic::ads::Refusal::NotFound;
        conn_->transact([&](Tx& tx) {
            std::optional<logic::ads::Impression> i = ad_rows::impression(tx, impressionId, locks());
            if (!i) {
                out = logic::ads::Refusal::NotFound;
                return;
            }
            if (auto refusal = logic::ads::rewardRefusal(*i, playerId, now)) {
                out = *refusal;
                return;
            }
            if (!ad_rows::reward(tx, impressionId, now)) {
                out = logic::ads::Refusal::AlreadyRewarded;
                return;
            }
            i->rewardedAt = now;
            out = *i;
        });
        return out;
    }

    std::optional<ProgressVersion> progress(const std::string& playerId) override {
        std::optional<ProgressVersion> out;
        conn_->read([&](Tx& tx) { out = progress_rows::newest(tx, playerId, false); });
        return out;
    }

    std::vector<ProgressVersion> progressVersions(const std::string& playerId) override {
        std::vector<ProgressVersion> out;
        conn_->read([&](Tx& tx) { out = progress_rows::summaries(tx, playerId); });
        return out;
    }

    ProgressSaveResult saveProgress(const std::string& playerId, std::int64_t baseVersion,
                                    const logic::progress::Summary& summary, const std::string& document,
                                    std::int64_t now) override {
        namespace rules = logic::progress;
        ProgressSaveResult out = GoldNotEarned{};
        conn_->transact([&](Tx& tx) {
            std::optional<ProgressVersion> newest = progress_rows::newest(tx, playerId, locks());
            const std::int64_t newestVersion = newest ? newest->version : 0;
            if (baseVersion != newestVersion) {
                out = ProgressConflict{newest.value_or(ProgressVersion{})};
                return;
            }
            std::optional<rules::Summary> before;
            if (newest) {
                // A stored document was read when it was saved; one that no longer reads counts as none.
                auto read = rules::readDocument(newest->document);
                if (auto* s = std::get_if<rules::Summary>(&read)) {
                    before = *s;
                }
            }
            const std::int64_t since = newest ? newest->savedAt : 0;
            const rules::Earnings earned = progress_rows::earningsSince(tx, playerId, since);
            if (!rules::goldEarned(before, summary, now - since, earned)) {
                out = GoldNotEarned{(before ? before->gold : 0) +
                                    rules::goldAllowance(before, summary, now - since, earned)};
                return;
            }
            ProgressVersion next{newestVersion + 1, now, summary.level, summary.gold, document};
            progress_rows::insert(tx, playerId, next);
            progress_rows::prune(tx, playerId, rules::kKeptVersions);
            out = std::move(next);
        });
        return out;
    }

    std::unique_ptr<Watch> watchChanges(ChangeHandler fn) override {
        return conn_->watch({kEventsChannel, kScoresChannel, kLiveChannel, kSessionsChannel, kPlayersChannel},
                            [fn = std::move(fn)](const std::string& channel, const std::string& payload) {
                                fn(channel == kEventsChannel     ? Change::Events
                                   : channel == kLiveChannel     ? Change::Live
                                   : channel == kSessionsChannel ? Change::Session
                                   : channel == kPlayersChannel  ? Change::Player
                                                                 : Change::Score,
                                   payload);
                            });
    }

private:
    // Whether rows can be locked: PostgreSQL; SQLite lets one writer in at a time anyway.
    bool locks() const { return conn_->dialect() == "postgresql"; }

    MatchMoveResult applyMove(Tx& tx, const std::string& id, const MatchMove& move) {
        std::optional<Match> before = match_rows::load(tx, id, locks());
        if (!before) {
            return MatchNotFound{};
        }
        auto moved = move(*before);
        if (auto* refusal = std::get_if<Refusal>(&moved)) {
            return *refusal;
        }
        const MatchChange& change = std::get<MatchChange>(moved);
        match_rows::update(tx, change.match);
        for (const NewEvent& e : change.events) {
            insertEvent(tx, e, change.match.updatedAt);
        }
        return change.match;
    }

    std::vector<FriendRequest> requests(const char* column, const std::string& playerId) {
        std::vector<FriendRequest> out;
        conn_->read([&](Tx& tx) {
            for (const Row& r :
                 tx.exec(std::string("SELECT ") + kRequestColumns + " FROM friend_requests WHERE " + column +
                             " = $1 AND status = 'pending' ORDER BY created_at, id",
                         {playerId})) {
                out.push_back(requestFrom(r));
            }
        });
        return out;
    }

    std::unique_ptr<Connection> conn_;
};

} // namespace

std::unique_ptr<Store> makeSqlStore(std::unique_ptr<Connection> conn) {
    return std::make_unique<SqlStore>(std::move(conn));
}

} // namespace tarvolin::store
