#pragma once

#include "platform/gamekit/GKMatch.h"
#include "platform/gamekit/GKMatchPickers.h"

#include <QList>
#include <QObject>
#include <QVariantMap>
#include <functional>
#include <memory>
#include <optional>

class ViewController;

// Told of a live match's events by the helper.
class GCRealTimeMatchDelegate {
public:
    virtual ~GCRealTimeMatchDelegate() = default;
    virtual void realTimeMatchFoundUsingStandardMatchMaker(std::shared_ptr<GKMatch> match) = 0;
    virtual void allPlayersConnected() = 0;
    virtual void playerDisconnected() = 0;
    virtual void matchDidReceiveData(const QVariantMap& data) = 0;
};

// What a live battle on top of a match would tell its screen.
class RealTimeBattleDelegate {
public:
    virtual ~RealTimeBattleDelegate() = default;
    virtual void playerDidCompleteMoveCurrentMove(const QVariant& move, qint64 currentMove) = 0;
    virtual void playerDidFinishGameWithResult(qint64 result) = 0;
    virtual void playerDidSendAction(qint64 action) = 0;
    virtual void playerDidSurrender() = 0;
};

// The groundwork of live matches between two connected players: finding one (the platform's picker, an
// accepted invitation, or automatic matching), packets of a small dictionary with a "type", and the history
// of finished matches, kept in the settings. The helper is the player's listener from the first login of a
// run, so an accepted invitation opens the start screen.
class GCRealTimeMatchHelper : public QObject,
                              public GKMatchmakerViewControllerDelegate,
                              public GKMatchDelegate,
                              public GKInviteEventListener {
    Q_OBJECT
public:
    static inline const QString kLastMatchStatusKey = QStringLiteral("lastMatchStatus");
    static inline const QString kMatchHistoryKey = QStringLiteral("matchHistory");

    static GCRealTimeMatchHelper& sharedInstance();
    void loadData();

    qint64 lastMatchStatus = 0;
    // Finished matches, oldest first: "opponentAvatar", "opponentFlag" (integers), "opponentName" (string),
    // "date" (date), "matchResult" (integer: above 0 won, 0 a draw, below 0 lost).
    QList<QVariantMap> matchHistory;
    GCRealTimeMatchDelegate* matchDelegate = nullptr;

    void saveLastMatchStatus(qint64 status);
    void saveFinishedMatch(const QVariantMap& entry);
    void startStandardMatchMakerOnViewControllerWithInvite(ViewController* presenting,
                                                           const std::optional<GKInvite>& invite);
    void findRandomMatchWithCompletionHandler(
        std::function<void(std::shared_ptr<GKMatch>, std::optional<GKError>)> handler);
    // Adds "type" to the packet and sends it to the other player, reliably; a failure is dropped.
    void sendMatchDataDataWithType(GKMatch* match, QVariantMap data, qint64 type);

    // A packet read back: the dictionary, or nothing when the bytes are not one.
    static std::optional<QVariantMap> unarchivePacket(const QByteArray& bytes);
    static QByteArray archivePacket(const QVariantMap& data);

    // The picker.
    void matchmakerViewControllerDidFindMatch(GKMatchmakerViewController* picker,
                                              std::shared_ptr<GKMatch> match) override;
    void matchmakerViewControllerWasCancelled(GKMatchmakerViewController* picker) override;
    void matchmakerViewControllerDidFailWithError(GKMatchmakerViewController*, const GKError&) override {}

    // The match.
    void matchDidReceiveDataFromRemotePlayer(GKMatch* match, const QByteArray& data,
                                             const QString& playerID) override;
    void matchPlayerDidChangeConnectionState(GKMatch* match, const QString& playerID, int state) override;
    void matchConnectionWithPlayerFailedWithError(GKMatch*, const QString&, const GKError&) override {}
    void matchDidFailWithError(GKMatch*, const GKError&) override {}

    // An invitation the player accepted.
    void playerDidAcceptInvite(const GKInvite& invite) override;

private:
    void openStartScreen(std::shared_ptr<GKMatch> match, const std::optional<GKInvite>& invite);
};
