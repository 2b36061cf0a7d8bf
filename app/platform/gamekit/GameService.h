#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QUrlQuery>
#include <deque>
#include <functional>
#include <optional>

class QNetworkAccessManager;

// An error from the game service or the way to it.
struct GKError {
    QString code; // the service's code ("invalid_credentials", …), or "network", "bad_reply", "cancelled"
    QString message; // the service's own words, for the log
    int httpStatus = 0;
    int retryAfterSeconds = 0;
    QString localizedDescription() const;
    // An answer of the service that is not what the contract says.
    static GKError badReply(const QString& what);
};

// JSON over HTTP to tarvolin-service, with the player's bearer token. Every completion comes on the main
// thread; a reply that is not what the contract says becomes a "bad_reply" error, never a crash.
class GameService : public QObject {
    Q_OBJECT
public:
    using Completion = std::function<void(const QJsonObject& body, const std::optional<GKError>& error)>;

    explicit GameService(QUrl baseUrl, QObject* parent = nullptr);
    ~GameService() override;

    QUrl baseUrl() const { return m_baseUrl; }
    QString token() const { return m_token; }
    void setToken(const QString& token) { m_token = token; }

    void get(const QString& path, const QUrlQuery& query, Completion done);
    void post(const QString& path, const QJsonObject& body, Completion done);
    void deleteResource(const QString& path, Completion done);
    // A resource that is not JSON (a picture): its bytes.
    void getBytes(const QString& path,
                  std::function<void(const QByteArray&, const std::optional<GKError>&)> done);
    // A POST that waits until every earlier one made through here has been answered.
    void postInOrder(const QString& path, const QJsonObject& body, Completion done);
    QUrl urlFor(const QString& path, const QUrlQuery& query = {}) const;

    // Reads an answer of the service with an HTTP status (not 0): its JSON object, and the error it is when
    // it is one. A body that is not a JSON object is a "bad_reply" error.
    static std::optional<GKError> readReply(int status, const QByteArray& bytes, const QByteArray& retryAfter,
                                            QJsonObject* object);

private:
    void send(const QByteArray& method, const QString& path, const QUrlQuery& query, const QByteArray& body,
              Completion done);

    QUrl m_baseUrl;
    QString m_token;
    void sendNextInOrder();

    QNetworkAccessManager* m_network;
    struct Pending {
        QString path;
        QJsonObject body;
        Completion done;
    };
    std::deque<Pending> m_inOrder;
};
