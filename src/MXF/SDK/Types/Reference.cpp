#include "MXF/SDK/Types/Reference.h"

#include "HandleMembers.h"
#include "IdentifierImpls.h"

namespace MXF::SDK::Types
{

Reference::Reference(const UUID& target) : impl_(std::make_unique<UUID::Impl>(target.data())) {}

Reference::Reference(const Platform::Byte* bytes) : impl_(std::make_unique<UUID::Impl>(bytes)) {}

Reference::Reference(DataIO::DataSource& source) : impl_(std::make_unique<UUID::Impl>(source)) {}

Reference::Reference(const Reference& other)
    : SimpleDataType(other), impl_(std::make_unique<UUID::Impl>(*other.impl_))
{
}

Reference& Reference::operator=(const Reference& other)
{
    SimpleDataType::operator=(other);
    *impl_ = *other.impl_;
    return *this;
}

Reference::~Reference() = default;

UUID Reference::uuid() const
{
    return UUID(impl_->data());
}

const Platform::Byte* Reference::data() const
{
    return impl_->data();
}

Platform::UInt16 Reference::size() const
{
    return UUID::SIZE;
}

bool operator==(const Reference& a, const Reference& b) noexcept
{
    return *a.impl_ == *b.impl_;
}

StrongReference::StrongReference(const UUID& target) : Reference(target) {}

StrongReference::StrongReference(const Platform::Byte* bytes) : Reference(bytes) {}

StrongReference::StrongReference(DataIO::DataSource& source) : Reference(source) {}

MXF_SDK_TYPES_VISITABLE(StrongReference)

WeakReference::WeakReference(const UUID& target) : Reference(target) {}

WeakReference::WeakReference(const Platform::Byte* bytes) : Reference(bytes) {}

WeakReference::WeakReference(DataIO::DataSource& source) : Reference(source) {}

MXF_SDK_TYPES_VISITABLE(WeakReference)

} // namespace MXF::SDK::Types
