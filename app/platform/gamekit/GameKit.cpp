#include "GameKit.h"

#include "platform/Platform.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QTimer>
#include <cmath>

namespace {
GameService& service() {
    return Platform::shared().gameService();
}

// 64-bit numbers come as JSON integers, or as decimal strings from clients that read numbers as doubles.
std::optional<qint64> integer(const QJsonValue& v) {
    if (v.isDouble()) {
        // Only a whole number that a 64-bit integer holds (2^63 is the first one that it does not).
        const double d = v.toDouble();
        if (std::isfinite(d) && d >= -9.223372036854775808e18 && d < 9.223372036854775808e18 &&
            std::trunc(d) == d) {
            return static_cast<qint64>(d);
        }
        return std::nullopt;
    }
    if (v.isString()) {
        bool ok = false;
        const qint64 n = v.toString().toLongLong(&ok);
        return ok ? std::optional<qint64>(n) : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<GKPlayer> GKPlayer::fromJson(const QJsonObject& o) {
    if (!o.value("playerID").isString() || !o.value("displayName").isString()) {
        return std::nullopt;
    }
    return GKPlayer{o.value("playerID").toString(), o.value("displayName").toString(),
                    o.value("isFriend").toBool(), o.value("photoURL").toString()};
}

void GKPlayer::loadPhotoWithCompletionHandler(
    std::function<void(QImage, std::optional<GKError>)> done) const {
    const QString path = photoURL.isEmpty() ? QStringLiteral("/v1/players/%1/photo").arg(playerID) : photoURL;
    service().getBytes(
        path, [done = std::move(done)](const QByteArray& bytes, const std::optional<GKError>& error) {
            if (error) {
                done({}, error);
                return;
            }
            QImage image;
            if (!image.loadFromData(bytes)) {
                done({}, GKError{QStringLiteral("bad_reply"),
                                 QStringLiteral("The player's picture cannot be read"), 200, 0});
                return;
            }
            done(image, std::nullopt);
        });
}

void GKPlayer::loadPlayersForIdentifiers(const QStringList& ids,
                                         std::function<void(QList<GKPlayer>, std::optional<GKError>)> done) {
    if (ids.isEmpty()) {
        // Nobody asked about: nobody, answered as any other answer comes.
        QTimer::singleShot(0, qApp, [done = std::move(done)] { done({}, std::nullopt); });
        return;
    }
    QUrlQuery query;
    query.addQueryItem("ids", ids.join(','));
    loadPlayerList(query, std::move(done));
}

void GKPlayer::loadPlayersNamed(const QString& prefix,
                                std::function<void(QList<GKPlayer>, std::optional<GKError>)> done) {
    QUrlQuery query;
    query.addQueryItem("name", QString::fromLatin1(QUrl::toPercentEncoding(prefix)));
    loadPlayerList(query, std::move(done));
}

void GKPlayer::loadPlayerList(const QUrlQuery& query,
                              std::function<void(QList<GKPlayer>, std::optional<GKError>)> done) {
    service().get("/v1/players", query, [done = std::move(done)](const QJsonObject& body, const auto& error) {
        if (error) {
            done({}, error);
            return;
        }
        QList<GKPlayer> players;
        for (const QJsonValue& v : body.value("players").toArray()) {
            if (auto p = fromJson(v.toObject())) {
                players.append(*p);
            }
        }
        done(players, std::nullopt);
    });
}

GKScore GKScore::initWithLeaderboardIdentifier(const QString& identifier) {
    GKScore s;
    s.leaderboardIdentifier = identifier;
    return s;
}

std::optional<GKScore> GKScore::fromJson(const QJsonObject& o) {
    const auto value = integer(o.value("value"));
    const auto context = integer(o.value("context"));
    const auto rank = integer(o.value("rank"));
    const auto player = GKPlayer::fromJson(o.value("player").toObject());
    if (!value || !context || !rank || !player) {
        return std::nullopt;
    }
    GKScore s;
    s.value = *value;
    s.context = *context;
    s.rank = *rank;
    s.player = *player;
    if (const auto date = integer(o.value("date"))) {
        s.date = QDateTime::fromMSecsSinceEpoch(*date);
    }
    return s;
}

void GKScore::reportScoresWithCompletionHandler(const QList<GKScore>& scores,
                                                std::function<void(std::optional<GKError>)> done) {
    if (scores.isEmpty()) {
        done(std::nullopt);
        return;
    }
    // One leaderboard, one score per player: the last of the list is the one that stands. Each report carries
    // the whole total, so reports leave in the order they were made and an earlier one never overtakes a
    // later one on the way.
    const GKScore& s = scores.last();
    service().postInOrder(
        "/v1/leaderboard/scores",
        QJsonObject{{"value", QString::number(s.value)}, {"context", QString::number(s.context)}},
        [done = std::move(done)](const QJsonObject&, const auto& error) { done(error); });
}

GKLeaderboard GKLeaderboard::initWithPlayers(const QList<GKPlayer>& players) {
    GKLeaderboard l;
    l.players = players;
    l.byPlayers = true;
    return l;
}

void GKLeaderboard::loadScoresWithCompletionHandler(
    std::function<void(std::optional<QList<GKScore>>, std::optional<GKError>)> done) {
    QUrlQuery query;
    if (byPlayers && players.isEmpty()) {
        // Asked about nobody: nobody's score, answered as any other answer comes.
        QTimer::singleShot(0, qApp, [done = std::move(done)] { done(QList<GKScore>(), std::nullopt); });
        return;
    }
    if (!players.isEmpty()) {
        QStringList ids;
        for (const GKPlayer& p : std::as_const(players)) {
            ids << p.playerID;
        }
        query.addQueryItem("players", ids.join(','));
    } else {
        query.addQueryItem("scope", playerScope == FriendsOnly ? "friends" : "global");
        if (playerScope != FriendsOnly) {
            query.addQueryItem("from", QString::number(std::max<qint64>(1, range.location)));
            query.addQueryItem("count", QString::number(std::clamp<qint64>(range.length, 1, 100)));
        }
    }
    service().get("/v1/leaderboard", query,
                  [this, done = std::move(done)](const QJsonObject& body, const auto& error) {
                      if (error) {
                          done(std::nullopt, error);
                          return;
                      }
                      QList<GKScore> scores;
                      for (const QJsonValue& v : body.value("scores").toArray()) {
                          const auto s = GKScore::fromJson(v.toObject());
                          if (!s) {
                              done(std::nullopt, GKError::badReply("score"));
                              return;
                          }
                          scores.append(*s);
                      }
                      localPlayerScore.reset();
                      if (body.value("local").isObject()) {
                          localPlayerScore = GKScore::fromJson(body.value("local").toObject());
                      }
                      maxRange = integer(body.value("total")).value_or(scores.size());
                      done(scores, std::nullopt);
                  });
}

std::optional<GKFriendRequest> GKFriendRequest::fromJson(const QJsonObject& o) {
    const auto from = GKPlayer::fromJson(o.value("from").toObject());
    const auto to = GKPlayer::fromJson(o.value("to").toObject());
    if (!o.value("requestID").isString() || !from || !to) {
        return std::nullopt;
    }
    GKFriendRequest r{o.value("requestID").toString(), *from, *to, o.value("message").toString(),
                      o.value("status").toString(),    {}};
    if (const auto created = integer(o.value("createdAt"))) {
        r.createdAt = QDateTime::fromMSecsSinceEpoch(*created);
    }
    return r;
}

void GKFriendRequest::sendFriendRequest(const QString& playerID, const QString& message,
                                        std::function<void(std::optional<GKError>)> done) {
    service().post("/v1/friend-requests", QJsonObject{{"playerID", playerID}, {"message", message}},
                   [done = std::move(done)](const QJsonObject&, const auto& error) { done(error); });
}

void GKFriendRequest::loadFriendRequests(
    bool incoming, std::function<void(QList<GKFriendRequest>, std::optional<GKError>)> done) {
    QUrlQuery query;
    query.addQueryItem("direction", incoming ? "incoming" : "outgoing");
    service().get("/v1/friend-requests", query,
                  [done = std::move(done)](const QJsonObject& body, const auto& error) {
                      QList<GKFriendRequest> list;
                      if (!error) {
                          for (const QJsonValue& v : body.value("requests").toArray()) {
                              if (auto r = fromJson(v.toObject())) {
                                  list.append(*r);
                              }
                          }
                      }
                      done(list, error);
                  });
}

void GKFriendRequest::answerFriendRequest(const QString& requestID, bool accept,
                                          std::function<void(std::optional<GKError>)> done) {
    service().post(QStringLiteral("/v1/friend-requests/%1/%2").arg(requestID, accept ? "accept" : "decline"),
                   {}, [done = std::move(done)](const QJsonObject&, const auto& error) { done(error); });
}

void GKFriendRequest::loadFriends(std::function<void(QList<GKPlayer>, std::optional<GKError>)> done) {
    service().get("/v1/friends", {}, [done = std::move(done)](const QJsonObject& body, const auto& error) {
        QList<GKPlayer> list;
        if (!error) {
            for (const QJsonValue& v : body.value("players").toArray()) {
                if (auto p = GKPlayer::fromJson(v.toObject())) {
                    list.append(*p);
                }
            }
        }
        done(list, error);
    });
}

GKAchievement GKAchievement::initWithIdentifier(const QString& identifier) {
    GKAchievement a;
    a.identifier = identifier;
    return a;
}

std::optional<GKAchievement> GKAchievement::fromJson(const QJsonObject& o) {
    if (!o.value("identifier").isString() || !o.value("percentComplete").isDouble()) {
        return std::nullopt;
    }
    GKAchievement a = initWithIdentifier(o.value("identifier").toString());
    a.percentComplete = o.value("percentComplete").toDouble();
    if (const auto date = integer(o.value("lastReportedDate"))) {
        a.lastReportedDate = QDateTime::fromMSecsSinceEpoch(*date);
    }
    return a;
}

void GKAchievement::loadAchievementsWithCompletionHandler(
    std::function<void(std::optional<QList<GKAchievement>>, std::optional<GKError>)> done) {
    service().get("/v1/achievements", {},
                  [done = std::move(done)](const QJsonObject& body, const auto& error) {
                      if (error) {
                          done(std::nullopt, error);
                          return;
                      }
                      QList<GKAchievement> list;
                      for (const QJsonValue& v : body.value("achievements").toArray()) {
                          const auto a = fromJson(v.toObject());
                          if (!a) {
                              done(std::nullopt, GKError::badReply("achievement"));
                              return;
                          }
                          list.append(*a);
                      }
                      done(list, std::nullopt);
                  });
}

void GKAchievement::reportAchievementsWithCompletionHandler(
    const QList<GKAchievement>& achievements, std::function<void(std::optional<GKError>)> done) {
    QJsonArray list;
    for (const GKAchievement& a : achievements) {
        list.append(QJsonObject{{"identifier", a.identifier}, {"percentComplete", a.percentComplete}});
    }
    service().postInOrder("/v1/achievements", QJsonObject{{"achievements", list}},
                          [done = std::move(done)](const QJsonObject&, const auto& error) { done(error); });
}

void GKAchievement::resetAchievementsWithCompletionHandler(std::function<void(std::optional<GKError>)> done) {
    service().deleteResource(
        "/v1/achievements", [done = std::move(done)](const QJsonObject&, const auto& error) { done(error); });
}
