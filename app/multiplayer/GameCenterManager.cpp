#include "GameCenterManager.h"

#include "multiplayer/GCRealTimeMatchHelper.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/UserStatsManager.h"

#include <QDebug>

GameCenterManager& GameCenterManager::sharedInstance() {
    return Shared<GameCenterManager>::instance();
}

GameCenterManager::~GameCenterManager() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void GameCenterManager::init() {
    gameCenterAvailable = isGameCenterAvailable();
    if (gameCenterAvailable) {
        Platform::shared().notificationCenter().addObserver(
            this, GKPlayerAuthenticationDidChangeNotificationName,
            [this](const Notification&) { authenticationChanged(); });
    }
    const QString saved = Platform::shared().userDefaults().stringForKey(kLastAuthSavedStatusKey);
    lastAuthenticationSavedStatus = saved.isEmpty() ? QString() : saved;
}

void GameCenterManager::saveLastAuthStatus(const QString& status) {
    lastAuthenticationSavedStatus = status;
    auto& d = Platform::shared().userDefaults();
    d.setStringForKey(status, kLastAuthSavedStatusKey);
    d.synchronize();
}

void GameCenterManager::registerListener(QObject* listener) {
    if (listener) {
        GKLocalPlayer::localPlayer().registerListener(listener);
    }
}

void GameCenterManager::authenticateLocalUserWithCompletionHandler(AuthenticateCompletion handler) {
    if (!gameCenterAvailable) {
        return;
    }
    qInfo("Authenticating local user...");
    currentStatus = QStringLiteral("AUTHENTICATING");
    auto& local = GKLocalPlayer::localPlayer();
    if (local.isAuthenticated()) {
        qInfo("Already authenticated!");
        return;
    }
    local.setAuthenticateHandler([this, handler](ViewController* screen, std::optional<GKError> error) {
        if (screen) {
            currentStatus = QStringLiteral("LOGIN_DIALOGUE_SHOWN");
            saveLastAuthStatus(QStringLiteral("LOGIN"));
            if (handler) {
                handler(screen, std::nullopt);
            }
        } else if (error) {
            qInfo().noquote() << error->code << error->message;
            saveLastAuthStatus(QStringLiteral("ERROR"));
            currentStatus = currentStatus == QLatin1String("LOGIN_DIALOGUE_SHOWN")
                                ? QStringLiteral("LOGIN_CANCELLED")
                                : QStringLiteral("OVER_DISMISSED");
            if (handler) {
                handler(nullptr, error);
            }
        } else {
            saveLastAuthStatus(QStringLiteral("AUTO"));
            if (handler) {
                handler(nullptr, std::nullopt);
            }
        }
    });
}

void GameCenterManager::authenticationChanged() {
    const bool authenticated = GKLocalPlayer::localPlayer().isAuthenticated();
    if (authenticated && !userAuthenticated) {
        qInfo("Authentication changed: player authenticated.");
        userAuthenticated = true;
        // Battles and exchanges hear the service's match events from now on.
        registerListener(&GCTurnBasedMatchHelper::sharedInstance());
        // And live matches: an accepted invitation opens the start screen.
        registerListener(&GCRealTimeMatchHelper::sharedInstance());
        reloadPlayerScoreWithCompletionHandler(
            [this] { UserStatsManager::sharedInstance().updateGamecenterRankForCurrentDay(playerRank); });
        currentStatus = QStringLiteral("AUTHENTICATED");
    } else if (!authenticated && userAuthenticated) {
        qInfo("Authentication changed: player not authenticated.");
        userAuthenticated = false;
        currentStatus = QStringLiteral("NOT_AUTHENTICATED");
    }
}

std::optional<GKLeaderboard>
GameCenterManager::prepareLeaderboardRequestWithRangeAndPlayerList(GKLeaderboard::Range range,
                                                                   const QList<GKPlayer>* players) {
    GKLeaderboard request = players ? GKLeaderboard::initWithPlayers(*players) : GKLeaderboard();
    request.setTimeScope(GKLeaderboard::AllTime);
    request.setIdentifier(kLeaderboardIdentifier);
    if (range.length != 0) {
        request.setPlayerScope(GKLeaderboard::Global);
        request.setRange(range);
    } else {
        request.setPlayerScope(GKLeaderboard::FriendsOnly);
    }
    return request;
}

