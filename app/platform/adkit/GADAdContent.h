#pragma once

#include "GADMobileAds.h"

#include <QColor>
#include <QJsonObject>
#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

// One ad as the server describes it, checked: every field of its format is there and of its kind.
struct GADAdContent {
    QString adIdentifier;
    QString format;    // "interstitial", "rewarded", "banner"
    QString kind;      // "picture" or "card"
    QString promotion; // "house" (the game's own) or "cross" (another of the maker's games)
    QString title;
    QString body;
    QString callToAction;
    QString actionUrl;
    QString imagePath; // relative to the server; empty for a card
    QColor background;
    QColor foreground;
    QColor accent;
    int durationSeconds = 0; // rewarded: at least kMinimumRewardedSeconds
    int width = 0;           // banner: at least kMinimumBannerWidth x kMinimumBannerHeight
    int height = 0;
    QString impressionToken;

    static constexpr int kMinimumRewardedSeconds = 15;
    static constexpr int kMinimumBannerWidth = 320;
    static constexpr int kMinimumBannerHeight = 50;

    // The ad of this format in `json`, or nothing with the reason in `why`.
    static std::optional<GADAdContent> fromJson(const QJsonObject& json, const QString& format, QString* why);
};

namespace GADAdKit {
// The tracking consent as the server reads it: "authorized", "denied" or "notDetermined".
QString trackingParameter();
// Asks the server for the unit's next ad of that format and hands it over checked, or an error. A kit that
// has not been started, or an empty unit, fails with GADErrorInvalidRequest.
void loadAd(const QString& unit, const QString& format,
            std::function<void(const std::optional<GADAdContent>&, const std::optional<GADError>&)> done);
// Opens an ad's action: web addresses in the browser, the game's own "tarvolin:" addresses through the
// notification kGADOpenActionURLNotification (the game routes them). Anything else is only logged.
void openActionUrl(const QString& url);
} // namespace GADAdKit

inline const QString kGADOpenActionURLNotification = QStringLiteral("GADOpenActionURLNotification");
