#pragma once

#include "GameService.h"

#include <QDateTime>
#include <QImage>
#include <QList>
#include <QString>
#include <QUrlQuery>
#include <functional>
#include <optional>

inline const QString kLeaderboardIdentifier = QStringLiteral("com.molvane.tarvolin.leaderboard");

// A player of the game service.
struct GKPlayer {
    QString playerID;
    QString displayName;
    bool isFriend = false;
    QString photoURL;

    static std::optional<GKPlayer> fromJson(const QJsonObject& o);
    // The player's picture; a null image with an error when it cannot be had or read.
    void loadPhotoWithCompletionHandler(std::function<void(QImage, std::optional<GKError>)> done) const;
    // Several players by identifier, in the order asked (unknown ones left out).
    static void loadPlayersForIdentifiers(const QStringList& ids,
                                          std::function<void(QList<GKPlayer>, std::optional<GKError>)> done);
    // Players whose names start with the text, the local player left out, at most twenty.
    static void loadPlayersNamed(const QString& prefix,
                                 std::function<void(QList<GKPlayer>, std::optional<GKError>)> done);

private:
    static void loadPlayerList(const QUrlQuery& query,
                               std::function<void(QList<GKPlayer>, std::optional<GKError>)> done);
};

// One leaderboard entry.
struct GKScore {
    QString leaderboardIdentifier = kLeaderboardIdentifier;
    qint64 value = 0;
    qint64 context = 0;
    qint64 rank = 0;
    QDateTime date;
    GKPlayer player;

    static GKScore initWithLeaderboardIdentifier(const QString& identifier);
    static std::optional<GKScore> fromJson(const QJsonObject& o);
    // Reports the scores (the game reports one at a time); the completion gets an error or nothing.
    static void reportScoresWithCompletionHandler(const QList<GKScore>& scores,
                                                  std::function<void(std::optional<GKError>)> done);
};

// A leaderboard request, filled in and then run.
class GKLeaderboard {
public:
    enum PlayerScope { Global = 0, FriendsOnly = 1 };
    enum TimeScope { Today = 0, Week = 1, AllTime = 2 };
    struct Range {
        qint64 location = 1;
        qint64 length = 25;
    };

    GKLeaderboard() = default;
    static GKLeaderboard initWithPlayers(const QList<GKPlayer>& players);

    int playerScope = Global;
    int timeScope = AllTime;
    QString identifier = kLeaderboardIdentifier;
    Range range;
    QList<GKPlayer> players;
    bool byPlayers = false; // made for a list of players, which may be empty
    std::optional<GKScore> localPlayerScore;
    qint64 maxRange = 0; // how many players the scope holds, after a load

    void setPlayerScope(int scope) { playerScope = scope; }
    void setTimeScope(int scope) { timeScope = scope; }
    void setIdentifier(const QString& id) { identifier = id; }
    void setRange(Range r) { range = r; }

    // The scores, or nothing with an error; localPlayerScore and maxRange are filled on success.
    void loadScoresWithCompletionHandler(
        std::function<void(std::optional<QList<GKScore>>, std::optional<GKError>)> done);
};

// A friend request between two players.
struct GKFriendRequest {
    QString requestID;
    GKPlayer from;
    GKPlayer to;
    QString message;
    QString status;
    QDateTime createdAt;

    static std::optional<GKFriendRequest> fromJson(const QJsonObject& o);
    static void sendFriendRequest(const QString& playerID, const QString& message,
                                  std::function<void(std::optional<GKError>)> done);
    static void loadFriendRequests(bool incoming,
                                   std::function<void(QList<GKFriendRequest>, std::optional<GKError>)> done);
    static void answerFriendRequest(const QString& requestID, bool accept,
                                    std::function<void(std::optional<GKError>)> done);
    static void loadFriends(std::function<void(QList<GKPlayer>, std::optional<GKError>)> done);
};

// The player's progress on one achievement, kept by the game service.
struct GKAchievement {
    QString identifier;
    double percentComplete = 0.0;
    bool showsCompletionBanner = false;
    QDateTime lastReportedDate;

    static GKAchievement initWithIdentifier(const QString& identifier);
    static std::optional<GKAchievement> fromJson(const QJsonObject& o);
    void setShowsCompletionBanner(bool shows) { showsCompletionBanner = shows; }
    static void loadAchievementsWithCompletionHandler(
        std::function<void(std::optional<QList<GKAchievement>>, std::optional<GKError>)> done);
    static void reportAchievementsWithCompletionHandler(const QList<GKAchievement>& achievements,
                                                        std::function<void(std::optional<GKError>)> done);
    static void resetAchievementsWithCompletionHandler(std::function<void(std::optional<GKError>)> done);
};
