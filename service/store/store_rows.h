// How the payment sandbox is kept in the tables store_products, store_prices, store_players and
// store_transactions; the statements run inside the store's transactions.
#pragma once

#include "logic/store_rules.h"
#include "store/sql.h"

#include <optional>
#include <string>
#include <vector>

namespace tarvolin::store::store_rows {

using logic::shop::Product;
using logic::shop::Transaction;

// Products among ids with their prices, in the order of ids; unknown ids are left out.
std::vector<Product> products(Tx& tx, const std::vector<std::string>& ids);
bool productExists(Tx& tx, const std::string& id);

// Locks the player's store row, making it when missing; returns the number of his latest transaction.
std::int64_t lockPlayer(Tx& tx, const std::string& playerId);
void setLatest(Tx& tx, const std::string& playerId, std::int64_t seq);
logic::shop::Outcome sandbox(Tx& tx, const std::string& playerId);
void setSandbox(Tx& tx, const std::string& playerId, logic::shop::Outcome outcome);

void insert(Tx& tx, const Transaction& t);
// Writes the state, the error, the finished flag and the update time of `after` while the stored transaction
// is still in the state and finished flag of `before`; returns whether it was.
bool update(Tx& tx, const Transaction& after, const Transaction& before);
// The transaction, its row locked for the rest of the transaction where the database has row locks.
std::optional<Transaction> load(Tx& tx, const std::string& id, bool lock);
std::size_t purchasingCount(Tx& tx, const std::string& playerId);
// The player's unfinished transactions, in the state given or in any, oldest first.
std::vector<Transaction> unfinished(Tx& tx, const std::string& playerId,
                                    std::optional<logic::shop::State> state = std::nullopt);
std::vector<Transaction> finishedPurchases(Tx& tx, const std::string& playerId);
// Fails the player's payments on the sheet since before `openedBefore`; returns how many.
std::size_t failOpenedBefore(Tx& tx, const std::string& playerId, std::int64_t openedBefore, std::int64_t now,
                             const logic::shop::Failure& failure);

} // namespace tarvolin::store::store_rows
