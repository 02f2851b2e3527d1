#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <array>
#include <cstddef>

namespace MXF::SDK::Types
{

// An integer kept as its wire form: big-endian two's complement (SMPTE 377M).
// `value` swaps on the way out, `setValue` on the way in.
template <typename T>
class SimpleTypes
{
public:
    static constexpr std::size_t SIZE = sizeof(T);

    explicit SimpleTypes(T value = 0) noexcept { setValue(value); }

    T value() const noexcept;
    void setValue(T value) noexcept;

    const Platform::Byte* data() const noexcept { return bytes_.data(); }
    Platform::Byte* data() noexcept { return bytes_.data(); }

private:
    std::array<Platform::Byte, SIZE> bytes_;
};

extern template class SimpleTypes<Platform::Int8>;
extern template class SimpleTypes<Platform::Int16>;
extern template class SimpleTypes<Platform::Int32>;
extern template class SimpleTypes<Platform::Int64>;
extern template class SimpleTypes<Platform::UInt8>;
extern template class SimpleTypes<Platform::UInt16>;
extern template class SimpleTypes<Platform::UInt32>;
extern template class SimpleTypes<Platform::UInt64>;

} // namespace MXF::SDK::Types
