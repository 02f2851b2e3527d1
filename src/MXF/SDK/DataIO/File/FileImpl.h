#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <cstdio>
#include <memory>
#include <string>

namespace MXF::SDK::DataIO::File
{

using Platform::UInt64;

// The C stream behind both file classes, with its own count of position and size so that no call
// needs to ask the OS.
class FileImpl
{
public:
    FileImpl(const std::wstring& path, const char* mode, Platform::Int32 bufferSize);
    virtual ~FileImpl();
    FileImpl(const FileImpl&) = delete;
    FileImpl& operator=(const FileImpl&) = delete;

    virtual UInt64 read(void* buffer, UInt64 size);
    virtual void write(const void* buffer, UInt64 size);
    virtual UInt64 seek(UInt64 position);
    virtual UInt64 position() const { return position_; }
    virtual UInt64 remaining() const { return size_ - position_; }

private:
    // Forward skips up to this far read through the stream's buffer instead of seeking: walking
    // the items of a file skips one small value after another, and glibc pays an lseek for every
    // fseeko.
    static constexpr UInt64 MAX_SKIP_BY_READ = 64 * 1024;
    bool skipByRead(UInt64 distance);

    bool readOnly_;
    std::unique_ptr<char[]> scratch_;
    // glibc ignores the size of setvbuf without a buffer of the caller's, so we give it one.
    std::unique_ptr<char[]> streamBuffer_;
    UInt64 position_ = 0;
    UInt64 size_ = 0;
    std::FILE* file_ = nullptr;
};

} // namespace MXF::SDK::DataIO::File
