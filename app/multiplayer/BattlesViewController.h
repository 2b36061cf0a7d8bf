#pragma once

#include "core/BattleDelegate.h"
#include "multiplayer/GCTurnBasedMatchHelper.h"
#include "platform/ViewController.h"
#include "platform/gamekit/GKTurnBasedMatch.h"

#include <QHash>
#include <QList>
#include <QVariantList>

// The player's battles, page 1 of the Game Center pages: those in play (sent, or received and waiting for the
// answer) and those finished, with the play, rematch and remove buttons, and the totals.
class BattlesViewController : public ViewController, public BattleDelegate, public GCMatchMakerUIDelegate {
    Q_OBJECT
    Q_PROPERTY(int segment READ segment NOTIFY rowsChanged)
    Q_PROPERTY(QVariantList rows READ rows NOTIFY rowsChanged)
    Q_PROPERTY(QString winsText READ winsText NOTIFY totalsChanged)
    Q_PROPERTY(QString drawsText READ drawsText NOTIFY totalsChanged)
    Q_PROPERTY(QString lossesText READ lossesText NOTIFY totalsChanged)
    Q_PROPERTY(QString finalPointsText READ finalPointsText NOTIFY totalsChanged)
public:
    explicit BattlesViewController(QObject* parent = nullptr);

    QList<GKTurnBasedMatch> openBattles;
    QList<GKTurnBasedMatch> finishedBattles;
    QList<GKTurnBasedMatch> allBattles;
    // The row of the battle being played, or -1.
    int clickedBattle = -1;

    void viewDidLoad() override;
    void loadAndSortMatches();

    int segment() const { return m_segment; }
    // The rows of the segment shown; each row's "kind" names its cell: "ReceivedBattleCell" (the local
    // player's turn), "SentBattleCell" or "FinishedBattleCell".
    QVariantList rows() const;
    QString winsText() const { return m_winsText; }
    QString drawsText() const { return m_drawsText; }
    QString lossesText() const { return m_lossesText; }
    QString finalPointsText() const { return m_finalPointsText; }

    Q_INVOKABLE void close();
    Q_INVOKABLE void segmentChanged(int segment);
    Q_INVOKABLE void startBattleWithRandomPlayer();
    Q_INVOKABLE void sendAutoMatchRequest();
    // The row's play button, with the text typed in the row's field.
    Q_INVOKABLE void playBattleButtonTapped(int row, const QString& reply);
    Q_INVOKABLE void rematchButtonTapped(int row);
    Q_INVOKABLE void removeButtonTapped(int row);

    void playerAnsweredLevelWithScore(qint64 level, qint64 score) override;
    void matchFoundUsingGCMatchMaker(const GKTurnBasedMatch& match) override;

    static QString getMatchStatus(qint64 status);
    static QString getMatchOutcomeText(qint64 outcome);

signals:
    void rowsChanged();
    void totalsChanged();

private:
    void fillTotals();
    void openRandomBattle(const std::optional<GKTurnBasedMatch>& match);
    const QList<GKTurnBasedMatch>& shownBattles() const {
        return m_segment == 0 ? openBattles : finishedBattles;
    }
    QVariantMap rowFor(const GKTurnBasedMatch& match) const;

    int m_segment = 0;
    QString m_clickedReply;
    QHash<QString, QString> m_names; // display names by player identifier
    QString m_winsText, m_drawsText, m_lossesText, m_finalPointsText;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
