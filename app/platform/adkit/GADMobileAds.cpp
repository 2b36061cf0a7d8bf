#include "GADMobileAds.h"

#include "GADAdPresenter.h"
#include "platform/Dispatch.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <QDebug>
#include <QJsonValue>

GADError makeGADError(int code, const QString& detail) {
    QString text;
    switch (code) {
    case GADErrorNoFill:
        text = QStringLiteral("لا يوجد إعلان متاح الآن");
        break;
    case GADErrorNetworkError:
        text = QStringLiteral("تعذر الوصول إلى خادم الإعلانات");
        break;
    case GADErrorInvalidRequest:
        text = QStringLiteral("طلب إعلان غير صالح");
        break;
    case GADErrorInvalidResponse:
        text = QStringLiteral("رد غير صالح من خادم الإعلانات");
        break;
    case GADErrorCannotPresent:
        text = QStringLiteral("لا يمكن عرض الإعلان");
        break;
    default:
        text = QStringLiteral("خطأ في الإعلانات");
        break;
    }
    if (!detail.isEmpty()) {
        text += QStringLiteral(": ") + detail;
    }
    return GADError{code, text};
}

GADMobileAds& GADMobileAds::sharedInstance() {
    return Shared<GADMobileAds>::instance();
}

GADMobileAds::~GADMobileAds() {
    // Whatever is on screen belongs to this run of the kit.
    GADAdPresenter::resetShared();
}

void GADMobileAds::startWithCompletionHandler(std::function<void()> handler) {
    m_started = true;
    if (handler) {
        Dispatch::asyncMain(std::move(handler));
    }
}

void GADMobileAds::setServer(std::unique_ptr<GADAdServer> server) {
    sharedInstance().m_server = std::move(server);
}

GADAdServer& GADMobileAds::server() {
    if (!m_server) {
        m_server = std::make_unique<GADServiceAdServer>();
    }
    return *m_server;
}

namespace {

// The kit's error for what the game service answered.
GADError errorFromService(const GKError& e, bool noFillMeansNoAd) {
    const QString detail =
        e.code + (e.message.isEmpty() ? QString() : QStringLiteral(" (") + e.message + ")");
    if (e.code == QLatin1String("network")) {
        return makeGADError(GADErrorNetworkError, detail);
    }
    if (e.code == QLatin1String("bad_reply")) {
        return makeGADError(GADErrorInvalidResponse, detail);
    }
    if (noFillMeansNoAd && (e.code == QLatin1String("no_fill") || e.httpStatus == 404)) {
        return makeGADError(GADErrorNoFill, detail);
    }
    if (e.httpStatus >= 500) {
        return makeGADError(GADErrorNetworkError, detail);
    }
    if (e.httpStatus >= 400) {
        return makeGADError(GADErrorInvalidRequest, detail);
    }
    return makeGADError(GADErrorInvalidResponse, detail);
}

// Nobody logged in: the request is refused here, after the caller's call returns.
bool failWithoutLogin(std::function<void(const GADError&)> fail) {
    if (!Platform::shared().gameService().token().isEmpty()) {
        return false;
    }
    Dispatch::asyncMain([fail = std::move(fail)] {
        fail(makeGADError(GADErrorInvalidRequest, QStringLiteral("لم يسجل اللاعب الدخول")));
    });
    return true;
}

} // namespace

void GADServiceAdServer::nextAd(
    const QString& unit, const QString& tracking,
    std::function<void(const QJsonObject&, const std::optional<GADError>&)> done) {
    if (failWithoutLogin([done](const GADError& e) { done({}, e); })) {
        return;
    }
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("unit"), unit);
    query.addQueryItem(QStringLiteral("tracking"), tracking);
    Platform::shared().gameService().get(
        QStringLiteral("/v1/ads/next"), query,
        [done = std::move(done)](const QJsonObject& body, const std::optional<GKError>& error) {
            if (error) {
                done({}, errorFromService(*error, true));
                return;
            }
            const QJsonValue ad = body.value(QStringLiteral("ad"));
            if (!ad.isObject()) {
                done({}, makeGADError(GADErrorInvalidResponse, QStringLiteral("no ad object")));
                return;
            }
            done(ad.toObject(), std::nullopt);
        });
}

void GADServiceAdServer::recordImpression(
    const QString& token, const QString& tracking,
    std::function<void(const QString&, const std::optional<GADError>&)> done) {
    if (failWithoutLogin([done](const GADError& e) { done({}, e); })) {
        return;
    }
    Platform::shared().gameService().post(
        QStringLiteral("/v1/ads/impressions"),
        QJsonObject{{QStringLiteral("impressionToken"), token}, {QStringLiteral("tracking"), tracking}},
        [done = std::move(done)](const QJsonObject& body, const std::optional<GKError>& error) {
            if (error) {
                done({}, errorFromService(*error, false));
                return;
            }
            const QString id = body.value(QStringLiteral("impressionIdentifier")).toString();
            if (id.isEmpty()) {
                done({}, makeGADError(GADErrorInvalidResponse, QStringLiteral("no impressionIdentifier")));
                return;
            }
            done(id, std::nullopt);
        });
}

void GADServiceAdServer::claimReward(const QString& impressionId,
                                     std::function<void(const std::optional<GADError>&)> done) {
    if (failWithoutLogin([done](const GADError& e) { done(e); })) {
        return;
    }
    Platform::shared().gameService().post(
        QStringLiteral("/v1/ads/rewards"),
        QJsonObject{{QStringLiteral("impressionIdentifier"), impressionId}},
        [done = std::move(done)](const QJsonObject&, const std::optional<GKError>& error) {
            done(error ? std::optional<GADError>(errorFromService(*error, false)) : std::nullopt);
        });
}

QUrl GADServiceAdServer::creativeUrl(const QString& relative) const {
    return Platform::shared().gameService().urlFor(relative);
}
