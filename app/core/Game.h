#pragma once

#include "LevelInfo.h"

#include <QColor>
#include <QString>
#include <memory>
#include <mutex>

// The level that one play screen works on. A level is numbered from 0; round = level div 25 and position =
// level mod 25. The three initialisers fill the numbers differently, on purpose: see each one.
class Game {
public:
    static constexpr qint64 kLevelsPerRound = 25;
    static constexpr qint64 kKindCount = 12;

    // From the level selector and the play screen: `level` is a position in the round, 0 to 24.
    static std::shared_ptr<Game> initWithGameLevelAndGameRound(qint64 level, qint64 round);
    // From battles: `level` is a level number over all rounds.
    static std::shared_ptr<Game> initWithGameLevel(qint64 level);
    // From LevelManager: `gameId` is a kind or a position, and gameLevel = id + 25 × round.
    static std::shared_ptr<Game> initWithGameIdAndGameRound(qint64 gameId, qint64 round);

    qint64 gameId = 0;
    qint64 gameRound = 0;
    qint64 gameLevel = 0;

    // The stored values are kept, but the getters answer from the catalogue by gameId.
    QString gameName() const { return getGameNameWithId(gameId); }
    QString gameInfo() const { return getGameInfoWithId(gameId); }
    void setGameName(const QString& name) { m_gameName = name; }
    void setGameInfo(const QString& info) { m_gameInfo = info; }

    LevelInfoPtr levelInfo() const;
    void setLevelInfo(LevelInfoPtr info);

    // The catalogue of the twelve kinds. A null string stands for "none" (ids outside 0 to 11).
    static QString getGameNameWithId(qint64 id);
    static QString getGameInfoWithId(qint64 id);
    static QString getGameQuesWithId(qint64 id);
    static QString getGameOneWord(qint64 id);
    static QString getPromoGameAppId(qint64 id);
    // The level-file stem of a kind and whether its file is scrambled.
    static QString getLevelFileStemWithId(qint64 id);
    static bool isLevelFileScrambledWithId(qint64 id);
    static QColor getGameTopbarColor();

private:
    Game() = default;

    QString m_gameName;
    QString m_gameInfo;
    mutable std::mutex m_levelInfoMutex;
    LevelInfoPtr m_levelInfo;
};

using GamePtr = std::shared_ptr<Game>;
