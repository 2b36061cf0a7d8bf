#include "ExchangesViewController.h"

#include "multiplayer/GCMatchData.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"
#include "multiplayer/MatchLists.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/ProgressHud.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/CreditsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/Util.h"

#include <QVariantMap>
#include <algorithm>
#include <cmath>

namespace {

GCTurnBasedMatchHelper& helper() {
    return GCTurnBasedMatchHelper::sharedInstance();
}

const QString kGoldPlural = QStringLiteral("الذهبات");

} // namespace

ExchangesViewController::ExchangesViewController(QObject* parent)
    : ViewController(QStringLiteral("ExchangesViewController"), parent) {}

void ExchangesViewController::viewDidLoad() {
    loadAndSortMatches();
    fillTotals();
}

void ExchangesViewController::fillTotals() {
    // The tab of requests received shows the gold sent, and the tab of requests sent the gold received.
    const auto& stats = UserStatsManager::sharedInstance();
    if (m_segment == 0) {
        m_totalGold = QString::number(stats.totalExchangeSent());
        m_goldText = QStringLiteral("مجموع %1 التي ارسلتها").arg(kGoldPlural);
    } else {
        m_totalGold = QString::number(stats.totalExchangeReceived());
        m_goldText = QStringLiteral("مجموع %1 التي جاءتك").arg(kGoldPlural);
    }
    emit totalsChanged();
}

int ExchangesViewController::maximumGift() const {
    return static_cast<int>(
        std::clamp<qint64>(CreditsManager::sharedInstance().currentCredits(), 0, 1'000'000));
}

void ExchangesViewController::loadAndSortMatches() {
    receivedExchanges.clear();
    sentExchanges.clear();
    helper().matchService().loadMatches(
        [this, alive = std::weak_ptr<int>(m_alive)](std::optional<QList<GKTurnBasedMatch>> matches,
                                                    std::optional<GKError>) {
            if (alive.expired()) {
                return;
            }
            // Battles ride on the same list: only exchanges stay.
            allExchanges = MatchLists::ofType(matches, QStringLiteral("exchange"));
            receivedExchanges.clear();
            sentExchanges.clear();
            const QString me = GKLocalPlayer::localPlayer().playerID();
            for (const GKTurnBasedMatch& m : std::as_const(allExchanges)) {
                if (m.participants.isEmpty()) {
                    continue;
                }
                if (m.participants.first().playerID == me) {
                    sentExchanges.append(m);
                } else {
                    receivedExchanges.append(m);
                }
            }
            MatchLists::loadNames(allExchanges, &m_names, m_alive, [this] { emit rowsChanged(); });
            emit rowsChanged();
        });
}

QVariantMap ExchangesViewController::rowFor(const GKTurnBasedMatch& m) const {
    const std::optional<GCMatchData> data = GCMatchData::unarchive(m.matchData);
    // The other player: the giver on the sent side, the requester on the received side.
    const QString other = m.participants.value(m_segment == 0 ? 0 : 1).playerID;
    const qint64 gold = data ? data->number(QStringLiteral("gold")) : 0;
    const std::optional<QString> reply = data ? data->string(QStringLiteral("reply")) : std::nullopt;
    QVariantMap row{
        {"otherID", other},
        {"otherName", other.isEmpty() ? QString() : m_names.value(other)},
        {"date", Util::formatDateWithFormat(m.creationDate, QStringLiteral("dd/MM/yyyy HH:mm"))},
        {"message", data ? data->string(QStringLiteral("message")).value_or(QString()) : QString()},
        {"reply", reply.value_or(QString())}};
    if (m_segment != 0) {
        // A refused request reads as waiting for good: the row looks at the gold alone.
        row.insert("kind", QStringLiteral("SentRequestCell"));
        row.insert("goldText", gold < 1 ? QStringLiteral("بالانتظار") : QString::number(gold));
        row.insert("goldTint", gold < 1 ? QStringLiteral("red") : QStringLiteral("green"));
        return row;
    }
    if (!reply && m.status == GKTurnBasedMatchStatusOpen) {
        row.insert("kind", QStringLiteral("ReceivedRequestCell"));
        const int initial = std::min(1, maximumGift());
        row.insert("amount", m_amounts.value(m.matchID, QString::number(initial)));
        return row;
    }
    row.insert("kind", QStringLiteral("FinishedReceivedRequestCell"));
    row.insert("goldText",
               gold < 1
                   ? QStringLiteral("لقد رفضت الطلب")
                   : QStringLiteral("لقد ارسلت %1 %2").arg(QString::number(gold), QStringLiteral("ذهبة")));
    row.insert("goldTint", gold < 1 ? QStringLiteral("red") : QStringLiteral("green"));
    return row;
}

