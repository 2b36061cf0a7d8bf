#pragma once

#include <QJsonObject>
#include <QList>
#include <QObject>
#include <QString>
#include <memory>

class QWebSocket;

inline const QString GKEventReceivedNotification = QStringLiteral("GKEventReceivedNotification");

// The one WebSocket of a logged-in player. Each event of the service is posted once as
// GKEventReceivedNotification (user info: "event", "seq", "data") and then acknowledged; an event the service
// sends again after a reconnect is recognised by its number and skipped. A dropped connection is tried again
// after a pause.
class GKEventChannel : public QObject {
    Q_OBJECT
public:
    static constexpr double kReconnectSeconds = 5.0;
    static inline const QString kLastSeqKey = QStringLiteral("gameServiceLastEventSeq");

    GKEventChannel();
    ~GKEventChannel() override;

    void connectToService();
    void disconnectFromService();
    bool isConnected() const { return m_connected; }
    // A message of the live relay; kept, in order, until the socket is open.
    void sendLiveMessage(const QJsonObject& message);

signals:
    // A message of the live relay: its type begins with "live_", or it is an error about a live match.
    void liveMessageReceived(const QJsonObject& message);
    // The socket has dropped: the service has ended this player's live matches.
    void connectionLost();

private:
    void handleMessage(const QString& text);
    // Turn, invitation and match-ended events reach every registered GKTurnBasedEventListener.
    void tellMatchListeners(const QString& event, const QJsonObject& data);
    void scheduleReconnect();

    std::unique_ptr<QWebSocket> m_socket;
    QList<QJsonObject> m_outbox;
    bool m_wanted = false;
    bool m_connected = false;
    bool m_reconnectPending = false;
};
