#pragma once

#include <QObject>
#include <atomic>

inline const QString kReachabilityChangedNotification = QStringLiteral("kReachabilityChangedNotification");

// Whether the internet can be reached. Status 0 means not reachable. A switch forces the offline state (for
// the command line and for tests); without a system backend the connection is taken to be there.
class Reachability : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool reachable READ isReachable NOTIFY changed)
    Q_PROPERTY(bool forcedOffline READ forcedOffline WRITE setForcedOffline NOTIFY changed)
public:
    enum Status { NotReachable = 0, ReachableViaWiFi = 1, ReachableViaWWAN = 2 };

    explicit Reachability(bool useSystemBackend = true);

    int currentReachabilityStatus() const;
    bool isReachable() const { return currentReachabilityStatus() != NotReachable; }
    // Posts kReachabilityChangedNotification with this object on each change from now on.
    void startNotifier();

    bool forcedOffline() const { return m_forcedOffline; }
    void setForcedOffline(bool offline);
    // What the system says (the test double sets it directly).
    void setSystemReachable(bool reachable);

signals:
    void changed();

private:
    void systemChanged();

    std::atomic<bool> m_forcedOffline{false};
    std::atomic<bool> m_systemReachable{true};
    bool m_notifying = false;
};
