#include "MXF/SDK/KLV/Key.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using namespace Halvorn::Test::Support;
using namespace MXF::SDK::KLV;
namespace Exceptions = MXF::SDK::Exceptions;

namespace
{

Key keyOf(const std::string& hex)
{
    const Bytes bytes = hexBytes(hex);
    EXPECT_EQ(bytes.size(), 16u);
    return Key(bytes.data());
}

Bytes bytesOf(const Key& key)
{
    return Bytes(key.data(), key.data() + Key::size());
}

struct KnownKey
{
    const char* bytes;
    const wchar_t* oid;
};

// Keys of SMPTE 377M sets and packs, and their OID text under the key head 1.3.53.2.
constexpr KnownKey KNOWN[] = {
    {"06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 00", L"1.3.53.2.83.1.1.13.1.1.1.1.1.47"},
    {"06 0e 2b 34 02 05 01 01 0d 01 02 01 01 02 04 00", L"1.3.53.2.5.1.1.13.1.2.1.1.2.4"},
    {"06 0e 2b 34 02 05 01 01 0d 01 02 01 01 05 01 00", L"1.3.53.2.5.1.1.13.1.2.1.1.5.1"},
    {"06 0e 2b 34 02 53 01 01 0d 01 02 01 01 10 01 00", L"1.3.53.2.83.1.1.13.1.2.1.1.16.1"},
    {"06 0e 2b 34 02 05 01 01 0d 01 02 01 01 11 01 00", L"1.3.53.2.5.1.1.13.1.2.1.1.17.1"},
};

} // namespace

