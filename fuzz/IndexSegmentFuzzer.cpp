// Index table segments from any bytes. A segment that reads must write, unless its value outgrows
// the 4-byte length; what it writes must read back and write the same bytes again, and `size` must
// say how many. The entries are walked, and the GOP records made, to reach every accessor; the
// seeker looks up edit units at and around the segment's ends and at the ends of 64 bits.
#include "FuzzSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSink.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/IndexTables/IndexTableSegmentWithGOPInfo.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/MXFIO/Seeker.h"

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

using namespace MXF::SDK;
using IndexTables::IndexTableSegmentWithGOPInfo;
using Platform::Int64;
using Platform::UInt32;
using Platform::UInt64;

using Halvorn::Fuzz::require;

namespace
{

std::optional<IndexTableSegmentWithGOPInfo> read(const std::uint8_t* data, std::size_t size)
{
    DataIO::Memory::MemoryDataSource source(data, size);
    KLV::KLVReader reader(source);
    UInt64 skipped = 0;
    try
    {
        auto item = reader.readKLV(skipped, 0);
        return IndexTableSegmentWithGOPInfo(*item);
    }
    catch (const Exceptions::BaseException&)
    {
        return std::nullopt;
    }
}

std::optional<std::vector<std::uint8_t>> written(const IndexTableSegmentWithGOPInfo& segment)
{
    DataIO::Memory::MemoryDataSink sink;
    try
    {
        segment.write(sink);
    }
    catch (const Exceptions::InvalidLength&)
    {
        return std::nullopt; // more than a 4-byte BER length holds
    }
    require(sink.data().size() == segment.size());
    return sink.release();
}

// Positions near the segment's ends wrap rather than overflow here: the seeker must cope with
// whatever they become.
UInt64 lookUp(const IndexTables::IndexTableSegment& segment)
{
    const UInt64 start = UInt64(segment.indexStartPosition().value());
    const UInt64 end = start + UInt64(segment.indexDuration().value());
    UInt64 sum = 0;
    for (const UInt64 editUnit : {start, start - 1, start + 1, end - 1, end, UInt64(0),
                                  UInt64(INT64_MIN), UInt64(INT64_MAX)})
        for (const UInt32 element : {0u, 1u, segment.deltaEntryCount()})
            try
            {
                const auto span = MXFIO::Seeker::streamSpan(segment, element, Int64(editUnit));
                if (span)
                    sum += span->offset + span->next.value_or(0);
            }
            catch (const Exceptions::InvalidIndexSegment&)
            {
            }
    return sum;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::optional<IndexTableSegmentWithGOPInfo> segment = read(data, size);
    if (!segment)
        return 0;
    UInt64 sum = 0;
    for (UInt32 i = 0; i < segment->deltaEntryCount(); ++i)
        sum += segment->deltaEntry(i).elementDelta();
    for (UInt32 i = 0; i < segment->indexEntryCount(); ++i)
    {
        const auto entry = segment->indexEntry(i);
        sum += entry.streamOffset();
        for (UInt32 s = 0; s < entry.sliceCount(); ++s)
            sum += entry.sliceOffset(s);
        for (UInt32 p = 0; p < entry.posTableCount(); ++p)
            sum += UInt64(entry.posTable(p).numerator());
    }
    sum += lookUp(*segment);
    try
    {
        segment->update(nullptr, nullptr);
        require(segment->gopInfoCount() == segment->indexEntryCount());
    }
    catch (const Exceptions::BaseException&)
    {
    }
    const auto bytes = written(*segment);
    // Keeps the walk above from being optimised away.
    volatile UInt64 keep = sum;
    static_cast<void>(keep);
    if (!bytes)
        return 0;
    const auto again = read(bytes->data(), bytes->size());
    require(again.has_value());
    require(written(*again) == bytes);
    return 0;
}
