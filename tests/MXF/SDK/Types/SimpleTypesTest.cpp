#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/Boolean.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/J2KTypes.h"
#include "MXF/SDK/Types/OpaqueTypes.h"
#include "MXF/SDK/Types/RGBALayout.h"
#include "MXF/SDK/Types/Strings.h"
#include "MXF/SDK/Types/VersionTypes.h"
#include "TypesTestSupport.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <limits>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace Halvorn::Test;

TEST(Integers, AreBigEndianTwosComplementOnTheWire)
{
    EXPECT_EQ(serialized(Int8(-2)), Bytes({0xfe}));
    EXPECT_EQ(serialized(Int16(-2)), Bytes({0xff, 0xfe}));
    EXPECT_EQ(serialized(Int32(0x01020304)), Bytes({0x01, 0x02, 0x03, 0x04}));
    EXPECT_EQ(serialized(Int64(std::numeric_limits<std::int64_t>::min())),
              Bytes({0x80, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(serialized(UInt8(0xab)), Bytes({0xab}));
    EXPECT_EQ(serialized(UInt16(0x3c0a)), Bytes({0x3c, 0x0a}));
    EXPECT_EQ(serialized(UInt32(0xdeadbeef)), Bytes({0xde, 0xad, 0xbe, 0xef}));
    EXPECT_EQ(serialized(UInt64(0x0102030405060708)), Bytes({1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(serialized(Length(0x100)), Bytes({0, 0, 0, 0, 0, 0, 1, 0}));
    EXPECT_EQ(serialized(Position(-1)), Bytes(8, 0xff));
    EXPECT_EQ(serialized(Orientation(1)), Bytes({0x01}));
    EXPECT_EQ(serialized(SignalStandard(4)), Bytes({0x04}));
}

TEST(Integers, ReadFromASourceAndConvert)
{
    PiecewiseSource source({0xff, 0xfe, 0x80, 0, 0, 0, 0, 0, 0, 1, 0x12, 0x34, 0x56, 0x78}, 1);
    EXPECT_EQ(Int16(source).value(), -2);
    const Position position(source);
    EXPECT_EQ(position.value(), std::numeric_limits<std::int64_t>::min() + 1);
    UInt32 value(source);
    EXPECT_EQ(value.value(), 0x12345678u);
    value.setValue(7);
    EXPECT_EQ(serialized(value), Bytes({0, 0, 0, 7}));
    EXPECT_EQ(value.size(), 4);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { UInt16{source}; }),
              L"Invalid data size in Value: 0 of 2 bytes");

    Length length(5);
    Length copy(length);
    length.setValue(6);
    EXPECT_EQ(copy.value(), 5);
    copy = length;
    EXPECT_EQ(copy.value(), 6);
}

TEST(Boolean, ReadsAnyNonZeroByteAsTrueAndKeepsIt)
{
    EXPECT_EQ(serialized(Boolean(true)), Bytes({0x01}));
    EXPECT_EQ(serialized(Boolean(false)), Bytes({0x00}));
    auto source = sourceOf({0xff, 0x00});
    const Boolean odd(source);
    EXPECT_TRUE(odd.value());
    EXPECT_EQ(serialized(odd), Bytes({0xff}));
    EXPECT_FALSE(Boolean(source).value());
}

TEST(VersionTypes, WireForms)
{
    const VersionType version(1, 2);
    EXPECT_EQ(serialized(version), Bytes({0x01, 0x02}));
    EXPECT_EQ(version.majorVersion(), 1);
    EXPECT_EQ(version.minorVersion(), 2);

    const ProductVersion product(1, 0x0203, 3, 0x1000, 5);
    EXPECT_EQ(serialized(product), Bytes({0, 1, 2, 3, 0, 3, 0x10, 0, 0, 5}));
    auto source = sourceOf(serialized(product));
    const ProductVersion read(source);
    EXPECT_EQ(read.majorVersion(), 1);
    EXPECT_EQ(read.minorVersion(), 0x0203);
    EXPECT_EQ(read.patch(), 3);
    EXPECT_EQ(read.build(), 0x1000);
    EXPECT_EQ(read.release(), 5);
}

TEST(RGBALayout, IsEightCodeAndDepthPairs)
{
    const RGBALayout layout(
        {{{'R', 8}, {'G', 8}, {'B', 8}, {'A', 8}, {0, 0}, {0, 0}, {0, 0}, {0, 0}}});
    EXPECT_EQ(serialized(layout), Bytes({'R', 8, 'G', 8, 'B', 8, 'A', 8, 0, 0, 0, 0, 0, 0, 0, 0}));
    auto source = sourceOf(serialized(layout));
    const RGBALayout read(source);
    EXPECT_EQ(read.component(2).code, 'B');
    EXPECT_EQ(read.component(3).depth, 8);
    EXPECT_THROW(read.component(8), std::out_of_range);
}

TEST(ISO7String, KeepsItsBytesWithoutTerminator)
{
    const ISO7String text("Halvorn");
    EXPECT_EQ(serialized(text), Bytes({'H', 'a', 'l', 'v', 'o', 'r', 'n'}));
    auto source = sourceOf({'a', 'b', 'c'});
    EXPECT_EQ(ISO7String(source).value(), "abc");
    const ISO7String empty("");
    EXPECT_NE(empty.data(), nullptr);
    EXPECT_EQ(empty.size(), 0);
    EXPECT_TRUE(serialized(empty).empty());
}

TEST(UTF16, IsBigEndian)
{
    EXPECT_EQ(serialized(UTF16(u'\u20ac')), Bytes({0x20, 0xac}));
    auto source = sourceOf({0x00, 0x41});
    EXPECT_EQ(UTF16(source).value(), u'A');
}

TEST(UTF16String, EncodesBigEndianWithSurrogatePairs)
{
    // A, e-acute, euro sign, G clef (U+1D11E = D834 DD1E).
    const UTF16String text(L"A\u00e9\u20ac\U0001D11E");
    const Bytes wire = {0x00, 0x41, 0x00, 0xe9, 0x20, 0xac, 0xd8, 0x34, 0xdd, 0x1e};
    EXPECT_EQ(serialized(text), wire);
    EXPECT_EQ(text.size(), 10);
    PiecewiseSource source(wire, 3);
    EXPECT_EQ(UTF16String(source).value(), L"A\u00e9\u20ac\U0001D11E");
}

TEST(UTF16String, DecodesUpToTheFirstZeroButKeepsEveryByte)
{
    const Bytes padded = {0x00, 0x4f, 0x00, 0x4b, 0x00, 0x00, 0x00, 0x58, 0xdc, 0x00};
    auto source = sourceOf(padded);
    const UTF16String text(source);
    EXPECT_EQ(text.value(), L"OK");
    EXPECT_EQ(serialized(text), padded);

    auto lone = sourceOf({0xd8, 0x00, 0x00, 0x41});
    EXPECT_EQ(UTF16String(lone).value(), L"\ufffdA");
}

TEST(UTF16String, RefusesAnOddNumberOfBytes)
{
    auto source = sourceOf({0x00, 0x41, 0x00});
    EXPECT_EQ(thrownMessage<Exceptions::InvalidValue>([&] { UTF16String{source}; }),
              L"UTF-16 data must have a even number of bytes.");
    auto empty = sourceOf({});
    EXPECT_EQ(UTF16String(empty).size(), 0);
}

TEST(OpaqueTypes, KeepTheBytesTheyCameWith)
{
    const Bytes bytes = {0x00, 0xff, 0x10, 0x20, 0x30};
    auto source = sourceOf(bytes);
    EXPECT_EQ(serialized(Unknown(source)), bytes);
    EXPECT_EQ(serialized(DataStream(bytes.data(), bytes.size())), bytes);
    EXPECT_EQ(serialized(DataValue(bytes.data(), 2)), Bytes({0x00, 0xff}));
    EXPECT_EQ(Unknown(nullptr, 0).size(), 0);
    // More than a local set can say cannot be written.
    const Bytes big(70000, 1);
    const DataStream stream(big.data(), big.size());
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { stream.size(); }),
              L"Type size exceeded");
}

TEST(J2KTypes, PictureComponentIsSsizXRsizYRsiz)
{
    const J2KPictureComponent component(0x07, 1, 2);
    EXPECT_EQ(serialized(component), Bytes({0x07, 0x01, 0x02}));
    auto source = sourceOf({0x89, 2, 1});
    const J2KPictureComponent read(source);
    EXPECT_EQ(read.ssiz(), 0x89);
    EXPECT_EQ(read.xrsiz(), 2);
    EXPECT_EQ(read.yrsiz(), 1);
}

TEST(J2KTypes, CodingStyleDefaultNeedsTenBytes)
{
    // Scod 0; SGcod: LRCP, one layer, no transform; SPcod: 5 levels, 64x64 blocks, style 0, 9-7.
    const Bytes cod = {0x00, 0x00, 0x00, 0x01, 0x00, 0x05, 0x04, 0x04, 0x00, 0x00};
    auto source = sourceOf(cod);
    const J2KCodingStyleDefault read(source);
    EXPECT_EQ(serialized(read), cod);
    EXPECT_EQ(read.scod(), 0);
    EXPECT_EQ(read.sgcod(), (std::array<Platform::Byte, 4>{0x00, 0x00, 0x01, 0x00}));
    EXPECT_EQ(read.spcodSize(), 5u);
    EXPECT_EQ(read.spcod()[0], 0x05);
    const J2KCodingStyleDefault parts(0x00, {0x00, 0x00, 0x01, 0x00}, cod.data() + 5, 5);
    EXPECT_EQ(serialized(parts), cod);

    const std::wstring tooShort = L"J2KCodingStyleDefault size is smaller than required. "
                                  L"J2KCodingStyleDefault must be at least 10 bytes.";
    using E = Exceptions::InvalidValue;
    auto shortSource = sourceOf(Bytes(cod.begin(), cod.begin() + 9));
    EXPECT_EQ(thrownMessage<E>([&] { J2KCodingStyleDefault{shortSource}; }), tooShort);
    EXPECT_EQ(thrownMessage<E>([&] { J2KCodingStyleDefault(cod.data(), 9); }), tooShort);
    EXPECT_EQ(thrownMessage<E>([&] { J2KCodingStyleDefault(0, {}, cod.data(), 4); }),
              L"J2KCodingStyleDefault Spcod item size is smaller than required. Spcod must be at "
              L"least 5 bytes.");
}

TEST(J2KTypes, QuantisationDefaultNeedsTwoBytes)
{
    const Bytes qcd = {0x22, 0x90, 0x98};
    auto source = sourceOf(qcd);
    const J2KQuantisationDefault read(source);
    EXPECT_EQ(serialized(read), qcd);
    EXPECT_EQ(read.sqcd(), 0x22);
    EXPECT_EQ(read.spqcdSize(), 2u);
    EXPECT_EQ(serialized(J2KQuantisationDefault(0x22, qcd.data() + 1, 2)), qcd);

    using E = Exceptions::InvalidValue;
    auto shortSource = sourceOf({0x22});
    // Read from a source, the second sentence names the other class.
    EXPECT_EQ(thrownMessage<E>([&] { J2KQuantisationDefault{shortSource}; }),
              L"J2KQuantisationDefault size is smaller than required. J2KCodingStyleDefault must "
              L"be at least 2 bytes.");
    EXPECT_EQ(thrownMessage<E>([&] { J2KQuantisationDefault(qcd.data(), 1); }),
              L"J2KQuantisationDefault size is smaller than required. J2KQuantisationDefault must "
              L"be at least 2 bytes.");
    EXPECT_EQ(thrownMessage<E>([&] { J2KQuantisationDefault(0x22, qcd.data(), 0); }),
              L"J2KQuantisationDefault sPgcd item size is smaller than required. Spcod must be at "
              L"least 1 bytes.");
}
