#pragma once

#include <QObject>
#include <QString>

// One screen's controller. Its outlets are properties; its view (one QML file per identifier) binds to them
// and forwards taps to invokable actions. The navigator calls the life-cycle hooks.
class ViewController : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString identifier READ identifier CONSTANT)
public:
    explicit ViewController(const QString& identifier, QObject* parent = nullptr)
        : QObject(parent), m_identifier(identifier) {}

    QString identifier() const { return m_identifier; }

    virtual void viewDidLoad() {}
    virtual void viewWillAppear() {}
    virtual void viewDidAppear() {}
    virtual void viewDidDisappear() {}

private:
    QString m_identifier;
};
