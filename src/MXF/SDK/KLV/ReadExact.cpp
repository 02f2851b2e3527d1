#include "MXF/SDK/KLV/ReadExact.h"

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <algorithm>
#include <string>

namespace MXF::SDK::KLV
{

using Platform::Byte;
using Platform::UInt64;

UInt64 readUpTo(DataIO::DataSource& source, void* buffer, UInt64 size)
{
    auto* out = static_cast<Byte*>(buffer);
    UInt64 done = 0;
    while (done < size)
    {
        const UInt64 got = source.read(out + done, size - done);
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

void readUpTo(DataIO::DataSource& source, std::vector<Byte>& bytes, UInt64 size)
{
    constexpr UInt64 PIECE = 64 * 1024;
    while (bytes.size() < size)
    {
        const std::size_t at = bytes.size();
        bytes.resize(at + std::min(size - at, PIECE));
        const UInt64 got = source.read(bytes.data() + at, bytes.size() - at);
        bytes.resize(at + got);
        if (got == 0)
            return;
    }
}

void readExact(DataIO::DataSource& source, void* buffer, UInt64 size)
{
    const UInt64 done = readUpTo(source, buffer, size);
    if (done < size)
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Invalid data size in Value: " + std::to_string(done) + " of " +
                          std::to_string(size) + " bytes");
}

} // namespace MXF::SDK::KLV
