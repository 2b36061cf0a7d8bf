#pragma once

#include "platform/ViewController.h"

#include <QVariantList>
#include <QVariantMap>

// The finished live matches, newest first, with the battle totals; the battles page's place in the pages that
// carry live matches.
class RealTimeBattleListViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList rows READ rows NOTIFY changed)
    Q_PROPERTY(QString winsText READ winsText NOTIFY changed)
    Q_PROPERTY(QString drawsText READ drawsText NOTIFY changed)
    Q_PROPERTY(QString lossesText READ lossesText NOTIFY changed)
    Q_PROPERTY(QString finalPointsText READ finalPointsText NOTIFY changed)
public:
    explicit RealTimeBattleListViewController(QObject* parent = nullptr);

    QList<QVariantMap> allBattles;

    void viewDidLoad() override;
    void viewWillAppear() override;

    // Row r shows the entry at count - 1 - r: avatars and flags by number, the opponent, the date, the
    // outcome with its tint, and the points of today's table.
    QVariantList rows() const;
    QString winsText() const { return m_wins; }
    QString drawsText() const { return m_draws; }
    QString lossesText() const { return m_losses; }
    QString finalPointsText() const { return m_finalPoints; }

    Q_INVOKABLE void close();

signals:
    void changed();

private:
    QString m_wins, m_draws, m_losses, m_finalPoints;
};
