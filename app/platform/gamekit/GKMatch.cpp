#include "GKMatch.h"

#include "GKLocalPlayer.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <QJsonArray>
#include <QPointer>

namespace {

GKEventChannel& channel() {
    return GKLocalPlayer::localPlayer().events();
}

GKError liveError(const QString& code, const QString& message = {}) {
    GKError e;
    e.code = code;
    e.message = message.isEmpty() ? code : message;
    return e;
}

} // namespace

std::shared_ptr<GKMatch> GKMatch::fromJson(const QJsonObject& o, const QString& localPlayerID) {
    if (!o.value("matchID").isString() || o.value("matchID").toString().isEmpty() ||
        !o.value("players").isArray() || !o.value("expectedPlayerCount").isDouble()) {
        return nullptr;
    }
    const QJsonArray seats = o.value("players").toArray();
    if (seats.size() != 2) {
        return nullptr;
    }
    std::shared_ptr<GKMatch> m(new GKMatch());
    m->m_matchID = o.value("matchID").toString();
    m->m_localPlayerID = localPlayerID;
    bool mine = false;
    for (const QJsonValue& v : seats) {
        const QJsonValue id = v.toObject().value("playerID");
        if (!v.isObject() || !(id.isString() || id.isNull())) {
            return nullptr;
        }
        if (id.toString() == localPlayerID) {
            mine = true;
        } else if (!id.toString().isEmpty()) {
            m->m_players.append(id.toString());
        }
    }
    if (!mine) {
        return nullptr;
    }
    m->m_expectedPlayerCount = std::clamp(o.value("expectedPlayerCount").toInt(), 0, 1);
    return m;
}

GKMatch::~GKMatch() {
    // A match that nobody holds any more is left, so that the other player is not kept waiting.
    if (!m_over && m_connected && GKLocalPlayer::exists()) {
        channel().sendLiveMessage(QJsonObject{{"type", "live_leave"}, {"match", m_matchID}});
    }
}

void GKMatch::connectToRelay() {
    connect(&channel(), &GKEventChannel::liveMessageReceived, this, &GKMatch::handleLiveMessage);
    connect(&channel(), &GKEventChannel::connectionLost, this, &GKMatch::connectionLost);
    channel().sendLiveMessage(QJsonObject{{"type", "live_connect"}, {"match", m_matchID}});
}

bool GKMatch::sendDataToAllPlayersWithDataModeError(const QByteArray& data, int /*mode*/,
                                                    std::optional<GKError>* error) {
    std::optional<GKError> refusal;
    if (data.size() > GKMatchMaxDataBytes) {
        refusal = liveError(QStringLiteral("live_data_too_large"));
    } else if (m_over || !m_connected || !m_otherConnected) {
        refusal = liveError(QStringLiteral("live_not_connected"));
    }
    if (refusal) {
        if (error) {
            *error = refusal;
        }
        return false;
    }
    channel().sendLiveMessage(QJsonObject{
        {"type", "live_send"}, {"match", m_matchID}, {"data", QString::fromLatin1(data.toBase64())}});
    return true;
}

void GKMatch::disconnect() {
    if (m_over) {
        return;
    }
    m_over = true;
    m_connected = false;
    QObject::disconnect(&channel(), nullptr, this, nullptr);
    channel().sendLiveMessage(QJsonObject{{"type", "live_leave"}, {"match", m_matchID}});
}

