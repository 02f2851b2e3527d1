#include "MXF/SDK/KLV/Value.h"

#include "MXF/SDK/KLV/ReadExact.h"

#include <algorithm>

namespace MXF::SDK::KLV
{

struct Value::Impl
{
    DataIO::DataSource& source;
    UInt64 length;
    UInt64 start;
};

Value::Value(DataIO::DataSource& source, UInt64 length)
    : impl_(std::make_unique<Impl>(Impl{source, length, source.position()}))
{
}

Value::~Value()
{
    // A destructor must not throw; if the skip fails the source stays where it is and the next
    // key search starts from there.
    try
    {
        impl_->source.skip(remaining());
    }
    catch (...)
    {
    }
}

UInt64 Value::position() const
{
    return impl_->source.position();
}

bool Value::eof() const
{
    return remaining() == 0;
}

UInt64 Value::read(void* buffer, UInt64 size)
{
    return impl_->source.read(buffer, std::min(size, remaining()));
}

UInt64 Value::skip(UInt64 size)
{
    return impl_->source.skip(std::min(size, remaining()));
}

UInt64 Value::remaining() const
{
    // Written without start + length, which a hostile length could overflow.
    const UInt64 position = impl_->source.position();
    if (position < impl_->start)
    {
        const UInt64 before = impl_->start - position;
        return impl_->length > UINT64_MAX - before ? UINT64_MAX : impl_->length + before;
    }
    const UInt64 consumed = position - impl_->start;
    return consumed < impl_->length ? impl_->length - consumed : 0;
}

UInt64 Value::skipToEnd()
{
    impl_->source.skip(remaining());
    return position();
}

UInt64 Value::size() const noexcept
{
    return impl_->length;
}

void Value::readExact(void* buffer, UInt64 size)
{
    KLV::readExact(*this, buffer, size);
}

} // namespace MXF::SDK::KLV
