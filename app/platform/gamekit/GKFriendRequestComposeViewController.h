#pragma once

#include "GameKit.h"

#include "platform/ViewController.h"

#include <QVariantList>

class GKFriendRequestComposeViewController;

class GKFriendRequestComposeViewControllerDelegate {
public:
    virtual ~GKFriendRequestComposeViewControllerDelegate() = default;
    // The player sent the request or gave up; the delegate dismisses the screen.
    virtual void
    friendRequestComposeViewControllerDidFinish(GKFriendRequestComposeViewController* composer) = 0;
};

// The platform's friend request: the players it goes to, a message the player may change, and send or cancel.
// A refusal of the service is shown on the screen, which stays; the request goes to each recipient in turn.
class GKFriendRequestComposeViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QVariantList recipients READ recipients NOTIFY changed)
    Q_PROPERTY(QString message READ message WRITE setMessage NOTIFY changed)
    Q_PROPERTY(bool busy READ busy NOTIFY changed)
    Q_PROPERTY(QString status READ status NOTIFY changed)
    Q_PROPERTY(int maxMessageLength READ maxMessageLength CONSTANT)
    Q_PROPERTY(QVariantList found READ found NOTIFY changed)
    Q_PROPERTY(bool searching READ searching NOTIFY changed)
public:
    explicit GKFriendRequestComposeViewController(QObject* parent = nullptr);

    // How many players one request may go to.
    static qsizetype maxNumberOfRecipients() { return 10; }
    // The longest message the service takes.
    static int maxMessageLength() { return 200; }

    void setComposeViewDelegate(GKFriendRequestComposeViewControllerDelegate* delegate) {
        m_delegate = delegate;
    }
    // Adds players after those already there, each once, up to the maximum.
    void addRecipientPlayers(const QList<GKPlayer>& players);
    void setMessage(const QString& message);

    // {playerID, name} of each recipient.
    QVariantList recipients() const;
    QString message() const { return m_message; }
    bool busy() const { return m_busy; }
    QString status() const { return m_status; }
    // Whether the request reached every recipient.
    bool wasSent() const { return m_sent; }

    Q_INVOKABLE void removeRecipient(const QString& playerID);
    // Players whose names start with the text, to add as recipients; the latest search wins.
    Q_INVOKABLE void findPlayers(const QString& text);
    Q_INVOKABLE void addFoundPlayer(const QString& playerID);
    // {playerID, name} of each player the last search found.
    QVariantList found() const;
    bool searching() const { return m_searching; }
    Q_INVOKABLE void send();
    Q_INVOKABLE void cancel();

    // The player's words for a refusal of the service.
    static QString describeFailure(const GKError& error);

signals:
    void changed();

private:
    void sendNext(qsizetype index);
    void finish();

    GKFriendRequestComposeViewControllerDelegate* m_delegate = nullptr;
    QList<GKPlayer> m_recipients;
    QList<GKPlayer> m_found;
    bool m_searching = false;
    quint64 m_search = 0;
    QString m_message;
    bool m_busy = false;
    bool m_sent = false;
    QString m_status;
};
