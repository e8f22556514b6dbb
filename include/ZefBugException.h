#ifndef ZEF_ZEFBUGEXCEPTION_H
#define ZEF_ZEFBUGEXCEPTION_H

#include "zef_export.h"

#include <exception>
#include <memory>
#include <string>

namespace TARN_ZEF
{
// Thrown when an invariant of the library is broken: what() tells the condition, the function, and the line
// of the source. A refused call throws a type derived from it (ZefRefusedException.h). The library stays
// usable afterwards.
class ZEF_API ZefBugException : public std::exception
{
public:
    // Without a reason.
    ZefBugException() noexcept = default;
    explicit ZefBugException(const std::string& reason);
    ZefBugException(const ZefBugException&) noexcept = default;
    ZefBugException& operator=(const ZefBugException&) noexcept = default;
    ~ZefBugException() override;
    [[nodiscard]] const char* what() const noexcept override;

private:
    std::shared_ptr<const std::string> pReason; // shared, so that a copy cannot fail; null without a reason
};

} // namespace TARN_ZEF

#endif
