#include "GameService.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

GKError GKError::badReply(const QString& what) {
    return GKError{QStringLiteral("bad_reply"),
                   QStringLiteral("The game service's answer has no valid %1").arg(what), 200, 0};
}

QString GKError::localizedDescription() const {
    if (code == QLatin1String("network")) {
        return QStringLiteral("لا يوجد اتصال بخادم اللعبة");
    }
    if (code == QLatin1String("cancelled")) {
        return QStringLiteral("تم الغاء تسجيل الدخول");
    }
    return message.isEmpty() ? code : message;
}

GameService::GameService(QUrl baseUrl, QObject* parent)
    : QObject(parent), m_baseUrl(std::move(baseUrl)), m_network(new QNetworkAccessManager(this)) {}

GameService::~GameService() = default;

QUrl GameService::urlFor(const QString& path, const QUrlQuery& query) const {
    QUrl url = m_baseUrl;
    QString base = url.path();
    if (base.endsWith('/')) {
        base.chop(1);
    }
    url.setPath(base + path);
    url.setQuery(query);
    return url;
}

void GameService::get(const QString& path, const QUrlQuery& query, Completion done) {
    send("GET", path, query, {}, std::move(done));
}

void GameService::post(const QString& path, const QJsonObject& body, Completion done) {
    send("POST", path, {}, QJsonDocument(body).toJson(QJsonDocument::Compact), std::move(done));
}

void GameService::getBytes(const QString& path,
                           std::function<void(const QByteArray&, const std::optional<GKError>&)> done) {
    QNetworkRequest request(urlFor(path));
    request.setTransferTimeout(15000);
    if (!m_token.isEmpty()) {
        request.setRawHeader("Authorization", "Bearer " + m_token.toLatin1());
    }
    QNetworkReply* reply = m_network->get(request);
    connect(reply, &QNetworkReply::finished, this, [reply, done = std::move(done)]() {
        reply->deleteLater();
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        if (status == 0) {
            done({}, GKError{QStringLiteral("network"), reply->errorString(), 0, 0});
        } else if (status < 200 || status >= 300) {
            done({}, GKError{QStringLiteral("http_%1").arg(status), reply->errorString(), status, 0});
        } else {
            done(reply->readAll(), std::nullopt);
        }
    });
}

void GameService::postInOrder(const QString& path, const QJsonObject& body, Completion done) {
    m_inOrder.push_back({path, body, std::move(done)});
    if (m_inOrder.size() == 1) {
        sendNextInOrder();
    }
}

void GameService::sendNextInOrder() {
    if (m_inOrder.empty()) {
        return;
    }
    const Pending& next = m_inOrder.front();
    post(next.path, next.body, [this](const QJsonObject& reply, const std::optional<GKError>& error) {
        Completion done = std::move(m_inOrder.front().done);
        m_inOrder.pop_front();
        sendNextInOrder();
        if (done) {
            done(reply, error);
        }
    });
}

void GameService::deleteResource(const QString& path, Completion done) {
    send("DELETE", path, {}, {}, std::move(done));
}

void GameService::send(const QByteArray& method, const QString& path, const QUrlQuery& query,
                       const QByteArray& body, Completion done) {
    QNetworkRequest request(urlFor(path, query));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
    request.setTransferTimeout(15000);
    if (!m_token.isEmpty()) {
        request.setRawHeader("Authorization", "Bearer " + m_token.toLatin1());
    }
    QNetworkReply* reply = m_network->sendCustomRequest(request, method, body);
    connect(reply, &QNetworkReply::finished, this, [reply, done = std::move(done)]() {
        reply->deleteLater();
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        const QByteArray bytes = reply->readAll();
        if (status == 0) {
            done({}, GKError{QStringLiteral("network"), reply->errorString(), 0, 0});
            return;
        }
        QJsonObject object;
        const std::optional<GKError> error =
            readReply(status, bytes, reply->rawHeader("Retry-After"), &object);
        done(object, error);
    });
}

std::optional<GKError> GameService::readReply(int status, const QByteArray& bytes,
                                              const QByteArray& retryAfter, QJsonObject* object) {
    *object = {};
    if (!bytes.isEmpty()) {
        QJsonParseError parseError;
        const QJsonDocument doc = QJsonDocument::fromJson(bytes, &parseError);
        if (parseError.error != QJsonParseError::NoError || !doc.isObject()) {
            return GKError{
                QStringLiteral("bad_reply"),
                QStringLiteral("The game service answered %1 with a body that is not JSON").arg(status),
                status, 0};
        }
        *object = doc.object();
    }
    if (status >= 200 && status < 300) {
        return std::nullopt;
    }
    // An error without a code of its own (none, not text, or empty) is known by its status.
    const QJsonObject error = object->value("error").toObject();
    QString code = error.value("code").toString();
    if (code.isEmpty()) {
        code = QStringLiteral("http_%1").arg(status);
    }
    return GKError{code, error.value("message").toString(), status, retryAfter.toInt()};
}
