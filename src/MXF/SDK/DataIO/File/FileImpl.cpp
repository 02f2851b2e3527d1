#include "FileImpl.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "MXF/SDK/Platform/Platform.h"

#include <string_view>

namespace MXF::SDK::DataIO::File
{

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
        if (bufferSize == 0)
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

UInt64 FileImpl::seek(UInt64 position)
{
    const UInt64 end = position_ + remaining();
    if (position > end)
        position = end;
    if (position == position_)
        return position_; // nothing to move: spare the stream its flush and lseek
    if (readOnly_ && position > position_ && position - position_ <= MAX_SKIP_BY_READ &&
        skipByRead(position - position_))
        return position_;
    MXF_SDK_CHECK_AS(Platform::fileSeek(file_, position), "Platform::fileSeek (file_, position)",
                     L"Error seeking. " + Platform::lastErrorText(), Exceptions::IOError);
    position_ = position;
    return position_;
}

bool FileImpl::skipByRead(UInt64 distance)
{
    constexpr std::size_t CHUNK = 16 * 1024;
    if (!scratch_)
        scratch_ = std::make_unique<char[]>(CHUNK);
    while (distance > 0)
    {
        const std::size_t want = distance < CHUNK ? std::size_t(distance) : CHUNK;
        const std::size_t got = std::fread(scratch_.get(), 1, want, file_);
        position_ += got;
        distance -= got;
        if (got < want)
        {
            std::clearerr(file_);
            return false; // the seek that follows says what went wrong
        }
    }
    return true;
}

} // namespace MXF::SDK::DataIO::File
