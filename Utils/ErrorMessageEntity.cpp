#include "Utils/ErrorMessageEntity.h"

namespace KEP::Halvorn::Utils
{

ErrorMessageEntity::~ErrorMessageEntity() = default;

int ErrorMessageEntity::getErrorCode() const
{
    return errorCode_;
}

const wchar_t* ErrorMessageEntity::getErrorMessage() const
{
    return errorMessage_.c_str();
}

} // namespace KEP::Halvorn::Utils
