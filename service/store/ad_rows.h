// How house ads are kept in the tables house_ads, ad_rotation, ad_tokens and ad_impressions; the statements
// run inside the store's transactions.
#pragma once

#include "logic/ad_rules.h"
#include "store/sql.h"

#include <optional>
#include <string>
#include <vector>

namespace tarvolin::store::ad_rows {

using logic::ads::Ad;
using logic::ads::Impression;

// An impression token as it was handed out with a serve.
struct Token {
    std::string playerId;
    std::string adId;
    logic::ads::Format format = logic::ads::Format::Interstitial;
    std::int64_t durationSeconds = 0;
    bool spent = false;
};

// The active ads of a format, each with the number of the player's serve that showed it last.
std::vector<logic::ads::Candidate> candidates(Tx& tx, const std::string& playerId, logic::ads::Format format);
// Notes the ad as the player's next serve.
void markServed(Tx& tx, const std::string& playerId, const std::string& adId);
void insertToken(Tx& tx, const std::string& token, const std::string& playerId, const Ad& ad,
                 std::int64_t now);
std::optional<std::string> picture(Tx& tx, const std::string& adId);

// The token, its row locked for the rest of the transaction where the database has row locks.
std::optional<Token> token(Tx& tx, const std::string& token, bool lock);
// Marks an unspent token spent; returns whether it was unspent.
bool spend(Tx& tx, const std::string& token);
void insertImpression(Tx& tx, const Impression& i, logic::ads::Tracking tracking);
// The impression, its row locked as for the token.
std::optional<Impression> impression(Tx& tx, const std::string& id, bool lock);
// Marks an impression not yet rewarded as rewarded; returns whether it was not yet.
bool reward(Tx& tx, const std::string& id, std::int64_t now);

} // namespace tarvolin::store::ad_rows
