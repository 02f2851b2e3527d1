#include "MetadataPrinter.h"

#include "KlvScan.h"
#include "LabelNames.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/IdentifierText.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Metadata/Element.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Platform/Platform.h"
#include "MXF/SDK/Types/Boolean.h"
#include "MXF/SDK/Types/Collection.h"
#include "MXF/SDK/Types/Integers.h"
#include "MXF/SDK/Types/LocalTag.h"
#include "MXF/SDK/Types/RGBALayout.h"
#include "MXF/SDK/Types/Rational.h"
#include "MXF/SDK/Types/Reference.h"
#include "MXF/SDK/Types/Strings.h"
#include "MXF/SDK/Types/Timestamp.h"
#include "MXF/SDK/Types/UID.h"
#include "MXF/SDK/Types/VersionTypes.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace Halvorn::Inspect
{

using namespace MXF::SDK;
using Metadata::Element;
using Metadata::MetadataSet;
using Metadata::PartitionMetadata;
using Platform::Byte;
using Platform::UInt64;

namespace
{

std::string dotted(const Byte* bytes, std::size_t size)
{
    return Platform::toUtf8(KLV::IdentifierText::writeDottedHex(bytes, size));
}

// Appended piece by piece: GCC 12 at -O3 takes "literal" + std::string for overlapping copies.
std::string uuidText(const Types::UUID& uuid)
{
    std::string text(1, '{');
    text += Platform::toUtf8(uuid.toString());
    text += '}';
    return text;
}

std::string indexed(std::size_t i)
{
    std::string text(1, '[');
    text += std::to_string(i);
    text += "] ";
    return text;
}

std::string quoted(const std::string& text)
{
    std::string out(1, '"');
    out += text;
    out += '"';
    return out;
}

// Labels of the meta-dictionary, as data/aaf-objects.txt gives them.
constexpr Byte META_DICTIONARY_KEY[] = {0x06, 0x0e, 0x2b, 0x34, 0x02, 0x53, 0x01, 0x01,
                                        0x0d, 0x01, 0x01, 0x01, 0x02, 0x25, 0x00, 0x00};
constexpr Byte META_NAME[] = {0x06, 0x0e, 0x2b, 0x34, 0x01, 0x01, 0x01, 0x02,
                              0x03, 0x02, 0x04, 0x01, 0x02, 0x01, 0x00, 0x00};

// 06.0e.2b.34.01.01.01.02.06.01.01.07.NN.00.00.00, the meta-model's own properties.
Types::UniversalLabel metaProperty(Byte item)
{
    const Byte bytes[] = {0x06, 0x0e, 0x2b, 0x34, 0x01, 0x01, 0x01, 0x02,
                          0x06, 0x01, 0x01, 0x07, item, 0x00, 0x00, 0x00};
    return Types::UniversalLabel(bytes);
}

const Types::UniversalLabel PARENT_CLASS = metaProperty(0x01);
const Types::UniversalLabel PROPERTIES = metaProperty(0x02);
const Types::UniversalLabel IS_CONCRETE = metaProperty(0x03);
const Types::UniversalLabel CLASS_DEFINITIONS = metaProperty(0x07);
const Types::UniversalLabel TYPE_DEFINITIONS = metaProperty(0x08);

// The name of a meta definition; empty for other sets.
std::string metaName(const MetadataSet& set)
{
    const Types::BaseType* value = set.value(Types::UniversalLabel(META_NAME));
    const auto* name = value ? Types::Visitors::getAs<Types::UTF16String>(*value) : nullptr;
    return name ? Platform::toUtf8(name->value()) : "";
}

// The sets an element of `set` refers to strongly, in order.
std::vector<const MetadataSet*> strongTargets(const MetadataSet& set,
                                              const Types::UniversalLabel& label)
{
    std::vector<const MetadataSet*> targets;
    const Element* element = set.findElement(label);
    if (!element)
        return targets;
    if (const auto* collection = Metadata::asCollectionReferenceElement(*element))
    {
        for (Platform::UInt32 i = 0; i < collection->count(); ++i)
            if (const MetadataSet* target = collection->target(i))
                targets.push_back(target);
    }
    return targets;
}

// Bytes as hex; long runs are cut, as nobody reads them whole.
std::string hexBytes(const Byte* bytes, std::size_t size)
{
    static constexpr std::size_t SHOWN = 32;
    std::string text = size == 0 ? "(empty)" : dotted(bytes, std::min(size, SHOWN));
    if (size > SHOWN)
        text += "... (" + std::to_string(size) + " bytes)";
    return text;
}

std::string twoDigits(unsigned value)
{
    char text[8];
    std::snprintf(text, sizeof text, "%02u", value % 100u);
    return text;
}

// The readable form of one value. Labels are named by the table of register names, or by the
// dictionary when they are set keys.
class ValueText final : public Types::Visitors::NullVisitor
{
public:
    explicit ValueText(const MetaMetadata::Dictionary& dictionary) : dictionary_(dictionary) {}

    std::string text(const Types::BaseType& value)
    {
        text_.clear();
        value.accept(*this);
        if (text_.empty())
        {
            if (const Types::SimpleDataType* simple = Types::Visitors::asSimpleDataType(value))
                text_ = hexBytes(simple->data(), simple->size());
        }
        return text_;
    }

    using NullVisitor::visit;
    void visit(const Types::Int8& v) override { text_ = std::to_string(int(v.value())); }
    void visit(const Types::Int16& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::Int32& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::Int64& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::UInt8& v) override { text_ = std::to_string(unsigned(v.value())); }
    void visit(const Types::UInt16& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::UInt32& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::UInt64& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::Length& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::Position& v) override { text_ = std::to_string(v.value()); }
    void visit(const Types::Orientation& v) override
    {
        text_ = std::to_string(unsigned(v.value()));
    }
    void visit(const Types::SignalStandard& v) override
    {
        text_ = std::to_string(unsigned(v.value()));
    }
    void visit(const Types::Boolean& v) override { text_ = v.value() ? "true" : "false"; }
    void visit(const Types::Rational& v) override
    {
        text_ = std::to_string(v.numerator()) + "/" + std::to_string(v.denominator());
    }
    void visit(const Types::Timestamp& v) override
    {
        char text[40];
        std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02u.%03uZ", unsigned(v.year()),
                      unsigned(v.month()), unsigned(v.day()), unsigned(v.hour()),
                      unsigned(v.minute()), unsigned(v.second()), unsigned(v.millisecond()));
        text_ = text;
    }
    void visit(const Types::VersionType& v) override
    {
        text_ = std::to_string(v.majorVersion()) + "." + std::to_string(v.minorVersion());
    }
    void visit(const Types::ProductVersion& v) override
    {
        text_ = std::to_string(v.majorVersion()) + "." + std::to_string(v.minorVersion()) + "." +
                std::to_string(v.patch()) + "." + std::to_string(v.build()) + "." +
                std::to_string(v.release());
    }
    void visit(const Types::ISO7String& v) override { text_ = quoted(v.value()); }
    void visit(const Types::UTF16String& v) override
    {
        text_ = quoted(Platform::toUtf8(v.value()));
    }
    void visit(const Types::UTF16& v) override
    {
        text_ = quoted(Platform::toUtf8(std::wstring(1, wchar_t(v.value()))));
    }
    void visit(const Types::LocalTag& v) override { text_ = Platform::toUtf8(v.toString()); }
    void visit(const Types::UUID& v) override { text_ = uuidText(v); }
    void visit(const Types::UMID32& v) override { text_ = Platform::toUtf8(v.toString()); }
    void visit(const Types::UMID64& v) override { text_ = Platform::toUtf8(v.toString()); }
    void visit(const Types::StrongReference& v) override { text_ = uuidText(v.uuid()); }
    void visit(const Types::WeakReference& v) override { text_ = uuidText(v.uuid()); }
    void visit(const Types::UniversalLabel& v) override
    {
        text_ = dotted(v.data(), Types::UniversalLabel::SIZE);
        std::string name = labelName(v.data());
        if (name.empty())
        {
            const MetaMetadata::MetaMetadataSet* set = dictionary_.metaMetadataSet(v);
            if (set && set->hasProperty(L"name"))
                name = Platform::toUtf8(set->property(L"name"));
        }
        if (!name.empty())
            text_ += " (" + name + ")";
    }
    void visit(const Types::RGBALayout& v) override
    {
        for (std::size_t i = 0; i < Types::RGBALayout::COMPONENTS; ++i)
        {
            const Types::RGBALayout::Component component = v.component(i);
            if (component.code == 0)
                break;
            if (i > 0)
                text_ += ' ';
            text_ += printable(component.code);
            text_ += std::to_string(component.depth);
        }
        if (text_.empty())
            text_ = "(none)";
    }
    void visit(const Types::Array& v) override { text_ = items(v); }
    void visit(const Types::Batch& v) override { text_ = items(v); }

private:
    static std::string printable(Byte code)
    {
        return code >= 0x20 && code < 0x7f ? std::string(1, char(code)) : "\\x" + twoDigits(code);
    }

    std::string items(const Types::Collection& collection)
    {
        ValueText item(dictionary_);
        std::string text = "[";
        for (std::size_t i = 0; i < collection.itemCount(); ++i)
        {
            if (i > 0)
                text += ", ";
            text += item.text(collection.at(i));
        }
        return text + "]";
    }

    const MetaMetadata::Dictionary& dictionary_;
    std::string text_;
};

bool isInstanceUID(const Types::UniversalLabel& label)
{
    // 06.0e.2b.34.01.01.01.vv.01.01.15.02.00.00.00.00, the version byte left aside.
    static constexpr Byte INSTANCE_UID[] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x00,
                                            0x01, 0x01, 0x15, 0x02, 0x00, 0x00, 0x00, 0x00};
    for (std::size_t i = 0; i < Types::UniversalLabel::SIZE; ++i)
        if (i != 7 && label[i] != INSTANCE_UID[i])
            return false;
    return true;
}

