#include "RealTimeBattleListViewController.h"

#include "multiplayer/GCRealTimeMatchHelper.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "progress/RankManager.h"
#include "progress/UserStatsManager.h"
#include "screens/Util.h"

#include <cstdlib>

RealTimeBattleListViewController::RealTimeBattleListViewController(QObject* parent)
    : ViewController(QStringLiteral("RealTimeBattleListViewController"), parent) {}

void RealTimeBattleListViewController::viewDidLoad() {
    allBattles = GCRealTimeMatchHelper::sharedInstance().matchHistory;
    const auto& stats = UserStatsManager::sharedInstance();
    m_wins = QString::number(stats.totalWins());
    m_draws = QString::number(stats.totalDraws());
    m_losses = QString::number(stats.totalLosses());
    m_finalPoints = QString::number(stats.totalBattlePoints());
    emit changed();
}

void RealTimeBattleListViewController::viewWillAppear() {
    allBattles = GCRealTimeMatchHelper::sharedInstance().matchHistory;
    emit changed();
}

QVariantList RealTimeBattleListViewController::rows() const {
    const auto& rank = RankManager::sharedInstance();
    const auto& stats = UserStatsManager::sharedInstance();
    QVariantList out;
    for (qsizetype r = 0; r < allBattles.size(); ++r) {
        const QVariantMap& entry = allBattles.at(allBattles.size() - 1 - r);
        const qint64 result = entry.value("matchResult").toLongLong();
        QString outcome, points, tint;
        if (result > 0) {
            outcome = QStringLiteral("فوز");
            points = QStringLiteral(" ربحت %1 نقطة").arg(std::abs(rank.getBattleWinPoints()));
            tint = QStringLiteral("green");
        } else if (result == 0) {
            outcome = QStringLiteral("تعادل");
            points = QStringLiteral(" ربحت %1 نقطة").arg(std::abs(rank.getBattleDrawPoints()));
            tint = QStringLiteral("yellow");
        } else {
            outcome = QStringLiteral("خسارة");
            points = QStringLiteral(" خسرت %1 نقطة").arg(std::abs(rank.getBattleLossPoints()));
            tint = QStringLiteral("red");
        }
        out.append(QVariantMap{
            {"myAvatar", QStringLiteral("b%1.png").arg(stats.profileImgNum())},
            {"myFlag", QStringLiteral("f%1.png").arg(stats.countryFlagNum())},
            {"opponentAvatar", QStringLiteral("b%1.png").arg(entry.value("opponentAvatar").toLongLong())},
            {"opponentFlag", QStringLiteral("f%1.png").arg(entry.value("opponentFlag").toLongLong())},
            {"opponentName", entry.value("opponentName").toString()},
            {"date", Util::formatDateWithFormat(entry.value("date").toDateTime(),
                                                QStringLiteral("dd/MM/yyyy HH:mm"))},
            {"outcome", outcome},
            {"points", points},
            {"tint", tint}});
    }
    return out;
}

void RealTimeBattleListViewController::close() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
