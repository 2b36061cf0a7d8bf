#include "NotificationCenter.h"

#include <algorithm>

void NotificationCenter::addObserver(const void* owner, const QString& name, Callback callback) {
    QMutexLocker lock(&m_mutex);
    m_entries.push_back({m_nextId++, owner, name, std::move(callback)});
}

void NotificationCenter::removeObserver(const void* owner) {
    QMutexLocker lock(&m_mutex);
    std::erase_if(m_entries, [owner](const Entry& e) { return e.owner == owner; });
}

void NotificationCenter::removeObserver(const void* owner, const QString& name) {
    QMutexLocker lock(&m_mutex);
    std::erase_if(m_entries, [owner, &name](const Entry& e) { return e.owner == owner && e.name == name; });
}

void NotificationCenter::postNotificationName(const QString& name, const QVariant& object,
                                              const QVariantMap& userInfo) {
    std::vector<std::pair<quint64, Callback>> targets;
    {
        QMutexLocker lock(&m_mutex);
        for (const auto& e : m_entries) {
            if (e.name == name) {
                targets.emplace_back(e.id, e.callback);
            }
        }
    }
    const Notification n{name, object, userInfo};
    for (const auto& [id, callback] : targets) {
        // An observer removed by an earlier one in this same post is not called.
        bool stillThere = false;
        {
            QMutexLocker lock(&m_mutex);
            stillThere = std::any_of(m_entries.begin(), m_entries.end(),
                                     [id = id](const Entry& e) { return e.id == id; });
        }
        if (stillThere) {
            callback(n);
        }
    }
}

int NotificationCenter::observerCount(const QString& name) const {
    QMutexLocker lock(&m_mutex);
    return static_cast<int>(std::count_if(m_entries.begin(), m_entries.end(),
                                          [&name](const Entry& e) { return e.name == name; }));
}
