// Out of line, so that each type has its one identity in the library.
#include "ZefRefusedException.h"

namespace TARN_ZEF
{

ZefBugException::ZefBugException(const std::string& reason)
    : pReason(std::make_shared<const std::string>(reason))
{
}

ZefBugException::~ZefBugException() = default;

const char* ZefBugException::what() const noexcept
{
    return pReason ? pReason->c_str() : "ZefBugException: a check inside the library failed";
}

ZefRefusedException::ZefRefusedException(const std::string& reason)
    : ZefBugException(reason)
{
}

ZefRefusedException::~ZefRefusedException() = default;

ZefBadArgument::ZefBadArgument(const std::string& reason)
    : ZefRefusedException(reason)
{
}

ZefBadArgument::~ZefBadArgument() = default;

ZefUnusablePoints::ZefUnusablePoints(const std::string& reason)
    : ZefRefusedException(reason)
{
}

ZefUnusablePoints::~ZefUnusablePoints() = default;

ZefTooManyPoints::ZefTooManyPoints(const std::string& reason)
    : ZefRefusedException(reason)
{
}

ZefTooManyPoints::~ZefTooManyPoints() = default;

} // namespace TARN_ZEF
