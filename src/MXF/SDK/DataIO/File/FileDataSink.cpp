#include "MXF/SDK/DataIO/File/FileDataSink.h"

#include "FileImpl.h"

namespace MXF::SDK::DataIO::File
{

FileDataSink::FileDataSink(const std::wstring& path, bool append, Platform::Int32 bufferSize)
    : impl_(std::make_unique<FileImpl>(path, append ? "r+be" : "wbe", bufferSize))
{
    if (append)
        impl_->seek(impl_->position() + impl_->remaining());
}

FileDataSink::~FileDataSink() = default;

void FileDataSink::write(const void* buffer, UInt64 size)
{
    impl_->write(buffer, size);
}

UInt64 FileDataSink::position() const
{
    return impl_->position();
}

UInt64 FileDataSink::seek(UInt64 position)
{
    return impl_->seek(position);
}

UInt64 FileDataSink::remaining() const
{
    return impl_->remaining();
}

} // namespace MXF::SDK::DataIO::File
