#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

class TokenSegment;

/// One (token, message) pair, the flat form of the index.
struct SearchTokenEntry {
  Text token;
  Text messageID;
  friend bool operator==(const SearchTokenEntry&, const SearchTokenEntry&) = default;
};

/// Words that were collected before their messages got into the list.
struct CollectedWords {
  std::shared_ptr<const TokenSegment> segment;  ///< Null for none.
  MessageList messages;                         ///< By their numbers in the segment.

  /// The words of the messages of a save, which left out those that a later one of the same id replaces;
  /// `saved` is what the save gave back.
  static CollectedWords ofSaved(std::shared_ptr<const TokenSegment> segment, const MessageList& saved);
};

/// An inverted index from normalised words to messages. Whole tokens, all of them required; no prefixes, no
/// ranking. An immutable value once built: copying copies a pointer. Safe to read from any thread.
class FullTextSearchIndex {
 public:
  /// An empty index.
  FullTextSearchIndex();

  /// Discards what the index holds and indexes the list. Reads each body once.
  void build(const MessageList& messages);
  /// Ends as build(messages) does, but reads only the messages that are new or whose text has changed. Of
  /// those it spares itself what `collected` has.
  void update(const MessageList& messages, const CollectedWords& collected = {});
  /// Discards what the index holds and fills it from the entries.
  void load(const std::vector<SearchTokenEntry>& entries);
  /// Takes `messages` as the list that `positionsMatching` speaks of, without reading any text: messages are
  /// known by their ids, and those that the index does not hold have no words. For use after load or
  /// ofSegment, when the words were made from these messages as they are.
  void align(const MessageList& messages);
  /// An index of words that were collected before; align gives it its list.
  static FullTextSearchIndex ofSegment(std::shared_ptr<const TokenSegment> segment);
  /// Everything that the index holds as one segment. What it takes to make one stays in the index. Null when
  /// the index is empty.
  std::shared_ptr<const TokenSegment> asOneSegment();
  /// One entry for each pair, in no particular order.
  [[nodiscard]] std::vector<SearchTokenEntry> entries() const;
  [[nodiscard]] bool empty() const;

  /// The words of a text: diacritics folded, lower case, split at everything that is no letter, mark or
  /// digit; words of one user-perceived character are dropped. Repeats stay.
  static std::vector<std::string> tokenize(std::string_view text);
  /// The ids of which every token of the query is held, by one message or, where several have the id, by all
  /// of them together; none for a query without tokens.
  [[nodiscard]] std::unordered_set<Text> matchingMessageIDs(std::string_view query) const;
  /// The places, ascending, of the messages that hold every token, in the list given last to build, update
  /// or align; for a list in which no id repeats. Costs what it finds.
  [[nodiscard]] std::vector<std::uint32_t> positionsMatching(std::string_view query) const;
  /// Number of messages of the list given last to build, update or align whose words it holds.
  [[nodiscard]] std::size_t messageCount() const;
  /// Number of (token, message) pairs held.
  [[nodiscard]] std::uint64_t pairCount() const;
  /// Bytes held, message ids left out.
  [[nodiscard]] std::size_t memory() const;

  friend bool operator==(const FullTextSearchIndex& a, const FullTextSearchIndex& b) {
    return a.data_ == b.data_;
  }

 private:
  struct Part;
  struct Data;
  static void compact(Data& data);
  static void mergeParts(Data& data);
  template <typename Visit>
  void forEachMatch(std::span<const std::string> tokens, Visit visit) const;

  std::shared_ptr<const Data> data_;
};

}  // namespace tidewrack
