#include "library/message_reader.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <exception>
#include <memory>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "library/record_mapper.h"
#include "library/stored_content.h"

namespace tidewrack {
namespace {

// What every reading of messages selects, in the order of these numbers.
constexpr const char* messageColumns =
    "number, source, id, subject, fromName, fromAddress, toData, ccData, date, snippet, plainBody, "
    "plainBodySize, htmlBody, htmlBodySize, labelsData, conversationID, inReplyTo, referencesData, category";
enum MessageColumn {
  number,
  source,
  id,
  subject,
  fromName,
  fromAddress,
  toData,
  ccData,
  date,
  snippet,
  plainBody,
  plainBodySize,
  htmlBody,
  htmlBodySize,
  labelsData,
  conversationID,
  inReplyTo,
  referencesData,
  category
};

constexpr const char* attachmentColumns =
    "message, id, fileName, mimeType, contentID, isInline, data, dataSize";

struct Source {
  Text id;
  Text name;
};
using Sources = std::unordered_map<std::int64_t, Source>;

// A message whose library row is missing belongs to no library.
Source sourceOf(const Sources& sources, std::int64_t sourceNumber) {
  const auto found = sources.find(sourceNumber);
  return found == sources.end() ? Source() : found->second;
}

Sources readSources(SQLiteConnection& connection) {
  Sources sources;
  auto statement = connection.prepare("SELECT number, libraryID, libraryName FROM source");
  while (statement.step()) {
    sources[statement.integer(0)] = {statement.bytes(1), statement.bytes(2)};
  }
  return sources;
}

std::optional<std::string_view> optionalBytes(const SQLiteStatement& row, int column) {
  return row.isNull(column) ? std::nullopt : std::optional<std::string_view>(row.bytes(column));
}

std::optional<Date> optionalDate(const SQLiteStatement& row, int column) {
  return row.isNull(column) ? std::nullopt : std::optional<Date>(dateFromSeconds(row.real(column)));
}

StoredScalars scalarsOf(const SQLiteStatement& row) {
  return {row.bytes(id),
          row.bytes(subject),
          optionalBytes(row, fromName),
          row.bytes(fromAddress),
          row.bytes(toData),
          row.bytes(ccData),
          optionalDate(row, date),
          row.bytes(snippet),
          row.bytes(labelsData),
          row.bytes(conversationID),
          optionalBytes(row, inReplyTo),
          row.bytes(referencesData),
          optionalBytes(row, category)};
}

std::optional<Content> bodyOf(StoredContents& contents, const SQLiteStatement& row, int column) {
  if (row.isNull(column)) {
    return std::nullopt;
  }
  return contents.content(row.integer(column), static_cast<std::uint64_t>(row.integer(column + 1)));
}

// An attachment from a row of attachmentColumns.
EmailAttachment attachmentOf(StoredContents& contents, const SQLiteStatement& row, ListTextPool& pool) {
  EmailAttachment attachment;
  const std::string_view bytes = row.bytes(1);
  std::memcpy(attachment.id.bytes.data(), bytes.data(), std::min(bytes.size(), attachment.id.bytes.size()));
  attachment.fileName = pool.text(row.bytes(2));
  attachment.mimeType = pool.text(row.bytes(3));
  if (const auto contentID = optionalBytes(row, 4)) {
    attachment.contentID = Text(*contentID);
  }
  attachment.isInline = row.integer(5) != 0;
  if (!row.isNull(6)) {
    attachment.data = contents.content(row.integer(6), static_cast<std::uint64_t>(row.integer(7)));
  }
  return attachment;
}

/// Reads the messages of one range of row numbers after the other. One a thread.
class RangeReader {
 public:
  RangeReader(const std::shared_ptr<MessageStore>& store, SQLiteConnection& connection,
              const Sources& sources, std::optional<std::string_view> libraryID)
      : contents_(store),
        sources_(sources),
        messages_(connection.prepare(
            std::string("SELECT ") + messageColumns + " FROM message WHERE number BETWEEN ?1 AND ?2" +
            (libraryID ? " AND source IN (SELECT number FROM source WHERE libraryID = ?3)" : "") +
            " ORDER BY number")),
        attachments_(connection.prepare(std::string("SELECT ") + attachmentColumns +
                                        " FROM attachment WHERE message BETWEEN ?1 AND ?2"
                                        " ORDER BY message, position")) {
    if (libraryID) {
      messages_.bindText(3, *libraryID);
    }
  }

  MessageList read(std::int64_t first, std::int64_t last) {
    messages_.bindInteger(1, first);
    messages_.bindInteger(2, last);
    attachments_.bindInteger(1, first);
    attachments_.bindInteger(2, last);
    MessageList list;
    // Both statements go up the row numbers, so that one walk over each joins them.
    bool hasAttachment = attachments_.step();
    while (messages_.step()) {
      auto message = std::make_shared<EmailMessage>(mapper_.message(scalarsOf(messages_)));
      const Source from = sourceOf(sources_, messages_.integer(source));
      message->sourceLibraryID = from.id;
      message->sourceLibraryName = from.name;
      message->plainBody = bodyOf(contents_, messages_, plainBody);
      message->htmlBody = bodyOf(contents_, messages_, htmlBody);
      const std::int64_t row = messages_.integer(number);
      while (hasAttachment && attachments_.integer(0) < row) {
        hasAttachment = attachments_.step();
      }
      while (hasAttachment && attachments_.integer(0) == row) {
        message->attachments.push_back(attachmentOf(contents_, attachments_, mapper_.pool()));
        hasAttachment = attachments_.step();
      }
      message->attachments.shrink_to_fit();
      list.push_back(std::move(message));
    }
    messages_.reset();
    attachments_.reset();
    return list;
  }

