#pragma once

#include <QDateTime>
#include <QHash>
#include <QObject>
#include <QTimeZone>
#include <functional>
#include <memory>

class QTimer;

// The clock and the run loop's timers. Everything in the game that waits (level timers, delays, animations)
// goes through here, so tests can drive time by hand.
class Scheduler {
public:
    virtual ~Scheduler() = default;
    virtual QDateTime now() const = 0;
    // The zone whose calendar days count: where a day begins and ends for the player.
    virtual QTimeZone timeZone() const { return QTimeZone::systemTimeZone(); }
    // Runs `callback` once after `seconds` on the main thread; returns an id for cancel().
    virtual quint64 schedule(double seconds, std::function<void()> callback) = 0;
    virtual void cancel(quint64 id) = 0;
};

// The real clock and QTimer.
class QtScheduler : public Scheduler {
public:
    QtScheduler();
    ~QtScheduler() override;
    QDateTime now() const override;
    quint64 schedule(double seconds, std::function<void()> callback) override;
    void cancel(quint64 id) override;

private:
    std::unique_ptr<QObject> m_context;
    QHash<quint64, QTimer*> m_timers;
    quint64 m_nextId = 1;
};

// A repeating or one-shot timer in the manner of the platform's timers: it can be fired by hand and
// invalidated.
class Timer : public std::enable_shared_from_this<Timer> {
public:
    static std::shared_ptr<Timer> scheduledTimerWithTimeInterval(double seconds, bool repeats,
                                                                 std::function<void()> callback);
    ~Timer();
    void fire();
    void invalidate();
    bool isValid() const { return m_valid; }
    double timeInterval() const { return m_interval; }

private:
    Timer(double seconds, bool repeats, std::function<void()> callback);
    void arm();

    double m_interval;
    bool m_repeats;
    bool m_valid = true;
    quint64 m_pending = 0;
    std::function<void()> m_callback;
};
