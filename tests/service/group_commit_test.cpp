#include "net/group_commit.h"
#include "net/recent_cache.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using tarvolin::net::GroupCommit;
using tarvolin::net::RecentCache;

namespace {

// A commit that holds until the test lets it go, so that the test knows what waits behind it.
struct Gate {
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
    int entered = 0;

    void pass() {
        std::unique_lock lock(mutex);
        ++entered;
        changed.notify_all();
        changed.wait(lock, [this] { return open; });
    }
    void waitForEntered(int n) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return entered >= n; });
    }
    void release() {
        std::lock_guard lock(mutex);
        open = true;
        changed.notify_all();
    }
};

} // namespace

TEST(GroupCommit, WhatWaitsDuringACommitGoesInTheNextOneInOrderAndUpToTheLimit) {
    Gate gate;
    std::mutex seenMutex;
    std::vector<std::vector<int>> batches;
    {
        GroupCommit<int> commits(3, [&](std::vector<int>& batch) {
            if (batch.front() == 0) {
                gate.pass();
            }
            std::lock_guard lock(seenMutex);
            batches.push_back(batch);
        });
        commits.submit(0);
        gate.waitForEntered(1);
        for (int i = 1; i <= 5; ++i) {
            commits.submit(i);
        }
        EXPECT_EQ(commits.counts().waiting, 5u);
        gate.release();
        commits.drain();
        const auto n = commits.counts();
        EXPECT_EQ(n.batches, 3u);
        EXPECT_EQ(n.items, 6u);
        EXPECT_EQ(n.waiting, 0u);
    }
    EXPECT_EQ(batches, (std::vector<std::vector<int>>{{0}, {1, 2, 3}, {4, 5}}));
}

TEST(GroupCommit, EndingCommitsEverythingHandedIn) {
    std::atomic<int> committed{0};
    std::atomic<bool> slow{true};
    {
        GroupCommit<int> commits(512, [&](std::vector<int>& batch) {
            if (slow.exchange(false)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            }
            committed += static_cast<int>(batch.size());
        });
        std::vector<std::thread> writers;
        for (int t = 0; t < 4; ++t) {
            writers.emplace_back([&] {
                for (int i = 0; i < 250; ++i) {
                    commits.submit(i);
                }
            });
        }
        for (auto& w : writers) {
            w.join();
        }
    }
    EXPECT_EQ(committed.load(), 1000);
}

// A report's item holds its connection; a server that drained its reports and goes away must find every
// connection let go, not one still held by the committing thread's last batch.
TEST(GroupCommit, ADrainedCommitHoldsNothingOfWhatItCommitted) {
    GroupCommit<std::shared_ptr<int>> commits(8, [](std::vector<std::shared_ptr<int>>& batch) {
        for (auto& item : batch) {
            ++*item;
        }
    });
    for (int round = 0; round < 3; ++round) {
        auto connection = std::make_shared<int>(0);
        commits.submit(connection);
        commits.drain();
        EXPECT_EQ(*connection, 1);
        EXPECT_EQ(connection.use_count(), 1) << "round " << round;
    }
}

TEST(RecentCache, AnEntryIsTrustedForItsTimeAndNotWhenTheClockGoesBack) {
    RecentCache<std::string> cache(1000, 10);
    cache.put("k", "player", 5000, cache.generation());
    EXPECT_EQ(cache.find("k", 5000), "player");
    EXPECT_EQ(cache.find("k", 5999), "player");
    EXPECT_FALSE(cache.find("k", 6000));
    EXPECT_FALSE(cache.find("k", 4999));
    EXPECT_FALSE(cache.find("other", 5000));
}

TEST(RecentCache, AValueReadBeforeAForgettingIsNotKept) {
    RecentCache<std::string> cache(1000, 10);
    // A request reads the token's player; meanwhile the token is removed and forgotten; the read comes back.
    const auto readIn = cache.generation();
    cache.forget("k");
    cache.put("k", "player", 0, readIn);
    EXPECT_FALSE(cache.find("k", 0));
    // Read after the forgetting, the value stands, and a later forgetting drops it.
    cache.put("k", "player", 0, cache.generation());
    EXPECT_EQ(cache.find("k", 0), "player");
    cache.forget("k");
    EXPECT_FALSE(cache.find("k", 0));
}

TEST(RecentCache, AFullCacheStartsAgainAndAReplacedKeyDoesNotCountTwice) {
    RecentCache<int> cache(1000, 3);
    for (int i = 0; i < 3; ++i) {
        cache.put("k" + std::to_string(i), i, 0, cache.generation());
    }
    cache.put("k1", 11, 0, cache.generation());
    EXPECT_EQ(cache.size(), 3u);
    EXPECT_EQ(cache.find("k1", 0), 11);
    cache.put("k3", 3, 0, cache.generation());
    EXPECT_EQ(cache.size(), 1u);
    EXPECT_EQ(cache.find("k3", 0), 3);
    EXPECT_FALSE(cache.find("k0", 0));
}
