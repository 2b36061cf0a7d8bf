#pragma once

#include <QString>

inline const QString PointsChangedNotification = QStringLiteral("PointsChangedNotification");

// The player's score points, from which the leaderboard score is made. Never below zero.
class ScorePointsManager {
public:
    static ScorePointsManager& sharedInstance();
    void loadData();

    void addPoints(qint64 delta);
    qint64 totalPoints() const { return m_totalPoints; }
    void setTotalPoints(qint64 v) { m_totalPoints = v; }

private:
    qint64 m_totalPoints = 0;
};
