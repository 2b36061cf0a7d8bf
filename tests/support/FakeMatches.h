// A turn-based match service for tests: it answers every call at once, with the match or the error set,
// and keeps what it was asked.
#pragma once

#include "multiplayer/GCMatchData.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"

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
