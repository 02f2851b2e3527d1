#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/Boolean.h"
#include "MXF/SDK/Types/Collection.h"
#include "MXF/SDK/Types/Factories/BaseTypeFactory.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/J2KTypes.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/OpaqueTypes.h"
#include "MXF/SDK/Types/RGBALayout.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/Reference.h"
#include "MXF/SDK/Types/Strings.h"
#include "MXF/SDK/Types/Timestamp.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"
#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/VersionTypes.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "TypesTestSupport.h"

#include <functional>
#include <gtest/gtest.h>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace MXF::SDK::Types::TypeIdentifiers;
using Factories::BaseTypeFactory;
using namespace Halvorn::Test;

namespace
{

Bytes counting(std::size_t size)
{
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(i + 1);
    return bytes;
}

struct Row
{
    Platform::UInt32 type;
    Bytes wire;
    std::function<bool(const BaseType&)> isExpectedClass;
};

template <typename T>
std::function<bool(const BaseType&)> is()
{
    return [](const BaseType& value) { return Visitors::getAs<T>(value) != nullptr; };
}

// Every number of the simple map, with a wire form of the type's size.
std::vector<Row> simpleRows()
{
    return {
        {TYPE_BOOLEAN, {1}, is<Boolean>()},
        {TYPE_DATA_STREAM, counting(5), is<DataStream>()},
        {TYPE_INT16, counting(2), is<Int16>()},
        {TYPE_INT32, counting(4), is<Int32>()},
        {TYPE_INT64, counting(8), is<Int64>()},
        {TYPE_INT8, counting(1), is<Int8>()},
        {TYPE_ISO7_STRING, {'a', 'b'}, is<ISO7String>()},
        {TYPE_LENGTH, counting(8), is<Length>()},
        {TYPE_LOCAL_TAG, counting(2), is<LocalTag>()},
        {TYPE_POSITION, counting(8), is<Position>()},
        {TYPE_PRODUCT_VERSION, counting(10), is<ProductVersion>()},
        {TYPE_RATIONAL, counting(8), is<Rational>()},
        {TYPE_TIMESTAMP, counting(8), is<Timestamp>()},
        {TYPE_UINT16, counting(2), is<UInt16>()},
        {TYPE_UINT32, counting(4), is<UInt32>()},
        {TYPE_UINT64, counting(8), is<UInt64>()},
        {TYPE_UINT8, counting(1), is<UInt8>()},
        {TYPE_UMID32, counting(32), is<UMID32>()},
        {TYPE_UMID64, counting(64), is<UMID64>()},
        {TYPE_UL, counting(16), is<UniversalLabel>()},
        {TYPE_UNKNOWN, counting(3), is<Unknown>()},
        {TYPE_UTF16, counting(2), is<UTF16>()},
        {TYPE_UTF16_STRING, counting(6), is<UTF16String>()},
        {TYPE_UUID, counting(16), is<UUID>()},
        {TYPE_VERSION_TYPE, counting(2), is<VersionType>()},
        {TYPE_STRONG_REFERENCE, counting(16), is<StrongReference>()},
        {TYPE_WEAK_REFERENCE, counting(16), is<WeakReference>()},
        {TYPE_DELTA_ENTRY, counting(6), is<Unknown>()},
        {TYPE_INDEX_ENTRY, counting(11), is<Unknown>()},
        {TYPE_ORIENTATION, counting(1), is<Orientation>()},
        {TYPE_RGBA_LAYOUT, counting(16), is<RGBALayout>()},
        {TYPE_SIGNAL_STANDARD, counting(1), is<SignalStandard>()},
        {TYPE_DATA_VALUE, counting(7), is<DataValue>()},
        {TYPE_J2K_PICTURE_COMPONENT, counting(3), is<J2KPictureComponent>()},
        {TYPE_J2K_CODING_STYLE_DEFAULT, counting(12), is<J2KCodingStyleDefault>()},
        {TYPE_J2K_QUANTISATION_DEFAULT, counting(4), is<J2KQuantisationDefault>()},
    };
}

bool hasFixedSize(Platform::UInt32 type)
{
    try
    {
        sizeOfType(type);
        return true;
    }
    catch (const Exceptions::InvalidType&)
    {
        return false;
    }
}

std::unique_ptr<BaseType> makeStrange(DataIO::BoundedDataSource& source)
{
    return std::make_unique<UInt8>(static_cast<Platform::UInt8>(source.remaining()));
}

} // namespace

