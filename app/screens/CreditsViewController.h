#pragma once

#include "platform/ViewController.h"

// The attributions that the licences of the game's pictures and font ask for.
class CreditsViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString html READ html CONSTANT)
public:
    explicit CreditsViewController(QObject* parent = nullptr);

    QString text() const { return m_text; }
    // The text as paragraphs that each run in their own direction: the Arabic ones from the right, the
    // English ones from the left, with their addresses as links.
    QString html() const;
    Q_INVOKABLE void close();

private:
    QString m_text;
};
