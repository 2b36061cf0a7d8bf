#pragma once

#include "platform/ViewController.h"
#include "progress/RankManager.h"

#include <QVariantList>

// The ladder of ranks, with the player's place on it, and the badges won and still to win.
class RankViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList rows READ rows NOTIFY changed)
    Q_PROPERTY(QVariantList badges READ badges NOTIFY changed)
    Q_PROPERTY(int currentRankIndex READ currentRankIndex NOTIFY changed)
public:
    explicit RankViewController(QObject* parent = nullptr);
    void viewDidLoad() override;

    Q_INVOKABLE void goBack();

    // Each row: name, desc, reward, badge, tinted.
    QVariantList rows() const;
    // Each badge: image, won.
    QVariantList badges() const;
    int currentRankIndex() const;
    const Rank& currentRank() const { return m_currentRank; }

signals:
    void changed();

private:
    Rank m_currentRank;
};
