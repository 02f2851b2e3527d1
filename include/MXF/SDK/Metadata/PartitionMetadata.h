#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/MetaMetadata/Dictionary.h"
#include "MXF/SDK/Metadata/Listeners.h"
#include "MXF/SDK/Metadata/MetadataSet.h"
#include "MXF/SDK/Metadata/PartitionDictionary.h"
#include "MXF/SDK/Packs/PrimerPack.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/UID.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace MXF::SDK::DataIO
{
class DataSource;
class DataSink;
} // namespace MXF::SDK::DataIO

namespace MXF::SDK::KLV
{
struct KLVItem;
}

namespace MXF::SDK::Metadata
{

// What sets belong to: it resolves references and hears of changes.
class MetadataSetOwner
{
public:
    virtual ~MetadataSetOwner() = default;
    // Null when no set has that InstanceUID.
    virtual MetadataSet* findSet(const Types::UUID& instanceUID) const = 0;
    virtual PartitionDictionary& partitionDictionary() noexcept = 0;
    virtual const PartitionDictionary& partitionDictionary() const noexcept = 0;

    virtual void elementLoaded(Element& element) = 0;
    virtual void valueChanging(Element& element) = 0;
    virtual void valueChanged(Element& element) = 0;
    virtual void invalidElementAdded(Element& element) = 0;
    virtual void invalidElementRemoving(Element& element) = 0;
};

// The header metadata of one partition: its sets (owned, in the order read or added), the index
// from InstanceUID to set, the PartitionDictionary of its local tags and the listeners. Belongs
// to one thread at a time.
class PartitionMetadata final : public MetadataSetOwner
{
public:
    // `dictionary` is borrowed and must outlive this. An empty primer when `primer` is null.
    explicit PartitionMetadata(const MetaMetadata::Dictionary& dictionary,
                               std::unique_ptr<Packs::PrimerPack> primer = nullptr);
    ~PartitionMetadata() override;
    PartitionMetadata(const PartitionMetadata&) = delete;
    PartitionMetadata& operator=(const PartitionMetadata&) = delete;

    const MetaMetadata::Dictionary& dictionary() const noexcept;
    PartitionDictionary& partitionDictionary() noexcept override;
    const PartitionDictionary& partitionDictionary() const noexcept override;

    // Takes ownership, indexes the set by its InstanceUID (NotFound "InstanceUID not found in
    // Metadata Set with key <key> Check Metadata Set builder."; InvalidFormat "The <key>
    // metadataSet has an instance UID, <uuid>, already defined!") and notifies the listeners.
    MetadataSet& addSet(std::unique_ptr<MetadataSet> set);
    // A new set of `key` through MetadataSetFactory, with a new InstanceUID, added. NotFound "A
    // MetaMetadataSet with Key <key> was not found in the Dictionary." for a key the dictionary
    // doesn't know.
    MetadataSet& createSet(const KLV::Key& key);
    // Notifies, unindexes and deletes `set`. NotFound "Didn't find MetadataSet with specified
    // key." when it isn't one of these sets.
    void removeSet(MetadataSet& set);

    MetadataSet* findSet(const Types::UUID& instanceUID) const override;
    // The sets of a key, in order.
    std::vector<MetadataSet*> sets(const KLV::Key& key) const;
    // The first set of a key; NotFound "Didn't find MetadataSet with specified key.".
    MetadataSet& set(const KLV::Key& key) const;
    // All sets, in the order read or added.
    std::vector<MetadataSet*> sets() const;
    std::size_t setCount() const noexcept;

    // The one Preface: InvalidStructure "Preface not found in PartitionMetadata" or "More than one
    // Preface found in PartitionMetadata".
    MetadataSet& preface() const;
    // The Preface's ContentStorage: InvalidStructure "contentStorage != 0: No ContentStorage" and
    // "contentStorage -> packagesCount () > 0: No ContentStorage packages".
    MetadataSet& contentStorage() const;

    // Reads the header metadata from `source`, which stands after the partition pack: fill items,
    // then the primer, whose key starts the `headerByteCount` bytes, then the sets. Items of other
    // keys than 06 0E 2B 34 02, fill above all, are passed over. Then the reference graph is built.
    // InvalidFormat "PrimerPack::isPrimerPack (item -> key): Expected Primer Pack" when the first
    // item after the fill isn't the primer; what KLVReader and the sets throw.
    void read(DataIO::DataSource& source, Platform::UInt64 headerByteCount);
    // One set from its item, kept without indexing: call buildReferenceGraph when all are in.
    MetadataSet& readSet(KLV::KLVItem& item);
    // Indexes every set by InstanceUID (the errors of addSet) and follows the strong references
    // from each: InvalidFormat "Circular reference for this instanceUID: <uuid>" on a cycle. A
    // reference without target is passed over. Listeners then hear `metadataRead`.
    void buildReferenceGraph();

    // The primer and then the sets, in order: what `write` will give, in bytes.
    Platform::UInt64 size();
    void write(DataIO::DataSink& sink);

    // Borrowed: a listener must outlive this or be removed first.
    void addListener(PartitionMetadataListener& listener);
    void removeListener(PartitionMetadataListener& listener);
    // The index listener keeps the index up to date; DefaultMetadataIndexListener unless told
    // otherwise.
    void setIndexListener(std::unique_ptr<Listeners::MetadataIndexListener> listener);
    MetadataIndex& index() noexcept;

    void elementLoaded(Element& element) override;
    void valueChanging(Element& element) override;
    void valueChanged(Element& element) override;
    void invalidElementAdded(Element& element) override;
    void invalidElementRemoving(Element& element) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// Makes the element of a property that has no place in its set, from its raw bytes: with a
// MisplacedAttribute and a value of the dictionary's type for the label when the dictionary knows
// the label (as far as that parses), else with an UnknownAttribute and an Unknown value.
class CreateInvalidElementVisitor final : public MetaMetadata::MetaElementVisitor
{
public:
    CreateInvalidElementVisitor(MetadataSet& owner, const Types::UniversalLabel& label,
                                const Platform::Byte* bytes, std::size_t size);

    using MetaElementVisitor::visit;
    void visit(const MetaMetadata::MetaSimpleElement& element) override;
    void visit(const MetaMetadata::MetaReferenceElement& element) override;
    void visit(const MetaMetadata::MetaCollection& element) override;
    void visit(const MetaMetadata::MetaReferenceCollection& element) override;

    // The element, for the dictionary's meta element of the label, or null for none.
    std::unique_ptr<Element> create(const MetaMetadata::MetaElement* element);

private:
    void build(const MetaMetadata::MetaElement& element, bool collection);

    MetadataSet& owner_;
    const Types::UniversalLabel& label_;
    const Platform::Byte* bytes_;
    std::size_t size_;
    std::unique_ptr<Element> result_;
};

} // namespace MXF::SDK::Metadata
