// What a call throws that its host has cancelled.
#ifndef ZEF_ZEFCANCELLEDEXCEPTION_H
#define ZEF_ZEFCANCELLEDEXCEPTION_H

#include "zef_export.h"

#include <exception>

namespace TARN_ZEF
{
// A call ended early because its CancelToken was cancelled (CancelToken.h). It is neither a fault of the library
// nor a refusal, so it derives from neither; no message goes out.
class ZEF_API ZefCancelledException : public std::exception
{
public:
    ZefCancelledException() noexcept = default;
    ZefCancelledException(const ZefCancelledException&) noexcept = default;
    ZefCancelledException& operator=(const ZefCancelledException&) noexcept = default;
    ~ZefCancelledException() override;
    [[nodiscard]] const char* what() const noexcept override;
};

} // namespace TARN_ZEF

#endif
