#pragma once

#include "MXF/SDK/KLV/Key.h"
#include "MXF/SDK/MetaMetadata/MetaMetadataSet.h"
#include "MXF/SDK/Metadata/Element.h"
#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/UID.h"

#include <map>
#include <memory>
#include <type_traits>
#include <vector>

namespace MXF::SDK::DataIO
{
class DataSink;
}

namespace MXF::SDK::KLV
{
struct KLVItem;
}

// The typed sets, defined on top of this layer; listed here so that visitors have a slot for each.
#define MXF_SDK_METADATA_FOR_EACH_STRUCTURAL_SET(X)                                                \
    X(TrackableMetadataSet)                                                                        \
    X(Identification)                                                                              \
    X(Preface)                                                                                     \
    X(ContentStorage)                                                                              \
    X(EssenceContainerData)                                                                        \
    X(GenericPackage)                                                                              \
    X(MaterialPackage)                                                                             \
    X(SourcePackage)                                                                               \
    X(Track)                                                                                       \
    X(TimelineTrack)                                                                               \
    X(EventTrack)                                                                                  \
    X(StaticTrack)                                                                                 \
    X(Sequence)                                                                                    \
    X(StructuralComponent)                                                                         \
    X(SourceClip)                                                                                  \
    X(DMSourceClip)                                                                                \
    X(DMSegment)                                                                                   \
    X(TimecodeComponent)                                                                           \
    X(Locator)                                                                                     \
    X(NetworkLocator)                                                                              \
    X(TextLocator)                                                                                 \
    X(SubDescriptor)                                                                               \
    X(JPEG2000PictureSubDescriptor)                                                                \
    X(GenericDescriptor)                                                                           \
    X(PhysicalDescriptor)                                                                          \
    X(WAVEAudioPhysicalDescriptor)                                                                 \
    X(FileDescriptor)                                                                              \
    X(MultipleDescriptor)                                                                          \
    X(SMPTE331MTimeDateItemDescriptor)                                                             \
    X(GenericDataEssenceDescriptor)                                                                \
    X(ANCPacketsDescriptor)                                                                        \
    X(VBIDataDescriptor)                                                                           \
    X(GenericPictureEssenceDescriptor)                                                             \
    X(CDCIEssenceDescriptor)                                                                       \
    X(MPEG2VideoDescriptor)                                                                        \
    X(RGBAEssenceDescriptor)                                                                       \
    X(GenericSoundEssenceDescriptor)                                                               \
    X(WAVEAudioEssenceDescriptor)                                                                  \
    X(AES3AudioEssenceDescriptor)                                                                  \
    X(UnknownChunkSet)

namespace MXF::SDK::Metadata
{

namespace Structural
{
#define MXF_SDK_METADATA_DECLARE(Class) class Class;
MXF_SDK_METADATA_FOR_EACH_STRUCTURAL_SET(MXF_SDK_METADATA_DECLARE)
#undef MXF_SDK_METADATA_DECLARE
} // namespace Structural

class MetadataSet;
class DarkParsedGroup;
class MetadataSetOwner;
class PartitionDictionary;

// One slot a set class, each with an empty body. A set is visited as every class it is, from
// MetadataSet down to its own: a typed class's accept calls its base's and then visits itself
// (MXF_SDK_METADATA_SET_ACCEPT does that), so a visitor of a base class meets the derived sets
// too.
class MetadataSetVisitor
{
public:
    virtual ~MetadataSetVisitor() = default;
    virtual void visit(MetadataSet& /*set*/) {}
    virtual void visit(DarkParsedGroup& /*set*/) {}
#define MXF_SDK_METADATA_VISIT(Class)                                                              \
    virtual void visit(Structural::Class& /*set*/) {}
    MXF_SDK_METADATA_FOR_EACH_STRUCTURAL_SET(MXF_SDK_METADATA_VISIT)
#undef MXF_SDK_METADATA_VISIT
};

class ConstMetadataSetVisitor
{
public:
    virtual ~ConstMetadataSetVisitor() = default;
    virtual void visit(const MetadataSet& /*set*/) {}
    virtual void visit(const DarkParsedGroup& /*set*/) {}
#define MXF_SDK_METADATA_VISIT(Class)                                                              \
    virtual void visit(const Structural::Class& /*set*/) {}
    MXF_SDK_METADATA_FOR_EACH_STRUCTURAL_SET(MXF_SDK_METADATA_VISIT)
#undef MXF_SDK_METADATA_VISIT
};

// The two accept overrides of a set class derived from `Base`.
#define MXF_SDK_METADATA_SET_ACCEPT(Base)                                                          \
    void accept(::MXF::SDK::Metadata::MetadataSetVisitor& visitor) override                        \
    {                                                                                              \
        Base::accept(visitor);                                                                     \
        visitor.visit(*this);                                                                      \
    }                                                                                              \
    void accept(::MXF::SDK::Metadata::ConstMetadataSetVisitor& visitor) const override             \
    {                                                                                              \
        Base::accept(visitor);                                                                     \
        visitor.visit(*this);                                                                      \
    }

// A local set of header metadata, built from its MetaMetadataSet: one element per attribute,
// ascending by label, empty until read or set; and what didn't parse or has no attribute, in the
// order met. Owned by its PartitionMetadata.
class MetadataSet
{
public:
    using Elements = std::map<Types::UniversalLabel, std::unique_ptr<Element>>;
    using InvalidElements = std::vector<std::unique_ptr<Element>>;

