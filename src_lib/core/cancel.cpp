#include "core/cancel.h"

namespace TARN_ZEF
{
thread_local constinit const CancelScope* pCancelScope = nullptr;

ZefCancelledException::~ZefCancelledException() = default;

const char* ZefCancelledException::what() const noexcept
{
    return "the call was cancelled";
}

CancelToken::CancelToken()
    : pCancelled(std::make_shared<std::atomic<bool>>(false))
{
}

void CancelToken::cancel() const noexcept
{
    pCancelled->store(true, std::memory_order_relaxed);
}

bool CancelToken::isCancelled() const noexcept
{
    return pCancelled->load(std::memory_order_relaxed);
}

CancelScope::CancelScope(const CancelToken& token_)
    : token(token_)
    , pOuter(pCancelScope)
{
    pCancelScope = this;
}

CancelScope::~CancelScope()
{
    pCancelScope = pOuter;
}

bool CancelCheck::isCancelled(const CancelScope* pScope) noexcept
{
    for (; pScope != nullptr; pScope = pScope->pOuter)
        if (pScope->token.isCancelled())
            return true;
    return false;
}

void CancelCheck::throwIfCancelled(const CancelScope* pScope)
{
    if (isCancelled(pScope))
        throw ZefCancelledException();
}

} // namespace TARN_ZEF
