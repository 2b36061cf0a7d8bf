#include "store/match_rows.h"

#include <boost/json.hpp>
#include <sodium.h>

#include <sstream>

namespace tarvolin::store::match_rows {
namespace {

using logic::match::Outcome;
using logic::match::SeatStatus;
using logic::match::Status;

std::string joinSeats(const std::vector<int>& seats) {
    std::string out;
    for (int s : seats) {
        out += (out.empty() ? "" : ",") + std::to_string(s);
    }
    return out;
}

std::vector<int> splitSeats(const std::string& text) {
    std::vector<int> out;
    std::stringstream in(text);
    std::string part;
    while (std::getline(in, part, ',')) {
        if (!part.empty()) {
            out.push_back(std::stoi(part));
        }
    }
    return out;
}

std::string argumentsJson(const std::vector<std::string>& args) {
    boost::json::array a;
    for (const std::string& s : args) {
        a.emplace_back(s);
    }
    return boost::json::serialize(a);
}

std::vector<std::string> argumentsFrom(const std::string& text) {
    std::vector<std::string> out;
    boost::system::error_code ec;
    const boost::json::value v = boost::json::parse(text, ec);
    if (!ec && v.is_array()) {
        for (const auto& item : v.as_array()) {
            if (item.is_string()) {
                out.emplace_back(item.as_string());
            }
        }
    }
    return out;
}

void writeSeats(Tx& tx, const Match& m, bool fresh) {
    for (std::size_t i = 0; i < m.seats.size(); ++i) {
        const auto& seat = m.seats[i];
        const Value player = seat.playerId.empty() ? Value{} : Value{seat.playerId};
        if (fresh) {
            tx.exec(
                "INSERT INTO match_seats (match_id, seat, player_id, status, outcome, last_turn_at, removed) "
                "VALUES ($1, $2, $3, $4, $5, $6, $7)",
                {m.id, std::int64_t(i), player, std::int64_t(seat.status), std::int64_t(seat.outcome),
                 seat.lastTurnAt, std::int64_t(seat.removed ? 1 : 0)});
        } else {
            tx.exec("UPDATE match_seats SET player_id = $3, status = $4, outcome = $5, last_turn_at = $6, "
                    "removed = $7 WHERE match_id = $1 AND seat = $2",
                    {m.id, std::int64_t(i), player, std::int64_t(seat.status), std::int64_t(seat.outcome),
                     seat.lastTurnAt, std::int64_t(seat.removed ? 1 : 0)});
        }
    }
}

Params matchParams(const Match& m) {
    const bool waiting = m.seats.size() > 1 && m.seats[1].playerId.empty() && m.status != Status::Ended;
    return {m.id,
            std::int64_t(m.status),
            m.createdAt,
            m.updatedAt,
            std::int64_t(m.current),
            m.turnDeadline,
            joinSeats(m.fallThrough),
            m.turnTimeoutMs,
            encodeData(m.data),
            m.messageKey,
            argumentsJson(m.messageArguments),
            std::int64_t(waiting ? 1 : 0)};
}

} // namespace

// The purpose is written out rather than passed, so that the partial index of exchanges may serve.
std::vector<std::int64_t> exchangeTimes(Tx& tx, const std::string& creator, std::int64_t after) {
    std::vector<std::int64_t> out;
    for (const Row& r : tx.exec("SELECT m.created_at FROM matches m JOIN match_seats s ON s.match_id = m.id "
                                "AND s.seat = 0 WHERE m.purpose = 'exchange' AND m.created_at > $2 "
                                "AND s.player_id = $1",
                                {creator, after})) {
        out.push_back(r.integer(0));
    }
    return out;
}

std::size_t openExchanges(Tx& tx, const std::string& creator, const std::string& recipient) {
    return static_cast<std::size_t>(
        tx.exec("SELECT COUNT(*) FROM matches m JOIN match_seats a ON a.match_id = m.id AND a.seat = 0 "
                "JOIN match_seats b ON b.match_id = m.id AND b.seat = 1 WHERE m.purpose = 'exchange' "
                "AND m.status <> $3 AND a.player_id = $1 AND b.player_id = $2",
                {creator, recipient, std::int64_t(Status::Ended)})[0]
            .integer(0));
}

std::string encodeData(const std::string& bytes) {
    std::string out(sodium_base64_ENCODED_LEN(bytes.size(), sodium_base64_VARIANT_ORIGINAL), '\0');
    sodium_bin2base64(out.data(), out.size(), reinterpret_cast<const unsigned char*>(bytes.data()),
                      bytes.size(), sodium_base64_VARIANT_ORIGINAL);
    out.pop_back(); // the terminating zero
    return out;
}

std::optional<std::string> decodeData(const std::string& text) {
    std::string out(text.size() / 4 * 3 + 3, '\0');
    std::size_t length = 0;
    const char* end = nullptr;
    if (sodium_base642bin(reinterpret_cast<unsigned char*>(out.data()), out.size(), text.data(), text.size(),
                          nullptr, &length, &end, sodium_base64_VARIANT_ORIGINAL) != 0 ||
        end != text.data() + text.size()) {
        return std::nullopt;
    }
    out.resize(length);
    return out;
}

void insert(Tx& tx, const Match& m) {
    Params params = matchParams(m);
    params.emplace_back(std::string(logic::match::purposeName(m.purpose)));
    tx.exec(
        "INSERT INTO matches (id, status, created_at, updated_at, current_seat, turn_deadline, fall_through, "
        "turn_timeout, data, message_key, message_args, waiting, purpose) "
        "VALUES ($1, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11, $12, $13)",
        params);
    writeSeats(tx, m, true);
}

void update(Tx& tx, const Match& m) {
    tx.exec("UPDATE matches SET status = $2, created_at = $3, updated_at = $4, current_seat = $5, "
            "turn_deadline = $6, fall_through = $7, turn_timeout = $8, data = $9, message_key = $10, "
            "message_args = $11, waiting = $12 WHERE id = $1",
            matchParams(m));
    writeSeats(tx, m, false);
}

std::optional<Match> load(Tx& tx, const std::string& id, bool lock) {
    Rows r = tx.exec(std::string("SELECT id, status, created_at, updated_at, current_seat, turn_deadline, "
                                 "fall_through, turn_timeout, data, message_key, message_args, purpose "
                                 "FROM matches WHERE id = $1") +
                         (lock ? " FOR UPDATE" : ""),
                     {id});
    if (r.empty()) {
        return std::nullopt;
    }
    const Row& row = r[0];
    Match m;
    m.id = row.text(0);
    m.status = static_cast<Status>(row.integer(1));
    m.createdAt = row.integer(2);
    m.updatedAt = row.integer(3);
    m.current = static_cast<int>(row.integer(4));
    m.turnDeadline = row.integer(5);
    m.fallThrough = splitSeats(row.text(6));
    m.turnTimeoutMs = row.integer(7);
    const std::optional<std::string> data = decodeData(row.text(8));
    if (!data) {
        throw StoreError("match " + id + " holds data that is not base64");
    }
    m.data = *data;
    m.messageKey = row.text(9);
    m.messageArguments = argumentsFrom(row.text(10));
    const std::optional<logic::match::Purpose> purpose = logic::match::purposeFrom(row.text(11));
    if (!purpose) {
        throw StoreError("match " + id + " has an unknown purpose");
    }
    m.purpose = *purpose;
    m.seats.resize(logic::match::kSeats);
    for (const Row& s :
         tx.exec("SELECT seat, player_id, status, outcome, last_turn_at, removed FROM match_seats "
                 "WHERE match_id = $1 ORDER BY seat",
                 {id})) {
        const std::size_t seat = static_cast<std::size_t>(s.integer(0));
        if (seat >= m.seats.size()) {
            continue;
        }
        m.seats[seat] =
            logic::match::Seat{s.isNull(1) ? std::string() : s.text(1), static_cast<SeatStatus>(s.integer(2)),
                               static_cast<Outcome>(s.integer(3)), s.integer(4), s.integer(5) != 0};
    }
    return m;
}

std::vector<std::string> listedIds(Tx& tx, const std::string& playerId) {
    std::vector<std::string> out;
    for (const Row& r : tx.exec("SELECT m.id FROM matches m JOIN match_seats s ON s.match_id = m.id "
                                "WHERE s.player_id = $1 AND s.removed = 0 ORDER BY m.created_at DESC, m.id",
                                {playerId})) {
        out.push_back(r.text(0));
    }
    return out;
}

std::vector<std::string> waitingIds(Tx& tx, const std::string& playerId, bool skipLocked, std::size_t limit) {
    std::vector<std::string> out;
    const std::string sql =
        std::string("SELECT m.id FROM matches m JOIN match_seats s ON s.match_id = m.id AND "
                    "s.seat = 0 WHERE m.waiting = 1 AND s.player_id <> $1 "
                    "ORDER BY m.created_at, m.id LIMIT $2") +
        (skipLocked ? " FOR UPDATE OF m SKIP LOCKED" : "");
    for (const Row& r : tx.exec(sql, {playerId, std::int64_t(limit)})) {
        out.push_back(r.text(0));
    }
    return out;
}

} // namespace tarvolin::store::match_rows
