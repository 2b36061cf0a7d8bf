#pragma once

#include "Game.h"
#include "platform/ViewController.h"

#include <QPointer>

class GameViewController;

// The popup over the play screen after a solved level. Type 0: a new level with a next one in the round;
// type 1: a previous level played again; type 3: the last level of a round.
class LevelSuccessViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(int type READ typeValue CONSTANT)
    Q_PROPERTY(QString solutionText READ solutionText CONSTANT)
    Q_PROPERTY(QString titleText READ titleText CONSTANT)
    Q_PROPERTY(QString nextButtonText READ nextButtonText CONSTANT)
public:
    explicit LevelSuccessViewController(QObject* parent = nullptr)
        : ViewController(QStringLiteral("LevelSuccessViewController"), parent) {}

    qint32 type = 0;
    GamePtr game;
    qint64 rewardedPoints = 0;
    qint64 credits = 0;
    QPointer<GameViewController> playScreen;

    Q_INVOKABLE void nextAction();

    int typeValue() const { return type; }
    QString solutionText() const;
    QString titleText() const;
    QString nextButtonText() const;
};
