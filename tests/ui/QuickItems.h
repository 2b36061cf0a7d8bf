#pragma once

#include "core/AppDelegate.h"
#include "platform/Platform.h"
#include "screens/Screens.h"

#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QtTest>

// Finding and tapping what the window draws, by object name.
namespace QuickItems {

inline QList<QQuickItem*> allItems(QQuickItem* root) {
    QList<QQuickItem*> items{root};
    for (QQuickItem* child : root->childItems()) {
        items += allItems(child);
    }
    return items;
}

// The visible item of that name, else a hidden one, else none.
inline QQuickItem* findItem(QQuickWindow* window, const QString& name) {
    QQuickItem* hidden = nullptr;
    for (QQuickItem* item : allItems(window->contentItem())) {
        if (item->objectName() == name) {
            if (item->isVisible()) {
                return item;
            }
            hidden = item;
        }
    }
    return hidden;
}

inline bool isShown(QQuickWindow* window, const QString& name) {
    QQuickItem* item = findItem(window, name);
    return item && item->isVisible();
}

inline void click(QQuickWindow* window, QQuickItem* item) {
    QVERIFY(item);
    const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    QTest::mouseClick(window, Qt::LeftButton, {}, centre.toPoint());
}

// Launches the game on the installed platform and shows its window; null when the window did not come up.
inline QQuickWindow* launchGameWindow(AppDelegate& app, std::unique_ptr<QQmlApplicationEngine>& engine) {
    app.applicationDidFinishLaunchingWithOptions({});
    engine = createGameEngine();
    if (!engine || engine->rootObjects().isEmpty()) {
        return nullptr;
    }
    auto* window = qobject_cast<QQuickWindow*>(engine->rootObjects().first());
    return window && QTest::qWaitForWindowExposed(window) ? window : nullptr;
}

} // namespace QuickItems
