// The profile under SIGKILL: a program that earns gold, skips, points and levels through the game's managers
// is killed at random moments, also in the middle of a write. The profile must load whole afterwards, with
// every balance the player was shown.
#include "platform/UserDefaults.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <poll.h>
#include <random>
#include <spawn.h>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace {

struct Balance {
    long long gold = 0, skips = 0, points = 0, level = 0;
};

Balance parse(const std::string& line) {
    Balance b;
    std::istringstream in(line);
    in >> b.gold >> b.skips >> b.points >> b.level;
    if (!in) {
        throw std::runtime_error("not a balance: " + line);
    }
    return b;
}

// The writer with its standard output read line by line.
class Writer {
public:
    Writer(const QString& settings, unsigned seed) {
        int fds[2];
        if (pipe(fds) != 0) {
            throw std::runtime_error("pipe failed");
        }
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        std::string path = settings.toStdString();
        std::string seedText = std::to_string(seed);
        std::string program = TARVOLIN_PROFILE_WRITER;
        char* argv[] = {program.data(), path.data(), seedText.data(), nullptr};
        int rc = posix_spawn(&pid_, argv[0], &actions, nullptr, argv, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        out_ = fds[0];
        if (rc != 0) {
            close(out_);
            throw std::runtime_error("cannot start the profile writer");
        }
    }
    ~Writer() {
        kill();
        close(out_);
    }

    // The next complete line; empty when none comes within the time.
    std::string line(int timeoutMs = 10'000) {
        for (;;) {
            if (auto nl = buffered_.find('\n'); nl != std::string::npos) {
                std::string l = buffered_.substr(0, nl);
                buffered_.erase(0, nl + 1);
                return l;
            }
            pollfd p{out_, POLLIN, 0};
            if (poll(&p, 1, timeoutMs) <= 0) {
                return {};
            }
            char buf[4096];
            ssize_t n = read(out_, buf, sizeof buf);
            if (n <= 0) {
                return {};
            }
            buffered_.append(buf, static_cast<std::size_t>(n));
        }
    }

    void kill() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
            pid_ = -1;
        }
    }

private:
    pid_t pid_ = -1;
    int out_ = -1;
    std::string buffered_;
};

