#include "DictionaryCompiler.h"

#include <map>
#include <set>

namespace Halvorn::DictC
{

namespace
{

using Bytes = std::vector<std::uint8_t>;

// The last byte of the private keys 06 0E 2B 34 00 .. 00 NN of the dictionary file.
constexpr std::uint8_t META_COLLECTION = 0x01;
constexpr std::uint8_t META_REFERENCE_COLLECTION = 0x02;
constexpr std::uint8_t META_REFERENCE_ELEMENT = 0x03;
constexpr std::uint8_t META_SIMPLE_ELEMENT = 0x04;
constexpr std::uint8_t META_METADATA_SET = 0x05;
constexpr std::uint8_t META_ATTRIBUTE = 0x06;
constexpr std::uint8_t TAG_TABLE = 0x07;

// Local tags of the fields inside the items.
constexpr std::uint16_t PROPERTY_NAME = 0x0001;
constexpr std::uint16_t PROPERTY_VALUE = 0x0002;
constexpr std::uint16_t LABEL = 0x0003;
constexpr std::uint16_t DATA_TYPE = 0x0004;
constexpr std::uint16_t DATA_SUB_TYPE = 0x0005;
constexpr std::uint16_t MINIMUM = 0x0006;
constexpr std::uint16_t MAXIMUM = 0x0007;
constexpr std::uint16_t ALLOWED_REFERENCES = 0x0008;
constexpr std::uint16_t ENUMERATION = 0x0009;
constexpr std::uint16_t ATTRIBUTES = 0x000A;
constexpr std::uint16_t ATTRIBUTE_LABEL = 0x000B;
constexpr std::uint16_t REQUIRED_STATUS = 0x000C;
constexpr std::uint16_t ATTRIBUTE_ELEMENT = 0x000D;
constexpr std::uint16_t ATTRIBUTE_LOCAL_TAG = 0x000E;

constexpr std::uint16_t MAJOR_VERSION = 2;
constexpr std::uint16_t MINOR_VERSION = 0;

// The loader marks a set as having an InstanceUID by this label, and refuses a set without one.
constexpr Label INSTANCE_UID = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x01,
                                0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00};

void put16(Bytes& out, std::uint32_t value)
{
    out.push_back(static_cast<std::uint8_t>(value >> 8));
    out.push_back(static_cast<std::uint8_t>(value));
}

void put32(Bytes& out, std::uint32_t value)
{
    put16(out, value >> 16);
    put16(out, value & 0xFFFF);
}

void putBytes(Bytes& out, const Bytes& bytes)
{
    out.insert(out.end(), bytes.begin(), bytes.end());
}

// Shortest form: one byte below 0x80, else 0x80 + the count of the big-endian bytes that follow.
void putBER(Bytes& out, std::size_t length)
{
    if (length < 0x80)
    {
        out.push_back(static_cast<std::uint8_t>(length));
        return;
    }
    unsigned count = 0;
    for (std::size_t rest = length; rest != 0; rest >>= 8)
        ++count;
    out.push_back(static_cast<std::uint8_t>(0x80 | count));
    for (unsigned i = count; i-- > 0;)
        out.push_back(static_cast<std::uint8_t>(length >> (8 * i)));
}

void putItem(Bytes& out, std::uint8_t kind, const Bytes& body)
{
    const Bytes key = {0x06, 0x0E, 0x2B, 0x34, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kind};
    putBytes(out, key);
    putBER(out, body.size());
    putBytes(out, body);
}

// Names are ASCII (the parser allows nothing else), so UTF-16BE is a zero byte before each.
void putText(Bytes& out, std::uint16_t tag, std::string_view text)
{
    put16(out, tag);
    put16(out, static_cast<std::uint32_t>(text.size() * 2));
    for (const char c : text)
    {
        out.push_back(0);
        out.push_back(static_cast<std::uint8_t>(c));
    }
}

// The property "name", which the metadata layer shows in its messages.
void putName(Bytes& out, std::string_view name)
{
    putText(out, PROPERTY_NAME, "name");
    putText(out, PROPERTY_VALUE, name);
}

void putLabel(Bytes& out, std::uint16_t tag, const Label& label)
{
    put16(out, tag);
    put16(out, 16);
    out.insert(out.end(), label.begin(), label.end());
}

void putNumber(Bytes& out, std::uint16_t tag, std::uint32_t value)
{
    put16(out, tag);
    put16(out, 4);
    put32(out, value);
}

std::string where(const Location& location)
{
    return location.file + ":" + std::to_string(location.line);
}

std::string tagText(std::uint16_t tag)
{
    static const char digits[] = "0123456789abcdef";
    std::string text;
    for (int shift = 12; shift >= 0; shift -= 4)
        text += digits[(tag >> shift) & 0xF];
    return text;
}

struct ResolvedAttribute
{
    const AttributeDefinition* definition;
    Label label;
};

class Compiler
{
public:
    explicit Compiler(const Source& source) : source_(source) {}

