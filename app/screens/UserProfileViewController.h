#pragma once

#include "platform/ViewController.h"

#include <QVariantList>

// The player's own figures: the leaderboard entry, the lifetime counters, the place on each of the last ten
// days as bars, the levels of every day as a line, and the history of places.
class UserProfileViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString playerAlias READ playerAlias NOTIFY changed)
    Q_PROPERTY(QString playerID READ playerID NOTIFY changed)
    Q_PROPERTY(QString totalPointsLabel READ totalPointsLabel NOTIFY changed)
    Q_PROPERTY(QString gcRankLabel READ gcRankLabel NOTIFY changed)
    Q_PROPERTY(QVariantList figures READ figures NOTIFY changed)
    Q_PROPERTY(QVariantList barValues READ barValues NOTIFY changed)
    Q_PROPERTY(QStringList barLabels READ barLabels CONSTANT)
    Q_PROPERTY(QVariantList lineValues READ lineValues NOTIFY changed)
    Q_PROPERTY(QStringList lineLabels READ lineLabels NOTIFY changed)
    Q_PROPERTY(int segment READ segment NOTIFY changed)
    Q_PROPERTY(QVariantList historyRows READ historyRows NOTIFY changed)
public:
    explicit UserProfileViewController(QObject* parent = nullptr);
    ~UserProfileViewController() override;
    void viewDidLoad() override;

    void scoreLoaded();
    Q_INVOKABLE void segmentChanged(int segment);
    // What a score challenge is; then the challenge itself, ready to send to any player.
    Q_INVOKABLE void sendScoreChallege();
    static QString challengeText();
    Q_INVOKABLE void goBack();

    QString playerAlias() const { return m_alias; }
    QString playerID() const { return m_playerID; }
    QString totalPointsLabel() const { return m_points; }
    QString gcRankLabel() const { return m_rank; }
    // Each figure: caption, value (a plain decimal), name (the outlet's name).
    QVariantList figures() const { return m_figures; }
    QVariantList barValues() const { return m_barValues; }
    QStringList barLabels() const;
    QVariantList lineValues() const { return m_lineValues; }
    QStringList lineLabels() const { return m_lineLabels; }
    int segment() const { return m_segment; }
    // Each row: day ("اليوم n"), value, change ("+n", "-n" or empty), arrow, color.
    QVariantList historyRows() const { return m_history; }

signals:
    void changed();

private:
    void fillHead();

    QString m_alias, m_playerID, m_points, m_rank;
    QVariantList m_figures, m_barValues, m_lineValues, m_history;
    QStringList m_lineLabels;
    int m_segment = 0;
};
