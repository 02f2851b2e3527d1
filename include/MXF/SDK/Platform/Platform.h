#pragma once

#include "MXF/SDK/Platform/Types.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>

namespace MXF::SDK::Platform
{

// Wide strings are UTF-32 here; the OS gets UTF-8. Invalid input becomes U+FFFD, never an error.
std::string toUtf8(std::wstring_view text);
std::wstring fromUtf8(std::string_view text);

// Files. Paths are wide and go to the OS as UTF-8; offsets and lengths are 64-bit.
// Null on failure; `lastErrorText` then says why.
std::FILE* fileOpen(const std::wstring& path, const char* mode);
// -1 on failure.
Int64 fileLength(std::FILE* file);
// Writes out pending output and moves; true if the position reached is at least `position`.
bool fileSeek(std::FILE* file, UInt64 position);
// A POSIX descriptor: read-only, or read-write and created if missing. Throws IOError
// "Error opening file: ('<path>'): <system message>" on failure.
int openDescriptor(const std::wstring& path, bool readOnly);

// Rename and delete report failure by false; `lastErrorText` then says why.
bool renameFile(const std::wstring& from, const std::wstring& to);
bool deleteFile(const std::wstring& path);
bool pathExists(const std::wstring& path);
bool isDirectory(const std::wstring& path);
bool createDirectory(const std::wstring& path);
bool removeDirectory(const std::wstring& path);

// The text of the calling thread's last OS error (errno).
std::wstring lastErrorText();
std::wstring errorText(int error);

// False if the variable is unset or empty.
bool getEnvironment(const std::wstring& name, std::wstring& value);
// "TMP", else "TEMP", else "TMPDIR", else "/tmp" if it is a directory. Throws OSError
// "No temporary directory defined in the system" when none of them gives one.
std::wstring temporaryDirectory();
// Same, with `fallback` in place of "/tmp" (empty for none).
std::wstring temporaryDirectory(const std::wstring& fallback);
// "linux", unless the variable "MXF_SDK_PLATFORM_NAME" names another.
std::wstring platformName();

// Broken-down time. Throws OSError "e == 0: Failed to get localtime" / "...GMT time".
std::tm localTime(std::time_t time);
std::tm gmtTime(std::time_t time);

// The node identifier of new UUIDs and UMIDs: the hardware address of the first network interface
// that is not loopback and has a non-zero address. A machine without one (a container with only
// "lo", say) gets a random address with the multicast bit set, as RFC 4122 prescribes, fixed for
// the life of the process.
using NodeIdentifier = std::array<Byte, 6>;
const NodeIdentifier& nodeIdentifier();
// The same search, uncached; false when the machine has no such interface.
bool hardwareAddress(NodeIdentifier& address);

// Gives the rest of the time slice to other threads.
void yield() noexcept;
void sleepMilliseconds(UInt32 milliseconds);

} // namespace MXF::SDK::Platform
