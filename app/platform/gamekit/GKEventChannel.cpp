#include "GKEventChannel.h"

#include "GKLocalPlayer.h"
#include "GKTurnBasedMatch.h"

#include "platform/Platform.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkRequest>
#include <QPointer>
#include <QWebSocket>

GKEventChannel::GKEventChannel() = default;
GKEventChannel::~GKEventChannel() {
    disconnectFromService();
}

void GKEventChannel::connectToService() {
    m_wanted = true;
    auto& service = Platform::shared().gameService();
    if (service.token().isEmpty()) {
        return;
    }
    m_socket = std::make_unique<QWebSocket>();
    connect(m_socket.get(), &QWebSocket::connected, this, [this] { m_connected = true; });
    connect(m_socket.get(), &QWebSocket::disconnected, this, [this] {
        m_connected = false;
        scheduleReconnect();
    });
    connect(m_socket.get(), &QWebSocket::textMessageReceived, this, &GKEventChannel::handleMessage);
    QUrl url = service.urlFor("/v1/events");
    url.setScheme(url.scheme() == QLatin1String("https") ? "wss" : "ws");
    QNetworkRequest request(url);
    request.setRawHeader("Authorization", "Bearer " + service.token().toLatin1());
    m_socket->open(request);
}

void GKEventChannel::disconnectFromService() {
    m_wanted = false;
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->close();
        m_socket.reset();
    }
    m_connected = false;
}

void GKEventChannel::scheduleReconnect() {
    if (!m_wanted || m_reconnectPending || !Platform::isInstalled()) {
        return;
    }
    m_reconnectPending = true;
    QPointer<GKEventChannel> self(this);
    delayCallback(
        [self] {
            if (!self) {
                return;
            }
            self->m_reconnectPending = false;
            if (self->m_wanted && !self->m_connected) {
                self->connectToService();
            }
        },
        kReconnectSeconds);
}

void GKEventChannel::handleMessage(const QString& text) {
    const QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8());
    const QJsonObject message = doc.object();
    if (message.value("type").toString() != QLatin1String("event") || !message.value("seq").isDouble()) {
        return;
    }
    const auto seq = static_cast<qint64>(message.value("seq").toDouble());
    auto& defaults = Platform::shared().userDefaults();
    if (seq > defaults.integerForKey(kLastSeqKey)) {
        defaults.setIntegerForKey(seq, kLastSeqKey);
        Platform::shared().notificationCenter().postNotificationName(
            GKEventReceivedNotification, {},
            {{"event", message.value("event").toString()},
             {"seq", seq},
             {"data", message.value("data").toObject().toVariantMap()}});
        tellMatchListeners(message.value("event").toString(), message.value("data").toObject());
    }
    if (m_socket) {
        m_socket->sendTextMessage(
            QString::fromUtf8(QJsonDocument(QJsonObject{{"type", "ack"}, {"seq", static_cast<double>(seq)}})
                                  .toJson(QJsonDocument::Compact)));
    }
}

void GKEventChannel::tellMatchListeners(const QString& event, const QJsonObject& data) {
    const bool turn = event == QLatin1String("turn") || event == QLatin1String("invitation");
    if (!turn && event != QLatin1String("match_ended")) {
        return;
    }
    const std::optional<GKTurnBasedMatch> match = GKTurnBasedMatch::fromJson(data.value("match").toObject());
    if (!match) {
        qWarning("A match event of the game service carries no valid match; it is left out.");
        return;
    }
    // A copy: a listener may register another.
    const QList<QObject*> listeners = GKLocalPlayer::localPlayer().listeners();
    for (QObject* object : listeners) {
        auto* listener = dynamic_cast<GKTurnBasedEventListener*>(object);
        if (!listener) {
            continue;
        }
        if (turn) {
            listener->playerReceivedTurnEventForMatchDidBecomeActive(*match, true);
        } else {
            listener->playerMatchEnded(*match);
        }
    }
}
