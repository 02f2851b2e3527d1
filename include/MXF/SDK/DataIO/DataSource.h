#pragma once

#include "MXF/SDK/Platform/Types.h"

namespace MXF::SDK::DataIO
{

using Platform::UInt64;

// Bytes copied into caller buffers.
class DataSource
{
public:
    virtual ~DataSource() = default;
    // Bytes consumed so far.
    virtual UInt64 position() const = 0;
    virtual bool eof() const = 0;
    // Copies up to `size` bytes; fewer only at the end of the data.
    virtual UInt64 read(void* buffer, UInt64 size) = 0;
    // Returns the number of bytes skipped.
    virtual UInt64 skip(UInt64 size) = 0;
};

class BoundedDataSource : public virtual DataSource
{
public:
    virtual UInt64 remaining() const = 0;
    // Moves to the end; returns the new position.
    virtual UInt64 skipToEnd() = 0;
    bool eof() const override { return remaining() == 0; }
};

class RandomAccessible
{
public:
    virtual ~RandomAccessible() = default;
    // Past the end clamps to the end; returns the position reached.
    virtual UInt64 seek(UInt64 position) = 0;
};

class RandomAccessDataSource : public virtual BoundedDataSource, public virtual RandomAccessible
{
};

class DataSink
{
public:
    virtual ~DataSink() = default;
    virtual void write(const void* buffer, UInt64 size) = 0;
    virtual UInt64 position() const = 0;
};

class RandomAccessDataSink : public virtual DataSink, public virtual RandomAccessible
{
};

// Marks a source that only goes forward: its users must not seek.
class StreamingDataSource
{
public:
    virtual ~StreamingDataSource() = default;
};

} // namespace MXF::SDK::DataIO
