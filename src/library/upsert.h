#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <thread>
#include <unordered_map>
#include <vector>

#include "library/decode_ahead.h"
#include "library/message_store.h"
#include "library/message_writer.h"
#include "library/store_operations.h"
#include "mail/records.h"

namespace tidewrack {

/// The saving of one list. Decoding begins with the object, ahead of the writing. The list must outlive it.
/// One thread at a time.
class Upsert {
 public:
  explicit Upsert(const MessageList& messages);

  ~Upsert();
  Upsert(const Upsert&) = delete;
  Upsert& operator=(const Upsert&) = delete;

  /// Whether all that there is to write fits into the memory of the decoder. Waits until that is known.
  bool isSmall() { return decoder_->fitsIntoMemory(); }
  /// Lets other work go on beside the writing that follows; null for none. Once.
  void accompany(const WhileSaving& whileSaving);
  /// Writes the list in the transaction of the caller. Once.
  void write(MessageStore::Writing& writing, const SaveProgress& progress);
  /// Lets each record of `messages`, which is the list given to the constructor, give way to its stored
  /// form. For after the commit. Waits until the other work has ended.
  void refer(MessageList& messages, const std::shared_ptr<MessageStore>& store);

 private:
  template <typename Function>
  void forEachWritten(Function function) const;
  void writeRow(MessageWriter& writer, std::optional<std::int64_t> row, std::size_t place);
  void workBeside(const WhileSaving& whileSaving);
  void waitForOtherWork();

  const MessageList& messages_;
  std::size_t replacedCount_ = 0;
  std::vector<std::size_t> last_;  // For each place the last place with the same id: its record is written.
  std::unordered_map<std::size_t, Text> earlierCategories_;  // Of a written record without one of its own.
  std::vector<WrittenContents> written_;                     // For each place that is written.
  std::unique_ptr<DecodeAhead> decoder_;
  std::thread otherWork_;
};

}  // namespace tidewrack
