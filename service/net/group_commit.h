// Writes that arrive together are committed together. Callers hand in items from any thread; one thread of
// its own takes everything waiting, at most maxBatch, and gives it to `commit` as one batch. While a batch is
// on its way to the disk the next one gathers, so the more writers wait, the more one commit carries, and a
// lone writer waits for nothing but its own commit. `commit` answers every item of its batch itself.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace tarvolin::net {

struct GroupCommitCounts {
    std::size_t batches = 0;  // committed so far
    std::size_t items = 0;    // carried by those batches
    std::size_t waiting = 0;  // handed in, not yet taken into a batch
    std::size_t inCommit = 0; // in the batch being committed now
};

template <typename Item> class GroupCommit {
public:
    using Commit = std::function<void(std::vector<Item>& batch)>;

    GroupCommit(std::size_t maxBatch, Commit commit)
        : maxBatch_(maxBatch), commit_(std::move(commit)), thread_([this] { run(); }) {}

    // Commits what is waiting, then ends.
    ~GroupCommit() {
        {
            std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        wake_.notify_all();
        thread_.join();
    }

    GroupCommit(const GroupCommit&) = delete;
    GroupCommit& operator=(const GroupCommit&) = delete;

    void submit(Item item) {
        {
            std::lock_guard lock(mutex_);
            waiting_.push_back(std::move(item));
        }
        wake_.notify_one();
    }

    // Waits until everything handed in so far has been committed, answered and let go.
    void drain() {
        std::unique_lock lock(mutex_);
        idle_.wait(lock, [this] { return waiting_.empty() && committing_ == 0; });
    }

    GroupCommitCounts counts() const {
        std::lock_guard lock(mutex_);
        return {batches_, items_, waiting_.size(), committing_};
    }

private:
    void run() {
        std::vector<Item> batch;
        std::unique_lock lock(mutex_);
        for (;;) {
            wake_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
            if (waiting_.empty()) {
                return; // stopping, and nothing left
            }
            const std::size_t n = std::min(maxBatch_, waiting_.size());
            batch.clear();
            for (std::size_t i = 0; i < n; ++i) {
                batch.push_back(std::move(waiting_.front()));
                waiting_.pop_front();
            }
            committing_ = n;
            lock.unlock();
            commit_(batch);
            // The items go before the batch counts as done: what they hold (a connection waiting for its
            // answer) must not outlive a caller that drained and then went away.
            batch.clear();
            lock.lock();
            committing_ = 0;
            ++batches_;
            items_ += n;
            if (waiting_.empty()) {
                idle_.notify_all();
            }
        }
    }

    const std::size_t maxBatch_;
    const Commit commit_;
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    std::deque<Item> waiting_;
    std::size_t committing_ = 0; // the size of the batch under way
    bool stopping_ = false;
    std::size_t batches_ = 0;
    std::size_t items_ = 0;
    std::thread thread_; // last: it starts once everything above is there
};

} // namespace tarvolin::net
