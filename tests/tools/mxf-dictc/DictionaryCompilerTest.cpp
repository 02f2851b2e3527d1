#include "DictionaryCompiler.h"

#include "DictionarySource.h"

#include <algorithm>
#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

using namespace Halvorn::DictC;

namespace
{

using Bytes = std::vector<std::uint8_t>;

Bytes compile(std::string_view text)
{
    Source source;
    parseSource(text, "test.txt", source);
    return compileDictionary(source);
}

Bytes join(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

// The private key 06 0E 2B 34 00 .. 00 NN of an item of the dictionary file.
Bytes key(std::uint8_t kind)
{
    return {0x06, 0x0E, 0x2B, 0x34, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kind};
}

// Fields 0001 "name" and 0002 NAME, each a 2-byte length and UTF-16BE text.
Bytes name(std::string_view text)
{
    Bytes field = {
        0x00, 0x01, 0x00, 0x08, 0x00, 'n',  0x00, 'a',
        0x00, 'm',  0x00, 'e',  0x00, 0x02, 0x00, static_cast<std::uint8_t>(text.size() * 2)};
    for (const char c : text)
    {
        field.push_back(0x00);
        field.push_back(static_cast<std::uint8_t>(c));
    }
    return field;
}

// Splits the file after the version words into its top-level items, key and length included.
std::vector<Bytes> items(const Bytes& file)
{
    std::vector<Bytes> result;
    std::size_t at = 4;
    while (at < file.size())
    {
        std::size_t length = file[at + 16];
        std::size_t header = 17;
        if (length & 0x80)
        {
            const std::size_t count = length & 0x7F;
            length = 0;
            for (std::size_t i = 0; i < count; ++i)
                length = length * 256 + file[at + 17 + i];
            header += count;
        }
        result.emplace_back(file.begin() + static_cast<std::ptrdiff_t>(at),
                            file.begin() + static_cast<std::ptrdiff_t>(at + header + length));
        at += header + length;
    }
    return result;
}

const Bytes INSTANCE_UID = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
                            0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00};

} // namespace

TEST(DictionaryCompiler, WritesASetWithOneAttributeByteForByte)
{
    const Bytes file = compile("element InstanceUID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00"
                               " UUID\n"
                               "set Thing 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00\n"
                               "    InstanceUID 3c0a Req\n");
    // clang-format off
    const Bytes expected = {
        0x00, 0x02, 0x00, 0x00,                                  // major version 2, minor 0
        // simple element (04), BER length 66
        0x06, 0x0E, 0x2B, 0x34, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04,
        0x42,
        0x00, 0x01, 0x00, 0x08, 0x00, 'n', 0x00, 'a', 0x00, 'm', 0x00, 'e',   // property name
        0x00, 0x02, 0x00, 0x16, 0x00, 'I', 0x00, 'n', 0x00, 's', 0x00, 't', 0x00, 'a', 0x00, 'n',
        0x00, 'c', 0x00, 'e', 0x00, 'U', 0x00, 'I', 0x00, 'D',               // its value
        0x00, 0x03, 0x00, 0x10,                                  // label
        0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
        0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x04, 0x00, 0x04, 0x00, 0x00, 0x00, 0x1B,          // data type 27, UUID
        // set (05), BER length 138 in the long form
        0x06, 0x0E, 0x2B, 0x34, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x05,
        0x81, 0x8A,
        0x00, 0x01, 0x00, 0x08, 0x00, 'n', 0x00, 'a', 0x00, 'm', 0x00, 'e',
        0x00, 0x02, 0x00, 0x0A, 0x00, 'T', 0x00, 'h', 0x00, 'i', 0x00, 'n', 0x00, 'g',
        0x00, 0x03, 0x00, 0x10,                                  // key of the set
        0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
        0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, 0x2F, 0x00,
        0x00, 0x0A, 0x59,                                        // attributes, BER length 89
        // attribute (06), BER length 72
        0x06, 0x0E, 0x2B, 0x34, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x06,
        0x48,
        0x00, 0x01, 0x00, 0x08, 0x00, 'n', 0x00, 'a', 0x00, 'm', 0x00, 'e',
        0x00, 0x02, 0x00, 0x16, 0x00, 'I', 0x00, 'n', 0x00, 's', 0x00, 't', 0x00, 'a', 0x00, 'n',
        0x00, 'c', 0x00, 'e', 0x00, 'U', 0x00, 'I', 0x00, 'D',
        0x00, 0x0B, 0x00, 0x10,                                  // label of the attribute
        0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
        0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00,          // required status 0, "Req"
        0x00, 0x0E, 0x00, 0x02, 0x3C, 0x0A,                      // local tag
        // tag table (07), BER length 18: one pair
        0x06, 0x0E, 0x2B, 0x34, 0x00, 0x00, 0x00, 0x00,
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x07,
        0x12,
        0x3C, 0x0A,
        0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
        0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00};
    // clang-format on
    EXPECT_EQ(file, expected);
}

