#include "MXF/SDK/ByteCoders/BERCoder.h"

#include "TestSupport.h"

#include <gtest/gtest.h>

using namespace Halvorn::Test;
using namespace Halvorn::Test::Support;
using MXF::SDK::ByteCoders::BERCoder;
namespace Exceptions = MXF::SDK::Exceptions;

namespace
{

Bytes encoded(UInt64 length, unsigned size)
{
    Bytes out(size);
    BERCoder::encode(length, size, out.data());
    return out;
}

} // namespace

TEST(BERCoder, EncodedSizeIsTheShortestForm)
{
    EXPECT_EQ(BERCoder::encodedSize(0), 1);
    EXPECT_EQ(BERCoder::encodedSize(127), 1);
    EXPECT_EQ(BERCoder::encodedSize(128), 2);
    EXPECT_EQ(BERCoder::encodedSize(255), 2);
    EXPECT_EQ(BERCoder::encodedSize(256), 3);
    EXPECT_EQ(BERCoder::encodedSize(0xFFFFFF), 4);
    EXPECT_EQ(BERCoder::encodedSize(0x1000000), 5);
    EXPECT_EQ(BERCoder::encodedSize(0x00FFFFFFFFFFFFFF), 8);
    EXPECT_EQ(BERCoder::encodedSize(0x0100000000000000), 9);
    EXPECT_EQ(BERCoder::encodedSize(0x7FFFFFFFFFFFFFFF), 9);
    // Taken as signed: a length with bit 63 set is "below 128".
    EXPECT_EQ(BERCoder::encodedSize(0x8000000000000000), 1);
}

TEST(BERCoder, EncodeWritesEachWidthBigEndianAfterTheCountByte)
{
    EXPECT_EQ(encoded(0x45, 1), hexBytes("45"));
    EXPECT_EQ(encoded(128, 2), hexBytes("81 80"));
    EXPECT_EQ(encoded(0x1234, 3), hexBytes("82 12 34"));
    // The 4-byte form most writers use for every length, and the 8- and 9-byte ones.
    EXPECT_EQ(encoded(128, 4), hexBytes("83 00 00 80"));
    EXPECT_EQ(encoded(148776, 4), hexBytes("83 02 45 28"));
    EXPECT_EQ(encoded(0x0102030405, 6), hexBytes("85 01 02 03 04 05"));
    EXPECT_EQ(encoded(0x010203040506, 7), hexBytes("86 01 02 03 04 05 06"));
    EXPECT_EQ(encoded(144000, 8), hexBytes("87 00 00 00 00 02 32 80"));
    EXPECT_EQ(encoded(144000, 9), hexBytes("88 00 00 00 00 00 02 32 80"));
    EXPECT_EQ(encoded(0xFFFFFFFFFFFFFFFF, 9), hexBytes("88 ff ff ff ff ff ff ff ff"));
    EXPECT_EQ(encoded(0x0102030405060708, 5), hexBytes("84 05 06 07 08"));
    // Unchecked, as it always was: the short form takes the low byte, long forms drop high bytes.
    EXPECT_EQ(encoded(200, 1), hexBytes("c8"));
    EXPECT_EQ(encoded(0x123456, 2), hexBytes("81 56"));
}

TEST(BERCoder, EncodeAndValidateSizeRefuseSizesOutsideOneToNine)
{
    Bytes buffer(16, 0xAA);
    for (const unsigned size : {0u, 10u, 255u})
    {
        EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>(
                      [&] { BERCoder::encode(1, size, buffer.data()); }),
                  L"Invalid BER size");
        EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>([&] { BERCoder::validateSize(size); }),
                  L"Invalid BER size");
    }
    EXPECT_EQ(buffer, Bytes(16, 0xAA)) << "nothing written";
    for (unsigned size = 1; size <= 9; ++size)
        EXPECT_NO_THROW(BERCoder::validateSize(size));
}

TEST(BERCoder, DecodedSizeCountsTheFirstByteAndRefusesIndefiniteAndReservedForms)
{
    EXPECT_EQ(BERCoder::decodedSize(0x00), 1u);
    EXPECT_EQ(BERCoder::decodedSize(0x7F), 1u);
    EXPECT_EQ(BERCoder::decodedSize(0x81), 2u);
    EXPECT_EQ(BERCoder::decodedSize(0x83), 4u);
    EXPECT_EQ(BERCoder::decodedSize(0x87), 8u);
    EXPECT_EQ(BERCoder::decodedSize(0x88), 9u);
    // More than 8 length bytes is accepted; the high ones are shifted out on decoding.
    EXPECT_EQ(BERCoder::decodedSize(0x89), 10u);
    EXPECT_EQ(BERCoder::decodedSize(0xFE), 127u);
    EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>([] { BERCoder::decodedSize(0x80); }),
              L"Invalid BER size: 0x80");
    EXPECT_EQ(thrownMessage<Exceptions::InvalidFormat>([] { BERCoder::decodedSize(0xFF); }),
              L"Invalid BER size: 0xff");
}

TEST(BERCoder, DecodeReadsEveryWidthAndKeepsTheLow64BitsOfLongerOnes)
{
    for (unsigned size = 1; size <= 9; ++size)
    {
        const UInt64 length = size == 1 ? 0x7F : (UInt64(1) << (8 * (size - 1) - 1)) + 0x42;
        const Bytes bytes = encoded(length, size);
        EXPECT_EQ(BERCoder::decodedSize(bytes[0]), size);
        EXPECT_EQ(BERCoder::decode(bytes.data(), size), length) << "size " << size;
    }
    const Bytes tenBytes = hexBytes("89 ab 01 02 03 04 05 06 07 08");
    EXPECT_EQ(BERCoder::decode(tenBytes.data(), 10), 0x0102030405060708u);
    EXPECT_EQ(BERCoder::decode(hexBytes("83 ff ff ff").data(), 4), 16777215u);
}
