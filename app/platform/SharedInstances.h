#pragma once

#include <functional>
#include <memory>
#include <mutex>

// Process-wide shared instances of the managers. Each one is created on its first use and loads its persisted
// keys at that moment; tests drop them all between cases with SharedInstances::resetAll().
class SharedInstances {
public:
    // Registers how to drop one instance; resetAll() drops them in the reverse order of creation.
    static void registerReset(std::function<void()> reset);
    static void resetAll();
};

template <class T> class Shared {
public:
    static T& instance() {
        std::lock_guard<std::recursive_mutex> lock(mutex());
        auto& slot = storage();
        if (!slot) {
            slot.reset(new T());
            SharedInstances::registerReset([] {
                std::lock_guard<std::recursive_mutex> l(mutex());
                storage().reset();
            });
            slot->loadData();
        }
        return *slot;
    }
    static bool exists() {
        std::lock_guard<std::recursive_mutex> lock(mutex());
        return storage() != nullptr;
    }

private:
    static std::unique_ptr<T>& storage() {
        static std::unique_ptr<T> slot;
        return slot;
    }
    static std::recursive_mutex& mutex() {
        static std::recursive_mutex m;
        return m;
    }
};
