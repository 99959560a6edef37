#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "library/message_store.h"
#include "mail/content.h"

namespace tidewrack {

/// The Content of a row of the table "content": bytes are read when asked for, the size is known.
Content storedContent(const std::shared_ptr<MessageStore>& store, std::int64_t number, std::uint64_t size);

}  // namespace tidewrack
