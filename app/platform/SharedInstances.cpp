#include "SharedInstances.h"

#include <vector>

namespace {
std::mutex& resetMutex() {
    static std::mutex m;
    return m;
}
std::vector<std::function<void()>>& resets() {
    static std::vector<std::function<void()>> list;
    return list;
}
} // namespace

void SharedInstances::registerReset(std::function<void()> reset) {
    std::lock_guard<std::mutex> lock(resetMutex());
    resets().push_back(std::move(reset));
}

void SharedInstances::resetAll() {
    std::vector<std::function<void()>> list;
    {
        std::lock_guard<std::mutex> lock(resetMutex());
        list.swap(resets());
    }
    for (auto it = list.rbegin(); it != list.rend(); ++it) {
        (*it)();
    }
}
