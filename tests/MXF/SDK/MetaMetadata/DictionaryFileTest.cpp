// The compiled dictionary of data/ as the loader reads it: against its text source, read with the
// compiler's parser, and against the header metadata that the fixtures of tests/data carry.
#include "DictionarySource.h"
#include "MXF/SDK/DataIO/File/FileDataSource.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/MetaMetadata/AttributeRequiredStatus.h"
#include "MXF/SDK/MetaMetadata/BinaryLoader.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"
#include "TestSupport.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <set>

using namespace Halvorn::Test;
using Halvorn::Test::Support::Bytes;
using Halvorn::Test::Support::hexBytes;
using MXF::SDK::Platform::Int64;
using MXF::SDK::Platform::UInt32;
using MXF::SDK::Platform::UInt64;
using Halvorn::Test::Support::operator+;
using Halvorn::Test::Support::forEachSplit;
using Halvorn::Test::Support::number;
using Halvorn::Test::Support::thrownMessage;
using namespace MXF::SDK;
using namespace MXF::SDK::MetaMetadata;
using Types::LocalTag;
using Types::UniversalLabel;
namespace DictC = Halvorn::DictC;

namespace
{

const Dictionary& loadedDictionary()
{
    static const std::unique_ptr<Dictionary> dictionary = []
    {
        auto loaded = std::make_unique<Dictionary>();
        BinaryLoader::load(Platform::fromUtf8(HALVORN_DICTIONARY_FILE), *loaded);
        return loaded;
    }();
    return *dictionary;
}

UniversalLabel ul(const DictC::Label& label)
{
    return UniversalLabel(label.data());
}

std::wstring wide(const std::string& ascii)
{
    return std::wstring(ascii.begin(), ascii.end());
}

// The source as the compiler's parser reads it, with its names resolved.
class SourceIndex
{
public:
    SourceIndex()
    {
        const std::string list = HALVORN_DICTIONARY_SOURCES;
        for (std::size_t start = 0; start <= list.size();)
        {
            const std::size_t end = std::min(list.find('|', start), list.size());
            const std::string path = list.substr(start, end - start);
            const Bytes text = Support::bytesAt(path);
            DictC::parseSource(std::string(text.begin(), text.end()), path, source_);
            start = end + 1;
        }
        for (const DictC::ElementDefinition& element : source_.elements)
            elements_[element.name] = &element;
        for (const DictC::SetDefinition& set : source_.sets)
            sets_[set.name] = &set;
        for (const DictC::Extension& extension : source_.extensions)
            for (const DictC::AttributeDefinition& attribute : extension.attributes)
                extensions_[extension.set].push_back(&attribute);
    }

    const DictC::Source& source() const { return source_; }

    // A set holds its own attributes, those its extensions add, and those of its ancestors.
    std::map<DictC::Label, const DictC::AttributeDefinition*>
    attributes(const DictC::SetDefinition& set) const
    {
        std::map<DictC::Label, const DictC::AttributeDefinition*> all;
        for (const DictC::SetDefinition* at = &set; at != nullptr; at = parent(*at))
        {
            std::vector<const DictC::AttributeDefinition*> own;
            for (const DictC::AttributeDefinition& attribute : at->attributes)
                own.push_back(&attribute);
            if (const auto added = extensions_.find(at->name); added != extensions_.end())
                own.insert(own.end(), added->second.begin(), added->second.end());
            for (const DictC::AttributeDefinition* attribute : own)
                all[labelOf(*attribute)] = attribute;
        }
        return all;
    }

    DictC::Label labelOf(const DictC::AttributeDefinition& attribute) const
    {
        return attribute.ownLabel ? *attribute.ownLabel : elements_.at(attribute.name)->label;
    }

    // "A reference to a set allows that set and every set derived from it."
    std::set<DictC::Label> allowedKeys(const std::vector<std::string>& targets) const
    {
        std::set<DictC::Label> keys;
        for (const DictC::SetDefinition& set : source_.sets)
            for (const DictC::SetDefinition* at = &set; at != nullptr; at = parent(*at))
                for (const std::string& target : targets)
                    if (at->name == target)
                        keys.insert(set.key);
        return keys;
    }

private:
    const DictC::SetDefinition* parent(const DictC::SetDefinition& set) const
    {
        return set.parent.empty() ? nullptr : sets_.at(set.parent);
    }

