#include "ObjectDirectory.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/UID.h"

#include <array>
#include <cstdint>
#include <map>
#include <vector>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using Platform::Byte;
using Platform::UInt64;

namespace
{

using Uid = std::array<Byte, 16>;

struct Entry
{
    Uid uid;
    UInt64 offset;
};

constexpr std::size_t ENTRY_MINIMUM = 16 + 8;
constexpr std::size_t TOO_MANY_SHOWN = 3;

UInt64 bigEndian(const Byte* bytes, std::size_t size)
{
    UInt64 value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = (value << 8) | bytes[i];
    return value;
}

std::string uidText(const Uid& uid)
{
    std::string text(1, '{');
    text += Platform::toUtf8(Types::UUID(uid.data()).toString());
    text += '}';
    return text;
}

std::vector<Byte> valueOf(KLV::KLVItem& item, UInt64 limit)
{
    if (item.length > limit)
        return {};
    std::vector<Byte> bytes(static_cast<std::size_t>(item.length));
    item.value.readExact(bytes.data(), bytes.size());
    return bytes;
}

// The InstanceUID (tag 3c0a) of a local set with 2-byte tags and lengths.
std::optional<Uid> instanceUID(const std::vector<Byte>& value)
{
    for (std::size_t at = 0; at + 4 <= value.size();)
    {
        const UInt64 tag = bigEndian(&value[at], 2);
        const std::size_t length = static_cast<std::size_t>(bigEndian(&value[at + 2], 2));
        at += 4;
        if (length > value.size() - at)
            break;
        if (tag == 0x3c0a && length == 16)
        {
            Uid uid;
            std::copy_n(&value[at], 16, uid.begin());
            return uid;
        }
        at += length;
    }
    return std::nullopt;
}

struct Found
{
    std::optional<UInt64> directoryAt;
    std::string directoryFault;
    std::vector<Entry> entries;
    std::map<Uid, UInt64> sets;
};

void readDirectory(const std::vector<Byte>& value, Found& found)
{
    if (value.size() < 9)
    {
        found.directoryFault = "too short for its header";
        return;
    }
    const UInt64 count = bigEndian(value.data(), 8);
    const std::size_t size = value[8];
    if (size < ENTRY_MINIMUM || count > (value.size() - 9) / size)
    {
        found.directoryFault = std::to_string(count) + " entries of " + std::to_string(size) +
                               " bytes do not fit its " + std::to_string(value.size()) + " bytes";
        return;
    }
    for (UInt64 i = 0; i < count; ++i)
    {
        const Byte* entry = value.data() + 9 + i * size;
        Entry made;
        std::copy_n(entry, 16, made.uid.begin());
        made.offset = bigEndian(entry + 16, 8);
        found.entries.push_back(made);
    }
}

Found walk(DataIO::RandomAccessDataSource& source, UInt64 end)
{
    // Header metadata is small; a value beyond this is damage, not a set to read.
    constexpr UInt64 LIMIT = 64u << 20;
    Found found;
    KLV::KLVReader reader(source);
    try
    {
        while (source.position() < end)
        {
            UInt64 skipped = 0;
            auto item = reader.readKLV(skipped, 0);
            const UInt64 at = item->keyPosition;
            if (KLV::isAvidObjectDirectory(item->key))
            {
                found.directoryAt = at;
                readDirectory(valueOf(*item, LIMIT), found);
            }
            else if (KLV::localTagSize(item->key) == 2 && KLV::localLengthSize(item->key) == 2)
            {
                if (const auto uid = instanceUID(valueOf(*item, LIMIT)))
                    found.sets.emplace(*uid, at);
            }
        }
    }
    catch (const Exceptions::BaseException&)
    {
        // What could be read is what there is to check.
    }
    return found;
}

} // namespace

std::optional<ObjectDirectoryCheck> checkObjectDirectory(DataIO::RandomAccessDataSource& source,
                                                         UInt64 partitionStart, UInt64 end)
{
    const Found found = walk(source, end);
    if (!found.directoryAt)
        return std::nullopt;
    const std::string where = " at " + std::to_string(*found.directoryAt);
    if (!found.directoryFault.empty())
    {
        const std::string text = "object directory" + where + ": " + found.directoryFault;
        return ObjectDirectoryCheck{text, text};
    }
    std::vector<std::string> disagree;
    for (const Entry& entry : found.entries)
    {
        const auto set = found.sets.find(entry.uid);
        const UInt64 offset = entry.offset;
        const bool inRange = offset <= UINT64_MAX - partitionStart;
        if (set == found.sets.end())
            disagree.push_back(uidText(entry.uid) + " at " + std::to_string(offset) +
                               ": no set has it");
        else if (!inRange || set->second != partitionStart + offset)
            disagree.push_back(uidText(entry.uid) + " at " + std::to_string(offset) +
                               ": the set is at " + std::to_string(set->second - partitionStart));
    }
    std::string text = std::to_string(found.entries.size()) + " entries" + where;
    if (disagree.empty())
        return ObjectDirectoryCheck{text + ", each at the set it names", ""};
    text += ", " + std::to_string(disagree.size()) + " disagree with the sets found: ";
    for (std::size_t i = 0; i < disagree.size() && i < TOO_MANY_SHOWN; ++i)
    {
        if (i > 0)
            text += "; ";
        text += disagree[i];
    }
    if (disagree.size() > TOO_MANY_SHOWN)
        text += "; ...";
    return ObjectDirectoryCheck{text, "object directory" + where + ": " +
                                          std::to_string(disagree.size()) +
                                          " entries disagree with the sets found"};
}

} // namespace Halvorn::Inspect
