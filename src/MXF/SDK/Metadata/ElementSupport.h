#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>
#include <string>

namespace MXF::SDK::Metadata::Support
{

// The type number (TypeIdentifiers) of a value's class.
Platform::UInt32 typeNumber(const Types::BaseType& value);
std::wstring typeName(Platform::UInt32 type);
std::unique_ptr<Types::BaseType> cloneValue(const Types::BaseType& value);
// InvalidLength "Invalid data size in Value to create an element in the metadataSet." when a
// value left bytes of its source unread.
void checkConsumed(const DataIO::BoundedDataSource& source);

const Types::UniversalLabel& instanceUIDLabel();

using Platform::UInt64;

// Bytes written and nothing kept: to measure what a write would give.
class CountingSink final : public DataIO::DataSink
{
public:
    void write(const void* /*buffer*/, UInt64 size) override { position_ += size; }
    UInt64 position() const override { return position_; }

private:
    UInt64 position_ = 0;
};

} // namespace MXF::SDK::Metadata::Support
