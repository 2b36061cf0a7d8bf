#pragma once

#include <QMutex>
#include <QString>
#include <QVariant>
#include <QVariantMap>
#include <functional>
#include <vector>

struct Notification {
    QString name;
    QVariant object;
    QVariantMap userInfo;
};

// Notifications between objects: string names, an optional object and a user-info map. Observers are called
// on the posting thread, in the order they were added.
class NotificationCenter {
public:
    using Callback = std::function<void(const Notification&)>;

    void addObserver(const void* owner, const QString& name, Callback callback);
    void removeObserver(const void* owner);
    void removeObserver(const void* owner, const QString& name);
    void postNotificationName(const QString& name, const QVariant& object = {},
                              const QVariantMap& userInfo = {});
    int observerCount(const QString& name) const;

private:
    struct Entry {
        quint64 id;
        const void* owner;
        QString name;
        Callback callback;
    };
    mutable QMutex m_mutex;
    std::vector<Entry> m_entries;
    quint64 m_nextId = 1;
};
