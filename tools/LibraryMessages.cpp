#include "LibraryMessages.h"

#include <iostream>
#include <utility>

#include "zef_messages.h"

namespace TARN_TOOL
{
using TARN_ZEF::Message;

LibraryMessages::LibraryMessages(Mode mode)
{
    if (mode == Mode::HOLD)
        TARN_ZEF::setMessageReceiver([this](const Message& message) { held += message.printed; });
    else if (mode == Mode::TO_ERROR_STREAM)
        TARN_ZEF::setMessageReceiver([](const Message& message) { std::cerr << message.printed; });
}

LibraryMessages::~LibraryMessages()
{
    TARN_ZEF::setMessageReceiver(nullptr);
}

std::string LibraryMessages::finish()
{
    TARN_ZEF::setMessageReceiver(nullptr);
    return std::exchange(held, {});
}

} // namespace TARN_TOOL
