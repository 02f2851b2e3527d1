#include "MXF/SDK/Exceptions/Exceptions.h"

#include "MXF/SDK/Templates/SafeCast.h"
#include "TestSupport.h"

#include <cstdint>
#include <gtest/gtest.h>

using Halvorn::Test::Support::thrownMessage;

using namespace MXF::SDK;

namespace
{
int checkLine = 0;
void failOpen(const void* file_)
{
    checkLine = __LINE__ + 1;
    MXF_SDK_CHECK(file_ != 0, L"Error opening: 'x.mxf'. No such file or directory",
                  Exceptions::IOError);
}
} // namespace

TEST(Exceptions, FailedCheckCarriesConditionMessageFileAndLine)
{
    try
    {
        failOpen(nullptr);
        FAIL() << "no exception";
    }
    catch (const Exceptions::IOError& e)
    {
        EXPECT_EQ(e.message(), L"file_ != 0: Error opening: 'x.mxf'. No such file or directory");
        EXPECT_STREQ(e.what(), "file_ != 0: Error opening: 'x.mxf'. No such file or directory");
        EXPECT_NE(e.file().find("ExceptionsTest.cpp"), std::string::npos);
        EXPECT_EQ(e.line(), checkLine);
        EXPECT_EQ(e.location(), std::wstring(e.file().begin(), e.file().end()) + L":" +
                                    std::to_wstring(checkLine));
    }
    EXPECT_NO_THROW(failOpen(this));
}

TEST(Exceptions, NarrowAndWideMessagesMeet)
{
    try
    {
        MXF_SDK_CHECK_AS(1 + 1 == 3, "data -> size () == COUNT", "Caf\xc3\xa9 \xe2\x80\x93",
                         Exceptions::NotEnoughData);
        FAIL() << "no exception";
    }
    catch (const Exceptions::BaseException& e)
    {
        EXPECT_EQ(e.message(), L"data -> size () == COUNT: Caf\u00e9 \u2013");
        EXPECT_STREQ(e.what(), "data -> size () == COUNT: Caf\xc3\xa9 \xe2\x80\x93");
        EXPECT_NE(dynamic_cast<const Exceptions::NotEnoughData*>(&e), nullptr);
    }
    EXPECT_EQ(thrownMessage<Exceptions::OSError>(
                  [] {
                      MXF_SDK_THROW(Exceptions::OSError,
                                    L"No temporary directory defined in the system");
                  }),
              L"No temporary directory defined in the system");
}

TEST(Exceptions, SafeCastNarrowsOrThrowsTypeSizeExceeded)
{
    EXPECT_EQ(Templates::SafeCast<std::uint32_t>(std::uint64_t(0xFFFFFFFF)), 0xFFFFFFFFu);
    EXPECT_EQ(Templates::SafeCast<std::int8_t>(-128), -128);
    EXPECT_EQ(Templates::SafeCast<std::uint64_t>(std::int64_t(5)), 5u);
    using E = Exceptions::InvalidLength;
    const std::wstring text = L"Type size exceeded";
    EXPECT_EQ(thrownMessage<E>([] { Templates::SafeCast<std::uint32_t>(std::uint64_t(1) << 32); }),
              text);
    EXPECT_EQ(thrownMessage<E>([] { Templates::SafeCast<std::uint32_t>(-1); }), text);
    EXPECT_EQ(thrownMessage<E>([] { Templates::SafeCast<std::int16_t>(40000); }), text);
    EXPECT_EQ(thrownMessage<E>([] { Templates::SafeCast<std::int64_t>(UINT64_MAX); }), text);
}
