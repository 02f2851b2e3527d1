// Any bytes through the KLV walk of mxf-inspect, then through KLVReader directly with the
// look-ahead, limited searches and value reads, checking what must hold for every input.
#include "FuzzSupport.h"
#include "KlvWalk.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/KeyPredicates.h"

#include <cstdint>
#include <cstdlib>
#include <ostream>

using namespace MXF::SDK;
using Platform::UInt64;

using Halvorn::Fuzz::require;

namespace
{

// The first input byte picks how far searches may go: without limit, or a few bytes.
void readDirectly(const std::uint8_t* data, std::size_t size)
{
    const UInt64 maxSkip = size == 0 ? 0 : data[0] & 0x80 ? UINT64_MAX : UInt64(data[0]) * 8;
    DataIO::Memory::MemoryDataSource source(data, size);
    KLV::KLVReader reader(source);
    for (int turn = 0; !source.eof(); ++turn)
    {
        const UInt64 start = source.position();
        UInt64 skipped = 0;
        try
        {
            if (turn % 3 == 1)
            {
                const KLV::Key key = reader.readKey(skipped, maxSkip);
                require(source.position() == start + skipped + 16);
                (void)KLV::isEssenceKey(key);
            }
            auto item = reader.readKLV(skipped, maxSkip);
            require(item->value.position() == item->keyPosition + 16 + item->lengthSize);
            require(item->keyPosition >= start && item->value.position() <= size);
            // The OID text keeps every byte of a key whose byte 4 is 02, the head's last number.
            if (item->key[4] == 0x02)
                require(KLV::Key(item->key.toString(), KLV::REPRESENTATION_OID) == item->key);
            std::uint8_t head[32];
            const UInt64 want = item->length < sizeof head ? item->length : sizeof head;
            const UInt64 got = item->value.read(head, want);
            require(got <= want);
            const UInt64 valueStart = item->keyPosition + 16 + item->lengthSize;
            const UInt64 expectedEnd =
                item->length > size - valueStart ? size : valueStart + item->length;
            item.reset();
            require(source.position() == expectedEnd);
        }
        catch (const Exceptions::KeyNotFound&)
        {
            require(skipped == maxSkip + 1);
        }
        catch (const Exceptions::NotEnoughData&)
        {
            require(source.eof());
        }
        catch (const Exceptions::InvalidFormat&)
        {
        }
        require(source.position() > start);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DataIO::Memory::MemoryDataSource source(data, size);
    std::ostream discard(nullptr);
    const Halvorn::Inspect::KlvWalkResult result = Halvorn::Inspect::walkKlv(source, discard);
    require(!result.failed);
    require(result.items == 0 || size >= 17);
    readDirectly(data, size);
    return 0;
}
