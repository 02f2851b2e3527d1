#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/Reference.h"
#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "TypesTestSupport.h"

#include <gtest/gtest.h>
#include <stdexcept>

using namespace MXF::SDK;
using namespace MXF::SDK::Types;
using namespace MXF::SDK::KLV;
using namespace Halvorn::Test;

namespace
{

// RFC 4122, section 3: the example UUID of its URN form.
const Bytes RFC4122_BYTES = {0xf8, 0x1d, 0x4f, 0xae, 0x7d, 0xec, 0x11, 0xd0,
                             0xa7, 0x65, 0x00, 0xa0, 0xc9, 0x1e, 0x6b, 0xf6};
const std::wstring RFC4122_TEXT = L"f81d4fae-7dec-11d0-a765-00a0c91e6bf6";

// SMPTE ST 390 "MXF-OP Atom 1 Track N SourceClips" (rp224-labels.csv).
const Bytes OP_ATOM_BYTES = {0x06, 0x0e, 0x2b, 0x34, 0x04, 0x01, 0x01, 0x02,
                             0x0d, 0x01, 0x02, 0x01, 0x10, 0x01, 0x00, 0x00};
const std::wstring OP_ATOM_DOTTED = L"06.0e.2b.34.04.01.01.02.0d.01.02.01.10.01.00.00";
// By hand: 1.3.53 for 06 0E 2B 34, then bytes 4 to 13 in decimal, trailing zeros left out.
const std::wstring OP_ATOM_OID = L"1.3.53.4.1.1.2.13.1.2.1.16.1";

// AvidAAFKLVEssenceContainer (rp224-labels.csv): a zero byte within the label.
const Bytes AVID_AAF_KLV_BYTES = {0x06, 0x0e, 0x2b, 0x34, 0x01, 0x01, 0x01, 0xff,
                                  0x4b, 0x46, 0x41, 0x41, 0x00, 0x0d, 0x4d, 0x4f};
const std::wstring AVID_AAF_KLV_OID = L"1.3.53.1.1.1.255.75.70.65.65.0.13.77.79";

Bytes bytesOf(const SimpleDataType& value)
{
    return Bytes(value.data(), value.data() + value.size());
}

Bytes counting(std::size_t size)
{
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<std::uint8_t>(0xA0 + i);
    return bytes;
}

std::wstring dotted(const Bytes& bytes, wchar_t separator)
{
    static const wchar_t* digits = L"0123456789ABCDEF";
    std::wstring text;
    for (std::size_t i = 0; i < bytes.size(); ++i)
    {
        if (i > 0)
            text.push_back(separator);
        text.push_back(digits[bytes[i] >> 4]);
        text.push_back(digits[bytes[i] & 0x0F]);
    }
    return text;
}

} // namespace

