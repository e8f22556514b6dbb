// The one way out for words: everything that the library says passes here.
#ifndef ZEF_MESSAGESINK_H
#define ZEF_MESSAGESINK_H

#include "zef_messages.h"

namespace TARN_ZEF
{
// Hands the message to the receiver in force. Any thread; messages are handed over one at a time.
void deliver(const Message& message) noexcept;

} // namespace TARN_ZEF

#endif
