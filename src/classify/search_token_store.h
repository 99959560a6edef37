#pragma once

#include "classify/full_text_search_index.h"
#include "library/model_container.h"
#include "mail/records.h"

namespace tidewrack {

/// Keeps the search index in the store, so that a start need not read every body again. Both operations run
/// on a worker thread, one at a time for each context, and throw StoreFailure.
class SearchTokenStore {
 public:
  virtual ~SearchTokenStore() = default;
  /// The index of the stored tokens; empty when there are none.
  virtual FullTextSearchIndex load(ModelContext& context) = 0;
  /// Replaces the stored tokens by those of the messages.
  virtual void rewrite(const MessageList& messages, ModelContext& context) = 0;
};

}  // namespace tidewrack
