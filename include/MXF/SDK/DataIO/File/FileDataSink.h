#pragma once

#include "MXF/SDK/DataIO/DataSource.h"
#include "MXF/SDK/Platform/Types.h"

#include <memory>
#include <string>

namespace MXF::SDK::DataIO::File
{

class FileImpl;

// A file written at any position. Without `append` the file is created or truncated; with it the
// file must exist and writing starts at its end. The size it reports grows by every byte written,
// rewrites after a seek back included, so a seek can always return to the old end.
class FileDataSink : public RandomAccessDataSink
{
public:
    FileDataSink(const std::wstring& path, bool append, Platform::Int32 bufferSize = -1);
    ~FileDataSink() override;

    // Throws IOError "writeResult == howMuch: Error writing to file. <why>"; position and size are
    // then unchanged.
    void write(const void* buffer, UInt64 size) override;
    UInt64 position() const override;
    UInt64 seek(UInt64 position) override;
    UInt64 remaining() const;

private:
    std::unique_ptr<FileImpl> impl_;
};

} // namespace MXF::SDK::DataIO::File
