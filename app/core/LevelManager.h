#pragma once

#include "Game.h"

#include <QString>

inline const QString NotificationLevelChanged = QStringLiteral("NotificationLevelChanged");

// The player's position in the endless sequence of levels: `currentLevel` is the next level to play and the
// number of levels completed or skipped so far.
class LevelManager {
public:
    static LevelManager& sharedInstance();
    void loadData();

    qint64 currentLevel() const { return m_currentLevel; }
    void setCurrentLevel(qint64 level) { m_currentLevel = level; }

    void incrementCurrentLevel();
    void decrementCurrentLevel();
    void incrementCurrentLevelToNextRoundStart();
    void saveCurrentLevelTo(qint64 level);

    qint64 getCurrentRound() const { return m_currentLevel / Game::kLevelsPerRound; }
    qint64 getCurrentGameId() const { return m_currentLevel % Game::kLevelsPerRound; }
    qint64 getCurrentRoundStartLevel() const { return Game::kLevelsPerRound * getCurrentRound(); }
    GamePtr getCurrentGame() const;
    bool isCurrentGameIsLastInRound() const { return getCurrentGameId() == 24; }
    bool isGameLastInRound(qint64 gameId) const { return gameId == 24; }

    bool isLevelRewardedSecondTime(qint64 level) const;
    void setLevelRewardedForSecondTime(qint64 level);

private:
    void save();
    void changed();

    qint64 m_currentLevel = 0;
};
