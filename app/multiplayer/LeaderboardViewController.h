#pragma once

#include "platform/ViewController.h"
#include "platform/gamekit/GameKit.h"

#include <QVariantList>

// The leaderboard: the best hundred of all players or the player's friends, always with the player's own
// place, and a friend request from any row.
class LeaderboardViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(int scope READ scope NOTIFY changed)
    Q_PROPERTY(QVariantList rows READ rows NOTIFY changed)
    Q_PROPERTY(QString localRankText READ localRankText NOTIFY changed)
    Q_PROPERTY(QString localScoreText READ localScoreText NOTIFY changed)
    Q_PROPERTY(QString totalText READ totalText NOTIFY changed)
    Q_PROPERTY(bool loading READ loading NOTIFY changed)
    Q_PROPERTY(QString messageText READ messageText NOTIFY changed)
public:
    explicit LeaderboardViewController(QObject* parent = nullptr)
        : ViewController(QStringLiteral("LeaderboardViewController"), parent) {}

    // Loads the leaderboard once the player is logged in; otherwise asks for the login first.
    void viewDidLoad() override;
    Q_INVOKABLE void setScope(int scope);
    Q_INVOKABLE void reload();
    Q_INVOKABLE void addFriend(const QString& playerID);
    Q_INVOKABLE void openAccount();
    // The player's own figures, a page beside the leaderboard.
    Q_INVOKABLE void openUserProfile();
    Q_INVOKABLE void close();
    // A row tapped: that player's details.
    Q_INVOKABLE void openPlayer(int row);

    int scope() const { return m_scope; }
    QVariantList rows() const { return m_rows; }
    QString localRankText() const { return m_localRank; }
    QString localScoreText() const { return m_localScore; }
    QString totalText() const { return m_total; }
    bool loading() const { return m_loading; }
    QString messageText() const { return m_message; }

signals:
    void changed();

private:
    int m_scope = 0;
    QVariantList m_rows;
    QList<GKScore> m_scores; // the rows' scores
    QString m_localRank, m_localScore, m_total, m_message;
    bool m_loading = false;
    quint64 m_generation = 0;
};
