#include "WireBytes.h"

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/SafeCast.h"

#include <string>

namespace MXF::SDK::Types::Internal
{

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