class Printer final : public Metadata::ConstElementVisitor
{
public:
    Printer(PartitionMetadata& metadata, std::ostream& out, const MetadataPrintOptions& options)
        : metadata_(metadata), out_(out), values_(metadata.dictionary()), options_(options)
    {
    }

    MetadataPrintResult run()
    {
        const MetadataSet* preface = nullptr;
        try
        {
            preface = &metadata_.preface();
        }
        catch (const Exceptions::BaseException& e)
        {
            damage_.note(e.what());
        }
        const std::vector<MetadataSet*> roots = metadata_.sets(KLV::Key(KLV::avidRootObjectKey()));
        const MetadataSet* top = roots.size() == 1 ? roots.front() : preface;
        if (top)
            printTree(*top, "");
        // Sets nested too deep for one tree start trees of their own, which may defer more.
        while (!deferred_.empty())
        {
            out_ << "continued from above:\n";
            const std::vector<const MetadataSet*> deferred = std::move(deferred_);
            deferred_.clear();
            for (const MetadataSet* set : deferred)
                if (!printed_.count(set))
                    printTree(*set, "");
        }
        bool heading = false;
        for (const MetadataSet* set : metadata_.sets())
        {
            if (printed_.count(set))
                continue;
            if (!heading)
                out_ << "not reached from the " << (top == preface ? "Preface" : "root object")
                     << ":\n";
            heading = true;
            printTree(*set, "");
        }
        return {printed_.size(), damage_.summary()};
    }

