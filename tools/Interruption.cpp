#include "Interruption.h"

#include <atomic>
#include <csignal>
#include <cstdlib>

#include "SafeOutputFile.h"
#include "platform.h"

namespace TARN_TOOL
{
namespace
{
constexpr int SHELL_STATUS = 128;

std::atomic<int> numCalls{0};   // of the library, that run
std::atomic<int> lastSignal{0}; // 0: none has come

TARN_ZEF::CancelToken& getToken()
{
    static TARN_ZEF::CancelToken token;
    return token;
}

extern "C" void handleSignal(int signal)
{
    const bool bFirst = lastSignal.exchange(signal) == 0;
    if (bFirst && numCalls.load() > 0)
    {
        getToken().cancel();
        return;
    }
    SafeOutputFile::removeTempFiles();
    std::_Exit(SHELL_STATUS + signal);
}
} // namespace

Interruption::Call::Call()
    : scope(getToken())
{
    ++numCalls;
}

Interruption::Call::~Call()
{
    --numCalls;
}

void Interruption::installHandlers()
{
    static_cast<void>(getToken()); // made here, not in the handler
    for (const int signal : endingSignals())
        if (std::signal(signal, handleSignal) == SIG_IGN)
            std::signal(signal, SIG_IGN);
}

void Interruption::check()
{
    if (lastSignal.load() != 0)
        throw TARN_ZEF::ZefCancelledException();
}

int Interruption::getStatus()
{
    return SHELL_STATUS + lastSignal.load();
}

} // namespace TARN_TOOL
