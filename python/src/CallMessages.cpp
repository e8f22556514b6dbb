#include "CallMessages.h"

#include <pybind11/pybind11.h>

#include <utility>

#include "errors.h"

namespace TARN_PYTHON
{
namespace py = pybind11;

namespace
{
using TARN_ZEF::Message;
using TARN_ZEF::Severity;

// Of the logging module.
constexpr int LEVEL_INFO = 20;
constexpr int LEVEL_WARNING = 30;
constexpr int LEVEL_ERROR = 40;

thread_local CallMessages* pMessagesOfThread = nullptr;

// Never destroyed: the library may have something to say while the process is coming down.
CallMessages& messagesOfWorkers()
{
    static CallMessages* const pMessages = new CallMessages;
    return *pMessages;
}

int levelOf(Severity severity)
{
    if (severity == Severity::Error)
        return LEVEL_ERROR;
    return severity == Severity::Warning ? LEVEL_WARNING : LEVEL_INFO;
}

void logMessage(const Message& message)
{
    const py::object logger = py::module_::import("logging").attr("getLogger")("zef");
    logger.attr("log")(levelOf(message.severity), toText(message.text));
}
} // namespace

CallMessages::Scope::Scope(CallMessages& messages) noexcept
{
    pMessagesOfThread = &messages;
}

CallMessages::Scope::~Scope()
{
    pMessagesOfThread = nullptr;
}

void CallMessages::receive()
{
    TARN_ZEF::setMessageReceiver(
        [](const Message& message)
        {
            CallMessages& messages = pMessagesOfThread == nullptr ? messagesOfWorkers() : *pMessagesOfThread;
            messages.add(message);
        });
}

void CallMessages::add(const Message& message)
{
    const std::lock_guard<std::mutex> lock(mtx);
    vWaiting.push_back(message);
}

void CallMessages::log()
{
    if (this != &messagesOfWorkers())
        messagesOfWorkers().log();
    std::vector<Message> vTaken;
    {
        const std::lock_guard<std::mutex> lock(mtx);
        vTaken.swap(vWaiting);
    }
    for (Message& message : vTaken)
    {
        if (message.severity == Severity::Error && this != &messagesOfWorkers())
            vErrors.push_back(std::move(message));
        else
            logMessage(message);
    }
}

void CallMessages::logErrors(const std::string& reason)
{
    for (const Message& message : std::exchange(vErrors, {}))
        if (message.text != reason)
            logMessage(message);
}

} // namespace TARN_PYTHON