void GameCenterManager::loadScores(std::shared_ptr<GKLeaderboard> request, ScoresHandler done) {
    if (scoresSource) {
        scoresSource(*request, std::move(done));
        return;
    }
    m_loads.push_back(request);
    request->loadScoresWithCompletionHandler(
        [this, request, done = std::move(done)](std::optional<QList<GKScore>> scores,
                                                std::optional<GKError> e) {
            std::erase(m_loads, request);
            done(std::move(scores), std::move(e));
        });
}

void GameCenterManager::reloadPlayerScoreWithCompletionHandler(std::function<void()> handler) {
    auto request = prepareLeaderboardRequestWithRangeAndPlayerList({1, 1}, nullptr);
    if (!request) {
        return;
    }
    auto load = std::make_shared<GKLeaderboard>(*request);
    m_loads.push_back(load);
    load->loadScoresWithCompletionHandler(
        [this, load, handler](std::optional<QList<GKScore>> scores, std::optional<GKError> error) {
            std::erase(m_loads, load);
            if (error) {
                playerRank = 0;
            }
            if (scores) {
                scoreObject = load->localPlayerScore;
                playerScore = scoreObject ? scoreObject->value : 0;
                playerRank = scoreObject ? scoreObject->rank : 0;
                isPlayerScoreLoaded = true;
                if (handler) {
                    handler();
                }
                Platform::shared().notificationCenter().postNotificationName(scoreLoadedNotification);
            } else {
                playerRank = 0;
            }
        });
}

void GameCenterManager::reportScoreWithContextWithCompletionHandler(qint64 score, qint64 context,
                                                                    std::function<void()> handler) {
    GKScore s = GKScore::initWithLeaderboardIdentifier(kLeaderboardIdentifier);
    s.value = score;
    s.context = context;
    GKScore::reportScoresWithCompletionHandler({s}, [handler](std::optional<GKError> error) {
        if (error) {
            qInfo("Unable to report score!");
            return;
        }
        qInfo("Score reported successfully!");
        if (handler) {
            handler();
        }
    });
}

void GameCenterManager::loadPlayerScoresCompletionHandler(
    const QList<GKPlayer>& players, std::function<void(std::optional<QList<GKScore>>)> done) {
    auto request = prepareLeaderboardRequestWithRangeAndPlayerList({1, players.size()}, &players);
    auto load = std::make_shared<GKLeaderboard>(*request);
    m_loads.push_back(load);
    load->loadScoresWithCompletionHandler(
        [this, load, done](std::optional<QList<GKScore>> scores, std::optional<GKError> error) {
            std::erase(m_loads, load);
            done(error ? std::nullopt : scores);
        });
}

void GameCenterManager::loadAchievements() {
    achievementsDictionary.clear();
    GKAchievement::loadAchievementsWithCompletionHandler([this](std::optional<QList<GKAchievement>> list,
                                                                std::optional<GKError> error) {
        if (error) {
            qInfo().noquote()
                << QStringLiteral("Error while loading achievements: %1").arg(error->localizedDescription());
            return;
        }
        for (const GKAchievement& a : *list) {
            achievementsDictionary.insert(a.identifier, a);
        }
    });
}

GKAchievement& GameCenterManager::getAchievementForIdentifier(const QString& identifier) {
    auto it = achievementsDictionary.find(identifier);
    if (it == achievementsDictionary.end()) {
        it = achievementsDictionary.insert(identifier, GKAchievement::initWithIdentifier(identifier));
    }
    return *it;
}

void GameCenterManager::reportAchievementIdentifierPercentComplete(const QString& identifier, float percent) {
    GKAchievement& achievement = getAchievementForIdentifier(identifier);
    if (achievement.percentComplete == 100.0) {
        return;
    }
    achievement.percentComplete = percent;
    achievement.setShowsCompletionBanner(true);
    GKAchievement::reportAchievementsWithCompletionHandler({achievement}, [](std::optional<GKError> error) {
        if (error) {
            qInfo().noquote()
                << QStringLiteral("Error while reporting achievement: %1").arg(error->localizedDescription());
        }
    });
}

void GameCenterManager::completeMultipleAchievements(const QList<GKAchievement>& achievements) {
    GKAchievement::reportAchievementsWithCompletionHandler(achievements, [](std::optional<GKError> error) {
        if (error) {
            qInfo().noquote() << QStringLiteral("Error while reporting achievements: %1")
                                     .arg(error->localizedDescription());
        }
    });
}

void GameCenterManager::resetAchievements() {
    achievementsDictionary.clear();
    GKAchievement::resetAchievementsWithCompletionHandler([](std::optional<GKError> error) {
        if (error) {
            qInfo().noquote()
                << QStringLiteral("Error while reseting achievements: %1").arg(error->localizedDescription());
        }
    });
}
