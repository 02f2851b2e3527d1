#include "MXF/SDK/KLV/KLVReader.h"

#include "MXF/SDK/KLV/KeyPredicates.h"
#include "TestSupport.h"

#include <functional>
#include <gtest/gtest.h>
#include <thread>

using namespace Halvorn::Test;
using namespace Halvorn::Test::Support;
using namespace MXF::SDK::KLV;
namespace Exceptions = MXF::SDK::Exceptions;

namespace
{

const Bytes PARTITION = hexBytes("06 0e 2b 34 02 05 01 01 0d 01 02 01 01 02 04 00");
const Bytes FILL = hexBytes("06 0e 2b 34 01 01 01 02 03 01 02 10 01 00 00 00");
const Bytes PICTURE = hexBytes("06 0e 2b 34 01 02 01 01 0d 01 03 01 15 01 05 00");

Bytes keyBytes(const Key& key)
{
    return Bytes(key.data(), key.data() + 16);
}

Bytes valueBytes(KLVItem& item)
{
    Bytes out(item.length);
    item.value.readExact(out.data(), out.size());
    return out;
}

// Runs `check` with a reader of the bytes whole, and split into pieces.
void forEachReader(const Bytes& bytes,
                   const std::function<void(KLVReader&, UInt64& skipped, DataSource&)>& check)
{
    forEachSplit(bytes,
                 [&](DataSource& source)
                 {
                     KLVReader reader(source);
                     UInt64 skipped = 0;
                     check(reader, skipped, source);
                 });
}

// Key at 0: partition pack, 4-byte length 5. Key at 25: fill, length 0. Key at 42: picture
// element, 3-byte length 3. Ends at 64.
const Bytes THREE_ITEMS = PARTITION + hexBytes("83 00 00 05  01 02 03 04 05") + FILL +
                          hexBytes("00") + PICTURE + hexBytes("82 00 03  aa bb cc");

} // namespace

TEST(KLVReader, ReadsItemAfterItemWhenEachIsDropped)
{
    forEachSplit(THREE_ITEMS,
                 [](DataSource& source)
                 {
                     KLVReader reader(source);
                     UInt64 skipped = 99;
                     auto first = reader.readKLV(skipped, 0);
                     EXPECT_EQ(skipped, 0u);
                     EXPECT_EQ(keyBytes(first->key), PARTITION);
                     EXPECT_EQ(first->lengthSize, 4);
                     EXPECT_EQ(first->length, 5u);
                     EXPECT_EQ(first->keyPosition, 0u);
                     EXPECT_EQ(first->totalSize(), 25u);
                     EXPECT_EQ(first->value.position(), 20u);
                     EXPECT_EQ(valueBytes(*first), hexBytes("01 02 03 04 05"));
                     first.reset();

                     auto fill = reader.readKLV(skipped, 0);
                     EXPECT_TRUE(isFillItem(fill->key));
                     EXPECT_EQ(fill->keyPosition, 25u);
                     EXPECT_EQ(fill->lengthSize, 1);
                     EXPECT_EQ(fill->length, 0u);
                     EXPECT_TRUE(fill->value.eof()) << "a zero-length item";
                     EXPECT_EQ(source.position(), 42u) << "the source stands at the next key";
                     fill.reset();

                     auto picture = reader.readKLV(skipped, 0);
                     EXPECT_EQ(keyBytes(picture->key), PICTURE);
                     EXPECT_EQ(picture->keyPosition, 42u);
                     EXPECT_EQ(picture->lengthSize, 3);
                     EXPECT_EQ(picture->length, 3u);
                     picture.reset();
                     EXPECT_TRUE(source.eof());
                     EXPECT_EQ(thrownMessage<Exceptions::NotEnoughData>(
                                   [&] { reader.readKLV(skipped, 100); }),
                               L"Not enough data");
                 });
}

TEST(KLVReader, ReadKeyThenReadKLVReusesTheKeyWithNothingSkipped)
{
    const Bytes bytes = hexBytes("00 11 22") + THREE_ITEMS;
    forEachReader(bytes,
                  [](KLVReader& reader, UInt64& skipped, DataSource& source)
                  {
                      const Key key = reader.readKey(skipped, 3);
                      EXPECT_EQ(skipped, 3u);
                      EXPECT_EQ(keyBytes(key), PARTITION);
                      EXPECT_EQ(source.position(), 19u) << "just after the key";
                      auto item = reader.readKLV(skipped, 0);
                      EXPECT_EQ(skipped, 0u);
                      EXPECT_EQ(item->key, key);
                      EXPECT_EQ(item->keyPosition, 3u);
                      EXPECT_EQ(item->length, 5u);
                  });
    // Anything read in between makes the next call search afresh.
    forEachReader(THREE_ITEMS,
                  [](KLVReader& reader, UInt64& skipped, DataSource& source)
                  {
                      reader.readKey(skipped, 0);
                      source.skip(9);
                      auto fill = reader.readKLV(skipped, 0);
                      EXPECT_EQ(fill->keyPosition, 25u);
                      EXPECT_TRUE(isFillItem(fill->key));
                  });
}

