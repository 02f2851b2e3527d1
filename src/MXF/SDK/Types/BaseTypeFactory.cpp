#include "MXF/SDK/Types/Factories/BaseTypeFactory.h"

#include "AllTypes.h"
#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Templates/Singleton.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"

#include <map>

namespace MXF::SDK::Types::Factories
{

using namespace TypeIdentifiers;

namespace
{

template <typename T>
std::unique_ptr<BaseType> make(DataIO::BoundedDataSource& source)
{
    return std::make_unique<T>(source);
}

template <typename T>
std::unique_ptr<BaseType> makeCollection(DataIO::BoundedDataSource& source,
                                         Platform::UInt32 elementType)
{
    return std::make_unique<T>(source, elementType);
}

[[noreturn]] void noFactory()
{
    MXF_SDK_THROW(Exceptions::NoFactory, "No Factory for type");
}

} // namespace

struct BaseTypeFactory::Impl
{
    std::map<Platform::UInt32, Creator> creators{
        {TYPE_BOOLEAN, make<Boolean>},
        {TYPE_DATA_STREAM, make<DataStream>},
        {TYPE_INT16, make<Int16>},
        {TYPE_INT32, make<Int32>},
        {TYPE_INT64, make<Int64>},
        {TYPE_INT8, make<Int8>},
        {TYPE_ISO7_STRING, make<ISO7String>},
        {TYPE_LENGTH, make<Length>},
        {TYPE_LOCAL_TAG, make<LocalTag>},
        {TYPE_POSITION, make<Position>},
        {TYPE_PRODUCT_VERSION, make<ProductVersion>},
        {TYPE_RATIONAL, make<Rational>},
        {TYPE_TIMESTAMP, make<Timestamp>},
        {TYPE_UINT16, make<UInt16>},
        {TYPE_UINT32, make<UInt32>},
        {TYPE_UINT64, make<UInt64>},
        {TYPE_UINT8, make<UInt8>},
        {TYPE_UMID32, make<UMID32>},
        {TYPE_UMID64, make<UMID64>},
        {TYPE_UL, make<UniversalLabel>},
        {TYPE_UNKNOWN, make<Unknown>},
        {TYPE_UTF16, make<UTF16>},
        {TYPE_UTF16_STRING, make<UTF16String>},
        {TYPE_UUID, make<UUID>},
        {TYPE_VERSION_TYPE, make<VersionType>},
        {TYPE_STRONG_REFERENCE, make<StrongReference>},
        {TYPE_WEAK_REFERENCE, make<WeakReference>},
        // The index table layer, above this one, replaces these two with its own entries.
        {TYPE_DELTA_ENTRY, make<Unknown>},
        {TYPE_INDEX_ENTRY, make<Unknown>},
        {TYPE_ORIENTATION, make<Orientation>},
        {TYPE_RGBA_LAYOUT, make<RGBALayout>},
        {TYPE_SIGNAL_STANDARD, make<SignalStandard>},
        {TYPE_DATA_VALUE, make<DataValue>},
        {TYPE_J2K_PICTURE_COMPONENT, make<J2KPictureComponent>},
        {TYPE_J2K_CODING_STYLE_DEFAULT, make<J2KCodingStyleDefault>},
        {TYPE_J2K_QUANTISATION_DEFAULT, make<J2KQuantisationDefault>},
    };
    std::map<Platform::UInt32, CollectionCreator> collectionCreators{
        {TYPE_ARRAY, makeCollection<Array>},
        {TYPE_BATCH, makeCollection<Batch>},
    };
};

BaseTypeFactory& BaseTypeFactory::instance()
{
    return Templates::Singleton<BaseTypeFactory>::instance();
}

BaseTypeFactory::BaseTypeFactory() : impl_(std::make_unique<Impl>()) {}

BaseTypeFactory::~BaseTypeFactory() = default;

std::unique_ptr<BaseType> BaseTypeFactory::create(Platform::UInt32 type,
                                                  DataIO::BoundedDataSource& source) const
{
    const auto found = impl_->creators.find(type);
    if (found == impl_->creators.end())
        noFactory();
    return found->second(source);
}

std::unique_ptr<BaseType> BaseTypeFactory::createCollection(Platform::UInt32 type,
                                                            DataIO::BoundedDataSource& source,
                                                            Platform::UInt32 elementType) const
{
    const auto found = impl_->collectionCreators.find(type);
    if (found == impl_->collectionCreators.end())
        noFactory();
    return found->second(source, elementType);
}

void BaseTypeFactory::registerType(Platform::UInt32 type, Creator creator)
{
    impl_->creators[type] = creator;
}

void BaseTypeFactory::registerCollectionType(Platform::UInt32 type, CollectionCreator creator)
{
    impl_->collectionCreators[type] = creator;
}

} // namespace MXF::SDK::Types::Factories
