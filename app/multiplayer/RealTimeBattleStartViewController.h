#pragma once

#include "multiplayer/GCRealTimeMatchHelper.h"
#include "platform/ViewController.h"

#include <QVariantMap>
#include <memory>
#include <optional>

// The start of a live match: the two players side by side and where the match stands. Made with a match it
// takes it; with an invitation, or to find one, it opens the platform's picker first. No game runs on it yet.
class RealTimeBattleStartViewController : public ViewController, public GCRealTimeMatchDelegate {
    Q_OBJECT
    Q_PROPERTY(QVariantMap player1 READ player1 NOTIFY changed)
    Q_PROPERTY(QVariantMap player2 READ player2 NOTIFY changed)
    Q_PROPERTY(QString statusText READ statusText NOTIFY changed)
    Q_PROPERTY(bool connected READ connected NOTIFY changed)
public:
    explicit RealTimeBattleStartViewController(QObject* parent = nullptr);
    ~RealTimeBattleStartViewController() override;

    bool useStandardMatchMaker = false;
    std::optional<GKInvite> invite;
    std::shared_ptr<GKMatch> match() const { return m_match; }
    void setMatch(std::shared_ptr<GKMatch> match) { m_match = std::move(match); }

    void viewDidLoad() override;

    // {playerID, name, rank, battles, wins, levels}; the opponent's fill in as they become known.
    QVariantMap player1() const { return m_player1; }
    QVariantMap player2() const { return m_player2; }
    QString statusText() const { return m_status; }
    bool connected() const { return m_connected; }

    Q_INVOKABLE void close();

    void realTimeMatchFoundUsingStandardMatchMaker(std::shared_ptr<GKMatch> match) override;
    void allPlayersConnected() override;
    void playerDisconnected() override;
    void matchDidReceiveData(const QVariantMap& data) override;

signals:
    void changed();

private:
    void adopt(std::shared_ptr<GKMatch> match);
    void loadOpponent(const QString& playerID);
    void setStatus(const QString& text);

    std::shared_ptr<GKMatch> m_match;
    QVariantMap m_player1, m_player2;
    QString m_status;
    bool m_connected = false;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
