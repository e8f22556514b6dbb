#ifndef ZEF_PROGRESSBASE_H
#define ZEF_PROGRESSBASE_H

#include "zef_export.h"

#include <string>

namespace TARN_ZEF
{
// Receiver of progress: derive from it and hand it to subscribe().
//
// Ownership:  the library keeps a plain pointer and forgets it when the receiver is destroyed. The receiver
//             must not be destroyed while a call that it watches is running.
// Threads:    update() runs on the thread that made the library call. The library holds no lock meanwhile, so it may
//             wait for other threads, whatever these do with receivers of their own.
class ZEF_API ProgressBase
{
public:
    ProgressBase() = default;
    ProgressBase(const ProgressBase&) = default;
    ProgressBase& operator=(const ProgressBase&) = default;
    virtual ~ProgressBase();

    // name      the running call: "Reconstruct", "Melt", "ToCloud", "Density Estimation", "EdgeFlips",
    //           "EdgeFlipsS", "Smoothing", "Reduce", "Remesh" or "Finish"
    // fraction  0.0 to 1.0, about 200 calls for a whole run
    // Must not call back into the library. What it throws passes through the call to the host as it is, with the
    // promises of a cancelled call (CancelToken.h); to stop a call from another thread, cancel its token.
    virtual void update(const std::string& name, double fraction) = 0;
};

// Makes pProgress the receiver of all library calls of the calling thread, in place of an earlier one. It
// stays until replaced, destroyed, or the thread ends. A null pointer does nothing.
ZEF_API void subscribe(ProgressBase* pProgress);

} // namespace TARN_ZEF

#endif
