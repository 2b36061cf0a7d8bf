#pragma once

#include "platform/ViewController.h"

#include <QVariantList>

// The player's account: the name, the friends, and the friend requests waiting for an answer.
class AccountViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString displayName READ displayName NOTIFY changed)
    Q_PROPERTY(QVariantList friends READ friends NOTIFY changed)
    Q_PROPERTY(QVariantList requests READ requests NOTIFY changed)
public:
    explicit AccountViewController(QObject* parent = nullptr);
    ~AccountViewController() override;

    void viewDidLoad() override;
    Q_INVOKABLE void reload();
    Q_INVOKABLE void answer(const QString& requestID, bool accept);
    Q_INVOKABLE void logOut();
    Q_INVOKABLE void close();

    QString displayName() const;
    QVariantList friends() const { return m_friends; }
    QVariantList requests() const { return m_requests; }

signals:
    void changed();

private:
    QVariantList m_friends;
    QVariantList m_requests;
};
