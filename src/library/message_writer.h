#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "library/decode_ahead.h"
#include "mail/records.h"
#include "platform/sqlite.h"

namespace tidewrack {

/// Where a piece of content was written.
struct ContentPlace {
  std::int64_t number = 0;
  std::uint64_t size = 0;
};

/// Where the contents of a message were written: a place for each body that it has and for each attachment
/// (number 0 for one without data).
struct WrittenContents {
  std::optional<ContentPlace> plainBody;
  std::optional<ContentPlace> htmlBody;
  std::vector<ContentPlace> attachments;
};

/// Writes messages in the transaction of its caller, who also sees that one thread at a time uses it. The
/// contents of all messages are written before the first message, so that the rows of the messages come to
/// lie together in the file and a list is read in one sweep.
class MessageWriter {
 public:
  /// Contents beyond `pieceSize` bytes are cut into several rows.
  MessageWriter(SQLiteConnection& connection, std::int64_t pieceSize);

  /// Whether there is no message yet.
  [[nodiscard]] bool storeIsEmpty();
  /// Takes the indexes of the messages away until finish(): to sort all keys at the end costs a third of
  /// putting each into its place. For an empty store.
  void dropIndexes();
  /// The row of the message of this id, or nothing. Two rows with the same id stop the process.
  std::optional<std::int64_t> existingRow(std::string_view id);

  WrittenContents writeContents(const DecodedContents& decoded);
  /// Inserts a message, or overwrites a row: the category only when the message has one, bodies and
  /// attachments whole.
  void writeMessage(std::optional<std::int64_t> row, const EmailMessage& message,
                    const WrittenContents& contents);
  /// What has to follow the last message of the transaction.
  void finish();

 private:
  ContentPlace writeContent(std::string_view bytes);
  void writeAttachments(std::int64_t row, const EmailMessage& message, const WrittenContents& contents);
  void removeContents(std::int64_t row);
  std::int64_t sourceNumber(const Text& libraryID, const Text& libraryName);

  SQLiteConnection& connection_;
  std::int64_t pieceSize_;
  SQLiteStatement findMessage_;
  SQLiteStatement insertMessage_;
  SQLiteStatement updateMessage_;
  SQLiteStatement insertContent_;
  SQLiteStatement insertContentRest_;
  SQLiteStatement insertAttachment_;
  SQLiteStatement deleteBodies_;
  SQLiteStatement deleteAttachments_;
  std::int64_t nextContent_;
  std::vector<std::string> droppedIndexes_;  // The statements that make them.
  std::map<std::pair<Text, Text>, std::int64_t> sources_;
};

}  // namespace tidewrack
