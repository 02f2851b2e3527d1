#include "Utils/ErrorMessageEntity.h"

#include <gtest/gtest.h>

using KEP::Halvorn::Utils::ErrorMessageEntity;

namespace
{

class FailingPart : public ErrorMessageEntity
{
public:
    void fail(int code, const wchar_t* detail)
    {
        errorCode_ = code;
        errorMessage_ = detail;
    }
};

} // namespace

TEST(ErrorMessageEntity, HoldsTheLastCodeAndDetailThatItsOwnerSet)
{
    FailingPart part;
    const ErrorMessageEntity& entity = part;
    ASSERT_NE(entity.getErrorMessage(), nullptr);
    EXPECT_STREQ(entity.getErrorMessage(), L"");

    part.fail(12, L"Unable to create temporary folder.");
    EXPECT_EQ(entity.getErrorCode(), 12);
    EXPECT_STREQ(entity.getErrorMessage(), L"Unable to create temporary folder.");

    part.fail(8, L"");
    EXPECT_EQ(entity.getErrorCode(), 8);
    EXPECT_STREQ(entity.getErrorMessage(), L"");
}
