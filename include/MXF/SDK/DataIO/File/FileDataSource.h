#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Platform/Types.h"

#include <memory>
#include <string>

namespace MXF::SDK::DataIO::File
{

class FileImpl;

// A file read from any position. `bufferSize`: 0 unbuffered, positive a buffer of that many bytes,
// negative the C library's default. Throws IOError "file_ != 0: Error opening: '<path>'. <why>".
class FileDataSource : public RandomAccessDataSource
{
public:
    explicit FileDataSource(const std::wstring& path, Platform::Int32 bufferSize = -1);
    ~FileDataSource() override;

    UInt64 position() const override;
    UInt64 read(void* buffer, UInt64 size) override;
    UInt64 skip(UInt64 size) override;
    UInt64 remaining() const override;
    UInt64 skipToEnd() override;
    UInt64 seek(UInt64 position) override;

private:
    std::unique_ptr<FileImpl> impl_;
};

} // namespace MXF::SDK::DataIO::File
