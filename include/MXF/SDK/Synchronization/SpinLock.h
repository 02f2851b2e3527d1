#pragma once

#include "MXF/SDK/Platform/Platform.h"

#include <atomic>
#include <cstdint>

namespace MXF::SDK::Synchronization
{

// A 32-bit word: locked while it holds LOCKED. Waiters yield their time slice, so the lock is
// meant for a few instructions' worth of work, such as a free-list push or pop.
class SpinLock
{
public:
    static constexpr std::uint32_t LOCKED = 0x10C3ED;

    void lock() noexcept
    {
        while (word_.exchange(LOCKED, std::memory_order_acquire) != 0)
            Platform::yield();
    }
    void unlock() noexcept { word_.exchange(0, std::memory_order_release); }

    class Guard
    {
    public:
        explicit Guard(SpinLock& lock) noexcept : lock_(lock) { lock_.lock(); }
        ~Guard() { lock_.unlock(); }
        Guard(const Guard&) = delete;
        Guard& operator=(const Guard&) = delete;

    private:
        SpinLock& lock_;
    };

private:
    std::atomic<std::uint32_t> word_{0};
};

} // namespace MXF::SDK::Synchronization
