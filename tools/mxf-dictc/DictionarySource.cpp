#include "DictionarySource.h"

#include <charconv>
#include <cstdio>
#include <limits>

namespace Halvorn::DictC
{

namespace
{

// The toolkit's type table: a type's number is its index.
constexpr std::string_view TYPE_NAMES[] = {
    "Array",
    "Batch",
    "Boolean",
    "DataStream",
    "DUMMY_TO_REPLACE_EDIT_RATE",
    "Int16",
    "Int32",
    "Int64",
    "Int8",
    "ISO7bitCharString",
    "Key",
    "Length",
    "LocalTag",
    "Position",
    "ProductVersionType",
    "Rational",
    "TimestampType",
    "UInt16",
    "UInt32",
    "UInt64",
    "UInt8",
    "UMID32",
    "UMID64",
    "UL",
    "Unknown",
    "UTF16",
    "UTF16CharString",
    "UUID",
    "VersionType",
    "StrongReference",
    "WeakReference",
    "DeltaEntryType",
    "IndexEntryType",
    "Orientation",
    "RGBALayout",
    "SignalStandard",
    "DataValue",
    "J2KPictureComponentType",
    "J2KCodingStyleDefault",
    "J2KQuantisationDefault",
};

constexpr std::string_view STATUS_TEXTS[] = {"Req", "E/req", "D/req", "B.Effort", "Opt"};

// Types with no value class behind them: an element of one could never hold a value.
constexpr std::uint32_t EDIT_RATE_PLACEHOLDER = 4;
constexpr std::uint32_t KEY = 10;

struct IntegerForm
{
    std::uint32_t type;
    unsigned size;
    bool isSigned;
};

// Types whose enumeration values the source writes as numbers.
constexpr IntegerForm INTEGER_FORMS[] = {
    {2, 1, false},  // Boolean
    {5, 2, true},   // Int16
    {6, 4, true},   // Int32
    {7, 8, true},   // Int64
    {8, 1, true},   // Int8
    {11, 8, true},  // Length
    {12, 2, false}, // LocalTag
    {13, 8, true},  // Position
    {17, 2, false}, // UInt16
    {18, 4, false}, // UInt32
    {19, 8, false}, // UInt64
    {20, 1, false}, // UInt8
    {33, 1, false}, // Orientation: one byte on the wire
    {35, 1, false}, // SignalStandard
};

constexpr std::uint32_t UL_TYPE = 23;
constexpr std::uint32_t UUID_TYPE = 27;

using Tokens = std::vector<std::string_view>;

Tokens split(std::string_view line)
{
    Tokens tokens;
    std::size_t at = 0;
    while (at < line.size())
    {
        while (at < line.size() && (line[at] == ' ' || line[at] == '\t'))
            ++at;
        std::size_t end = at;
        while (end < line.size() && line[end] != ' ' && line[end] != '\t')
            ++end;
        if (end > at)
            tokens.push_back(line.substr(at, end - at));
        at = end;
    }
    return tokens;
}

std::string quoted(std::string_view text)
{
    return "'" + std::string(text) + "'";
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

Label parseLabel(std::string_view text, const Location& where)
{
    Label label{};
    // Sixteen pairs of hex digits and fifteen dots.
    bool good = text.size() == 16 * 3 - 1;
    for (std::size_t i = 0; good && i < 16; ++i)
    {
        const int high = hexDigit(text[i * 3]);
        const int low = hexDigit(text[i * 3 + 1]);
        good = high >= 0 && low >= 0 && (i == 15 || text[i * 3 + 2] == '.');
        label[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    if (!good)
        throw SourceError(where, "bad hex in label " + quoted(text) +
                                     ": 16 bytes of two hex digits, separated by dots");
    return label;
}

std::optional<std::uint16_t> parseLocalTag(std::string_view text, const Location& where)
{
    if (text == "-")
        return std::nullopt;
    unsigned value = 0;
    bool good = text.size() == 4;
    for (std::size_t i = 0; good && i < 4; ++i)
    {
        const int digit = hexDigit(text[i]);
        good = digit >= 0;
        value = value * 16 + static_cast<unsigned>(digit);
    }
    if (!good)
        throw SourceError(where, "bad hex in local tag " + quoted(text) +
                                     ": four hex digits, or - for none");
    if (value == 0)
        throw SourceError(where, "local tag 0000 is not a tag");
    return static_cast<std::uint16_t>(value);
}

void checkName(std::string_view name, const Location& where)
{
    bool good = !name.empty();
    for (const char c : name)
        good = good && ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                        (c >= '0' && c <= '9') || c == '_' || c == '.');
    if (!good)
        throw SourceError(where,
                          "bad name " + quoted(name) + ": letters, digits, '_' and '.' only");
}

std::uint32_t parseNumber(std::string_view text, const Location& where)
{
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        throw SourceError(where, "bad number " + quoted(text));
    return value;
}

std::uint32_t valueType(std::string_view name, const Location& where)
{
    const std::optional<std::uint32_t> number = typeNumber(name);
    if (!number)
        throw SourceError(where, "unknown type name " + quoted(name));
    if (*number == TypeNumber::ARRAY || *number == TypeNumber::BATCH ||
        *number == TypeNumber::STRONG_REFERENCE || *number == TypeNumber::WEAK_REFERENCE)
        throw SourceError(where, "type " + quoted(name) + " needs the form '" + std::string(name) +
                                     (*number <= TypeNumber::BATCH ? " of TYPE'" : " to SETS'"));
    if (*number == EDIT_RATE_PLACEHOLDER || *number == KEY)
        throw SourceError(where, "type " + quoted(name) + " has no value class");
    return *number;
}

// "MIN..MAX", MAX may be "*".
void parseBounds(std::string_view text, ValueForm& value, const Location& where)
{
    const std::size_t dots = text.find("..");
    if (dots == std::string_view::npos)
        throw SourceError(where, "bad bounds " + quoted(text) + ": MIN..MAX or MIN..*");
    value.minimum = parseNumber(text.substr(0, dots), where);
    const std::string_view maximum = text.substr(dots + 2);
    value.maximum = maximum == "*" ? 0xFFFFFFFF : parseNumber(maximum, where);
    if (value.maximum < value.minimum)
        throw SourceError(where, "bad bounds " + quoted(text) + ": maximum below minimum");
}

// "to any" or "to SET ...".
void parseTargets(const Tokens& tokens, std::size_t at, ValueForm& value, const Location& where)
{
    if (at >= tokens.size() || tokens[at] != "to" || at + 1 >= tokens.size())
        throw SourceError(where, "a reference needs 'to SET ...' or 'to any'");
    if (tokens[at + 1] == "any")
    {
        if (at + 2 != tokens.size())
            throw SourceError(where, "'to any' takes no set names");
        return;
    }
    for (std::size_t i = at + 1; i < tokens.size(); ++i)
    {
        checkName(tokens[i], where);
        value.targets.emplace_back(tokens[i]);
    }
}

// The value kind from tokens[at] on, to the end of the line.
ValueForm parseValue(const Tokens& tokens, std::size_t at, const Location& where)
{
    if (at >= tokens.size())
        throw SourceError(where, "missing type");
    ValueForm value;
    const std::string_view head = tokens[at];
    if (head == "StrongReference" || head == "WeakReference")
    {
        value.kind = ValueKind::Reference;
        value.dataType = *typeNumber(head);
        parseTargets(tokens, at + 1, value, where);
        return value;
    }
    if (head == "Array" || head == "Batch")
    {
        value.dataType = *typeNumber(head);
        std::size_t next = at + 1;
        if (next < tokens.size() && tokens[next] != "of")
            parseBounds(tokens[next++], value, where);
        if (next + 1 >= tokens.size() || tokens[next] != "of")
            throw SourceError(where, "a collection needs '" + std::string(head) + " of TYPE'");
        const std::string_view item = tokens[next + 1];
        if (item == "StrongReference" || item == "WeakReference")
        {
            value.kind = ValueKind::ReferenceCollection;
            value.itemType = *typeNumber(item);
            parseTargets(tokens, next + 2, value, where);
            return value;
        }
        value.kind = ValueKind::Collection;
        value.itemType = valueType(item, where);
        if (next + 2 != tokens.size())
            throw SourceError(where, "unexpected " + quoted(tokens[next + 2]));
        return value;
    }
    value.kind = ValueKind::Simple;
    value.dataType = valueType(head, where);
    if (at + 1 != tokens.size())
        throw SourceError(where, "unexpected " + quoted(tokens[at + 1]));
    return value;
}

std::vector<std::uint8_t> integerValue(std::string_view text, const IntegerForm& form,
                                       const Location& where)
{
    const bool negative = !text.empty() && text[0] == '-';
    std::string_view digits = negative ? text.substr(1) : text;
    int base = 10;
    if (digits.size() > 2 && digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X'))
    {
        digits = digits.substr(2);
        base = 16;
    }
    std::uint64_t magnitude = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), magnitude, base);
    if (digits.empty() || error != std::errc() || end != digits.data() + digits.size())
        throw SourceError(where, "bad value " + quoted(text));

    const unsigned bits = form.size * 8;
    const std::uint64_t unsignedLimit =
        bits == 64 ? std::numeric_limits<std::uint64_t>::max() : (std::uint64_t{1} << bits) - 1;
    const std::uint64_t positiveLimit = form.isSigned ? unsignedLimit >> 1 : unsignedLimit;
    const std::uint64_t negativeLimit = form.isSigned ? positiveLimit + 1 : 0;
    if ((!negative && magnitude > positiveLimit) || (negative && magnitude > negativeLimit))
        throw SourceError(where, "value " + quoted(text) + " out of range");

    // Two's complement of the magnitude for negative values, big-endian.
    const std::uint64_t bitsValue = negative ? ~magnitude + 1 : magnitude;
    std::vector<std::uint8_t> wire(form.size);
    for (unsigned i = 0; i < form.size; ++i)
        wire[i] = static_cast<std::uint8_t>(bitsValue >> (8 * (form.size - 1 - i)));
    return wire;
}

std::vector<std::uint8_t> enumerationValue(std::string_view text, const ValueForm& element,
                                           const Location& where)
{
    if (element.kind == ValueKind::Simple)
    {
        for (const IntegerForm& form : INTEGER_FORMS)
            if (form.type == element.dataType)
                return integerValue(text, form, where);
        if (element.dataType == UL_TYPE || element.dataType == UUID_TYPE)
        {
            const Label label = parseLabel(text, where);
            return {label.begin(), label.end()};
        }
    }
    throw SourceError(where,
                      "enumeration values need a simple element of an integer, UL or UUID type");
}

class Parser
{
public:
    Parser(const std::string& fileName, Source& into) : into_(into) { where_.file = fileName; }

    void line(int number, std::string_view text)
    {
        where_.line = number;
        const std::size_t comment = text.find('#');
        if (comment != std::string_view::npos)
            text = text.substr(0, comment);
        const Tokens tokens = split(text);
        if (tokens.empty())
            return;
        if (text[0] == ' ' || text[0] == '\t')
            continuation(tokens);
        else
            statement(tokens);
    }

private:
    enum class Block
    {
        None,
        Element,
        Set,
        Extension,
    };

    void statement(const Tokens& tokens)
    {
        const std::string_view keyword = tokens[0];
        if (keyword == "element")
        {
            if (tokens.size() < 4)
                throw SourceError(where_, "expected 'element NAME LABEL TYPE'");
            ElementDefinition element;
            checkName(tokens[1], where_);
            element.name = tokens[1];
            element.label = parseLabel(tokens[2], where_);
            element.value = parseValue(tokens, 3, where_);
            element.where = where_;
            into_.elements.push_back(std::move(element));
            block_ = Block::Element;
        }
        else if (keyword == "set")
        {
            const bool derived = tokens.size() == 5 && tokens[3] == ":";
            if (tokens.size() != 3 && !derived)
                throw SourceError(where_, "expected 'set NAME KEY' or 'set NAME KEY : PARENT'");
            SetDefinition set;
            checkName(tokens[1], where_);
            set.name = tokens[1];
            set.key = parseLabel(tokens[2], where_);
            if (derived)
            {
                checkName(tokens[4], where_);
                set.parent = tokens[4];
            }
            set.where = where_;
            into_.sets.push_back(std::move(set));
            block_ = Block::Set;
        }
        else if (keyword == "extend")
        {
            if (tokens.size() != 2)
                throw SourceError(where_, "expected 'extend SET'");
            checkName(tokens[1], where_);
            into_.extensions.push_back({std::string(tokens[1]), {}, where_});
            block_ = Block::Extension;
        }
        else
        {
            throw SourceError(where_,
                              "unknown statement " + quoted(keyword) + ": element, set or extend");
        }
    }

    void continuation(const Tokens& tokens)
    {
        switch (block_)
        {
        case Block::Element:
            enumerator(tokens);
            break;
        case Block::Set:
            into_.sets.back().attributes.push_back(attribute(tokens));
            break;
        case Block::Extension:
            into_.extensions.back().attributes.push_back(attribute(tokens));
            break;
        case Block::None:
            throw SourceError(where_, "indented line outside an element, set or extend");
        }
    }

    // "value VALUE MEANING..."; the meaning is for the reader only.
    void enumerator(const Tokens& tokens)
    {
        if (tokens[0] != "value" || tokens.size() < 2)
            throw SourceError(where_, "expected 'value VALUE MEANING' under an element");
        ValueForm& element = into_.elements.back().value;
        element.enumeration.push_back(enumerationValue(tokens[1], element, where_));
    }

    // "ELEMENT TAG STATUS", or "NAME TAG STATUS LABEL TYPE..." for an element of its own.
    AttributeDefinition attribute(const Tokens& tokens)
    {
        if (tokens.size() < 3)
            throw SourceError(where_, "expected 'ELEMENT TAG STATUS' in a set");
        AttributeDefinition attribute;
        checkName(tokens[0], where_);
        attribute.name = tokens[0];
        attribute.localTag = parseLocalTag(tokens[1], where_);
        const std::optional<std::uint32_t> status = requiredStatusNumber(tokens[2]);
        if (!status)
            throw SourceError(where_, "unknown required status " + quoted(tokens[2]) +
                                          ": Req, E/req, D/req, B.Effort or Opt");
        attribute.requiredStatus = *status;
        if (tokens.size() > 3)
        {
            attribute.ownLabel = parseLabel(tokens[3], where_);
            attribute.ownValue = parseValue(tokens, 4, where_);
        }
        attribute.where = where_;
        return attribute;
    }

    Source& into_;
    Location where_;
    Block block_ = Block::None;
};

} // namespace

SourceError::SourceError(const Location& where, const std::string& message)
    : std::runtime_error(where.file + ":" + std::to_string(where.line) + ": " + message)
{
}

std::optional<std::uint32_t> typeNumber(std::string_view name)
{
    for (std::uint32_t i = 0; i < std::size(TYPE_NAMES); ++i)
        if (TYPE_NAMES[i] == name)
            return i;
    // The toolkit accepts this name for the J2K component type too.
    if (name == "J2KPictureComponent")
        return 37;
    return std::nullopt;
}

std::optional<std::uint32_t> requiredStatusNumber(std::string_view text)
{
    for (std::uint32_t i = 0; i < std::size(STATUS_TEXTS); ++i)
        if (STATUS_TEXTS[i] == text)
            return i;
    return std::nullopt;
}

void parseSource(std::string_view text, const std::string& fileName, Source& into)
{
    Parser parser(fileName, into);
    int number = 0;
    while (!text.empty())
    {
        const std::size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        parser.line(++number, line);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    }
}

std::string labelText(const Label& label)
{
    std::string text;
    for (std::size_t i = 0; i < label.size(); ++i)
    {
        char byte[4];
        std::snprintf(byte, sizeof byte, i == 0 ? "%02x" : ".%02x", label[i]);
        text += byte;
    }
    return text;
}

} // namespace Halvorn::DictC
