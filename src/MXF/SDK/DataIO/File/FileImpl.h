#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <sys/uio.h>

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
    // Read-only files are read with pread into a buffer of our own, not through the stream: a
    // seek is then free, and a read at least as large as the buffer goes straight into the
    // caller's memory, whole, so that essence is copied once.
    UInt64 readBuffered(Platform::Byte* out, UInt64 size);
    UInt64 readAt(void* out, UInt64 size, UInt64 position);
    // A direct read that also fills the buffer with what follows, in the same call: when large
    // reads alternate with small ones (a picture element, then the frame's sound), one call a
    // frame instead of two.
    UInt64 readDirectAndAhead(Platform::Byte* out, UInt64 size, UInt64 position);
    // One preadv, tried again when a signal interrupts it; 0 at the end of the file. IOError on
    // failure.
    UInt64 readParts(const iovec* parts, int count, UInt64 position);

    bool readOnly_;
    std::unique_ptr<Platform::Byte[]> buffer_;
    UInt64 bufferCapacity_ = 0;
    UInt64 bufferStart_ = 0;
    UInt64 bufferLength_ = 0;
    // Where the last direct read ended; a buffer fill just after it turns on the read-ahead.
    UInt64 directEnd_ = UINT64_MAX;
    bool readAhead_ = false;
    // The buffer holds read-ahead that no read has touched yet.
    bool readAheadUnused_ = false;
    // glibc ignores the size of setvbuf without a buffer of the caller's, so we give it one.
    std::unique_ptr<char[]> streamBuffer_;
    UInt64 position_ = 0;
    UInt64 size_ = 0;
    std::FILE* file_ = nullptr;
};

} // namespace MXF::SDK::DataIO::File
