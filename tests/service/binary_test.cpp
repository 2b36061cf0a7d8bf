// The real tarvolin-service program: flags, the embedded database, SIGTERM, and a restart.
#include "support.h"

#include <boost/asio/read.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

extern char** environ;

using namespace tarvolin::testing;
namespace json = boost::json;

namespace {

// The program running with its standard error read by the test.
class Process {
public:
    explicit Process(std::vector<std::string> args) {
        int fds[2];
        if (pipe(fds) != 0) {
            throw std::runtime_error("pipe failed");
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDERR_FILENO);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        std::vector<char*> argv;
        for (auto& a : args) {
            argv.push_back(a.data());
        }
        argv.push_back(nullptr);
        int rc = posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        err_ = fds[0];
        if (rc != 0) {
            close(err_);
            throw std::runtime_error(std::string("cannot start the service: ") + std::strerror(rc));
        }
    }

    ~Process() {
        if (pid_ > 0) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(err_);
    }

    // The next line of standard error; empty at its end or after the safety limit.
    std::string line() {
        for (;;) {
            if (auto nl = buffered_.find('\n'); nl != std::string::npos) {
                std::string l = buffered_.substr(0, nl);
                buffered_.erase(0, nl + 1);
                return l;
            }
            pollfd p{err_, POLLIN, 0};
            if (poll(&p, 1, 10'000) <= 0) {
                return {};
            }
            char buf[4096];
            ssize_t n = read(err_, buf, sizeof buf);
            if (n <= 0) {
                return {};
            }
            buffered_.append(buf, static_cast<std::size_t>(n));
        }
    }

    // Reads lines until one with the message; returns it as JSON.
    json::object waitFor(const std::string& msg) {
        for (std::string l = line(); !l.empty(); l = line()) {
            json::error_code ec;
            json::value v = json::parse(l, ec);
            if (!ec && v.is_object() && v.at("msg") == msg.c_str()) {
                return v.as_object();
            }
        }
        throw std::runtime_error("the service never logged \"" + msg + "\"");
    }

    void signal(int sig) { kill(pid_, sig); }

    int terminate() {
        kill(pid_, SIGTERM);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    // Every line written within the time.
    std::vector<std::string> linesFor(std::chrono::milliseconds time) {
        std::vector<std::string> out;
        const auto end = std::chrono::steady_clock::now() + time;
        for (;;) {
            for (auto nl = buffered_.find('\n'); nl != std::string::npos; nl = buffered_.find('\n')) {
                out.push_back(buffered_.substr(0, nl));
                buffered_.erase(0, nl + 1);
            }
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
            pollfd p{err_, POLLIN, 0};
            if (left.count() <= 0 || poll(&p, 1, static_cast<int>(left.count())) <= 0) {
                return out;
            }
            char buf[4096];
            ssize_t n = read(err_, buf, sizeof buf);
            if (n <= 0) {
                return out;
            }
            buffered_.append(buf, static_cast<std::size_t>(n));
        }
    }

    int wait() {
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t pid_ = -1;
    int err_ = -1;
    std::string buffered_;
};

class ServiceProgram : public ::testing::Test {
protected:
    void SetUp() override {
        dir = std::filesystem::temp_directory_path() / ("tarvolin-binary-" + std::to_string(getpid()));
        std::filesystem::create_directories(dir);
    }
    void TearDown() override { std::filesystem::remove_all(dir); }

    // The program, started through `prefix` when there is one (a command that runs it).
    std::unique_ptr<Process> start(const std::string& logLevel = "info",
                                   std::vector<std::string> prefix = {}) {
        std::vector<std::string> args = std::move(prefix);
        for (std::string a : {std::string(TARVOLIN_SERVICE_BINARY), std::string("--port"), std::string("0"),
                              std::string("--address"), std::string("127.0.0.1"), std::string("--database"),
                              (dir / "service.db").string(), std::string("--log-level"), logLevel,
                              std::string("--rate-limit=0")}) {
            args.push_back(a);
        }
        auto p = std::make_unique<Process>(args);
        port = static_cast<unsigned short>(p->waitFor("listening").at("port").as_int64());
        return p;
    }

    static Account signUp(HttpClient& c, const std::string& name) {
        Reply r = c.post("/v1/accounts", json::object{{"displayName", name}, {"password", "a long secret"}});
        EXPECT_EQ(r.status, 201u) << r.body;
        return Account{std::string(r.json.at("player").at("playerID").as_string()), name,
                       std::string(r.json.at("token").as_string())};
    }

    static std::int64_t rank(HttpClient& c, const Account& a, const std::string& scope) {
        Reply r = c.get("/v1/leaderboard?scope=" + scope, a.token);
        return r.json.at("local").at("rank").as_int64();
    }

    std::filesystem::path dir;
    unsigned short port = 0;
};

} // namespace

TEST_F(ServiceProgram, FriendsAndRanksOnAFreshMachineSurviveARestart) {
    auto service = start();
    Account stranger, ali, bader;
    {
        HttpClient c(port);
        stranger = signUp(c, "Stranger");
        ali = signUp(c, "علي");
        bader = signUp(c, "Bader");
        Reply sent = c.post("/v1/friend-requests", json::object{{"playerID", bader.id}, {"message", "صديق؟"}},
                            ali.token);
        ASSERT_EQ(sent.status, 201u);
        std::string id(sent.json.at("request").at("requestID").as_string());
        ASSERT_EQ(c.post("/v1/friend-requests/" + id + "/accept", json::object{}, bader.token).status, 200u);
        ASSERT_EQ(c.post("/v1/leaderboard/scores", json::object{{"value", 900}}, stranger.token).status,
                  200u);
        ASSERT_EQ(c.post("/v1/leaderboard/scores", json::object{{"value", 300}}, ali.token).status, 200u);
        ASSERT_EQ(c.post("/v1/leaderboard/scores", json::object{{"value", 500}}, bader.token).status, 200u);
        EXPECT_EQ(rank(c, ali, "global"), 3);
        EXPECT_EQ(rank(c, ali, "friends"), 2);
        EXPECT_EQ(rank(c, bader, "global"), 2);
        EXPECT_EQ(rank(c, bader, "friends"), 1);
    }
    EXPECT_EQ(service->terminate(), 0);

    service = start();
    HttpClient c(port);
    EXPECT_EQ(rank(c, ali, "global"), 3);
    EXPECT_EQ(rank(c, ali, "friends"), 2);
    EXPECT_EQ(rank(c, bader, "friends"), 1);
    EXPECT_EQ(c.get("/v1/friends", bader.token).json.at("players").at(0).at("playerID"), ali.id.c_str());
    Reply in = c.post("/v1/sessions", json::object{{"displayName", "bader"}, {"password", "a long secret"}});
    EXPECT_EQ(in.status, 200u);
    EXPECT_EQ(service->terminate(), 0);
}

TEST_F(ServiceProgram, ARequestInFlightIsAnsweredAfterSigterm) {
    auto service = start("debug");
    HttpClient c(port);
    Reply reply;
    // Sign-up hashes with the full argon2id cost, so SIGTERM arrives while the request is being handled.
    std::thread client([&] {
        reply = c.post("/v1/accounts", json::object{{"displayName", "Late"}, {"password", "a long secret"}});
    });
    service->waitFor("request read");
    service->signal(SIGTERM);
    client.join();
    EXPECT_EQ(reply.status, 201u) << reply.body;
    EXPECT_EQ(service->wait(), 0);

    service = start();
    HttpClient again(port);
    Reply in =
        again.post("/v1/sessions", json::object{{"displayName", "Late"}, {"password", "a long secret"}});
    EXPECT_EQ(in.status, 200u);
}

TEST_F(ServiceProgram, WrongFlagsStopTheStartWithAMessage) {
    Process bad({TARVOLIN_SERVICE_BINARY, "--port", "seventy"});
    EXPECT_NE(bad.line().find("--port"), std::string::npos);
    EXPECT_EQ(bad.wait(), 2);
    Process unknown({TARVOLIN_SERVICE_BINARY, "--colour", "blue"});
    EXPECT_NE(unknown.line().find("unknown option --colour"), std::string::npos);
    EXPECT_EQ(unknown.wait(), 2);
}

TEST_F(ServiceProgram, OutOfDescriptorsItWaitsInsteadOfSpinningAndRecovers) {
    if (access("/usr/bin/prlimit", X_OK) != 0) {
        GTEST_SKIP() << "prlimit is not installed";
    }
#ifdef TARVOLIN_SANITIZED
    // UBSan opens files of its own to check a dynamic type, and finds no descriptor left for them.
    GTEST_SKIP() << "the sanitizers' runtime needs descriptors of its own; the normal build runs this test";
#endif
    auto service = start("info", {"/usr/bin/prlimit", "--nofile=40:40"});
    boost::asio::io_context io;
    std::vector<boost::asio::ip::tcp::socket> clients;
    for (int i = 0; i < 60; ++i) {
        clients.emplace_back(io);
        clients.back().connect({boost::asio::ip::make_address("127.0.0.1"), port});
    }
    // The connections beyond the limit wait in the backlog; the service says so about once a second.
    std::size_t warnings = 0;
    for (const std::string& l : service->linesFor(std::chrono::milliseconds(2500))) {
        warnings += l.find("accept failed") != std::string::npos;
    }
    EXPECT_GE(warnings, 1u);
    EXPECT_LE(warnings, 4u);
    clients.clear();
    // With the descriptors back, it serves again.
    bool healthy = false;
    for (int attempt = 0; attempt < 50 && !healthy; ++attempt) {
        try {
            HttpClient c(port);
            healthy = c.get("/healthz", "").status == 200;
        } catch (const std::exception&) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    }
    EXPECT_TRUE(healthy);
}

TEST_F(ServiceProgram, AbuseLimitsAreTakenFromTheEnvironmentAndLogged) {
    auto service =
        start("info", {"/usr/bin/env", "TARVOLIN_SIGNUPS_PER_HOUR=1", "TARVOLIN_CONNECTIONS_PER_ADDRESS=2"});
    HttpClient c(port);
    signUp(c, "First");
    Reply second =
        c.post("/v1/accounts", json::object{{"displayName", "Second"}, {"password", "a long secret"}});
    EXPECT_EQ(second.status, 429u);
    EXPECT_EQ(second.headers["Retry-After"], "3600");

    HttpClient other(port);
    // The third connection of the address is answered before it asks, and closed.
    boost::asio::io_context io;
    boost::asio::ip::tcp::socket third(io);
    third.connect({boost::asio::ip::make_address("127.0.0.1"), port});
    std::string answer;
    boost::system::error_code ec;
    boost::asio::read(third, boost::asio::dynamic_buffer(answer), ec);
    EXPECT_EQ(ec, boost::asio::error::eof);
    EXPECT_TRUE(answer.starts_with("HTTP/1.1 503")) << answer;
    EXPECT_NE(answer.find("too_many_connections"), std::string::npos);
    bool logged = false;
    for (const std::string& l : service->linesFor(std::chrono::milliseconds(500))) {
        logged = logged || l.find("too many connections from an address") != std::string::npos;
    }
    EXPECT_TRUE(logged);
    EXPECT_EQ(other.get("/healthz", "").status, 200u);
}
