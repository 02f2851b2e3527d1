#include "DictionaryFileFormat.h"

#include "MXF/SDK/ByteCoders/BERCoder.h"
#include "MXF/SDK/ByteCoders/BigEndian.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/ReadExact.h"
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
    if (KLV::readUpTo(source, buffer, size) != size)
        MXF_SDK_THROW(Exceptions::NotEnoughData, "Not enough data");
}

UInt16 readUInt16(DataIO::DataSource& source)
{
    Byte bytes[2];
    readBytes(source, bytes, sizeof bytes);
    return ByteCoders::readBigEndian<UInt16>(bytes);
}

UInt32 readUInt32(DataIO::DataSource& source)
{
    Byte bytes[4];
    readBytes(source, bytes, sizeof bytes);
    return ByteCoders::readBigEndian<UInt32>(bytes);
}

BERLength readBER(DataIO::DataSource& source)
{
    Byte bytes[9];
    readBytes(source, bytes, 1);
    // The indefinite form 0x80 stands for a length of 0 here, as the coder does not allow.
    const unsigned size = bytes[0] < 0x80 ? 1 : 1 + (bytes[0] & 0x7Fu);
    if (size > 9)
        MXF_SDK_THROW(Exceptions::NotEnoughData, "BER lenght is more than allowed");
    readBytes(source, bytes + 1, size - 1);
    return {ByteCoders::BERCoder::decode(bytes, size), static_cast<Byte>(size)};
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
