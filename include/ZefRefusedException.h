// What a call throws that cannot work with what it was given.
#ifndef ZEF_ZEFREFUSEDEXCEPTION_H
#define ZEF_ZEFREFUSEDEXCEPTION_H

#include "ZefBugException.h"

namespace TARN_ZEF
{
// A call was refused; nothing was changed. what() tells the user which value is wrong and what to do. The
// table in zef_api_functions.h lists the cases. Thrown itself where no argument would help.
class ZEF_API ZefRefusedException : public ZefBugException
{
public:
    explicit ZefRefusedException(const std::string& reason);
    ~ZefRefusedException() override;
};

// An argument has a value that cannot be used.
class ZEF_API ZefBadArgument : public ZefRefusedException
{
public:
    explicit ZefBadArgument(const std::string& reason);
    ~ZefBadArgument() override;
};

// The points have no spacing that could be detected, or coordinates that cannot be worked with.
class ZEF_API ZefUnusablePoints : public ZefRefusedException
{
public:
    explicit ZefUnusablePoints(const std::string& reason);
    ~ZefUnusablePoints() override;
};

// More points, or cells to be filled with points, than the library can number.
class ZEF_API ZefTooManyPoints : public ZefRefusedException
{
public:
    explicit ZefTooManyPoints(const std::string& reason);
    ~ZefTooManyPoints() override;
};

} // namespace TARN_ZEF

#endif
