#pragma once

#include "GKTurnBasedMatch.h"
#include "GameKit.h"

#include "platform/ViewController.h"

#include <QVariantList>

class GKTurnBasedMatchmakerViewController;

class GKTurnBasedMatchmakerViewControllerDelegate {
public:
    virtual ~GKTurnBasedMatchmakerViewControllerDelegate() = default;
    virtual void turnBasedMatchmakerViewControllerDidFindMatch(GKTurnBasedMatchmakerViewController* picker,
                                                               const GKTurnBasedMatch& match) = 0;
    virtual void
    turnBasedMatchmakerViewControllerWasCancelled(GKTurnBasedMatchmakerViewController* picker) = 0;
    virtual void
    turnBasedMatchmakerViewControllerDidFailWithError(GKTurnBasedMatchmakerViewController* picker,
                                                      const GKError& error) = 0;
};

// The platform's picker of a turn-based match: an automatic match with whoever comes next, or a match with a
// friend picked from the list. It finds the match and hands it to its delegate; the delegate dismisses it.
// A failure is shown on the picker, which stays.
class GKTurnBasedMatchmakerViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList friends READ friends NOTIFY changed)
    Q_PROPERTY(bool loadingFriends READ loadingFriends NOTIFY changed)
    Q_PROPERTY(bool busy READ busy NOTIFY changed)
    Q_PROPERTY(QString status READ status NOTIFY changed)
public:
    explicit GKTurnBasedMatchmakerViewController(QObject* parent = nullptr);
    ~GKTurnBasedMatchmakerViewController() override;
    static GKTurnBasedMatchmakerViewController* initWithMatchRequest(const GKMatchRequest& request);

    void setTurnBasedMatchmakerDelegate(GKTurnBasedMatchmakerViewControllerDelegate* delegate) {
        m_delegate = delegate;
    }
    const GKMatchRequest& matchRequest() const { return m_request; }

    void viewDidLoad() override;

    // {playerID, name} for each friend, the request's recipients first.
    QVariantList friends() const { return m_friends; }
    bool loadingFriends() const { return m_loadingFriends; }
    bool busy() const { return m_busy; }
    QString status() const { return m_status; }

    Q_INVOKABLE void startAutomaticMatch();
    Q_INVOKABLE void pickFriend(const QString& playerID);
    Q_INVOKABLE void cancel();

signals:
    void changed();

private:
    void loadFriends();
    void find(const GKMatchRequest& request);

    GKMatchRequest m_request;
    GKTurnBasedMatchmakerViewControllerDelegate* m_delegate = nullptr;
    QVariantList m_friends;
    bool m_loadingFriends = false;
    bool m_busy = false;
    QString m_status;
};
