#include "GKTurnBasedMatch.h"

#include "platform/Platform.h"

#include <QJsonArray>

namespace {

GameService& service() {
    return Platform::shared().gameService();
}

// The match of an answer {"match": …}, or the error.
GameService::Completion matchReply(GKTurnBasedMatch::MatchHandler done) {
    return [done = std::move(done)](const QJsonObject& body, const std::optional<GKError>& error) {
        if (error) {
            done(std::nullopt, error);
            return;
        }
        std::optional<GKTurnBasedMatch> m = GKTurnBasedMatch::fromJson(body.value("match").toObject());
        if (!m) {
            done(std::nullopt, GKError::badReply(QStringLiteral("match")));
            return;
        }
        done(m, std::nullopt);
    };
}

QDateTime dateOf(const QJsonValue& v) {
    // Milliseconds as a whole 64-bit number; anything else (toInteger gives 0) is no date.
    const qint64 ms = v.toInteger();
    return ms > 0 ? QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC) : QDateTime();
}

} // namespace

std::optional<GKTurnBasedMatch> GKTurnBasedMatch::fromJson(const QJsonObject& o) {
    if (!o.value("matchID").isString() || !o.value("participants").isArray() ||
        !o.value("status").isDouble()) {
        return std::nullopt;
    }
    GKTurnBasedMatch m;
    m.matchID = o.value("matchID").toString();
    m.purpose = o.value("purpose").toString();
    m.status = o.value("status").toInt();
    m.creationDate = dateOf(o.value("creationDate"));
    m.currentParticipantIndex = o.value("currentParticipant").toInt(-1);
    for (const QJsonValue& v : o.value("participants").toArray()) {
        const QJsonObject p = v.toObject();
        if (!v.isObject() || !(p.value("playerID").isString() || p.value("playerID").isNull())) {
            return std::nullopt;
        }
        m.participants.append(
            GKTurnBasedParticipant{p.value("playerID").toString(), p.value("status").toInt(),
                                   p.value("matchOutcome").toInt(), dateOf(p.value("lastTurnDate"))});
    }
    const QByteArray::FromBase64Result data = QByteArray::fromBase64Encoding(
        o.value("matchData").toString().toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (!data) {
        return std::nullopt;
    }
    m.matchData = *data;
    const QJsonObject message = o.value("message").toObject();
    m.messageKey = message.value("key").toString();
    for (const QJsonValue& a : message.value("arguments").toArray()) {
        m.messageArguments.append(a.toString());
    }
    if (m.participants.size() != 2 || m.currentParticipantIndex < -1 || m.currentParticipantIndex > 1) {
        return std::nullopt;
    }
    return m;
}

const GKTurnBasedParticipant* GKTurnBasedMatch::currentParticipant() const {
    if (currentParticipantIndex < 0 || currentParticipantIndex >= participants.size()) {
        return nullptr;
    }
    return &participants.at(currentParticipantIndex);
}

int GKTurnBasedMatch::indexOfPlayer(const QString& playerID) const {
    for (int i = 0; i < participants.size(); ++i) {
        if (!playerID.isEmpty() && participants.at(i).playerID == playerID) {
            return i;
        }
    }
    return -1;
}

void GKTurnBasedMatch::findMatchForRequestWithCompletionHandler(const GKMatchRequest& request,
                                                                MatchHandler done) {
    QJsonObject body;
    if (!request.recipients.isEmpty()) {
        body.insert("recipients", QJsonArray::fromStringList(request.recipients));
    }
    if (!request.purpose.isEmpty()) {
        body.insert("purpose", request.purpose);
    }
    // The invitation's text goes out as the notice of the first turn.
    const QString invite = request.inviteMessage;
    service().post(QStringLiteral("/v1/matches"), body,
                   matchReply([invite, done = std::move(done)](std::optional<GKTurnBasedMatch> match,
                                                               std::optional<GKError> error) {
                       if (match && !invite.isEmpty()) {
                           match->setLocalizableMessageWithKeyArguments(invite, {});
                       }
                       done(std::move(match), std::move(error));
                   }));
}

void GKTurnBasedMatch::loadMatchesWithCompletionHandler(
    std::function<void(std::optional<QList<GKTurnBasedMatch>>, std::optional<GKError>)> done) {
    service().get(QStringLiteral("/v1/matches"), {},
                  [done = std::move(done)](const QJsonObject& body, const std::optional<GKError>& error) {
                      if (error) {
                          done(std::nullopt, error);
                          return;
                      }
                      QList<GKTurnBasedMatch> list;
                      for (const QJsonValue& v : body.value("matches").toArray()) {
                          std::optional<GKTurnBasedMatch> m = fromJson(v.toObject());
                          if (!m) {
                              done(std::nullopt, GKError::badReply(QStringLiteral("match")));
                              return;
                          }
                          list.append(*m);
                      }
                      done(list, std::nullopt);
                  });
}

void GKTurnBasedMatch::loadMatchWithIDWithCompletionHandler(const QString& matchID, MatchHandler done) {
    service().get(QStringLiteral("/v1/matches/%1").arg(matchID), {}, matchReply(std::move(done)));
}

void GKTurnBasedMatch::setLocalizableMessageWithKeyArguments(const QString& key,
                                                             const QStringList& arguments) {
    messageKey = key;
    messageArguments = arguments;
    m_messagePending = true;
}

void GKTurnBasedMatch::endTurnWithNextParticipantsTurnTimeoutMatchDataCompletionHandler(
    const QList<int>& next, double timeout, const QByteArray& data, MatchHandler done) const {
    QJsonArray seats;
    for (int s : next) {
        seats.append(s);
    }
    const QJsonObject body{{"nextParticipants", seats},
                           {"timeout", static_cast<qint64>(timeout)},
                           {"matchData", QString::fromLatin1(data.toBase64())}};
    const QString path = QStringLiteral("/v1/matches/%1/turn").arg(matchID);
    if (!m_messagePending) {
        service().post(path, body, matchReply(std::move(done)));
        return;
    }
    // The notice first, while the turn is still this player's.
    const QJsonObject message{{"key", messageKey},
                              {"arguments", QJsonArray::fromStringList(messageArguments)}};
    service().post(
        QStringLiteral("/v1/matches/%1/message").arg(matchID), message,
        [path, body, done = std::move(done)](const QJsonObject&, const std::optional<GKError>& error) {
            if (error) {
                done(std::nullopt, error);
                return;
            }
            service().post(path, body, matchReply(done));
        });
}

void GKTurnBasedMatch::endMatchInTurnWithMatchDataCompletionHandler(const QByteArray& data,
                                                                    MatchHandler done) const {
    QJsonArray outcomes;
    for (const GKTurnBasedParticipant& p : participants) {
        outcomes.append(p.matchOutcome);
    }
    // The service tells every participant of the end, this one too; the platform keeps that from him.
    endedHere().insert(matchID);
    service().post(QStringLiteral("/v1/matches/%1/end").arg(matchID),
                   QJsonObject{{"outcomes", outcomes}, {"matchData", QString::fromLatin1(data.toBase64())}},
                   matchReply(std::move(done)));
}

QSet<QString>& GKTurnBasedMatch::endedHere() {
    static QSet<QString> ended;
    return ended;
}

bool GKTurnBasedMatch::takeEndedHere(const QString& matchID) {
    return endedHere().remove(matchID);
}

void GKTurnBasedMatch::removeWithCompletionHandler(std::function<void(std::optional<GKError>)> done) const {
    service().deleteResource(
        QStringLiteral("/v1/matches/%1").arg(matchID),
        [done = std::move(done)](const QJsonObject&, const std::optional<GKError>& error) { done(error); });
}

void GKTurnBasedMatch::rematchWithCompletionHandler(MatchHandler done) const {
    service().post(QStringLiteral("/v1/matches/%1/rematch").arg(matchID), {}, matchReply(std::move(done)));
}
