#include "Transcoder/Samples/SampleBlockAdapter.h"

#include "MXF/SDK/Utils/FixedSizeAllocator.h"

namespace KEP::Halvorn
{

using MXF::SDK::DataIO::Byte;
using MXF::SDK::DataIO::UInt32;
using MXF::SDK::DataIO::UInt64;

namespace
{

using AdapterAllocator = MXF::SDK::Utils::FixedSizeAllocator_T<sizeof(SampleBlockAdapter)>;

AdapterAllocator& adapterAllocator()
{
    // Never destroyed: adapters may die after static destruction has begun.
    static AdapterAllocator* const allocator = new AdapterAllocator;
    return *allocator;
}

} // namespace

void* SampleBlockAdapter::operator new(std::size_t size)
{
    return adapterAllocator().allocate(size);
}

void SampleBlockAdapter::operator delete(void* pointer) noexcept
{
    adapterAllocator().deallocate(pointer);
}

const Byte* SampleBlockAdapter::data() const
{
    return sample_ != nullptr ? sample_->data() : nullptr;
}

UInt64 SampleBlockAdapter::size() const
{
    return sample_ != nullptr ? sample_->size() : 0;
}

UInt32 SampleBlockAdapter::addReference()
{
    if (sample_ != nullptr)
        sample_->addReference();
    return count_.fetch_add(1, std::memory_order_relaxed) + 1;
}

UInt32 SampleBlockAdapter::release()
{
    if (sample_ != nullptr)
        sample_->release();
    // acq_rel as for samples: whoever deletes sees what the other holders did.
    const UInt32 left = count_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0)
        delete this;
    return left;
}

MXF::SDK::DataIO::Block* SampleBlockAdapter::createBlock(UInt64 size)
{
    return MXF::SDK::DataIO::MemoryBlockFactory::instance().createBlock(size);
}

} // namespace KEP::Halvorn
