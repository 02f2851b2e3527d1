#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <cstdio>
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
    UInt64 position_ = 0;
    UInt64 size_ = 0;
    std::FILE* file_ = nullptr;
};

} // namespace MXF::SDK::DataIO::File