TEST(KLVReader, RunInSearchSkipsAtMostMaxSkipBytes)
{
    for (const UInt64 garbage : {4u, 5u})
    {
        const Bytes bytes = Bytes(garbage, 0x06) + THREE_ITEMS;
        forEachReader(bytes,
                      [&](KLVReader& reader, UInt64& skipped, DataSource&)
                      {
                          if (garbage == 4)
                          {
                              auto item = reader.readKLV(skipped, 4);
                              EXPECT_EQ(skipped, 4u);
                              EXPECT_EQ(item->keyPosition, 4u);
                              return;
                          }
                          EXPECT_EQ(thrownMessage<Exceptions::KeyNotFound>(
                                        [&] { reader.readKLV(skipped, 4); }),
                                    L"Exceeded maximum bytes to skip before finding a key. Started "
                                    L"to search at 0x0 Skipped 0x5 current position: 0xa");
                          EXPECT_EQ(skipped, 5u);
                      });
    }
    forEachReader(hexBytes("ff") + THREE_ITEMS,
                  [](KLVReader& reader, UInt64& skipped, DataSource&)
                  {
                      EXPECT_THROW(reader.readKLV(skipped, 0), Exceptions::KeyNotFound)
                          << "maxSkip 0: the key must start here";
                  });
}

TEST(KLVReader, OnlyGroupsAndDictionaryItemsStartAKey)
{
    // A label (fifth byte 04) or a lone prefix inside damaged bytes is passed over.
    for (const char* lure : {"06 0e 2b 34 04", "06 0e 2b 34 06", "06 0e 2b 34 07", "06 0e 2b 34 7f",
                             "06 0e 2b 34 ff", "06 0e 2b 06 0e 2b 34"})
    {
        SCOPED_TRACE(lure);
        const Bytes bytes = hexBytes(lure) + hexBytes("ff ff ff ff") + THREE_ITEMS;
        forEachReader(bytes,
                      [&](KLVReader& reader, UInt64& skipped, DataSource&)
                      {
                          auto item = reader.readKLV(skipped, 1000);
                          EXPECT_EQ(keyBytes(item->key), PARTITION);
                          EXPECT_EQ(skipped, bytes.size() - THREE_ITEMS.size());
                      });
    }
    for (const std::uint8_t fifth : {0x00, 0x01, 0x02, 0x03, 0x05})
    {
        Bytes bytes = hexBytes("06 0e 2b 34") + Bytes{fifth} + Bytes(11, 0x01) + hexBytes("00");
        forEachReader(bytes, [&](KLVReader& reader, UInt64& skipped, DataSource&)
                      { EXPECT_EQ(reader.readKLV(skipped, 0)->key[4], fifth); });
    }
}

TEST(KLVReader, AvidsTwoPrivateKeysStartAnItemOnlyWhenWhole)
{
    const Bytes root = hexBytes("80 53 08 00 36 21 08 04 b3 b3 98 a5 1c 90 11 d4");
    const Bytes directory = hexBytes("96 13 b3 8a 87 34 87 46 f1 02 96 f0 56 e0 4d 2a");
    const Bytes item = hexBytes("83 00 00 02  aa bb");
    const struct
    {
        const char* what;
        Bytes bytes;
        UInt64 skipped;
        Bytes key;
    } cases[] = {
        {"root object at 0", root + item + THREE_ITEMS, 0, root},
        {"object directory at 0", directory + item, 0, directory},
        {"root object after garbage", hexBytes("80 53 08 00") + root + item, 4, root},
        {"directory after its own prefix",
         Bytes(directory.begin(), directory.begin() + 9) + directory + item, 9, directory},
        // The first 15 bytes of a key are no key: the search passes them, and finds the SMPTE
        // key that starts within the bytes read ahead.
        {"near-miss root object", Bytes(root.begin(), root.end() - 1) + THREE_ITEMS, 15, PARTITION},
        {"near-miss directory",
         Bytes(directory.begin(), directory.begin() + 5) + hexBytes("00") + THREE_ITEMS, 6,
         PARTITION},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.what);
        forEachSplit(c.bytes,
                     [&](DataSource& source)
                     {
                         KLVReader reader(source);
                         UInt64 skipped = 0;
                         auto found = reader.readKLV(skipped, 100);
                         EXPECT_EQ(keyBytes(found->key), c.key);
                         EXPECT_EQ(skipped, c.skipped);
                         EXPECT_EQ(found->keyPosition, c.skipped);
                         EXPECT_EQ(found->value.position(), c.skipped + 16 + found->lengthSize);
                     });
    }
    // A prefix within maxSkip whose key fails is still refused, at the logical position.
    forEachSplit(
        Bytes(root.begin(), root.begin() + 5) + Bytes(20, 0),
        [&](DataSource& source)
        {
            KLVReader reader(source);
            UInt64 skipped = 0;
            EXPECT_EQ(thrownMessage<Exceptions::KeyNotFound>([&] { reader.readKLV(skipped, 0); }),
                      L"Exceeded maximum bytes to skip before finding a key. Started "
                      L"to search at 0x0 Skipped 0x1 current position: 0x6");
        });
    // A source that ends within a candidate key is no key and, at the end, not enough data.
    forEachSplit(Bytes(directory.begin(), directory.begin() + 12),
                 [&](DataSource& source)
                 {
                     KLVReader reader(source);
                     UInt64 skipped = 0;
                     EXPECT_EQ(thrownMessage<Exceptions::NotEnoughData>(
                                   [&] { reader.readKLV(skipped, 100); }),
                               L"Not enough data");
                 });
}

