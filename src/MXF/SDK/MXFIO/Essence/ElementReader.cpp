#include "MXF/SDK/MXFIO/ElementReader.h"

#include "MXF/SDK/DataIO/DataSource.h"

#include <algorithm>

namespace MXF::SDK::MXFIO
{

BaseElementEssenceReader::BaseElementEssenceReader(Seeker& seeker,
                                                   DataIO::RandomAccessDataSource& source,
                                                   UInt32 trackNumber, Int64 duration)
    : seeker_(seeker), source_(source), trackNumber_(trackNumber), duration_(duration)
{
}

std::optional<ElementPlace> BaseElementEssenceReader::place(Int64 editUnit)
{
    if (editUnit < 0 || (duration_ > 0 && editUnit >= duration_))
        return std::nullopt;
    if (!last_ || last_->first != editUnit)
        last_.emplace(editUnit, seeker_.locate(trackNumber_, editUnit));
    return last_->second;
}

bool BaseElementEssenceReader::read(std::vector<Platform::Byte>& data)
{
    data.clear();
    const std::optional<ElementPlace> found = place(position_);
    if (!found)
        return false;
    source_.seek(found->dataPosition);
    // An element the file ends in gives what there is of it.
    const UInt64 size = std::min(found->size, source_.remaining());
    data.resize(std::size_t(size));
    data.resize(std::size_t(source_.read(data.data(), size)));
    ++position_;
    return true;
}

bool BaseElementEssenceReader::read(DataIO::SlicePtr& data)
{
    data.reset();
    const std::optional<ElementPlace> found = place(position_);
    if (!found)
        return false;
    source_.seek(found->dataPosition);
    const UInt64 size = std::min(found->size, source_.remaining());
    ++position_;
    if (size == 0)
    {
        data = std::make_unique<DataIO::Slice>();
        return true;
    }
    // Left as it comes from the allocator: the read fills it.
    const DataIO::BlockPtr block =
        DataIO::BlockPtr::adopt(DataIO::MemoryBlockFactory::instance().createBlock(size));
    data = DataIO::Slice::make(block.get(), 0, source_.read(block->data(), size));
    return true;
}

bool BaseElementEssenceReader::isAtEnd()
{
    return !place(position_).has_value();
}

UInt32 BaseElementEssenceReader::order() const
{
    const auto& elements = seeker_.elements();
    const auto found = elements.find(trackNumber_);
    return found == elements.end() ? UINT32_MAX : found->second;
}

} // namespace MXF::SDK::MXFIO
