#pragma once

#include "core/BattleDelegate.h"
#include "platform/ViewController.h"
#include "platform/gamekit/GKFriendRequestComposeViewController.h"
#include "platform/gamekit/GameKit.h"

#include <QPointer>

// Another player's details, from a leaderboard row: his place, points, last play and the summary his score
// carries, with a challenge to a battle, a friend request and a request for gold.
class GCPlayerViewController : public ViewController,
                               public BattleDelegate,
                               public GKFriendRequestComposeViewControllerDelegate {
    Q_OBJECT
    Q_PROPERTY(QString playerID READ playerID CONSTANT)
    Q_PROPERTY(QString playerAlias READ playerAlias CONSTANT)
    Q_PROPERTY(QString gcRank READ gcRank CONSTANT)
    Q_PROPERTY(QString totalPoints READ totalPoints CONSTANT)
    Q_PROPERTY(QString lastPlayed READ lastPlayed CONSTANT)
    Q_PROPERTY(QVariantMap details READ details NOTIFY detailsChanged)
public:
    explicit GCPlayerViewController(QObject* parent = nullptr);
    ~GCPlayerViewController() override;

    GKScore score;
    void setScore(const GKScore& s) { score = s; }
    void viewDidLoad() override;

    QString playerID() const { return score.player.playerID; }
    QString playerAlias() const { return score.player.displayName; }
    QString gcRank() const { return QString::number(score.rank); }
    QString totalPoints() const { return QString::number(score.value); }
    QString lastPlayed() const;
    // The summary of the player's context number: the label's name to its text, only those that are shown.
    QVariantMap details() const { return m_details; }

    Q_INVOKABLE void sendFriendshipRequest();
    Q_INVOKABLE void sendExchangeRequest(const QString& message);
    Q_INVOKABLE void sendBattleRequest(const QString& message);
    Q_INVOKABLE void close();
    Q_INVOKABLE void tapAction();
    void playerAnsweredLevelWithScore(qint64 level, qint64 result) override;
    void friendRequestComposeViewControllerDidFinish(GKFriendRequestComposeViewController* composer) override;

    // The summary a player's context number carries, by the name of the label that shows each part: the
    // level, round and badge, and when the number holds them, tasks, active days, battles and gold used.
    static QVariantMap summaryOfContext(qint64 context);

    // The message of a finished request, battle or gold, by its error.
    static void showRequestOutcome(const std::optional<GKError>& error, bool battle,
                                   const std::function<void()>& onSent);

signals:
    void detailsChanged();

private:
    QString m_message;
    QVariantMap m_details;
    QPointer<GKFriendRequestComposeViewController> m_composer;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
