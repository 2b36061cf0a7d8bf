#pragma once

#include <QtGlobal>

class GameViewController;

// Told by the play screen how a battle level ended: score 1 when it was solved in time, 0 when the time ran
// out or the player left.
class BattleDelegate {
public:
    virtual ~BattleDelegate() = default;
    virtual void playerAnsweredLevelWithScore(qint64 level, qint64 score) = 0;
};

// Where battles pick and open their levels.
class BattleLevels {
public:
    // A new battle's level over all rounds: one the player has passed, never the first two.
    static qint64 newBattleLevel();
    // Opens the play screen on the level in battle mode: type 1 plays first, type 2 answers.
    static GameViewController* startBattleGame(qint64 level, qint64 battleGameType, BattleDelegate* delegate);
};
