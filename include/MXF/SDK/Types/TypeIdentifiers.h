#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <string_view>

// The numbers of the value types. A type's number is its index in the table; the table's text is
// the name the dictionary file uses for the type.
namespace MXF::SDK::Types::TypeIdentifiers
{

enum Type : Platform::UInt32
{
    TYPE_ARRAY = 0,
    TYPE_BATCH = 1,
    TYPE_BOOLEAN = 2,
    TYPE_DATA_STREAM = 3,
    TYPE_DUMMY_TO_REPLACE_EDIT_RATE = 4, // no class
    TYPE_INT16 = 5,
    TYPE_INT32 = 6,
    TYPE_INT64 = 7,
    TYPE_INT8 = 8,
    TYPE_ISO7_STRING = 9,
    TYPE_KEY = 10, // no class: keys are not element values
    TYPE_LENGTH = 11,
    TYPE_LOCAL_TAG = 12,
    TYPE_POSITION = 13,
    TYPE_PRODUCT_VERSION = 14,
    TYPE_RATIONAL = 15,
    TYPE_TIMESTAMP = 16,
    TYPE_UINT16 = 17,
    TYPE_UINT32 = 18,
    TYPE_UINT64 = 19,
    TYPE_UINT8 = 20,
    TYPE_UMID32 = 21,
    TYPE_UMID64 = 22,
    TYPE_UL = 23,
    TYPE_UNKNOWN = 24,
    TYPE_UTF16 = 25,
    TYPE_UTF16_STRING = 26,
    TYPE_UUID = 27,
    TYPE_VERSION_TYPE = 28,
    TYPE_STRONG_REFERENCE = 29,
    TYPE_WEAK_REFERENCE = 30,
    TYPE_DELTA_ENTRY = 31, // the delta entry of index table segments
    TYPE_INDEX_ENTRY = 32, // the index entry of index table segments
    TYPE_ORIENTATION = 33,
    TYPE_RGBA_LAYOUT = 34,
    TYPE_SIGNAL_STANDARD = 35,
    TYPE_DATA_VALUE = 36,
    TYPE_J2K_PICTURE_COMPONENT = 37,
    TYPE_J2K_CODING_STYLE_DEFAULT = 38,
    TYPE_J2K_QUANTISATION_DEFAULT = 39,
    TYPE_COUNT = 40
};

// The table's name of a type: "Array", "Batch", ... "J2KQuantisationDefault"; empty for a number
// outside the table.
std::wstring_view name(Platform::UInt32 type);

// The fixed size of a type in bytes. A type of variable size throws InvalidType "Type has a
// variable size."; a number outside the table throws InvalidType "Unknown type number: N".
// Orientation answers 4, although its value is one byte.
Platform::UInt32 sizeOfType(Platform::UInt32 type);

// The number of the type of this name. An empty name is "Unknown"; "J2KPictureComponent" is
// accepted for "J2KPictureComponentType". A name not in the table throws NotFound "Unknown type
// name: " and the name.
Platform::UInt32 typeFromName(std::wstring_view name);

} // namespace MXF::SDK::Types::TypeIdentifiers
