#include "MXF/SDK/Platform/Platform.h"

#include "MXF/SDK/Exceptions/Exceptions.h"
#include "TestSupport.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace MXF::SDK;
using Halvorn::Test::ScopedEnvironment;
using Halvorn::Test::TempDir;
using Halvorn::Test::Support::thrownMessage;

namespace
{

const std::wstring CAFE = L"Caf\u00e9 \u2013 \u65e5\u672c.mxf";
const std::string CAFE_UTF8 = "Caf\xc3\xa9 \xe2\x80\x93 \xe6\x97\xa5\xe6\x9c\xac.mxf";

} // namespace

TEST(Platform, Utf8ConversionRoundTripsAndReplacesBadSequences)
{
    EXPECT_EQ(Platform::toUtf8(CAFE), CAFE_UTF8);
    EXPECT_EQ(Platform::fromUtf8(CAFE_UTF8), CAFE);
    const std::wstring astral = L"\U0001F3AC clip";
    EXPECT_EQ(Platform::toUtf8(astral), "\xf0\x9f\x8e\xac clip");
    EXPECT_EQ(Platform::fromUtf8(Platform::toUtf8(astral)), astral);
    // Truncated sequence, stray continuation byte, overlong '/', encoded surrogate.
    EXPECT_EQ(Platform::fromUtf8("a\xe6\x97"), L"a\uFFFD");
    EXPECT_EQ(Platform::fromUtf8("\x80z"), L"\uFFFDz");
    EXPECT_EQ(Platform::fromUtf8("\xc0\xaf"), L"\uFFFD");
    EXPECT_EQ(Platform::fromUtf8("\xed\xa0\x80"), L"\uFFFD");
    EXPECT_EQ(Platform::toUtf8(std::wstring(1, wchar_t(0xD800))), "\xef\xbf\xbd");
}

