#pragma once

#include <QObject>
#include <QStringList>
#include <deque>
#include <functional>

// Alerts with callbacks. Alerts queue up: the view shows the front one, and a press removes it and runs its
// callback with the button's index (the cancel button, when there is one, has index 0).
class Alerts : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
    Q_PROPERTY(QStringList buttons READ buttons NOTIFY changed)
    Q_PROPERTY(QString tone READ tone NOTIFY changed)
    Q_PROPERTY(bool cancellable READ isCancellable NOTIFY changed)
public:
    struct Alert {
        QString title;
        QString message;
        QStringList buttons;
        std::function<void(int)> onPress;
        QString tone;
        bool cancellable = false; // its first button is the cancel button
    };

    void showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(const QString& title,
                                                                        const QString& message,
                                                                        const QString& cancelTitle,
                                                                        const QStringList& otherTitles,
                                                                        std::function<void(int)> tapBlock);

    bool isVisible() const { return !m_queue.empty(); }
    QString title() const { return m_queue.empty() ? QString() : m_queue.front().title; }
    QString message() const { return m_queue.empty() ? QString() : m_queue.front().message; }
    QStringList buttons() const { return m_queue.empty() ? QStringList() : m_queue.front().buttons; }
    // How the front alert looks: empty for the usual look, or "won", "lost", "tied" for a battle's outcome.
    QString tone() const { return m_queue.empty() ? QString() : m_queue.front().tone; }
    // Gives the alert queued last its look.
    void setToneOfLast(const QString& tone);
    // The front alert has a cancel button.
    bool isCancellable() const { return !m_queue.empty() && m_queue.front().cancellable; }
    int count() const { return static_cast<int>(m_queue.size()); }
    const Alert* front() const { return m_queue.empty() ? nullptr : &m_queue.front(); }

    // Presses a button of the front alert; returns false when there is none or the index is out of range.
    Q_INVOKABLE bool press(int buttonIndex);
    // Presses the cancel button of the front alert (Escape); false when it has none.
    Q_INVOKABLE bool cancel();
    // Presses the button with this title on the front alert.
    bool pressTitled(const QString& title);

signals:
    void changed();

private:
    std::deque<Alert> m_queue;
};
