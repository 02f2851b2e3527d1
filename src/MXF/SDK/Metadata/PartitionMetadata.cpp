#include "MXF/SDK/Metadata/PartitionMetadata.h"

#include "ElementSupport.h"
#include "MXF/SDK/DataIO/Memory/MemoryDataSource.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/KLV/KLVReader.h"
#include "MXF/SDK/KLV/KeyPredicates.h"
#include "MXF/SDK/Metadata/MetadataSetFactory.h"
#include "MXF/SDK/Types/Factories/BaseTypeFactory.h"
#include "MXF/SDK/Types/Factories/UIDFactory.h"
#include "MXF/SDK/Types/OpaqueTypes.h"
#include "MXF/SDK/Types/Visitors/Visitor.h"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace MXF::SDK::Metadata
{

using Platform::Byte;
using Platform::UInt64;

namespace
{

const Byte PREFACE_KEY[16] = {0x06, 0x0E, 0x2B, 0x34, 0x02, 0x53, 0x01, 0x01,
                              0x0D, 0x01, 0x01, 0x01, 0x01, 0x01, 0x2F, 0x00};
const Byte CONTENT_STORAGE_LABEL[16] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x02,
                                        0x06, 0x01, 0x01, 0x04, 0x02, 0x01, 0x00, 0x00};
const Byte PACKAGES_LABEL[16] = {0x06, 0x0E, 0x2B, 0x34, 0x01, 0x01, 0x01, 0x02,
                                 0x06, 0x01, 0x01, 0x04, 0x05, 0x01, 0x00, 0x00};

// Items whose key begins 06 0E 2B 34 02 are sets; the rest of header metadata, fill above all,
// is passed over.
bool isGroup(const KLV::Key& key)
{
    static const Byte prefix[5] = {0x06, 0x0E, 0x2B, 0x34, 0x02};
    return std::equal(prefix, prefix + 5, key.data());
}

// The sets a set holds by strong reference, those that resolve.
class StrongTargets final : public ElementVisitor
{
public:
    void visit(ReferenceElement& element) override
    {
        if (element.isStrong())
            add(element.target());
    }
    void visit(ArrayReferenceElement& element) override { addAll(element); }
    void visit(BatchReferenceElement& element) override { addAll(element); }

    std::vector<MetadataSet*> targets;

private:
    void add(MetadataSet* target)
    {
        if (target != nullptr)
            targets.push_back(target);
    }
    void addAll(CollectionReferenceElement& element)
    {
        if (!element.isStrong())
            return;
        for (Platform::UInt32 i = 0; i < element.count(); ++i)
            add(element.target(i));
    }
};

std::vector<MetadataSet*> strongTargets(MetadataSet& set)
{
    StrongTargets visitor;
    for (const auto& [label, element] : set.elements())
        element->accept(visitor);
    return std::move(visitor.targets);
}

} // namespace

struct PartitionMetadata::Impl
{
    Impl(const MetaMetadata::Dictionary& dictionary, std::unique_ptr<Packs::PrimerPack> primer)
        : partitionDictionary(dictionary, std::move(primer))
    {
    }

    PartitionDictionary partitionDictionary;
    std::vector<std::unique_ptr<MetadataSet>> sets;
    std::multimap<KLV::Key, MetadataSet*> byKey;
    MetadataIndex index;
    std::unique_ptr<Listeners::MetadataIndexListener> indexListener;
    std::vector<PartitionMetadataListener*> listeners;

    template <typename Event>
    void notify(Event event)
    {
        if (indexListener)
            event(*indexListener);
        for (PartitionMetadataListener* listener : listeners)
            event(*listener);
    }

    void indexSet(MetadataSet& set)
    {
        const Types::UUID* uid = set.instanceUID();
        if (uid == nullptr)
            MXF_SDK_THROW(Exceptions::NotFound, L"InstanceUID not found in Metadata Set with key " +
                                                    set.key().toString() +
                                                    L" Check Metadata Set builder.");
        if (!index.emplace(*uid, &set).second)
            MXF_SDK_THROW(Exceptions::InvalidFormat, L"The " + set.key().toString() +
                                                         L" metadataSet has an instance UID, " +
                                                         uid->toString() + L", already defined!");
    }

    MetadataSet& store(std::unique_ptr<MetadataSet> set)
    {
        MetadataSet& stored = *set;
        sets.push_back(std::move(set));
        byKey.emplace(stored.key(), &stored);
        return stored;
    }

