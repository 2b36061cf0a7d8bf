#pragma once

#include "platform/ViewController.h"

#include <QVariantList>

// The tasks: opening the screen is when met goals are marked; a tap on a met row collects its gold.
class AchievementsViewController : public ViewController {
    Q_OBJECT
    Q_PROPERTY(QString counterLabel READ counterLabel NOTIFY changed)
    Q_PROPERTY(QVariantList rows READ rows NOTIFY changed)
public:
    explicit AchievementsViewController(QObject* parent = nullptr);
    void viewDidLoad() override;

    Q_INVOKABLE void tableViewDidSelectRowAtIndexPath(int row);
    Q_INVOKABLE void goBack();

    QString counterLabel() const { return m_counter; }
    // Each row: id, desc, reward, image ("yes.png" or "no.png"), achieved, flashing.
    QVariantList rows() const;

signals:
    void changed();

private:
    QString m_counter;
};
