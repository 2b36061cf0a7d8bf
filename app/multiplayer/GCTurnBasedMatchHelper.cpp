#include "GCTurnBasedMatchHelper.h"

#include "multiplayer/GameCenterManager.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/CreditsManager.h"
#include "progress/RankManager.h"
#include "progress/ScorePointsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/Localization.h"
#include "screens/PresentationUtil.h"
#include "screens/Util.h"

#include <QPointer>
#include <QtGlobal>

namespace {

const QString kBattle = QStringLiteral("battle");
const QString kExchange = QStringLiteral("exchange");
const QString kGoldWord = QStringLiteral("الذهبات");

enum Outcome : int {
    Won = GKTurnBasedMatchOutcomeWon,
    Lost = GKTurnBasedMatchOutcomeLost,
    Tied = GKTurnBasedMatchOutcomeTied
};

QString text(const char* key) {
    return Localization::localizedString(QString::fromLatin1(key));
}

QString localPlayerID() {
    return GKLocalPlayer::localPlayer().playerID();
}

// The game service's turn-based matches.
class GameServiceMatches : public TurnBasedMatchService {
public:
    void findMatchForRequest(const GKMatchRequest& request, MatchHandler done) override {
        GKTurnBasedMatch::findMatchForRequestWithCompletionHandler(request, std::move(done));
    }
    void loadMatches(ListHandler done) override {
        GKTurnBasedMatch::loadMatchesWithCompletionHandler(std::move(done));
    }
    void endTurn(const GKTurnBasedMatch& match, const QList<int>& next, double timeout,
                 const QByteArray& data, MatchHandler done) override {
        match.endTurnWithNextParticipantsTurnTimeoutMatchDataCompletionHandler(next, timeout, data,
                                                                               std::move(done));
    }
    void endMatchInTurn(const GKTurnBasedMatch& match, const QByteArray& data, MatchHandler done) override {
        match.endMatchInTurnWithMatchDataCompletionHandler(data, std::move(done));
    }
    void remove(const GKTurnBasedMatch& match, std::function<void(std::optional<GKError>)> done) override {
        match.removeWithCompletionHandler(std::move(done));
    }
    void rematch(const GKTurnBasedMatch& match, MatchHandler done) override {
        match.rematchWithCompletionHandler(std::move(done));
    }
    void loadPlayers(const QStringList& ids, std::function<void(QList<GKPlayer>)> done) override {
        GKPlayer::loadPlayersForIdentifiers(
            ids,
            [done = std::move(done)](QList<GKPlayer> players, std::optional<GKError>) { done(players); });
    }
};

// A battle's data as its sender writes it.
GCMatchData battleData(const QString& message, qint64 level, qint64 senderResult) {
    GCMatchData data;
    data.setString(QStringLiteral("type"), kBattle);
    data.setString(QStringLiteral("message"), message);
    data.setNumber(QStringLiteral("level"), level);
    data.setNumber(QStringLiteral("senderResult"), senderResult);
    return data;
}

// The data of a match as the game's dictionary; nothing, with a log line, when it is not one.
std::optional<GCMatchData> dataOf(const GKTurnBasedMatch& match) {
    std::optional<GCMatchData> data = GCMatchData::unarchive(match.matchData);
    if (!data && !match.matchData.isEmpty()) {
        qWarning().noquote() << "The data of match" << match.matchID
                             << "is not the game's; it is left alone.";
    }
    return data;
}

} // namespace

GCTurnBasedMatchHelper& GCTurnBasedMatchHelper::sharedInstance() {
    return Shared<GCTurnBasedMatchHelper>::instance();
}

void GCTurnBasedMatchHelper::loadData() {
    sentExchangesToPlayers.clear();
    sentBattlesToPlayers.clear();
    playersBattledWith = Platform::shared().userDefaults().stringArrayForKey(kBattledPlayersKey);
}

void GCTurnBasedMatchHelper::setMatchService(std::unique_ptr<TurnBasedMatchService> service) {
    m_service = std::move(service);
}

TurnBasedMatchService& GCTurnBasedMatchHelper::matchService() {
    if (!m_service) {
        m_service = std::make_unique<GameServiceMatches>();
    }
    return *m_service;
}

