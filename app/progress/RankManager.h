#pragma once

#include <QList>
#include <QString>

// A rung of the ladder.
class Rank {
public:
    static Rank initWithIdAndNameAndDesc(qint64 id, const QString& name, const QString& desc);

    qint64 id = 0;
    QString name;
    QString desc;
    QString reward;
    qint64 roundToFinish = 0;

    // The badge image of this rank, "badge<id>.png".
    QString getBadge() const;
};

// The ladder lookups and the default amounts, for a product with no rewards of its own. Every amount of the
// game is read through a getter here, so that a subclass can change it.
class BaseRankManager {
public:
    virtual ~BaseRankManager() = default;

    QList<Rank> rankList;

    qint64 getRankIndexForRound(qint64 round) const;
    bool isFirstRoundInNewRank(qint64 round) const;
    qint64 getCurrentRankIndex() const;
    const Rank& getCurrentRank() const;
    const Rank& getRankForRound(qint64 round) const;

    virtual qint64 getLevelCreditsReward() const { return 0; }
    virtual qint64 getLevelPointsReward() const { return 0; }
    virtual qint64 getBonusLevelPointsReward() const { return 0; }
    virtual qint64 getRoundSkipsReward() const { return 0; }
    virtual qint64 getRoundCreditsReward() const { return 0; }
    virtual qint64 getNotificationWaitTime() const;
    virtual qint64 getDailyBonusReward() const { return 25; }
    virtual qint64 getWeeklyBonusReward() const { return 50; }
    virtual qint64 getMonthlyBonusReward() const { return 100; }
    virtual qint64 getBattleWinPoints() const { return 2; }
    virtual qint64 getBattleDrawPoints() const { return 1; }
    virtual qint64 getBattleLossPoints() const { return -2; }
    virtual qint64 getDailyNotificationReward() const { return 0; }
    virtual qint64 getDailyNotification2Reward() const { return 0; }
    virtual qint64 getVideoReward() const { return 0; }
    virtual qint64 getWaitReward() const { return 0; }
    virtual qint64 getShareReward() const { return 0; }
};

// This game's ladder of 41 ranks and its amounts; also the last leaderboard place seen in each round.
class RankManager : public BaseRankManager {
public:
    static constexpr int kRankCount = 41;
    static constexpr int kRoundSlots = 50;

    static RankManager& sharedInstance();
    ~RankManager() override;
    void loadData() { initData(); }
    void initData();

    QList<qint64> packsLastGcRanks;
    void setPacksLastGcRanks(const QList<qint64>& ranks) { packsLastGcRanks = ranks; }

    qint64 getLevelCreditsReward() const override { return 5; }
    qint64 getLevelPointsReward() const override;
    qint64 getBonusLevelPointsReward() const override { return 2 * getLevelCreditsReward(); }
    qint64 getRoundSkipsReward() const override { return 1; }
    qint64 getRoundCreditsReward() const override { return 100; }
    qint64 getNotificationWaitTime() const override;

    // Stores the player's present place on the leaderboard in the slot of the current round.
    void scoreLoaded();
};
