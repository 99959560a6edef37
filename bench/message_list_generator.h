#pragma once

#include <cstddef>

#include "mail/records.h"

namespace tidewrack::bench {

/// A list of `count` messages without bodies, newest first, as an account of twenty years looks: five
/// libraries, a mailbox or tab on most messages, two hundred labels of the user, conversations of two on
/// average, a category on every tenth message, attachments on every eighth. The same list every time.
MessageList generateMessageList(std::size_t count);

}  // namespace tidewrack::bench
