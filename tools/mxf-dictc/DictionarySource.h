#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Halvorn::DictC
{

using Label = std::array<std::uint8_t, 16>;

struct Location
{
    std::string file;
    int line = 0;
};

// A fault of the dictionary source. `what` reads "file:line: message".
class SourceError : public std::runtime_error
{
public:
    SourceError(const Location& where, const std::string& message);
};

// Type numbers of the toolkit's value types, as the dictionary file holds them.
namespace TypeNumber
{
constexpr std::uint32_t ARRAY = 0;
constexpr std::uint32_t BATCH = 1;
constexpr std::uint32_t STRONG_REFERENCE = 29;
constexpr std::uint32_t WEAK_REFERENCE = 30;
} // namespace TypeNumber

// The number of a type name of the toolkit's type table, if it has one.
std::optional<std::uint32_t> typeNumber(std::string_view name);

// The statuses of SMPTE 377M, numbered as the dictionary file holds them.
std::optional<std::uint32_t> requiredStatusNumber(std::string_view text);

enum class ValueKind
{
    Simple,
    Reference,
    Collection,
    ReferenceCollection,
};

// What an element holds.
struct ValueForm
{
    ValueKind kind = ValueKind::Simple;
    // The value's type number; for collections ARRAY or BATCH.
    std::uint32_t dataType = 0;
    // Collections: the items' type number, STRONG_REFERENCE or WEAK_REFERENCE for references.
    std::uint32_t itemType = 0;
    std::uint32_t minimum = 0;
    std::uint32_t maximum = 0xFFFFFFFF;
    // References: names of the sets allowed as targets, each with all sets derived from it;
    // empty allows any set.
    std::vector<std::string> targets;
    // Simple elements: the allowed values, in wire form.
    std::vector<std::vector<std::uint8_t>> enumeration;
};

struct ElementDefinition
{
    std::string name;
    Label label{};
    ValueForm value;
    Location where;
};

// One line of a set: a top-level element by name, or an element of the attribute's own.
struct AttributeDefinition
{
    std::string name;
    std::optional<Label> ownLabel;
    ValueForm ownValue;
    std::optional<std::uint16_t> localTag;
    std::uint32_t requiredStatus = 0;
    Location where;
};

struct SetDefinition
{
    std::string name;
    Label key{};
    std::string parent;
    std::vector<AttributeDefinition> attributes;
    Location where;
};

// Attributes added to a set defined elsewhere, and so to every set derived from it.
struct Extension
{
    std::string set;
    std::vector<AttributeDefinition> attributes;
    Location where;
};

struct Source
{
    std::vector<ElementDefinition> elements;
    std::vector<SetDefinition> sets;
    std::vector<Extension> extensions;
};

// Adds the statements of one source file to `into`. Checks the syntax of each line; names are
// resolved later, when the whole source is known. Throws SourceError.
void parseSource(std::string_view text, const std::string& fileName, Source& into);

// The label text of the source, "06.0e.2b.34...", for messages.
std::string labelText(const Label& label);

} // namespace Halvorn::DictC
