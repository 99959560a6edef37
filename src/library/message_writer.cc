#include "library/message_writer.h"

#include <cstdio>
#include <cstdlib>

#include "mail/json_coding.h"

namespace tidewrack {
namespace {

// Parameters of both statements below, in this order; the update has the row as its last one.
constexpr const char* insertMessageSQL =
    "INSERT INTO message (id, source, subject, fromName, fromAddress, toData, ccData, date, snippet, "
    "plainBody, "
    "plainBodySize, htmlBody, htmlBodySize, labelsData, conversationID, inReplyTo, referencesData, category) "
    "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char* updateMessageSQL =
    "UPDATE message SET id = ?, source = ?, subject = ?, fromName = ?, fromAddress = ?, toData = ?, ccData = "
    "?, "
    "date = ?, snippet = ?, plainBody = ?, plainBodySize = ?, htmlBody = ?, htmlBodySize = ?, labelsData = "
    "?, "
    "conversationID = ?, inReplyTo = ?, referencesData = ?, category = coalesce(?, category) WHERE number = "
    "?";

/// Binds one value after the other.
class Binder {
 public:
  explicit Binder(SQLiteStatement& statement) : statement_(statement) {}
  void text(std::string_view value) { statement_.bindText(++parameter_, value); }
  void optionalText(const std::optional<Text>& value) {
    if (value) {
      text(value->view());
    } else {
      null();
    }
  }
  void blob(std::string_view value) { statement_.bindBlob(++parameter_, value); }
  void integer(std::int64_t value) { statement_.bindInteger(++parameter_, value); }
  void date(const std::optional<Date>& value) {
    if (value) {
      statement_.bindReal(++parameter_, secondsSince1970(*value));
    } else {
      null();
    }
  }
  // Two columns: number and size.
  void place(const std::optional<ContentPlace>& value) {
    if (value) {
      integer(value->number);
      integer(static_cast<std::int64_t>(value->size));
    } else {
      null();
      null();
    }
  }
  void null() { statement_.bindNull(++parameter_); }

