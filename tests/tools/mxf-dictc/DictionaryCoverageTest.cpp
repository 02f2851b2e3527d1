// The compiled dictionary of data/ against what real header metadata holds: the sets, properties
// and primer entries that MediaInfo traced in the fixtures, and those of Avid OP-Atom files. The
// dictionary file is read here with a reader of its own, not with the compiler's code.

#include "DictionaryCompiler.h"
#include "DictionarySource.h"
#include "TestSupport.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace
{

using Bytes = std::vector<std::uint8_t>;
using Label = std::array<std::uint8_t, 16>;

Bytes readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Hex digits in any grouping: "06.0e.2b.34...", "060E2B34-0101-...".
Label label(std::string_view text)
{
    Label result{};
    std::size_t count = 0;
    int high = -1;
    for (const char c : text)
    {
        const int digit = hexDigit(c);
        if (digit < 0)
            continue;
        if (high < 0)
        {
            high = digit;
            continue;
        }
        if (count < result.size())
            result[count] = static_cast<std::uint8_t>(high * 16 + digit);
        ++count;
        high = -1;
    }
    EXPECT_EQ(count, 16u) << text;
    return result;
}

std::string text(const Label& value)
{
    std::string result;
    for (const std::uint8_t byte : value)
    {
        static const char digits[] = "0123456789abcdef";
        if (!result.empty())
            result += '.';
        result += digits[byte >> 4];
        result += digits[byte & 0xF];
    }
    return result;
}

std::string tagText(std::uint16_t tag)
{
    std::ostringstream out;
    out << std::hex;
    out.width(4);
    out.fill('0');
    out << tag;
    return out.str();
}

// What the dictionary file describes: sets with their attributes, the static tag table.
struct Dictionary
{
    std::map<Label, std::map<Label, std::optional<std::uint16_t>>> sets;
    std::map<std::uint16_t, Label> tags;

    bool hasAttribute(const Label& value) const
    {
        for (const auto& [key, attributes] : sets)
            if (attributes.count(value))
                return true;
        return false;
    }
};

class DictionaryReader
{
public:
    explicit DictionaryReader(Bytes bytes) : bytes_(std::move(bytes)) {}

    Dictionary read()
    {
        Dictionary dictionary;
        EXPECT_EQ(number(2), 2u) << "major version";
        number(2);
        while (at_ < bytes_.size())
        {
            const Label key = labelAt();
            const std::size_t end = length() + at_;
            const Label prefix = {0x06, 0x0E, 0x2B, 0x34};
            EXPECT_TRUE(std::equal(key.begin(), key.begin() + 15, prefix.begin()));
            if (key[15] == 0x05)
                readSet(end, dictionary);
            else if (key[15] == 0x07)
                while (at_ < end)
                {
                    const auto tag = static_cast<std::uint16_t>(number(2));
                    dictionary.tags[tag] = labelAt();
                }
            at_ = end;
        }
        return dictionary;
    }

private:
    std::size_t number(unsigned size)
    {
        std::size_t value = 0;
        for (unsigned i = 0; i < size; ++i)
            value = value * 256 + bytes_.at(at_++);
        return value;
    }

    std::size_t length()
    {
        const std::size_t first = number(1);
        return first < 0x80 ? first : number(first & 0x7F);
    }

    Label labelAt()
    {
        Label value{};
        for (std::uint8_t& byte : value)
            byte = bytes_.at(at_++);
        return value;
    }

    // Fields 0008, 0009, 000A and 000D have a BER length, the others two bytes.
    std::size_t fieldLength(std::uint16_t tag)
    {
        return tag == 0x0008 || tag == 0x0009 || tag == 0x000A || tag == 0x000D ? length()
                                                                                : number(2);
    }

    void readSet(std::size_t end, Dictionary& dictionary)
    {
        std::map<Label, std::optional<std::uint16_t>> attributes;
        Label key{};
        while (at_ < end)
        {
            const auto tag = static_cast<std::uint16_t>(number(2));
            const std::size_t size = fieldLength(tag);
            const std::size_t next = at_ + size;
            if (tag == 0x0003)
                key = labelAt();
            if (tag == 0x000A)
                while (at_ < next)
                {
                    labelAt();
                    const std::size_t attributeEnd = length() + at_;
                    readAttribute(attributeEnd, attributes);
                    at_ = attributeEnd;
                }
            at_ = next;
        }
        dictionary.sets[key] = attributes;
    }

    void readAttribute(std::size_t end, std::map<Label, std::optional<std::uint16_t>>& into)
    {
        Label attribute{};
        std::optional<std::uint16_t> localTag;
        while (at_ < end)
        {
            const auto tag = static_cast<std::uint16_t>(number(2));
            const std::size_t size = fieldLength(tag);
            const std::size_t next = at_ + size;
            if (tag == 0x000B)
                attribute = labelAt();
            if (tag == 0x000E)
                localTag = static_cast<std::uint16_t>(number(2));
            at_ = next;
        }
        into[attribute] = localTag;
    }

    Bytes bytes_;
    std::size_t at_ = 0;
};

const Dictionary& compiledDictionary()
{
    static const Dictionary dictionary = DictionaryReader(readFile(HALVORN_DICTIONARY_FILE)).read();
    return dictionary;
}

// One line of a MediaInfo --Details=1 trace: "OFFSET" + spaces for depth + text.
struct TraceLine
{
    std::uint64_t offset = 0;
    std::size_t depth = 0;
    std::string_view text;
};

std::optional<TraceLine> traceLine(std::string_view line)
{
    TraceLine result;
    std::size_t at = 0;
    while (at < line.size() && hexDigit(line[at]) >= 0)
        result.offset = result.offset * 16 + static_cast<std::uint64_t>(hexDigit(line[at++]));
    if (at == 0)
        return std::nullopt;
    const std::size_t start = at;
    while (at < line.size() && line[at] == ' ')
        ++at;
    result.depth = at - start;
    result.text = line.substr(at);
    return result;
}

// "...: 123 (0xAB)" at the end of a field line: the hex digits, or "" if there are none.
std::string_view fieldHex(std::string_view text)
{
    const std::size_t colon = text.find(": ");
    if (colon == std::string_view::npos)
        return {};
    std::size_t at = colon + 1;
    while (at < text.size() && text[at] == ' ')
        ++at;
    while (at < text.size() && text[at] >= '0' && text[at] <= '9')
        ++at;
    if (text.substr(at, 4) != " (0x")
        return {};
    const std::size_t close = text.find(')', at);
    return close == std::string_view::npos ? std::string_view{}
                                           : text.substr(at + 4, close - at - 4);
}

struct TracedSet
{
    std::uint64_t offset = 0;
    std::string name;
    Label key{};
    std::vector<std::uint16_t> tags;
};

struct Trace
{
    std::map<std::uint16_t, Label> primer;
    std::vector<TracedSet> sets;
};

// The primer entries of every primer pack, and every local set with 2-byte tags and lengths
// (key byte 5 is 0x53) with the tags of its properties.
Trace readTrace(const std::filesystem::path& path)
{
    Trace trace;
    std::ifstream in(path);
    std::string line;
    std::optional<TracedSet> current;
    const auto finish = [&]
    {
        if (current && current->key[4] == 0x02 && current->key[5] == 0x53)
            trace.sets.push_back(*current);
        current.reset();
    };
    while (std::getline(in, line))
    {
        const std::optional<TraceLine> parsed = traceLine(line);
        if (!parsed)
            continue;
        if (parsed->depth == 1)
        {
            finish();
            current = TracedSet{parsed->offset, std::string(parsed->text), {}, {}};
            continue;
        }
        const std::string_view body = parsed->text;
        if (const std::size_t entry = body.find("LocalTagEntryBatch - ");
            entry != std::string_view::npos)
        {
            const std::string_view rest = body.substr(entry + 21);
            const auto tag =
                static_cast<std::uint16_t>(std::stoul(std::string(rest.substr(0, 4)), nullptr, 16));
            trace.primer[tag] = label(rest.substr(7, rest.find(' ', 7) - 7));
            continue;
        }
        if (!current || parsed->depth != 4)
            continue;
        const std::string_view hex = fieldHex(body);
        const std::uint64_t inKey = parsed->offset - current->offset;
        if (parsed->offset >= current->offset && inKey < 16 && hex.size() == 2)
            current->key[inKey] =
                static_cast<std::uint8_t>(std::stoul(std::string(hex), nullptr, 16));
        else if (body.substr(0, 5) == "Code:" && hex.size() == 4)
            current->tags.push_back(
                static_cast<std::uint16_t>(std::stoul(std::string(hex), nullptr, 16)));
    }
    finish();
    return trace;
}

std::vector<std::filesystem::path> traces()
{
    const char* data = std::getenv("HALVORN_TEST_DATA");
    EXPECT_NE(data, nullptr);
    std::vector<std::filesystem::path> found;
    if (!data)
        return found;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path(data) / "expected"))
        if (entry.path().string().ends_with(".mediainfo-trace.txt") &&
            !Halvorn::Test::isAvidFixture(entry.path().filename().string()))
            found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