    using ConstElementVisitor::visit;

    void visit(const Metadata::SimpleElement& element) override
    {
        // Avid's root names its object directory by offset; what is there says more.
        if (name(element) == "ObjectDirectory" && !options_.objectDirectory.empty())
            line(name(element) + ": " + options_.objectDirectory);
        else
            line(name(element) + ": " + values_.text(*element.value()));
    }

    void visit(const Metadata::ReferenceElement& element) override
    {
        const Types::Reference* reference = element.reference();
        if (reference)
            printReference(name(element) + ": ", element.isStrong(), reference->uuid(),
                           element.target());
    }

    void visit(const Metadata::ArrayElement& element) override { printValues(element); }
    void visit(const Metadata::BatchElement& element) override { printValues(element); }
    void visit(const Metadata::ArrayReferenceElement& element) override
    {
        printReferences(element);
    }
    void visit(const Metadata::BatchReferenceElement& element) override
    {
        printReferences(element);
    }

private:
    void line(const std::string& text) { out_ << std::string(2 * depth_, ' ') << text << '\n'; }

    static std::string name(const Element& element) { return Platform::toUtf8(element.name()); }

    std::string className(const MetadataSet& set) const
    {
        const MetaMetadata::MetaMetadataSet* meta = set.metaMetadataSet();
        if (meta && meta->hasProperty(L"name"))
            return Platform::toUtf8(meta->property(L"name"));
        return dotted(set.key().data(), KLV::Key::SIZE);
    }

