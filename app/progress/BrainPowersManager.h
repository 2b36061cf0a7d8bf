#pragma once

#include <QList>
#include <QString>

// The player's mind as five powers: memory, calculation, focus, sight and coordination. Each kind of level
// trains some of them by a fixed weight; the points against fixed ceilings give a share of the whole.
// A points array is five numbers in that order.
class BrainPowersManager {
public:
    using PointsArray = QList<qint64>;

    static BrainPowersManager& sharedInstance();
    void loadData();

    void addMemoryPoints(qint64 amount);
    void addCalcPoints(qint64 amount);
    void addFocusPoints(qint64 amount);
    void addSightPoints(qint64 amount);
    void addCoordPoints(qint64 amount);

    qint64 getMaxBrainPoints() const;
    qint64 getMaxMemoryPoints() const { return 5480; }
    qint64 getMaxCalcPoints() const { return 2840; }
    qint64 getMaxFocusPoints() const { return 11190; }
    qint64 getMaxSightPoints() const { return 6920; }
    qint64 getMaxCoordPoints() const { return 6290; }

    // Fractions of the ceilings, 1.0 being full; nothing cuts a value above 1.0.
    float getTotalPercent() const;
    float getMemoryPercent() const;
    float getCalcPercent() const;
    float getFocusPercent() const;
    float getSightPercent() const;
    float getCoordPercent() const;

    // The weights of a kind of level (0 to 19).
    static PointsArray getBasePointsArrayForGame(qint64 gameId);
    // Every trained power gains a point each five rounds; an untrained one stays at 0.
    static PointsArray getMaxPointsArrayForGameInRound(qint64 gameId, qint64 round);
    static qint64 getSumMaxPointsForGameInRound(qint64 gameId, qint64 round);
    // The points a finished level earns from its trials (1 is the first try) and the player's speed.
    static PointsArray getRewardedPointsArrayForGameInRoundWithTrialsAndSpeedPercent(qint64 gameId,
                                                                                     qint64 round,
                                                                                     qint64 trials,
                                                                                     qint64 speedPercent);
    // Adds (or takes away) an array of exactly five; any other length is ignored.
    void addRewardedPointsArray(const PointsArray& points);
    void deductPointsArray(const PointsArray& points);

    qint64 totalPoints() const { return m_totalPoints; }
    qint64 memoryPoints() const { return m_memoryPoints; }
    qint64 calcPoints() const { return m_calcPoints; }
    qint64 focusPoints() const { return m_focusPoints; }
    qint64 sightPoints() const { return m_sightPoints; }
    qint64 coordPoints() const { return m_coordPoints; }
    void setTotalPoints(qint64 v) { m_totalPoints = v; }
    void setMemoryPoints(qint64 v) { m_memoryPoints = v; }
    void setCalcPoints(qint64 v) { m_calcPoints = v; }
    void setFocusPoints(qint64 v) { m_focusPoints = v; }
    void setSightPoints(qint64 v) { m_sightPoints = v; }
    void setCoordPoints(qint64 v) { m_coordPoints = v; }

private:
    void addToPower(qint64& field, const QString& key, qint64 amount);

    qint64 m_totalPoints = 0;
    qint64 m_memoryPoints = 0;
    qint64 m_calcPoints = 0;
    qint64 m_focusPoints = 0;
    qint64 m_sightPoints = 0;
    qint64 m_coordPoints = 0;
};
