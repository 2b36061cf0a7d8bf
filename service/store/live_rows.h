// How a live match is kept in the tables live_matches and live_seats while it lasts; the statements run
// inside the store's transactions.
#pragma once

#include "logic/live_rules.h"
#include "store/sql.h"

#include <optional>
#include <string>
#include <vector>

namespace tarvolin::store::live_rows {

using logic::live::Match;

void insert(Tx& tx, const Match& m);
// Writes the found time and the seats of a stored match.
void update(Tx& tx, const Match& m);
void remove(Tx& tx, const std::string& id);
// The match, its row locked for the rest of the transaction where the database has row locks.
std::optional<Match> load(Tx& tx, const std::string& id, bool lock);
// The oldest automatic match still searching since `since`, not the player's own, skipping rows another
// transaction holds.
std::optional<std::string> oldestWaiting(Tx& tx, const std::string& playerId, std::int64_t since,
                                         bool skipLocked);
// The player's own automatic match still searching since `since`.
std::optional<std::string> ownWaiting(Tx& tx, const std::string& playerId, std::int64_t since);
// Matches that may have outlived their search, connection or life by `now`.
std::vector<std::string> staleCandidates(Tx& tx, std::int64_t now, std::size_t limit);
std::size_t countOf(Tx& tx, const std::string& playerId);

} // namespace tarvolin::store::live_rows
