#include "core/messageSink.h"

#include <iostream>
#include <mutex>
#include <utility>

namespace TARN_ZEF
{
namespace
{
struct Sink
{
    std::mutex mtx; // held while the receiver runs
    MessageReceiver receiver = printMessage;
};

// Outlives everything: there may be something to say while the process is already coming down.
[[nodiscard]] Sink& getSink()
{
    static Sink* const pSink = new Sink;
    return *pSink;
}
} // namespace

void setMessageReceiver(MessageReceiver receiver)
{
    if (!receiver)
        receiver = printMessage;
    Sink& sink = getSink();
    // The earlier one is destroyed after the lock is gone: its destructor may be the host's.
    const std::lock_guard<std::mutex> lock(sink.mtx);
    sink.receiver.swap(receiver);
}

// Flushed, so that the last words before a crash are seen.
void printMessage(const Message& message)
{
    if (message.bErrorStream)
        std::cerr << message.printed;
    else
        std::cout << message.printed << std::flush;
}

void deliver(const Message& message) noexcept
{
    Sink& sink = getSink();
    const std::lock_guard<std::mutex> lock(sink.mtx);
    try
    {
        sink.receiver(message);
    }
    catch (...)
    {
        // Words must not change how a call ends.
    }
}

} // namespace TARN_ZEF