 private:
  StoredContents contents_;
  const Sources& sources_;
  SQLiteStatement messages_;
  SQLiteStatement attachments_;
  RecordMapper mapper_;
};

/// Row numbers cut into ranges that threads take one by one; the results come back in order.
class RangeQueue {
 public:
  RangeQueue(std::int64_t first, std::int64_t last) : first_(first), last_(last) {
    constexpr std::int64_t maximumRanges = 32;
    const std::int64_t rows = last - first + 1;
    rangeSize_ = std::max<std::int64_t>(1024, (rows + maximumRanges - 1) / maximumRanges);
    results_.resize(rows > 0 ? static_cast<std::size_t>((rows + rangeSize_ - 1) / rangeSize_) : 0);
  }

  void work(RangeReader& reader) {
    for (std::size_t index = next_++; index < results_.size(); index = next_++) {
      const std::int64_t start = first_ + static_cast<std::int64_t>(index) * rangeSize_;
      results_[index] = reader.read(start, std::min(last_, start + rangeSize_ - 1));
    }
  }
  void stop() { next_ = results_.size(); }

  MessageList joined() {
    std::size_t count = 0;
    for (const auto& result : results_) {
      count += result.size();
    }
    MessageList list;
    list.reserve(count);
    for (auto& result : results_) {
      std::move(result.begin(), result.end(), std::back_inserter(list));
      result = {};
    }
    return list;
  }

 private:
  std::int64_t first_;
  std::int64_t last_;
  std::int64_t rangeSize_;
  std::atomic<std::size_t> next_ = 0;
  std::vector<MessageList> results_;
};

bool isSortedNewestFirst(const MessageList& list) {
  return std::is_sorted(list.begin(), list.end(), [](const auto& a, const auto& b) {
    return a->date.value_or(distantPast) > b->date.value_or(distantPast);
  });
}

}  // namespace

MessageList readMessages(const std::shared_ptr<MessageStore>& store,
                         std::optional<std::string_view> libraryID) {
  MessageList list;
  {
    MessageStore::Reading reading(*store);
    SQLiteConnection& connection = reading.connection(0);
    const Sources sources = readSources(connection);
    RangeQueue queue(connection.queryInteger("SELECT min(number) FROM message"),
                     connection.queryInteger("SELECT max(number) FROM message"));
    std::exception_ptr failure;
    std::thread helper;
    if (reading.count() > 1) {
      helper = std::thread([&] {
        try {
          RangeReader reader(store, reading.connection(1), sources, libraryID);
          queue.work(reader);
        } catch (...) {
          failure = std::current_exception();
          queue.stop();
        }
      });
    }
    try {
      RangeReader reader(store, connection, sources, libraryID);
      queue.work(reader);
    } catch (...) {
      queue.stop();
      if (helper.joinable()) {
        helper.join();
      }
      throw;
    }
    if (helper.joinable()) {
      helper.join();
    }
    if (failure) {
      std::rethrow_exception(failure);
    }
    list = queue.joined();
  }
  if (!isSortedNewestFirst(list)) {
    sortNewestFirst(list);
  }
  return list;
}

std::optional<PersistedEmailMessage> readMessage(const std::shared_ptr<MessageStore>& store,
                                                 std::string_view messageID) {
  MessageStore::Reading reading(*store);
  SQLiteConnection& connection = reading.connection(0);
  auto row = connection.prepare(std::string("SELECT ") + messageColumns +
                                " FROM message WHERE id = ? ORDER BY number LIMIT 1");
  row.bindText(1, messageID);
  if (!row.step()) {
    return std::nullopt;
  }
  PersistedEmailMessage entity;
  StoredContents contents(store);
  const Sources sources = readSources(connection);
  const Source from = sourceOf(sources, row.integer(source));
  const StoredScalars scalars = scalarsOf(row);
  const auto optionalText = [](const std::optional<std::string_view>& bytes) {
    return bytes ? std::optional<Text>(*bytes) : std::nullopt;
  };
  entity.id = scalars.id;
  entity.sourceLibraryID = from.id;
  entity.sourceLibraryName = from.name;
  entity.subject = scalars.subject;
  entity.fromName = optionalText(scalars.fromName);
  entity.fromAddress = scalars.fromAddress;
  entity.toData = scalars.toData;
  entity.ccData = scalars.ccData;
  entity.date = scalars.date;
  entity.snippet = scalars.snippet;
  entity.plainBody = bodyOf(contents, row, plainBody);
  entity.htmlBody = bodyOf(contents, row, htmlBody);
  entity.labelsData = scalars.labelsData;
  entity.conversationID = scalars.conversationID;
  entity.inReplyTo = optionalText(scalars.inReplyTo);
  entity.referencesData = scalars.referencesData;
  entity.category = optionalText(scalars.category);
  auto attachments = connection.prepare(std::string("SELECT ") + attachmentColumns +
                                        " FROM attachment WHERE message = ? ORDER BY position");
  attachments.bindInteger(1, row.integer(number));
  ListTextPool pool;
  while (attachments.step()) {
    const EmailAttachment attachment = attachmentOf(contents, attachments, pool);
    entity.attachments.push_back({attachment.id, attachment.fileName, attachment.mimeType, attachment.data,
                                  attachment.contentID, attachment.isInline});
  }
  return entity;
}

}  // namespace tidewrack
