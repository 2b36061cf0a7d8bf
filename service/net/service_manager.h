#pragma once
// Tells the service manager (systemd, with Type=notify) how the service stands: READY=1 once the port is
// open, STOPPING=1 when it begins to stop, STATUS= a line for `systemctl status`. The protocol is one
// datagram on the Unix socket named in $NOTIFY_SOCKET (a path, or an abstract name after '@'); without that
// variable nothing is sent. No library is needed.

#include <string>
#include <string_view>

namespace tarvolin::net {

class ServiceManager {
public:
    // Reads $NOTIFY_SOCKET and takes it out of the environment, so that child processes cannot notify on the
    // service's behalf.
    ServiceManager();
    // Built for a given socket name (tests).
    static ServiceManager forSocket(std::string socketName);

    bool enabled() const { return !socket_.empty(); }
    // Sends the lines (e.g. "READY=1\nSTATUS=listening on 8470"). False with a reason in error() when the
    // socket cannot be reached; the service goes on either way.
    bool notify(std::string_view state);
    const std::string& error() const { return error_; }

private:
    struct Given {};
    explicit ServiceManager(Given) {}
    std::string socket_;
    std::string error_;
};

} // namespace tarvolin::net
