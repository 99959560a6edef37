#include "classify/search_token_store.h"

#include <cstdint>
#include <utility>
#include <vector>

#include "classify/token_segment_builder.h"
#include "library/search_token_rows.h"

namespace tidewrack {
namespace {

// Goes up by one whenever the same text may give other words than before, or other texts of a message count.
constexpr int tokenizerRules = 2;

}  // namespace

FullTextSearchIndex PersistedSearchTokenStore::load(ModelContext& context) {
  TokenSegmentLoader loader;
  auto messageIDs = readSearchTokens(
      tokenizerRules,
      [&loader](std::string_view token, std::span<const std::uint32_t> numbers) {
        loader.add(token, numbers);
      },
      context);
  if (messageIDs.empty()) {
    return {};
  }
  return FullTextSearchIndex::ofSegment(loader.finish(std::move(messageIDs)));
}

void PersistedSearchTokenStore::rewrite(FullTextSearchIndex& index, ModelContext& context) {
  auto segment = index.asOneSegment();
  if (!segment) {
    segment = TokenSegmentBuilder().finish({});
  }
  const auto produce = [&segment](const SearchTokenVisitor& visit) {
    std::vector<std::uint32_t> numbers;
    for (std::size_t i = 0; i < segment->tokenCount(); ++i) {
      segment->readMessagesWith(i, numbers);
      visit(segment->token(i), numbers);
    }
  };
  writeSearchTokens(tokenizerRules, segment->messageIDs(), produce, context);
}

}  // namespace tidewrack
