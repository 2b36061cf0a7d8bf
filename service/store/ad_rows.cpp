#include "store/ad_rows.h"

namespace tarvolin::store::ad_rows {

namespace ads = logic::ads;

namespace {

ads::Format formatFrom(const std::string& name) {
    auto f = ads::formatFrom(name);
    if (!f) {
        throw StoreError("unknown ad format " + name);
    }
    return *f;
}

} // namespace

std::vector<ads::Candidate> candidates(Tx& tx, const std::string& playerId, ads::Format format) {
    std::vector<ads::Candidate> out;
    for (const Row& r : tx.exec("SELECT a.id, a.kind, a.promotion, a.title, a.body, a.call_to_action, "
                                "a.action_url, CASE WHEN a.picture IS NULL THEN 0 ELSE 1 END, a.background, "
                                "a.foreground, a.accent, "
                                "a.duration_seconds, a.width, a.height, r.served FROM house_ads a "
                                "LEFT JOIN ad_rotation r ON r.ad_id = a.id AND r.player_id = $1 "
                                "WHERE a.format = $2 AND a.active = 1",
                                {playerId, std::string(ads::formatName(format))})) {
        Ad ad;
        ad.id = r.text(0);
        ad.format = format;
        ad.kind = r.text(1);
        ad.promotion = r.text(2);
        ad.title = r.text(3);
        ad.body = r.text(4);
        ad.callToAction = r.text(5);
        ad.actionUrl = r.text(6);
        ad.hasPicture = r.integer(7) != 0;
        ad.background = r.text(8);
        ad.foreground = r.text(9);
        ad.accent = r.text(10);
        ad.durationSeconds = r.integer(11);
        ad.width = r.integer(12);
        ad.height = r.integer(13);
        out.push_back(ads::Candidate{std::move(ad), r.optionalInteger(14)});
    }
    return out;
}

void markServed(Tx& tx, const std::string& playerId, const std::string& adId) {
    Rows r = tx.exec("SELECT COALESCE(MAX(served), 0) FROM ad_rotation WHERE player_id = $1", {playerId});
    const std::int64_t next = (r.empty() ? 0 : r[0].integer(0)) + 1;
    tx.exec("INSERT INTO ad_rotation (player_id, ad_id, served) VALUES ($1, $2, $3) "
            "ON CONFLICT (player_id, ad_id) DO UPDATE SET served = excluded.served",
            {playerId, adId, next});
}

void insertToken(Tx& tx, const std::string& token, const std::string& playerId, const Ad& ad,
                 std::int64_t now) {
    tx.exec("INSERT INTO ad_tokens (token, player_id, ad_id, format, duration_seconds, served_at, spent) "
            "VALUES ($1, $2, $3, $4, $5, $6, 0)",
            {token, playerId, ad.id, std::string(ads::formatName(ad.format)), ad.durationSeconds, now});
}

std::optional<std::string> picture(Tx& tx, const std::string& adId) {
    Rows r = tx.exec("SELECT picture FROM house_ads WHERE id = $1 AND picture IS NOT NULL", {adId});
    return r.empty() ? std::nullopt : std::optional<std::string>(r[0].text(0));
}

std::optional<Token> token(Tx& tx, const std::string& token, bool lock) {
    Rows r = tx.exec(std::string("SELECT player_id, ad_id, format, duration_seconds, spent FROM ad_tokens "
                                 "WHERE token = $1") +
                         (lock ? " FOR UPDATE" : ""),
                     {token});
    if (r.empty()) {
        return std::nullopt;
    }
    return Token{r[0].text(0), r[0].text(1), formatFrom(r[0].text(2)), r[0].integer(3), r[0].integer(4) != 0};
}

bool spend(Tx& tx, const std::string& token) {
    return !tx.exec("UPDATE ad_tokens SET spent = 1 WHERE token = $1 AND spent = 0 RETURNING token", {token})
                .empty();
}

void insertImpression(Tx& tx, const Impression& i, ads::Tracking tracking) {
    tx.exec(
        "INSERT INTO ad_impressions (id, ad_id, format, tracking, player_id, duration_seconds, recorded_at) "
        "VALUES ($1, $2, $3, $4, $5, $6, $7)",
        {i.id, i.adId, std::string(ads::formatName(i.format)), std::string(ads::trackingName(tracking)),
         i.playerId.empty() ? Value{} : Value{i.playerId}, i.durationSeconds, i.recordedAt});
}

std::optional<Impression> impression(Tx& tx, const std::string& id, bool lock) {
    Rows r = tx.exec(std::string("SELECT id, ad_id, format, player_id, recorded_at, duration_seconds, "
                                 "rewarded_at FROM ad_impressions WHERE id = $1") +
                         (lock ? " FOR UPDATE" : ""),
                     {id});
    if (r.empty()) {
        return std::nullopt;
    }
    return Impression{r[0].text(0),
                      r[0].text(1),
                      formatFrom(r[0].text(2)),
                      r[0].isNull(3) ? std::string() : r[0].text(3),
                      r[0].integer(4),
                      r[0].integer(5),
                      r[0].optionalInteger(6)};
}

bool reward(Tx& tx, const std::string& id, std::int64_t now) {
    return !tx.exec("UPDATE ad_impressions SET rewarded_at = $2 WHERE id = $1 AND rewarded_at IS NULL "
                    "RETURNING id",
                    {id, now})
                .empty();
}

} // namespace tarvolin::store::ad_rows
