// How a turn-based match is kept in the tables matches and match_seats; the statements run inside the
// store's transactions.
#pragma once

#include "logic/match_rules.h"
#include "store/sql.h"

#include <optional>
#include <string>
#include <vector>

namespace tarvolin::store::match_rows {

using logic::match::Match;

// Inserts a new match and its seats.
void insert(Tx& tx, const Match& m);
// Writes every field of a stored match and its seats but its purpose, which never changes.
void update(Tx& tx, const Match& m);
// The match, its row locked for the rest of the transaction where the database has row locks.
std::optional<Match> load(Tx& tx, const std::string& id, bool lock);
// Ids of the matches a player is seated in and has not removed, newest first.
std::vector<std::string> listedIds(Tx& tx, const std::string& playerId);
// Ids of the waiting matches a player may join, oldest first, skipping rows another transaction holds.
std::vector<std::string> waitingIds(Tx& tx, const std::string& playerId, bool skipLocked, std::size_t limit);
// The creation times of the exchanges a player created after `after`.
std::vector<std::int64_t> exchangeTimes(Tx& tx, const std::string& creator, std::int64_t after);
// How many exchanges from the creator (seat 0) to the recipient (seat 1) are in play.
std::size_t openExchanges(Tx& tx, const std::string& creator, const std::string& recipient);

std::string encodeData(const std::string& bytes);
// Nothing when the text is not base64.
std::optional<std::string> decodeData(const std::string& text);

} // namespace tarvolin::store::match_rows
