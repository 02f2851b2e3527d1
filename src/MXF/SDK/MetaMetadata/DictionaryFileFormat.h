#pragma once

#include "MXF/SDK/KLV/Value.h"
#include "MXF/SDK/MetaMetadata/PropertyMap.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/UID.h"

#include <optional>
#include <string>

namespace MXF::SDK::DataIO
{
class DataSource;
}

// The pieces of the dictionary file that the loader and its factory share. Every fixed-size read
// that the file cannot satisfy throws NotEnoughData "Not enough data".
namespace MXF::SDK::MetaMetadata::DictionaryFileFormat
{

using Platform::Byte;
using Platform::UInt16;
using Platform::UInt32;
using Platform::UInt64;

// The last byte of the private keys 06 0E 2B 34 00 .. 00 NN.
enum ItemKind : Byte
{
    NOT_AN_ITEM = 0,
    META_COLLECTION = 0x01,
    META_REFERENCE_COLLECTION = 0x02,
    META_REFERENCE_ELEMENT = 0x03,
    META_SIMPLE_ELEMENT = 0x04,
    META_METADATA_SET = 0x05,
    META_ATTRIBUTE = 0x06,
    TAG_TABLE = 0x07
};

// The local tags of the fields inside items.
enum FieldTag : UInt16
{
    PROPERTY_NAME = 0x0001,
    PROPERTY_VALUE = 0x0002,
    LABEL = 0x0003,
    DATA_TYPE = 0x0004,
    DATA_SUB_TYPE = 0x0005,
    MINIMUM = 0x0006,
    MAXIMUM = 0x0007,
    ALLOWED_REFERENCES = 0x0008,
    ENUMERATION = 0x0009,
    ATTRIBUTES = 0x000A,
    ATTRIBUTE_LABEL = 0x000B,
    REQUIRED_STATUS = 0x000C,
    ATTRIBUTE_ELEMENT = 0x000D,
    ATTRIBUTE_LOCAL_TAG = 0x000E
};

// The kind of a 16-byte key; NOT_AN_ITEM for a key outside the private group.
ItemKind itemKind(const Byte* key);

void readBytes(DataIO::DataSource& source, void* buffer, UInt64 size);
UInt16 readUInt16(DataIO::DataSource& source);
UInt32 readUInt32(DataIO::DataSource& source);

struct BERLength
{
    UInt64 length;
    // Bytes of the length itself, the first included: 1 to 9.
    Byte size;
};
// Throws NotEnoughData "BER lenght is more than allowed" for a length of more than 9 bytes.
BERLength readBER(DataIO::DataSource& source);

// The content of a field with a 2-byte length, as a window that skips the rest of the field when
// it is dropped.
KLV::Value shortField(DataIO::DataSource& source);
// A field of a 32-bit number.
UInt32 readNumberField(DataIO::DataSource& source);
// A field of a label, or of nothing when its length is 0, which leaves `label` as it was.
void readLabelField(DataIO::DataSource& source, std::optional<Types::UniversalLabel>& label);

// Collects the name and value pairs (0001, 0002) of one body.
class PropertyPairs
{
public:
    // Reads the field of `tag` when it is a name or a value, and then returns true. Throws
    // InvalidStructure "Found another Property Name without Property Value" for a name after a
    // name, and "Found a Property Value without Property Name" for a value after no name or any
    // other tag after a name.
    bool read(UInt16 tag, DataIO::DataSource& body);
    // The pairs read, name to value; the later value of a name wins.
    PropertyMap take() { return std::move(properties_); }

private:
    std::optional<std::wstring> pendingName_;
    PropertyMap properties_;
};

} // namespace MXF::SDK::MetaMetadata::DictionaryFileFormat
