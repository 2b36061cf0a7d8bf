#include "RankViewController.h"

#include "outreach/SoundFactory.h"
#include "platform/Platform.h"

RankViewController::RankViewController(QObject* parent)
    : ViewController(QStringLiteral("RankViewController"), parent) {}

void RankViewController::viewDidLoad() {
    m_currentRank = RankManager::sharedInstance().getCurrentRank();
    emit changed();
}

QVariantList RankViewController::rows() const {
    QVariantList list;
    const QList<Rank>& ranks = RankManager::sharedInstance().rankList;
    for (qsizetype i = 0; i < ranks.size(); ++i) {
        const Rank& r = ranks.at(i);
        // The rank's id counts from 1 and rows from 0: the tint reaches one row past the current rank.
        list.append(QVariantMap{{"name", r.name},
                                {"desc", r.desc},
                                {"reward", r.reward},
                                {"badge", QStringLiteral("badge%1.png").arg(i)},
                                {"tinted", m_currentRank.id >= i}});
    }
    return list;
}

QVariantList RankViewController::badges() const {
    QVariantList list;
    const qint64 current = RankManager::sharedInstance().getCurrentRankIndex();
    const qsizetype count = RankManager::sharedInstance().rankList.size();
    for (qsizetype i = 0; i < count; ++i) {
        const bool won = i <= current;
        list.append(QVariantMap{
            {"image", (won ? QStringLiteral("badge%1.png") : QStringLiteral("gbadge%1.png")).arg(i)},
            {"won", won}});
    }
    return list;
}

int RankViewController::currentRankIndex() const {
    return static_cast<int>(RankManager::sharedInstance().getCurrentRankIndex());
}

void RankViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    Platform::shared().navigator().dismissViewController();
}
