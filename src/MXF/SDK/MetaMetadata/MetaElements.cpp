#include "MXF/SDK/MetaMetadata/MetaElements.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Types/TypeIdentifiers.h"

#include <string>

namespace MXF::SDK::MetaMetadata
{

using namespace Types::TypeIdentifiers;
using Platform::UInt32;

namespace
{

bool isReference(UInt32 type)
{
    return type == TYPE_STRONG_REFERENCE || type == TYPE_WEAK_REFERENCE;
}

bool isCollection(UInt32 type)
{
    return type == TYPE_ARRAY || type == TYPE_BATCH;
}

// A number outside the type table has no name; the number then stands for it.
std::wstring typeName(UInt32 type)
{
    const std::wstring_view known = name(type);
    return known.empty() ? std::to_wstring(type) : std::wstring(known);
}

[[noreturn]] void refuse(const wchar_t* what, UInt32 type)
{
    MXF_SDK_THROW(Exceptions::InvalidMetaElement, what + typeName(type));
}

} // namespace

MetaElement::MetaElement(const Types::UniversalLabel& universalLabel, UInt32 dataType)
    : universalLabel_(universalLabel), dataType_(dataType)
{
}

MetaElement::~MetaElement() = default;

MetaValueHolder::~MetaValueHolder() = default;

MetaReferenceHolder::MetaReferenceHolder(std::vector<KLV::Key> allowedReferences)
    : allowedReferences_(std::move(allowedReferences))
{
}

MetaReferenceHolder::~MetaReferenceHolder() = default;

MetaSimpleElement::MetaSimpleElement(const Types::UniversalLabel& universalLabel, UInt32 dataType)
    : MetaSimpleElement(universalLabel, dataType, {})
{
}

MetaSimpleElement::MetaSimpleElement(const Types::UniversalLabel& universalLabel, UInt32 dataType,
                                     Enumerations enumerations)
    : MetaElement(universalLabel, dataType), enumerations_(std::move(enumerations))
{
    if (isCollection(dataType) || isReference(dataType))
        refuse(L"Tried to create a MetaSimpleElement with dataType: ", dataType);
}

void MetaSimpleElement::accept(MetaElementVisitor& visitor) const
{
    visitor.visit(*this);
}

MetaReferenceElement::MetaReferenceElement(const Types::UniversalLabel& universalLabel,
                                           UInt32 dataType, std::vector<KLV::Key> allowedReferences)
    : MetaElement(universalLabel, dataType), MetaReferenceHolder(std::move(allowedReferences))
{
    if (!isReference(dataType))
        refuse(L"Tried to create a MetaReferenceElement with dataType: ", dataType);
}

void MetaReferenceElement::accept(MetaElementVisitor& visitor) const
{
    visitor.visit(*this);
}

MetaCollectionElement::MetaCollectionElement(const Types::UniversalLabel& universalLabel,
                                             UInt32 dataType, UInt32 dataSubType, UInt32 minimum,
                                             UInt32 maximum)
    : MetaElement(universalLabel, dataType), dataSubType_(dataSubType), minimum_(minimum),
      maximum_(maximum)
{
    if (!isCollection(dataType))
        refuse(L"Tried to create a MetaCollectionElement derived class with dataType: ", dataType);
    if (maximum < minimum)
        MXF_SDK_THROW(Exceptions::InvalidMetaElement,
                      L"Tried to create a MetaCollectionElement derived class with invalid "
                      L"limits: " +
                          std::to_wstring(minimum) + L", " + std::to_wstring(maximum));
}

MetaCollection::MetaCollection(const Types::UniversalLabel& universalLabel, UInt32 dataType,
                               UInt32 dataSubType, UInt32 minimum, UInt32 maximum)
    : MetaCollectionElement(universalLabel, dataType, dataSubType, minimum, maximum)
{
    if (isReference(dataSubType))
        refuse(L"Tried to create a MetaCollection with dataSubType: ", dataSubType);
}

void MetaCollection::accept(MetaElementVisitor& visitor) const
{
    visitor.visit(*this);
}

MetaReferenceCollection::MetaReferenceCollection(const Types::UniversalLabel& universalLabel,
                                                 UInt32 dataType, UInt32 dataSubType,
                                                 UInt32 minimum, UInt32 maximum,
                                                 std::vector<KLV::Key> allowedReferences)
    : MetaCollectionElement(universalLabel, dataType, dataSubType, minimum, maximum),
      MetaReferenceHolder(std::move(allowedReferences))
{
    if (!isReference(dataSubType))
        refuse(L"Tried to create a MetaReferenceCollection with dataType: ", dataSubType);
}

void MetaReferenceCollection::accept(MetaElementVisitor& visitor) const
{
    visitor.visit(*this);
}

} // namespace MXF::SDK::MetaMetadata