    Bytes run()
    {
        indexElements();
        indexSets();
        for (const ElementDefinition& element : source_.elements)
            checkTargets(element.value, element.where);
        for (const SetDefinition& set : source_.sets)
            if (!flattened_.count(set.name))
                flattened_[set.name] = flatten(set);
        buildTagTable();

        Bytes out;
        put16(out, MAJOR_VERSION);
        put16(out, MINOR_VERSION);
        for (const ElementDefinition& element : source_.elements)
            putElement(out, element.name, element.label, element.value, element.where);
        for (const SetDefinition& set : source_.sets)
            putSet(out, set);
        Bytes table;
        for (const auto& [tag, entry] : labelOfTag_)
        {
            put16(table, tag);
            table.insert(table.end(), entry.first.begin(), entry.first.end());
        }
        putItem(out, TAG_TABLE, table);
        return out;
    }

private:
    void indexElements()
    {
        std::map<Label, const ElementDefinition*> byLabel;
        for (const ElementDefinition& element : source_.elements)
        {
            const auto [named, newName] = elements_.emplace(element.name, &element);
            if (!newName)
                throw SourceError(element.where, "duplicate element name '" + element.name +
                                                     "' (first at " + where(named->second->where) +
                                                     ")");
            const auto [labelled, newLabel] = byLabel.emplace(element.label, &element);
            if (!newLabel)
                throw SourceError(element.where, "duplicate label " + labelText(element.label) +
                                                     " (element '" + labelled->second->name +
                                                     "' at " + where(labelled->second->where) +
                                                     ")");
        }
    }

    void indexSets()
    {
        std::map<Label, const SetDefinition*> byKey;
        for (const SetDefinition& set : source_.sets)
        {
            const auto [named, newName] = sets_.emplace(set.name, &set);
            if (!newName)
                throw SourceError(set.where, "duplicate set name '" + set.name + "' (first at " +
                                                 where(named->second->where) + ")");
            const auto [keyed, newKey] = byKey.emplace(set.key, &set);
            if (!newKey)
                throw SourceError(set.where, "duplicate label " + labelText(set.key) + " (set '" +
                                                 keyed->second->name + "' at " +
                                                 where(keyed->second->where) + ")");
        }
        for (const SetDefinition& set : source_.sets)
        {
            std::set<std::string> seen = {set.name};
            for (const SetDefinition* at = &set; !at->parent.empty();)
            {
                const auto parent = sets_.find(at->parent);
                if (parent == sets_.end())
                    throw SourceError(at->where, "set '" + at->name +
                                                     "' derives from an undefined set '" +
                                                     at->parent + "'");
                if (!seen.insert(at->parent).second)
                    throw SourceError(set.where, "derivation of set '" + set.name +
                                                     "' runs in a circle through '" + at->parent +
                                                     "'");
                at = parent->second;
            }
        }
        for (const Extension& extension : source_.extensions)
        {
            if (!sets_.count(extension.set))
                throw SourceError(extension.where,
                                  "extend of an undefined set '" + extension.set + "'");
            extensions_[extension.set].push_back(&extension);
        }
    }

