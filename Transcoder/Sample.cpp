#include "Transcoder/Sample.h"

#include "MXF/SDK/DataIO/Block.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <cstring>
#include <utility>

namespace KEP::Halvorn
{

HalvornSample::HalvornSample(std::uint32_t trackId, std::uint64_t size)
    : trackId_(trackId), size_(static_cast<std::uint32_t>(size)),
      buffer_(std::make_unique_for_overwrite<std::uint8_t[]>(size_))
{
}

ReadSample::ReadSample(std::uint32_t trackId, MXF::SDK::DataIO::Block& block)
    : HalvornSample(trackId, block.size())
{
    // A block without bytes may have no data pointer at all.
    if (size() != 0)
        std::memcpy(data(), std::as_const(block).data(), size());
}

TWOSSample::TWOSSample(std::uint32_t trackId, std::uint64_t size) : HalvornSample(trackId, size) {}

void TWOSSample::append(std::uint16_t value)
{
    // A chunk whose size does not divide into whole values per channel would otherwise write past
    // the buffer.
    MXF_SDK_CHECK(size() - writeOffset_ >= sizeof value, "TWOSSample is full",
                  MXF::SDK::Exceptions::InvalidLength);
    std::memcpy(data() + writeOffset_, &value, sizeof value);
    writeOffset_ += sizeof value;
}

} // namespace KEP::Halvorn
