#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "library/model_container.h"
#include "platform/text.h"

/// The stored form of the search index, PersistedSearchToken. Behind the entity stand JSON objects that give
/// for each word the numbers of its messages as differences, which SQL can expand, and a table from message
/// to number. A message that is deleted, or whose text changes, loses its number, and with it all of its
/// words go at once; so what is stored is right for every message that still has a number.
///
/// Both functions may run on any thread and throw StoreFailure.
namespace tidewrack {

/// A word and the ascending numbers of messages that hold it.
using SearchTokenVisitor =
    std::function<void(std::string_view token, std::span<const std::uint32_t> numbers)>;

/// Replaces what is stored, in one transaction. `messageIDs` gives the message of each number; one that the
/// store does not hold is left out. `produce` is called once, on a thread of its own, and hands over each
/// word once, in ascending byte order; words consist of letters, marks and digits alone. `rules` tells by
/// what rules the words were cut. Pending changes of the context stay pending.
void writeSearchTokens(int rules, std::span<const Text> messageIDs,
                       const std::function<void(const SearchTokenVisitor& visit)>& produce,
                       ModelContext& context);

/// Visits what is stored, each word once, in ascending byte order. Gives the message of each number, an empty
/// id where there is none any more. Words that were cut by other rules are as good as none.
std::vector<Text> readSearchTokens(int rules, const SearchTokenVisitor& visit, ModelContext& context);

}  // namespace tidewrack
