#pragma once

#include "platform/ViewController.h"

// The attributions that the licences of the game's pictures and font ask for.
class CreditsViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString text READ text CONSTANT)
public:
    explicit CreditsViewController(QObject* parent = nullptr);

    QString text() const { return m_text; }
    Q_INVOKABLE void close();

private:
    QString m_text;
};
