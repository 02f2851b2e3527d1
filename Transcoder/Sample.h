#pragma once

#include <atomic>
#include <cstdint>

namespace KEP::Halvorn
{

// The count that a reference-counted object starts with: one reference, its creator's.
class RefCountBase
{
public:
    virtual ~RefCountBase() = default;

protected:
    RefCountBase() = default;
    RefCountBase(const RefCountBase&) = delete;
    RefCountBase& operator=(const RefCountBase&) = delete;

    std::atomic<std::uint32_t> count_{1};
};

// Essence bytes bound for one output track. Whoever holds a reference may hand it on; the last
// `release`, on whatever thread, deletes the sample. The bytes are written only before the sample
// is handed on.
class Sample
{
public:
    virtual ~Sample() = default;
    virtual std::uint8_t* data() = 0;
    virtual std::uint64_t size() const = 0;
    virtual void addReference() = 0;
    virtual void release() = 0;

protected:
    Sample() = default;
    Sample(const Sample&) = delete;
    Sample& operator=(const Sample&) = delete;
};

template <typename Interface>
class RefCountMixIn : public Interface, public RefCountBase
{
public:
    void addReference() override { count_.fetch_add(1, std::memory_order_relaxed); }
    void release() override
    {
        // acq_rel: the thread that deletes sees every write made through the other references.
        if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete static_cast<RefCountBase*>(this);
    }
};

} // namespace KEP::Halvorn
