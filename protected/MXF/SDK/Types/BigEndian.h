#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <cstddef>
#include <type_traits>

// Big-endian integers in place, as every number of MXF stands in the file.
namespace MXF::SDK::Types::Internal
{

template <typename T>
T readBigEndian(const Platform::Byte* bytes) noexcept
{
    using U = std::make_unsigned_t<T>;
    U value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value = static_cast<U>((value << 8) | bytes[i]);
    return static_cast<T>(value);
}

template <typename T>
void writeBigEndian(T value, Platform::Byte* bytes) noexcept
{
    using U = std::make_unsigned_t<T>;
    U bits = static_cast<U>(value);
    for (std::size_t i = sizeof(T); i-- > 0;)
    {
        bytes[i] = static_cast<Platform::Byte>(bits & 0xFF);
        bits = static_cast<U>(bits >> 8);
    }
}

} // namespace MXF::SDK::Types::Internal
