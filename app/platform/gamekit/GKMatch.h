#pragma once

#include "GKTurnBasedMatch.h"
#include "GameKit.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

enum GKMatchSendDataMode { GKMatchSendDataReliable = 0, GKMatchSendDataUnreliable = 1 };
enum GKPlayerConnectionState {
    GKPlayerStateUnknown = 0,
    GKPlayerStateConnected = 1,
    GKPlayerStateDisconnected = 2
};

// The largest piece of data a live match carries at once.
constexpr int GKMatchMaxDataBytes = 4096;

class GKMatch;

class GKMatchDelegate {
public:
    virtual ~GKMatchDelegate() = default;
    virtual void matchDidReceiveDataFromRemotePlayer(GKMatch* match, const QByteArray& data,
                                                     const QString& playerID) = 0;
    virtual void matchPlayerDidChangeConnectionState(GKMatch* match, const QString& playerID, int state) = 0;
    // The other player was never connected: he did not come, or the service gave up waiting for him.
    virtual void matchConnectionWithPlayerFailedWithError(GKMatch* match, const QString& playerID,
                                                          const GKError& error) = 0;
    virtual void matchDidFailWithError(GKMatch* match, const GKError& error) = 0;
};

// A live match with one other player, relayed in order by the game service over the player's event
// WebSocket. It connects itself when made; the delegate hears the other player come and go and his data.
// Everything reaches the delegate on the main thread.
class GKMatch : public QObject {
    Q_OBJECT
public:
    // A match as the service describes it; nothing when the description breaks the contract.
    static std::shared_ptr<GKMatch> fromJson(const QJsonObject& o, const QString& localPlayerID);
    ~GKMatch() override;

    QString matchID() const { return m_matchID; }
    // The other players (one), once known.
    QStringList players() const { return m_players; }
    // How many players the match still waits for.
    int expectedPlayerCount() const { return m_expectedPlayerCount; }
    bool isConnected() const { return m_connected; }

    // A delegate that is a QObject as well is forgotten when it is destroyed: a match that outlives the
    // helper or screen that listened to it (its connection lost as the program ends, say) then tells no one.
    void setDelegate(GKMatchDelegate* delegate) {
        m_delegate = delegate;
        m_delegateObject = dynamic_cast<QObject*>(delegate);
        m_delegateIsObject = m_delegateObject != nullptr;
    }
    GKMatchDelegate* delegate() const {
        return m_delegateIsObject && !m_delegateObject ? nullptr : m_delegate;
    }

    // Both modes are reliable and in order here. False, with the error, when the data is too large or the
    // other player is not connected.
    bool sendDataToAllPlayersWithDataModeError(const QByteArray& data, int mode,
                                               std::optional<GKError>* error);
    // Leaves the match; the other player sees this one disconnect.
    void disconnect();

private:
    friend class GKMatchmaker;
    GKMatch() = default;
    void connectToRelay();
    void handleLiveMessage(const QJsonObject& message);
    void connectionLost();
    void ended(const QString& playerID);

    QString m_matchID;
    QString m_localPlayerID;
    QStringList m_players;
    int m_expectedPlayerCount = 1;
    bool m_connected = false;
    bool m_otherConnected = false;
    bool m_over = false;
    GKMatchDelegate* m_delegate = nullptr;
    QPointer<QObject> m_delegateObject;
    bool m_delegateIsObject = false;
};

// An invitation to a live match, as the invited player receives it.
struct GKInvite {
    QString matchID;
    GKPlayer sender;
};

// What reaches the players' listeners (registered with GKLocalPlayer) of invitations to live matches.
class GKInviteEventListener {
public:
    virtual ~GKInviteEventListener() = default;
    // The local player has accepted an invitation; the listener takes the match with
    // GKMatchmaker matchForInviteCompletionHandler.
    virtual void playerDidAcceptInvite(const GKInvite& invite) = 0;
};

// Finds live matches: by invitation (the request's recipients) or automatically. A search that waits for the
// second player ends when he comes, when it is cancelled (error "cancelled"), or when the service gives up
// after two minutes or the invited player declines (the service's reason as the error's code).
class GKMatchmaker : public QObject {
    Q_OBJECT
public:
    using MatchHandler = std::function<void(std::shared_ptr<GKMatch>, std::optional<GKError>)>;

    static GKMatchmaker& sharedMatchmaker();

    void findMatchForRequestWithCompletionHandler(const GKMatchRequest& request, MatchHandler done);
    void matchForInviteCompletionHandler(const GKInvite& invite, MatchHandler done);
    // Declines an invitation; the inviter's search ends.
    void declineInvite(const GKInvite& invite);
    // Ends the search under way.
    void cancel();
    bool isSearching() const { return m_pending.has_value(); }

    // The invitation that arrived over the event WebSocket: the player is asked, and his acceptance reaches
    // every registered GKInviteEventListener.
    void inviteReceived(const QJsonObject& message);

private:
    friend struct GKMatchmakerHolder;
    GKMatchmaker();
    void handleLiveMessage(const QJsonObject& message);
    void finish(std::shared_ptr<GKMatch> match, std::optional<GKError> error);

    struct Pending {
        QString matchID; // empty until the service has answered
        MatchHandler done;
        QHash<QString, QJsonObject> early; // news of the second player before the answer
    };
    std::optional<Pending> m_pending;
};