TEST(Key, KnownKeysReadFromDottedHexAndOIDAndWriteAsOID)
{
    for (const KnownKey& known : KNOWN)
    {
        SCOPED_TRACE(known.bytes);
        const Key key = keyOf(known.bytes);
        EXPECT_EQ(key.toString(), known.oid);
        EXPECT_EQ(key.toString(REPRESENTATION_NATIVE), known.oid);
        EXPECT_EQ(Key(known.oid, REPRESENTATION_OID), key);
        EXPECT_EQ(Key(known.oid, REPRESENTATION_NATIVE), key);
    }
    const Key preface = keyOf(KNOWN[0].bytes);
    EXPECT_EQ(Key(L"06.0E.2B.34.02.53.01.01.0D.01.01.01.01.01.2F.00"), preface);
    EXPECT_EQ(Key(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00", REPRESENTATION_DOTTED_HEX),
              preface);
    // The character between two pairs is not looked at.
    EXPECT_EQ(Key(L"06 0e-2b 34-02 53 01 01 0d:01:01:01:01:01:2f_00"), preface);
}

TEST(Key, OIDTextRoundTripsAndLosesOnlyByteFourAndTrailingZeros)
{
    for (std::uint32_t seed = 1; seed <= 50; ++seed)
    {
        Bytes bytes = hexBytes("06 0e 2b 34 02") + patternBytes(11, seed);
        const Key key(bytes.data());
        EXPECT_EQ(Key(key.toString(), REPRESENTATION_OID), key) << "seed " << seed;
    }
    // The head 1.3.53.2 covers byte 4, so a dictionary item (byte 4 = 01) reads back as a group.
    const Key fill = keyOf("06 0e 2b 34 01 01 01 02 03 01 02 10 01 00 00 00");
    EXPECT_EQ(fill.toString(), L"1.3.53.2.1.1.2.3.1.2.16.1");
    EXPECT_EQ(bytesOf(Key(fill.toString(), REPRESENTATION_OID)),
              hexBytes("06 0e 2b 34 02 01 01 02 03 01 02 10 01 00 00 00"));
    // A zero inside is written; zeros at the end are not, and come back on reading.
    EXPECT_EQ(keyOf("06 0e 2b 34 02 00 00 07 00 00 00 00 00 00 00 00").toString(),
              L"1.3.53.2.0.0.7");
    EXPECT_EQ(Key(L"1.3.53.2", REPRESENTATION_OID).toString(), L"1.3.53.2");
    EXPECT_EQ(bytesOf(Key(L"1.3.53.2", REPRESENTATION_OID)),
              hexBytes("06 0e 2b 34 02 00 00 00 00 00 00 00 00 00 00 00"));
}

TEST(Key, TextErrorsNameTheFault)
{
    auto readFails = [](const std::wstring& text, StringRepresentationEncodingType form)
    { Key key(text, form); };
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>(
                  [&] { readFails(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f", {}); }),
              L"Not enough data");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>(
                  [&] { readFails(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00.", {}); }),
              L"Not enough data");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLabel>(
                  [&] { readFails(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2g.00", {}); }),
              L"Label contains non Hexadecimal characters");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLabel>(
                  [&] { readFails(L"1.3.53.2.256", REPRESENTATION_OID); }),
              L"OID contains values not in [0 - 255].");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLabel>(
                  [&] { readFails(L"1.3.52.2.1", REPRESENTATION_OID); }),
              L"OID contains initial values not according to type");
    EXPECT_EQ(
        thrownMessage<Exceptions::InvalidLength>([&] { readFails(L"1.3.53", REPRESENTATION_OID); }),
        L"Not enough data");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>(
                  [&] { readFails(L"1.3.53.2.1.1.1.1.1.1.1.1.1.1.1.1", REPRESENTATION_OID); }),
              L"OID contains more elements than expected");
    for (const auto form : {REPRESENTATION_PLAIN_HEX, REPRESENTATION_UUID})
        EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>(
                      [&] { readFails(L"0x060e2b34025301010d01010101012f00", form); }),
                  L"Don't know how to initialize Key in the given string representation format");

    const Key key = keyOf(KNOWN[0].bytes);
    for (const auto form : {REPRESENTATION_DOTTED_HEX, REPRESENTATION_PLAIN_HEX,
                            REPRESENTATION_UUID, StringRepresentationEncodingType(7)})
        EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>([&] { key.toString(form); }),
                  L"Don't know how to represent Key in the given string representation format");
}

TEST(Key, ReadsSixteenBytesFromASourceInAnyPieces)
{
    const Bytes bytes = hexBytes(KNOWN[3].bytes) + hexBytes("83 00 00 01");
    forEachSplit(bytes,
                 [&](DataSource& source)
                 {
                     const Key key(source);
                     EXPECT_EQ(key, keyOf(KNOWN[3].bytes));
                     EXPECT_EQ(source.position(), 16u);
                 });
    forEachSplit(Bytes(bytes.begin(), bytes.begin() + 5),
                 [&](DataSource& source)
                 {
                     EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { Key key(source); }),
                               L"Invalid data size in Value: 5 of 16 bytes");
                 });
}

TEST(Key, IsAValueThatComparesAllSixteenBytesUnsigned)
{
    const Key a = keyOf("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 00");
    Key b = a;
    EXPECT_EQ(a, b);
    EXPECT_NE(a.data(), b.data()) << "a copy has bytes of its own";
    const Key version2 = keyOf("06 0e 2b 34 02 53 01 02 0d 01 01 01 01 01 2f 00");
    EXPECT_NE(a, version2) << "no version masking in ==";
    EXPECT_LT(a, version2);
    EXPECT_LT(keyOf("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 7f"),
              keyOf("06 0e 2b 34 02 53 01 01 0d 01 01 01 01 01 2f 80"))
        << "bytes compare unsigned";
    EXPECT_GT(keyOf("07 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"),
              keyOf("06 ff ff ff ff ff ff ff ff ff ff ff ff ff ff ff"))
        << "first byte most significant";

    const auto* before = b.data();
    b = version2;
    EXPECT_EQ(b, version2);
    EXPECT_EQ(b.data(), before) << "assignment copies into the existing bytes";
    const Key& same = b;
    b = same;
    EXPECT_EQ(b, version2);

    EXPECT_EQ(Key::size(), 16u);
    EXPECT_EQ(a[0], 0x06);
    EXPECT_EQ(a[14], 0x2F);
    EXPECT_THROW(a[16], std::out_of_range);
}
