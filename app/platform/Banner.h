#pragma once

#include <QObject>
#include <QString>

// The dropdown banner: a title and a line that slide in at the top of the window and leave by themselves.
class Banner : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool visible READ isVisible NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString message READ message NOTIFY changed)
public:
    using QObject::QObject;

    // Shows the banner for the time; a newer one replaces it.
    void titleMessageTime(const QString& title, const QString& message, double seconds);
    Q_INVOKABLE void dismiss();

    bool isVisible() const { return m_visible; }
    QString title() const { return m_title; }
    QString message() const { return m_message; }

signals:
    void changed();

private:
    bool m_visible = false;
    QString m_title, m_message;
    quint64 m_shown = 0;
};
