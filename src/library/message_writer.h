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

/// Writes messages in the transaction of its caller, who also sees that one thread at a time uses it.
class MessageWriter {
 public:
  /// Contents beyond `pieceSize` bytes are cut into several rows.
  MessageWriter(SQLiteConnection& connection, std::int64_t pieceSize);

  /// The row of the message of this id, or nothing. Two rows with the same id stop the process.
  std::optional<std::int64_t> existingRow(std::string_view id);

  WrittenContents insert(const EmailMessage& message, const DecodedMessage& decoded);
  /// Overwrites a row: the category only when the message has one, bodies and attachments whole. The old
  /// contents stay readable until removeObsolete, since the messages of the list may refer to them.
  WrittenContents update(std::int64_t row, const EmailMessage& message, const DecodedMessage& decoded);
  void removeObsolete();

 private:
  WrittenContents write(std::optional<std::int64_t> row, const EmailMessage& message,
                        const DecodedMessage& decoded);
  ContentPlace writeContent(std::string_view bytes);
  void writeAttachments(std::int64_t row, const EmailMessage& message, const WrittenContents& contents);
  void collectObsolete(std::int64_t row);
  std::int64_t sourceNumber(const Text& libraryID, const Text& libraryName);

  SQLiteConnection& connection_;
  std::int64_t pieceSize_;
  SQLiteStatement findMessage_;
  SQLiteStatement insertMessage_;
  SQLiteStatement updateMessage_;
  SQLiteStatement insertContent_;
  SQLiteStatement insertContentRest_;
  SQLiteStatement insertAttachment_;
  SQLiteStatement findContents_;
  SQLiteStatement detachData_;
  SQLiteStatement deleteAttachments_;
  std::map<std::pair<Text, Text>, std::int64_t> sources_;
  std::vector<std::int64_t> obsolete_;
};

}  // namespace tidewrack