// How many local sets the KLV list made from the same trace holds: a check on the reading above.
std::size_t listedLocalSets(const std::filesystem::path& trace)
{
    std::string name = trace.string();
    name.replace(name.size() - std::string_view(".mediainfo-trace.txt").size(), std::string::npos,
                 ".klv.txt");
    std::ifstream in(name);
    std::size_t count = 0;
    std::string line;
    while (std::getline(in, line))
        if (line.find(" 060e2b340253") != std::string::npos && line[0] != '#')
            ++count;
    return count;
}

std::string joined(const std::vector<std::string>& lines)
{
    std::string all;
    for (const std::string& line : lines)
        all += line + "\n";
    return all;
}

} // namespace

TEST(DictionaryCoverage, DescribesEverySetAndPropertyOfTheFixturesHeaderMetadata)
{
    const Dictionary& dictionary = compiledDictionary();
    const std::vector<std::filesystem::path> files = traces();
    EXPECT_GE(files.size(), 11u);

    std::vector<std::string> faults;
    std::size_t properties = 0;
    for (const std::filesystem::path& file : files)
    {
        const Trace trace = readTrace(file);
        const std::string name = file.filename().string();
        EXPECT_FALSE(trace.primer.empty()) << name;
        EXPECT_EQ(trace.sets.size(), listedLocalSets(file)) << name;

        for (const auto& [tag, value] : trace.primer)
        {
            if (!dictionary.hasAttribute(value))
                faults.push_back(name + ": primer entry " + tagText(tag) + " " + text(value) +
                                 " is no attribute of any set");
            const auto known = dictionary.tags.find(tag);
            if (tag < 0x8000 && (known == dictionary.tags.end() || known->second != value))
                faults.push_back(name + ": static tag " + tagText(tag) + " of the primer, " +
                                 text(value) + ", is not so in the tag table");
        }

        for (const TracedSet& set : trace.sets)
        {
            const std::string where =
                name + " at " + std::to_string(set.offset) + " (" + set.name + ")";
            const auto described = dictionary.sets.find(set.key);
            if (described == dictionary.sets.end())
            {
                faults.push_back(where + ": no set with key " + text(set.key));
                continue;
            }
            for (const std::uint16_t tag : set.tags)
            {
                ++properties;
                std::optional<Label> value;
                if (const auto entry = trace.primer.find(tag); entry != trace.primer.end())
                    value = entry->second;
                else if (const auto known = dictionary.tags.find(tag);
                         tag < 0x8000 && known != dictionary.tags.end())
                    value = known->second;
                if (!value)
                {
                    faults.push_back(where + ": tag " + tagText(tag) + " resolves to nothing");
                    continue;
                }
                const auto attribute = described->second.find(*value);
                if (attribute == described->second.end())
                    faults.push_back(where + ": " + tagText(tag) + " " + text(*value) +
                                     " is no attribute of the set");
                else if (tag < 0x8000 && attribute->second != tag)
                    faults.push_back(where + ": " + text(*value) + " has not the static tag " +
                                     tagText(tag));
            }
        }
    }
    EXPECT_GT(properties, 1000u);
    EXPECT_TRUE(faults.empty()) << joined(faults);
}

