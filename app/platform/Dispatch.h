#pragma once

#include <functional>

// The two queues of work: the main thread, where all logic and every screen live, and a pool of worker
// threads for work that waits on the network.
namespace Dispatch {
// Runs the block on a worker thread. The program waits for running blocks before it ends.
void asyncGlobal(std::function<void()> block);
// Runs the block on the main thread, after what is queued there already. Dropped when the platform is gone
// by then.
void asyncMain(std::function<void()> block);
bool isMainThread();
// Waits until every block given to asyncGlobal has ended (the program's end, and tests).
void waitForGlobal();
} // namespace Dispatch