GKMatchRequest GCTurnBasedMatchHelper::matchRequest(const QStringList& recipients,
                                                    const QString& inviteMessage, const QString& purpose) {
    GKMatchRequest request;
    request.setMinPlayers(2);
    request.setMaxPlayers(2);
    request.setDefaultNumberOfPlayers(2);
    request.setRecipients(recipients);
    request.setInviteMessage(inviteMessage);
    request.setPurpose(purpose);
    return request;
}

int GCTurnBasedMatchHelper::lastIndexOfPlayer(const GKTurnBasedMatch& match, const QString& playerID) {
    int found = -1;
    for (int i = 0; i < match.participants.size(); ++i) {
        if (match.participants.at(i).playerID == playerID) {
            found = i;
        }
    }
    return found;
}

int GCTurnBasedMatchHelper::lastIndexOfOtherPlayer(const GKTurnBasedMatch& match, const QString& playerID) {
    int found = -1;
    for (int i = 0; i < match.participants.size(); ++i) {
        if (match.participants.at(i).playerID != playerID) {
            found = i;
        }
    }
    return found;
}

void GCTurnBasedMatchHelper::addBattledPlayer(const QString& playerID) {
    if (Util::isStringContainedInArray(playerID, playersBattledWith)) {
        return;
    }
    playersBattledWith.append(playerID);
    auto& defaults = Platform::shared().userDefaults();
    defaults.setObjectForKey(playersBattledWith, kBattledPlayersKey);
    defaults.synchronize();
}

void GCTurnBasedMatchHelper::sendBattleMatchRequestToPlayerWithMessageAndLevelAndSenderResultOnCompletion(
    const GKPlayer& player, const QString& message, qint64 level, qint64 senderResult, ErrorHandler done) {
    const QString recipient = player.playerID;
    QPointer<GCTurnBasedMatchHelper> self(this);
    matchService().findMatchForRequest(
        matchRequest({recipient}, text("gc.battle.inviteMessage"), kBattle),
        [self, recipient, message, level, senderResult, done](std::optional<GKTurnBasedMatch> match,
                                                              std::optional<GKError> error) {
            if (!self) {
                return;
            }
            if (!match || error) {
                if (done) {
                    done(error);
                }
                return;
            }
            const GCMatchData data = battleData(message, level, senderResult);
            // The sender stands second: when the receiver lets the day pass, the turn comes back to him,
            // and the turn event makes that his win.
            const QList<int> next{lastIndexOfPlayer(*match, recipient), match->currentParticipantIndex};
            self->matchService().endTurn(
                *match, next, kChosenPlayerTimeout, data.archivedData(),
                [self, recipient, done](std::optional<GKTurnBasedMatch>, std::optional<GKError> sent) {
                    if (self) {
                        self->sentBattlesToPlayers.append(recipient);
                    }
                    if (done) {
                        done(sent);
                    }
                });
        });
}

void GCTurnBasedMatchHelper::findRandomBattleMatchOnCompletion(
    std::function<void(std::optional<GKError>, std::optional<GKTurnBasedMatch>)> done) {
    matchService().findMatchForRequest(
        matchRequest({}, text("gc.battle.inviteMessage"), kBattle),
        [done](std::optional<GKTurnBasedMatch> match, std::optional<GKError> error) {
            if (done) {
                done(error, match);
            }
        });
}

void GCTurnBasedMatchHelper::sendBattleAutoMatchRequestOnViewController(ViewController* /*presenting*/) {
    auto* picker = GKTurnBasedMatchmakerViewController::initWithMatchRequest(
        matchRequest({}, text("gc.battle.inviteMessage"), kBattle));
    picker->setTurnBasedMatchmakerDelegate(this);
    Platform::shared().navigator().presentViewController(picker);
}

void GCTurnBasedMatchHelper::finishTurnInMatchWithMessageAndLevelAndSenderResultOnCompletion(
    const GKTurnBasedMatch& match, const QString& message, qint64 level, qint64 senderResult,
    ErrorHandler done) {
    const GCMatchData data = battleData(message, level, senderResult);
    matchService().endTurn(match, {1}, GKTurnTimeoutDefault, data.archivedData(),
                           [done](std::optional<GKTurnBasedMatch>, std::optional<GKError> error) {
                               if (done) {
                                   done(error);
                               }
                           });
}

