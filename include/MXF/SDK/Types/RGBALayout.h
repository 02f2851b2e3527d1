#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <array>
#include <cstddef>
#include <memory>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::Types
{

// SMPTE 377M RGBALayout, 16 bytes: 8 pairs of a component code ('R', 'G', 'B', 'A', 'F', 'P',
// 'Z' ...; 0 ends the list) and a depth in bits.
class RGBALayout final : public SimpleDataType
{
public:
    static constexpr std::size_t COMPONENTS = 8;

    struct Component
    {
        Platform::UInt8 code;
        Platform::UInt8 depth;
    };

    explicit RGBALayout(const std::array<Component, COMPONENTS>& components);
    explicit RGBALayout(DataIO::DataSource& source);
    RGBALayout(const RGBALayout& other);
    RGBALayout& operator=(const RGBALayout& other);
    ~RGBALayout() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

    // Throws std::out_of_range from 8 on.
    Component component(std::size_t index) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