void GKMatch::handleLiveMessage(const QJsonObject& message) {
    if (m_over || message.value("match").toString() != m_matchID) {
        return;
    }
    const QString type = message.value("type").toString();
    const QString player = message.value("player").toString();
    if (type == QLatin1String("live_state")) {
        const int state = message.value("state").toInt(GKPlayerStateUnknown);
        if (player == m_localPlayerID) {
            m_connected = state == GKPlayerStateConnected;
            m_expectedPlayerCount = std::clamp(message.value("expectedPlayerCount").toInt(1), 0, 1);
            return;
        }
        if (player.isEmpty()) {
            return;
        }
        if (!m_players.contains(player)) {
            m_players.append(player);
        }
        if (state == GKPlayerStateConnected) {
            m_otherConnected = true;
            m_expectedPlayerCount = 0;
            if (delegate()) {
                delegate()->matchPlayerDidChangeConnectionState(this, player, GKPlayerStateConnected);
            }
        } else {
            if (!m_otherConnected && delegate()) {
                delegate()->matchConnectionWithPlayerFailedWithError(
                    this, player,
                    liveError(QStringLiteral("not_connected"), QStringLiteral("the player never came")));
            }
            ended(player);
        }
    } else if (type == QLatin1String("live_data")) {
        const QByteArray::FromBase64Result data = QByteArray::fromBase64Encoding(
            message.value("data").toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
        if (!data) {
            if (delegate()) {
                delegate()->matchDidFailWithError(this, GKError::badReply(QStringLiteral("live data")));
            }
            return;
        }
        if (delegate()) {
            delegate()->matchDidReceiveDataFromRemotePlayer(this, *data, message.value("from").toString());
        }
    } else if (type == QLatin1String("error")) {
        const QJsonObject e = message.value("error").toObject();
        if (delegate()) {
            delegate()->matchDidFailWithError(
                this, liveError(e.value("code").toString(), e.value("message").toString()));
        }
    }
}

void GKMatch::connectionLost() {
    if (m_over) {
        return;
    }
    const QString other = m_players.value(0);
    if (delegate()) {
        delegate()->matchDidFailWithError(this, liveError(QStringLiteral("network")));
    }
    ended(other);
}

void GKMatch::ended(const QString& playerID) {
    m_over = true;
    m_connected = false;
    m_otherConnected = false;
    m_expectedPlayerCount = 0;
    QObject::disconnect(&channel(), nullptr, this, nullptr);
    if (delegate()) {
        delegate()->matchPlayerDidChangeConnectionState(this, playerID, GKPlayerStateDisconnected);
    }
}

// The matchmaker goes with the other shared instances, before the player whose socket it listens to.
struct GKMatchmakerHolder {
    GKMatchmaker matchmaker;
    void loadData() {}
};

GKMatchmaker& GKMatchmaker::sharedMatchmaker() {
    return Shared<GKMatchmakerHolder>::instance().matchmaker;
}

GKMatchmaker::GKMatchmaker() {
    connect(&channel(), &GKEventChannel::liveMessageReceived, this, &GKMatchmaker::handleLiveMessage);
    connect(&channel(), &GKEventChannel::connectionLost, this, [this] {
        // The service has dropped the search with the socket.
        if (m_pending && !m_pending->matchID.isEmpty()) {
            finish(nullptr, liveError(QStringLiteral("network")));
        }
    });
}

void GKMatchmaker::findMatchForRequestWithCompletionHandler(const GKMatchRequest& request,
                                                            MatchHandler done) {
    if (m_pending) {
        // One search at a time: the earlier one ends as cancelled.
        cancel();
    }
    m_pending = Pending{QString(), std::move(done), {}};
    QJsonObject body{{"minPlayers", request.minPlayers}, {"maxPlayers", request.maxPlayers}};
    if (!request.recipients.isEmpty()) {
        body.insert("recipients", QJsonArray::fromStringList(request.recipients));
    }
    QPointer<GKMatchmaker> self(this);
    Platform::shared().gameService().post(
        QStringLiteral("/v1/live"), body,
        [self](const QJsonObject& reply, const std::optional<GKError>& error) {
            if (!self || !self->m_pending || !self->m_pending->matchID.isEmpty()) {
                return;
            }
            if (error) {
                self->finish(nullptr, error);
                return;
            }
            const QJsonObject o = reply.value("match").toObject();
            std::shared_ptr<GKMatch> match = GKMatch::fromJson(o, GKLocalPlayer::localPlayer().playerID());
            if (!match) {
                self->finish(nullptr, GKError::badReply(QStringLiteral("live match")));
                return;
            }
            if (o.value("found").toBool()) {
                self->finish(match, std::nullopt);
                return;
            }
            self->m_pending->matchID = match->matchID();
            if (self->m_pending->early.contains(match->matchID())) {
                self->handleLiveMessage(self->m_pending->early.value(match->matchID()));
            }
        });
}

void GKMatchmaker::matchForInviteCompletionHandler(const GKInvite& invite, MatchHandler done) {
    Platform::shared().gameService().post(
        QStringLiteral("/v1/live/%1/accept").arg(invite.matchID), {},
        [done = std::move(done)](const QJsonObject& reply, const std::optional<GKError>& error) {
            if (error) {
                done(nullptr, error);
                return;
            }
            std::shared_ptr<GKMatch> match =
                GKMatch::fromJson(reply.value("match").toObject(), GKLocalPlayer::localPlayer().playerID());
            if (!match) {
                done(nullptr, GKError::badReply(QStringLiteral("live match")));
                return;
            }
            match->connectToRelay();
            done(match, std::nullopt);
        });
}

void GKMatchmaker::declineInvite(const GKInvite& invite) {
    Platform::shared().gameService().deleteResource(QStringLiteral("/v1/live/%1").arg(invite.matchID),
                                                    [](const QJsonObject&, const std::optional<GKError>&) {});
}

void GKMatchmaker::cancel() {
    if (!m_pending) {
        return;
    }
    if (!m_pending->matchID.isEmpty()) {
        Platform::shared().gameService().deleteResource(
            QStringLiteral("/v1/live/%1").arg(m_pending->matchID),
            [](const QJsonObject&, const std::optional<GKError>&) {});
    }
    finish(nullptr, liveError(QStringLiteral("cancelled")));
}

void GKMatchmaker::inviteReceived(const QJsonObject& message) {
    const QJsonObject from = message.value("from").toObject();
    GKInvite invite{message.value("match").toObject().value("matchID").toString(),
                    GKPlayer{from.value("playerID").toString(), from.value("alias").toString(), true, {}}};
    if (invite.matchID.isEmpty() || invite.sender.playerID.isEmpty()) {
        qWarning("An invitation to a live match carries no match or no sender; it is left out.");
        return;
    }
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        QStringLiteral("دعوة إلى مباراة مباشرة"),
        QStringLiteral("%1 يدعوك إلى مباراة مباشرة الآن").arg(invite.sender.displayName),
        QStringLiteral("لا"), {QStringLiteral("قبول")}, [invite](int index) {
            if (index == 0) {
                GKMatchmaker::sharedMatchmaker().declineInvite(invite);
                return;
            }
            // A copy: a listener may register another.
            const QList<QObject*> listeners = GKLocalPlayer::localPlayer().listeners();
            for (QObject* object : listeners) {
                if (auto* listener = dynamic_cast<GKInviteEventListener*>(object)) {
                    listener->playerDidAcceptInvite(invite);
                }
            }
        });
}

