#include "store/store_rows.h"

#include <unordered_map>

namespace tarvolin::store::store_rows {

namespace shop = logic::shop;

namespace {

constexpr const char* kColumns = "id, player_id, seq, product_id, quantity, state, original_id, error_code, "
                                 "error_message, finished, created_at, updated_at";

Transaction transactionFrom(const Row& r) {
    Transaction t;
    t.id = r.text(0);
    t.playerId = r.text(1);
    t.seq = r.integer(2);
    t.productId = r.text(3);
    t.quantity = r.integer(4);
    auto state = shop::stateFrom(r.text(5));
    if (!state) {
        throw StoreError("transaction " + t.id + " has an unknown state " + r.text(5));
    }
    t.state = *state;
    t.originalId = r.isNull(6) ? std::string() : r.text(6);
    if (!r.isNull(7)) {
        t.error = shop::Failure{static_cast<int>(r.integer(7)), r.isNull(8) ? std::string() : r.text(8)};
    }
    t.finished = r.integer(9) != 0;
    t.createdAt = r.integer(10);
    t.updatedAt = r.integer(11);
    return t;
}

std::vector<Transaction> transactionsFrom(const Rows& rows) {
    std::vector<Transaction> out;
    out.reserve(rows.size());
    for (const Row& r : rows) {
        out.push_back(transactionFrom(r));
    }
    return out;
}

Value errorCode(const Transaction& t) {
    return t.error ? Value{std::int64_t{t.error->code}} : Value{};
}

Value errorMessage(const Transaction& t) {
    return t.error ? Value{t.error->message} : Value{};
}

} // namespace

std::vector<Product> products(Tx& tx, const std::vector<std::string>& ids) {
    std::vector<Product> out;
    if (ids.empty()) {
        return out;
    }
    std::string sql =
        "SELECT p.id, p.title, p.credits, p.skips, pr.currency, pr.amount FROM store_products p "
        "LEFT JOIN store_prices pr ON pr.product_id = p.id WHERE p.id IN (";
    Params params;
    for (std::size_t i = 0; i < ids.size(); ++i) {
        sql += (i ? ", $" : "$") + std::to_string(i + 1);
        params.emplace_back(ids[i]);
    }
    sql += ")";
    std::unordered_map<std::string, Product> found;
    for (const Row& r : tx.exec(sql, params)) {
        auto [it, fresh] = found.try_emplace(r.text(0));
        if (fresh) {
            it->second = Product{r.text(0), r.text(1), r.integer(2), r.integer(3), {}};
        }
        if (!r.isNull(4)) {
            it->second.prices[r.text(4)] = r.integer(5);
        }
    }
    for (const std::string& id : ids) {
        if (auto it = found.find(id); it != found.end()) {
            out.push_back(it->second);
        }
    }
    return out;
}

bool productExists(Tx& tx, const std::string& id) {
    return !tx.exec("SELECT 1 FROM store_products WHERE id = $1", {id}).empty();
}

std::int64_t lockPlayer(Tx& tx, const std::string& playerId) {
    // The upsert takes the row's lock in PostgreSQL whether it inserts or not; SQLite has one writer anyway.
    Rows r = tx.exec("INSERT INTO store_players (player_id, seq, sandbox) VALUES ($1, 0, $2) "
                     "ON CONFLICT (player_id) DO UPDATE SET seq = store_players.seq RETURNING seq",
                     {playerId, std::string(shop::outcomeName(shop::Outcome::Purchase))});
    if (r.empty()) {
        throw StoreError("the store row of " + playerId + " was not locked");
    }
    return r[0].integer(0);
}

void setLatest(Tx& tx, const std::string& playerId, std::int64_t seq) {
    tx.exec("UPDATE store_players SET seq = $2 WHERE player_id = $1", {playerId, seq});
}

shop::Outcome sandbox(Tx& tx, const std::string& playerId) {
    Rows r = tx.exec("SELECT sandbox FROM store_players WHERE player_id = $1", {playerId});
    if (r.empty()) {
        return shop::Outcome::Purchase;
    }
    auto o = shop::outcomeFrom(r[0].text(0));
    if (!o) {
        throw StoreError("the sandbox switch of " + playerId + " is unknown: " + r[0].text(0));
    }
    return *o;
}

void setSandbox(Tx& tx, const std::string& playerId, shop::Outcome outcome) {
    tx.exec("INSERT INTO store_players (player_id, seq, sandbox) VALUES ($1, 0, $2) "
            "ON CONFLICT (player_id) DO UPDATE SET sandbox = excluded.sandbox",
            {playerId, std::string(shop::outcomeName(outcome))});
}

void insert(Tx& tx, const Transaction& t) {
    tx.exec(std::string("INSERT INTO store_transactions (") + kColumns +
                ") VALUES ($1, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11, $12)",
            {t.id, t.playerId, t.seq, t.productId, t.quantity, std::string(shop::stateName(t.state)),
             t.originalId.empty() ? Value{} : Value{t.originalId}, errorCode(t), errorMessage(t),
             std::int64_t(t.finished ? 1 : 0), t.createdAt, t.updatedAt});
}

bool update(Tx& tx, const Transaction& after, const Transaction& before) {
    return !tx.exec("UPDATE store_transactions SET state = $2, error_code = $3, error_message = $4, "
                    "finished = $5, updated_at = $6 WHERE id = $1 AND state = $7 AND finished = $8 RETURNING "
                    "id",
                    {after.id, std::string(shop::stateName(after.state)), errorCode(after),
                     errorMessage(after), std::int64_t(after.finished ? 1 : 0), after.updatedAt,
                     std::string(shop::stateName(before.state)), std::int64_t(before.finished ? 1 : 0)})
                .empty();
}

std::optional<Transaction> load(Tx& tx, const std::string& id, bool lock) {
    Rows r = tx.exec(std::string("SELECT ") + kColumns + " FROM store_transactions WHERE id = $1" +
                         (lock ? " FOR UPDATE" : ""),
                     {id});
    if (r.empty()) {
        return std::nullopt;
    }
    return transactionFrom(r[0]);
}

std::size_t purchasingCount(Tx& tx, const std::string& playerId) {
    Rows r = tx.exec("SELECT COUNT(*) FROM store_transactions WHERE player_id = $1 AND state = $2",
                     {playerId, std::string(shop::stateName(shop::State::Purchasing))});
    return r.empty() ? 0 : static_cast<std::size_t>(r[0].integer(0));
}

std::vector<Transaction> unfinished(Tx& tx, const std::string& playerId, std::optional<shop::State> state) {
    if (state) {
        return transactionsFrom(tx.exec(std::string("SELECT ") + kColumns +
                                            " FROM store_transactions WHERE player_id = $1 AND finished = 0 "
                                            "AND state = $2 ORDER BY seq",
                                        {playerId, std::string(shop::stateName(*state))}));
    }
    return transactionsFrom(tx.exec(std::string("SELECT ") + kColumns +
                                        " FROM store_transactions WHERE player_id = $1 AND finished = 0 "
                                        "ORDER BY seq",
                                    {playerId}));
}

std::vector<Transaction> finishedPurchases(Tx& tx, const std::string& playerId) {
    return transactionsFrom(tx.exec(std::string("SELECT ") + kColumns +
                                        " FROM store_transactions WHERE player_id = $1 AND finished = 1 "
                                        "AND state = $2 ORDER BY seq",
                                    {playerId, std::string(shop::stateName(shop::State::Purchased))}));
}

std::size_t failOpenedBefore(Tx& tx, const std::string& playerId, std::int64_t openedBefore, std::int64_t now,
                             const shop::Failure& failure) {
    return tx
        .exec(
            "UPDATE store_transactions SET state = $2, error_code = $3, error_message = $4, updated_at = $5 "
            "WHERE player_id = $1 AND state = $6 AND created_at < $7 RETURNING id",
            {playerId, std::string(shop::stateName(shop::State::Failed)), std::int64_t{failure.code},
             failure.message, now, std::string(shop::stateName(shop::State::Purchasing)), openedBefore})
        .size();
}

} // namespace tarvolin::store::store_rows
