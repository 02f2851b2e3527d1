#pragma once

#include "MXF/SDK/MetaMetadata/MetaElements.h"

#include <memory>
#include <string>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::KLV
{
struct KLVItem;
}

namespace MXF::SDK::MetaMetadata
{

class Dictionary;

// Reads a binary dictionary file: a big-endian major version, which must be 2, a minor version,
// and then KLV items of the keys 06 0E 2B 34 00 .. 00 NN: elements (NN 01 to 04), sets (05) with
// their attributes (06), and the table of static local tags (07).
class BinaryLoader
{
public:
    // Reads to the end of `source`, adding to `dictionary`. There is no recovery: the first fault
    // throws, and what was added before it stays. Faults of the format throw InvalidFormat
    // "Invalid dictionary version number", InvalidULDesignator "UnKnown Set" or "Invalid
    // MetaAttribute Key", NotEnoughData "Not enough data" or "BER lenght is more than allowed",
    // and InvalidStructure with a text that names the fault; faults of the content throw as the
    // meta classes do, as BaseTypeFactory does for an enumeration value, and NotFound
    // "StatusNotFound: N" for an unknown required status.
    static void load(DataIO::DataSource& source, Dictionary& dictionary);
    // The file at `path`, opened as a FileDataSource; IOError when it can't be opened.
    static void load(const std::wstring& path, Dictionary& dictionary);
};

// Builds the meta element of one element item (NN 01 to 04) from its value, which it reads to the
// end. Null for any other key, with the value left unread.
class BinaryLoaderFactory
{
public:
    static std::unique_ptr<MetaElement> create(KLV::KLVItem& item);
};

} // namespace MXF::SDK::MetaMetadata
