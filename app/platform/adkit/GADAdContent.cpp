#include "GADAdContent.h"

#include "ATTrackingManager.h"
#include "platform/Dispatch.h"
#include "platform/Platform.h"

#include <QDebug>
#include <QJsonValue>
#include <QRegularExpression>
#include <cmath>

namespace {

bool readString(const QJsonObject& json, const char* key, bool required, QString* out, QString* why) {
    const QJsonValue v = json.value(QLatin1String(key));
    if (!v.isString() || (required && v.toString().isEmpty())) {
        *why = QStringLiteral("%1 is not a string").arg(QLatin1String(key));
        return false;
    }
    *out = v.toString();
    return true;
}

bool readChoice(const QJsonObject& json, const char* key, const QStringList& choices, QString* out,
                QString* why) {
    if (!readString(json, key, true, out, why)) {
        return false;
    }
    if (!choices.contains(*out)) {
        *why = QStringLiteral("%1 \"%2\" is none of %3").arg(QLatin1String(key), *out, choices.join(", "));
        return false;
    }
    return true;
}

bool readColour(const QJsonObject& json, const char* key, QColor* out, QString* why) {
    static const QRegularExpression rgb(QStringLiteral("^#[0-9A-Fa-f]{6}$"));
    QString text;
    if (!readString(json, key, true, &text, why)) {
        return false;
    }
    if (!rgb.match(text).hasMatch()) {
        *why = QStringLiteral("%1 \"%2\" is not #RRGGBB").arg(QLatin1String(key), text);
        return false;
    }
    *out = QColor(text);
    return true;
}

bool readCount(const QJsonObject& json, const char* key, int* out, QString* why) {
    const QJsonValue v = json.value(QLatin1String(key));
    const double d = v.toDouble();
    if (!v.isDouble() || !std::isfinite(d) || d != std::floor(d) || std::abs(d) > 1e6) {
        *why = QStringLiteral("%1 is not a whole number").arg(QLatin1String(key));
        return false;
    }
    *out = static_cast<int>(d);
    return true;
}

bool isOpenableAction(const QUrl& url) {
    const QString scheme = url.scheme();
    return url.isValid() && (scheme == QLatin1String("http") || scheme == QLatin1String("https") ||
                             scheme == QLatin1String("tarvolin"));
}

} // namespace

std::optional<GADAdContent> GADAdContent::fromJson(const QJsonObject& json, const QString& format,
                                                   QString* why) {
    QString ignored;
    if (!why) {
        why = &ignored;
    }
    GADAdContent ad;
    if (!readString(json, "adIdentifier", true, &ad.adIdentifier, why) ||
        !readChoice(json, "format", {format}, &ad.format, why) ||
        !readChoice(json, "kind", {QStringLiteral("picture"), QStringLiteral("card")}, &ad.kind, why) ||
        !readChoice(json, "promotion", {QStringLiteral("house"), QStringLiteral("cross")}, &ad.promotion,
                    why) ||
        !readString(json, "title", false, &ad.title, why) ||
        !readString(json, "body", false, &ad.body, why) ||
        !readString(json, "callToAction", false, &ad.callToAction, why) ||
        !readString(json, "actionUrl", true, &ad.actionUrl, why) ||
        !readColour(json, "background", &ad.background, why) ||
        !readColour(json, "foreground", &ad.foreground, why) ||
        !readColour(json, "accent", &ad.accent, why) ||
        !readCount(json, "durationSeconds", &ad.durationSeconds, why) ||
        !readCount(json, "width", &ad.width, why) || !readCount(json, "height", &ad.height, why) ||
        !readString(json, "impressionToken", format != QLatin1String("banner"), &ad.impressionToken, why)) {
        return std::nullopt;
    }
    if (!isOpenableAction(QUrl(ad.actionUrl))) {
        *why = QStringLiteral("actionUrl \"%1\" is not a web or game address").arg(ad.actionUrl);
        return std::nullopt;
    }
    const QJsonValue image = json.value(QLatin1String("imageUrl"));
    if (image.isString() && image.toString().startsWith('/') &&
        !image.toString().startsWith(QLatin1String("//"))) {
        ad.imagePath = image.toString();
    } else if (!image.isNull() && !image.isUndefined()) {
        *why = QStringLiteral("imageUrl is not a path on the server");
        return std::nullopt;
    }
    if (ad.kind == QLatin1String("picture") && ad.imagePath.isEmpty()) {
        *why = QStringLiteral("a picture ad has no imageUrl");
        return std::nullopt;
    }
    if (ad.kind == QLatin1String("card") && ad.title.isEmpty()) {
        *why = QStringLiteral("a card ad has no title");
        return std::nullopt;
    }
    if (format == QLatin1String("rewarded")) {
        ad.durationSeconds = std::max(ad.durationSeconds, kMinimumRewardedSeconds);
    } else {
        ad.durationSeconds = 0;
    }
    if (format == QLatin1String("banner")) {
        ad.width = std::max(ad.width, kMinimumBannerWidth);
        ad.height = std::max(ad.height, kMinimumBannerHeight);
    } else {
        ad.width = 0;
        ad.height = 0;
    }
    return ad;
}

QString GADAdKit::trackingParameter() {
    switch (ATTrackingManager::trackingAuthorizationStatus()) {
    case ATTrackingManagerAuthorizationStatus::Authorized:
        return QStringLiteral("authorized");
    case ATTrackingManagerAuthorizationStatus::Denied:
    case ATTrackingManagerAuthorizationStatus::Restricted:
        return QStringLiteral("denied");
    case ATTrackingManagerAuthorizationStatus::NotDetermined:
        break;
    }
    return QStringLiteral("notDetermined");
}

void GADAdKit::loadAd(
    const QString& unit, const QString& format,
    std::function<void(const std::optional<GADAdContent>&, const std::optional<GADError>&)> done) {
    auto& kit = GADMobileAds::sharedInstance();
    if (!kit.isStarted() || unit.isEmpty()) {
        const GADError error =
            makeGADError(GADErrorInvalidRequest, kit.isStarted() ? QStringLiteral("لا توجد وحدة إعلانية")
                                                                 : QStringLiteral("لم تبدأ الإعلانات بعد"));
        Dispatch::asyncMain([done = std::move(done), error] { done(std::nullopt, error); });
        return;
    }
    kit.server().nextAd(unit, trackingParameter(),
                        [done = std::move(done), unit, format](const QJsonObject& json,
                                                               const std::optional<GADError>& error) {
                            if (error) {
                                qInfo().noquote() << "No" << format << "ad for" << unit << "-"
                                                  << error->localizedDescription;
                                done(std::nullopt, error);
                                return;
                            }
                            QString why;
                            std::optional<GADAdContent> ad = GADAdContent::fromJson(json, format, &why);
                            if (!ad) {
                                qWarning().noquote() << "The ad server's" << format << "ad for" << unit
                                                     << "is not an ad:" << why;
                                done(std::nullopt, makeGADError(GADErrorInvalidResponse));
                                return;
                            }
                            done(ad, std::nullopt);
                        });
}

void GADAdKit::openActionUrl(const QString& url) {
    const QUrl address(url);
    const QString scheme = address.scheme();
    if (scheme == QLatin1String("http") || scheme == QLatin1String("https")) {
        Platform::shared().urls().openURL(address);
    } else if (scheme == QLatin1String("tarvolin")) {
        Platform::shared().notificationCenter().postNotificationName(kGADOpenActionURLNotification, url);
    } else {
        qInfo().noquote() << "An ad's action is no address the game opens:" << url;
    }
}
