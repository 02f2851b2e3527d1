#include "DictionaryFileFormat.h"

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/Strings.h"

#include <algorithm>
#include <vector>

namespace MXF::SDK::MetaMetadata::DictionaryFileFormat
{

ItemKind itemKind(const Byte* key)
{
    static constexpr Byte PREFIX[15] = {0x06, 0x0E, 0x2B, 0x34};
    if (!std::equal(PREFIX, PREFIX + 15, key) || key[15] < META_COLLECTION || key[15] > TAG_TABLE)
        return NOT_AN_ITEM;
    return static_cast<ItemKind>(key[15]);
}

void readBytes(DataIO::DataSource& source, void* buffer, UInt64 size)
{
    auto* const bytes = static_cast<Byte*>(buffer);
    for (UInt64 done = 0; done < size;)
    {
        const UInt64 got = source.read(bytes + done, size - done);
        if (got == 0)
            MXF_SDK_THROW(Exceptions::NotEnoughData, "Not enough data");
        done += got;
    }
}

UInt16 readUInt16(DataIO::DataSource& source)
{
    Byte bytes[2];
    readBytes(source, bytes, sizeof bytes);
    return static_cast<UInt16>(bytes[0] << 8 | bytes[1]);
}

UInt32 readUInt32(DataIO::DataSource& source)
{
    Byte bytes[4];
    readBytes(source, bytes, sizeof bytes);
    return UInt32(bytes[0]) << 24 | UInt32(bytes[1]) << 16 | UInt32(bytes[2]) << 8 | bytes[3];
}

BERLength readBER(DataIO::DataSource& source)
{
    Byte first = 0;
    readBytes(source, &first, 1);
    if (first < 0x80)
        return {first, 1};
    const unsigned size = 1 + (first & 0x7Fu);
    if (size > 9)
        MXF_SDK_THROW(Exceptions::NotEnoughData, "BER lenght is more than allowed");
    Byte bytes[8];
    readBytes(source, bytes, size - 1);
    UInt64 length = 0;
    for (unsigned i = 0; i + 1 < size; ++i)
        length = length << 8 | bytes[i];
    return {length, static_cast<Byte>(size)};
}

KLV::Value shortField(DataIO::DataSource& source)
{
    const UInt16 length = readUInt16(source);
    return KLV::Value(source, length);
}

UInt32 readNumberField(DataIO::DataSource& source)
{
    KLV::Value field = shortField(source);
    return readUInt32(field);
}

void readLabelField(DataIO::DataSource& source, std::optional<Types::UniversalLabel>& label)
{
    KLV::Value field = shortField(source);
    if (field.size() == 0)
        return;
    Byte bytes[Types::UniversalLabel::SIZE];
    readBytes(field, bytes, sizeof bytes);
    label.emplace(bytes);
}

namespace
{

// UTF-16BE of at most 65535 bytes, decoded as the type system decodes UTF16CharString.
std::wstring readTextField(DataIO::DataSource& source)
{
    const UInt16 length = readUInt16(source);
    if (length == 0)
        return {};
    std::vector<Byte> bytes(length);
    readBytes(source, bytes.data(), length);
    DataIO::Memory::MemoryDataSource text(bytes.data(), bytes.size());
    return Types::UTF16String(text).value();
}

} // namespace

bool PropertyPairs::read(UInt16 tag, DataIO::DataSource& body)
{
    if (tag == PROPERTY_NAME)
    {
        if (pendingName_)
            MXF_SDK_THROW(Exceptions::InvalidStructure,
                          "Found another Property Name without Property Value");
        pendingName_ = readTextField(body);
        return true;
    }
    // The file's own text, also for a tag other than a value that follows a name.
    if (tag == PROPERTY_VALUE ? !pendingName_ : pendingName_.has_value())
        MXF_SDK_THROW(Exceptions::InvalidStructure, "Found a Property Value without Property Name");
    if (tag != PROPERTY_VALUE)
        return false;
    properties_.setProperty(*pendingName_, readTextField(body));
    pendingName_.reset();
    return true;
}

} // namespace MXF::SDK::MetaMetadata::DictionaryFileFormat
