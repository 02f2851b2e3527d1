#include "KlvScan.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

#include <cstdint>
#include <memory>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using Platform::UInt64;

void Damage::note(const std::string& what)
{
    if (first_.empty())
        first_ = what;
    else
        ++more_;
}

std::string Damage::summary() const
{
    return more_ == 0 ? first_ : first_ + " (and " + std::to_string(more_) + " more)";
}

KlvScan::KlvScan(DataIO::RandomAccessDataSource& source)
    : source_(source), end_(source.position() + source.remaining()), reader_(source)
{
}

ScanResult KlvScan::scan()
{
    try
    {
        // Each step moves the source on by at least one byte, so the scan always ends.
        while (source_.position() < end_)
            step();
    }
    catch (const Exceptions::BaseException& e)
    {
        return {"reading at " + std::to_string(source_.position()) + ": " + e.what(), true};
    }
    finish();
    return {damage_.summary(), false};
}

void KlvScan::step()
{
    const UInt64 searchStart = source_.position();
    UInt64 skipped = 0;
    std::unique_ptr<KLV::KLVItem> found;
    try
    {
        // No limit: the search reads each byte once, so even a file of garbage ends.
        found = reader_.readKLV(skipped, UINT64_MAX);
    }
    catch (const Exceptions::NotEnoughData&)
    {
        noItem(searchStart);
        source_.seek(end_);
        return;
    }
    catch (const Exceptions::InvalidFormat& e)
    {
        // The key and the first length byte are consumed; the search goes on after them.
        const UInt64 keyAt = source_.position() - KLV::Key::SIZE - 1;
        badLength(searchStart, keyAt);
        damage_.note("key at " + std::to_string(keyAt) + ": " + e.what());
        return;
    }
    const UInt64 valueStart = found->value.position();
    const bool isCutShort = found->length > end_ - valueStart;
    const UInt64 keyPosition = found->keyPosition;
    const UInt64 length = found->length;
    item(*found, searchStart, skipped);
    if (isCutShort)
    {
        damage_.note("item at " + std::to_string(keyPosition) + " declares " +
                     std::to_string(length) + " bytes of value, the file has " +
                     std::to_string(end_ - valueStart) + " left");
        // Whatever the length says, the value's bytes may still hold the next keys.
        found.reset();
        source_.seek(valueStart);
        cutShort(valueStart);
    }
}

} // namespace Halvorn::Inspect
