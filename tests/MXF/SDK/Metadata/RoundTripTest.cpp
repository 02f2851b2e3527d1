// The header metadata of the ffmpeg fixtures read and written back. The expectation is made here
// from the file's own bytes with a parser of this test: every set comes back with its key, its
// BER length bytes and its properties byte for byte, the ones its dictionary set has ascending by
// label and the others after them in file order; the primer comes back with the same pairs, in
// ascending order of tags; fill is dropped.
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Types/Strings.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "MetadataTestSupport.h"
#include "TestSupport.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>

using namespace Halvorn::Test::Metadata;
using namespace MXF::SDK;
using MXF::SDK::Metadata::MetadataSet;
using MXF::SDK::Metadata::PartitionMetadata;

namespace
{

struct Property
{
    std::uint16_t tag;
    Bytes bytes; // tag, length and value as in the file
};

bool isFill(const Bytes& key)
{
    return key[4] == 0x01 && key[8] == 0x03 && key[9] == 0x01 && key[10] == 0x02 && key[11] == 0x10;
}

std::vector<Property> properties(const Bytes& value)
{
    std::vector<Property> result;
    for (std::size_t at = 0; at < value.size();)
    {
        const std::size_t length = number(&value[at + 2], 2);
        result.push_back({std::uint16_t(number(&value[at], 2)),
                          Bytes(value.begin() + at, value.begin() + at + 4 + length)});
        at += 4 + length;
    }
    return result;
}

std::map<std::uint16_t, Bytes> primerPairs(const Item& primer)
{
    std::map<std::uint16_t, Bytes> pairs;
    const std::size_t count = number(primer.value.data(), 4);
    for (std::size_t i = 0; i < count; ++i)
    {
        const std::uint8_t* at = &primer.value[8 + 18 * i];
        pairs[std::uint16_t(number(at, 2))] = Bytes(at + 2, at + 18);
    }
    return pairs;
}

// The header metadata of a file: where it starts and its HeaderByteCount.
struct Header
{
    std::size_t start;
    std::uint64_t byteCount;
};

Header headerOf(const Bytes& file)
{
    std::size_t at = 0;
    const Item pack = parseItem(file, at);
    const std::uint64_t byteCount = number(&pack.value[32], 8);
    for (std::size_t next = at; isFill(parseItem(file, next).key); next = at)
        at = next;
    return {at, byteCount};
}

// The expected bytes of one set written back.
Bytes canonicalSet(const Item& set, const std::map<std::uint16_t, Bytes>& primer)
{
    const MetaMetadata::MetaMetadataSet* meta =
        dictionary().metaMetadataSet(Types::UniversalLabel(set.key.data()));
    std::vector<std::pair<Bytes, Bytes>> known;
    Bytes others;
    for (const Property& property : properties(set.value))
    {
        const auto primed = primer.find(property.tag);
        const Types::LocalTag tag(property.tag);
        const Bytes label = primed != primer.end()
                                ? primed->second
                                : Bytes(dictionary().universalLabel(tag)->data(),
                                        dictionary().universalLabel(tag)->data() + 16);
        if (meta != nullptr && meta->metaAttribute(Types::UniversalLabel(label.data())))
            known.emplace_back(label, property.bytes);
        else
            others = others + property.bytes;
    }
    std::stable_sort(known.begin(), known.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    Bytes bytes = set.key + set.ber;
    for (const auto& [label, property] : known)
        bytes = bytes + property;
    return bytes + others;
}

std::vector<std::string> fixtures()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(dataDir()))
        if (entry.path().extension() == ".mxf" &&
            !Halvorn::Test::isAvidFixture(entry.path().filename().string()))
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::unique_ptr<PartitionMetadata> readFixture(const Bytes& file, Header& header, UInt64 piece = 0)
{
    header = headerOf(file);
    auto metadata = std::make_unique<PartitionMetadata>(dictionary());
    // The source stands after the partition pack, as a reader leaves it: the fill is read over.
    std::size_t afterPack = 0;
    parseItem(file, afterPack);
    PiecewiseSource source(file, piece == 0 ? file.size() : piece);
    source.seek(afterPack);
    metadata->read(source, header.byteCount);
    EXPECT_EQ(source.position(), header.start + header.byteCount);
    return metadata;
}

TEST(MetadataRoundTrip, EveryFixtureComesBackSetBySetInCanonicalOrder)
{
    const std::vector<std::string> names = fixtures();
    ASSERT_GE(names.size(), 8u);
    for (const std::string& name : names)
    {
        SCOPED_TRACE(name);
        const Bytes file = fileBytes(name);
        Header header{};
        if (headerOf(file).start + headerOf(file).byteCount > file.size())
        {
            // The header itself is cut: its metadata is given up, with an exception.
            EXPECT_THROW(readFixture(file, header), Exceptions::BaseException);
            continue;
        }
        std::unique_ptr<PartitionMetadata> metadata;
        ASSERT_NO_THROW(metadata = readFixture(file, header));

        std::size_t at = header.start;
        const Item primer = parseItem(file, at);
        const std::map<std::uint16_t, Bytes> pairs = primerPairs(primer);
        Bytes expectedSets;
        std::size_t setCount = 0;
        while (at < header.start + header.byteCount)
        {
            const Item set = parseItem(file, at);
            if (isFill(set.key))
                continue;
            expectedSets = expectedSets + canonicalSet(set, pairs);
            ++setCount;
        }
        EXPECT_EQ(metadata->setCount(), setCount);
        EXPECT_NO_THROW(metadata->preface());
        EXPECT_NO_THROW(metadata->contentStorage());

        const Bytes out = written(*metadata);
        std::size_t outAt = 0;
        const Item outPrimer = parseItem(out, outAt);
        EXPECT_EQ(primerPairs(outPrimer), pairs);
        EXPECT_EQ(outPrimer.ber, primer.ber);
        EXPECT_EQ(Bytes(out.begin() + outAt, out.end()), expectedSets);
        EXPECT_EQ(metadata->size(), out.size());

        // What was written reads back to the very same bytes, and so does the file in pieces.
        EXPECT_EQ(written(*readHeader(out)), out);
        for (const UInt64 piece : oddPieces())
            EXPECT_EQ(written(*readFixture(file, header, piece)), out) << "pieces of " << piece;
    }
}

// Serialised elements, set by set, label by label.
std::vector<std::map<Types::UniversalLabel, Bytes>> elementBytes(PartitionMetadata& metadata)
{
    std::vector<std::map<Types::UniversalLabel, Bytes>> result;
    for (const MetadataSet* set : metadata.sets())
    {
        auto& elements = result.emplace_back();
        for (const auto& [label, element] : set->elements())
        {
            DataIO::Memory::MemoryDataSink sink;
            element->serialize(sink, metadata.partitionDictionary(), 2);
            elements.emplace(label, sink.data());
        }
    }
    return result;
}

TEST(MetadataRoundTrip, ChangingOnePropertyChangesOnlyThatValue)
{
    const Bytes file = fileBytes("opatom_pcm.mxf");
    Header header{};
    std::unique_ptr<PartitionMetadata> original = readFixture(file, header);
    std::unique_ptr<PartitionMetadata> metadata = readFixture(file, header);
    const Bytes before = written(*original);

    const KLV::Key identificationKey(
        Types::UniversalLabel(L"06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.30.00").data());
    const Types::UniversalLabel companyName(L"06.0e.2b.34.01.01.01.02.05.20.07.01.02.01.00.00");
    MetadataSet& identification = metadata->set(identificationKey);
    const std::size_t oldSize = identification.element(companyName).size();
    identification.setValue(companyName, std::make_unique<Types::UTF16String>(L"Halvorn"));

    const Bytes after = written(*metadata);
    EXPECT_EQ(after.size() + oldSize, before.size() + 14);
    std::unique_ptr<PartitionMetadata> again = readHeader(after);
    const auto old = elementBytes(*original);
    const auto now = elementBytes(*again);
    ASSERT_EQ(old.size(), now.size());
    std::vector<Types::UniversalLabel> changed;
    for (std::size_t i = 0; i < old.size(); ++i)
        for (const auto& [label, bytes] : old[i])
            if (now[i].at(label) != bytes)
                changed.push_back(label);
    ASSERT_EQ(changed.size(), 1u);
    EXPECT_EQ(changed[0], companyName);
    const auto* name = Types::Visitors::getAs<Types::UTF16String>(
        *again->set(identificationKey).value(companyName));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name->value(), L"Halvorn");
}

} // namespace
