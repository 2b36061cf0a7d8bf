#include "BattlesViewController.h"

#include "multiplayer/GCMatchData.h"
#include "multiplayer/MatchLists.h"
#include "multiplayer/RandomBattleViewController.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/ProgressHud.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/RankManager.h"
#include "progress/UserStatsManager.h"
#include "screens/Localization.h"
#include "screens/Util.h"

#include <QVariantMap>
#include <algorithm>

namespace {

const QString kWriteMessage = QStringLiteral("قبل لعب دورك يرجى كتابة الرسالة التي ستظهر  للاعب الذي تحداك");

GCTurnBasedMatchHelper& helper() {
    return GCTurnBasedMatchHelper::sharedInstance();
}

} // namespace

BattlesViewController::BattlesViewController(QObject* parent)
    : ViewController(QStringLiteral("BattlesViewController"), parent) {}

void BattlesViewController::viewDidLoad() {
    loadAndSortMatches();
    fillTotals();
}

void BattlesViewController::fillTotals() {
    const auto& stats = UserStatsManager::sharedInstance();
    m_winsText = QString::number(stats.totalWins());
    m_drawsText = QString::number(stats.totalDraws());
    m_lossesText = QString::number(stats.totalLosses());
    m_finalPointsText = QString::number(stats.totalBattlePoints());
    emit totalsChanged();
}

void BattlesViewController::loadAndSortMatches() {
    openBattles.clear();
    finishedBattles.clear();
    helper().matchService().loadMatches([this, alive = std::weak_ptr<int>(m_alive)](
                                            std::optional<QList<GKTurnBasedMatch>> matches,
                                            std::optional<GKError>) {
        if (alive.expired()) {
            return;
        }
        // Exchanges ride on the same list: only battles stay.
        allBattles = MatchLists::ofType(matches, QStringLiteral("battle"));
        openBattles.clear();
        finishedBattles.clear();
        for (const GKTurnBasedMatch& m : std::as_const(allBattles)) {
            if (m.status == GKTurnBasedMatchStatusOpen || m.status == GKTurnBasedMatchStatusMatching) {
                openBattles.append(m);
            } else if (m.status == GKTurnBasedMatchStatusEnded || m.status == GKTurnBasedMatchStatusUnknown) {
                finishedBattles.append(m);
            }
        }
        MatchLists::loadNames(allBattles, &m_names, m_alive, [this] { emit rowsChanged(); });
        emit rowsChanged();
    });
}

QVariantMap BattlesViewController::rowFor(const GKTurnBasedMatch& m) const {
    const std::optional<GCMatchData> data = GCMatchData::unarchive(m.matchData);
    const QString me = GKLocalPlayer::localPlayer().playerID();
    const QString sender = m.participants.value(0).playerID;
    const QString receiver = m.participants.value(1).playerID;
    QVariantMap row{
        {"senderID", sender},
        {"senderName", m_names.value(sender)},
        {"receiverID", receiver},
        {"receiverName", receiver.isEmpty() ? QString() : m_names.value(receiver)},
        {"date", Util::formatDateWithFormat(m.creationDate, QStringLiteral("dd/MM/yyyy HH:mm"))},
        {"message", data ? data->string(QStringLiteral("message")).value_or(QString()) : QString()}};
    if (m_segment != 0) {
        const int mine = sender == me ? 0 : 1;
        const qint64 outcome = m.participants.value(mine).matchOutcome;
        const auto& rank = RankManager::sharedInstance();
        QString points;
        QString tint;
        if (outcome == GKTurnBasedMatchOutcomeWon) {
            points = QStringLiteral("لقد ربحت %1 نقاط").arg(rank.getBattleWinPoints());
            tint = QStringLiteral("green");
        } else if (outcome == GKTurnBasedMatchOutcomeLost) {
            points = QStringLiteral("لقد خسرت %1 نقاط").arg(std::abs(rank.getBattleLossPoints()));
            tint = QStringLiteral("red");
        } else if (outcome == GKTurnBasedMatchOutcomeTied) {
            points = QStringLiteral("لقد ربحت %1 نقاط").arg(rank.getBattleDrawPoints());
            tint = QStringLiteral("blue");
        }
        row.insert("kind", QStringLiteral("FinishedBattleCell"));
        row.insert("reply", data ? data->string(QStringLiteral("reply")).value_or(QString()) : QString());
        row.insert("outcomeText", getMatchOutcomeText(outcome));
        row.insert("outcomeTint", tint);
        row.insert("pointsText", points);
        return row;
    }
    // The hours left count from the creation of the match.
    const qint64 h = Util::hoursBetween(m.creationDate.addSecs(86400), Platform::shared().scheduler().now());
    row.insert("hoursLeft", QString::number(h < 0 ? 0 : h + 1));
    // The sender's result is shown as answered only for the value 2, which no battle writes: always "لا".
    const bool answered = data && data->number(QStringLiteral("senderResult")) == 2;
    row.insert("senderAnswered", answered ? QStringLiteral("نعم") : QStringLiteral("لا"));
    const auto* current = m.currentParticipant();
    row.insert("kind", current && current->playerID == me ? QStringLiteral("ReceivedBattleCell")
                                                          : QStringLiteral("SentBattleCell"));
    return row;
}

QVariantList BattlesViewController::rows() const {
    QVariantList out;
    for (const GKTurnBasedMatch& m : shownBattles()) {
        out.append(rowFor(m));
    }
    return out;
}

void BattlesViewController::close() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}

void BattlesViewController::segmentChanged(int segment) {
    m_segment = segment == 0 ? 0 : 1;
    emit rowsChanged();
}

