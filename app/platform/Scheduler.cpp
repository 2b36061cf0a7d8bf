#include "Scheduler.h"

#include "Platform.h"

#include <QTimer>
#include <cmath>

QtScheduler::QtScheduler() : m_context(std::make_unique<QObject>()) {}

QtScheduler::~QtScheduler() {
    for (QTimer* t : std::as_const(m_timers)) {
        delete t;
    }
}

QDateTime QtScheduler::now() const {
    return QDateTime::currentDateTime();
}

quint64 QtScheduler::schedule(double seconds, std::function<void()> callback) {
    const quint64 id = m_nextId++;
    auto* timer = new QTimer(m_context.get());
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, m_context.get(), [this, id, cb = std::move(callback)]() {
        if (QTimer* t = m_timers.take(id)) {
            t->deleteLater();
        }
        cb();
    });
    m_timers.insert(id, timer);
    timer->start(std::max(0, static_cast<int>(std::lround(seconds * 1000.0))));
    return id;
}

void QtScheduler::cancel(quint64 id) {
    if (QTimer* t = m_timers.take(id)) {
        t->stop();
        t->deleteLater();
    }
}

Timer::Timer(double seconds, bool repeats, std::function<void()> callback)
    : m_interval(seconds), m_repeats(repeats), m_callback(std::move(callback)) {}

Timer::~Timer() {
    if (m_pending != 0 && Platform::isInstalled()) {
        Platform::shared().scheduler().cancel(m_pending);
    }
}

std::shared_ptr<Timer> Timer::scheduledTimerWithTimeInterval(double seconds, bool repeats,
                                                             std::function<void()> callback) {
    std::shared_ptr<Timer> timer(new Timer(seconds, repeats, std::move(callback)));
    timer->arm();
    return timer;
}

void Timer::arm() {
    std::weak_ptr<Timer> weak = weak_from_this();
    m_pending = Platform::shared().scheduler().schedule(m_interval, [weak]() {
        if (auto self = weak.lock()) {
            self->m_pending = 0;
            if (!self->m_valid) {
                return;
            }
            if (self->m_repeats) {
                self->arm();
            } else {
                self->m_valid = false;
            }
            auto keepAlive = self;
            self->m_callback();
        }
    });
}

void Timer::fire() {
    if (!m_valid) {
        return;
    }
    auto keepAlive = shared_from_this();
    if (!m_repeats) {
        invalidate();
    }
    m_callback();
}

void Timer::invalidate() {
    m_valid = false;
    if (m_pending != 0 && Platform::isInstalled()) {
        Platform::shared().scheduler().cancel(m_pending);
        m_pending = 0;
    }
}