    void checkTargets(const ValueForm& value, const Location& location) const
    {
        for (const std::string& target : value.targets)
            if (!sets_.count(target))
                throw SourceError(location, "reference to an undefined set '" + target + "'");
    }

    bool derivesFrom(const SetDefinition& set, const std::string& ancestor) const
    {
        for (const SetDefinition* at = &set;; at = sets_.at(at->parent))
        {
            if (at->name == ancestor)
                return true;
            if (at->parent.empty())
                return false;
        }
    }

    // Parent's attributes first, then the set's own, then those its extensions add.
    std::vector<ResolvedAttribute> flatten(const SetDefinition& set)
    {
        std::vector<ResolvedAttribute> attributes;
        if (!set.parent.empty())
        {
            const SetDefinition& parent = *sets_.at(set.parent);
            if (!flattened_.count(parent.name))
                flattened_[parent.name] = flatten(parent);
            attributes = flattened_.at(parent.name);
        }
        std::vector<const AttributeDefinition*> own;
        for (const AttributeDefinition& attribute : set.attributes)
            own.push_back(&attribute);
        if (const auto extensions = extensions_.find(set.name); extensions != extensions_.end())
            for (const Extension* extension : extensions->second)
                for (const AttributeDefinition& attribute : extension->attributes)
                    own.push_back(&attribute);

        for (const AttributeDefinition* attribute : own)
        {
            Label label{};
            if (attribute->ownLabel)
            {
                checkTargets(attribute->ownValue, attribute->where);
                label = *attribute->ownLabel;
            }
            else
            {
                const auto element = elements_.find(attribute->name);
                if (element == elements_.end())
                    throw SourceError(attribute->where, "reference to an undefined element '" +
                                                            attribute->name + "'");
                label = element->second->label;
            }
            for (const ResolvedAttribute& earlier : attributes)
            {
                if (earlier.label == label || earlier.definition->name == attribute->name)
                    throw SourceError(attribute->where, "set '" + set.name + "' would hold " +
                                                            labelText(label) + " '" +
                                                            attribute->name + "' twice (also at " +
                                                            where(earlier.definition->where) + ")");
            }
            attributes.push_back({attribute, label});
        }

        bool hasInstanceUID = false;
        for (const ResolvedAttribute& attribute : attributes)
            hasInstanceUID = hasInstanceUID || attribute.label == INSTANCE_UID;
        if (!hasInstanceUID)
            throw SourceError(set.where, "set '" + set.name + "' has no InstanceUID attribute (" +
                                             labelText(INSTANCE_UID) + ")");
        return attributes;
    }

    // One static tag a label and one label a tag, over the whole dictionary.
    void buildTagTable()
    {
        std::map<Label, std::pair<std::uint16_t, Location>> tagOfLabel;
        for (const SetDefinition& set : source_.sets)
        {
            for (const ResolvedAttribute& attribute : flattened_.at(set.name))
            {
                const AttributeDefinition& definition = *attribute.definition;
                if (!definition.localTag)
                    continue;
                const std::uint16_t tag = *definition.localTag;
                const auto [byTag, newTag] =
                    labelOfTag_.emplace(tag, std::make_pair(attribute.label, definition.where));
                if (!newTag && byTag->second.first != attribute.label)
                    throw SourceError(definition.where,
                                      "local tag " + tagText(tag) + " given to " +
                                          labelText(attribute.label) + " and to " +
                                          labelText(byTag->second.first) + " (at " +
                                          where(byTag->second.second) + ")");
                const auto [byLabel, newLabel] =
                    tagOfLabel.emplace(attribute.label, std::make_pair(tag, definition.where));
                if (!newLabel && byLabel->second.first != tag)
                    throw SourceError(definition.where,
                                      "label " + labelText(attribute.label) + " given local tags " +
                                          tagText(tag) + " and " + tagText(byLabel->second.first) +
                                          " (at " + where(byLabel->second.second) + ")");
            }
        }
    }

