#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"

#include <cstddef>
#include <memory>

namespace MXF::SDK::DataIO
{
class BoundedDataSource;
}

namespace MXF::SDK::Types
{

// Opaque bytes of a data stream.
class DataStream final : public SimpleDataType
{
public:
    DataStream(const Platform::Byte* bytes, std::size_t size);
    // Takes every remaining byte of the source; more than 32 bits of them throws InvalidLength
    // "Type size exceeded".
    explicit DataStream(DataIO::BoundedDataSource& source);
    DataStream(const DataStream& other);
    DataStream& operator=(const DataStream& other);
    ~DataStream() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Opaque bytes of SMPTE 377M DataValue.
class DataValue final : public SimpleDataType
{
public:
    DataValue(const Platform::Byte* bytes, std::size_t size);
    // Takes every remaining byte of the source; more than 32 bits of them throws InvalidLength
    // "Type size exceeded".
    explicit DataValue(DataIO::BoundedDataSource& source);
    DataValue(const DataValue& other);
    DataValue& operator=(const DataValue& other);
    ~DataValue() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// The bytes of an element whose type nobody knows, kept so that they are written back as they
// came.
class Unknown final : public SimpleDataType
{
public:
    Unknown(const Platform::Byte* bytes, std::size_t size);
    // Takes every remaining byte of the source; more than 32 bits of them throws InvalidLength
    // "Type size exceeded".
    explicit Unknown(DataIO::BoundedDataSource& source);
    Unknown(const Unknown& other);
    Unknown& operator=(const Unknown& other);
    ~Unknown() override;

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;
    std::unique_ptr<SimpleDataType> clone() const override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::Types
