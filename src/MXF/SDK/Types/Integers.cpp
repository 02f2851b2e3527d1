#include "MXF/SDK/Types/Integers.h"

#include "HandleMembers.h"
#include "MXF/SDK/Types/SimpleTypes.h"
#include "WireBytes.h"

namespace MXF::SDK::Types
{

template <typename T>
T SimpleTypes<T>::value() const noexcept
{
    return Internal::readBigEndian<T>(bytes_.data());
}

template <typename T>
void SimpleTypes<T>::setValue(T value) noexcept
{
    Internal::writeBigEndian(value, bytes_.data());
}

template class SimpleTypes<Platform::Int8>;
template class SimpleTypes<Platform::Int16>;
template class SimpleTypes<Platform::Int32>;
template class SimpleTypes<Platform::Int64>;
template class SimpleTypes<Platform::UInt8>;
template class SimpleTypes<Platform::UInt16>;
template class SimpleTypes<Platform::UInt32>;
template class SimpleTypes<Platform::UInt64>;

struct Int8::Impl : SimpleTypes<Platform::Int8>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

Int8::Int8(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

Int8::Int8(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

Int8::ValueType Int8::value() const
{
    return impl_->value();
}

void Int8::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(Int8, SimpleDataType)

struct Int16::Impl : SimpleTypes<Platform::Int16>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

Int16::Int16(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

Int16::Int16(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

Int16::ValueType Int16::value() const
{
    return impl_->value();
}

void Int16::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(Int16, SimpleDataType)

struct Int32::Impl : SimpleTypes<Platform::Int32>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

Int32::Int32(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

Int32::Int32(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

Int32::ValueType Int32::value() const
{
    return impl_->value();
}

void Int32::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(Int32, SimpleDataType)

struct Int64::Impl : SimpleTypes<Platform::Int64>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

Int64::Int64(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

Int64::Int64(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

Int64::ValueType Int64::value() const
{
    return impl_->value();
}

void Int64::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(Int64, SimpleDataType)

struct UInt8::Impl : SimpleTypes<Platform::UInt8>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

UInt8::UInt8(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

UInt8::UInt8(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

UInt8::ValueType UInt8::value() const
{
    return impl_->value();
}

void UInt8::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(UInt8, SimpleDataType)

struct UInt16::Impl : SimpleTypes<Platform::UInt16>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

UInt16::UInt16(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

UInt16::UInt16(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

UInt16::ValueType UInt16::value() const
{
    return impl_->value();
}

void UInt16::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(UInt16, SimpleDataType)

struct UInt32::Impl : SimpleTypes<Platform::UInt32>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

UInt32::UInt32(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

UInt32::UInt32(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

UInt32::ValueType UInt32::value() const
{
    return impl_->value();
}

void UInt32::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(UInt32, SimpleDataType)

struct UInt64::Impl : SimpleTypes<Platform::UInt64>, Internal::ManagedObject
{
    using SimpleTypes::SimpleTypes;
    static constexpr Platform::UInt16 size() noexcept { return SIZE; }
};

UInt64::UInt64(ValueType value) : impl_(std::make_unique<Impl>(value)) {}

UInt64::UInt64(DataIO::DataSource& source) : impl_(std::make_unique<Impl>())
{
    Internal::readExact(source, impl_->data(), Impl::SIZE);
}

UInt64::ValueType UInt64::value() const
{
    return impl_->value();
}

void UInt64::setValue(ValueType value)
{
    impl_->setValue(value);
}

MXF_SDK_TYPES_HANDLE(UInt64, SimpleDataType)

Length::Length(ValueType value) : Int64(value) {}

Length::Length(DataIO::DataSource& source) : Int64(source) {}

MXF_SDK_TYPES_VISITABLE(Length)

Position::Position(ValueType value) : Int64(value) {}

Position::Position(DataIO::DataSource& source) : Int64(source) {}

MXF_SDK_TYPES_VISITABLE(Position)

Orientation::Orientation(ValueType value) : UInt8(value) {}

Orientation::Orientation(DataIO::DataSource& source) : UInt8(source) {}

MXF_SDK_TYPES_VISITABLE(Orientation)

SignalStandard::SignalStandard(ValueType value) : UInt8(value) {}

SignalStandard::SignalStandard(DataIO::DataSource& source) : UInt8(source) {}

MXF_SDK_TYPES_VISITABLE(SignalStandard)

} // namespace MXF::SDK::Types
