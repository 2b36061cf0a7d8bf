#include "RankManager.h"

#include "core/LevelManager.h"
#include "multiplayer/GameCenterManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <QVariantList>
#include <array>

namespace {
struct Rung {
    const char* name;
    int percent;
};

const std::array<Rung, RankManager::kRankCount> kLadder{{
    {"مبتديء", 85},     {"نص مبتديء", 70}, {"متوسط", 60},     {"جيد", 55},         {"جيد جداً", 50},
    {"ممتاز", 45},      {"خبير", 40},      {"ذكي", 35},       {"عالي الذكاء", 30}, {"عبقري", 28},
    {"Leibruke", 27},   {"Kreizip", 26},   {"Raitro", 25},    {"Glokapri", 24},    {"Miolaklu", 23},
    {"Sesaik", 22},     {"Prugrair", 21},  {"Treifleg", 20},  {"Noviok", 19},      {"Trabrere", 18},
    {"Briodek", 17},    {"Nunakif", 16},   {"Kupobrain", 15}, {"Kloziofle", 14},   {"Fubemke", 13},
    {"Varote", 12},     {"Drioplin", 11},  {"Brograir", 10},  {"Nobifioz", 9},     {"Rubregun", 8},
    {"Kleitrez", 7},    {"Keiklain", 6},   {"Truplek", 5},    {"Plozin", 4},       {"Glifip", 3},
    {"Godrus", 3},      {"Klikle", 2},     {"الخوارزمي", 2},  {"أفلاطون", 1},      {"آينشتاين", 1},
    {"ختمت اللعبة", 1},
}};

const QString kSlotsKey = QStringLiteral("groupsGcRanks");

qint64 currentRound() {
    return LevelManager::sharedInstance().getCurrentRound();
}
} // namespace

Rank Rank::initWithIdAndNameAndDesc(qint64 id, const QString& name, const QString& desc) {
    Rank r;
    r.id = id;
    r.name = name;
    r.desc = desc;
    return r;
}

QString Rank::getBadge() const {
    return QStringLiteral("badge%1.png").arg(id);
}

qint64 BaseRankManager::getRankIndexForRound(qint64 round) const {
    for (qsizetype i = 0; i < rankList.size(); ++i) {
        if (rankList.at(i).roundToFinish > round) {
            return i - 1;
        }
    }
    return rankList.size() - 1;
}

bool BaseRankManager::isFirstRoundInNewRank(qint64 round) const {
    for (const Rank& r : rankList) {
        if (r.roundToFinish == round) {
            return true;
        }
    }
    return false;
}

qint64 BaseRankManager::getCurrentRankIndex() const {
    return getRankIndexForRound(currentRound());
}

const Rank& BaseRankManager::getCurrentRank() const {
    return rankList.at(getCurrentRankIndex());
}

const Rank& BaseRankManager::getRankForRound(qint64 round) const {
    // A negative round has no rank of its own; it reads as the first.
    return rankList.at(std::max<qint64>(0, getRankIndexForRound(round)));
}

qint64 BaseRankManager::getNotificationWaitTime() const {
    const qint64 round = currentRound();
    return getCurrentRankIndex() != 0 ? 60 * (1 + round) : 10 * (1 + round);
}

RankManager& RankManager::sharedInstance() {
    return Shared<RankManager>::instance();
}

RankManager::~RankManager() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void RankManager::initData() {
    rankList.clear();
    for (int i = 0; i < kRankCount; ++i) {
        Rank r;
        r.id = i + 1;
        r.roundToFinish = i;
        r.name = QString::fromUtf8(kLadder[static_cast<size_t>(i)].name);
        r.desc = QStringLiteral("فقط %1% يستطيعون انهاء هذه المجموعة")
                     .arg(kLadder[static_cast<size_t>(i)].percent);
        rankList.append(r);
    }

    packsLastGcRanks.clear();
    const QVariant stored = Platform::shared().userDefaults().objectForKey(kSlotsKey);
    // The list comes back from the settings file as a list of texts (or of values); anything else is
    // unreadable.
    bool readable = stored.isValid() &&
                    (stored.typeId() == QMetaType::QStringList || stored.typeId() == QMetaType::QVariantList);
    if (readable) {
        for (const QVariant& v : stored.toList()) {
            bool ok = false;
            const qint64 n = v.toLongLong(&ok);
            if (!ok) {
                readable = false;
                break;
            }
            packsLastGcRanks.append(n);
        }
    }
    if (!readable || packsLastGcRanks.isEmpty()) {
        if (stored.isValid()) {
            qWarning("The stored places per round could not be read; they start anew.");
        }
        packsLastGcRanks = QList<qint64>(kRoundSlots, 0);
    }

    Platform::shared().notificationCenter().addObserver(this, scoreLoadedNotification,
                                                        [this](const Notification&) { scoreLoaded(); });
}

qint64 RankManager::getLevelPointsReward() const {
    const qint64 round = currentRound();
    if (round < 6) {
        return 1;
    }
    return round < 12 ? 2 : 3;
}

qint64 RankManager::getNotificationWaitTime() const {
    const qint64 round = currentRound();
    return round < 1 ? 5 : 30 + 30 * round;
}

void RankManager::scoreLoaded() {
    const qint64 slot = LevelManager::sharedInstance().currentLevel() / 25;
    if (slot < 0) {
        return;
    }
    // Past the known slots the list grows, so that a long game keeps a place for every round.
    while (packsLastGcRanks.size() <= slot) {
        packsLastGcRanks.append(0);
    }
    packsLastGcRanks[slot] = GameCenterManager::sharedInstance().playerRank;
    QVariantList list;
    for (qint64 v : std::as_const(packsLastGcRanks)) {
        list.append(v);
    }
    auto& defaults = Platform::shared().userDefaults();
    defaults.setObjectForKey(list, kSlotsKey);
    defaults.synchronize();
}