void GKMatchmaker::handleLiveMessage(const QJsonObject& message) {
    if (!m_pending) {
        return;
    }
    const QString type = message.value("type").toString();
    const QJsonValue about = message.value("match");
    const QString matchID =
        about.isObject() ? about.toObject().value("matchID").toString() : about.toString();
    if (m_pending->matchID.isEmpty()) {
        // The second player may come before the answer to the search has arrived.
        if (type == QLatin1String("live_match")) {
            m_pending->early.insert(matchID, message);
        }
        return;
    }
    if (matchID != m_pending->matchID) {
        return;
    }
    if (type == QLatin1String("live_match")) {
        std::shared_ptr<GKMatch> match =
            GKMatch::fromJson(message.value("match").toObject(), GKLocalPlayer::localPlayer().playerID());
        finish(match, match ? std::nullopt
                            : std::optional<GKError>(GKError::badReply(QStringLiteral("live match"))));
    } else if (type == QLatin1String("live_state") &&
               message.value("state").toInt() == GKPlayerStateDisconnected) {
        // Declined by the invited player, or given up by the service.
        finish(nullptr, liveError(message.value("reason").toString(QStringLiteral("cancelled"))));
    }
}

void GKMatchmaker::finish(std::shared_ptr<GKMatch> match, std::optional<GKError> error) {
    if (!m_pending) {
        return;
    }
    MatchHandler done = std::move(m_pending->done);
    m_pending.reset();
    if (match) {
        match->connectToRelay();
    }
    if (done) {
        done(match, error);
    }
}