namespace
{

struct PrimerEntry
{
    std::uint16_t tag;
    const char* label;
};

// The entries that the aggregator adds to the primer of an OP-Atom file for the Avid blocks.
constexpr PrimerEntry AVID_PRIMER[] = {
    {0x0005, "06.0e.2b.34.01.01.01.02.06.01.01.07.13.00.00.00"},
    {0x0006, "06.0e.2b.34.01.01.01.02.03.02.04.01.02.01.00.00"},
    {0x0008, "06.0e.2b.34.01.01.01.02.06.01.01.07.01.00.00.00"},
    {0x0009, "06.0e.2b.34.01.01.01.02.06.01.01.07.02.00.00.00"},
    {0x000a, "06.0e.2b.34.01.01.01.02.06.01.01.07.03.00.00.00"},
    {0x000b, "06.0e.2b.34.01.01.01.02.06.01.01.07.04.00.00.00"},
    {0x000c, "06.0e.2b.34.01.01.01.02.03.01.02.02.01.00.00.00"},
    {0x000d, "06.0e.2b.34.01.01.01.02.06.01.01.07.05.00.00.00"},
    {0x000e, "06.0e.2b.34.01.01.01.02.06.01.01.07.06.00.00.00"},
    {0x0011, "06.0e.2b.34.01.01.01.02.06.01.01.07.09.00.00.00"},
    {0x0012, "06.0e.2b.34.01.01.01.02.06.01.01.07.0a.00.00.00"},
    {0x0013, "06.0e.2b.34.01.01.01.02.03.01.02.03.0b.00.00.00"},
    {0x0014, "06.0e.2b.34.01.01.01.02.06.01.01.07.0b.00.00.00"},
    {0x0015, "06.0e.2b.34.01.01.01.02.03.01.02.03.04.00.00.00"},
    {0x0016, "06.0e.2b.34.01.01.01.02.03.01.02.03.05.00.00.00"},
    {0x0017, "06.0e.2b.34.01.01.01.02.06.01.01.07.0c.00.00.00"},
    {0x0018, "06.0e.2b.34.01.01.01.02.03.01.02.03.03.00.00.00"},
    {0x0019, "06.0e.2b.34.01.01.01.02.06.01.01.07.0d.00.00.00"},
    {0x001a, "06.0e.2b.34.01.01.01.02.06.01.01.07.0e.00.00.00"},
    {0x001c, "06.0e.2b.34.01.01.01.02.06.01.01.07.11.00.00.00"},
    {0x001d, "06.0e.2b.34.01.01.01.02.03.01.02.03.06.00.00.00"},
    {0x001e, "06.0e.2b.34.01.01.01.02.06.01.01.07.12.00.00.00"},
    {0x001f, "06.0e.2b.34.01.01.01.02.03.01.02.03.07.00.00.00"},
    {0x0020, "06.0e.2b.34.01.01.01.02.03.01.02.03.08.00.00.00"},
    {0x1b01, "06.0e.2b.34.01.01.01.02.01.01.15.03.00.00.00.00"},
    {0x1b02, "06.0e.2b.34.01.01.01.02.01.07.01.02.03.01.00.00"},
    {0x1b03, "06.0e.2b.34.01.01.01.02.03.02.03.01.02.01.00.00"},
    {0x1e01, "06.0e.2b.34.01.01.01.02.05.30.05.09.00.00.00.00"},
    {0x1e02, "06.0e.2b.34.01.01.01.01.05.30.05.03.00.00.00.00"},
    {0x1e06, "06.0e.2b.34.01.01.01.02.05.30.05.0a.00.00.00.00"},
    {0x1e07, "06.0e.2b.34.01.01.01.01.05.30.05.04.00.00.00.00"},
    {0x1e08, "06.0e.2b.34.01.01.01.01.05.30.05.05.00.00.00.00"},
    {0x2603, "06.0e.2b.34.01.01.01.02.06.01.01.04.05.03.00.00"},
    {0x2605, "06.0e.2b.34.01.01.01.02.06.01.01.04.05.05.00.00"},
    {0x2606, "06.0e.2b.34.01.01.01.02.06.01.01.04.05.06.00.00"},
    {0x2607, "06.0e.2b.34.01.01.01.02.06.01.01.04.05.07.00.00"},
    {0x2608, "06.0e.2b.34.01.01.01.02.06.01.01.04.05.08.00.00"},
    {0x260b, "06.0e.2b.34.01.01.01.07.06.01.01.04.05.0b.00.00"},
    {0x4001, "06.0e.2b.34.01.01.01.01.01.02.01.01.01.00.00.00"},
    {0x5001, "06.0e.2b.34.01.01.01.02.03.02.01.02.09.01.00.00"},
    {0x5003, "06.0e.2b.34.01.01.01.02.03.02.01.02.0a.01.00.00"},
    {0xffd2, "a0.44.00.60.94.eb.75.cb.b6.bb.5f.4e.7b.37.11.d3"},
    {0xffd3, "a0.44.00.60.94.eb.75.cb.08.83.5f.4f.7b.28.11.d3"},
    {0xffd4, "a0.1c.00.04.ac.96.9f.50.60.95.81.85.47.b1.11.d4"},
};

struct Placement
{
    const char* setKey;
    const char* label;
};

constexpr const char* PREFACE = "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.2f.00";
constexpr const char* CDCI = "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.28.00";
constexpr const char* PICTURE = "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.27.00";
constexpr const char* PACKAGE = "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.34.00";
constexpr const char* COMMENT_MARKER = "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.08.00";
constexpr const char* TAGGED_VALUE = "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.3f.00";

// Avid's properties as OP-Atom files carry them, each on the set of its AAF class.
constexpr Placement AVID_PROPERTIES[] = {
    {PREFACE, "06.0e.2b.34.01.01.01.02.06.01.01.04.02.02.00.00"},        // Dictionary
    {PREFACE, "8b.2f.68.0d.ff.61.13.81.ab.f1.b7.71.8e.fd.48.02"},        // EssenceFileMobID
    {PREFACE, "ae.58.78.e0.41.45.41.79.ff.dd.41.e1.ae.2c.49.c6"},        // MasterMobID
    {PREFACE, "a5.fb.7b.25.f6.15.94.b9.62.fc.37.17.49.2d.42.bf"},        // ProjectName
    {PREFACE, "8c.70.a7.18.46.7a.e4.86.f3.65.46.b1.38.7c.4e.e9"},        // ProjectEditRate
    {CDCI, "a0.24.00.60.94.eb.75.cb.ce.2a.ca.4d.51.ab.11.d3"},           // ResolutionID
    {CDCI, "a0.24.00.60.94.eb.75.cb.ce.2a.ca.50.51.ab.11.d3"},           // FrameSampleSize
    {CDCI, "b1.f0.77.50.aa.d8.87.5d.78.39.ba.85.99.9b.4d.60"},           // MPEGVersion
    {PICTURE, "a0.24.00.60.94.eb.75.cb.ce.2a.ca.4f.51.ab.11.d3"},        // ImageSize
    {PICTURE, "a8.0e.21.4d.c0.f1.46.84.bf.de.81.e4.bc.c8.4a.bd"},        // DataOffset
    {PACKAGE, "a0.22.00.60.94.eb.75.cb.96.c4.69.92.4f.62.11.d3"},        // AppCode
    {PACKAGE, "a0.1c.00.04.ac.96.9f.50.60.95.81.83.47.b1.11.d4"},        // MobAttributeList
    {COMMENT_MARKER, "a0.8a.00.60.94.eb.75.cb.c4.c4.5d.9a.09.67.11.d4"}, // CommentMarkerUSer
    {TAGGED_VALUE, "a3.7f.56.2d.28.e3.71.58.c1.2d.81.ac.bd.68.4f.ef"},   // TaggedValue_Stream
};

// The sets of the two prebuilt Avid blocks and of the import package.
constexpr const char* AVID_SETS[] = {
    "80.53.08.00.36.21.08.04.b3.b3.98.a5.1c.90.11.d4", // root object
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.25.00.00", // MetaDictionary
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.01.00.00", // ClassDefinition
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.02.00.00", // PropertyDefinition
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.04.00.00", // TypeDefinitionInteger
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.05.00.00", // TypeDefinitionStrongObjectReference
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.06.00.00", // TypeDefinitionWeakObjectReference
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.07.00.00", // TypeDefinitionEnumeration
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.08.00.00", // TypeDefinitionFixedArray
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.09.00.00", // TypeDefinitionVariableArray
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.0a.00.00", // TypeDefinitionSet
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.0b.00.00", // TypeDefinitionString
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.0c.00.00", // TypeDefinitionStream
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.0d.00.00", // TypeDefinitionRecord
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.0e.00.00", // TypeDefinitionRename
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.20.00.00", // TypeDefinitionExtendibleEnumeration
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.21.00.00", // TypeDefinitionIndirect
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.02.22.00.00", // TypeDefinitionOpaque
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.22.00", // Dictionary
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.1b.00", // DataDefinition
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.1c.00", // OperationDefinition
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.20.00", // ContainerDefinition
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.4c.00", // TaggedValueDefinition
    "06.0e.2b.34.02.53.01.01.0d.01.01.01.01.01.4a.00", // ImportDescriptor
};

} // namespace

