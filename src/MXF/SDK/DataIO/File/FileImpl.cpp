#include "FileImpl.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/uio.h>
#include <unistd.h>

namespace MXF::SDK::DataIO::File
{

namespace
{
// Read-only files buffer themselves. A frame's sound elements, a few KiB each, come in one read
// this size; larger reads, such as a picture element, go straight into the caller's memory.
constexpr UInt64 DEFAULT_READ_BUFFER = 0x10000;
} // namespace

FileImpl::FileImpl(const std::wstring& path, const char* mode, Platform::Int32 bufferSize)
    : readOnly_(mode[0] == 'r' && std::string_view(mode).find('+') == std::string_view::npos)
{
    file_ = Platform::fileOpen(path, mode);
    MXF_SDK_CHECK(file_ != 0, L"Error opening: '" + path + L"'. " + Platform::lastErrorText(),
                  Exceptions::IOError);
    try
    {
        const Platform::Int64 sizeResult = Platform::fileLength(file_);
        MXF_SDK_CHECK(sizeResult != -1L,
                      L"Error getting file length: '" + path + L"'. " + Platform::lastErrorText(),
                      Exceptions::IOError);
        size_ = static_cast<UInt64>(sizeResult);
        if (readOnly_)
        {
            bufferCapacity_ = bufferSize >= 0 ? UInt64(bufferSize) : DEFAULT_READ_BUFFER;
            if (bufferCapacity_ > 0)
                buffer_ = std::make_unique_for_overwrite<Platform::Byte[]>(bufferCapacity_);
        }
        else if (bufferSize == 0)
            MXF_SDK_CHECK_AS(::setvbuf(file_, 0, _IONBF, 0) == 0,
                             "::setvbuf (file_, 0, _IONBF, 0) == 0",
                             L"Error setting buffering mode in file: '" + path + L"'. " +
                                 Platform::lastErrorText(),
                             Exceptions::InvalidValue);
        else if (bufferSize > 0)
        {
            streamBuffer_ = std::make_unique<char[]>(static_cast<std::size_t>(bufferSize));
            MXF_SDK_CHECK_AS(
                ::setvbuf(file_, streamBuffer_.get(), _IOFBF, static_cast<size_t>(bufferSize)) == 0,
                "::setvbuf (file_, 0, _IOFBF, bufferSize) == 0",
                L"Error setting buffering mode in file: '" + path + L"'. " +
                    Platform::lastErrorText(),
                Exceptions::InvalidValue);
        }
    }
    catch (...)
    {
        std::fclose(file_);
        throw;
    }
}

FileImpl::~FileImpl()
{
    std::fclose(file_);
}

UInt64 FileImpl::read(void* buffer, UInt64 size)
{
    const UInt64 howMuch = size < remaining() ? size : remaining();
    if (howMuch == 0)
        return 0;
    if (readOnly_)
        return readBuffered(static_cast<Platform::Byte*>(buffer), howMuch);
    const std::size_t readResult = std::fread(buffer, 1, howMuch, file_);
    if (readResult < howMuch && std::ferror(file_) != 0)
    {
        std::clearerr(file_);
        MXF_SDK_THROW(Exceptions::IOError,
                      L"Error reading from file. " + Platform::lastErrorText());
    }
    position_ += readResult;
    return readResult;
}

void FileImpl::write(const void* buffer, UInt64 size)
{
    const UInt64 howMuch = size;
    const std::size_t writeResult = std::fwrite(buffer, 1, howMuch, file_);
    MXF_SDK_CHECK(writeResult == howMuch, L"Error writing to file. " + Platform::lastErrorText(),
                  Exceptions::IOError);
    // Rewrites after a seek back count too: the sinks clamp seeks by this figure, so the old end
    // can always be reached again.
    position_ += writeResult;
    size_ += writeResult;
}

UInt64 FileImpl::readBuffered(Platform::Byte* out, UInt64 size)
{
    UInt64 done = 0;
    if (position_ >= bufferStart_ && position_ < bufferStart_ + bufferLength_)
    {
        const UInt64 offset = position_ - bufferStart_;
        done = std::min(size, bufferLength_ - offset);
        std::memcpy(out, buffer_.get() + offset, std::size_t(done));
        readAheadUnused_ = false;
    }
    while (done < size)
    {
        const UInt64 at = position_ + done;
        const UInt64 left = size - done;
        if (left >= bufferCapacity_)
        {
            // Read-ahead that nobody used: large reads follow each other.
            if (readAheadUnused_)
                readAhead_ = false;
            const UInt64 got = readAhead_ ? readDirectAndAhead(out + done, left, at)
                                          : readAt(out + done, left, at);
            done += got;
            directEnd_ = at + got;
            if (got < left)
                break;
            continue;
        }
        // Just after a direct read, past the next item's key and length at most.
        if (at >= directEnd_ && at - directEnd_ < bufferCapacity_ / 2)
            readAhead_ = true;
        // Emptied first: a read that throws leaves nothing stale behind.
        bufferLength_ = 0;
        bufferStart_ = at;
        bufferLength_ = readAt(buffer_.get(), bufferCapacity_, at);
        readAheadUnused_ = false;
        if (bufferLength_ == 0)
            break;
        const UInt64 part = std::min(left, bufferLength_);
        std::memcpy(out + done, buffer_.get(), std::size_t(part));
        done += part;
    }
    position_ += done;
    return done;
}

UInt64 FileImpl::readDirectAndAhead(Platform::Byte* out, UInt64 size, UInt64 position)
{
    UInt64 done = 0;
    UInt64 ahead = 0;
    bufferLength_ = 0;
    while (done < size)
    {
        iovec parts[2] = {{out + done, std::size_t(size - done)},
                          {buffer_.get(), std::size_t(bufferCapacity_)}};
        const UInt64 got = readParts(parts, 2, position + done);
        if (got == 0)
            break;
        const UInt64 wanted = size - done;
        done += std::min(got, wanted);
        ahead = got > wanted ? got - wanted : 0;
    }
    // A short read-ahead is kept as it is: the next read past it fills the buffer again.
    bufferStart_ = position + size;
    bufferLength_ = done == size ? ahead : 0;
    readAheadUnused_ = bufferLength_ != 0;
    return done;
}

UInt64 FileImpl::readAt(void* out, UInt64 size, UInt64 position)
{
    UInt64 done = 0;
    while (done < size)
    {
        iovec part{static_cast<char*>(out) + done, std::size_t(size - done)};
        const UInt64 got = readParts(&part, 1, position + done);
        if (got == 0)
            break;
        done += got;
    }
    return done;
}

UInt64 FileImpl::readParts(const iovec* parts, int count, UInt64 position)
{
    for (;;)
    {
        const ssize_t got = ::preadv(::fileno(file_), parts, count, off_t(position));
        if (got < 0 && errno == EINTR)
            continue;
        MXF_SDK_CHECK(got >= 0, L"Error reading from file. " + Platform::lastErrorText(),
                      Exceptions::IOError);
        return UInt64(got);
    }
}

UInt64 FileImpl::seek(UInt64 position)
{
    const UInt64 end = position_ + remaining();
    if (position > end)
        position = end;
    if (position == position_)
        return position_; // nothing to move: spare the stream its flush and lseek
    if (readOnly_)
        return position_ = position; // reads say where they read from
    MXF_SDK_CHECK_AS(Platform::fileSeek(file_, position), "Platform::fileSeek (file_, position)",
                     L"Error seeking. " + Platform::lastErrorText(), Exceptions::IOError);
    position_ = position;
    return position_;
}

} // namespace MXF::SDK::DataIO::File
