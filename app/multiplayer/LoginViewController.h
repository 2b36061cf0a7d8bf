#pragma once

#include "platform/ViewController.h"
#include "platform/gamekit/GameService.h"

// The login screen that the game service hands over: create an account or log in, with every refusal of the
// service said in Arabic.
class LoginViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(bool busy READ busy NOTIFY changed)
    Q_PROPERTY(QString errorText READ errorText NOTIFY changed)
public:
    explicit LoginViewController(QObject* parent = nullptr)
        : ViewController(QStringLiteral("LoginViewController"), parent) {}

    // createAccount: a new account with this name; otherwise a login to an existing one.
    Q_INVOKABLE void submit(const QString& displayName, const QString& password, bool createAccount);
    Q_INVOKABLE void cancel();

    // The player's words for a refusal of the service.
    static QString messageForError(const GKError& error);

    bool busy() const { return m_busy; }
    QString errorText() const { return m_error; }

signals:
    void changed();

private:
    bool m_busy = false;
    QString m_error;
};
