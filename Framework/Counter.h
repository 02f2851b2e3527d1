#pragma once

#include <atomic>
#include <cstdint>

namespace KEP::Framework::Counting
{

// A named, process-wide counter. Counters are never destroyed.
class Counter
{
public:
    // The counter of this name, made on first use; thread-safe.
    static Counter& counter(const char* name);

    // 1 on the first call, then 2, 3, ...; wraps at 2^32. Thread-safe.
    std::uint32_t next() noexcept { return value_.fetch_add(1, std::memory_order_relaxed) + 1; }

    Counter(const Counter&) = delete;
    Counter& operator=(const Counter&) = delete;

private:
    Counter() = default;
    std::atomic<std::uint32_t> value_{0};
};

} // namespace KEP::Framework::Counting
