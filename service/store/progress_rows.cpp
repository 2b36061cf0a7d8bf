#include "store/progress_rows.h"

#include "store/match_rows.h"

namespace tarvolin::store::progress_rows {

std::optional<ProgressVersion> newest(Tx& tx, const std::string& playerId, bool lock) {
    if (lock) {
        tx.exec("SELECT id FROM players WHERE id = $1 FOR UPDATE", {playerId});
    }
    Rows r = tx.exec("SELECT version, saved_at, level, gold, document FROM progress_versions "
                     "WHERE player_id = $1 ORDER BY version DESC LIMIT 1",
                     {playerId});
    if (r.empty()) {
        return std::nullopt;
    }
    return ProgressVersion{r[0].integer(0), r[0].integer(1), r[0].integer(2), r[0].integer(3), r[0].text(4)};
}

std::vector<ProgressVersion> summaries(Tx& tx, const std::string& playerId) {
    std::vector<ProgressVersion> out;
    for (const Row& r : tx.exec("SELECT version, saved_at, level, gold FROM progress_versions "
                                "WHERE player_id = $1 ORDER BY version DESC",
                                {playerId})) {
        out.push_back(ProgressVersion{r.integer(0), r.integer(1), r.integer(2), r.integer(3), {}});
    }
    return out;
}

void insert(Tx& tx, const std::string& playerId, const ProgressVersion& v) {
    tx.exec("INSERT INTO progress_versions (player_id, version, saved_at, level, gold, document) "
            "VALUES ($1, $2, $3, $4, $5, $6)",
            {playerId, v.version, v.savedAt, v.level, v.gold, v.document});
}

void prune(Tx& tx, const std::string& playerId, std::size_t keep) {
    Rows r = tx.exec("SELECT version FROM progress_versions WHERE player_id = $1 ORDER BY version DESC "
                     "LIMIT 1 OFFSET $2",
                     {playerId, static_cast<std::int64_t>(keep)});
    if (!r.empty()) {
        tx.exec("DELETE FROM progress_versions WHERE player_id = $1 AND version <= $2",
                {playerId, r[0].integer(0)});
    }
}

logic::progress::Earnings earningsSince(Tx& tx, const std::string& playerId, std::int64_t since) {
    logic::progress::Earnings e;
    // A pack pays when it is purchased and again when it is restored; either moves the transaction's time.
    Rows bought =
        tx.exec("SELECT COALESCE(SUM(p.credits * t.quantity), 0) FROM store_transactions t "
                "JOIN store_products p ON p.id = t.product_id "
                "WHERE t.player_id = $1 AND t.state IN ('purchased', 'restored') AND t.updated_at > $2",
                {playerId, since});
    e.purchasedGold = bought.empty() ? 0 : bought[0].integer(0);
    Rows rewards = tx.exec("SELECT COUNT(*) FROM ad_impressions WHERE player_id = $1 AND rewarded_at > $2",
                           {playerId, since});
    e.adRewards = rewards.empty() ? 0 : rewards[0].integer(0);
    // The gold of an exchange reaches its creator (seat 0) when he ends the answered match; an ended match
    // changes no more, so each is counted once.
    for (const Row& r : tx.exec("SELECT m.data FROM matches m JOIN match_seats s ON s.match_id = m.id "
                                "AND s.seat = 0 WHERE s.player_id = $1 AND m.purpose = 'exchange' "
                                "AND m.status = $3 AND m.updated_at > $2",
                                {playerId, since, std::int64_t(logic::match::Status::Ended)})) {
        if (std::optional<std::string> data = match_rows::decodeData(r.text(0))) {
            e.exchangeGold += logic::progress::exchangeGold(*data);
        }
    }
    return e;
}

} // namespace tarvolin::store::progress_rows
