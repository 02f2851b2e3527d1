// Any bytes through the dictionary loader. A fault must come out as one of the toolkit's
// exceptions; whatever was loaded before it must stay whole and readable.
#include "FuzzSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Types/LocalTag.h"

#include <cstdint>
#include <cstdlib>

using namespace MXF::SDK;
using MetaMetadata::Dictionary;

using Halvorn::Fuzz::require;

namespace
{

// The Preface and a few tags of the seeds, read through the pointers that the dictionary holds.
void readBack(const Dictionary& dictionary)
{
    static const Platform::Byte PREFACE[16] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
                                               0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, 0x2F, 0x00};
    static const Types::UniversalLabel preface(PREFACE);
    if (const MetaMetadata::MetaMetadataSet* set = dictionary.metaMetadataSet(preface))
    {
        for (const auto& attribute : set->metaAttributes())
        {
            require(set->metaAttribute(attribute->universalLabel()) == attribute);
            (void)attribute->metaElement().dataType();
            (void)attribute->property(L"MetadataElementRequiredStatus");
        }
    }
    for (const std::uint16_t tag : {0x3c0a, 0x3b02, 0x0001, 0x8000})
    {
        if (const Types::UniversalLabel* tagged = dictionary.universalLabel(Types::LocalTag(tag)))
        {
            const Types::LocalTag* back = dictionary.localTag(*tagged);
            require(back != nullptr && back->value() == tag);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    DataIO::Memory::MemoryDataSource source(data, size);
    Dictionary dictionary;
    try
    {
        MetaMetadata::BinaryLoader::load(source, dictionary);
    }
    catch (const Exceptions::BaseException&)
    {
    }
    readBack(dictionary);
    return 0;
}