TEST(DictionaryCompiler, WritesEachKindOfElementWithItsFields)
{
    const Bytes file = compile(
        "element InstanceUID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 UUID\n"
        "element Layout 06.0e.2b.34.01.01.01.01.04.01.03.01.04.00.00.00 UInt8\n"
        "    value 0 FullFrame\n"
        "    value 1 SeparateFields\n"
        "element Lines 06.0e.2b.34.01.01.01.02.04.01.03.02.05.00.00.00 Batch 2..* of Int32\n"
        "element Parts 06.0e.2b.34.01.01.01.02.06.01.01.04.06.09.00.00 Array of StrongReference"
        " to Base\n"
        "element Owner 06.0e.2b.34.01.01.01.04.06.01.01.04.01.08.00.00 WeakReference to any\n"
        "set Base 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.01.00\n"
        "    InstanceUID 3c0a Req\n"
        "set Derived 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.02.00 : Base\n"
        "    Layout 320c B.Effort\n"
        "    Lines 320d Opt\n");
    const std::vector<Bytes> found = items(file);
    ASSERT_EQ(found.size(), 8u);

    const Bytes layoutLabel = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
                               0x04, 0x01, 0x03, 0x01, 0x04, 0x00, 0x00, 0x00};
    EXPECT_EQ(found[1], join({key(0x04),
                              {0x45}, // simple element, length 69
                              name("Layout"),
                              {0x00, 0x03, 0x00, 0x10},
                              layoutLabel,
                              {0x00, 0x04, 0x00, 0x04, 0x00, 0x00, 0x00, 0x14}, // UInt8 is 20
                              // enumeration: BER length 10, then identifier 20, size 1, value
                              {0x00, 0x09, 0x0A, 0x00, 0x14, 0x00, 0x01, 0x00, 0x00, 0x14, 0x00,
                               0x01, 0x01}}));

    const Bytes linesLabel = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x02,
                              0x04, 0x01, 0x03, 0x02, 0x05, 0x00, 0x00, 0x00};
    EXPECT_EQ(found[2], join({key(0x01),
                              {0x4E}, // collection, length 78
                              name("Lines"),
                              {0x00, 0x03, 0x00, 0x10},
                              linesLabel,
                              {0x00, 0x04, 0x00, 0x04, 0x00, 0x00, 0x00, 0x01},    // Batch
                              {0x00, 0x05, 0x00, 0x04, 0x00, 0x00, 0x00, 0x06},    // of Int32
                              {0x00, 0x06, 0x00, 0x04, 0x00, 0x00, 0x00, 0x02},    // at least 2
                              {0x00, 0x07, 0x00, 0x04, 0xFF, 0xFF, 0xFF, 0xFF}})); // any number

    // The target Base allows Base and Derived, which derives from it, in source order.
    const Bytes partsLabel = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x02,
                              0x06, 0x01, 0x01, 0x04, 0x06, 0x09, 0x00, 0x00};
    const Bytes baseKey = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
                           0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x00};
    const Bytes derivedKey = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
                              0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, 0x02, 0x00};
    EXPECT_EQ(found[3],
              join({key(0x02),
                    {0x7B}, // reference collection, length 123
                    name("Parts"),
                    {0x00, 0x03, 0x00, 0x10},
                    partsLabel,
                    {0x00, 0x04, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00}, // Array
                    {0x00, 0x05, 0x00, 0x04, 0x00, 0x00, 0x00, 0x1D}, // of strong refs
                    {0x00, 0x06, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00},
                    {0x00, 0x07, 0x00, 0x04, 0xFF, 0xFF, 0xFF, 0xFF},
                    // allowed references: BER length 42, 2-byte length 40, count 2,
                    // item size 16, the keys
                    {0x00, 0x08, 0x2A, 0x00, 0x28, 0x00, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x10},
                    baseKey,
                    derivedKey}));

    // Any target: no list at all.
    const Bytes ownerLabel = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x04,
                              0x06, 0x01, 0x01, 0x04, 0x01, 0x08, 0x00, 0x00};
    EXPECT_EQ(found[4], join({key(0x03),
                              {0x36}, // reference element, length 54
                              name("Owner"),
                              {0x00, 0x03, 0x00, 0x10},
                              ownerLabel,
                              {0x00, 0x04, 0x00, 0x04, 0x00, 0x00, 0x00, 0x1E}})); // weak ref

    const Bytes instanceAttribute = join({key(0x06),
                                          {0x48}, // 72
                                          name("InstanceUID"),
                                          {0x00, 0x0B, 0x00, 0x10},
                                          INSTANCE_UID,
                                          {0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00},
                                          {0x00, 0x0E, 0x00, 0x02, 0x3C, 0x0A}});
    EXPECT_EQ(found[5], join({key(0x05),
                              {0x81, 0x88}, // 136
                              name("Base"),
                              {0x00, 0x03, 0x00, 0x10},
                              baseKey,
                              {0x00, 0x0A, 0x59}, // 89
                              instanceAttribute}));

    // Derived holds the attribute of Base first; its attributes take a two-byte BER length.
    const Bytes layoutAttribute =
        join({key(0x06),
              {0x3E}, // 62
              name("Layout"),
              {0x00, 0x0B, 0x00, 0x10},
              layoutLabel,
              {0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x03}, // B.Effort
              {0x00, 0x0E, 0x00, 0x02, 0x32, 0x0C}});
    const Bytes linesAttribute = join({key(0x06),
                                       {0x3C}, // 60
                                       name("Lines"),
                                       {0x00, 0x0B, 0x00, 0x10},
                                       linesLabel,
                                       {0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x04}, // Opt
                                       {0x00, 0x0E, 0x00, 0x02, 0x32, 0x0D}});
    EXPECT_EQ(found[6], join({key(0x05),
                              {0x82, 0x01, 0x2B}, // 299
                              name("Derived"),
                              {0x00, 0x03, 0x00, 0x10},
                              derivedKey,
                              {0x00, 0x0A, 0x81, 0xF5}, // 89 + 79 + 77 = 245
                              instanceAttribute,
                              layoutAttribute,
                              linesAttribute}));

    // The tag table in ascending order of tag.
    EXPECT_EQ(found[7], join({key(0x07),
                              {0x36}, // 3 pairs of 18
                              {0x32, 0x0C},
                              layoutLabel,
                              {0x32, 0x0D},
                              linesLabel,
                              {0x3C, 0x0A},
                              INSTANCE_UID}));
}

