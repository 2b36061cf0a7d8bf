// A turn-based match service for tests: it answers every call at once, with the match or the error set,
// and keeps what it was asked; and the matches and the logged-in player that the tests of battles and
// exchanges start from.
#pragma once

#include "multiplayer/GCMatchData.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"
#include "multiplayer/GameCenterManager.h"
#include "platform/gamekit/GKLocalPlayer.h"

#include <QDateTime>
#include <QList>
#include <QMap>

class FakeMatches : public TurnBasedMatchService {
public:
    struct Call {
        QString op;
        GKTurnBasedMatch match;
        QList<int> next;
        double timeout = 0;
        QByteArray data;
        GKMatchRequest request;
    };

    void findMatchForRequest(const GKMatchRequest& request, MatchHandler done) override {
        calls.append({"find", {}, {}, 0, {}, request});
        answer(found, done);
    }
    void loadMatches(ListHandler done) override {
        calls.append({"load", {}, {}, 0, {}, {}});
        if (fail) {
            done(std::nullopt, fail);
        } else {
            done(stored, std::nullopt);
        }
    }
    void endTurn(const GKTurnBasedMatch& match, const QList<int>& next, double timeout,
                 const QByteArray& data, MatchHandler done) override {
        calls.append({"endTurn", match, next, timeout, data, {}});
        if (failTurn) {
            done(std::nullopt, failTurn);
            return;
        }
        answer(match, done);
    }
    void endMatchInTurn(const GKTurnBasedMatch& match, const QByteArray& data, MatchHandler done) override {
        calls.append({"endMatch", match, {}, 0, data, {}});
        answer(match, done);
    }
    void remove(const GKTurnBasedMatch& match, std::function<void(std::optional<GKError>)> done) override {
        calls.append({"remove", match, {}, 0, {}, {}});
        done(fail);
    }
    void rematch(const GKTurnBasedMatch& match, MatchHandler done) override {
        calls.append({"rematch", match, {}, 0, {}, {}});
        answer(match, done);
    }
    void loadPlayers(const QStringList& ids, std::function<void(QList<GKPlayer>)> done) override {
        QList<GKPlayer> players;
        for (const QString& id : ids) {
            players.append(GKPlayer{id, names.value(id, QStringLiteral("سلمى")), true, {}});
        }
        done(players);
    }

    GCMatchData dataOf(int call) const { return GCMatchData::unarchive(calls.at(call).data).value(); }

    std::optional<GKError> fail;
    std::optional<GKError> failTurn; // only the end of a turn fails
    GKTurnBasedMatch found;          // what a search finds
    QList<GKTurnBasedMatch> stored;  // what a load gives
    QMap<QString, QString> names;    // display names; others are "سلمى"
    QList<Call> calls;

private:
    void answer(const GKTurnBasedMatch& match, const MatchHandler& done) {
        if (fail) {
            done(std::nullopt, fail);
        } else {
            done(match, std::nullopt);
        }
    }
};

// The local player and the one he plays with.
inline const QString kMe = QStringLiteral("Tme");
inline const QString kOther = QStringLiteral("Tother");

// A match of two active seats, the sender's first; `current` holds the turn (-1: nobody).
inline GKTurnBasedMatch twoSeats(const QString& sender, const QString& receiver, int current,
                                 const QByteArray& data = {}, int status = GKTurnBasedMatchStatusOpen,
                                 const QString& id = QStringLiteral("m1"), const QDateTime& created = {}) {
    GKTurnBasedMatch m;
    m.matchID = id;
    m.status = status;
    m.creationDate = created;
    m.participants = {GKTurnBasedParticipant{sender, GKTurnBasedParticipantStatusActive, 0, {}},
                      GKTurnBasedParticipant{receiver, GKTurnBasedParticipantStatusActive, 0, {}}};
    m.currentParticipantIndex = current;
    m.matchData = data;
    return m;
}

// Logs kMe in, as every page of the battles and exchanges expects, and puts a fake in place of the match
// service; the helper owns it.
inline FakeMatches* installFakeMatches() {
    GameCenterManager::sharedInstance();
    GKLocalPlayer::localPlayer().setAuthenticatedPlayer(GKPlayer{kMe, QStringLiteral("أنا"), false, {}});
    auto fake = std::make_unique<FakeMatches>();
    FakeMatches* service = fake.get();
    GCTurnBasedMatchHelper::sharedInstance().setMatchService(std::move(fake));
    return service;
}
