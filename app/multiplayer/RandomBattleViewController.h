#pragma once

#include "core/BattleDelegate.h"
#include "platform/ViewController.h"
#include "platform/gamekit/GKTurnBasedMatch.h"

#include <QHash>
#include <functional>
#include <optional>

// A battle with an automatically matched player: the local player either plays first (the second seat is
// still empty) or answers the level of the one who did.
class RandomBattleViewController : public ViewController, public BattleDelegate {
    Q_OBJECT
    Q_PROPERTY(QString senderName READ senderName NOTIFY matchChanged)
    Q_PROPERTY(QString senderID READ senderID NOTIFY matchChanged)
    Q_PROPERTY(QString receiverName READ receiverName NOTIFY matchChanged)
    Q_PROPERTY(QString receiverID READ receiverID NOTIFY matchChanged)
    Q_PROPERTY(QString senderMessage READ senderMessage NOTIFY matchChanged)
    Q_PROPERTY(bool senderMessageVisible READ senderMessageVisible NOTIFY matchChanged)
    Q_PROPERTY(bool isNewMatch READ newMatch NOTIFY matchChanged)
    Q_PROPERTY(bool hasMatch READ hasMatch NOTIFY matchChanged)
    Q_PROPERTY(QString winTitle READ winTitle CONSTANT)
    Q_PROPERTY(QString drawTitle READ drawTitle CONSTANT)
    Q_PROPERTY(QString loseTitle READ loseTitle CONSTANT)
public:
    explicit RandomBattleViewController(QObject* parent = nullptr);

    bool isNewMatch = true;
    std::optional<GKTurnBasedMatch> match;
    std::function<void(const QString&)> didDismiss;

    void setMatch(const GKTurnBasedMatch& m) { match = m; }
    void setDidDismiss(std::function<void(const QString&)> handler) { didDismiss = std::move(handler); }

    void viewDidLoad() override;
    void viewWillAppear() override;
    void readMatchDataAndUpdateUI(const GKTurnBasedMatch& m);

    // The play button, with the message typed for the other player.
    Q_INVOKABLE void playTheTurn(const QString& message);
    Q_INVOKABLE void close();
    void playerAnsweredLevelWithScore(qint64 level, qint64 score) override;

    QString senderName() const { return m_senderName; }
    QString senderID() const { return m_senderID; }
    QString receiverName() const { return m_receiverName; }
    QString receiverID() const { return m_receiverID; }
    QString senderMessage() const { return m_senderMessage; }
    bool senderMessageVisible() const { return m_senderMessageVisible; }
    bool newMatch() const { return isNewMatch; }
    bool hasMatch() const { return match.has_value(); }
    QString winTitle() const { return m_winTitle; }
    QString drawTitle() const { return m_drawTitle; }
    QString loseTitle() const { return m_loseTitle; }

signals:
    void matchChanged();

private:
    void showNames(const GKTurnBasedMatch& m);

    QString m_message; // typed for the other player
    QString m_senderName, m_senderID, m_receiverName, m_receiverID, m_senderMessage;
    bool m_senderMessageVisible = false;
    QString m_winTitle, m_drawTitle, m_loseTitle;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
