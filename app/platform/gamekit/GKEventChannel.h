#pragma once

#include <QJsonObject>
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

private:
    void handleMessage(const QString& text);
    // Turn, invitation and match-ended events reach every registered GKTurnBasedEventListener.
    void tellMatchListeners(const QString& event, const QJsonObject& data);
    void scheduleReconnect();

    std::unique_ptr<QWebSocket> m_socket;
    bool m_wanted = false;
    bool m_connected = false;
    bool m_reconnectPending = false;
};
