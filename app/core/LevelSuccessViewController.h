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

    Q_PROPERTY(QString creditsText READ creditsText CONSTANT)
    Q_PROPERTY(QString pointsText READ pointsText CONSTANT)
    Q_PROPERTY(QString totalPointsText READ totalPointsText CONSTANT)
public:
    // The next button: on to the next level (type 0), or back to the levels of the round.
    Q_INVOKABLE void nextLevelAction();
    // The menu button: back to the round selector, whatever the type.
    Q_INVOKABLE void goHomeAction();
    void goBackToLevelsSelectorViewController();

    QString creditsText() const { return QString::number(credits); }
    QString pointsText() const { return QString::number(rewardedPoints); }
    QString totalPointsText() const;

    int typeValue() const { return type; }
    QString solutionText() const;
    QString titleText() const;
    QString nextButtonText() const;
};