    // The BER size of a set made in memory: that of the partition writer.
    static constexpr Platform::UInt8 DEFAULT_LENGTH_SIZE = 4;

    // InvalidMetadataSet "MetadataSet Key and MetaMetadataSet do not agree" when the key isn't the
    // MetaMetadataSet's label. `metaMetadataSet` is the dictionary's and must outlive the set.
    MetadataSet(MetadataSetOwner* owner, const MetaMetadata::MetaMetadataSet& metaMetadataSet,
                const KLV::Key& key);
    virtual ~MetadataSet();
    MetadataSet(const MetadataSet&) = delete;
    MetadataSet& operator=(const MetadataSet&) = delete;

    virtual void accept(MetadataSetVisitor& visitor) { visitor.visit(*this); }
    virtual void accept(ConstMetadataSetVisitor& visitor) const { visitor.visit(*this); }

    const KLV::Key& key() const noexcept;
    // Null for a DarkParsedGroup.
    const MetaMetadata::MetaMetadataSet* metaMetadataSet() const noexcept;
    MetadataSetOwner* owner() const noexcept;
    Platform::UInt8 lengthSize() const noexcept;
    void setLengthSize(Platform::UInt8 lengthSize);

    // Reads the local-set coding of `item`'s value (2-byte tags, lengths of 1, 2 or 4 bytes):
    // known properties load into their elements, the rest go to invalidElements. Throws
    // InvalidMetadataSet "Invalid Metadata Set local field length or length field length",
    // InvalidLength "Invalid data size in Value to create an element in the metadataSet.", and
    // what `dictionary` throws for a tag it can't resolve.
    void read(KLV::KLVItem& item, PartitionDictionary& dictionary);

    // NotFound "No element with this Universal Label was found: <label>".
    Element& element(const Types::UniversalLabel& label) const;
    // Null when the set has no attribute of that label.
    Element* findElement(const Types::UniversalLabel& label) const noexcept;
    const Elements& elements() const noexcept;
    const InvalidElements& invalidElements() const noexcept;
    // Takes ownership; listeners hear `invalidElementAdded`.
    void addInvalidElement(std::unique_ptr<Element> element);
    // NotFound "Element not found in Invalid Element list!".
    void removeInvalidElement(const Element& element);

    // The value of an element, null when empty or when the set has no such attribute.
    const Types::BaseType* value(const Types::UniversalLabel& label) const;
    // `element(label).setValue(value, force)`.
    void setValue(const Types::UniversalLabel& label, std::unique_ptr<Types::BaseType> value,
                  bool force = false);
    // The target of a ReferenceElement of that label; null when empty, unresolved, or not a
    // reference element.
    MetadataSet* referencedSet(const Types::UniversalLabel& label) const;
    // The InstanceUID, from its element or, in a set that couldn't parse it, from an invalid
    // element that holds a UUID; null when none.
    const Types::UUID* instanceUID() const;

    // Bytes of the value: tag, length and value of each element that isn't empty, and of each
    // invalid one `withInvalidElements`. May give new dynamic tags.
    Platform::UInt64 valueSize(PartitionDictionary& dictionary,
                               bool withInvalidElements = true) const;
    // The whole item: key, BER length, value.
    Platform::UInt64 size(PartitionDictionary& dictionary, bool withInvalidElements = true) const;
    // The key, the BER length in lengthSize bytes (more if the length needs them), the elements
    // ascending by label, then the invalid ones in their order.
    void serialize(DataIO::DataSink& sink, PartitionDictionary& dictionary,
                   bool withInvalidElements = true) const;

protected:
    // A set the dictionary doesn't know: no attributes.
    MetadataSet(MetadataSetOwner* owner, const KLV::Key& key);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// A set whose key the dictionary doesn't know: all its items are invalid elements, written back
// unchanged.
class DarkParsedGroup final : public MetadataSet
{
public:
    DarkParsedGroup(MetadataSetOwner* owner, const KLV::Key& key);
    MXF_SDK_METADATA_SET_ACCEPT(MetadataSet)
};

// The checked cast of sets: null when the set isn't a `T` (a class derived from `T` is one).
// `GetMetadataSetVisitor<const T>` for const sets.
template <typename T>
class GetMetadataSetVisitor
    : public std::conditional_t<std::is_const_v<T>, ConstMetadataSetVisitor, MetadataSetVisitor>
{
    using Base =
        std::conditional_t<std::is_const_v<T>, ConstMetadataSetVisitor, MetadataSetVisitor>;

public:
    using Base::visit;
    void visit(T& set) override { result_ = &set; }
    T* result() const noexcept { return result_; }

private:
    T* result_ = nullptr;
};

template <typename T>
T* metadataSetAs(MetadataSet& set)
{
    GetMetadataSetVisitor<T> visitor;
    set.accept(visitor);
    return visitor.result();
}
template <typename T>
const T* metadataSetAs(const MetadataSet& set)
{
    GetMetadataSetVisitor<const T> visitor;
    set.accept(visitor);
    return visitor.result();
}

} // namespace MXF::SDK::Metadata