QVariantList ExchangesViewController::rows() const {
    QVariantList out;
    for (const GKTurnBasedMatch& m : shownExchanges()) {
        out.append(rowFor(m));
    }
    return out;
}

void ExchangesViewController::close() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}

void ExchangesViewController::segmentChanged(int segment) {
    SoundFactory::sharedInstance().playMenuTap();
    m_segment = segment == 0 ? 0 : 1;
    fillTotals();
    emit rowsChanged();
}

void ExchangesViewController::stepperTapped(int row, double value) {
    SoundFactory::sharedInstance().playMenuTap();
    if (m_segment != 0 || row < 0 || row >= receivedExchanges.size() || !std::isfinite(value)) {
        return;
    }
    const qint64 amount = static_cast<qint64>(std::trunc(std::max(0.0, value)));
    m_amounts.insert(receivedExchanges.at(row).matchID, QString::number(amount));
    emit rowsChanged();
}

void ExchangesViewController::sendGoldButtonTapped(int row, const QString& reply) {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().progressHud().showWithMaskType(3);
    if (m_segment != 0 || row < 0 || row >= receivedExchanges.size()) {
        return; // no row under the button: the display stays
    }
    const qint64 amount = rowFor(receivedExchanges.at(row)).value("amount").toString().toLongLong();
    if (amount > CreditsManager::sharedInstance().currentCredits()) {
        Platform::shared().progressHud().dismiss();
        Util::showMessageWithTitle(QStringLiteral("ليس لديك هذا القدر من الذهب، اختر مبلغا أقل"),
                                   QStringLiteral("ذهبك لا يكفي"));
        return;
    }
    answer(row, reply, amount);
}

void ExchangesViewController::rejectButtonTapped(int row, const QString& reply) {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().progressHud().showWithMaskType(3);
    if (m_segment != 0 || row < 0 || row >= receivedExchanges.size()) {
        return;
    }
    answer(row, reply, 0);
}

void ExchangesViewController::answer(int row, const QString& reply, qint64 gold) {
    const GKTurnBasedMatch match = receivedExchanges.at(row);
    // A second tap while the first answer is on its way finds the row gone from the list.
    receivedExchanges.removeAt(row);
    emit rowsChanged();
    helper().replayToExchangeMatchWithMessageAndGoldOnCompletion(
        match, reply, gold, [this, alive = std::weak_ptr<int>(m_alive), gold](std::optional<GKError> e) {
            Platform::shared().progressHud().dismiss();
            const bool refusal = gold == 0;
            if (e) {
                qWarning().noquote() << "error:" << e->message;
                Util::showMessageWithTitle(refusal ? QStringLiteral("حدث خطأ")
                                                   : QStringLiteral("حدثت مشكلة ولم يتم ارسال الطلب"),
                                           QStringLiteral("خطأ"));
                if (!alive.expired()) {
                    loadAndSortMatches();
                }
                return;
            }
            if (!refusal) {
                CreditsManager::sharedInstance().deductCredits(gold);
                UserStatsManager::sharedInstance().incrementTotalExchangeSent(gold);
            }
            if (!alive.expired()) {
                loadAndSortMatches();
            }
            if (refusal) {
                Util::showMessageWithTitle(QStringLiteral("لقد تم رفض الطلب"), QStringLiteral("رفض"));
            } else {
                Util::showMessageWithTitle(
                    QStringLiteral("لقد تم ارسال %1 بنجاح").arg(QStringLiteral("الذهب")),
                    QStringLiteral("تم الارسال"));
            }
        });
}

void ExchangesViewController::removeButtonTapped(int row) {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().progressHud().showWithMaskType(3);
    if (row < 0 || row >= shownExchanges().size()) {
        return;
    }
    helper().removeMatchOnCompletion(shownExchanges().at(row), [this, alive = std::weak_ptr<int>(m_alive)](
                                                                   std::optional<GKError> e) {
        Platform::shared().progressHud().dismiss();
        if (e) {
            qWarning().noquote() << "error:" << e->message;
            Util::showMessageWithTitle(QStringLiteral("لقد حدث خطأ في حذف التبادل"), QStringLiteral("خطأ"));
            return;
        }
        if (!alive.expired()) {
            loadAndSortMatches();
        }
        Util::showMessageWithTitle(QStringLiteral("لقد تم حذف التبادل"), QStringLiteral("تمت العملية"));
    });
}

QString ExchangesViewController::getMatchStatus(qint64 status) {
    return GCTurnBasedMatchHelper::matchStatusWord(status);
}
