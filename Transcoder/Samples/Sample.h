#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace MXF::SDK::DataIO
{
class Block;
}

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

// A sample that owns its buffer. Created with one reference, its creator's; made on the heap only,
// as the last `release` deletes it.
class HalvornSample : public RefCountMixIn<Sample>
{
public:
    // `size` bytes, left uninitialised for the creator to fill. Buffers are 32-bit like every
    // memory block: a larger `size` keeps its low 32 bits, for the buffer and `size()` alike.
    HalvornSample(std::uint32_t trackId, std::uint64_t size);
    ~HalvornSample() override;

    std::uint8_t* data() override { return buffer_; }
    std::uint64_t size() const override { return size_; }
    std::uint32_t trackId() const { return trackId_; }

    // Samples are made on the decoding thread and die on the wrapping one, hundreds of thousands
    // a second at audio sizes. Objects and small buffers come from free lists that the threads
    // trade in batches, as the heap's own caches help only a thread that frees what it made.
    static void* operator new(std::size_t size);
    static void operator delete(void* pointer, std::size_t size) noexcept;

private:
    std::uint32_t trackId_;
    std::uint64_t size_;
    std::uint8_t* buffer_;
};

// A copy of a whole block, so that the sample keeps no reference on the block and may outlive the
// reader that made it.
class ReadSample : public HalvornSample
{
public:
    ReadSample(std::uint32_t trackId, MXF::SDK::DataIO::Block& block);
};

// One channel of 16-bit audio, filled value by value.
class TWOSSample : public HalvornSample
{
public:
    TWOSSample(std::uint32_t trackId, std::uint64_t size);

    // Stores `value` in host order at the write position and moves it on by 2. Throws
    // InvalidLength when the two bytes do not fit.
    void append(std::uint16_t value);

private:
    std::uint64_t writeOffset_ = 0;
};

} // namespace KEP::Halvorn