 private:
  SQLiteStatement& statement_;
  int parameter_ = 0;
};

[[noreturn]] void stopForDuplicate(std::string_view id) {
  std::fprintf(stderr, "Duplicate values for key: '%.*s'\n", static_cast<int>(id.size()), id.data());
  std::abort();
}

}  // namespace

MessageWriter::MessageWriter(SQLiteConnection& connection, std::int64_t pieceSize)
    : connection_(connection),
      pieceSize_(pieceSize),
      findMessage_(connection.prepare("SELECT number FROM message WHERE id = ? LIMIT 2")),
      insertMessage_(connection.prepare(insertMessageSQL)),
      updateMessage_(connection.prepare(updateMessageSQL)),
      insertContent_(connection.prepare("INSERT INTO content (number, bytes) VALUES (?, ?)")),
      insertContentRest_(
          connection.prepare("INSERT INTO contentRest (content, piece, bytes) VALUES (?, ?, ?)")),
      insertAttachment_(connection.prepare(
          "INSERT INTO attachment (message, position, id, fileName, mimeType, contentID, isInline, data, "
          "dataSize) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)")),
      deleteBodies_(connection.prepare(
          "DELETE FROM content WHERE number IN (SELECT plainBody FROM message WHERE number = ?1 UNION ALL "
          "SELECT htmlBody FROM message WHERE number = ?1)")),
      deleteAttachments_(connection.prepare("DELETE FROM attachment WHERE message = ?")),
      nextContent_(connection.queryInteger("SELECT next FROM contentNumber")) {}

bool MessageWriter::storeIsEmpty() {
  return connection_.queryInteger("SELECT NOT EXISTS (SELECT 1 FROM message)") != 0;
}

void MessageWriter::dropIndexes() {
  auto indexes = connection_.prepare(
      "SELECT name, sql FROM sqlite_master WHERE type = 'index' AND tbl_name = 'message' AND sql IS NOT "
      "NULL");
  std::vector<std::string> names;
  while (indexes.step()) {
    names.emplace_back(indexes.bytes(0));
    droppedIndexes_.emplace_back(indexes.bytes(1));
  }
  indexes.reset();
  for (const std::string& name : names) {
    connection_.execute("DROP INDEX " + name);
  }
}

void MessageWriter::finish() {
  for (const std::string& sql : droppedIndexes_) {
    connection_.execute(sql);
  }
  droppedIndexes_.clear();
  connection_.execute("UPDATE contentNumber SET next = " + std::to_string(nextContent_));
}

std::optional<std::int64_t> MessageWriter::existingRow(std::string_view id) {
  std::optional<std::int64_t> row;
  findMessage_.bindText(1, id);
  while (findMessage_.step()) {
    if (row) {
      stopForDuplicate(id);
    }
    row = findMessage_.integer(0);
  }
  findMessage_.reset();
  return row;
}

WrittenContents MessageWriter::writeContents(const DecodedContents& decoded) {
  WrittenContents contents;
  if (decoded.plainBody) {
    contents.plainBody = writeContent(*decoded.plainBody);
  }
  if (decoded.htmlBody) {
    contents.htmlBody = writeContent(*decoded.htmlBody);
  }
  contents.attachments.reserve(decoded.attachments.size());
  for (const auto& data : decoded.attachments) {
    contents.attachments.push_back(data.empty() ? ContentPlace() : writeContent(data));
  }
  return contents;
}

void MessageWriter::writeMessage(std::optional<std::int64_t> row, const EmailMessage& message,
                                 const WrittenContents& contents) {
  if (row) {
    removeContents(*row);
  }
  const std::string toData = encodeAddresses(message.to);
  const std::string ccData = encodeAddresses(message.cc);
  const std::string labelsData = encodeStrings(message.labels);
  const std::string referencesData = encodeStrings(message.references);
  SQLiteStatement& statement = row ? updateMessage_ : insertMessage_;
  Binder binder(statement);
  binder.text(message.id);
  binder.integer(sourceNumber(message.sourceLibraryID, message.sourceLibraryName));
  binder.text(message.subject);
  binder.optionalText(message.from.name);
  binder.text(message.from.address);
  binder.blob(toData);
  binder.blob(ccData);
  binder.date(message.date);
  binder.text(message.snippet);
  binder.place(contents.plainBody);
  binder.place(contents.htmlBody);
  binder.blob(labelsData);
  binder.text(message.conversationID);
  binder.optionalText(message.inReplyTo);
  binder.blob(referencesData);
  binder.optionalText(message.category);
  if (row) {
    binder.integer(*row);
  }
  statement.run();
  writeAttachments(row ? *row : connection_.lastInsertRow(), message, contents);
}

ContentPlace MessageWriter::writeContent(std::string_view bytes) {
  const auto pieceSize = static_cast<std::size_t>(pieceSize_);
  const ContentPlace place{nextContent_++, bytes.size()};
  insertContent_.bindInteger(1, place.number);
  insertContent_.bindBlob(2, bytes.substr(0, pieceSize));
  insertContent_.run();
  std::int64_t piece = 0;
  for (std::size_t start = pieceSize; start < bytes.size(); start += pieceSize) {
    insertContentRest_.bindInteger(1, place.number);
    insertContentRest_.bindInteger(2, ++piece);
    insertContentRest_.bindBlob(3, bytes.substr(start, pieceSize));
    insertContentRest_.run();
  }
  return place;
}

void MessageWriter::writeAttachments(std::int64_t row, const EmailMessage& message,
                                     const WrittenContents& contents) {
  for (std::size_t position = 0; position < message.attachments.size(); ++position) {
    const EmailAttachment& attachment = message.attachments[position];
    const ContentPlace& data = contents.attachments[position];
    Binder binder(insertAttachment_);
    binder.integer(row);
    binder.integer(static_cast<std::int64_t>(position));
    binder.blob({reinterpret_cast<const char*>(attachment.id.bytes.data()), attachment.id.bytes.size()});
    binder.text(attachment.fileName);
    binder.text(attachment.mimeType);
    binder.optionalText(attachment.contentID);
    binder.integer(attachment.isInline ? 1 : 0);
    if (data.number != 0) {
      binder.integer(data.number);
    } else {
      binder.null();
    }
    binder.integer(static_cast<std::int64_t>(data.size));
    insertAttachment_.run();
  }
}

// Of a message that is about to get new ones.
void MessageWriter::removeContents(std::int64_t row) {
  deleteBodies_.bindInteger(1, row);
  deleteBodies_.run();
  deleteAttachments_.bindInteger(1, row);
  deleteAttachments_.run();
}

std::int64_t MessageWriter::sourceNumber(const Text& libraryID, const Text& libraryName) {
  const auto [entry, isNew] = sources_.try_emplace({libraryID, libraryName}, 0);
  if (isNew) {
    auto find = connection_.prepare("SELECT number FROM source WHERE libraryID = ? AND libraryName = ?");
    find.bindText(1, libraryID);
    find.bindText(2, libraryName);
    if (find.step()) {
      entry->second = find.integer(0);
    } else {
      auto insert = connection_.prepare("INSERT INTO source (libraryID, libraryName) VALUES (?, ?)");
      insert.bindText(1, libraryID);
      insert.bindText(2, libraryName);
      insert.run();
      entry->second = connection_.lastInsertRow();
    }
  }
  return entry->second;
}

}  // namespace tidewrack