    DictC::Source source_;
    std::map<std::string, const DictC::ElementDefinition*> elements_;
    std::map<std::string, const DictC::SetDefinition*> sets_;
    std::map<std::string, std::vector<const DictC::AttributeDefinition*>> extensions_;
};

std::set<DictC::Label> keysOf(const std::vector<KLV::Key>& keys)
{
    std::set<DictC::Label> labels;
    for (const KLV::Key& key : keys)
    {
        DictC::Label label{};
        std::copy(key.data(), key.data() + 16, label.begin());
        labels.insert(label);
    }
    return labels;
}

void expectElement(const MetaElement& element, const DictC::ValueForm& form,
                   const SourceIndex& index, const std::string& where)
{
    SCOPED_TRACE(where);
    EXPECT_EQ(element.dataType(), form.dataType);
    switch (form.kind)
    {
    case DictC::ValueKind::Simple:
    {
        const auto* simple = metaElementAs<MetaSimpleElement>(element);
        ASSERT_NE(simple, nullptr);
        ASSERT_EQ(simple->enumerations().size(), form.enumeration.size());
        for (std::size_t i = 0; i < form.enumeration.size(); ++i)
        {
            const auto* value = Types::Visitors::asSimpleDataType(*simple->enumerations()[i]);
            ASSERT_NE(value, nullptr);
            EXPECT_EQ(Bytes(value->data(), value->data() + value->size()), form.enumeration[i]);
        }
        break;
    }
    case DictC::ValueKind::Reference:
    {
        const auto* reference = metaElementAs<MetaReferenceElement>(element);
        ASSERT_NE(reference, nullptr);
        EXPECT_EQ(keysOf(reference->allowedReferences()), index.allowedKeys(form.targets));
        break;
    }
    case DictC::ValueKind::Collection:
    {
        const auto* collection = metaElementAs<MetaCollection>(element);
        ASSERT_NE(collection, nullptr);
        EXPECT_EQ(collection->dataSubType(), form.itemType);
        EXPECT_EQ(collection->minimum(), form.minimum);
        EXPECT_EQ(collection->maximum(), form.maximum);
        break;
    }
    case DictC::ValueKind::ReferenceCollection:
    {
        const auto* collection = metaElementAs<MetaReferenceCollection>(element);
        ASSERT_NE(collection, nullptr);
        EXPECT_EQ(collection->dataSubType(), form.itemType);
        EXPECT_EQ(collection->minimum(), form.minimum);
        EXPECT_EQ(collection->maximum(), form.maximum);
        EXPECT_EQ(keysOf(collection->allowedReferences()), index.allowedKeys(form.targets));
        break;
    }
    }
}

} // namespace

TEST(DictionaryFile, HoldsEveryElementSetAttributeAndTagOfItsSource)
{
    const Dictionary& dictionary = loadedDictionary();
    const SourceIndex index;
    const DictC::Source& source = index.source();
    ASSERT_GT(source.sets.size(), 100u);

    EXPECT_EQ(dictionary.metaElementCount(), source.elements.size());
    for (const DictC::ElementDefinition& element : source.elements)
    {
        const MetaElement* loaded = dictionary.metaElement(ul(element.label));
        ASSERT_NE(loaded, nullptr) << element.name;
        EXPECT_EQ(loaded->property(L"name"), wide(element.name));
        expectElement(*loaded, element.value, index, element.name);
    }

    EXPECT_EQ(dictionary.metaMetadataSetCount(), source.sets.size());
    std::map<std::uint16_t, DictC::Label> tags;
    for (const DictC::SetDefinition& set : source.sets)
    {
        SCOPED_TRACE(set.name);
        const MetaMetadataSet* loaded = dictionary.metaMetadataSet(ul(set.key));
        ASSERT_NE(loaded, nullptr);
        EXPECT_EQ(loaded->property(L"name"), wide(set.name));
        const auto expected = index.attributes(set);
        EXPECT_EQ(loaded->metaAttributes().size(), expected.size());
        for (const auto& [label, definition] : expected)
        {
            SCOPED_TRACE(definition->name);
            const auto attribute = loaded->metaAttribute(ul(label));
            ASSERT_NE(attribute, nullptr);
            EXPECT_EQ(attribute->property(L"name"), wide(definition->name));
            EXPECT_EQ(attribute->requiredStatus(), definition->requiredStatus);
            EXPECT_EQ(attribute->property(L"MetadataElementRequiredStatus"),
                      AttributeRequiredStatus::instance().text(definition->requiredStatus));
            ASSERT_EQ(attribute->localTag() != nullptr, definition->localTag.has_value());
            if (definition->localTag)
            {
                EXPECT_EQ(attribute->localTag()->value(), *definition->localTag);
                tags[*definition->localTag] = label;
            }
            if (definition->ownLabel)
                expectElement(attribute->metaElement(), definition->ownValue, index,
                              definition->name);
            else
                EXPECT_EQ(&attribute->metaElement(), dictionary.metaElement(ul(label)));
        }
    }

    EXPECT_EQ(dictionary.localTagCount(), tags.size());
    for (const auto& [tag, label] : tags)
    {
        const UniversalLabel* found = dictionary.universalLabel(LocalTag(tag));
        ASSERT_NE(found, nullptr) << tag;
        EXPECT_TRUE(*found == ul(label)) << tag;
        ASSERT_NE(dictionary.localTag(ul(label)), nullptr) << tag;
        EXPECT_EQ(dictionary.localTag(ul(label))->value(), tag);
    }
}

