#pragma once

#include "MXF/SDK/MXFIO/IndexTableProvider.h"
#include "MXF/SDK/Platform/Types.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace MXF::SDK::MXFIO
{

class Partition;
class Reader;

using Platform::Int64;
using Platform::UInt32;
using Platform::UInt64;

// Where the bytes of one edit unit of one element are: its key (frame wrapping) and its data.
struct ElementPlace
{
    UInt64 keyPosition = 0;
    UInt64 dataPosition = 0;
    // Bytes of the edit unit, as declared; the file may end before.
    UInt64 size = 0;
};

// Where an index segment puts an element of an edit unit in the essence stream: its offset, and
// the offset of the next edit unit when the segment knows it.
struct StreamSpan
{
    UInt64 offset = 0;
    std::optional<UInt64> next;
};

// Works out where edit unit N of a track's element is: through the index table when the file has
// one that covers it, else by walking the items of the body, whose offsets it keeps.
class Seeker
{
public:
    // `elements` maps the track numbers of the content package to their place in it, as the
    // delta entries of the index count them. For clip wrapping, `constantSize` gives the bytes
    // of an edit unit where the index doesn't (0 when unknown). The reader must outlive it.
    Seeker(Reader& reader, UInt32 bodySID, UInt32 indexSID, std::map<UInt32, UInt32> elements,
           bool clipWrapped, UInt64 constantSize);
    ~Seeker();
    Seeker(const Seeker&) = delete;
    Seeker& operator=(const Seeker&) = delete;

    bool trackNumberExists(UInt32 number) const;
    // NotFound "impl_ -> seeker_ -> trackNumberExists (trackNumberValue): Track Number not found in
    // this content Storage." for a number no element of the body has.
    void requireTrackNumber(UInt32 number) const;
    // Where `segment` puts element `element` of edit unit `editUnit`; empty when the segment
    // doesn't cover it. InvalidIndexSegment "Index table segment position out of range." when its
    // positions with the edit unit leave 64 bits.
    static std::optional<StreamSpan> streamSpan(const IndexTables::IndexTableSegment& segment,
                                                UInt32 element, Int64 editUnit);
    // By the index only: false when it doesn't hold the edit unit, or when what stands at the
    // place it gives isn't the element. `out` is the first byte of the edit unit (the key of a
    // frame-wrapped element), `sizeOut` its bytes. KeyNotFound "it != elements_.end (): Track
    // number not in Essence container".
    bool position(UInt32 trackNumber, Int64 editUnit, UInt64& out, UInt64& sizeOut);
    // By the index when it answers, else by the walk; nothing past the essence read.
    std::optional<ElementPlace> locate(UInt32 trackNumber, Int64 editUnit);
    // By the walk alone.
    std::optional<ElementPlace> walk(UInt32 trackNumber, Int64 editUnit);

    // Whether the file has index segments of the stream.
    bool hasIndex();
    // Edit units the index covers.
    Int64 indexDuration();
    // The tail past the index, up to `duration`, asked of an estimate provider too.
    void useEstimateProvider(Int64 duration);
    // Reads by walking only.
    void ignoreIndex(bool ignore) noexcept { ignoreIndex_ = ignore; }
    // Edit units the walk has found, the file read to its end.
    Int64 walkedCount(UInt32 trackNumber);

    IndexTables::IndexTableProvider* provider() noexcept { return provider_.get(); }
    const std::map<UInt32, UInt32>& elements() const noexcept { return elements_; }
    UInt32 bodySID() const noexcept { return bodySID_; }
    bool clipWrapped() const noexcept { return clipWrapped_; }

private:
    std::optional<ElementPlace> indexed(UInt32 trackNumber, Int64 editUnit);
    std::optional<ElementPlace> fromSegment(const IndexTables::IndexTableSegment& segment,
                                            UInt32 element, Int64 editUnit);
    std::optional<ElementPlace> inClip(const StreamSpan& span);
    std::optional<ElementPlace> atElementKey(UInt64 streamOffset, UInt32 element);
    bool walkOne();
    bool findClip();
    // The file position of a stream offset, by the bodies of the stream found once.
    UInt64 absolutePosition(UInt64 offset);

    Reader& reader_;
    UInt32 bodySID_;
    UInt32 indexSID_;
    std::map<UInt32, UInt32> elements_;
    bool clipWrapped_;
    UInt64 constantSize_;
    bool ignoreIndex_ = false;
    std::unique_ptr<IndexTables::IndexTableParseOnRequestProvider> provider_;
    std::unique_ptr<IndexTables::IndexTablePositionEstimateProvider> estimate_;
    std::optional<bool> indexTrusted_;

    // The walk: the body's partitions, the one being read, and what was found so far.
    bool walkStarted_ = false;
    bool walkDone_ = false;
    std::vector<Partition*> partitions_;
    std::size_t partition_ = 0;
    std::map<UInt32, std::vector<ElementPlace>> walked_;
    // Each body of the stream: its BodyOffset, first byte and end in the file.
    struct Body
    {
        UInt64 offset, start, end;
    };
    std::optional<std::vector<Body>> bodies_;
    // Clip wrapping: the one essence item of the body.
    std::optional<ElementPlace> clip_;
};

} // namespace MXF::SDK::MXFIO
