#pragma once

#include "MXF/SDK/DataIO/Block.h"
#include "Transcoder/Samples/Sample.h"

#include <cstddef>

namespace KEP::Halvorn
{

// Shows a sample as a read-only block, without copying, so that code working on slices can take
// samples. Each reference on the adapter is also one on the sample: the adapter takes over the
// reference its creator held, and the last release ends both. Without a sample it is an empty
// block with a null data pointer, which the sample queue uses as its end mark.
class SampleBlockAdapter final : public MXF::SDK::DataIO::Block, public RefCountBase
{
public:
    // Takes over one reference on `sample`, which may be null. Starts with one reference of its
    // own.
    explicit SampleBlockAdapter(Sample* sample) noexcept : sample_(sample) {}

    const MXF::SDK::DataIO::Byte* data() const override;
    // Always null: the adapter is read-only.
    MXF::SDK::DataIO::Byte* data() override { return nullptr; }
    MXF::SDK::DataIO::UInt64 size() const override;
    MXF::SDK::DataIO::UInt32 addReference() override;
    MXF::SDK::DataIO::UInt32 release() override;
    // A heap block from the process-wide factory: copies of sample bytes land there.
    MXF::SDK::DataIO::Block* createBlock(MXF::SDK::DataIO::UInt64 size) override;

    // One adapter is made for every queued sample and dies on another thread: a free list keeps
    // them out of the heap's locks.
    static void* operator new(std::size_t size);
    static void operator delete(void* pointer) noexcept;

private:
    ~SampleBlockAdapter() override = default;

    Sample* sample_;
};

} // namespace KEP::Halvorn