    // Gives every element that will be written its tag now, so that the primer, written first,
    // holds them all.
    void assignTags()
    {
        for (const auto& set : sets)
        {
            for (const auto& [label, element] : set->elements())
                if (!element->isEmpty())
                    partitionDictionary.localTag(label);
            for (const auto& element : set->invalidElements())
                if (!element->isEmpty())
                    partitionDictionary.localTag(element->universalLabel());
        }
    }
};

PartitionMetadata::PartitionMetadata(const MetaMetadata::Dictionary& dictionary,
                                     std::unique_ptr<Packs::PrimerPack> primer)
    : impl_(std::make_unique<Impl>(dictionary, std::move(primer)))
{
    impl_->indexListener = std::make_unique<DefaultMetadataIndexListener>(impl_->index);
}

PartitionMetadata::~PartitionMetadata() = default;

const MetaMetadata::Dictionary& PartitionMetadata::dictionary() const noexcept
{
    return impl_->partitionDictionary.dictionary();
}

PartitionDictionary& PartitionMetadata::partitionDictionary() noexcept
{
    return impl_->partitionDictionary;
}

const PartitionDictionary& PartitionMetadata::partitionDictionary() const noexcept
{
    return impl_->partitionDictionary;
}

MetadataSet& PartitionMetadata::addSet(std::unique_ptr<MetadataSet> set)
{
    MXF_SDK_CHECK_AS(set != nullptr, "set != 0", "No MetadataSet to add", Exceptions::InvalidValue);
    impl_->indexSet(*set);
    MetadataSet& stored = impl_->store(std::move(set));
    impl_->notify([&](PartitionMetadataListener& listener) { listener.setAdded(stored); });
    return stored;
}

MetadataSet& PartitionMetadata::createSet(const KLV::Key& key)
{
    if (dictionary().metaMetadataSet(Types::UniversalLabel(key.data())) == nullptr)
        MXF_SDK_THROW(Exceptions::NotFound, L"A MetaMetadataSet with Key " + key.toString() +
                                                L" was not found in the Dictionary.");
    std::unique_ptr<MetadataSet> set =
        MetadataSetFactory::instance().create(this, dictionary(), key);
    set->setValue(Support::instanceUIDLabel(),
                  std::make_unique<Types::UUID>(Types::Factories::newUUID()));
    return addSet(std::move(set));
}

void PartitionMetadata::removeSet(MetadataSet& set)
{
    auto& sets = impl_->sets;
    const auto found = std::find_if(sets.begin(), sets.end(),
                                    [&](const auto& held) { return held.get() == &set; });
    if (found == sets.end())
        MXF_SDK_THROW(Exceptions::NotFound, "Didn't find MetadataSet with specified key.");
    impl_->notify([&](PartitionMetadataListener& listener) { listener.setRemoving(set); });
    for (auto at = impl_->index.begin(); at != impl_->index.end();)
        at = at->second == &set ? impl_->index.erase(at) : std::next(at);
    const auto range = impl_->byKey.equal_range(set.key());
    for (auto at = range.first; at != range.second; ++at)
        if (at->second == &set)
        {
            impl_->byKey.erase(at);
            break;
        }
    sets.erase(found);
}

MetadataSet* PartitionMetadata::findSet(const Types::UUID& instanceUID) const
{
    if (impl_->indexListener)
        return impl_->indexListener->findSet(instanceUID);
    const auto found = impl_->index.find(instanceUID);
    return found != impl_->index.end() ? found->second : nullptr;
}

std::vector<MetadataSet*> PartitionMetadata::sets(const KLV::Key& key) const
{
    std::vector<MetadataSet*> result;
    const auto range = impl_->byKey.equal_range(key);
    for (auto at = range.first; at != range.second; ++at)
        result.push_back(at->second);
    return result;
}

MetadataSet& PartitionMetadata::set(const KLV::Key& key) const
{
    const auto found = impl_->byKey.find(key);
    if (found == impl_->byKey.end())
        MXF_SDK_THROW(Exceptions::NotFound, "Didn't find MetadataSet with specified key.");
    return *found->second;
}

std::vector<MetadataSet*> PartitionMetadata::sets() const
{
    std::vector<MetadataSet*> result;
    result.reserve(impl_->sets.size());
    for (const auto& set : impl_->sets)
        result.push_back(set.get());
    return result;
}

std::size_t PartitionMetadata::setCount() const noexcept
{
    return impl_->sets.size();
}

