#include "MXF/SDK/Types/J2KTypes.h"

#include "HandleMembers.h"
#include "MXF/SDK/Exceptions/Exceptions.h"
#include "WireBytes.h"

#include <algorithm>

namespace MXF::SDK::Types
{

using Platform::Byte;

struct J2KPictureComponent::Impl : Internal::FixedBytes<3>
{
    using FixedBytes::FixedBytes;
};

J2KPictureComponent::J2KPictureComponent(Platform::UInt8 ssiz, Platform::UInt8 xrsiz,
                                         Platform::UInt8 yrsiz)
    : impl_(std::make_unique<Impl>())
{
    impl_->bytes = {ssiz, xrsiz, yrsiz};
}

J2KPictureComponent::J2KPictureComponent(DataIO::DataSource& source)
    : impl_(std::make_unique<Impl>(source))
{
}

Platform::UInt8 J2KPictureComponent::ssiz() const
{
    return impl_->bytes[0];
}

Platform::UInt8 J2KPictureComponent::xrsiz() const
{
    return impl_->bytes[1];
}

Platform::UInt8 J2KPictureComponent::yrsiz() const
{
    return impl_->bytes[2];
}

MXF_SDK_TYPES_HANDLE(J2KPictureComponent, SimpleDataType)

namespace
{

constexpr std::size_t COD_MINIMUM = 1 + J2KCodingStyleDefault::SGCOD_SIZE + 5;
constexpr std::size_t QCD_MINIMUM = 2;

void checkCodingStyleSize(std::size_t size)
{
    if (size < COD_MINIMUM)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "J2KCodingStyleDefault size is smaller than required. J2KCodingStyleDefault "
                      "must be at least 10 bytes.");
}

Internal::ByteVector readCodingStyle(DataIO::BoundedDataSource& source)
{
    Internal::ByteVector bytes = Internal::readRemaining(source);
    checkCodingStyleSize(bytes.size());
    return bytes;
}

// The text read from a source names the wrong class in its second sentence; kept as it has always
// been written.
Internal::ByteVector readQuantisation(DataIO::BoundedDataSource& source)
{
    Internal::ByteVector bytes = Internal::readRemaining(source);
    if (bytes.size() < QCD_MINIMUM)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "J2KQuantisationDefault size is smaller than required. J2KCodingStyleDefault "
                      "must be at least 2 bytes.");
    return bytes;
}

} // namespace

struct J2KCodingStyleDefault::Impl : Internal::VariableBytes
{
    using VariableBytes::VariableBytes;
};

J2KCodingStyleDefault::J2KCodingStyleDefault(const Byte* bytes, std::size_t size)
{
    checkCodingStyleSize(size);
    impl_ = std::make_unique<Impl>(bytes, size);
}

J2KCodingStyleDefault::J2KCodingStyleDefault(Platform::UInt8 scod,
                                             const std::array<Byte, SGCOD_SIZE>& sgcod,
                                             const Byte* spcod, std::size_t spcodSize)
{
    if (spcodSize < COD_MINIMUM - 1 - SGCOD_SIZE)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "J2KCodingStyleDefault Spcod item size is smaller than required. Spcod must "
                      "be at least 5 bytes.");
    Internal::ByteVector bytes;
    bytes.reserve(1 + SGCOD_SIZE + spcodSize);
    bytes.push_back(scod);
    bytes.insert(bytes.end(), sgcod.begin(), sgcod.end());
    bytes.insert(bytes.end(), spcod, spcod + spcodSize);
    impl_ = std::make_unique<Impl>(std::move(bytes));
}

J2KCodingStyleDefault::J2KCodingStyleDefault(DataIO::BoundedDataSource& source)
    : impl_(std::make_unique<Impl>(readCodingStyle(source)))
{
}

Platform::UInt8 J2KCodingStyleDefault::scod() const
{
    return impl_->bytes[0];
}

std::array<Byte, J2KCodingStyleDefault::SGCOD_SIZE> J2KCodingStyleDefault::sgcod() const
{
    std::array<Byte, SGCOD_SIZE> sgcod{};
    std::copy_n(impl_->bytes.begin() + 1, SGCOD_SIZE, sgcod.begin());
    return sgcod;
}

const Byte* J2KCodingStyleDefault::spcod() const
{
    return impl_->bytes.data() + 1 + SGCOD_SIZE;
}

std::size_t J2KCodingStyleDefault::spcodSize() const
{
    return impl_->bytes.size() - 1 - SGCOD_SIZE;
}

MXF_SDK_TYPES_HANDLE(J2KCodingStyleDefault, SimpleDataType)

struct J2KQuantisationDefault::Impl : Internal::VariableBytes
{
    using VariableBytes::VariableBytes;
};

J2KQuantisationDefault::J2KQuantisationDefault(const Byte* bytes, std::size_t size)
{
    if (size < QCD_MINIMUM)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "J2KQuantisationDefault size is smaller than required. "
                      "J2KQuantisationDefault must be at least 2 bytes.");
    impl_ = std::make_unique<Impl>(bytes, size);
}

J2KQuantisationDefault::J2KQuantisationDefault(Platform::UInt8 sqcd, const Byte* spqcd,
                                               std::size_t spqcdSize)
{
    if (spqcdSize < QCD_MINIMUM - 1)
        MXF_SDK_THROW(Exceptions::InvalidValue,
                      "J2KQuantisationDefault sPgcd item size is smaller than required. Spcod must "
                      "be at least 1 bytes.");
    Internal::ByteVector bytes;
    bytes.reserve(1 + spqcdSize);
    bytes.push_back(sqcd);
    bytes.insert(bytes.end(), spqcd, spqcd + spqcdSize);
    impl_ = std::make_unique<Impl>(std::move(bytes));
}

J2KQuantisationDefault::J2KQuantisationDefault(DataIO::BoundedDataSource& source)
    : impl_(std::make_unique<Impl>(readQuantisation(source)))
{
}

Platform::UInt8 J2KQuantisationDefault::sqcd() const
{
    return impl_->bytes[0];
}

const Byte* J2KQuantisationDefault::spqcd() const
{
    return impl_->bytes.data() + 1;
}

std::size_t J2KQuantisationDefault::spqcdSize() const
{
    return impl_->bytes.size() - 1;
}

MXF_SDK_TYPES_HANDLE(J2KQuantisationDefault, SimpleDataType)

} // namespace MXF::SDK::Types
