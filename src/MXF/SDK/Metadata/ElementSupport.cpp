#include "ElementSupport.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/Collection.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

namespace MXF::SDK::Metadata::Support
{

namespace TI = Types::TypeIdentifiers;

namespace
{

class TypeNumberVisitor final : public Types::Visitors::Visitor
{
public:
    Platform::UInt32 result = TI::TYPE_UNKNOWN;

#define MXF_SDK_TYPE_NUMBER(Class, Number)                                                         \
    void visit(const Types::Class&) override                                                       \
    {                                                                                              \
        result = TI::Number;                                                                       \
    }
    MXF_SDK_TYPE_NUMBER(J2KQuantisationDefault, TYPE_J2K_QUANTISATION_DEFAULT)
    MXF_SDK_TYPE_NUMBER(J2KCodingStyleDefault, TYPE_J2K_CODING_STYLE_DEFAULT)
    MXF_SDK_TYPE_NUMBER(J2KPictureComponent, TYPE_J2K_PICTURE_COMPONENT)
    MXF_SDK_TYPE_NUMBER(DataValue, TYPE_DATA_VALUE)
    MXF_SDK_TYPE_NUMBER(SignalStandard, TYPE_SIGNAL_STANDARD)
    MXF_SDK_TYPE_NUMBER(Orientation, TYPE_ORIENTATION)
    MXF_SDK_TYPE_NUMBER(RGBALayout, TYPE_RGBA_LAYOUT)
    MXF_SDK_TYPE_NUMBER(StrongReference, TYPE_STRONG_REFERENCE)
    MXF_SDK_TYPE_NUMBER(WeakReference, TYPE_WEAK_REFERENCE)
    MXF_SDK_TYPE_NUMBER(Unknown, TYPE_UNKNOWN)
    MXF_SDK_TYPE_NUMBER(VersionType, TYPE_VERSION_TYPE)
    MXF_SDK_TYPE_NUMBER(UUID, TYPE_UUID)
    MXF_SDK_TYPE_NUMBER(UTF16String, TYPE_UTF16_STRING)
    MXF_SDK_TYPE_NUMBER(UTF16, TYPE_UTF16)
    MXF_SDK_TYPE_NUMBER(UniversalLabel, TYPE_UL)
    MXF_SDK_TYPE_NUMBER(UMID64, TYPE_UMID64)
    MXF_SDK_TYPE_NUMBER(UMID32, TYPE_UMID32)
    MXF_SDK_TYPE_NUMBER(UInt8, TYPE_UINT8)
    MXF_SDK_TYPE_NUMBER(UInt64, TYPE_UINT64)
    MXF_SDK_TYPE_NUMBER(UInt32, TYPE_UINT32)
    MXF_SDK_TYPE_NUMBER(UInt16, TYPE_UINT16)
    MXF_SDK_TYPE_NUMBER(Timestamp, TYPE_TIMESTAMP)
    MXF_SDK_TYPE_NUMBER(Rational, TYPE_RATIONAL)
    MXF_SDK_TYPE_NUMBER(ProductVersion, TYPE_PRODUCT_VERSION)
    MXF_SDK_TYPE_NUMBER(Position, TYPE_POSITION)
    MXF_SDK_TYPE_NUMBER(LocalTag, TYPE_LOCAL_TAG)
    MXF_SDK_TYPE_NUMBER(Length, TYPE_LENGTH)
    MXF_SDK_TYPE_NUMBER(ISO7String, TYPE_ISO7_STRING)
    MXF_SDK_TYPE_NUMBER(Int8, TYPE_INT8)
    MXF_SDK_TYPE_NUMBER(Int64, TYPE_INT64)
    MXF_SDK_TYPE_NUMBER(Int32, TYPE_INT32)
    MXF_SDK_TYPE_NUMBER(Int16, TYPE_INT16)
    MXF_SDK_TYPE_NUMBER(DataStream, TYPE_DATA_STREAM)
    MXF_SDK_TYPE_NUMBER(Boolean, TYPE_BOOLEAN)
    MXF_SDK_TYPE_NUMBER(Batch, TYPE_BATCH)
    MXF_SDK_TYPE_NUMBER(Array, TYPE_ARRAY)
#undef MXF_SDK_TYPE_NUMBER
};

} // namespace

Platform::UInt32 typeNumber(const Types::BaseType& value)
{
    TypeNumberVisitor visitor;
    value.accept(visitor);
    return visitor.result;
}

std::wstring typeName(Platform::UInt32 type)
{
    return std::wstring(TI::name(type));
}

std::unique_ptr<Types::BaseType> cloneValue(const Types::BaseType& value)
{
    if (const Types::SimpleDataType* simple = Types::Visitors::asSimpleDataType(value))
        return simple->clone();
    if (const Types::Collection* collection = Types::Visitors::asCollection(value))
        return collection->clone();
    return nullptr;
}

void checkConsumed(const DataIO::BoundedDataSource& source)
{
    if (source.remaining() != 0)
        MXF_SDK_THROW(Exceptions::InvalidLength,
                      "Invalid data size in Value to create an element in the metadataSet.");
}

const Types::UniversalLabel& instanceUIDLabel()
{
    static const Platform::Byte bytes[16] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
                                             0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00};
    static const Types::UniversalLabel label(bytes);
    return label;
}

} // namespace MXF::SDK::Metadata::Support