namespace
{

using Platform::Byte;

bool startsWith(const Byte* key, const char* hex)
{
    const Bytes head = hexBytes(hex);
    return std::equal(head.begin(), head.end(), key);
}

std::string hexText(const Byte* bytes, std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
    {
        static const char digits[] = "0123456789abcdef";
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 0xF];
        text += i + 1 < size ? "." : "";
    }
    return text;
}

struct Walk
{
    std::size_t sets = 0;
    std::size_t properties = 0;
    std::vector<std::string> faults;
};

// Every local set with 2-byte tags and lengths (key byte 5 is 53) of one file, each property
// resolved through the primer pack that the partition carries, or through the static tags.
void walk(const std::filesystem::path& file, const Dictionary& dictionary, Walk& out)
{
    const std::string name = file.filename().string();
    DataIO::File::FileDataSource source(Platform::fromUtf8(file.string()));
    KLV::KLVReader reader(source);
    std::map<std::uint16_t, Bytes> primer;
    try
    {
        while (!source.eof())
        {
            UInt64 skipped = 0;
            const std::unique_ptr<KLV::KLVItem> item = reader.readKLV(skipped, 0);
            const Byte* key = item->key.data();
            const bool isPrimer = startsWith(key, "06 0e 2b 34 02 05 01 01 0d 01 02 01 01 05 01");
            const bool isSet = key[4] == 0x02 && key[5] == 0x53;
            if ((!isPrimer && !isSet) || item->length > 1 << 20)
                continue;
            Bytes value(item->length);
            item->value.readExact(value.data(), value.size());
            const std::string where = name + " at " + std::to_string(item->keyPosition);
            if (isPrimer)
            {
                // Count, item size 18, then tag and label.
                primer.clear();
                const std::uint32_t count = number(value, 0, 4);
                EXPECT_EQ(number(value, 4, 4), 18u) << where;
                for (std::uint32_t i = 0; i < count; ++i)
                {
                    const std::size_t at = 8 + 18 * std::size_t(i);
                    primer[std::uint16_t(number(value, at, 2))] =
                        Bytes(value.begin() + long(at) + 2, value.begin() + long(at) + 18);
                    if (!dictionary.metaElement(UniversalLabel(value.data() + at + 2)) &&
                        !dictionary.localTag(UniversalLabel(value.data() + at + 2)))
                        out.faults.push_back(where + ": primer label " +
                                             hexText(value.data() + at + 2, 16) + " unknown");
                }
                continue;
            }
            ++out.sets;
            const MetaMetadataSet* set = dictionary.metaMetadataSet(UniversalLabel(key));
            if (set == nullptr)
            {
                out.faults.push_back(where + ": set key " + hexText(key, 16) + " unknown");
                continue;
            }
            for (std::size_t at = 0; at + 4 <= value.size(); at += 4 + number(value, at + 2, 2))
            {
                ++out.properties;
                const auto tag = std::uint16_t(number(value, at, 2));
                const UniversalLabel* label = nullptr;
                std::unique_ptr<UniversalLabel> fromPrimer;
                if (const auto entry = primer.find(tag); entry != primer.end())
                    label =
                        (fromPrimer = std::make_unique<UniversalLabel>(entry->second.data())).get();
                else if (tag < 0x8000)
                    label = dictionary.universalLabel(LocalTag(tag));
                if (label == nullptr)
                    out.faults.push_back(where + ": tag " + std::to_string(tag) + " unresolved");
                else if (set->metaAttribute(*label) == nullptr)
                    out.faults.push_back(where + ": " + hexText(label->data(), 16) +
                                         " no attribute of " + hexText(key, 16));
            }
        }
    }
    catch (const Exceptions::BaseException& e)
    {
        // Damaged files end the walk where their damage starts.
        if (name.rfind("damaged_", 0) != 0)
            out.faults.push_back(name + ": " + e.what());
    }
}

} // namespace

TEST(DictionaryFile, KnowsEverySetAndPropertyOfTheFixturesHeaderMetadata)
{
    const Dictionary& dictionary = loadedDictionary();
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(Support::dataDir()))
        // A run-in is the reader's business; this walk starts at the first byte.
        if (entry.path().extension() == ".mxf" &&
            entry.path().filename().string().rfind("runin_", 0) != 0)
            files.push_back(entry.path());
    EXPECT_GE(files.size(), 11u);

    Walk all;
    for (const std::filesystem::path& file : files)
    {
        Walk one;
        walk(file, dictionary, one);
        EXPECT_GT(one.sets, 10u) << file;
        all.sets += one.sets;
        all.properties += one.properties;
        all.faults.insert(all.faults.end(), one.faults.begin(), one.faults.end());
    }
    EXPECT_GT(all.properties, 1000u);
    std::string faults;
    for (const std::string& fault : all.faults)
        faults += fault + "\n";
    EXPECT_TRUE(all.faults.empty()) << faults;
}