MetadataSet& PartitionMetadata::preface() const
{
    const KLV::Key key(PREFACE_KEY);
    const std::size_t count = impl_->byKey.count(key);
    if (count == 0)
        MXF_SDK_THROW(Exceptions::InvalidStructure, "Preface not found in PartitionMetadata");
    if (count > 1)
        MXF_SDK_THROW(Exceptions::InvalidStructure,
                      "More than one Preface found in PartitionMetadata");
    return *impl_->byKey.find(key)->second;
}

MetadataSet& PartitionMetadata::contentStorage() const
{
    MetadataSet* contentStorage =
        preface().referencedSet(Types::UniversalLabel(CONTENT_STORAGE_LABEL));
    MXF_SDK_CHECK_AS(contentStorage != nullptr, "contentStorage != 0", "No ContentStorage",
                     Exceptions::InvalidStructure);
    const Element* packages = contentStorage->findElement(Types::UniversalLabel(PACKAGES_LABEL));
    const CollectionElement* collection =
        packages != nullptr ? asCollectionElement(*packages) : nullptr;
    MXF_SDK_CHECK_AS(collection != nullptr && collection->count() > 0,
                     "contentStorage -> packagesCount () > 0", "No ContentStorage packages",
                     Exceptions::InvalidStructure);
    return *contentStorage;
}

void PartitionMetadata::read(DataIO::DataSource& source, UInt64 headerByteCount)
{
    KLV::KLVReader reader(source);
    UInt64 skipped = 0;
    std::unique_ptr<KLV::KLVItem> item = reader.readKLV(skipped, 0);
    while (KLV::isFillItem(item->key))
    {
        item.reset();
        item = reader.readKLV(skipped, 0);
    }
    MXF_SDK_CHECK_AS(Packs::PrimerPack::isPrimerPack(item->key),
                     "PrimerPack::isPrimerPack (item -> key)", "Expected Primer Pack",
                     Exceptions::InvalidFormat);
    const UInt64 start = item->keyPosition;
    const UInt64 end = headerByteCount > UINT64_MAX - start ? UINT64_MAX : start + headerByteCount;
    impl_->partitionDictionary.primerPack() = Packs::PrimerPack(*item);
    item.reset();
    while (source.position() < end)
    {
        item = reader.readKLV(skipped, 0);
        // Avid's root object is a local set under a private key; its object directory is no set.
        if (isGroup(item->key) || KLV::isAvidRootObject(item->key))
            readSet(*item);
        item.reset();
    }
    buildReferenceGraph();
}

MetadataSet& PartitionMetadata::readSet(KLV::KLVItem& item)
{
    std::unique_ptr<MetadataSet> set =
        MetadataSetFactory::instance().create(this, dictionary(), item.key);
    set->read(item, impl_->partitionDictionary);
    MetadataSet& stored = impl_->store(std::move(set));
    impl_->notify([&](PartitionMetadataListener& listener) { listener.setAdded(stored); });
    return stored;
}

void PartitionMetadata::buildReferenceGraph()
{
    impl_->index.clear();
    for (const auto& set : impl_->sets)
        impl_->indexSet(*set);

    // Depth first from every set, without recursion: a set met again while it is on the path is
    // a cycle; a set done once needs no second walk.
    enum class Mark
    {
        ON_PATH,
        DONE
    };
    std::unordered_map<const MetadataSet*, Mark> marks;
    struct Frame
    {
        MetadataSet* set;
        std::vector<MetadataSet*> targets;
        std::size_t next;
    };
    for (const auto& root : impl_->sets)
    {
        if (marks.count(root.get()) != 0)
            continue;
        std::vector<Frame> path;
        marks[root.get()] = Mark::ON_PATH;
        path.push_back(Frame{root.get(), strongTargets(*root), 0});
        while (!path.empty())
        {
            Frame& frame = path.back();
            if (frame.next == frame.targets.size())
            {
                marks[frame.set] = Mark::DONE;
                path.pop_back();
                continue;
            }
            MetadataSet* target = frame.targets[frame.next++];
            const auto mark = marks.find(target);
            if (mark == marks.end())
            {
                marks[target] = Mark::ON_PATH;
                path.push_back(Frame{target, strongTargets(*target), 0});
            }
            else if (mark->second == Mark::ON_PATH)
            {
                MXF_SDK_THROW(Exceptions::InvalidFormat,
                              L"Circular reference for this instanceUID: " +
                                  target->instanceUID()->toString());
            }
        }
    }
    impl_->notify([&](PartitionMetadataListener& listener) { listener.metadataRead(*this); });
}

