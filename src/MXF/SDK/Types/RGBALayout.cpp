#include "MXF/SDK/Types/RGBALayout.h"

#include "HandleMembers.h"
#include "WireBytes.h"

#include <stdexcept>

namespace MXF::SDK::Types
{

struct RGBALayout::Impl : Internal::FixedBytes<2 * COMPONENTS>
{
    using FixedBytes::FixedBytes;
};

RGBALayout::RGBALayout(const std::array<Component, COMPONENTS>& components)
    : impl_(std::make_unique<Impl>())
{
    for (std::size_t i = 0; i < COMPONENTS; ++i)
    {
        impl_->bytes[2 * i] = components[i].code;
        impl_->bytes[2 * i + 1] = components[i].depth;
    }
}

RGBALayout::RGBALayout(DataIO::DataSource& source) : impl_(std::make_unique<Impl>(source)) {}

RGBALayout::Component RGBALayout::component(std::size_t index) const
{
    if (index >= COMPONENTS)
        throw std::out_of_range("RGBALayout has 8 components");
    return {impl_->bytes[2 * index], impl_->bytes[2 * index + 1]};
}

MXF_SDK_TYPES_HANDLE(RGBALayout, SimpleDataType)

} // namespace MXF::SDK::Types