TEST(DictionaryCoverage, DescribesTheAvidHeaderMetadataOfOPAtomFiles)
{
    const Dictionary& dictionary = compiledDictionary();
    for (const PrimerEntry& entry : AVID_PRIMER)
    {
        EXPECT_TRUE(dictionary.hasAttribute(label(entry.label))) << entry.label;
        if (entry.tag < 0x8000)
        {
            const auto known = dictionary.tags.find(entry.tag);
            ASSERT_NE(known, dictionary.tags.end()) << tagText(entry.tag);
            EXPECT_EQ(text(known->second), entry.label) << tagText(entry.tag);
        }
    }
    for (const Placement& property : AVID_PROPERTIES)
    {
        const auto set = dictionary.sets.find(label(property.setKey));
        ASSERT_NE(set, dictionary.sets.end()) << property.setKey;
        EXPECT_EQ(set->second.count(label(property.label)), 1u) << property.label;
    }
    for (const char* key : AVID_SETS)
        EXPECT_EQ(dictionary.sets.count(label(key)), 1u) << key;

    // The first block uses these tags with no primer entry: the static table must resolve them.
    for (const std::uint16_t tag : {0x0001, 0x0002, 0x0003, 0x0004, 0x0007, 0x000f, 0x0010, 0x001b})
        EXPECT_EQ(dictionary.tags.count(static_cast<std::uint16_t>(tag)), 1u) << tagText(tag);
    // Including those of the root object: 0001 to 0004 are all attributes of it.
    const auto& root = dictionary.sets.at(label(AVID_SETS[0]));
    for (const std::uint16_t tag : {0x0001, 0x0002, 0x0003, 0x0004})
        EXPECT_EQ(root.count(dictionary.tags.at(static_cast<std::uint16_t>(tag))), 1u)
            << tagText(tag);
}

TEST(DictionaryCoverage, CompilesTheSameBytesEveryTime)
{
    const std::string list = HALVORN_DICTIONARY_SOURCES;
    const auto compileAll = [&]
    {
        Halvorn::DictC::Source source;
        std::size_t start = 0;
        while (start <= list.size())
        {
            const std::size_t end = std::min(list.find('|', start), list.size());
            const std::string path = list.substr(start, end - start);
            const Bytes text = readFile(path);
            Halvorn::DictC::parseSource(std::string(text.begin(), text.end()), path, source);
            start = end + 1;
        }
        return Halvorn::DictC::compileDictionary(source);
    };
    const Bytes first = compileAll();
    EXPECT_EQ(compileAll(), first);
    // The build made its file in a process of its own.
    EXPECT_EQ(readFile(HALVORN_DICTIONARY_FILE), first);
}
