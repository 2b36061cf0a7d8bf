#pragma once

#include "ViewController.h"

#include <QHash>
#include <QObject>
#include <functional>
#include <vector>

// Screens by identifier: a stack of pushed screens, and controllers presented modally over it. The navigator
// owns every controller on the stack or presented.
class Navigator : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<QObject*> screens READ screens NOTIFY changed)
    Q_PROPERTY(QList<QObject*> presented READ presented NOTIFY changed)
    Q_PROPERTY(int depth READ depth NOTIFY changed)
public:
    using Factory = std::function<ViewController*()>;

    ~Navigator() override;

    void registerScreen(const QString& identifier, Factory factory);
    bool hasScreen(const QString& identifier) const { return m_factories.contains(identifier); }
    // A new controller for the identifier, not yet shown; null for an unknown identifier.
    ViewController* instantiateViewControllerWithIdentifier(const QString& identifier) const;

    void setRootViewController(ViewController* controller);
    void pushViewController(ViewController* controller);
    // Pops the top screen (never the root); false when only the root is left.
    Q_INVOKABLE bool popViewController();
    void popToRootViewController();
    // Pops until the screen at `index` of the stack is on top; nothing when the stack is not that deep.
    void popToViewControllerAtIndex(int index);
    void presentViewController(ViewController* controller);
    // Dismisses the topmost presented controller.
    Q_INVOKABLE void dismissViewController();
    void dismissAllPresented();

    ViewController* rootViewController() const { return m_stack.empty() ? nullptr : m_stack.front(); }
    ViewController* topViewController() const { return m_stack.empty() ? nullptr : m_stack.back(); }
    ViewController* presentedViewController() const {
        return m_presented.empty() ? nullptr : m_presented.back();
    }
    QList<QObject*> screens() const;
    QList<QObject*> presented() const;
    int depth() const { return static_cast<int>(m_stack.size()); }

signals:
    void changed();

private:
    void release(ViewController* controller);

    QHash<QString, Factory> m_factories;
    std::vector<ViewController*> m_stack;
    std::vector<ViewController*> m_presented;
};