TEST(TypeIdentifiers, NamesAndSizesOfTheTable)
{
    EXPECT_EQ(name(TYPE_ARRAY), L"Array");
    EXPECT_EQ(name(TYPE_DUMMY_TO_REPLACE_EDIT_RATE), L"DUMMY_TO_REPLACE_EDIT_RATE");
    EXPECT_EQ(name(TYPE_ISO7_STRING), L"ISO7bitCharString");
    EXPECT_EQ(name(TYPE_PRODUCT_VERSION), L"ProductVersionType");
    EXPECT_EQ(name(TYPE_TIMESTAMP), L"TimestampType");
    EXPECT_EQ(name(TYPE_UL), L"UL");
    EXPECT_EQ(name(TYPE_UTF16_STRING), L"UTF16CharString");
    EXPECT_EQ(name(TYPE_DELTA_ENTRY), L"DeltaEntryType");
    EXPECT_EQ(name(TYPE_INDEX_ENTRY), L"IndexEntryType");
    EXPECT_EQ(name(TYPE_J2K_PICTURE_COMPONENT), L"J2KPictureComponentType");
    EXPECT_EQ(name(TYPE_J2K_QUANTISATION_DEFAULT), L"J2KQuantisationDefault");
    EXPECT_EQ(name(TYPE_COUNT), L"");

    EXPECT_EQ(sizeOfType(TYPE_ORIENTATION), 4u);
    EXPECT_EQ(sizeOfType(TYPE_KEY), 16u);
    EXPECT_EQ(sizeOfType(TYPE_PRODUCT_VERSION), 10u);
    EXPECT_EQ(sizeOfType(TYPE_J2K_PICTURE_COMPONENT), 3u);
    EXPECT_EQ(sizeOfType(TYPE_UMID64), 64u);
    for (const auto type :
         {TYPE_ARRAY, TYPE_BATCH, TYPE_DATA_STREAM, TYPE_DUMMY_TO_REPLACE_EDIT_RATE,
          TYPE_ISO7_STRING, TYPE_UNKNOWN, TYPE_UTF16_STRING, TYPE_DELTA_ENTRY, TYPE_INDEX_ENTRY,
          TYPE_DATA_VALUE, TYPE_J2K_CODING_STYLE_DEFAULT, TYPE_J2K_QUANTISATION_DEFAULT})
        EXPECT_EQ(thrownMessage<Exceptions::InvalidType>([&] { sizeOfType(type); }),
                  L"Type has a variable size.")
            << type;
    EXPECT_THROW(sizeOfType(TYPE_COUNT), Exceptions::InvalidType);
}

TEST(TypeIdentifiers, TypeFromName)
{
    for (Platform::UInt32 type = 0; type < TYPE_COUNT; ++type)
        EXPECT_EQ(typeFromName(name(type)), type);
    EXPECT_EQ(typeFromName(L""), TYPE_UNKNOWN);
    EXPECT_EQ(typeFromName(L"J2KPictureComponent"), TYPE_J2K_PICTURE_COMPONENT);
    EXPECT_EQ(thrownMessage<Exceptions::NotFound>([] { typeFromName(L"Int128"); }),
              L"Unknown type name: Int128");
}

TEST(BaseTypeFactory, MakesEverySimpleTypeThatWritesBackItsBytes)
{
    const auto& factory = BaseTypeFactory::instance();
    EXPECT_EQ(&factory, &BaseTypeFactory::instance());
    for (const Row& row : simpleRows())
    {
        PiecewiseSource source(row.wire, 5);
        const auto value = factory.create(row.type, source);
        ASSERT_NE(value, nullptr) << row.type;
        EXPECT_TRUE(row.isExpectedClass(*value)) << row.type;
        EXPECT_EQ(serialized(*value), row.wire) << row.type;
        EXPECT_TRUE(source.eof()) << row.type;
    }
}

TEST(BaseTypeFactory, FixedSizeValuesFromShortSourcesFailInTheExactRead)
{
    for (const Row& row : simpleRows())
    {
        if (!hasFixedSize(row.type))
            continue;
        auto source = sourceOf(Bytes(row.wire.begin(), row.wire.end() - 1));
        const std::wstring text = thrownMessage<Exceptions::InvalidLength>(
            [&] { BaseTypeFactory::instance().create(row.type, source); });
        EXPECT_EQ(text.rfind(L"Invalid data size in Value: ", 0), 0u) << row.type;
    }
}

TEST(BaseTypeFactory, MakesCollectionsAndRefusesNumbersItDoesNotKnow)
{
    const auto& factory = BaseTypeFactory::instance();
    const Bytes wire = {0, 0, 0, 1, 0, 0, 0, 4, 0, 0, 0, 9};
    auto arraySource = sourceOf(wire);
    const auto array = factory.createCollection(TYPE_ARRAY, arraySource, TYPE_INT32);
    ASSERT_NE(Visitors::getAs<Array>(*array), nullptr);
    EXPECT_EQ(serialized(*array), wire);
    auto batchSource = sourceOf(wire);
    EXPECT_NE(
        Visitors::getAs<Batch>(*factory.createCollection(TYPE_BATCH, batchSource, TYPE_UINT32)),
        nullptr);

    using E = Exceptions::NoFactory;
    for (const auto type :
         {TYPE_ARRAY, TYPE_BATCH, TYPE_DUMMY_TO_REPLACE_EDIT_RATE, TYPE_KEY, TYPE_COUNT})
    {
        auto source = sourceOf(counting(16));
        EXPECT_EQ(thrownMessage<E>([&] { factory.create(type, source); }), L"No Factory for type")
            << type;
    }
    auto source = sourceOf(wire);
    EXPECT_EQ(thrownMessage<E>([&] { factory.createCollection(TYPE_UINT32, source, TYPE_UINT32); }),
              L"No Factory for type");
}

TEST(BaseTypeFactory, RegisteredCreatorsAddAndReplace)
{
    auto& factory = BaseTypeFactory::instance();
    factory.registerType(100, makeStrange);
    auto source = sourceOf(counting(3));
    EXPECT_EQ(Visitors::getAs<UInt8>(*factory.create(100, source))->value(), 3);

    factory.registerType(TYPE_DELTA_ENTRY, makeStrange);
    auto delta = sourceOf(counting(6));
    EXPECT_NE(Visitors::getAs<UInt8>(*factory.create(TYPE_DELTA_ENTRY, delta)), nullptr);
    factory.registerType(TYPE_DELTA_ENTRY,
                         [](DataIO::BoundedDataSource& s) -> std::unique_ptr<BaseType>
                         { return std::make_unique<Unknown>(s); });

    factory.registerCollectionType(
        101,
        [](DataIO::BoundedDataSource& s, Platform::UInt32 element) -> std::unique_ptr<BaseType>
        { return std::make_unique<Batch>(s, element); });
    auto batch = sourceOf({0, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_NE(Visitors::getAs<Batch>(*factory.createCollection(101, batch, TYPE_UINT8)), nullptr);
}