TEST(DictionaryCompiler, AddsExtensionsAfterTheOwnAttributesOfTheSetAndOfItsDerivedSets)
{
    const Bytes file =
        compile("element InstanceUID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 UUID\n"
                "element Code 06.0e.2b.34.01.01.01.02.05.20.07.01.07.00.00.00 UL\n"
                "element AppCode a0.22.00.60.94.eb.75.cb.96.c4.69.92.4f.62.11.d3 Int32\n"
                "set Base 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.01.00\n"
                "    InstanceUID 3c0a Req\n"
                "set Derived 06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.02.00 : Base\n"
                "    Code 3c05 Opt\n"
                "extend Base\n"
                "    AppCode - Opt\n");
    const std::vector<Bytes> found = items(file);
    ASSERT_EQ(found.size(), 6u);

    const Bytes instanceAttribute = join({key(0x06),
                                          {0x48},
                                          name("InstanceUID"),
                                          {0x00, 0x0B, 0x00, 0x10},
                                          INSTANCE_UID,
                                          {0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x00},
                                          {0x00, 0x0E, 0x00, 0x02, 0x3C, 0x0A}});
    // No static tag: no 000E field.
    const Bytes appCodeAttribute =
        join({key(0x06),
              {0x3A}, // 58
              name("AppCode"),
              {0x00, 0x0B, 0x00, 0x10, 0xA0, 0x22, 0x00, 0x60, 0x94, 0xEB,
               0x75, 0xCB, 0x96, 0xC4, 0x69, 0x92, 0x4F, 0x62, 0x11, 0xD3},
              {0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x04}});
    const Bytes codeAttribute = join({key(0x06),
                                      {0x3A}, // 58
                                      name("Code"),
                                      {0x00, 0x0B, 0x00, 0x10, 0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01,
                                       0x01, 0x02, 0x05, 0x20, 0x07, 0x01, 0x07, 0x00, 0x00, 0x00},
                                      {0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x04},
                                      {0x00, 0x0E, 0x00, 0x02, 0x3C, 0x05}});
    EXPECT_EQ(found[3], join({key(0x05),
                              {0x81, 0xD4}, // 212
                              name("Base"),
                              {0x00, 0x03, 0x00, 0x10, 0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53,
                               0x01, 0x01, 0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, 0x01, 0x00},
                              {0x00, 0x0A, 0x81, 0xA4}, // 89 + 75 = 164
                              instanceAttribute,
                              appCodeAttribute}));
    EXPECT_EQ(found[4], join({key(0x05),
                              {0x82, 0x01, 0x25}, // 293
                              name("Derived"),
                              {0x00, 0x03, 0x00, 0x10, 0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53,
                               0x01, 0x01, 0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, 0x02, 0x00},
                              {0x00, 0x0A, 0x81, 0xEF}, // 89 + 75 + 75 = 239
                              instanceAttribute,
                              appCodeAttribute,
                              codeAttribute}));
}

