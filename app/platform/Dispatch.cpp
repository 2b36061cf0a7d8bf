#include "Dispatch.h"

#include "Platform.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>

namespace {
QThreadPool& pool() {
    static QThreadPool* p = [] {
        auto* created = new QThreadPool();
        created->setMaxThreadCount(4);
        return created;
    }();
    return *p;
}
} // namespace

void Dispatch::asyncGlobal(std::function<void()> block) {
    if (!block) {
        return;
    }
    pool().start(std::move(block));
}

void Dispatch::asyncMain(std::function<void()> block) {
    QCoreApplication* app = QCoreApplication::instance();
    if (!block || !app) {
        return;
    }
    QMetaObject::invokeMethod(
        app,
        [block = std::move(block)] {
            if (Platform::isInstalled()) {
                block();
            }
        },
        Qt::QueuedConnection);
}

bool Dispatch::isMainThread() {
    QCoreApplication* app = QCoreApplication::instance();
    return app && QThread::currentThread() == app->thread();
}

void Dispatch::waitForGlobal() {
    pool().waitForDone();
}