void GCTurnBasedMatchHelper::finishBattleWithMessageAndReceiverResultOnCompletion(GKTurnBasedMatch& match,
                                                                                  const QString& reply,
                                                                                  qint64 receiverResult,
                                                                                  ErrorHandler done) {
    const int other = lastIndexOfOtherPlayer(match, localPlayerID());
    GCMatchData data = dataOf(match).value_or(GCMatchData());
    const qint64 s = data.number(QStringLiteral("senderResult"));
    const qint64 r = receiverResult;
    data.setString(QStringLiteral("reply"), reply);
    if (match.participants.size() == 2) {
        match.participants[0].setMatchOutcome(s > r ? Won : s < r ? Lost : Tied);
        match.participants[1].setMatchOutcome(s > r ? Lost : s < r ? Won : Tied);
    }
    matchService().endMatchInTurn(match, data.archivedData(),
                                  [done](std::optional<GKTurnBasedMatch>, std::optional<GKError> error) {
                                      if (done) {
                                          done(error);
                                      }
                                  });
    if (other >= 0) {
        addBattledPlayer(match.participants.at(other).playerID);
    }
}

void GCTurnBasedMatchHelper::endBattleMatch(const GKTurnBasedMatch& match) {
    matchService().endMatchInTurn(match, match.matchData,
                                  [](std::optional<GKTurnBasedMatch>, std::optional<GKError> error) {
                                      if (error) {
                                          qWarning().noquote() << "error ending match:" << error->message;
                                      }
                                  });
}

void GCTurnBasedMatchHelper::sendExchangeMatchRequestToPlayerWithMessageOnCompletion(const GKPlayer& player,
                                                                                     const QString& message,
                                                                                     ErrorHandler done) {
    const QString recipient = player.playerID;
    QPointer<GCTurnBasedMatchHelper> self(this);
    matchService().findMatchForRequest(
        matchRequest({recipient}, text("gc.exchange.inviteMessage").arg(kGoldWord), kExchange),
        [self, recipient, message, done](std::optional<GKTurnBasedMatch> match,
                                         std::optional<GKError> error) {
            if (!self) {
                return;
            }
            if (!match || error) {
                if (done) {
                    done(error);
                }
                return;
            }
            const int seat = lastIndexOfPlayer(*match, recipient);
            GCMatchData data;
            data.setString(QStringLiteral("type"), kExchange);
            data.setString(QStringLiteral("message"), message);
            self->matchService().endTurn(
                *match, {seat}, kChosenPlayerTimeout, data.archivedData(),
                [self, match, seat, done](std::optional<GKTurnBasedMatch>, std::optional<GKError> sent) {
                    if (self && !sent && seat >= 0) {
                        self->sentExchangesToPlayers.append(match->participants.at(seat).playerID);
                    }
                    if (done) {
                        done(sent);
                    }
                });
        });
}

void GCTurnBasedMatchHelper::replayToExchangeMatchWithMessageAndGoldOnCompletion(
    const GKTurnBasedMatch& match, const QString& reply, qint64 gold, ErrorHandler done) {
    const int other = lastIndexOfOtherPlayer(match, localPlayerID());
    GCMatchData data = dataOf(match).value_or(GCMatchData());
    data.setString(QStringLiteral("reply"), reply);
    data.setNumber(QStringLiteral("gold"), gold);
    if (other >= 0) {
        const QString otherID = match.participants.at(other).playerID;
        matchService().loadPlayers({otherID}, [otherID](QList<GKPlayer> players) {
            qInfo().noquote() << "receiver:" << (players.isEmpty() ? otherID : players.first().displayName);
        });
    }
    GKTurnBasedMatch answered = match;
    answered.setLocalizableMessageWithKeyArguments(QStringLiteral("gc.exchange.replyMessage"), {kGoldWord});
    matchService().endTurn(answered, {other}, GKTurnTimeoutDefault, data.archivedData(),
                           [done](std::optional<GKTurnBasedMatch>, std::optional<GKError> error) {
                               if (done) {
                                   done(error);
                               }
                           });
}

void GCTurnBasedMatchHelper::endExchangeMatchOnCompletion(const GKTurnBasedMatch& match, ErrorHandler done) {
    GKTurnBasedMatch ended = match;
    for (GKTurnBasedParticipant& p : ended.participants) {
        p.setMatchOutcome(Tied);
    }
    matchService().endMatchInTurn(ended, ended.matchData,
                                  [done](std::optional<GKTurnBasedMatch>, std::optional<GKError> error) {
                                      if (error) {
                                          qWarning().noquote() << "error ending match:" << error->message;
                                      }
                                      if (done) {
                                          done(error);
                                      }
                                  });
}

