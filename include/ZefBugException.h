#ifndef ZEF_ZEFBUGEXCEPTION_H
#define ZEF_ZEFBUGEXCEPTION_H

#include "zef_export.h"

#include <exception>

namespace TARN_ZEF
{
// Thrown when an invariant of the library is broken, or when a call is refused (see the table of refusals
// in zef_api_functions.h). The reason stands on standard output. The library stays usable afterwards.
class ZEF_API ZefBugException : public std::exception
{
public:
    ZefBugException() noexcept = default;
    ZefBugException(const ZefBugException&) noexcept = default;
    ZefBugException& operator=(const ZefBugException&) noexcept = default;
    ~ZefBugException() override;
    [[nodiscard]] const char* what() const noexcept override;
};

} // namespace TARN_ZEF

#endif