TEST(DictionaryCompiler, NestsTheElementOfAnAttributeThatBringsItsOwn)
{
    const Bytes file = compile(
        "element InstanceUID 06.0e.2b.34.01.01.01.01.01.01.15.02.00.00.00.00 UUID\n"
        "set Root 80.53.08.00.36.21.08.04.b3.b3.98.a5.1c.90.11.d4\n"
        "    InstanceUID 3c0a Req\n"
        "    FormatVersion 0004 Opt 06.0e.2b.34.01.01.01.02.06.01.01.07.08.00.00.00 UInt32\n");
    const std::vector<Bytes> found = items(file);
    ASSERT_EQ(found.size(), 3u); // the nested element is no top-level item

    const Bytes label = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x02,
                         0x06, 0x01, 0x01, 0x07, 0x08, 0x00, 0x00, 0x00};
    const Bytes attribute = join({key(0x06),
                                  {0x81, 0xA6}, // 166
                                  name("FormatVersion"),
                                  {0x00, 0x0B, 0x00, 0x10},
                                  label,
                                  {0x00, 0x0C, 0x00, 0x04, 0x00, 0x00, 0x00, 0x04},
                                  {0x00, 0x0E, 0x00, 0x02, 0x00, 0x04},
                                  {0x00, 0x0D, 0x57}, // 87: a simple element item
                                  key(0x04),
                                  {0x46}, // 70
                                  name("FormatVersion"),
                                  {0x00, 0x03, 0x00, 0x10},
                                  label,
                                  {0x00, 0x04, 0x00, 0x04, 0x00, 0x00, 0x00, 0x12}}); // UInt32
    const Bytes& set = found[1];
    EXPECT_TRUE(std::search(set.begin(), set.end(), attribute.begin(), attribute.end()) !=
                set.end());
    EXPECT_EQ(set.size(), 16u + 3 + 322); // BER 82 01 42
    EXPECT_EQ(Bytes(set.begin() + 16, set.begin() + 19), (Bytes{0x82, 0x01, 0x42}));
}

TEST(DictionaryCompiler, WritesEnumerationValuesInTheWireFormOfTheElementsType)
{
    const Bytes file =
        compile("element Small 06.0e.2b.34.01.01.01.01.03.01.02.01.02.00.00.00 Int16\n"
                "    value -2 minus two\n"
                "    value 0x7fff the largest\n"
                "element Pattern 06.0e.2b.34.01.01.01.05.01.02.02.03.00.00.00.00 UL\n"
                "    value 06.0e.2b.34.04.01.01.02.0d.01.02.01.10.03.00.00 OP-Atom\n");
    const std::vector<Bytes> found = items(file);
    ASSERT_EQ(found.size(), 3u);

    const Bytes small = {0x00, 0x09, 0x0C,                    // enumeration, 12 bytes
                         0x00, 0x05, 0x00, 0x02, 0xFF, 0xFE,  // Int16 -2
                         0x00, 0x05, 0x00, 0x02, 0x7F, 0xFF}; // Int16 32767
    EXPECT_EQ(Bytes(found[0].end() - static_cast<std::ptrdiff_t>(small.size()), found[0].end()),
              small);
    const Bytes pattern = {0x00, 0x09, 0x14, 0x00, 0x17, 0x00, 0x10, // UL, 16 bytes
                           0x06, 0x0E, 0x2B, 0x34, 0x04, 0x01, 0x01, 0x02,
                           0x0D, 0x01, 0x02, 0x01, 0x10, 0x03, 0x00, 0x00};
    EXPECT_EQ(Bytes(found[1].end() - static_cast<std::ptrdiff_t>(pattern.size()), found[1].end()),
              pattern);
    // No set, no tag: the table is there, empty.
    EXPECT_EQ(found[2], join({key(0x07), {0x00}}));
}
