#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include "library/model_container.h"
#include "platform/text.h"

/// The stored form of the search index, PersistedSearchToken. Behind the entity stands one row for each word
/// with the numbers of its messages as a list of differences in decimal digits, which SQL can expand, and a
/// table from number to message. A message that is deleted, or whose text changes, loses its number, and with
/// it all of its words go at once; so what is stored is right for every message that still has a number.
///
/// Both functions may run on any thread and throw StoreFailure.
namespace tidewrack {

/// A word and the ascending numbers of messages that hold it.
using SearchTokenVisitor =
    std::function<void(std::string_view token, std::span<const std::uint32_t> numbers)>;

/// Replaces what is stored, in one transaction. `messageIDs` gives the message of each number; one that the
/// store does not hold is left out. `produce` is called once and hands over each word once, in ascending byte
/// order. `rules` tells by what rules the words were cut. Pending changes of the context stay pending.
void writeSearchTokens(int rules, std::span<const Text> messageIDs,
                       const std::function<void(const SearchTokenVisitor& visit)>& produce,
                       ModelContext& context);

/// Visits what is stored, in ascending byte order of the words; a word may come in several pieces, one behind
/// the other. Gives the message of each number, an empty id where there is none any more. Words that were cut
/// by other rules are as good as none.
std::vector<Text> readSearchTokens(int rules, const SearchTokenVisitor& visit, ModelContext& context);

}  // namespace tidewrack
