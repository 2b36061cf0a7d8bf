#pragma once

#include "platform/ViewController.h"

#include "progress/TipsManager.h"
#include <QUrl>

#include <QColor>
#include <memory>

// The first screen: where the player stands (gold, skips, level, round, rank, points) and the way to play.
class Timer;

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
    Q_PROPERTY(QString completedAchmtsLabel READ completedAchmtsLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString totalWinsLabel READ totalWinsLabel NOTIFY labelsChanged)
    Q_PROPERTY(bool battleButtonVisible READ battleButtonVisible NOTIFY labelsChanged)
    Q_PROPERTY(QString achievementsEffect READ achievementsEffect NOTIFY labelsChanged)
    Q_PROPERTY(QString startButtonEffect READ startButtonEffect NOTIFY labelsChanged)
    Q_PROPERTY(QString notLoggedLabel READ notLoggedLabel NOTIFY labelsChanged)
    Q_PROPERTY(bool notLoggedVisible READ notLoggedVisible NOTIFY labelsChanged)
    Q_PROPERTY(QString playerRankLabel READ playerRankLabel NOTIFY labelsChanged)
    Q_PROPERTY(QString gcRankChange READ gcRankChange NOTIFY labelsChanged)
    Q_PROPERTY(QColor gcRankChangeColor READ gcRankChangeColor NOTIFY labelsChanged)
    Q_PROPERTY(QString gcRankArrow READ gcRankArrow NOTIFY labelsChanged)
    Q_PROPERTY(bool gcRankVisible READ gcRankVisible NOTIFY labelsChanged)
    Q_PROPERTY(bool promoVisible READ promoVisible NOTIFY promoChanged)
    Q_PROPERTY(double promoAlpha READ promoAlpha NOTIFY promoChanged)
    Q_PROPERTY(QUrl promoIcon READ promoIcon CONSTANT)
public:
    static inline const QString kLoginPrompt = QStringLiteral("اضغط لتسجيل الدخول الى الجيم سنتر");
    static constexpr double kLoginTimeLimitSeconds = 12.0;

    explicit MainViewController(QObject* parent = nullptr);
    ~MainViewController() override;

    void viewDidLoad() override;
    void viewWillAppear() override;

    Q_INVOKABLE void startAction();
    Q_INVOKABLE void openStore();
    Q_INVOKABLE void loginToGameCenterAction() { loginToGameCenter(); }
    Q_INVOKABLE void openGameCenter();
    // A new battle: with a random player (the battles page) or with a friend (the leaderboard, to pick one).
    Q_INVOKABLE void startBattle();
    Q_INVOKABLE void openSettings();
    Q_INVOKABLE void openAchievements();
    Q_INVOKABLE void openRankings();
    Q_INVOKABLE void openAbout();
    // The panel of the maker's promoted game: shown on one launch in three from the third active day,
    // pulsing; a tap opens the game in the store.
    Q_INVOKABLE void openPromoView();
    static constexpr double kPromoPulseSeconds = 0.6;
    bool promoVisible() const { return m_promoVisible; }
    double promoAlpha() const { return m_promoAlpha; }
    QUrl promoIcon() const;
    Q_INVOKABLE void shareAction();
    Q_INVOKABLE void rateAction();
    void loginToGameCenter();
    void loginBookkeeping();
    void scoreLoaded();
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
    QString completedAchmtsLabel() const { return m_completedAchmts; }
    QString totalWinsLabel() const { return m_totalWins; }
    bool battleButtonVisible() const { return m_battleButtonVisible; }
    QString achievementsEffect() const { return m_achievementsAttention.effect; }
    QString startButtonEffect() const { return m_startAttention.effect; }
    QString notLoggedLabel() const { return m_notLogged; }
    bool notLoggedVisible() const { return m_notLoggedVisible; }
    QString playerRankLabel() const { return m_playerRank; }
    QString gcRankChange() const { return m_rankChange; }
    QColor gcRankChangeColor() const { return m_rankChangeColor; }
    QString gcRankArrow() const { return m_rankArrow; }
    bool gcRankVisible() const { return m_rankVisible; }

signals:
    void labelsChanged();
    void promoChanged();

protected:
    // Enter presses the play button.
    bool keyPressed(const KeyPress& press) override;

private:
    QString m_skips, m_credits, m_level, m_round, m_points, m_badgeName, m_badgeDesc, m_badgeImage;
    QString m_completedAchmts, m_totalWins;
    Attention m_achievementsAttention, m_startAttention, m_settingsAttention;
    bool m_battleButtonVisible = false;
    QString m_notLogged;
    bool m_notLoggedVisible = true;
    QString m_playerRank = QStringLiteral("---");
    QString m_rankChange;
    QColor m_rankChangeColor;
    QString m_rankArrow;
    bool m_rankVisible = false;
    bool m_promoVisible = false;
    double m_promoAlpha = 1.0;
    std::shared_ptr<Timer> m_promoTimer;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