void BattlesViewController::openRandomBattle(const std::optional<GKTurnBasedMatch>& match) {
    auto* screen = new RandomBattleViewController();
    if (match) {
        screen->setMatch(*match);
    }
    screen->setDidDismiss([this, alive = std::weak_ptr<int>(m_alive)](const QString&) {
        if (!alive.expired()) {
            loadAndSortMatches();
        }
    });
    Platform::shared().navigator().presentViewController(screen);
}

void BattlesViewController::startBattleWithRandomPlayer() {
    SoundFactory::sharedInstance().playMenuTap();
    openRandomBattle(std::nullopt);
}

void BattlesViewController::sendAutoMatchRequest() {
    SoundFactory::sharedInstance().playMenuTap();
    helper().matchMakerDelegate = this;
    helper().sendBattleAutoMatchRequestOnViewController(this);
}

void BattlesViewController::matchFoundUsingGCMatchMaker(const GKTurnBasedMatch& match) {
    openRandomBattle(match);
}

void BattlesViewController::playBattleButtonTapped(int row, const QString& reply) {
    SoundFactory::sharedInstance().playMenuTap();
    if (row < 0 || row >= openBattles.size()) {
        return;
    }
    const GKTurnBasedMatch match = openBattles.at(row);
    clickedBattle = row;
    m_clickedReply = reply;
    if (reply.isEmpty()) {
        Util::showMessageWithTitle(kWriteMessage, QStringLiteral("اكتب رسالة"));
        return;
    }
    const std::optional<GCMatchData> data = GCMatchData::unarchive(match.matchData);
    const qint64 level = data ? data->number(QStringLiteral("level")) : 0;
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral(
            "ستظهر لك نفس المرحلة التي ظهرت للاعب الذي تحداك، عليك انهاء المرحلة خلال الزمن المحدد "
            "وبعدها ستعرف نتيجة المعركة وكل لاعب يأخذ نقاطه بناء على هذه النتيجة"),
        QStringLiteral("العب دورك"), [this, alive = std::weak_ptr<int>(m_alive), level] {
            if (!alive.expired()) {
                BattleLevels::startBattleGame(level, 2, this);
            }
        });
}

void BattlesViewController::playerAnsweredLevelWithScore(qint64 /*level*/, qint64 score) {
    Platform::shared().progressHud().showWithMaskType(3);
    const int row = clickedBattle;
    clickedBattle = -1;
    if (row < 0 || row >= openBattles.size()) {
        Platform::shared().progressHud().dismiss();
        return;
    }
    auto match = std::make_shared<GKTurnBasedMatch>(openBattles.at(row));
    helper().finishBattleWithMessageAndReceiverResultOnCompletion(
        *match, m_clickedReply, score,
        [this, alive = std::weak_ptr<int>(m_alive), match](std::optional<GKError> e) {
            Platform::shared().progressHud().dismiss();
            if (e) {
                qWarning().noquote() << "error:" << e->message;
                Util::showMessageWithTitle(QStringLiteral("حدثت مشكلةولم يتم انهاء المعركة"),
                                           QStringLiteral("خطأ"));
                return;
            }
            helper().handlePlayerReceivedBattleOutcome(match->participants.value(1).matchOutcome);
            if (!alive.expired()) {
                loadAndSortMatches();
                fillTotals();
            }
        });
}

void BattlesViewController::removeButtonTapped(int row) {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().progressHud().showWithMaskType(3);
    if (row < 0 || row >= shownBattles().size()) {
        return; // no row under the button: the display stays
    }
    helper().removeMatchOnCompletion(shownBattles().at(row), [this, alive = std::weak_ptr<int>(m_alive)](
                                                                 std::optional<GKError> e) {
        Platform::shared().progressHud().dismiss();
        if (e) {
            qWarning().noquote() << "error:" << e->message;
            Util::showMessageWithTitle(QStringLiteral("لقد حدث خطأ في حذف المعركة"), QStringLiteral("خطأ"));
            return;
        }
        if (!alive.expired()) {
            loadAndSortMatches();
        }
        Util::showMessageWithTitle(Localization::localizedString(QStringLiteral("gc.battle.entrydeleted")),
                                   QStringLiteral("تمت العملية"));
    });
}

void BattlesViewController::rematchButtonTapped(int row) {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().progressHud().showWithMaskType(3);
    if (row < 0 || row >= finishedBattles.size()) {
        return;
    }
    helper().matchService().rematch(finishedBattles.at(row), [this, alive = std::weak_ptr<int>(m_alive)](
                                                                 std::optional<GKTurnBasedMatch> m,
                                                                 std::optional<GKError> e) {
        Platform::shared().progressHud().dismiss();
        if (e || !m) {
            qWarning().noquote() << "error:" << (e ? e->message : QStringLiteral("no match"));
            // The deletion's words stand here too.
            Util::showMessageWithTitle(QStringLiteral("لقد حدث خطأ في حذف المعركة"), QStringLiteral("خطأ"));
            return;
        }
        if (!alive.expired()) {
            openRandomBattle(*m);
        }
    });
}

QString BattlesViewController::getMatchStatus(qint64 status) {
    return GCTurnBasedMatchHelper::matchStatusWord(status);
}

QString BattlesViewController::getMatchOutcomeText(qint64 outcome) {
    switch (outcome) {
    case GKTurnBasedMatchOutcomeQuit:
        return QStringLiteral("استسلام");
    case GKTurnBasedMatchOutcomeWon:
        return QStringLiteral("فوز");
    case GKTurnBasedMatchOutcomeLost:
        return QStringLiteral("خسارة");
    case GKTurnBasedMatchOutcomeTied:
        return QStringLiteral("تعادل");
    case GKTurnBasedMatchOutcomeTimeExpired:
        return QStringLiteral("انتهى الوقت");
    default:
        return QStringLiteral("???");
    }
}