    std::string heading(const MetadataSet& set) const
    {
        const Types::UUID* uid = set.instanceUID();
        std::string text = className(set);
        if (const std::string named = metaName(set); !named.empty())
            text += " " + quoted(named);
        return text + " " + (uid ? uuidText(*uid) : "{no InstanceUID}");
    }

    std::string unknownSet(const MetadataSet& set) const
    {
        const Types::UUID* uid = set.instanceUID();
        return "unknown set " + dotted(set.key().data(), KLV::Key::SIZE) + ", " +
               std::to_string(set.valueSize(metadata_.partitionDictionary())) + " bytes " +
               (uid ? uuidText(*uid) : "{no InstanceUID}");
    }

    // A set and what it holds, the meta-dictionary in brief unless asked for whole.
    void printTree(const MetadataSet& set, const std::string& lead)
    {
        if (!options_.meta && set.key() == KLV::Key(META_DICTIONARY_KEY))
            printMetaSummary(set, lead);
        else
            printSet(set, lead);
    }

    void printSet(const MetadataSet& set, const std::string& lead)
    {
        printed_.insert(&set);
        const MetaMetadata::MetaMetadataSet* meta = set.metaMetadataSet();
        line(lead + (meta ? heading(set) : unknownSet(set)));
        ++depth_;
        if (meta)
        {
            for (const auto& attribute : meta->metaAttributes())
            {
                if (isInstanceUID(attribute->universalLabel()))
                    continue;
                const Element* element = set.findElement(attribute->universalLabel());
                if (element && !element->isEmpty())
                    element->accept(static_cast<Metadata::ConstElementVisitor&>(*this));
            }
        }
        for (const auto& element : set.invalidElements())
            printInvalid(set, *element);
        --depth_;
    }

    void printReference(const std::string& lead, bool strong, const Types::UUID& uuid,
                        const MetadataSet* target)
    {
        if (!target)
        {
            line(lead + (strong ? "" : "-> ") + "missing " + uuidText(uuid));
            damage_.note("a reference to " + uuidText(uuid) + ", which no set has");
        }
        else if (!strong)
            line(lead + "-> " + heading(*target));
        else if (printed_.count(target))
            line(lead + "=> " + heading(*target));
        else if (depth_ >= MAX_DEPTH)
        {
            line(lead + "=> " + heading(*target) + " (continued below)");
            deferred_.push_back(target);
        }
        else
            printTree(*target, lead);
    }

    // The meta-dictionary in brief: a line a class, one for the types, and whatever of its sets
    // is dark.
    void printMetaSummary(const MetadataSet& dictionary, const std::string& lead)
    {
        const std::vector<const MetadataSet*> classes =
            strongTargets(dictionary, CLASS_DEFINITIONS);
        const std::vector<const MetadataSet*> types = strongTargets(dictionary, TYPE_DEFINITIONS);
        printed_.insert(&dictionary);
        line(lead + heading(dictionary) + ": " + std::to_string(classes.size()) + " classes, " +
             std::to_string(types.size()) + " types");
        ++depth_;
        printDark(dictionary);
        for (const MetadataSet* definition : classes)
        {
            if (!printed_.insert(definition).second)
                continue;
            const std::vector<const MetadataSet*> properties =
                strongTargets(*definition, PROPERTIES);
            std::string text = className(*definition) + " " + quoted(metaName(*definition));
            if (const MetadataSet* parent = definition->referencedSet(PARENT_CLASS))
                text += ": parent " + quoted(metaName(*parent));
            text += ", " + count(properties.size(), "property", "properties");
            const Types::BaseType* concrete = definition->value(IS_CONCRETE);
            const auto* isConcrete =
                concrete ? Types::Visitors::getAs<Types::Boolean>(*concrete) : nullptr;
            if (isConcrete && !isConcrete->value())
                text += ", abstract";
            line(text);
            ++depth_;
            printDark(*definition);
            for (const MetadataSet* property : properties)
                if (printed_.insert(property).second)
                    printDark(*property);
            --depth_;
        }
        std::map<std::string, std::size_t> kinds;
        for (const MetadataSet* type : types)
            ++kinds[className(*type)];
        std::string text = "TypeDefinitions: " + std::to_string(types.size());
        const char* separator = " (";
        for (const auto& [kind, number] : kinds)
        {
            text += separator + std::to_string(number) + " " + kind;
            separator = ", ";
        }
        line(kinds.empty() ? text : text + ")");
        ++depth_;
        for (const MetadataSet* type : types)
            if (printed_.insert(type).second)
                printDark(*type);
        --depth_;
        --depth_;
    }

