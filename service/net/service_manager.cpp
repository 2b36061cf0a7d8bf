#include "net/service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace tarvolin::net {

ServiceManager::ServiceManager() {
    if (const char* name = std::getenv("NOTIFY_SOCKET"); name && *name) {
        socket_ = name;
    }
    ::unsetenv("NOTIFY_SOCKET");
}

ServiceManager ServiceManager::forSocket(std::string socketName) {
    ServiceManager manager{Given{}};
    manager.socket_ = std::move(socketName);
    return manager;
}

bool ServiceManager::notify(std::string_view state) {
    error_.clear();
    if (socket_.empty()) {
        return true;
    }
    if (socket_[0] != '/' && socket_[0] != '@') {
        error_ = "NOTIFY_SOCKET is neither a path nor an abstract name: " + socket_;
        return false;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (socket_.size() >= sizeof(address.sun_path)) {
        error_ = "NOTIFY_SOCKET is too long: " + socket_;
        return false;
    }
    std::memcpy(address.sun_path, socket_.data(), socket_.size());
    if (socket_[0] == '@') {
        address.sun_path[0] = '\0'; // an abstract socket
    }
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + socket_.size());
    const int fd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        error_ = std::string("cannot open a socket to the service manager: ") + std::strerror(errno);
        return false;
    }
    const ssize_t sent = ::sendto(fd, state.data(), state.size(), MSG_NOSIGNAL,
                                  reinterpret_cast<const sockaddr*>(&address), length);
    const int sendError = errno;
    ::close(fd);
    if (sent < 0 || static_cast<std::size_t>(sent) != state.size()) {
        error_ = "cannot notify the service manager at " + socket_ + ": " +
                 (sent < 0 ? std::strerror(sendError) : "short write");
        return false;
    }
    return true;
}

} // namespace tarvolin::net
