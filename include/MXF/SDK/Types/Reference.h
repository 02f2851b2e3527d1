#pragma once

#include "MXF/SDK/Platform/Types.h"
#include "MXF/SDK/Types/BaseType.h"
#include "MXF/SDK/Types/UID.h"

#include <memory>

namespace MXF::SDK::DataIO
{
class DataSource;
}

namespace MXF::SDK::Types
{

// The 16-byte instance identifier of the set a value refers to. Strong and weak references have
// the same bytes; the metadata layer decides what each one means.
class Reference : public SimpleDataType
{
public:
    ~Reference() override;

    UUID uuid() const;

    const Platform::Byte* data() const override;
    Platform::UInt16 size() const override;

    // The same target, whatever the kind of reference.
    friend bool operator==(const Reference& a, const Reference& b) noexcept;

protected:
    explicit Reference(const UUID& target);
    explicit Reference(const Platform::Byte* bytes);
    // An exact read of 16 bytes.
    explicit Reference(DataIO::DataSource& source);
    Reference(const Reference& other);
    Reference& operator=(const Reference& other);

private:
    std::unique_ptr<UUID::Impl> impl_;
};

class StrongReference final : public Reference
{
public:
    explicit StrongReference(const UUID& target);
    explicit StrongReference(const Platform::Byte* bytes);
    explicit StrongReference(DataIO::DataSource& source);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<SimpleDataType> clone() const override;
};

class WeakReference final : public Reference
{
public:
    explicit WeakReference(const UUID& target);
    explicit WeakReference(const Platform::Byte* bytes);
    explicit WeakReference(DataIO::DataSource& source);

    void accept(Visitors::Visitor& visitor) const override;
    void accept(Visitors::NonConstVisitor& visitor) override;
    std::unique_ptr<SimpleDataType> clone() const override;
};

} // namespace MXF::SDK::Types
