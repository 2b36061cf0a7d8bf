#pragma once

#include "platform/ViewController.h"
#include "platform/gamekit/GKTurnBasedMatch.h"

#include <QHash>
#include <QList>
#include <QVariantList>
#include <memory>

// The player's gold exchanges, page 2 of the Game Center pages: the requests that came in, answered with an
// amount of gold or refused, and those that went out with their answers, and the totals of gold sent and
// received.
class ExchangesViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(int segment READ segment NOTIFY rowsChanged)
    Q_PROPERTY(QVariantList rows READ rows NOTIFY rowsChanged)
    Q_PROPERTY(QString totalGold READ totalGold NOTIFY totalsChanged)
    Q_PROPERTY(QString goldText READ goldText NOTIFY totalsChanged)
    Q_PROPERTY(int maximumGift READ maximumGift NOTIFY rowsChanged)
public:
    explicit ExchangesViewController(QObject* parent = nullptr);

    QList<GKTurnBasedMatch> receivedExchanges;
    QList<GKTurnBasedMatch> sentExchanges;
    QList<GKTurnBasedMatch> allExchanges;

    void viewDidLoad() override;
    void loadAndSortMatches();

    int segment() const { return m_segment; }
    // The rows of the segment shown; each row's "kind" names its cell: "ReceivedRequestCell" (open and not
    // answered), "FinishedReceivedRequestCell" or "SentRequestCell".
    QVariantList rows() const;
    QString totalGold() const { return m_totalGold; }
    QString goldText() const { return m_goldText; }
    // The most the player can give: the gold he holds.
    int maximumGift() const;

    Q_INVOKABLE void close();
    Q_INVOKABLE void segmentChanged(int segment);
    // The row's stepper moved to `value`: the row's amount shows it.
    Q_INVOKABLE void stepperTapped(int row, double value);
    // The row's send button, with the reply typed in the row.
    Q_INVOKABLE void sendGoldButtonTapped(int row, const QString& reply);
    Q_INVOKABLE void rejectButtonTapped(int row, const QString& reply);
    Q_INVOKABLE void removeButtonTapped(int row);

    static QString getMatchStatus(qint64 status);

signals:
    void rowsChanged();
    void totalsChanged();

private:
    const QList<GKTurnBasedMatch>& shownExchanges() const {
        return m_segment == 0 ? receivedExchanges : sentExchanges;
    }
    QVariantMap rowFor(const GKTurnBasedMatch& match) const;
    void fillTotals();
    void answer(int row, const QString& reply, qint64 gold);

    int m_segment = 0;
    QHash<QString, QString> m_amounts; // the amount label of each received row, by match
    QHash<QString, QString> m_names;   // display names by player identifier
    QString m_totalGold, m_goldText;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
