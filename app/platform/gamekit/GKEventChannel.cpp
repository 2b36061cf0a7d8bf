#include "GKEventChannel.h"

#include "GKLocalPlayer.h"
#include "GKMatch.h"
#include "GKTurnBasedMatch.h"

#include "platform/Platform.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkRequest>
#include <QPointer>
#include <QWebSocket>
#include <utility>

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
    connect(m_socket.get(), &QWebSocket::connected, this, [this] {
        m_connected = true;
        const QList<QJsonObject> waiting = std::exchange(m_outbox, {});
        for (const QJsonObject& message : waiting) {
            sendLiveMessage(message);
        }
    });
    connect(m_socket.get(), &QWebSocket::disconnected, this, [this] {
        const bool was = m_connected;
        m_connected = false;
        m_outbox.clear();
        if (was) {
            emit connectionLost();
        }
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
    m_outbox.clear();
    if (std::exchange(m_connected, false)) {
        emit connectionLost();
    }
}

void GKEventChannel::sendLiveMessage(const QJsonObject& message) {
    if (!m_connected || !m_socket) {
        m_outbox.append(message);
        return;
    }
    m_socket->sendTextMessage(QString::fromUtf8(QJsonDocument(message).toJson(QJsonDocument::Compact)));
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
    const QString type = message.value("type").toString();
    if (type.startsWith(QLatin1String("live_")) ||
        (type == QLatin1String("error") && message.value("match").isString())) {
        if (type == QLatin1String("live_invitation")) {
            GKMatchmaker::sharedMatchmaker().inviteReceived(message);
        }
        emit liveMessageReceived(message);
        return;
    }
    if (type != QLatin1String("event") || !message.value("seq").isDouble()) {
        return;
    }
    // A sequence number that is no whole 64-bit number reads as 0, which is never newer.
    const qint64 seq = message.value("seq").toInteger();
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
    // A player is not told of the end of a match that he ended himself, as the platform does.
    if (!turn && GKTurnBasedMatch::takeEndedHere(match->matchID)) {
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
