#include "MXF/SDK/Platform/Platform.h"

#include "Framework/Framework.h"
#include "MXF/SDK/Exceptions/Exceptions.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <ifaddrs.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sched.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace MXF::SDK::Platform
{

namespace
{

constexpr wchar_t REPLACEMENT = 0xFFFD;

void appendUtf8(std::string& out, char32_t c)
{
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF))
        c = REPLACEMENT;
    if (c < 0x80)
        out.push_back(static_cast<char>(c));
    else if (c < 0x800)
    {
        out.push_back(static_cast<char>(0xC0 | (c >> 6)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
    else if (c < 0x10000)
    {
        out.push_back(static_cast<char>(0xE0 | (c >> 12)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
    else
    {
        out.push_back(static_cast<char>(0xF0 | (c >> 18)));
        out.push_back(static_cast<char>(0x80 | ((c >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((c >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
}

std::string narrowPath(const std::wstring& path)
{
    return toUtf8(path);
}

} // namespace

std::string toUtf8(std::wstring_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const wchar_t c : text)
        appendUtf8(out, static_cast<char32_t>(c));
    return out;
}

std::wstring fromUtf8(std::string_view text)
{
    std::wstring out;
    out.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size())
    {
        const auto lead = static_cast<unsigned char>(text[i]);
        int extra = 0;
        char32_t c = 0;
        char32_t minimum = 0;
        if (lead < 0x80)
        {
            out.push_back(static_cast<wchar_t>(lead));
            ++i;
            continue;
        }
        if ((lead & 0xE0) == 0xC0)
        {
            extra = 1;
            c = lead & 0x1F;
            minimum = 0x80;
        }
        else if ((lead & 0xF0) == 0xE0)
        {
            extra = 2;
            c = lead & 0x0F;
            minimum = 0x800;
        }
        else if ((lead & 0xF8) == 0xF0)
        {
            extra = 3;
            c = lead & 0x07;
            minimum = 0x10000;
        }
        else
        {
            out.push_back(REPLACEMENT);
            ++i;
            continue;
        }
        int taken = 0;
        while (taken < extra && i + 1 + taken < text.size() &&
               (static_cast<unsigned char>(text[i + 1 + taken]) & 0xC0) == 0x80)
        {
            c = (c << 6) | (static_cast<unsigned char>(text[i + 1 + taken]) & 0x3F);
            ++taken;
        }
        i += 1 + taken;
        const bool valid =
            taken == extra && c >= minimum && c <= 0x10FFFF && !(c >= 0xD800 && c <= 0xDFFF);
        out.push_back(valid ? static_cast<wchar_t>(c) : REPLACEMENT);
    }
    return out;
}

std::FILE* fileOpen(const std::wstring& path, const char* mode)
{
    return std::fopen(narrowPath(path).c_str(), mode);
}

Int64 fileLength(std::FILE* file)
{
    struct stat status
    {
    };
    if (::fstat(::fileno(file), &status) != 0)
        return -1;
    return static_cast<Int64>(status.st_size);
}

bool fileSeek(std::FILE* file, UInt64 position)
{
    if (position > static_cast<UInt64>(INT64_MAX))
        return false;
    // fseeko writes out pending output itself, and keeps the read buffer when the target lies
    // inside it: a forward skip over a small value then costs no system call.
    // A successful SEEK_SET is exactly there; asking ftello would cost an lseek on every call.
    return ::fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0;
}

int openDescriptor(const std::wstring& path, bool readOnly)
{
    const int flags = readOnly ? O_RDONLY : (O_RDWR | O_CREAT);
    const int fd = ::open(narrowPath(path).c_str(), flags | O_CLOEXEC, 0666);
    if (fd < 0)
        MXF_SDK_THROW(Exceptions::IOError,
                      L"Error opening file: ('" + path + L"'): " + lastErrorText());
    return fd;
}

bool renameFile(const std::wstring& from, const std::wstring& to)
{
    return std::rename(narrowPath(from).c_str(), narrowPath(to).c_str()) == 0;
}

bool deleteFile(const std::wstring& path)
{
    return ::unlink(narrowPath(path).c_str()) == 0;
}

bool pathExists(const std::wstring& path)
{
    struct stat status
    {
    };
    return ::stat(narrowPath(path).c_str(), &status) == 0;
}

bool isDirectory(const std::wstring& path)
{
    struct stat status
    {
    };
    return ::stat(narrowPath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool createDirectory(const std::wstring& path)
{
    return ::mkdir(narrowPath(path).c_str(), 0777) == 0;
}

bool removeDirectory(const std::wstring& path)
{
    return ::rmdir(narrowPath(path).c_str()) == 0;
}

std::wstring errorText(int error)
{
    char buffer[256] = {};
    // GNU strerror_r may return a static string instead of filling the buffer.
    const char* text = ::strerror_r(error, buffer, sizeof buffer);
    return fromUtf8(text != nullptr ? text : buffer);
}

std::wstring lastErrorText()
{
    return errorText(errno);
}

bool getEnvironment(const std::wstring& name, std::wstring& value)
{
    const char* found = std::getenv(narrowPath(name).c_str());
    if (found == nullptr || *found == '\0')
        return false;
    value = fromUtf8(found);
    return true;
}

std::wstring temporaryDirectory()
{
    return temporaryDirectory(L"/tmp");
}

std::wstring temporaryDirectory(const std::wstring& fallback)
{
    std::wstring value;
    for (const wchar_t* name : {L"TMP", L"TEMP", L"TMPDIR"})
    {
        if (getEnvironment(name, value))
            return value;
    }
    if (!fallback.empty() && isDirectory(fallback))
        return fallback;
    MXF_SDK_THROW(Exceptions::OSError, "No temporary directory defined in the system");
}

std::wstring platformName()
{
    std::wstring value;
    if (getEnvironment(L"MXF_SDK_PLATFORM_NAME", value))
        return value;
    return L"linux";
}

std::tm localTime(std::time_t time)
{
    std::tm result{};
    const int e = ::localtime_r(&time, &result) == nullptr ? errno : 0;
    MXF_SDK_CHECK(e == 0, "Failed to get localtime", Exceptions::OSError);
    return result;
}

std::tm gmtTime(std::time_t time)
{
    std::tm result{};
    const int e = ::gmtime_r(&time, &result) == nullptr ? errno : 0;
    MXF_SDK_CHECK(e == 0, "Failed to get GMT time", Exceptions::OSError);
    return result;
}

bool hardwareAddress(NodeIdentifier& address)
{
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return false;
    bool found = false;
    for (const ifaddrs* entry = list; entry != nullptr && !found; entry = entry->ifa_next)
    {
        if (entry->ifa_addr == nullptr || entry->ifa_addr->sa_family != AF_PACKET ||
            (entry->ifa_flags & IFF_LOOPBACK) != 0)
            continue;
        const auto* link = reinterpret_cast<const sockaddr_ll*>(entry->ifa_addr);
        if (link->sll_halen != address.size())
            continue;
        bool zero = true;
        for (std::size_t i = 0; i < address.size(); ++i)
            zero = zero && link->sll_addr[i] == 0;
        if (zero)
            continue;
        std::memcpy(address.data(), link->sll_addr, address.size());
        found = true;
    }
    ::freeifaddrs(list);
    return found;
}

const NodeIdentifier& nodeIdentifier()
{
    static const NodeIdentifier node = []
    {
        NodeIdentifier address{};
        if (!hardwareAddress(address))
        {
            for (auto& byte : address)
                byte = static_cast<Byte>(KEP::Framework::Framework::randomNumber());
            address[0] |= 0x01; // multicast bit: cannot clash with a real card's address
        }
        return address;
    }();
    return node;
}

void yield() noexcept
{
    ::sched_yield();
}

void sleepMilliseconds(UInt32 milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

} // namespace MXF::SDK::Platform