TEST(UniversalLabel, ReadsDottedAndOIDAndWritesOIDOfARegisteredLabel)
{
    const UniversalLabel fromDotted(OP_ATOM_DOTTED);
    EXPECT_EQ(bytesOf(fromDotted), OP_ATOM_BYTES);
    EXPECT_EQ(fromDotted.toString(), OP_ATOM_OID);
    EXPECT_EQ(fromDotted.toString(REPRESENTATION_OID), OP_ATOM_OID);
    EXPECT_EQ(bytesOf(UniversalLabel(OP_ATOM_OID, REPRESENTATION_OID)), OP_ATOM_BYTES);
    EXPECT_EQ(bytesOf(UniversalLabel(OP_ATOM_OID, REPRESENTATION_NATIVE)), OP_ATOM_BYTES);

    const UniversalLabel avid(AVID_AAF_KLV_BYTES.data());
    EXPECT_EQ(avid.toString(), AVID_AAF_KLV_OID);
    EXPECT_EQ(UniversalLabel(AVID_AAF_KLV_OID, REPRESENTATION_OID), avid);

    // Text that ends right after the head: twelve zero bytes, and back to the head alone.
    const UniversalLabel head(L"1.3.53", REPRESENTATION_OID);
    EXPECT_EQ(bytesOf(head), Bytes({0x06, 0x0e, 0x2b, 0x34, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(head.toString(), L"1.3.53");
}

TEST(UUID, ReadsAndWritesTheRFC4122Example)
{
    const UUID uuid(RFC4122_TEXT, REPRESENTATION_UUID);
    EXPECT_EQ(bytesOf(uuid), RFC4122_BYTES);
    EXPECT_EQ(uuid.toString(), RFC4122_TEXT);
    EXPECT_EQ(uuid.toString(REPRESENTATION_UUID), RFC4122_TEXT);
    EXPECT_EQ(UUID(L"F81D4FAE-7DEC-11D0-A765-00A0C91E6BF6", REPRESENTATION_NATIVE), uuid);
    // Any separator that is not a hex digit will do.
    EXPECT_EQ(UUID(L"f81d4fae_7dec 11d0.a765:00a0c91e6bf6", REPRESENTATION_UUID), uuid);
    EXPECT_EQ(UUID(dotted(RFC4122_BYTES, L'.')), uuid);
}

TEST(Identifiers, DottedHexTakesAnySeparatorAndEitherCase)
{
    for (const wchar_t separator : {L'.', L' ', L'-', L'x'})
    {
        EXPECT_EQ(bytesOf(UniversalLabel(dotted(OP_ATOM_BYTES, separator))), OP_ATOM_BYTES);
        EXPECT_EQ(bytesOf(UMID32(dotted(counting(32), separator))), counting(32));
        EXPECT_EQ(bytesOf(UMID64(dotted(counting(64), separator))), counting(64));
        EXPECT_EQ(bytesOf(LocalTag(dotted({0x3c, 0x0a}, separator))), Bytes({0x3c, 0x0a}));
    }
    EXPECT_EQ(bytesOf(UniversalLabel(L"06.0E.2b.34.04.01.01.02.0D.01.02.01.10.01.00.00")),
              OP_ATOM_BYTES);
}

TEST(Identifiers, PlainHexIsTheFormOfUMIDsAndLocalTags)
{
    const UMID32 umid32(counting(32).data());
    const std::wstring text32 =
        L"0xa0a1a2a3a4a5a6a7a8a9aaabacadaeafb0b1b2b3b4b5b6b7b8b9babbbcbdbebf";
    EXPECT_EQ(umid32.toString(), text32);
    EXPECT_EQ(umid32.toString(REPRESENTATION_PLAIN_HEX), text32);
    EXPECT_EQ(UMID32(text32, REPRESENTATION_PLAIN_HEX), umid32);
    EXPECT_EQ(UMID32(text32, REPRESENTATION_NATIVE), umid32);

    const UMID64 umid64(counting(64).data());
    EXPECT_EQ(umid64.toString().substr(0, 8), L"0xa0a1a2");
    EXPECT_EQ(umid64.toString().size(), 130u);

    const LocalTag tag(0x3c0a);
    EXPECT_EQ(bytesOf(tag), Bytes({0x3c, 0x0a}));
    EXPECT_EQ(tag.value(), 0x3c0a);
    EXPECT_EQ(tag.toString(), L"0x3c0a");
    EXPECT_EQ(LocalTag(L"0x3C0A", REPRESENTATION_PLAIN_HEX), tag);
}

TEST(Identifiers, ParseOfPrintGivesTheSameIdentifierInEveryFormWritten)
{
    const UniversalLabel label(OP_ATOM_BYTES.data());
    const UUID uuid(RFC4122_BYTES.data());
    const UMID32 umid32(counting(32).data());
    const UMID64 umid64(counting(64).data());
    const LocalTag tag(0xfffe);
    for (const auto form : {REPRESENTATION_NATIVE, REPRESENTATION_OID})
        EXPECT_EQ(UniversalLabel(label.toString(form), form), label);
    for (const auto form : {REPRESENTATION_NATIVE, REPRESENTATION_UUID})
        EXPECT_EQ(UUID(uuid.toString(form), form), uuid);
    for (const auto form : {REPRESENTATION_NATIVE, REPRESENTATION_PLAIN_HEX})
    {
        EXPECT_EQ(UMID32(umid32.toString(form), form), umid32);
        EXPECT_EQ(UMID64(umid64.toString(form), form), umid64);
        EXPECT_EQ(LocalTag(tag.toString(form), form), tag);
    }
}

TEST(Identifiers, RefuseFormsTheyDoNotReadWithTheirOwnText)
{
    const auto readText = [](const char* name)
    {
        return L"Don't know how to initialize " + Exceptions::toWide(name) +
               L" in the given string representation format";
    };
    using F = Exceptions::InvalidFormat;
    for (const auto form : {REPRESENTATION_PLAIN_HEX, REPRESENTATION_UUID})
        EXPECT_EQ(thrownMessage<F>([&] { UniversalLabel(L"", form); }), readText("UniversalLabel"));
    for (const auto form : {REPRESENTATION_PLAIN_HEX, REPRESENTATION_OID})
        EXPECT_EQ(thrownMessage<F>([&] { UUID(L"", form); }), readText("UUID"));
    for (const auto form : {REPRESENTATION_OID, REPRESENTATION_UUID})
    {
        EXPECT_EQ(thrownMessage<F>([&] { UMID32(L"", form); }), readText("UMID32"));
        EXPECT_EQ(thrownMessage<F>([&] { UMID64(L"", form); }), readText("UMID64"));
        EXPECT_EQ(thrownMessage<F>([&] { LocalTag(L"", form); }), readText("LocalTag"));
    }
    const auto undefinedForm = static_cast<StringRepresentationEncodingType>(7);
    EXPECT_EQ(thrownMessage<F>([&] { UUID(L"", undefinedForm); }), readText("UUID"));
}

TEST(Identifiers, WriteOnlyTheirOwnFormNeverDottedHex)
{
    const auto writeText = [](const char* name)
    {
        return L"Don't know how to represent " + Exceptions::toWide(name) +
               L" in the given string representation format";
    };
    using F = Exceptions::InvalidFormat;
    const UniversalLabel label(OP_ATOM_BYTES.data());
    const UUID uuid(RFC4122_BYTES.data());
    const UMID32 umid32(counting(32).data());
    const UMID64 umid64(counting(64).data());
    const LocalTag tag(1);
    for (const auto form :
         {REPRESENTATION_DOTTED_HEX, REPRESENTATION_PLAIN_HEX, REPRESENTATION_UUID})
        EXPECT_EQ(thrownMessage<F>([&] { label.toString(form); }), writeText("UniversalLabel"));
    for (const auto form :
         {REPRESENTATION_DOTTED_HEX, REPRESENTATION_PLAIN_HEX, REPRESENTATION_OID})
        EXPECT_EQ(thrownMessage<F>([&] { uuid.toString(form); }), writeText("UUID"));
    for (const auto form : {REPRESENTATION_DOTTED_HEX, REPRESENTATION_OID, REPRESENTATION_UUID})
    {
        EXPECT_EQ(thrownMessage<F>([&] { umid32.toString(form); }), writeText("UMID32"));
        EXPECT_EQ(thrownMessage<F>([&] { umid64.toString(form); }), writeText("UMID64"));
        EXPECT_EQ(thrownMessage<F>([&] { tag.toString(form); }), writeText("LocalTag"));
    }
}

TEST(Identifiers, BadTextGivesTheTextFormsErrors)
{
    using Length = Exceptions::InvalidLength;
    using Label = Exceptions::InvalidLabel;
    EXPECT_EQ(thrownMessage<Length>([] { UniversalLabel(OP_ATOM_DOTTED + L"."); }),
              L"Not enough data");
    EXPECT_EQ(thrownMessage<Label>(
                  [] { UniversalLabel(L"06.0e.2b.34.04.01.01.02.0d.01.02.01.10.01.0g.00"); }),
              L"Label contains non Hexadecimal characters");
    EXPECT_EQ(thrownMessage<Length>(
                  [] { UUID(L"f81d4fae-7dec-11d0-a765-00a0c91e6bf", REPRESENTATION_UUID); }),
              L"Not enough data");
    EXPECT_EQ(thrownMessage<Label>(
                  [] { UUID(L"f81d4fae07dec-11d0-a765-00a0c91e6bf6", REPRESENTATION_UUID); }),
              L"Expections an separator that was not a hexadecimal character");
    EXPECT_EQ(thrownMessage<Label>([] { LocalTag(L"3c0a00", REPRESENTATION_PLAIN_HEX); }),
              L"Expecting 0x in the start of the plain hexadecimal string representation");
    EXPECT_EQ(thrownMessage<Length>([] { LocalTag(L"0x3c0", REPRESENTATION_PLAIN_HEX); }),
              L"Not enough data");
    EXPECT_EQ(thrownMessage<Label>([] { UniversalLabel(L"1.3.53.256", REPRESENTATION_OID); }),
              L"OID contains values not in [0 - 255].");
    EXPECT_EQ(thrownMessage<Label>([] { UniversalLabel(L"1.3.52.4", REPRESENTATION_OID); }),
              L"OID contains initial values not according to type");
    EXPECT_EQ(thrownMessage<Length>([] { UniversalLabel(L"1.3", REPRESENTATION_OID); }),
              L"Not enough data");
    EXPECT_EQ(
        thrownMessage<Length>([] { UniversalLabel(OP_ATOM_OID + L".0.0.1", REPRESENTATION_OID); }),
        L"OID contains more elements than expected");
}

TEST(Identifiers, ReadExactlyTheirSizeFromASource)
{
    Bytes stream = RFC4122_BYTES;
    stream.push_back(0x99);
    PiecewiseSource chunks(stream, 3);
    EXPECT_EQ(bytesOf(UUID(chunks)), RFC4122_BYTES);
    EXPECT_EQ(chunks.remaining(), 1u);

    auto source = sourceOf(counting(64));
    EXPECT_EQ(bytesOf(UMID64(source)), counting(64));
    auto tagSource = sourceOf({0x01, 0x02});
    EXPECT_EQ(LocalTag(tagSource).value(), 0x0102);

    auto shortSource = sourceOf(Bytes(OP_ATOM_BYTES.begin(), OP_ATOM_BYTES.begin() + 15));
    EXPECT_EQ(thrownMessage<Exceptions::InvalidLength>([&] { UniversalLabel{shortSource}; }),
              L"Invalid data size in Value: 15 of 16 bytes");
    auto shortUMID = sourceOf(counting(31));
    EXPECT_THROW(UMID32{shortUMID}, Exceptions::InvalidLength);
}

TEST(Identifiers, AreValuesComparedAsUnsignedBytes)
{
    Bytes low = RFC4122_BYTES;
    Bytes high = RFC4122_BYTES;
    low[15] = 0x7f;
    high[15] = 0x80;
    UUID a(low.data());
    const UUID b(high.data());
    EXPECT_LT(a, b);
    EXPECT_NE(a, b);

    UUID copy(a);
    a = b;
    EXPECT_EQ(a, b);
    EXPECT_EQ(bytesOf(copy), low);
    EXPECT_EQ(copy[15], 0x7f);
    EXPECT_THROW(copy[16], std::out_of_range);

    const auto clone = b.clone();
    EXPECT_NE(Visitors::getAs<UUID>(*clone), nullptr);
    EXPECT_EQ(bytesOf(*clone), high);
    EXPECT_EQ(serialized(b), high);
    EXPECT_EQ(UMID64(counting(64).data()).size(), 64);
    EXPECT_EQ(LocalTag(1).size(), 2);
}

TEST(References, HoldTheUUIDOfTheirTargetAndKeepTheirKind)
{
    const UUID target(RFC4122_BYTES.data());
    const StrongReference strong(target);
    auto source = sourceOf(RFC4122_BYTES);
    const WeakReference weak(source);
    EXPECT_EQ(strong.uuid(), target);
    EXPECT_EQ(weak.uuid(), target);
    EXPECT_TRUE(strong == weak);
    EXPECT_EQ(serialized(strong), RFC4122_BYTES);
    EXPECT_EQ(strong.size(), 16);

    EXPECT_NE(Visitors::getAs<StrongReference>(strong), nullptr);
    EXPECT_EQ(Visitors::getAs<WeakReference>(strong), nullptr);
    EXPECT_NE(Visitors::getAs<WeakReference>(*weak.clone()), nullptr);
    EXPECT_EQ(Visitors::asReference(weak), &weak);
    EXPECT_EQ(Visitors::asUID(weak), nullptr);
}
