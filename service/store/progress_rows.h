// How saved progress is kept in the table progress_versions, and what the other tables tell of the gold a
// player earned at the service; the statements run inside the store's transactions.
#pragma once

#include "logic/progress_rules.h"
#include "store/sql.h"

#include <optional>
#include <string>
#include <vector>

namespace tarvolin::store {

// One kept version of a player's progress. The document is left empty where only the summary is read.
struct ProgressVersion {
    std::int64_t version = 0;
    std::int64_t savedAt = 0; // ms
    std::int64_t level = 0;
    std::int64_t gold = 0;
    std::string document;
};

namespace progress_rows {

// The player's newest version; with lock, his player row is locked for the rest of the transaction first,
// so that two saves of his wait for each other.
std::optional<ProgressVersion> newest(Tx& tx, const std::string& playerId, bool lock);
// The kept versions, newest first, without their documents.
std::vector<ProgressVersion> summaries(Tx& tx, const std::string& playerId);
void insert(Tx& tx, const std::string& playerId, const ProgressVersion& v);
// Drops all but the newest `keep` versions.
void prune(Tx& tx, const std::string& playerId, std::size_t keep);
// The gold, ad rewards and exchange gold the player received after `since` (ms).
logic::progress::Earnings earningsSince(Tx& tx, const std::string& playerId, std::int64_t since);

} // namespace progress_rows
} // namespace tarvolin::store
