#include "MXF/SDK/Types/Collection.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/Reference.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"
#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "TypesTestSupport.h"

#include <gtest/gtest.h>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace MXF::SDK::Types::TypeIdentifiers;
using namespace Halvorn::Test;

namespace
{

std::uint16_t itemValue(const Collection& collection, std::size_t index)
{
    return Visitors::getAs<UInt16>(collection.at(index))->value();
}

} // namespace

TEST(Batch, ReadsAndWritesTheSMPTE377MBatchHeader)
{
    const Bytes wire = {
        0x00, 0x00, 0x00, 0x03, // count
        0x00, 0x00, 0x00, 0x02, // item size
        0x3c, 0x0a, 0x3b, 0x02, 0x01, 0x02,
    };
    PiecewiseSource source(wire, 3);
    const Batch batch(source, TYPE_UINT16);
    EXPECT_EQ(batch.itemCount(), 3u);
    EXPECT_EQ(batch.itemSize(), 2u);
    EXPECT_EQ(itemValue(batch, 0), 0x3c0a);
    EXPECT_EQ(itemValue(batch, 2), 0x0102);
    EXPECT_EQ(batch.size(), wire.size());
    EXPECT_EQ(serialized(batch), wire);
    EXPECT_TRUE(source.eof());
}

TEST(Array, OfStrongReferencesRoundTrips)
{
    Bytes wire = {0, 0, 0, 2, 0, 0, 0, 16};
    for (int i = 0; i < 32; ++i)
        wire.push_back(static_cast<std::uint8_t>(i));
    auto source = sourceOf(wire);
    const Array array(source, TYPE_STRONG_REFERENCE);
    ASSERT_EQ(array.itemCount(), 2u);
    EXPECT_NE(Visitors::getAs<StrongReference>(array.at(1)), nullptr);
    EXPECT_EQ(Visitors::getAs<StrongReference>(array.at(1))->data()[0], 16);
    EXPECT_EQ(serialized(array), wire);
}

TEST(Batch, EmptyOneIsEightBytes)
{
    auto source = sourceOf({0, 0, 0, 0, 0, 0, 0, 0});
    const Batch batch(source, TYPE_UUID);
    EXPECT_EQ(batch.itemCount(), 0u);
    EXPECT_EQ(batch.itemSize(), 0u);
    EXPECT_EQ(serialized(batch), Bytes(8, 0));
    EXPECT_EQ(batch.size(), 8);
    EXPECT_EQ(serialized(Array()), Bytes(8, 0));
}

TEST(Collection, ShortSourcesGiveTheirTexts)
{
    using E = Exceptions::InvalidLength;
    auto noCount = sourceOf({0, 0, 0});
    EXPECT_EQ(thrownMessage<E>([&] { Batch(noCount, TYPE_UINT8); }),
              L"Invalid data size in collection. Not enough data to read number of elements");
    auto noSize = sourceOf({0, 0, 0, 1, 0, 0});
    EXPECT_EQ(thrownMessage<E>([&] { Batch(noSize, TYPE_UINT8); }),
              L"Invalid data size in collection. Not enough data to read element entry size");
    auto fewItems = sourceOf({0, 0, 0, 3, 0, 0, 0, 2, 1, 2, 3, 4, 5});
    EXPECT_EQ(thrownMessage<E>([&] { Array(fewItems, TYPE_UINT16); }),
              L"Invalid data size in collection. Not enough data to read 3 elements of size 2");
    EXPECT_TRUE(fewItems.eof());

    // Items that need more bytes than the item size, or take fewer.
    const std::wstring shortItem =
        L"Invalid data size in Value to create an element in the collection.";
    auto tooSmall = sourceOf({0, 0, 0, 1, 0, 0, 0, 2, 1, 2});
    EXPECT_EQ(thrownMessage<E>([&] { Batch(tooSmall, TYPE_UINT32); }), shortItem);
    auto tooLarge = sourceOf({0, 0, 0, 1, 0, 0, 0, 2, 1, 2});
    EXPECT_EQ(thrownMessage<E>([&] { Batch(tooLarge, TYPE_UINT8); }), shortItem);
    auto emptyItems = sourceOf({0xff, 0xff, 0xff, 0xff, 0, 0, 0, 0});
    EXPECT_EQ(thrownMessage<E>([&] { Batch(emptyItems, TYPE_DATA_STREAM); }), shortItem);

    auto noFactory =
        sourceOf({0, 0, 0, 1, 0, 0, 0, 16, 1, 2, 3, 4, 5, 6, 7, 8, 1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_THROW(Batch(noFactory, TYPE_KEY), Exceptions::NoFactory);
}

TEST(Collection, AppendInsertAndRemoveKeepOneItemSize)
{
    Batch batch;
    batch.append(std::make_unique<UInt16>(1));
    EXPECT_EQ(batch.itemSize(), 2u);
    batch.append(std::make_unique<UInt16>(3));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidElement>(
                  [&] { batch.append(std::make_unique<UInt32>(4)); }),
              L"Appending an invalid element");
    batch.insert(1, std::make_unique<UInt16>(2));
    batch.insert(3, std::make_unique<UInt16>(4));
    EXPECT_EQ(serialized(batch), Bytes({0, 0, 0, 4, 0, 0, 0, 2, 0, 1, 0, 2, 0, 3, 0, 4}));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidElement>(
                  [&] { batch.insert(0, std::make_unique<UInt8>(1)); }),
              L"Trying to insert an invalid element");
    EXPECT_EQ(thrownMessage<Exceptions::IndexOutOfBounds>(
                  [&] { batch.insert(5, std::make_unique<UInt16>(1)); }),
              L"Trying to insert an element past the end of the data");
    batch.remove(0);
    EXPECT_EQ(itemValue(batch, 0), 2);
    EXPECT_EQ(thrownMessage<Exceptions::IndexOutOfBounds>([&] { batch.remove(3); }),
              L"Trying to remove an element beyond the end of data");
    EXPECT_EQ(thrownMessage<Exceptions::IndexOutOfBounds>([&] { batch.at(3); }),
              L"Exceptions::IndexOutOfBounds");

    // An empty collection with a size of its own keeps it; insert never adopts a size.
    Array sized(4);
    EXPECT_THROW(sized.append(std::make_unique<UInt16>(1)), Exceptions::InvalidElement);
    Array unsized;
    EXPECT_THROW(unsized.insert(0, std::make_unique<UInt16>(1)), Exceptions::InvalidElement);
}

TEST(Collection, CopiesOwnTheirItems)
{
    Array array;
    array.append(std::make_unique<UInt16>(7));
    Array copy(array);
    const auto clone = array.clone();
    Visitors::getAs<UInt16>(array.at(0))->setValue(8);
    EXPECT_EQ(itemValue(copy, 0), 7);
    EXPECT_EQ(itemValue(*clone, 0), 7);
    EXPECT_NE(Visitors::getAs<Array>(*clone), nullptr);
    copy = array;
    EXPECT_EQ(itemValue(copy, 0), 8);
}

TEST(Collection, SizeIsKeptIn16Bits)
{
    Batch batch;
    for (int i = 0; i < 8192; ++i)
        batch.append(std::make_unique<UInt64>(i));
    // 8192 · 8 + 8 = 65544, which wraps to 8.
    EXPECT_EQ(batch.size(), 8);
    EXPECT_EQ(serialized(batch).size(), 65544u);
}
