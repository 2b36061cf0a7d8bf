#pragma once

#include "GCMatchData.h"
#include "platform/gamekit/GKMatch.h"
#include "platform/gamekit/GKMatchPickers.h"
#include "platform/gamekit/GKTurnBasedMatch.h"

#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

class ViewController;

// Told of a match found through the platform's picker.
class GCMatchMakerUIDelegate {
public:
    virtual ~GCMatchMakerUIDelegate() = default;
    virtual void matchFoundUsingGCMatchMaker(const GKTurnBasedMatch& match) = 0;
};

// The turn-based match service as the helper uses it: the game service's by default, a fake in tests.
class TurnBasedMatchService {
public:
    using MatchHandler = GKTurnBasedMatch::MatchHandler;
    using ListHandler = std::function<void(std::optional<QList<GKTurnBasedMatch>>, std::optional<GKError>)>;
    virtual ~TurnBasedMatchService() = default;
    virtual void findMatchForRequest(const GKMatchRequest& request, MatchHandler done) = 0;
    virtual void loadMatches(ListHandler done) = 0;
    virtual void endTurn(const GKTurnBasedMatch& match, const QList<int>& next, double timeout,
                         const QByteArray& data, MatchHandler done) = 0;
    virtual void endMatchInTurn(const GKTurnBasedMatch& match, const QByteArray& data, MatchHandler done) = 0;
    virtual void remove(const GKTurnBasedMatch& match, std::function<void(std::optional<GKError>)> done) = 0;
    virtual void rematch(const GKTurnBasedMatch& match, MatchHandler done) = 0;
    // The display names of players, in any order; unknown ones left out.
    virtual void loadPlayers(const QStringList& ids, std::function<void(QList<GKPlayer>)> done) = 0;
};

// Battles and gold exchanges ride on two-seat turn-based matches whose data is one small dictionary; this is
// the one class that writes and reads it, passes the turn, ends matches, and moves points and gold when a
// result comes in. Seat 0 is the sender (who plays first, or asks for gold), seat 1 the receiver (who
// answers, or gives). The second player's device settles a battle's outcome.
class GCTurnBasedMatchHelper : public QObject,
                               public GKTurnBasedEventListener,
                               public GKTurnBasedMatchmakerViewControllerDelegate,
                               public GKMatchDelegate {
    Q_OBJECT
public:
    using ErrorHandler = std::function<void(std::optional<GKError>)>;

    static inline const QString kBattledPlayersKey = QStringLiteral("battledPlayersList");
    // A first turn to a chosen player, and an exchange request, wait a day.
    static constexpr double kChosenPlayerTimeout = 86400.0;

    static GCTurnBasedMatchHelper& sharedInstance();
    void loadData();

    // Replaces the match service (tests); the game service's when none is set.
    void setMatchService(std::unique_ptr<TurnBasedMatchService> service);
    TurnBasedMatchService& matchService();

    GCMatchMakerUIDelegate* matchMakerDelegate = nullptr;
    QStringList sentExchangesToPlayers;
    QStringList sentBattlesToPlayers;
    QStringList playersBattledWith;

    // Battles.
    void sendBattleMatchRequestToPlayerWithMessageAndLevelAndSenderResultOnCompletion(
        const GKPlayer& player, const QString& message, qint64 level, qint64 senderResult, ErrorHandler done);
    // Sets both outcomes on `match` at once (the caller reads its own seat's after success), then ends it.
    void finishBattleWithMessageAndReceiverResultOnCompletion(GKTurnBasedMatch& match, const QString& reply,
                                                              qint64 receiverResult, ErrorHandler done);
    void findRandomBattleMatchOnCompletion(
        std::function<void(std::optional<GKError>, std::optional<GKTurnBasedMatch>)> done);
    void finishTurnInMatchWithMessageAndLevelAndSenderResultOnCompletion(const GKTurnBasedMatch& match,
                                                                         const QString& message, qint64 level,
                                                                         qint64 senderResult,
                                                                         ErrorHandler done);
    void sendBattleAutoMatchRequestOnViewController(ViewController* presenting);
    void endBattleMatch(const GKTurnBasedMatch& match);

    // Gold exchanges.
    void sendExchangeMatchRequestToPlayerWithMessageOnCompletion(const GKPlayer& player,
                                                                 const QString& message, ErrorHandler done);
    void replayToExchangeMatchWithMessageAndGoldOnCompletion(const GKTurnBasedMatch& match,
                                                             const QString& reply, qint64 gold,
                                                             ErrorHandler done);
    void endExchangeMatchOnCompletion(const GKTurnBasedMatch& match, ErrorHandler done);

    void removeMatchOnCompletion(const GKTurnBasedMatch& match, ErrorHandler done);
    // Points, counters, the message and the score report for the local player's outcome.
    void handlePlayerReceivedBattleOutcome(qint64 outcome);
    void addBattledPlayer(const QString& playerID);
    // The word for a match's status, as the battle and exchange lists would show it.
    static QString matchStatusWord(qint64 status);

    // Events of the service.
    void playerReceivedTurnEventForMatchDidBecomeActive(const GKTurnBasedMatch& match,
                                                        bool didBecomeActive) override;
    void playerMatchEnded(const GKTurnBasedMatch& match) override;

    // The picker.
    void turnBasedMatchmakerViewControllerDidFindMatch(GKTurnBasedMatchmakerViewController* picker,
                                                       const GKTurnBasedMatch& match) override;
    void turnBasedMatchmakerViewControllerWasCancelled(GKTurnBasedMatchmakerViewController* picker) override;
    void turnBasedMatchmakerViewControllerDidFailWithError(GKTurnBasedMatchmakerViewController* picker,
                                                           const GKError& error) override;

    // A live match's failures are only logged here.
    void matchDidReceiveDataFromRemotePlayer(GKMatch*, const QByteArray&, const QString&) override {}
    void matchPlayerDidChangeConnectionState(GKMatch*, const QString&, int) override {}
    void matchConnectionWithPlayerFailedWithError(GKMatch* match, const QString& playerID,
                                                  const GKError& error) override;
    void matchDidFailWithError(GKMatch* match, const GKError& error) override;

    // Every request is for two players, with an invitation's text when there is one, and says whether it is a
    // battle or an exchange.
    static GKMatchRequest matchRequest(const QStringList& recipients, const QString& inviteMessage,
                                       const QString& purpose);

private:
    void answeredExchange(const GKTurnBasedMatch& match, const GCMatchData& data);
    void fallBackWin(const GKTurnBasedMatch& match);
    void notifyOfRequest(const GKTurnBasedMatch& match, const QString& titleKey, bool exchange, int page);
    static int lastIndexOfPlayer(const GKTurnBasedMatch& match, const QString& playerID);
    static int lastIndexOfOtherPlayer(const GKTurnBasedMatch& match, const QString& playerID);

    std::unique_ptr<TurnBasedMatchService> m_service;
};