TEST(ProfileUnderKill, EveryShownBalanceSurvivesAndTheProfileLoadsWhole) {
    std::uint64_t seed = std::random_device{}();
    if (const char* s = std::getenv("TARVOLIN_KILL_SEED"); s && *s) {
        seed = std::strtoull(s, nullptr, 10);
    }
    std::cout << "[ profile kill ] seed " << seed << " (TARVOLIN_KILL_SEED repeats it)" << std::endl;
    const auto began = std::chrono::steady_clock::now();
    std::mt19937_64 rng(seed);
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString settings = dir.filePath(QStringLiteral("settings.ini"));
    // A profile after a while of play: settings, names, lists and progress of other kinds.
    {
        UserDefaults d(settings);
        for (int i = 0; i < 80; ++i) {
            d.setStringForKey(QStringLiteral("قيمة رقم %1 من الإعدادات").arg(i),
                              QStringLiteral("text%1").arg(i));
            d.setIntegerForKey(1000003LL * i, QStringLiteral("number%1").arg(i));
        }
        d.setObjectForKey(QStringList{QStringLiteral("P1"), QStringLiteral("P2"), QStringLiteral("P3")},
                          QStringLiteral("finishedTransactions"));
        d.setBoolForKey(true, QStringLiteral("soundOn"));
    }
    const auto checkOtherKeys = [&](const UserDefaults& d) {
        int missing = 0;
        for (int i = 0; i < 80; ++i) {
            missing += d.stringForKey(QStringLiteral("text%1").arg(i)) !=
                       QStringLiteral("قيمة رقم %1 من الإعدادات").arg(i);
            missing += d.integerForKey(QStringLiteral("number%1").arg(i)) != 1000003LL * i;
        }
        missing += d.stringArrayForKey(QStringLiteral("finishedTransactions")).size() != 3;
        missing += !d.boolForKey(QStringLiteral("soundOn"));
        return missing;
    };

    constexpr int kKills = 8;
    Balance shown{150, 1, 0, 0}; // a first start's gift
    long long balancesChecked = 0;
    for (int round = 0; round < kKills; ++round) {
        std::vector<std::string> lines;
        {
            Writer writer(settings, static_cast<unsigned>(seed + round));
            const std::string first = writer.line();
            ASSERT_FALSE(first.empty()) << "the writer did not start";
            const Balance loaded = parse(first);
            // The managers load exactly what the test read from the file after the last kill.
            EXPECT_EQ(loaded.gold, shown.gold);
            EXPECT_EQ(loaded.skips, shown.skips);
            EXPECT_EQ(loaded.points, shown.points);
            EXPECT_EQ(loaded.level, shown.level);
            if (round % 2 == 0) {
                // At a random moment of the loop.
                std::this_thread::sleep_for(std::chrono::milliseconds(50 + rng() % 400));
            } else {
                // Just after a balance was shown: the next write has begun.
                for (int n = 1 + static_cast<int>(rng() % 40); n > 0; --n) {
                    lines.push_back(writer.line());
                }
            }
            writer.kill();
            // What was printed before the kill is still in the pipe.
            for (std::string l = writer.line(0); !l.empty(); l = writer.line(0)) {
                lines.push_back(l);
            }
        }
        Balance last = shown;
        for (const auto& l : lines) {
            ASSERT_FALSE(l.empty());
            last = parse(l);
        }
        balancesChecked += static_cast<long long>(lines.size());

        ASSERT_FALSE(QFile::exists(settings + QStringLiteral(".unreadable"))) << "the profile was unreadable";
        UserDefaults loaded(settings);
        EXPECT_EQ(checkOtherKeys(loaded), 0) << "keys of the profile went missing after kill " << round + 1;
        EXPECT_TRUE(loaded.boolForKey(QStringLiteral("initialized")));
        Balance stored{loaded.integerForKey(QStringLiteral("credits")),
                       loaded.integerForKey(QStringLiteral("skips")),
                       loaded.integerForKey(QStringLiteral("totalPoints")),
                       loaded.integerForKey(QStringLiteral("currentLevel"))};
        // Never less than shown; at most the one change that was being written when the kill came.
        EXPECT_GE(stored.gold, last.gold) << "kill " << round + 1;
        EXPECT_LE(stored.gold, last.gold + 900);
        EXPECT_GE(stored.skips, last.skips) << "kill " << round + 1;
        EXPECT_LE(stored.skips, last.skips + 5);
        EXPECT_GE(stored.points, last.points) << "kill " << round + 1;
        EXPECT_LE(stored.points, last.points + 5);
        EXPECT_GE(stored.level, last.level) << "kill " << round + 1;
        EXPECT_LE(stored.level, last.level + 1);
        shown = stored;
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - began).count();
    std::cout << "[ profile kill ] " << kKills << " kills, " << balancesChecked << " shown balances checked, "
              << seconds << " s\n";
    EXPECT_GT(balancesChecked, 0);
}

TEST(ProfileUnderKill, ALockFileLeftEmptyByAKillDoesNotStallTheNextWrite) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString settings = dir.filePath(QStringLiteral("settings.ini"));
    {
        UserDefaults d(settings);
        d.setIntegerForKey(150, QStringLiteral("credits"));
    }
    // A program killed just after it created the lock of a write, before it wrote its owner into it.
    {
        QFile lock(settings + QStringLiteral(".lock"));
        ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    }
    const auto began = std::chrono::steady_clock::now();
    UserDefaults d(settings);
    d.setIntegerForKey(170, QStringLiteral("credits"));
    const auto took = std::chrono::steady_clock::now() - began;
    EXPECT_LT(took, std::chrono::seconds(2));
    EXPECT_EQ(UserDefaults(settings).integerForKey(QStringLiteral("credits")), 170);
}

} // namespace
