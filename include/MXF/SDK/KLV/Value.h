#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Platform/Types.h"

#include <memory>

namespace MXF::SDK::KLV
{

using Platform::UInt64;

// A window over the value of one KLV item on the source it was read from; it holds no bytes.
// Reads and skips are clamped to the declared length. Destroying a Value moves the source to the
// first byte after the item (or to the source's end if the length runs past it), read or not, so
// callers that ignore a value just drop it. The source is borrowed and must outlive the Value.
class Value : public DataIO::BoundedDataSource
{
public:
    // `length` as declared in the file; nothing is allocated for it.
    Value(DataIO::DataSource& source, UInt64 length);
    ~Value() override;
    Value(const Value&) = delete;
    Value& operator=(const Value&) = delete;

    // The source's own position, not relative to the value.
    UInt64 position() const override;
    bool eof() const override;
    UInt64 read(void* buffer, UInt64 size) override;
    UInt64 skip(UInt64 size) override;
    // Declared length minus what has been consumed; 0 once the source is past the end.
    UInt64 remaining() const override;
    UInt64 skipToEnd() override;

    UInt64 size() const noexcept;
    // Throws InvalidLength "Invalid data size in Value: N of M bytes" if the value or the source
    // ends first.
    void readExact(void* buffer, UInt64 size);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace MXF::SDK::KLV
