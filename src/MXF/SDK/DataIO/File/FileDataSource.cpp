#include "MXF/SDK/DataIO/File/FileDataSource.h"

#include "FileImpl.h"

namespace MXF::SDK::DataIO::File
{

FileDataSource::FileDataSource(const std::wstring& path, Platform::Int32 bufferSize)
    : impl_(std::make_unique<FileImpl>(path, "rbe", bufferSize))
{
}

FileDataSource::~FileDataSource() = default;

UInt64 FileDataSource::position() const
{
    return impl_->position();
}

UInt64 FileDataSource::read(void* buffer, UInt64 size)
{
    return impl_->read(buffer, size);
}

UInt64 FileDataSource::skip(UInt64 size)
{
    const UInt64 start = impl_->position();
    const UInt64 target = size > impl_->remaining() ? start + impl_->remaining() : start + size;
    return impl_->seek(target) - start;
}

UInt64 FileDataSource::remaining() const
{
    return impl_->remaining();
}

UInt64 FileDataSource::skipToEnd()
{
    return impl_->seek(impl_->position() + impl_->remaining());
}

UInt64 FileDataSource::seek(UInt64 position)
{
    return impl_->seek(position);
}

} // namespace MXF::SDK::DataIO::File
