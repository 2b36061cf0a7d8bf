#pragma once

#include "GameKit.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// Turn timeouts in seconds: the default (a week) and the longest the service takes (a year).
constexpr double GKTurnTimeoutDefault = 604800.0;
constexpr double GKTurnTimeoutNone = 31449600.0;

enum GKTurnBasedMatchStatus {
    GKTurnBasedMatchStatusUnknown = 0,
    GKTurnBasedMatchStatusOpen = 1,
    GKTurnBasedMatchStatusEnded = 2,
    GKTurnBasedMatchStatusMatching = 3
};
enum GKTurnBasedParticipantStatus {
    GKTurnBasedParticipantStatusUnknown = 0,
    GKTurnBasedParticipantStatusInvited = 1,
    GKTurnBasedParticipantStatusDeclined = 2,
    GKTurnBasedParticipantStatusMatching = 3,
    GKTurnBasedParticipantStatusActive = 4,
    GKTurnBasedParticipantStatusDone = 5
};
enum GKTurnBasedMatchOutcome {
    GKTurnBasedMatchOutcomeNone = 0,
    GKTurnBasedMatchOutcomeQuit = 1,
    GKTurnBasedMatchOutcomeWon = 2,
    GKTurnBasedMatchOutcomeLost = 3,
    GKTurnBasedMatchOutcomeTied = 4,
    GKTurnBasedMatchOutcomeTimeExpired = 5
};

// One seat of a match: its player (empty while the seat waits for automatic matching), status and outcome.
struct GKTurnBasedParticipant {
    QString playerID;
    int status = GKTurnBasedParticipantStatusUnknown;
    int matchOutcome = GKTurnBasedMatchOutcomeNone;
    QDateTime lastTurnDate;

    void setMatchOutcome(int outcome) { matchOutcome = outcome; }
};

// What a match is asked for: two players, and the one invited, if any (none: automatic matching).
struct GKMatchRequest {
    int minPlayers = 2;
    int maxPlayers = 2;
    int defaultNumberOfPlayers = 2;
    QStringList recipients;
    // The notice that an invited player reads with the first turn.
    QString inviteMessage;
    // What the match is for, as the service knows it: "battle", "exchange" (which the service holds to its
    // limits on requests for gold), or empty.
    QString purpose;

    void setMinPlayers(int n) { minPlayers = n; }
    void setMaxPlayers(int n) { maxPlayers = n; }
    void setDefaultNumberOfPlayers(int n) { defaultNumberOfPlayers = n; }
    void setRecipients(const QStringList& ids) { recipients = ids; }
    void setInviteMessage(const QString& text) { inviteMessage = text; }
    void setPurpose(const QString& p) { purpose = p; }
};

// A turn-based match of two seats on the game service. Every operation answers on the main thread with the
// match as the service now holds it, or an error; the service's refusals keep their codes (an invitation
// refused is "invitation_refused" with the platform code 8 in gkCode).
class GKTurnBasedMatch {
public:
    using MatchHandler = std::function<void(std::optional<GKTurnBasedMatch>, std::optional<GKError>)>;

    QString matchID;
    int status = GKTurnBasedMatchStatusUnknown;
    QDateTime creationDate;
    QList<GKTurnBasedParticipant> participants;
    int currentParticipantIndex = -1;
    QByteArray matchData;
    QString messageKey;
    QStringList messageArguments;
    QString purpose; // as the request gave it; empty for none

    static std::optional<GKTurnBasedMatch> fromJson(const QJsonObject& o);
    // The seat that holds the turn, or nothing.
    const GKTurnBasedParticipant* currentParticipant() const;
    // The seat of a player, or -1.
    int indexOfPlayer(const QString& playerID) const;

    static void findMatchForRequestWithCompletionHandler(const GKMatchRequest& request, MatchHandler done);
    static void loadMatchesWithCompletionHandler(
        std::function<void(std::optional<QList<GKTurnBasedMatch>>, std::optional<GKError>)> done);
    static void loadMatchWithIDWithCompletionHandler(const QString& matchID, MatchHandler done);

    // The notice that the next holder of the turn reads; sent with the next end of turn.
    void setLocalizableMessageWithKeyArguments(const QString& key, const QStringList& arguments);
    // Ends the turn: the data is replaced and the turn goes to the first of `next` (seats), falling through
    // to the following ones when `timeout` seconds pass.
    void endTurnWithNextParticipantsTurnTimeoutMatchDataCompletionHandler(const QList<int>& next,
                                                                          double timeout,
                                                                          const QByteArray& data,
                                                                          MatchHandler done) const;
    // Ends the match with each participant's matchOutcome as set.
    void endMatchInTurnWithMatchDataCompletionHandler(const QByteArray& data, MatchHandler done) const;
    void removeWithCompletionHandler(std::function<void(std::optional<GKError>)> done) const;
    void rematchWithCompletionHandler(MatchHandler done) const;

    // Whether the match was ended from this game; the answer is given once.
    static bool takeEndedHere(const QString& matchID);

private:
    static QSet<QString>& endedHere();
    bool m_messagePending = false;
};

// What reaches the players' listeners (registered with GKLocalPlayer) from the service's events.
class GKTurnBasedEventListener {
public:
    virtual ~GKTurnBasedEventListener() = default;
    // The turn is now this player's, or he is invited to a match.
    virtual void playerReceivedTurnEventForMatchDidBecomeActive(const GKTurnBasedMatch& match,
                                                                bool didBecomeActive) = 0;
    virtual void playerMatchEnded(const GKTurnBasedMatch& match) = 0;
};
