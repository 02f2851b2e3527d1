#include "MXF/SDK/KLV/ReadExact.h"

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <string>

namespace MXF::SDK::KLV
{

void readExact(DataIO::DataSource& source, void* buffer, Platform::UInt64 size)
{
    auto* out = static_cast<Platform::Byte*>(buffer);
    Platform::UInt64 done = 0;
    while (done < size)
    {
        const Platform::UInt64 got = source.read(out + done, size - done);
        if (got == 0)
            MXF_SDK_THROW(Exceptions::InvalidLength,
                          "Invalid data size in Value: " + std::to_string(done) + " of " +
                              std::to_string(size) + " bytes");
        done += got;
    }
}

} // namespace MXF::SDK::KLV
