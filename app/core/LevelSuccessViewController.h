#pragma once

#include "Game.h"
#include "platform/Scheduler.h"
#include "platform/ViewController.h"

#include <QPointer>

class GameViewController;

// The screen after a solved level: the answer and the rewards, the score reported to the leaderboard and how
// the player's place moved, and the way on. Type 0: a level inside a round; 1 (and 2): a previous level
// played again; 3: the round is done.
class LevelSuccessViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(int type READ typeValue CONSTANT)
    Q_PROPERTY(QString solutionText READ solutionText CONSTANT)
    Q_PROPERTY(QString titleText READ titleText CONSTANT)
    Q_PROPERTY(QString nextButtonText READ nextButtonText CONSTANT)
    Q_PROPERTY(QString creditsText READ creditsText CONSTANT)
    Q_PROPERTY(QString pointsText READ pointsText CONSTANT)
    Q_PROPERTY(QString totalPointsText READ totalPointsText NOTIFY labelsChanged)
    Q_PROPERTY(QString currentCreditsText READ currentCreditsText NOTIFY labelsChanged)
    Q_PROPERTY(QString lastRankText READ lastRankText NOTIFY labelsChanged)
    Q_PROPERTY(QString currentRankText READ currentRankText NOTIFY labelsChanged)
    Q_PROPERTY(QString rankIsChangedLabel READ rankIsChangedLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString rankChangeText READ rankChangeText NOTIFY labelsChanged)
    Q_PROPERTY(bool rankRose READ rankRose NOTIFY labelsChanged)
    Q_PROPERTY(bool buttonsEnabled READ buttonsEnabled NOTIFY labelsChanged)
    Q_PROPERTY(bool pulseGcView READ pulseGcView NOTIFY labelsChanged)
    Q_PROPERTY(bool shakeShareScoreView READ shakeShareScoreView NOTIFY labelsChanged)
public:
    explicit LevelSuccessViewController(QObject* parent = nullptr);
    ~LevelSuccessViewController() override;

    static constexpr double kSafetySeconds = 3.0;

    qint32 type = 0;
    GamePtr game;
    qint64 rewardedPoints = 0;
    qint64 credits = 0;
    bool isFreeOptionRewarded = false;
    // The level-end ad has had its turn on this screen.
    bool adDisplayed = false;
    static constexpr double kAdDelaySeconds = 0.5;
    QPointer<GameViewController> playScreen;

    void viewDidLoad() override;
    // Once per screen, half a second in: the progress display, and half a second later the level-end ad.
    void viewDidAppear() override;
    void enableButtons();
    void creditsChanged();
    void scoreLoaded();
    Q_INVOKABLE void openLeaderboardAction();
    // The next button: on to the next level (type 0), the round's prize (type 3), or back to the round's
    // levels.
    Q_INVOKABLE void nextLevelAction();
    // The menu button: back to the round selector, whatever the type (and so without the round's prize).
    Q_INVOKABLE void goHomeAction();
    void goBackToLevelsSelectorViewController();

    int typeValue() const { return type; }
    QString solutionText() const;
    QString titleText() const;
    QString nextButtonText() const;
    QString creditsText() const { return QString::number(credits); }
    QString pointsText() const { return QString::number(rewardedPoints); }
    QString totalPointsText() const { return m_totalPoints; }
    QString currentCreditsText() const { return m_currentCredits; }
    QString lastRankText() const { return m_lastRank; }
    QString currentRankText() const { return m_currentRank; }
    QString rankIsChangedLabel() const { return m_rankIsChanged; }
    QString rankChangeText() const { return m_rankChange; }
    bool rankRose() const { return m_rankRose; }
    bool buttonsEnabled() const { return m_buttonsEnabled; }
    bool pulseGcView() const { return m_pulseGcView; }
    bool shakeShareScoreView() const { return m_shakeShareScoreView; }
    static constexpr double kEmitterSeconds = 0.2;
    static constexpr double kRankEmitterDelaySeconds = 0.3;
    static constexpr double kRankEmitterSeconds = 1.5;

signals:
    void labelsChanged();

protected:
    // Enter presses the next button, once the buttons are enabled.
    bool keyPressed(const KeyPress& press) override;

private:
    QString m_totalPoints, m_currentCredits, m_lastRank, m_currentRank, m_rankIsChanged, m_rankChange;
    bool m_rankRose = false;
    bool m_buttonsEnabled = false;
    bool m_pulseGcView = false;
    bool m_shakeShareScoreView = false;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