    // The dark lines of a set whose known properties aren't shown.
    void printDark(const MetadataSet& set)
    {
        if (!set.metaMetadataSet())
            line(unknownSet(set));
        for (const auto& element : set.invalidElements())
            printInvalid(set, *element);
    }

    void printValues(const Metadata::CollectionElement& element)
    {
        std::vector<std::string> items;
        bool shortItems = true;
        for (Platform::UInt32 i = 0; i < element.count(); ++i)
        {
            items.push_back(values_.text(element.at(i)));
            shortItems = shortItems && items.back().size() <= 12;
        }
        if (shortItems)
        {
            std::string text;
            for (const std::string& item : items)
            {
                if (!text.empty())
                    text += ", ";
                text += item;
            }
            line(name(element) + ": [" + text + "]");
            return;
        }
        line(name(element) + ": " + count(items.size()));
        ++depth_;
        for (std::size_t i = 0; i < items.size(); ++i)
            line(indexed(i) + items[i]);
        --depth_;
    }

    void printReferences(const Metadata::CollectionReferenceElement& element)
    {
        line(name(element) + ": " + count(element.count()));
        ++depth_;
        for (Platform::UInt32 i = 0; i < element.count(); ++i)
        {
            const auto* reference = Types::Visitors::asReference(element.at(i));
            if (reference)
                printReference(indexed(i), element.isStrong(), reference->uuid(),
                               element.target(i));
        }
        --depth_;
    }

    static std::string count(std::size_t n, const char* one = "item", const char* many = "items")
    {
        return std::to_string(n) + " " + (n == 1 ? one : many);
    }

    void printInvalid(const MetadataSet& set, const Element& element)
    {
        const Types::UniversalLabel& label = element.universalLabel();
        const std::string where = dotted(label.data(), Types::UniversalLabel::SIZE) + ", tag " +
                                  tagOf(label) + ", " + std::to_string(element.size()) + " bytes";
        const MetaMetadata::MetaElement* known = metadata_.dictionary().metaElement(label);
        if (!known)
        {
            line("unknown property " + where);
            return;
        }
        const MetaMetadata::MetaMetadataSet* meta = set.metaMetadataSet();
        const bool own = meta && meta->metaAttribute(label);
        const std::string elementName =
            known->hasProperty(L"name") ? Platform::toUtf8(known->property(L"name")) : "";
        const Types::BaseType* value = element.value();
        line(std::string(own ? "unparsed " : "misplaced ") + elementName + " " + where + ": " +
             (value ? values_.text(*value) : "(empty)"));
    }

    std::string tagOf(const Types::UniversalLabel& label) const
    {
        const Types::LocalTag* tag = metadata_.partitionDictionary().primerPack().localTag(label);
        if (!tag)
            tag = metadata_.dictionary().localTag(label);
        if (!tag)
            return "?";
        const Platform::UInt16 value = tag->value();
        static const char* HEX = "0123456789abcdef";
        return {HEX[value >> 12], HEX[(value >> 8) & 15], HEX[(value >> 4) & 15], HEX[value & 15]};
    }

    // Deeper than any real tree; a file could chain sets without end.
    static constexpr unsigned MAX_DEPTH = 64;

    PartitionMetadata& metadata_;
    std::ostream& out_;
    ValueText values_;
    const MetadataPrintOptions& options_;
    std::set<const MetadataSet*> printed_;
    std::vector<const MetadataSet*> deferred_;
    Damage damage_;
    unsigned depth_ = 0;
};

} // namespace

MetadataPrintResult printMetadata(PartitionMetadata& metadata, std::ostream& out,
                                  const MetadataPrintOptions& options)
{
    return Printer(metadata, out, options).run();
}

} // namespace Halvorn::Inspect
