#include "MXF/SDK/DataIO/SliceReader.h"

#include "MXF/SDK/ByteCoders/BigEndian.h"

#include <cstring>

namespace MXF::SDK::DataIO
{

namespace
{

SlicePtr orEmpty(SlicePtr slice)
{
    return slice ? std::move(slice) : std::make_unique<Slice>();
}

} // namespace

SliceReader::SliceReader(SliceSource* source, bool ownsSource)
    : source_(source), ownsSource_(ownsSource)
{
}

SliceReader::~SliceReader()
{
    buffer_.clear();
    if (ownsSource_)
        delete source_;
}

SlicePtr SliceReader::read(UInt64 maxSize)
{
    if (!buffer_.empty())
        return buffer_.popFront();
    return orEmpty(source_->read(maxSize));
}

UInt64 SliceReader::position() const
{
    return source_->position() - bufferedSize();
}

bool SliceReader::eof() const
{
    return buffer_.empty() && source_->eof();
}

UInt64 SliceReader::skip(UInt64 size)
{
    const UInt64 start = position();
    UInt64 left = size;
    while (left > 0)
    {
        if (buffer_.empty())
        {
            if (source_->eof())
                break;
            const UInt64 skipped = source_->skip(left);
            if (skipped == 0)
                break;
            left -= skipped;
            continue;
        }
        Slice* head = buffer_.front();
        if (head->size <= left)
        {
            left -= head->size;
            buffer_.popFront();
        }
        else
        {
            head->consume(left);
            left = 0;
        }
    }
    return position() - start;
}

SlicePtr SliceReader::readMax(UInt64 size)
{
    SlicePtr run = read(size);
    if (run->size > size)
    {
        auto rest = std::make_unique<Slice>(*run);
        rest->consume(size);
        buffer_.pushFront(std::move(rest));
        run->size = size;
    }
    return run;
}

SlicePtr SliceReader::readUpTo(UInt64 size)
{
    if (size == 0)
        return std::make_unique<Slice>();
    SlicePtr first;
    BlockPtr gathered;
    UInt64 got = 0;
    while (got < size && !eof())
    {
        SlicePtr run = readMax(size - got);
        if (run->size == 0)
            continue;
        if (!first && !gathered)
        {
            if (run->size == size)
                return run;
            got = run->size;
            first = std::move(run);
            continue;
        }
        if (!gathered)
        {
            // Bytes straddle source slices: gather them in a block of the first run's kind.
            gathered = BlockPtr::adopt(first->block->createBlock(size));
            MXF_SDK_CHECK(gathered->data() != nullptr, "Gathering block is not writable",
                          Exceptions::InvalidValue);
            std::memcpy(gathered->data(), first->begin(), first->size);
            first.reset();
        }
        std::memcpy(gathered->data() + got, run->begin(), run->size);
        got += run->size;
    }
    if (gathered)
        return Slice::make(gathered.get(), 0, got);
    return first ? std::move(first) : std::make_unique<Slice>();
}

SlicePtr SliceReader::readExactly(UInt64 size)
{
    if (size == 0)
        return std::make_unique<Slice>();
    if (eof())
        MXF_SDK_THROW(Exceptions::NotEnoughData, "Not enough data to read from the source");
    SlicePtr result = readUpTo(size);
    if (result->size < size)
    {
        pushBack(std::move(result));
        MXF_SDK_THROW(Exceptions::NotEnoughData, "Not enough data to read from the source");
    }
    return result;
}

UInt64 SliceReader::readChain(UInt64 size, SliceChain& chain)
{
    UInt64 got = 0;
    while (got < size && !eof())
    {
        SlicePtr run = readMax(size - got);
        got += run->size;
        chain.pushBack(std::move(run));
    }
    return got;
}

void SliceReader::pushBack(SlicePtr slice)
{
    buffer_.pushFront(std::move(slice));
}

void SliceReader::pushBack(SliceChain& chain)
{
    buffer_.spliceFront(chain);
}

template <typename T>
T SliceReader::readBigEndian()
{
    constexpr UInt64 COUNT = sizeof(T);
    SlicePtr data = readExactly(COUNT);
    MXF_SDK_CHECK_AS(data->size == COUNT, "data -> size () == COUNT",
                     "Not enough data to read item", Exceptions::NotEnoughData);
    return ByteCoders::readBigEndian<T>(data->begin());
}

Platform::UInt8 SliceReader::readUInt8()
{
    return readBigEndian<Platform::UInt8>();
}

Platform::UInt16 SliceReader::readUInt16()
{
    return readBigEndian<Platform::UInt16>();
}

Platform::UInt32 SliceReader::readUInt32()
{
    return readBigEndian<Platform::UInt32>();
}

Platform::UInt64 SliceReader::readUInt64()
{
    return readBigEndian<Platform::UInt64>();
}

} // namespace MXF::SDK::DataIO
