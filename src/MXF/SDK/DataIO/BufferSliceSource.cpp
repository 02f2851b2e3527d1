#include "MXF/SDK/DataIO/BufferSliceSource.h"

namespace MXF::SDK::DataIO
{

void BufferSliceSource::write(SlicePtr slice)
{
    MXF_SDK_CHECK_AS(closed_ == false, "this -> closed () == false",
                     "BufferSliceSource already closed.", Exceptions::IOError);
    chain_.pushBack(std::move(slice));
}

SlicePtr BufferSliceSource::read(UInt64 /*maxSize*/)
{
    if (chain_.empty())
    {
        MXF_SDK_CHECK_AS(!closed_, "!impl_ -> closed_",
                         "BufferSliceSource::read: Source closed and empty!", Exceptions::IOError);
        return std::make_unique<Slice>();
    }
    SlicePtr head = chain_.popFront();
    position_ += head->size;
    return head;
}

UInt64 BufferSliceSource::skip(UInt64 size)
{
    UInt64 moved = 0;
    while (moved < size && !chain_.empty())
    {
        Slice* head = chain_.front();
        const UInt64 left = size - moved;
        if (head->size <= left)
        {
            moved += head->size;
            chain_.popFront();
        }
        else
        {
            head->consume(left);
            moved += left;
        }
    }
    position_ += moved;
    return moved;
}

} // namespace MXF::SDK::DataIO
