#pragma once

#include "platform/ViewController.h"

#include <QStringList>

// Every playing tip, one row each.
class TipsViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QStringList tips READ tips CONSTANT)
public:
    explicit TipsViewController(QObject* parent = nullptr);

    QStringList tips() const;
    Q_INVOKABLE void close();
};
