#pragma once

#include "MXF/SDK/Synchronization/Mutex.h"

#include <atomic>

namespace MXF::SDK::Templates
{

// A process-wide `T`, made on first use under the global mutex, with a test of the pointer before
// and after taking the lock. Never destroyed: other process-wide objects may still use it while
// the process ends.
template <typename T>
class Singleton
{
public:
    static T& instance()
    {
        T* object = instance_.load(std::memory_order_acquire);
        if (object == nullptr)
        {
            Synchronization::Mutex::ScopedLock lock(Synchronization::globalMutex());
            object = instance_.load(std::memory_order_relaxed);
            if (object == nullptr)
            {
                object = new T;
                instance_.store(object, std::memory_order_release);
            }
        }
        return *object;
    }

private:
    static inline std::atomic<T*> instance_{nullptr};
};

} // namespace MXF::SDK::Templates