TEST(Platform, FilesWithNonAsciiNamesReachTheFileSystemAsUtf8)
{
    TempDir dir;
    const std::wstring path = dir.file(CAFE);
    std::FILE* file = Platform::fileOpen(path, "wb");
    ASSERT_NE(file, nullptr);
    std::fputs("abc", file);
    std::fclose(file);
    EXPECT_TRUE(std::filesystem::exists(dir.path() / std::filesystem::u8path(CAFE_UTF8)));

    file = Platform::fileOpen(path, "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Platform::fileLength(file), 3);
    EXPECT_TRUE(Platform::fileSeek(file, 2));
    EXPECT_EQ(std::fgetc(file), 'c');
    std::fclose(file);
    EXPECT_TRUE(Platform::pathExists(path));
    EXPECT_FALSE(Platform::isDirectory(path));
}

TEST(Platform, RenameDeleteAndFoldersReportFailuresWithTheSystemText)
{
    TempDir dir;
    const std::wstring a = dir.file(L"a.mxf"), b = dir.file(L"b \u00e9.mxf");
    EXPECT_FALSE(Platform::renameFile(a, b));
    EXPECT_EQ(Platform::lastErrorText(), L"No such file or directory");
    EXPECT_FALSE(Platform::deleteFile(a));
    EXPECT_EQ(Platform::lastErrorText(), L"No such file or directory");

    std::ofstream(dir.path() / "a.mxf") << "x";
    EXPECT_TRUE(Platform::renameFile(a, b));
    EXPECT_FALSE(Platform::pathExists(a));
    EXPECT_TRUE(Platform::pathExists(b));
    EXPECT_TRUE(Platform::deleteFile(b));
    EXPECT_FALSE(Platform::pathExists(b));

    const std::wstring folder = dir.file(L"InProgress");
    EXPECT_TRUE(Platform::createDirectory(folder));
    EXPECT_TRUE(Platform::isDirectory(folder));
    EXPECT_FALSE(Platform::createDirectory(folder));
    EXPECT_EQ(Platform::lastErrorText(), L"File exists");
    EXPECT_FALSE(Platform::deleteFile(folder));
    EXPECT_TRUE(Platform::removeDirectory(folder));
    EXPECT_FALSE(Platform::isDirectory(folder));
}

TEST(Platform, OpenDescriptorFailureNamesThePath)
{
    TempDir dir;
    const std::wstring missing = dir.file(L"none") + L"/x.mxf";
    EXPECT_EQ(thrownMessage<Exceptions::IOError>([&] { Platform::openDescriptor(missing, true); }),
              L"Error opening file: ('" + missing + L"'): No such file or directory");
    const int fd = Platform::openDescriptor(dir.file(L"new.bin"), false);
    EXPECT_GE(fd, 0);
    ::close(fd);
    EXPECT_TRUE(Platform::pathExists(dir.file(L"new.bin")));
}

TEST(Platform, TemporaryDirectoryPrefersTmpThenTempThenTmpdir)
{
    ScopedEnvironment guard{"TMP", "TEMP", "TMPDIR"};
    ::setenv("TMPDIR", "/from-tmpdir", 1);
    EXPECT_EQ(Platform::temporaryDirectory(), L"/from-tmpdir");
    ::setenv("TEMP", "/from-temp", 1);
    EXPECT_EQ(Platform::temporaryDirectory(), L"/from-temp");
    ::setenv("TMP", "/from-tmp", 1);
    EXPECT_EQ(Platform::temporaryDirectory(), L"/from-tmp");
    ::setenv("TMP", "", 1); // empty counts as unset
    EXPECT_EQ(Platform::temporaryDirectory(), L"/from-temp");

    ::unsetenv("TMP");
    ::unsetenv("TEMP");
    ::unsetenv("TMPDIR");
    EXPECT_EQ(Platform::temporaryDirectory(), L"/tmp");
    EXPECT_EQ(thrownMessage<Exceptions::OSError>([] { Platform::temporaryDirectory(L""); }),
              L"No temporary directory defined in the system");
}

TEST(Platform, EnvironmentAndPlatformName)
{
    ScopedEnvironment guard{"MXF_SDK_PLATFORM_NAME", "HALVORN_TEST_VARIABLE"};
    std::wstring value = L"untouched";
    EXPECT_FALSE(Platform::getEnvironment(L"HALVORN_TEST_VARIABLE", value));
    EXPECT_EQ(value, L"untouched");
    ::setenv("HALVORN_TEST_VARIABLE", "\xc3\xa9t\xc3\xa9", 1);
    EXPECT_TRUE(Platform::getEnvironment(L"HALVORN_TEST_VARIABLE", value));
    EXPECT_EQ(value, L"\u00e9t\u00e9");

    EXPECT_EQ(Platform::platformName(), L"linux");
    ::setenv("MXF_SDK_PLATFORM_NAME", "win32", 1);
    EXPECT_EQ(Platform::platformName(), L"win32");
}

TEST(Platform, UtcTimeOfKnownInstants)
{
    const std::tm epoch = Platform::gmtTime(0);
    EXPECT_EQ(epoch.tm_year, 70);
    EXPECT_EQ(epoch.tm_mon, 0);
    EXPECT_EQ(epoch.tm_mday, 1);
    EXPECT_EQ(epoch.tm_hour, 0);
    // 2000-02-29 12:34:56 UTC, a leap day.
    const std::tm leap = Platform::gmtTime(951827696);
    EXPECT_EQ(leap.tm_year, 100);
    EXPECT_EQ(leap.tm_mon, 1);
    EXPECT_EQ(leap.tm_mday, 29);
    EXPECT_EQ(leap.tm_hour, 12);
    EXPECT_EQ(leap.tm_min, 34);
    EXPECT_EQ(leap.tm_sec, 56);
    ScopedEnvironment guard{"TZ"};
    ::setenv("TZ", "UTC+2", 1); // POSIX sign: two hours behind UTC
    ::tzset();
    EXPECT_EQ(Platform::localTime(951827696).tm_hour, 10);
    ::unsetenv("TZ");
    ::tzset();
}

TEST(Platform, NodeIdentifierIsStableAndNeverZero)
{
    const Platform::NodeIdentifier& node = Platform::nodeIdentifier();
    EXPECT_EQ(&node, &Platform::nodeIdentifier());
    EXPECT_NE(node, Platform::NodeIdentifier{});
    Platform::NodeIdentifier hardware{};
    if (Platform::hardwareAddress(hardware))
        EXPECT_EQ(node, hardware);
    else
        EXPECT_EQ(node[0] & 0x01, 0x01) << "fallback must carry the multicast bit";
}
