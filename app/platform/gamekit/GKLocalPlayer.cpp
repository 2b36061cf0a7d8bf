#include "GKLocalPlayer.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"

namespace {
// GKLocalPlayer is a QObject with a private constructor path through Shared<>.
struct Holder {
    GKLocalPlayer player;
    void loadData() {}
};
} // namespace

GKLocalPlayer& GKLocalPlayer::localPlayer() {
    return Shared<Holder>::instance().player;
}

bool GKLocalPlayer::exists() {
    return Shared<Holder>::exists();
}

void GKLocalPlayer::setAuthenticateHandler(AuthenticateHandler handler) {
    m_handler = std::move(handler);
    startLogin();
}

void GKLocalPlayer::registerListener(QObject* listener) {
    if (listener && !m_listeners.contains(listener)) {
        m_listeners.append(listener);
        // A listener that goes leaves the list with it.
        connect(listener, &QObject::destroyed, this, [this, listener] { m_listeners.removeAll(listener); });
    }
}

void GKLocalPlayer::callHandler(ViewController* screen, std::optional<GKError> error) {
    if (m_handler) {
        // A copy: the handler may install another one.
        AuthenticateHandler handler = m_handler;
        handler(screen, std::move(error));
    }
}

void GKLocalPlayer::startLogin() {
    auto& platform = Platform::shared();
    const QString token = platform.userDefaults().stringForKey(kTokenKey);
    auto showLoginScreen = [this] {
        ViewController* screen = Platform::shared().navigator().instantiateViewControllerWithIdentifier(
            QStringLiteral("LoginViewController"));
        callHandler(screen, std::nullopt);
    };
    if (token.isEmpty()) {
        showLoginScreen();
        return;
    }
    GameService& service = platform.gameService();
    service.setToken(token);
    service.get("/v1/players/me", {}, [this, showLoginScreen](const QJsonObject& body, const auto& error) {
        if (error && error->code == QLatin1String("unauthorized")) {
            // The service no longer takes the kept token: log in again.
            Platform::shared().userDefaults().removeObjectForKey(kTokenKey);
            Platform::shared().gameService().setToken(QString());
            setAuthenticatedPlayer(std::nullopt);
            showLoginScreen();
            return;
        }
        if (error) {
            callHandler(nullptr, error);
            return;
        }
        const auto player = GKPlayer::fromJson(body.value("player").toObject());
        if (!player) {
            callHandler(nullptr, GKError{QStringLiteral("bad_reply"),
                                         QStringLiteral("no player in the answer"), 200, 0});
            return;
        }
        callHandler(nullptr, std::nullopt);
        setAuthenticatedPlayer(player);
    });
}

void GKLocalPlayer::signedIn(const QJsonObject& body, std::function<void(std::optional<GKError>)> done) {
    const auto player = GKPlayer::fromJson(body.value("player").toObject());
    const QString token = body.value("token").toString();
    if (!player || token.isEmpty()) {
        done(
            GKError{QStringLiteral("bad_reply"), QStringLiteral("no player or token in the answer"), 200, 0});
        return;
    }
    Platform::shared().userDefaults().setStringForKey(token, kTokenKey);
    Platform::shared().gameService().setToken(token);
    done(std::nullopt);
    callHandler(nullptr, std::nullopt);
    setAuthenticatedPlayer(player);
}

void GKLocalPlayer::createAccount(const QString& displayName, const QString& password,
                                  std::function<void(std::optional<GKError>)> done) {
    Platform::shared().gameService().post(
        "/v1/accounts", QJsonObject{{"displayName", displayName}, {"password", password}},
        [this, done = std::move(done)](const QJsonObject& body, const auto& error) {
            if (error) {
                done(error);
                return;
            }
            signedIn(body, done);
        });
}

void GKLocalPlayer::logIn(const QString& displayName, const QString& password,
                          std::function<void(std::optional<GKError>)> done) {
    Platform::shared().gameService().post(
        "/v1/sessions", QJsonObject{{"displayName", displayName}, {"password", password}},
        [this, done = std::move(done)](const QJsonObject& body, const auto& error) {
            if (error) {
                done(error);
                return;
            }
            signedIn(body, done);
        });
}

void GKLocalPlayer::cancelLogin() {
    callHandler(nullptr, GKError{QStringLiteral("cancelled"),
                                 QStringLiteral("The player closed the login screen"), 0, 0});
}

void GKLocalPlayer::logOut() {
    auto& service = Platform::shared().gameService();
    if (!service.token().isEmpty()) {
        service.deleteResource("/v1/sessions/current", [](const QJsonObject&, const auto&) {});
    }
    service.setToken(QString());
    Platform::shared().userDefaults().removeObjectForKey(kTokenKey);
    setAuthenticatedPlayer(std::nullopt);
}

void GKLocalPlayer::setAuthenticatedPlayer(const std::optional<GKPlayer>& player) {
    const bool was = m_authenticated;
    m_authenticated = player.has_value();
    m_player = player.value_or(GKPlayer{});
    if (m_authenticated) {
        // Event numbers belong to one player: another player on this profile starts from the beginning.
        auto& defaults = Platform::shared().userDefaults();
        if (defaults.stringForKey(QStringLiteral("gameServicePlayerID")) != m_player.playerID) {
            defaults.setStringForKey(m_player.playerID, QStringLiteral("gameServicePlayerID"));
            defaults.setIntegerForKey(0, GKEventChannel::kLastSeqKey);
        }
        if (!m_events.isConnected()) {
            m_events.connectToService();
        }
    } else {
        m_events.disconnectFromService();
    }
    if (was != m_authenticated) {
        Platform::shared().notificationCenter().postNotificationName(
            GKPlayerAuthenticationDidChangeNotificationName);
    }
}
