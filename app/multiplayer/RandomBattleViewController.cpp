#include "RandomBattleViewController.h"

#include "multiplayer/GCMatchData.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/ProgressHud.h"
#include "progress/RankManager.h"
#include "screens/Util.h"

namespace {

const QString kWriteMessageFirst =
    QStringLiteral("قبل لعب دورك يرجى كتابة الرسالة التي ستظهر  للاعب الذي تحداك");

} // namespace

RandomBattleViewController::RandomBattleViewController(QObject* parent)
    : ViewController(QStringLiteral("RandomBattleViewController"), parent) {}

void RandomBattleViewController::viewDidLoad() {
    const auto& rank = RankManager::sharedInstance();
    m_winTitle = QStringLiteral("فوز - ستربح %1 نقطة").arg(rank.getBattleWinPoints());
    m_drawTitle = QStringLiteral("تعادل - ستربح %1 نقطة").arg(rank.getBattleDrawPoints());
    // The loss is told with the win's points, as the battle's rules say it to both players.
    m_loseTitle = QStringLiteral("خسارة - ستخسر %1 نقطة").arg(rank.getBattleWinPoints());
}

void RandomBattleViewController::viewWillAppear() {
    if (match) {
        readMatchDataAndUpdateUI(*match);
        return;
    }
    auto& hud = Platform::shared().progressHud();
    hud.showWithMaskType(3);
    GCTurnBasedMatchHelper::sharedInstance().findRandomBattleMatchOnCompletion(
        [this, alive = std::weak_ptr<int>(m_alive)](std::optional<GKError> error,
                                                    std::optional<GKTurnBasedMatch> found) {
            Platform::shared().progressHud().dismiss();
            if (alive.expired() || error || !found) {
                // The screen stays as it is.
                return;
            }
            match = found;
            readMatchDataAndUpdateUI(*found);
        });
}

void RandomBattleViewController::readMatchDataAndUpdateUI(const GKTurnBasedMatch& m) {
    const bool seated = m.participants.size() > 1 && !m.participants.at(1).playerID.isEmpty();
    if (seated) {
        const std::optional<GCMatchData> data = GCMatchData::unarchive(m.matchData);
        const QString message =
            data ? data->string(QStringLiteral("message")).value_or(QString()) : QString();
        m_senderMessage = message;
        m_senderMessageVisible = !message.isEmpty();
        isNewMatch = false;
    } else {
        m_senderMessage.clear();
        m_senderMessageVisible = false;
        m_receiverName = QStringLiteral("???");
        m_receiverID.clear();
        isNewMatch = true;
    }
    emit matchChanged();
    showNames(m);
}

void RandomBattleViewController::showNames(const GKTurnBasedMatch& m) {
    QStringList ids;
    for (const GKTurnBasedParticipant& p : m.participants) {
        if (!p.playerID.isEmpty()) {
            ids.append(p.playerID);
        }
    }
    const QString sender = m.participants.value(0).playerID;
    const QString receiver = m.participants.value(1).playerID;
    m_senderID = sender;
    m_receiverID = receiver;
    GCTurnBasedMatchHelper::sharedInstance().matchService().loadPlayers(
        ids, [this, alive = std::weak_ptr<int>(m_alive), sender, receiver](QList<GKPlayer> players) {
            if (alive.expired()) {
                return;
            }
            for (const GKPlayer& p : players) {
                if (p.playerID == sender) {
                    m_senderName = p.displayName;
                }
                if (!receiver.isEmpty() && p.playerID == receiver) {
                    m_receiverName = p.displayName;
                }
            }
            emit matchChanged();
        });
}

void RandomBattleViewController::playTheTurn(const QString& message) {
    SoundFactory::sharedInstance().playMenuTap();
    if (message.isEmpty()) {
        Util::showMessageWithTitle(kWriteMessageFirst, QStringLiteral("اكتب رسالة"));
        return;
    }
    if (!match) {
        return;
    }
    m_message = message;
    auto alive = std::weak_ptr<int>(m_alive);
    if (isNewMatch) {
        Util::showMessageWithTitleOnDismiss(
            QStringLiteral(
                "ستظهر لك مرحلة عشوائية يجب عليك انهائها ضمن فترة محدودة وعند الانتهاء  سينتقل الدور "
                "للاعب الاخر الذي يجب عليه لعب نفس المرحلة"),
            QStringLiteral("معركة تحدي مع لاعب اخر"), [this, alive] {
                if (!alive.expired()) {
                    BattleLevels::startBattleGame(BattleLevels::newBattleLevel(), 1, this);
                }
            });
        return;
    }
    const std::optional<GCMatchData> data = GCMatchData::unarchive(match->matchData);
    const qint64 level = data ? data->number(QStringLiteral("level")) : 0;
    Util::showMessageWithTitleOnDismiss(
        QStringLiteral("ستظهر لك نفس المرحلة الذي لعبها اللاعب الذي تحداك، عليك انهائها خلال الزمن المحدد "
                       "وبعدها ستعرف نتيجة المعركة وكل لاعب يأخذ نقاطه بناء على هذه النتيجة"),
        QStringLiteral("العب دورك"), [this, alive, level] {
            if (!alive.expired()) {
                BattleLevels::startBattleGame(level, 2, this);
            }
        });
}

void RandomBattleViewController::playerAnsweredLevelWithScore(qint64 level, qint64 score) {
    if (!match) {
        return;
    }
    auto& hud = Platform::shared().progressHud();
    hud.showWithMaskType(3);
    auto& helper = GCTurnBasedMatchHelper::sharedInstance();
    auto alive = std::weak_ptr<int>(m_alive);
    if (isNewMatch) {
        helper.finishTurnInMatchWithMessageAndLevelAndSenderResultOnCompletion(
            *match, m_message, level, score, [this, alive](std::optional<GKError> error) {
                Platform::shared().progressHud().dismiss();
                if (error) {
                    qWarning().noquote() << "error:" << error->message;
                    Util::showMessageWithTitle(QStringLiteral("حدثت مشكلةولم يتم ارسال الطلب"),
                                               QStringLiteral("خطأ"));
                } else {
                    Util::showMessageWithTitle(
                        QStringLiteral(
                            "لقد تم انشاء معركة جديدة ولعبت دورك وسيتحول الدور للاعب اخر وعندما يلعب "
                            "دوره وتنتهي المعركة سيصلك اشعار بالنتيجة النهائية"),
                        QStringLiteral("تم انشاء معركة بنجاح"));
                }
                if (!alive.expired()) {
                    close();
                }
            });
        return;
    }
    helper.finishBattleWithMessageAndReceiverResultOnCompletion(
        *match, m_message, score, [this, alive, outcome = 0](std::optional<GKError> error) mutable {
            Platform::shared().progressHud().dismiss();
            if (alive.expired()) {
                return;
            }
            if (error) {
                qWarning().noquote() << "error:" << error->message;
                Util::showMessageWithTitle(QStringLiteral("حدثت مشكلة ولم يتم انهاء المعركة"),
                                           QStringLiteral("خطأ"));
            } else {
                outcome = match->participants.value(1).matchOutcome;
                GCTurnBasedMatchHelper::sharedInstance().handlePlayerReceivedBattleOutcome(outcome);
            }
            close();
        });
}

void RandomBattleViewController::close() {
    auto handler = didDismiss;
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == this) {
        nav.dismissViewController();
    }
    if (handler) {
        handler(QStringLiteral("some extra data"));
    }
}
