#pragma once

#include <memory>

namespace MXF::SDK::Synchronization
{

// A recursive mutex: the thread that holds it may lock it again.
class Mutex
{
public:
    // Throws BadAlloc "Failed to create a mutex" when it cannot be made.
    Mutex();
    ~Mutex();
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock();
    void unlock();

    class ScopedLock
    {
    public:
        explicit ScopedLock(Mutex& mutex) : mutex_(mutex) { mutex_.lock(); }
        ~ScopedLock() { mutex_.unlock(); }
        ScopedLock(const ScopedLock&) = delete;
        ScopedLock& operator=(const ScopedLock&) = delete;

    private:
        Mutex& mutex_;
    };

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The one mutex under which lazily made process-wide objects are created.
Mutex& globalMutex();

} // namespace MXF::SDK::Synchronization
