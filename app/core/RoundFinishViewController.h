#pragma once

#include "platform/ViewController.h"

// The end of a round: the finished round's number, its badge, and the round's gold.
class RoundFinishViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString finishedRoundLabel READ finishedRoundLabel CONSTANT)
    Q_PROPERTY(QString rewardedCreditsLabel READ rewardedCreditsLabel CONSTANT)
    Q_PROPERTY(QString currentBadge READ currentBadge CONSTANT)
    Q_PROPERTY(QString rankName READ rankName CONSTANT)
public:
    explicit RoundFinishViewController(QObject* parent = nullptr)
        : ViewController(QStringLiteral("RoundFinishViewController"), parent) {}

    void viewDidLoad() override;
    Q_INVOKABLE void startNextRound();

    qint64 finishedRound = 0;
    qint64 rewardedCredits = 0;

    QString finishedRoundLabel() const { return QString::number(finishedRound); }
    QString rewardedCreditsLabel() const { return QString::number(rewardedCredits); }
    QString currentBadge() const { return m_badge; }
    QString rankName() const { return m_rankName; }

protected:
    // Enter starts the next round, as its button does.
    bool keyPressed(const KeyPress& press) override;

private:
    QString m_badge;
    QString m_rankName;
};
