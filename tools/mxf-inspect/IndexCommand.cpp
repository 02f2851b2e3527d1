#include "ClipEssence.h"
#include "Commands.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/IndexTables/IndexTableSegment.h"
#include "MXF/SDK/KLV/KLVItem.h"
#include "MXF/SDK/MXFIO/Reader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"

#include <iomanip>
#include <map>
#include <ostream>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;

namespace
{

struct Table
{
    int segments = 0;
    long long first = -1;
    long long end = 0;
    long long entries = 0;
};

void printSegment(const IndexTables::IndexTableSegment& segment, std::ostream& out)
{
    const Types::Rational& rate = segment.indexEditRate();
    out << "  index SID " << (segment.hasIndexSID() ? segment.indexSID().value() : 0)
        << ", body SID " << segment.bodySID().value() << ", edit rate " << rate.numerator() << "/"
        << rate.denominator() << ", start " << segment.indexStartPosition().value() << ", duration "
        << segment.indexDuration().value() << ", edit unit byte count "
        << (segment.hasEditUnitByteCount() ? segment.editUnitByteCount().value() : 0)
        << ", delta entries " << segment.deltaEntryCount() << ", index entries "
        << segment.indexEntryCount() << "\n";
    for (Platform::UInt32 i = 0; i < segment.deltaEntryCount(); ++i)
    {
        const IndexTables::DeltaEntry delta = segment.deltaEntry(i);
        out << "    delta " << i << ": pos table index " << int(delta.posTableIndex()) << ", slice "
            << int(delta.slice()) << ", element delta " << delta.elementDelta() << "\n";
    }
    for (Platform::UInt32 i = 0; i < segment.indexEntryCount(); ++i)
    {
        const IndexTables::IndexEntry entry = segment.indexEntry(i);
        out << "    entry " << i << ": stream offset " << entry.streamOffset()
            << ", temporal offset " << int(entry.temporalOffset()) << ", key frame offset "
            << int(entry.keyFrameOffset()) << ", flags 0x" << std::hex << int(entry.flags())
            << std::dec << "\n";
    }
}

// What the index tells of each track of the material package: its element's place in the
// content package and the edit units the index finds for it: where the first and the last begin
// (the key of a frame-wrapped element) and the bytes of their data.
void printTrackSummaries(const std::string& path, std::ostream& out, std::ostream& err)
{
    auto file = openFile(path, err);
    if (!file)
        return;
    try
    {
        ClipEssence clip(std::move(file), 0);
        if (clip.essence == nullptr)
        {
            out << "no track summary: no material package\n";
            return;
        }
        MXFIO::Seeker& seeker = clip.storage->seeker();
        TrackTags tags;
        for (std::size_t t = 0; t < clip.essence->trackCount(); ++t)
        {
            const MXFIO::EssenceReader::Track& track = clip.essence->track(t);
            const std::string tag = tags.next(track.kind);
            const auto element = seeker.elements().find(track.trackNumber);
            out << tag << " track " << track.trackID << ": number 0x" << std::hex << std::setw(8)
                << std::setfill('0') << track.trackNumber << std::dec << std::setfill(' ');
            if (element == seeker.elements().end())
            {
                out << ", not in the essence container\n";
                continue;
            }
            long long units = 0;
            Platform::UInt64 first = 0, last = 0, bytes = 0, position = 0, size = 0;
            while (seeker.position(track.trackNumber, units, position, size))
            {
                first = units == 0 ? position : first;
                last = position;
                bytes += size;
                ++units;
            }
            out << ", element " << element->second << ", " << units << " edit units indexed";
            if (units > 0)
                out << ", first at " << first << ", last at " << last << ", " << bytes << " bytes";
            out << "\n";
        }
    }
    catch (const Exceptions::BaseException& e)
    {
        out << "no track summary: " << userText(e.what()) << "\n";
    }
}

} // namespace

int indexCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err)
{
    auto file = openFileArgument("index", args, err);
    if (!file)
        return FAILED;
    std::shared_ptr<DataIO::RandomAccessDataSource> source(std::move(file));
    // No metadata is read here, so no dictionary is needed.
    MXFIO::Reader2 reader(source, std::make_shared<MetaMetadata::Dictionary>(), 65536);
    std::map<std::pair<Platform::UInt32, Platform::UInt32>, Table> tables;
    std::string damage;
    bool partitionFound = false;
    try
    {
        for (MXFIO::Partition* partition = reader.headerPartition(); partition != nullptr;
             partition = reader.nextPartition(*partition))
        {
            partitionFound = true;
            while (std::unique_ptr<KLV::KLVItem> item = partition->nextIndexSegment())
            {
                const Platform::UInt64 at = item->keyPosition;
                const IndexTables::IndexTableSegment segment(*item);
                out << "segment at " << at << " (partition " << partition->offset() << ")\n";
                printSegment(segment, out);
                const long long start = segment.indexStartPosition().value();
                long long end = 0;
                // Both numbers come from the file.
                if (__builtin_add_overflow(start, segment.indexDuration().value(), &end))
                {
                    if (damage.empty())
                        damage = "index segment at " + std::to_string(at) + ": start " +
                                 std::to_string(start) + " and duration " +
                                 std::to_string(segment.indexDuration().value()) +
                                 " end past the largest position";
                    continue;
                }
                Table& table = tables[{segment.hasIndexSID() ? segment.indexSID().value() : 0,
                                       segment.bodySID().value()}];
                ++table.segments;
                table.first = table.first < 0 ? start : std::min(table.first, start);
                table.end = std::max(table.end, end);
                table.entries += segment.indexEntryCount();
            }
        }
    }
    catch (const Exceptions::BaseException& e)
    {
        // Not even a header partition: nothing of the file could be read.
        if (!partitionFound)
            return fileFailure(args[0], e.what(), err);
        damage = e.what();
    }
    if (!partitionFound)
        return fileFailure(args[0], "No header partition found", err);
    for (const auto& [sids, table] : tables)
        out << "index SID " << sids.first << ", body SID " << sids.second << ": " << table.segments
            << " segments, edit units " << table.first << " to " << table.end << ", "
            << table.entries << " entries\n";
    out << tables.size() << " index tables\n";
    printTrackSummaries(args[0], out, err);
    out.flush();
    return walkStatus(args[0], damage, false, err);
}

} // namespace Halvorn::Inspect
