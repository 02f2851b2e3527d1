#include "WireBytes.h"

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/SafeCast.h"

#include <string>

namespace MXF::SDK::Types::Internal
{

void readExact(DataIO::DataSource& source, void* buffer, Platform::UInt64 size)
{
    auto* bytes = static_cast<Byte*>(buffer);
    Platform::UInt64 arrived = 0;
    while (arrived < size)
    {
        const Platform::UInt64 count = source.read(bytes + arrived, size - arrived);
        if (count == 0)
            MXF_SDK_THROW(Exceptions::InvalidLength,
                          "Invalid data size in Value: " + std::to_string(arrived) + " of " +
                              std::to_string(size) + " bytes");
        arrived += count;
    }
}

ByteVector readRemaining(DataIO::BoundedDataSource& source)
{
    ByteVector bytes(Templates::SafeCast<Platform::UInt32>(source.remaining()));
    readExact(source, bytes.data(), bytes.size());
    return bytes;
}

const Byte* emptyBytes() noexcept
{
    static const Byte none[1] = {0};
    return none;
}

Platform::UInt16 VariableBytes::size() const
{
    return Templates::SafeCast<Platform::UInt16>(bytes.size());
}

} // namespace MXF::SDK::Types::Internal
