#include "MXF/SDK/Types/TypeIdentifiers.h"

#include "MXF/SDK/Exceptions/Exceptions.h"

#include <string>

namespace MXF::SDK::Types::TypeIdentifiers
{

namespace
{

constexpr Platform::UInt32 VARIABLE = 0;

struct Entry
{
    std::wstring_view name;
    Platform::UInt32 size;
};

// Indexed by type number. The names are those of the dictionary file.
constexpr Entry TABLE[TYPE_COUNT] = {
    {L"Array", VARIABLE},
    {L"Batch", VARIABLE},
    {L"Boolean", 1},
    {L"DataStream", VARIABLE},
    {L"DUMMY_TO_REPLACE_EDIT_RATE", VARIABLE},
    {L"Int16", 2},
    {L"Int32", 4},
    {L"Int64", 8},
    {L"Int8", 1},
    {L"ISO7bitCharString", VARIABLE},
    {L"Key", 16},
    {L"Length", 8},
    {L"LocalTag", 2},
    {L"Position", 8},
    {L"ProductVersionType", 10},
    {L"Rational", 8},
    {L"TimestampType", 8},
    {L"UInt16", 2},
    {L"UInt32", 4},
    {L"UInt64", 8},
    {L"UInt8", 1},
    {L"UMID32", 32},
    {L"UMID64", 64},
    {L"UL", 16},
    {L"Unknown", VARIABLE},
    {L"UTF16", 2},
    {L"UTF16CharString", VARIABLE},
    {L"UUID", 16},
    {L"VersionType", 2},
    {L"StrongReference", 16},
    {L"WeakReference", 16},
    {L"DeltaEntryType", VARIABLE},
    {L"IndexEntryType", VARIABLE},
    // The table has always said 4 here, though the value is one byte; only this query sees it.
    {L"Orientation", 4},
    {L"RGBALayout", 16},
    {L"SignalStandard", 1},
    {L"DataValue", VARIABLE},
    {L"J2KPictureComponentType", 3},
    {L"J2KCodingStyleDefault", VARIABLE},
    {L"J2KQuantisationDefault", VARIABLE},
};

} // namespace

std::wstring_view name(Platform::UInt32 type)
{
    return type < TYPE_COUNT ? TABLE[type].name : std::wstring_view();
}

Platform::UInt32 sizeOfType(Platform::UInt32 type)
{
    if (type >= TYPE_COUNT)
        MXF_SDK_THROW(Exceptions::InvalidType, "Unknown type number: " + std::to_string(type));
    if (TABLE[type].size == VARIABLE)
        MXF_SDK_THROW(Exceptions::InvalidType, "Type has a variable size.");
    return TABLE[type].size;
}

Platform::UInt32 typeFromName(std::wstring_view name)
{
    if (name.empty())
        return TYPE_UNKNOWN;
    if (name == L"J2KPictureComponent")
        return TYPE_J2K_PICTURE_COMPONENT;
    for (Platform::UInt32 type = 0; type < TYPE_COUNT; ++type)
    {
        if (TABLE[type].name == name)
            return type;
    }
    MXF_SDK_THROW(Exceptions::NotFound, L"Unknown type name: " + std::wstring(name));
}

} // namespace MXF::SDK::Types::TypeIdentifiers
