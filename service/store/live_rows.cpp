#include "store/live_rows.h"

namespace tarvolin::store::live_rows {

namespace live = logic::live;

void insert(Tx& tx, const Match& m) {
    tx.exec("INSERT INTO live_matches (id, created_at, found_at, automatic) VALUES ($1, $2, $3, $4)",
            {m.id, m.createdAt, m.foundAt, std::int64_t(m.automatic ? 1 : 0)});
    for (std::size_t i = 0; i < m.seats.size(); ++i) {
        const live::Seat& s = m.seats[i];
        tx.exec("INSERT INTO live_seats (match_id, seat, player_id, status) VALUES ($1, $2, $3, $4)",
                {m.id, std::int64_t(i), s.playerId.empty() ? Value{} : Value{s.playerId},
                 std::int64_t(s.status)});
    }
}

void update(Tx& tx, const Match& m) {
    tx.exec("UPDATE live_matches SET found_at = $2 WHERE id = $1", {m.id, m.foundAt});
    for (std::size_t i = 0; i < m.seats.size(); ++i) {
        const live::Seat& s = m.seats[i];
        tx.exec("UPDATE live_seats SET player_id = $3, status = $4 WHERE match_id = $1 AND seat = $2",
                {m.id, std::int64_t(i), s.playerId.empty() ? Value{} : Value{s.playerId},
                 std::int64_t(s.status)});
    }
}

void remove(Tx& tx, const std::string& id) {
    tx.exec("DELETE FROM live_seats WHERE match_id = $1", {id});
    tx.exec("DELETE FROM live_matches WHERE id = $1", {id});
}

std::optional<Match> load(Tx& tx, const std::string& id, bool lock) {
    Rows r =
        tx.exec(std::string("SELECT id, created_at, found_at, automatic FROM live_matches WHERE id = $1") +
                    (lock ? " FOR UPDATE" : ""),
                {id});
    if (r.empty()) {
        return std::nullopt;
    }
    Match m;
    m.id = r[0].text(0);
    m.createdAt = r[0].integer(1);
    m.foundAt = r[0].integer(2);
    m.automatic = r[0].integer(3) != 0;
    for (const Row& s : tx.exec("SELECT seat, player_id, status FROM live_seats WHERE match_id = $1", {id})) {
        const std::int64_t seat = s.integer(0);
        const std::int64_t status = s.integer(2);
        if (seat < 0 || seat >= static_cast<std::int64_t>(m.seats.size()) || status < 0 ||
            status > static_cast<std::int64_t>(live::SeatStatus::Connected)) {
            throw StoreError("live match " + id + " holds a seat that is out of range");
        }
        m.seats[static_cast<std::size_t>(seat)] = {s.isNull(1) ? std::string() : s.text(1),
                                                   static_cast<live::SeatStatus>(status)};
    }
    return m;
}

std::optional<std::string> oldestWaiting(Tx& tx, const std::string& playerId, std::int64_t since,
                                         bool skipLocked) {
    Rows r = tx.exec(std::string("SELECT m.id FROM live_matches m WHERE m.automatic = 1 AND m.found_at = 0 "
                                 "AND m.created_at >= $2 AND NOT EXISTS (SELECT 1 FROM live_seats s "
                                 "WHERE s.match_id = m.id AND s.player_id = $1) "
                                 "ORDER BY m.created_at, m.id LIMIT 1") +
                         (skipLocked ? " FOR UPDATE SKIP LOCKED" : ""),
                     {playerId, since});
    return r.empty() ? std::nullopt : std::optional<std::string>(r[0].text(0));
}

std::optional<std::string> ownWaiting(Tx& tx, const std::string& playerId, std::int64_t since) {
    Rows r = tx.exec("SELECT m.id FROM live_matches m JOIN live_seats s ON s.match_id = m.id "
                     "WHERE s.player_id = $1 AND m.automatic = 1 AND m.found_at = 0 AND m.created_at >= $2 "
                     "ORDER BY m.created_at LIMIT 1",
                     {playerId, since});
    return r.empty() ? std::nullopt : std::optional<std::string>(r[0].text(0));
}

std::vector<std::string> staleCandidates(Tx& tx, std::int64_t now, std::size_t limit) {
    std::vector<std::string> out;
    for (const Row& r :
         tx.exec("SELECT m.id FROM live_matches m WHERE m.created_at < $1 "
                 "OR (m.found_at = 0 AND m.created_at < $2) "
                 "OR (m.found_at > 0 AND m.found_at < $3 AND EXISTS (SELECT 1 FROM live_seats s "
                 "WHERE s.match_id = m.id AND s.status <> $4)) ORDER BY m.created_at LIMIT $5",
                 {now - live::kMaxLifeMs, now - live::kWaitMs, now - live::kConnectMs,
                  std::int64_t(live::SeatStatus::Connected), std::int64_t(limit)})) {
        out.push_back(r.text(0));
    }
    return out;
}

std::size_t countOf(Tx& tx, const std::string& playerId) {
    Rows r = tx.exec("SELECT COUNT(*) FROM live_seats WHERE player_id = $1", {playerId});
    return r.empty() ? 0 : static_cast<std::size_t>(r[0].integer(0));
}

} // namespace tarvolin::store::live_rows
