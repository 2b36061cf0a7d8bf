#pragma once

#include "Keyboard.h"

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

    // What the view forwards of a key its focused items left unused. The screen gets it only when it is in
    // front and nothing covers it; returns whether the key was used.
    Q_INVOKABLE bool pressKey(int key, int modifiers, const QString& text) {
        if (Keyboard::frontController() != this || Keyboard::coveredByOverlay()) {
            return false;
        }
        return keyPressed(KeyPress{key, Qt::KeyboardModifiers(modifiers), text});
    }

protected:
    // A screen's own keys. By default Escape presses the back or close button of a screen that has one.
    virtual bool keyPressed(const KeyPress& press) {
        return press.is(Qt::Key_Escape) && Keyboard::pressBackButton(this);
    }

private:
    QString m_identifier;
};