UInt64 PartitionMetadata::size()
{
    impl_->assignTags();
    Support::CountingSink counter;
    impl_->partitionDictionary.primerPack().serialize(counter);
    UInt64 total = counter.position();
    for (const auto& set : impl_->sets)
        total += set->size(impl_->partitionDictionary);
    return total;
}

void PartitionMetadata::write(DataIO::DataSink& sink)
{
    impl_->assignTags();
    impl_->partitionDictionary.primerPack().serialize(sink);
    for (const auto& set : impl_->sets)
        set->serialize(sink, impl_->partitionDictionary);
}

void PartitionMetadata::addListener(PartitionMetadataListener& listener)
{
    impl_->listeners.push_back(&listener);
}

void PartitionMetadata::removeListener(PartitionMetadataListener& listener)
{
    auto& listeners = impl_->listeners;
    listeners.erase(std::remove(listeners.begin(), listeners.end(), &listener), listeners.end());
}

void PartitionMetadata::setIndexListener(std::unique_ptr<Listeners::MetadataIndexListener> listener)
{
    impl_->indexListener = std::move(listener);
}

MetadataIndex& PartitionMetadata::index() noexcept
{
    return impl_->index;
}

void PartitionMetadata::elementLoaded(Element& element)
{
    impl_->notify([&](PartitionMetadataListener& listener) { listener.elementLoaded(element); });
}

void PartitionMetadata::valueChanging(Element& element)
{
    impl_->notify([&](PartitionMetadataListener& listener) { listener.valueChanging(element); });
}

void PartitionMetadata::valueChanged(Element& element)
{
    impl_->notify([&](PartitionMetadataListener& listener) { listener.valueChanged(element); });
}

void PartitionMetadata::invalidElementAdded(Element& element)
{
    impl_->notify([&](PartitionMetadataListener& listener)
                  { listener.invalidElementAdded(element); });
}

void PartitionMetadata::invalidElementRemoving(Element& element)
{
    impl_->notify([&](PartitionMetadataListener& listener)
                  { listener.invalidElementRemoving(element); });
}

CreateInvalidElementVisitor::CreateInvalidElementVisitor(MetadataSet& owner,
                                                         const Types::UniversalLabel& label,
                                                         const Byte* bytes, std::size_t size)
    : owner_(owner), label_(label), bytes_(bytes), size_(size)
{
}

void CreateInvalidElementVisitor::visit(const MetaMetadata::MetaSimpleElement& element)
{
    build(element, false);
}

void CreateInvalidElementVisitor::visit(const MetaMetadata::MetaReferenceElement& element)
{
    build(element, false);
}

void CreateInvalidElementVisitor::visit(const MetaMetadata::MetaCollection& element)
{
    build(element, true);
}

void CreateInvalidElementVisitor::visit(const MetaMetadata::MetaReferenceCollection& element)
{
    build(element, true);
}

void CreateInvalidElementVisitor::build(const MetaMetadata::MetaElement& element, bool collection)
{
    auto made = std::make_unique<SimpleElement>(
        std::make_shared<MetaMetadata::MisplacedAttribute>(label_, element), owner_);
    std::unique_ptr<Types::BaseType> value;
    try
    {
        DataIO::Memory::MemoryDataSource source(bytes_, size_);
        const auto& factory = Types::Factories::BaseTypeFactory::instance();
        Platform::UInt32 subType = 0;
        if (collection)
        {
            if (const auto* values =
                    MetaMetadata::metaElementAs<MetaMetadata::MetaCollection>(element))
                subType = values->dataSubType();
            else if (const auto* references =
                         MetaMetadata::metaElementAs<MetaMetadata::MetaReferenceCollection>(
                             element))
                subType = references->dataSubType();
        }
        value = collection ? factory.createCollection(element.dataType(), source, subType)
                           : factory.create(element.dataType(), source);
        Support::checkConsumed(source);
    }
    catch (const std::exception&)
    {
        value = std::make_unique<Types::Unknown>(bytes_, size_);
    }
    made->setRawValue(std::move(value));
    result_ = std::move(made);
}

std::unique_ptr<Element>
CreateInvalidElementVisitor::create(const MetaMetadata::MetaElement* element)
{
    result_.reset();
    if (element != nullptr)
        element->accept(*this);
    if (!result_)
    {
        auto made = std::make_unique<SimpleElement>(
            std::make_shared<MetaMetadata::UnknownAttribute>(label_), owner_);
        made->setRawValue(std::make_unique<Types::Unknown>(bytes_, size_));
        result_ = std::move(made);
    }
    return std::move(result_);
}

} // namespace MXF::SDK::Metadata