void GCTurnBasedMatchHelper::removeMatchOnCompletion(const GKTurnBasedMatch& match, ErrorHandler done) {
    matchService().remove(match, [done](std::optional<GKError> error) {
        if (done) {
            done(error);
        }
    });
}

void GCTurnBasedMatchHelper::playerReceivedTurnEventForMatchDidBecomeActive(const GKTurnBasedMatch& match,
                                                                            bool /*didBecomeActive*/) {
    const std::optional<GCMatchData> data = dataOf(match);
    if (!data) {
        return;
    }
    const std::optional<QString> type = data->string(QStringLiteral("type"));
    if (!type) {
        return;
    }
    const bool replied = data->string(QStringLiteral("reply")).has_value();
    if (*type == kExchange) {
        if (!replied) {
            notifyOfRequest(match, QStringLiteral("gc.exchange.receiverNotify"), true, 2);
        } else {
            answeredExchange(match, *data);
        }
        return;
    }
    if (*type != kBattle || replied) {
        // An answered battle is settled by the match-ended event.
        return;
    }
    if (!match.participants.isEmpty() && match.participants.first().playerID == localPlayerID()) {
        fallBackWin(match);
    } else {
        notifyOfRequest(match, QStringLiteral("gc.battle.receiverNotify"), false, 1);
    }
}

void GCTurnBasedMatchHelper::notifyOfRequest(const GKTurnBasedMatch& match, const QString& titleKey,
                                             bool exchange, int page) {
    const QString message =
        dataOf(match).value_or(GCMatchData()).string(QStringLiteral("message")).value_or(QString());
    const QString sender = match.participants.isEmpty() ? QString() : match.participants.first().playerID;
    matchService().loadPlayers({sender}, [=](QList<GKPlayer> players) {
        const QString name = players.isEmpty() ? QString() : players.first().displayName;
        // One fill for both, so that a name holding "%2" stays as it is.
        const QString title = exchange ? Localization::localizedString(titleKey).arg(name, kGoldWord)
                                       : Localization::localizedString(titleKey).arg(name);
        Util::showMessageWithTitleOnDismiss(message, title, [page] {
            PresentationUtil::openGameCenterNavControllerWithPageNumAndType(Util::getTopNavViewController(),
                                                                            page, 0);
        });
    });
}

void GCTurnBasedMatchHelper::fallBackWin(const GKTurnBasedMatch& match) {
    // The receiver did not play in time: the turn came back to the sender, who wins.
    GKTurnBasedMatch won = match;
    if (won.participants.size() == 2) {
        won.participants[0].setMatchOutcome(Won);
        won.participants[1].setMatchOutcome(Lost);
    }
    QPointer<GCTurnBasedMatchHelper> self(this);
    matchService().endMatchInTurn(won, won.matchData,
                                  [self](std::optional<GKTurnBasedMatch>, std::optional<GKError> error) {
                                      if (self && !error) {
                                          self->handlePlayerReceivedBattleOutcome(Won);
                                      }
                                  });
}

void GCTurnBasedMatchHelper::answeredExchange(const GKTurnBasedMatch& match, const GCMatchData& data) {
    const qint64 gold = data.number(QStringLiteral("gold"));
    const QString title =
        gold < 1 ? text("gc.exchange.requestRejected")
                 : text("gc.exchange.creditsAreSent").arg(QString::number(gold), QStringLiteral("ذهبة"));
    // An ended match has been paid already.
    if (match.status == GKTurnBasedMatchStatusEnded) {
        return;
    }
    const QString reply = data.string(QStringLiteral("reply")).value_or(QString());
    endExchangeMatchOnCompletion(match, [title, reply, gold](std::optional<GKError> error) {
        if (error) {
            return;
        }
        Util::showMessageWithTitleOnDismiss(reply, title, [gold] {
            CreditsManager::sharedInstance().addCredits(gold);
            UserStatsManager::sharedInstance().incrementTotalExchangeReceived(gold);
            Platform::shared().emitter().startGoldEmitterOnViewForDuration(
                Util::getCurrentPresentedViewController(), 1.0);
        });
    });
}

