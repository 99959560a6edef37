#pragma once

#include "classify/full_text_search_index.h"
#include "library/model_container.h"

namespace tidewrack {

/// Keeps the search index in the store, so that a start need not read every body again. Both operations run
/// on a worker thread, one at a time for each context, and throw StoreFailure.
class SearchTokenStore {
 public:
  virtual ~SearchTokenStore() = default;
  /// The index of the stored tokens, for align; empty when there are none. Messages that have changed since
  /// the tokens were stored are not in it.
  virtual FullTextSearchIndex load(ModelContext& context) = 0;
  /// Replaces the stored tokens by those of an index that is up to date with the stored messages. The index
  /// keeps its meaning; it may get a form that is stored sooner the next time.
  virtual void rewrite(FullTextSearchIndex& index, ModelContext& context) = 0;
};

/// The token store of the program: PersistedSearchToken, in the message store itself.
class PersistedSearchTokenStore : public SearchTokenStore {
 public:
  FullTextSearchIndex load(ModelContext& context) override;
  void rewrite(FullTextSearchIndex& index, ModelContext& context) override;
};

}  // namespace tidewrack