    // Each target set with every set derived from it, in source order.
    Bytes allowedKeys(const ValueForm& value) const
    {
        Bytes keys;
        for (const SetDefinition& set : source_.sets)
        {
            bool allowed = false;
            for (const std::string& target : value.targets)
                allowed = allowed || derivesFrom(set, target);
            if (allowed)
                keys.insert(keys.end(), set.key.begin(), set.key.end());
        }
        return keys;
    }

    void putElement(Bytes& out, std::string_view name, const Label& label, const ValueForm& value,
                    const Location& location) const
    {
        Bytes body;
        putName(body, name);
        putLabel(body, LABEL, label);
        putNumber(body, DATA_TYPE, value.dataType);
        const bool collection =
            value.kind == ValueKind::Collection || value.kind == ValueKind::ReferenceCollection;
        if (collection)
        {
            putNumber(body, DATA_SUB_TYPE, value.itemType);
            putNumber(body, MINIMUM, value.minimum);
            putNumber(body, MAXIMUM, value.maximum);
        }
        if (!value.targets.empty())
        {
            const Bytes keys = allowedKeys(value);
            const std::size_t batch = 8 + keys.size();
            if (batch > 0xFFFF)
                throw SourceError(location, "too many sets allowed as targets");
            put16(body, ALLOWED_REFERENCES);
            putBER(body, 2 + batch);
            put16(body, static_cast<std::uint32_t>(batch));
            put32(body, static_cast<std::uint32_t>(keys.size() / 16));
            put32(body, 16);
            putBytes(body, keys);
        }
        if (!value.enumeration.empty())
        {
            Bytes entries;
            for (const Bytes& entry : value.enumeration)
            {
                put16(entries, value.dataType);
                put16(entries, static_cast<std::uint32_t>(entry.size()));
                putBytes(entries, entry);
            }
            put16(body, ENUMERATION);
            putBER(body, entries.size());
            putBytes(body, entries);
        }

        std::uint8_t kind = META_SIMPLE_ELEMENT;
        if (value.kind == ValueKind::Collection)
            kind = META_COLLECTION;
        else if (value.kind == ValueKind::ReferenceCollection)
            kind = META_REFERENCE_COLLECTION;
        else if (value.kind == ValueKind::Reference)
            kind = META_REFERENCE_ELEMENT;
        putItem(out, kind, body);
    }

    void putSet(Bytes& out, const SetDefinition& set) const
    {
        Bytes attributes;
        for (const ResolvedAttribute& attribute : flattened_.at(set.name))
        {
            const AttributeDefinition& definition = *attribute.definition;
            Bytes body;
            putName(body, definition.name);
            putLabel(body, ATTRIBUTE_LABEL, attribute.label);
            putNumber(body, REQUIRED_STATUS, definition.requiredStatus);
            if (definition.localTag)
            {
                put16(body, ATTRIBUTE_LOCAL_TAG);
                put16(body, 2);
                put16(body, *definition.localTag);
            }
            if (definition.ownLabel)
            {
                Bytes element;
                putElement(element, definition.name, *definition.ownLabel, definition.ownValue,
                           definition.where);
                put16(body, ATTRIBUTE_ELEMENT);
                putBER(body, element.size());
                putBytes(body, element);
            }
            putItem(attributes, META_ATTRIBUTE, body);
        }

        Bytes body;
        putName(body, set.name);
        putLabel(body, LABEL, set.key);
        put16(body, ATTRIBUTES);
        putBER(body, attributes.size());
        putBytes(body, attributes);
        putItem(out, META_METADATA_SET, body);
    }

    const Source& source_;
    std::map<std::string, const ElementDefinition*> elements_;
    std::map<std::string, const SetDefinition*> sets_;
    std::map<std::string, std::vector<const Extension*>> extensions_;
    std::map<std::string, std::vector<ResolvedAttribute>> flattened_;
    std::map<std::uint16_t, std::pair<Label, Location>> labelOfTag_;
};

} // namespace

std::vector<std::uint8_t> compileDictionary(const Source& source)
{
    return Compiler(source).run();
}

} // namespace Halvorn::DictC
