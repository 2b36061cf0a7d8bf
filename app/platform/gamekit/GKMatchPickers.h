#pragma once

#include "GKMatch.h"
#include "GKTurnBasedMatch.h"
#include "GameKit.h"

#include "platform/ViewController.h"

#include <QVariantList>
#include <memory>

// What both of the platform's match pickers share: the request, the player's friends to pick from, and what
// the picker is doing. A failure is shown on the picker, which stays; the delegate dismisses it.
class GKMatchPicker : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList friends READ friends NOTIFY changed)
    Q_PROPERTY(bool loadingFriends READ loadingFriends NOTIFY changed)
    Q_PROPERTY(bool busy READ busy NOTIFY changed)
    Q_PROPERTY(QString status READ status NOTIFY changed)
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString hint READ hint CONSTANT)
    Q_PROPERTY(bool offersChoice READ offersChoice CONSTANT)
    Q_PROPERTY(QString pickTitle READ pickTitle CONSTANT)
public:
    GKMatchPicker(const QString& identifier, QObject* parent);
    ~GKMatchPicker() override;

    const GKMatchRequest& matchRequest() const { return m_request; }
    void viewDidLoad() override;

    // {playerID, name} for each friend, the request's recipients first.
    QVariantList friends() const { return m_friends; }
    bool loadingFriends() const { return m_loadingFriends; }
    bool busy() const { return m_busy; }
    QString status() const { return m_status; }
    virtual QString title() const = 0;
    virtual QString hint() const = 0;
    // The word on each friend's button.
    virtual QString pickTitle() const { return QStringLiteral("تحدَّ"); }
    // Whether the player chooses between an automatic match and a friend.
    virtual bool offersChoice() const { return true; }

    Q_INVOKABLE void startAutomaticMatch();
    Q_INVOKABLE void pickFriend(const QString& playerID);
    Q_INVOKABLE virtual void cancel() = 0;

signals:
    void changed();

protected:
    virtual void find(const GKMatchRequest& request) = 0;
    void setBusy(bool busy, const QString& status = {});
    // Shows the failure in the player's words.
    void showFailure(const GKError& error);

    GKMatchRequest m_request;

private:
    void loadFriends();

    QVariantList m_friends;
    bool m_loadingFriends = false;
    bool m_busy = false;
    QString m_status;
};

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

// The picker of a turn-based match: an automatic match with whoever comes next, or a friend challenged.
class GKTurnBasedMatchmakerViewController : public GKMatchPicker {
    Q_OBJECT
public:
    explicit GKTurnBasedMatchmakerViewController(QObject* parent = nullptr);
    static GKTurnBasedMatchmakerViewController* initWithMatchRequest(const GKMatchRequest& request);

    void setTurnBasedMatchmakerDelegate(GKTurnBasedMatchmakerViewControllerDelegate* delegate) {
        m_delegate = delegate;
    }
    QString title() const override;
    QString hint() const override;
    void cancel() override;

private:
    void find(const GKMatchRequest& request) override;

    GKTurnBasedMatchmakerViewControllerDelegate* m_delegate = nullptr;
};

class GKMatchmakerViewController;

class GKMatchmakerViewControllerDelegate {
public:
    virtual ~GKMatchmakerViewControllerDelegate() = default;
    virtual void matchmakerViewControllerDidFindMatch(GKMatchmakerViewController* picker,
                                                      std::shared_ptr<GKMatch> match) = 0;
    virtual void matchmakerViewControllerWasCancelled(GKMatchmakerViewController* picker) = 0;
    virtual void matchmakerViewControllerDidFailWithError(GKMatchmakerViewController* picker,
                                                          const GKError& error) = 0;
};

// The picker of a live match: an automatic match, or a friend invited and waited for; made with an
// invitation, it takes the match of the invitation at once.
class GKMatchmakerViewController : public GKMatchPicker {
    Q_OBJECT
public:
    explicit GKMatchmakerViewController(QObject* parent = nullptr);
    ~GKMatchmakerViewController() override;
    static GKMatchmakerViewController* initWithMatchRequest(const GKMatchRequest& request);
    static GKMatchmakerViewController* initWithInvite(const GKInvite& invite);

    void setMatchmakerDelegate(GKMatchmakerViewControllerDelegate* delegate) { m_delegate = delegate; }
    std::optional<GKInvite> invite() const { return m_invite; }
    void viewDidLoad() override;
    QString title() const override;
    QString hint() const override;
    bool offersChoice() const override { return !m_invite; }
    QString pickTitle() const override { return QStringLiteral("ادعُ"); }
    void cancel() override;

private:
    void find(const GKMatchRequest& request) override;
    void found(std::shared_ptr<GKMatch> match, std::optional<GKError> error);

    GKMatchmakerViewControllerDelegate* m_delegate = nullptr;
    std::optional<GKInvite> m_invite;
};
