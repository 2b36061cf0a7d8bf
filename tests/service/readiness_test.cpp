// The service tells a service manager (systemd with Type=notify) that it is ready only once its port is open,
// and that it is stopping when asked to.
#include "net/service_manager.h"
#include "support.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

using namespace tarvolin::testing;
using tarvolin::net::ServiceManager;

namespace {

// A service manager's end of the protocol: a datagram socket bound to a path or an abstract name.
class NotifySocket {
public:
    explicit NotifySocket(const std::string& name) : name_(name) {
        fd_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (name[0] == '@') {
            address.sun_path[0] = '\0';
        }
        const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
        if (fd_ < 0 || ::bind(fd_, reinterpret_cast<const sockaddr*>(&address), length) != 0) {
            throw std::runtime_error("cannot bind the notification socket " + name);
        }
    }
    ~NotifySocket() {
        ::close(fd_);
        if (name_[0] == '/') {
            ::unlink(name_.c_str());
        }
    }

    // The next datagram, or empty after the time limit.
    std::string next(int timeoutMs = 30'000) {
        pollfd p{fd_, POLLIN, 0};
        if (::poll(&p, 1, timeoutMs) <= 0) {
            return {};
        }
        char buffer[4096];
        const ssize_t n = ::recv(fd_, buffer, sizeof buffer, 0);
        return n > 0 ? std::string(buffer, static_cast<std::size_t>(n)) : std::string();
    }

private:
    std::string name_;
    int fd_ = -1;
};

pid_t spawnService(const std::string& notifySocket, const std::filesystem::path& database) {
    std::vector<std::string> args{"/usr/bin/env",
                                  "NOTIFY_SOCKET=" + notifySocket,
                                  TARVOLIN_SERVICE_BINARY,
                                  "--address",
                                  "127.0.0.1",
                                  "--port",
                                  "0",
                                  "--database",
                                  database.string(),
                                  "--log-level",
                                  "off"};
    std::vector<char*> argv;
    for (auto& a : args) {
        argv.push_back(a.data());
    }
    argv.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) {
        throw std::runtime_error("cannot start the service");
    }
    return pid;
}

int waitForExit(pid_t pid) {
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

unsigned short portIn(const std::string& status) {
    const auto at = status.find(" port ");
    return at == std::string::npos ? 0 : static_cast<unsigned short>(std::stoi(status.substr(at + 6)));
}

} // namespace

TEST(ServiceReadiness, ReadyComesOnceThePortAnswersAndStoppingOnSigterm) {
    const auto dir = std::filesystem::temp_directory_path() / ("tarvolin-ready-" + std::to_string(getpid()));
    std::filesystem::create_directories(dir);
    // A path in the file system, as systemd gives, and an abstract name, as it gives in some containers.
    for (const std::string& socketName :
         {(dir / "notify").string(), "@tarvolin-ready-" + std::to_string(getpid())}) {
        SCOPED_TRACE(socketName);
        NotifySocket manager(socketName);
        const pid_t service = spawnService(socketName, dir / (socketName[0] == '@' ? "b.db" : "a.db"));

        const std::string ready = manager.next();
        EXPECT_NE(ready.find("READY=1"), std::string::npos) << ready;
        EXPECT_NE(ready.find("STATUS=Listening on 127.0.0.1 port "), std::string::npos) << ready;
        const unsigned short port = portIn(ready);
        ASSERT_NE(port, 0) << ready;
        // Nothing is retried: at READY the port must already be serving.
        HttpClient client(port);
        EXPECT_EQ(client.get("/healthz", "").status, 200u);

        kill(service, SIGTERM);
        const std::string stopping = manager.next();
        EXPECT_NE(stopping.find("STOPPING=1"), std::string::npos) << stopping;
        EXPECT_EQ(waitForExit(service), 0);
    }
    std::filesystem::remove_all(dir);
}

TEST(ServiceReadiness, WithoutAManagerOrWithABrokenOneTheServiceGoesOn) {
    ::unsetenv("NOTIFY_SOCKET");
    ServiceManager none;
    EXPECT_FALSE(none.enabled());
    EXPECT_TRUE(none.notify("READY=1"));

    // The variable is taken out of the environment, so that programs the service starts do not report for it.
    ::setenv("NOTIFY_SOCKET", "/nonexistent/notify", 1);
    ServiceManager gone;
    EXPECT_EQ(std::getenv("NOTIFY_SOCKET"), nullptr);
    EXPECT_TRUE(gone.enabled());
    EXPECT_FALSE(gone.notify("READY=1"));
    EXPECT_NE(gone.error().find("/nonexistent/notify"), std::string::npos) << gone.error();

    ServiceManager relative = ServiceManager::forSocket("notify");
    EXPECT_FALSE(relative.notify("READY=1"));
    EXPECT_NE(relative.error().find("neither a path nor an abstract name"), std::string::npos);

    ServiceManager tooLong = ServiceManager::forSocket("/" + std::string(200, 'x'));
    EXPECT_FALSE(tooLong.notify("READY=1"));
    EXPECT_NE(tooLong.error().find("too long"), std::string::npos);
}
