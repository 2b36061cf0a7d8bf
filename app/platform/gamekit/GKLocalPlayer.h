#pragma once

#include "GKEventChannel.h"
#include "GameKit.h"

#include <QObject>
#include <QString>
#include <functional>
#include <optional>

class ViewController;

inline const QString GKPlayerAuthenticationDidChangeNotificationName =
    QStringLiteral("GKPlayerAuthenticationDidChangeNotificationName");

// The player of this profile on the game service. Setting the authenticate handler starts a login: with a
// kept token it checks it silently; without one (or with a token the service no longer takes) it hands over
// the login screen; without a connection it gives an error. The handler stays installed and is called again
// when the login screen finishes. The token lives in the player's profile.
class GKLocalPlayer : public QObject {
    Q_OBJECT
public:
    using AuthenticateHandler =
        std::function<void(ViewController* loginScreen, std::optional<GKError> error)>;

    static inline const QString kTokenKey = QStringLiteral("gameServiceToken");

    static GKLocalPlayer& localPlayer();
    // Whether the shared player is there now (it goes with the other shared instances).
    static bool exists();

    QString playerID() const { return m_player.playerID; }
    QString displayName() const { return m_player.displayName; }
    GKPlayer player() const { return m_player; }
    bool isAuthenticated() const { return m_authenticated; }

    void setAuthenticateHandler(AuthenticateHandler handler);
    const AuthenticateHandler& authenticateHandler() const { return m_handler; }
    void registerListener(QObject* listener);
    const QList<QObject*>& listeners() const { return m_listeners; }
    GKEventChannel& events() { return m_events; }

    // From the login screen.
    void createAccount(const QString& displayName, const QString& password,
                       std::function<void(std::optional<GKError>)> done);
    void logIn(const QString& displayName, const QString& password,
               std::function<void(std::optional<GKError>)> done);
    void cancelLogin();
    void logOut();

    // The state as the service last told it; posts the change notification when it changes.
    void setAuthenticatedPlayer(const std::optional<GKPlayer>& player);

private:
    void startLogin();
    void callHandler(ViewController* screen, std::optional<GKError> error);
    void signedIn(const QJsonObject& body, std::function<void(std::optional<GKError>)> done);

    GKEventChannel m_events;
    AuthenticateHandler m_handler;
    GKPlayer m_player;
    bool m_authenticated = false;
    QList<QObject*> m_listeners;
};
