#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/DataIO/Slice.h"
#include "MXF/SDK/MXFIO/Seeker.h"
#include "MXF/SDK/Platform/Types.h"

#include <vector>

namespace MXF::SDK::MXFIO
{

// Reads the edit units of one element of a body, one at a time, from a position.
class ElementReader
{
public:
    virtual ~ElementReader() = default;

    virtual Int64 position() const = 0;
    virtual void seek(Int64 editUnit) = 0;
    // Edit units the metadata gives; the file may hold fewer.
    virtual Int64 duration() const = 0;
    virtual void setDuration(Int64 duration) = 0;
    // The data of the edit unit at the position, then one on; false, with `data` empty, when
    // the position is past the duration or the file holds no more. An edit unit the file ends
    // in gives what there is.
    virtual bool read(std::vector<Platform::Byte>& data) = 0;
    virtual bool isAtEnd() = 0;
    // Where the edit unit is, without reading it.
    virtual std::optional<ElementPlace> place(Int64 editUnit) = 0;
    virtual UInt32 trackNumber() const = 0;
    virtual UInt32 bodySID() const = 0;
    // Rank in the content package: lower is read first.
    virtual UInt32 order() const = 0;
    virtual bool isClipWrapped() const = 0;
};

// What both wrappings share: the position, the stream, the Seeker and the source.
class BaseElementEssenceReader : public ElementReader
{
public:
    // The seeker and the source must outlive the reader.
    BaseElementEssenceReader(Seeker& seeker, DataIO::RandomAccessDataSource& source,
                             UInt32 trackNumber, Int64 duration);

    Int64 position() const override { return position_; }
    void seek(Int64 editUnit) override { position_ = editUnit; }
    Int64 duration() const override { return duration_; }
    void setDuration(Int64 duration) override { duration_ = duration; }
    bool read(std::vector<Platform::Byte>& data) override;
    // As above, into a new block of its own that the slice holds: the bytes are read once, from
    // the file into the block, and never copied again. Null slice with false.
    bool read(DataIO::SlicePtr& data);
    bool isAtEnd() override;
    std::optional<ElementPlace> place(Int64 editUnit) override;
    UInt32 trackNumber() const override { return trackNumber_; }
    UInt32 bodySID() const override { return seeker_.bodySID(); }
    UInt32 order() const override;

protected:
    Seeker& seeker_;
    DataIO::RandomAccessDataSource& source_;
    UInt32 trackNumber_;
    Int64 duration_;
    Int64 position_ = 0;
    // The last place asked for: isAtEnd and the read that follows locate once.
    std::optional<std::pair<Int64, std::optional<ElementPlace>>> last_;
};

// Frame wrapping: an edit unit of the element is the value of one KLV item.
class ElementEssenceReader final : public BaseElementEssenceReader
{
public:
    using BaseElementEssenceReader::BaseElementEssenceReader;
    bool isClipWrapped() const override { return false; }
};

// Clip wrapping: one KLV item holds every edit unit; an edit unit is a stretch of its value at
// the offsets of the index table or of a constant size.
class ElementEssenceReaderClipWrap final : public BaseElementEssenceReader
{
public:
    using BaseElementEssenceReader::BaseElementEssenceReader;
    bool isClipWrapped() const override { return true; }
};

} // namespace MXF::SDK::MXFIO