void GCTurnBasedMatchHelper::playerMatchEnded(const GKTurnBasedMatch& match) {
    const std::optional<GCMatchData> data = dataOf(match);
    if (!data || data->string(QStringLiteral("type")) != kBattle || match.participants.size() < 2) {
        return;
    }
    handlePlayerReceivedBattleOutcome(match.participants.at(0).matchOutcome);
    addBattledPlayer(match.participants.at(1).playerID);
}

void GCTurnBasedMatchHelper::handlePlayerReceivedBattleOutcome(qint64 outcome) {
    auto& rank = RankManager::sharedInstance();
    auto& stats = UserStatsManager::sharedInstance();
    auto& points = ScorePointsManager::sharedInstance();
    switch (outcome) {
    case Tied:
        points.addPoints(rank.getBattleDrawPoints());
        stats.incrementTotalDraws();
        Util::showMessageWithTitle(text("gc.battle.tieMessage").arg(rank.getBattleDrawPoints()),
                                   text("gc.battle.tieTitle"));
        Platform::shared().alerts().setToneOfLast(QStringLiteral("tied"));
        break;
    case Lost:
        points.addPoints(rank.getBattleLossPoints());
        stats.incrementTotalLosses();
        Util::showMessageWithTitle(text("gc.battle.loseMessage").arg(qAbs(rank.getBattleLossPoints())),
                                   text("gc.battle.loseTitle"));
        Platform::shared().alerts().setToneOfLast(QStringLiteral("lost"));
        break;
    case Won:
        points.addPoints(rank.getBattleWinPoints());
        stats.incrementTotalWins();
        Util::showMessageWithTitle(text("gc.battle.winMessage").arg(rank.getBattleWinPoints()),
                                   text("gc.battle.winTitle"));
        Platform::shared().alerts().setToneOfLast(QStringLiteral("won"));
        Platform::shared().emitter().startBattleWinEmitterOnViewForDuration(
            Util::getCurrentPresentedViewController(), 1.0);
        break;
    default:
        Util::showMessageWithTitle(text("error.battleResultUnkown"), text("error.problemTitle"));
        break;
    }
    auto& gc = GameCenterManager::sharedInstance();
    gc.reportScoreWithContextWithCompletionHandler(
        points.totalPoints(), stats.generateUserStatsContextNumber(), [] {
            auto& manager = GameCenterManager::sharedInstance();
            manager.reloadPlayerScoreWithCompletionHandler([] {
                UserStatsManager::sharedInstance().updateGamecenterRankForCurrentDay(
                    GameCenterManager::sharedInstance().playerRank);
            });
        });
}

void GCTurnBasedMatchHelper::turnBasedMatchmakerViewControllerDidFindMatch(
    GKTurnBasedMatchmakerViewController* /*picker*/, const GKTurnBasedMatch& match) {
    Platform::shared().navigator().dismissViewController();
    if (matchMakerDelegate) {
        matchMakerDelegate->matchFoundUsingGCMatchMaker(match);
    }
}

void GCTurnBasedMatchHelper::turnBasedMatchmakerViewControllerWasCancelled(
    GKTurnBasedMatchmakerViewController* /*picker*/) {
    Platform::shared().navigator().dismissViewController();
}

void GCTurnBasedMatchHelper::turnBasedMatchmakerViewControllerDidFailWithError(
    GKTurnBasedMatchmakerViewController* /*picker*/, const GKError& /*error*/) {
    // The picker shows the failure and stays.
}

void GCTurnBasedMatchHelper::matchConnectionWithPlayerFailedWithError(GKMatch* /*match*/,
                                                                      const QString& /*playerID*/,
                                                                      const GKError& error) {
    qWarning().noquote() << "Failed to connect to player with error:" << error.message;
}

void GCTurnBasedMatchHelper::matchDidFailWithError(GKMatch* /*match*/, const GKError& error) {
    qWarning().noquote() << "Match failed with error:" << error.message;
}

QString GCTurnBasedMatchHelper::matchStatusWord(qint64 status) {
    switch (status) {
    case GKTurnBasedMatchStatusUnknown:
        return QStringLiteral("غير معروف");
    case GKTurnBasedMatchStatusOpen:
        return QStringLiteral("بالانتظار");
    case GKTurnBasedMatchStatusEnded:
        return QStringLiteral("انتهى");
    case GKTurnBasedMatchStatusMatching:
        return QStringLiteral("بحث");
    default:
        return QStringLiteral("???");
    }
}