TEST(KLVReader, SourceEndingWithinTheSearchKeyOrLengthIsNotEnoughData)
{
    const struct
    {
        const char* where;
        Bytes bytes;
    } cases[] = {
        {"the first window", hexBytes("06 0e 2b 34")},
        {"a shift of the window", hexBytes("00 01 02 03 04 05 06 0e 2b 34")},
        {"the last 11 key bytes", Bytes(PARTITION.begin(), PARTITION.begin() + 15)},
        {"the first length byte", PARTITION},
        {"the long-form length bytes", PARTITION + hexBytes("83 00 00")},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.where);
        forEachReader(c.bytes,
                      [&](KLVReader& reader, UInt64& skipped, DataSource&)
                      {
                          EXPECT_EQ(thrownMessage<Exceptions::NotEnoughData>(
                                        [&] { reader.readKLV(skipped, 100); }),
                                    L"Not enough data");
                      });
    }
}

TEST(KLVReader, LengthsOfEveryWidthAndTheBadOnes)
{
    const struct
    {
        const char* ber;
        unsigned size;
        UInt64 length;
    } good[] = {
        {"7f", 1, 127},
        {"81 80", 2, 128},
        {"82 01 00", 3, 256},
        {"83 02 45 28", 4, 148776},
        {"84 00 00 00 05", 5, 5},
        {"85 01 00 00 00 00", 6, 0x100000000},
        {"86 00 00 00 00 00 01", 7, 1},
        {"87 00 00 00 00 02 32 80", 8, 144000},
        {"88 00 00 00 00 00 00 00 02", 9, 2},
        // More than 8 length bytes: the high ones are shifted out.
        {"8a ff ff 00 00 00 00 00 00 00 03", 11, 3},
    };
    for (const auto& g : good)
    {
        SCOPED_TRACE(g.ber);
        forEachReader(PICTURE + hexBytes(g.ber),
                      [&](KLVReader& reader, UInt64& skipped, DataSource& source)
                      {
                          auto item = reader.readKLV(skipped, 0);
                          EXPECT_EQ(item->lengthSize, g.size);
                          EXPECT_EQ(item->length, g.length);
                          EXPECT_EQ(item->value.position(), 16u + g.size);
                          item.reset();
                          EXPECT_TRUE(source.eof()) << "a length past the end stops at the end";
                      });
    }
    for (const auto& bad : {std::pair{"80 00", L"Invalid BER size: 0x80"},
                            std::pair{"ff 00", L"Invalid BER size: 0xff"}})
    {
        const std::wstring text = bad.second;
        forEachReader(PICTURE + hexBytes(bad.first),
                      [&](KLVReader& reader, UInt64& skipped, DataSource& source)
                      {
                          EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>(
                                        [&] { reader.readKLV(skipped, 0); }),
                                    text);
                          EXPECT_EQ(source.position(), 17u);
                      });
    }
}

TEST(KLVReader, ASearchThatFailedStartsAgainWhereTheSourceStands)
{
    // The key at 6 is half passed when the search gives up at 5 skipped bytes; the next search
    // starts at 10 and finds the fill at 31.
    const Bytes bytes = Bytes(6, 0) + THREE_ITEMS;
    forEachReader(bytes,
                  [](KLVReader& reader, UInt64& skipped, DataSource& source)
                  {
                      EXPECT_THROW(reader.readKLV(skipped, 4), Exceptions::KeyNotFound);
                      EXPECT_EQ(source.position(), 10u);
                      auto fill = reader.readKLV(skipped, 100);
                      EXPECT_EQ(fill->keyPosition, 31u);
                      EXPECT_EQ(skipped, 21u);
                  });
}

TEST(KLVReader, EachThreadHasItsOwnLookAhead)
{
    MXF::SDK::DataIO::Memory::MemoryDataSource source(THREE_ITEMS.data(), THREE_ITEMS.size());
    KLVReader reader(source);
    UInt64 skipped = 0;
    reader.readKey(skipped, 0);
    std::thread other(
        [&]
        {
            KLVReader shared = reader;
            UInt64 otherSkipped = 0;
            // This thread never read that key: it searches, and the length bytes are no key.
            EXPECT_THROW(shared.readKLV(otherSkipped, 0), Exceptions::KeyNotFound);
        });
    other.join();
    source.seek(16);
    auto item = reader.readKLV(skipped, 0);
    EXPECT_EQ(item->keyPosition, 0u) << "this thread's look-ahead is still there";
    EXPECT_EQ(item->length, 5u);
}
