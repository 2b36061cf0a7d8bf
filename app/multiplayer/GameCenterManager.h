#pragma once

#include "platform/gamekit/GameKit.h"

#include <QHash>
#include <QString>
#include <functional>
#include <optional>

class ViewController;

inline const QString scoreLoadedNotification = QStringLiteral("scoreLoadedNotification");

// Stands between the game and the game service: the login state, the one leaderboard, the local player's own
// score and rank.
class GameCenterManager {
public:
    using AuthenticateCompletion =
        std::function<void(ViewController* loginScreen, std::optional<GKError> error)>;

    static inline const QString kLastAuthSavedStatusKey = QStringLiteral("lastAuthSavedStatusKey");

    static GameCenterManager& sharedInstance();
    ~GameCenterManager();
    void loadData() { init(); }
    void init();

    static bool isGameCenterAvailable() { return true; }
    void authenticateLocalUserWithCompletionHandler(AuthenticateCompletion handler);
    void authenticationChanged();
    void saveLastAuthStatus(const QString& status);
    void registerListener(QObject* listener);

    void reportScoreWithContextWithCompletionHandler(qint64 score, qint64 context,
                                                     std::function<void()> handler);
    // A request for ranks from range.location on; a length of 0 asks for the player's friends.
    std::optional<GKLeaderboard>
    prepareLeaderboardRequestWithRangeAndPlayerList(GKLeaderboard::Range range,
                                                    const QList<GKPlayer>* players);
    void reloadPlayerScoreWithCompletionHandler(std::function<void()> handler);
    using ScoresHandler = std::function<void(std::optional<QList<GKScore>>, std::optional<GKError>)>;
    // Runs a prepared request, kept alive until it answers.
    void loadScores(std::shared_ptr<GKLeaderboard> request, ScoresHandler done);
    // Where loadScores takes its scores from instead of the game service (tests).
    std::function<void(const GKLeaderboard& request, ScoresHandler done)> scoresSource;
    void loadPlayerScoresCompletionHandler(const QList<GKPlayer>& players,
                                           std::function<void(std::optional<QList<GKScore>>)> done);

    // Achievements: a cache by identifier over the service's store.
    void loadAchievements();
    GKAchievement& getAchievementForIdentifier(const QString& identifier);
    void reportAchievementIdentifierPercentComplete(const QString& identifier, float percent);
    void completeMultipleAchievements(const QList<GKAchievement>& achievements);
    void resetAchievements();
    QHash<QString, GKAchievement> achievementsDictionary;

    bool gameCenterAvailable = false;
    bool userAuthenticated = false;
    bool isPlayerScoreLoaded = false;
    std::optional<GKScore> scoreObject;
    qint64 playerScore = 0;
    qint64 playerRank = 0;
    qint64 playerRankBeforeReportingLastScore = 0;
    QString currentStatus;
    QString lastAuthenticationSavedStatus;

    void setPlayerRankBeforeReportingLastScore(qint64 rank) { playerRankBeforeReportingLastScore = rank; }

private:
    // Requests under way live here until they finish.
    std::vector<std::shared_ptr<GKLeaderboard>> m_loads;
};
