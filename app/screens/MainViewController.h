#pragma once

#include "platform/ViewController.h"

// The first screen: where the player stands (gold, skips, level, round, rank, points) and the way to play.
class MainViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString skipsLabel READ skipsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString creditsLabel READ creditsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString currentLevelLabel READ currentLevelLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString currentRoundLabel READ currentRoundLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString totalPointsLabel READ totalPointsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString currentBadgeLabel READ currentBadgeLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString currentBadgeDesc READ currentBadgeDesc NOTIFY labelsChanged)
    Q_PROPERTY(QString currentBadgeImage READ currentBadgeImage NOTIFY labelsChanged)
    Q_PROPERTY(bool battleButtonVisible READ battleButtonVisible NOTIFY labelsChanged)
public:
    explicit MainViewController(QObject* parent = nullptr);
    ~MainViewController() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    Q_INVOKABLE void startAction();
    Q_INVOKABLE void openStore();
    void creditsSkipsChanged();
    void pointsChanged();

    QString skipsLabel() const { return m_skips; }
    QString creditsLabel() const { return m_credits; }
    QString currentLevelLabel() const { return m_level; }
    QString currentRoundLabel() const { return m_round; }
    QString totalPointsLabel() const { return m_points; }
    QString currentBadgeLabel() const { return m_badgeName; }
    QString currentBadgeDesc() const { return m_badgeDesc; }
    QString currentBadgeImage() const { return m_badgeImage; }
    bool battleButtonVisible() const { return m_battleButtonVisible; }

signals:
    void labelsChanged();

private:
    QString m_skips, m_credits, m_level, m_round, m_points, m_badgeName, m_badgeDesc, m_badgeImage;
    bool m_battleButtonVisible = false;
};
