#include "library/search_token_rows.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <exception>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "library/message_store.h"
#include "platform/bounded_queue.h"
#include "platform/sqlite.h"
#include "platform/text_numbers.h"
#include "platform/two_threads.h"

namespace tidewrack {
namespace {

// Large enough that the part of a page which the end of a row leaves empty does not count.
constexpr std::size_t bytesInARow = std::size_t{256} << 10U;
// Rows that wait for being written.
constexpr std::size_t mostBytesAhead = std::size_t{32} << 20U;
constexpr int mostDigits = std::numeric_limits<std::uint32_t>::digits10 + 1;

/// Collects words into rows.
class RowMaker {
 public:
  explicit RowMaker(BoundedQueue<std::string>& rows) : rows_(rows) {}

  void add(std::string_view token, std::span<const std::uint32_t> numbers) {
    if (numbers.empty()) {
      return;
    }
    const std::size_t before = row_.size();
    row_.resize(before + token.size() + 5 + numbers.size() * (std::size_t{mostDigits} + 1));
    char* end = row_.data() + before;
    *end++ = before == 0 ? '{' : ',';
    *end++ = '"';
    end = std::ranges::copy(token, end).out;
    *end++ = '"';
    *end++ = ':';
    char separator = '[';
    std::uint32_t last = 0;
    for (const auto number : numbers) {
      *end++ = separator;
      end = std::to_chars(end, end + mostDigits, number - last).ptr;
      separator = ',';
      last = number;
    }
    *end++ = ']';
    row_.resize(static_cast<std::size_t>(end - row_.data()));
    if (row_.size() >= bytesInARow) {
      finish();
    }
  }
  /// Hands over what is left.
  void finish() {
    if (!row_.empty()) {
      row_ += '}';
      const auto size = row_.size();
      rows_.push(std::exchange(row_, {}), size);
    }
  }

 private:
  BoundedQueue<std::string>& rows_;
  std::string row_;
};

void makeRows(const std::function<void(const SearchTokenVisitor& visit)>& produce,
              BoundedQueue<std::string>& rows) {
  try {
    RowMaker maker(rows);
    produce([&maker](std::string_view token, std::span<const std::uint32_t> numbers) {
      maker.add(token, numbers);
    });
    maker.finish();
    rows.close();
  } catch (...) {
    rows.close(std::current_exception());
  }
}

void writeRows(BoundedQueue<std::string>& rows, SQLiteConnection& connection) {
  auto insert = connection.prepare("INSERT INTO searchWords (words) VALUES (?)");
  while (const auto row = rows.next()) {
    insert.bindText(1, *row);
    insert.run();
  }
}

// Each message of the store gets one number at most, and each number one message.
void writeDocuments(std::span<const Text> messageIDs, SQLiteConnection& connection) {
  TextNumbers ids;
  ids.reserve(messageIDs.size());
  std::vector<std::optional<std::uint32_t>> waiting;  // The number for each id until a message has it.
  waiting.reserve(messageIDs.size());
  ids.numberEach(
      messageIDs.size(), [&](std::size_t number) -> const Text& { return messageIDs[number]; },
      [&](std::size_t number, TextNumbers::Number id) {
        if (id == waiting.size()) {
          waiting.emplace_back(static_cast<std::uint32_t>(number));
        }
      });
  std::vector<std::pair<std::int64_t, std::uint32_t>> documents;
  documents.reserve(waiting.size());
  auto messages = connection.prepare("SELECT id, number FROM message");
  constexpr std::size_t readTogether = 256;
  std::vector<std::string> rowIDs(readTogether);
  std::vector<std::int64_t> rows(readTogether);
  bool isMore = true;  // A statement that has ended would begin again.
  while (isMore && documents.size() < waiting.size()) {
    std::size_t count = 0;
    for (; count < readTogether && (isMore = messages.step()); ++count) {
      rowIDs[count] = messages.bytes(0);
      rows[count] = messages.integer(1);
    }
    ids.findEach(
        count, [&](std::size_t row) -> const std::string& { return rowIDs[row]; },
        [&](std::size_t row, std::optional<TextNumbers::Number> id) {
          if (id && waiting[*id]) {
            documents.emplace_back(rows[row], *waiting[*id]);
            waiting[*id].reset();
          }
        });
  }
  std::ranges::sort(documents);
  auto insert = connection.prepare("INSERT INTO searchDocument (message, number) VALUES (?, ?)");
  for (const auto& [message, number] : documents) {
    insert.bindInteger(1, message);
    insert.bindInteger(2, number);
    insert.run();
  }
}

// Gives the id of the message of each number below `count`.
std::vector<Text> readDocuments(SQLiteConnection& connection, std::size_t count) {
  struct Document {
    std::int64_t message;
    std::uint32_t number;
  };
  std::vector<Document> inOrder;
  inOrder.reserve(count);
  auto documents = connection.prepare(
      "SELECT message, number FROM searchDocument WHERE number BETWEEN 0 AND ? ORDER BY message");
  documents.bindInteger(1, static_cast<std::int64_t>(count) - 1);
  while (documents.step()) {
    inOrder.push_back({documents.integer(0), static_cast<std::uint32_t>(documents.integer(1))});
  }
  std::vector<Text> messageIDs(count);
  // The ids come from their index, which is read in one sweep; the rows of the messages are large.
  auto messages = connection.prepare("SELECT number, id FROM message");
  while (!inOrder.empty() && messages.step()) {
    const auto message = messages.integer(0);
    // Most stores have numbered their messages without a gap.
    auto place = inOrder.begin();
    if (const auto steps = message - place->message;
        steps >= 0 && steps < static_cast<std::int64_t>(inOrder.size()) &&
        inOrder[static_cast<std::size_t>(steps)].message == message) {
      place += steps;
    } else {
      place = std::ranges::lower_bound(inOrder, message, {}, &Document::message);
    }
    if (place != inOrder.end() && place->message == message) {
      messageIDs[place->number] = messages.bytes(1);
    }
  }
  return messageIDs;
}

/// Goes through the words of one row. What is not of the form ends the row.
class RowReader {
 public:
  /// `room` takes the numbers of one word after the other.
  RowReader(std::string_view row, std::vector<std::uint32_t>& room) : row_(row), room_(room) {}

  /// Reads the next word and its numbers; false behind the last one. Numbers that the
  /// room is too small for have lost their messages and are left out.
  bool next() {
    count_ = 0;
    if (!takes(position_ == 0 ? '{' : ',') || !takes('"')) {
      return false;
    }
    const auto end = row_.find('"', position_);
    if (end == std::string_view::npos) {
      return false;
    }
    token_ = row_.substr(position_, end - position_);
    position_ = end + 1;
    return takes(':') && takes('[') && readNumbers();
  }
  [[nodiscard]] std::string_view token() const { return token_; }
  [[nodiscard]] std::span<const std::uint32_t> numbers() const { return std::span(room_).first(count_); }

 private:
  static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

  bool takes(char wanted) {
    const bool isThere = position_ < row_.size() && row_[position_] == wanted;
    position_ += isThere ? 1 : 0;
    return isThere;
  }

  bool readNumbers() {
    const char* at = row_.data() + position_;
    const char* const end = row_.data() + row_.size();
    std::uint64_t number = 0;
    while (true) {
      std::uint64_t difference = 0;
      const char* const begin = at;
      for (; at != end && isDigit(*at); ++at) {
        difference = difference * 10 + static_cast<std::uint64_t>(*at - '0');
      }
      number += difference;
      // Numbers ascend, so that those below the size of the room find place in it.
      if (at == end || at == begin || at - begin > mostDigits || (difference == 0 && count_ != 0)) {
        return false;
      }
      if (number < room_.size()) {
        room_[count_++] = static_cast<std::uint32_t>(number);
      }
      const char behind = *at++;
      if (behind != ',') {
        position_ = static_cast<std::size_t>(at - row_.data());
        return behind == ']';
      }
    }
  }

  std::string_view row_;
  std::vector<std::uint32_t>& room_;
  std::size_t count_ = 0;
  std::size_t position_ = 0;
  std::string_view token_;
};

void readWords(SQLiteConnection& connection, std::size_t count, const SearchTokenVisitor& visit) {
  std::vector<std::uint32_t> room(count);
  auto rows = connection.prepare("SELECT words FROM searchWords ORDER BY row");
  while (count != 0 && rows.step()) {
    RowReader reader(rows.bytes(0), room);
    while (reader.next()) {
      if (!reader.numbers().empty()) {
        visit(reader.token(), reader.numbers());
      }
    }
  }
}

}  // namespace

void writeSearchTokens(int rules, std::span<const Text> messageIDs,
                       const std::function<void(const SearchTokenVisitor& visit)>& produce,
                       ModelContext& context) {
  MessageStore::Writing writing(context.store());
  writing.begin(MessageStore::Writing::Size::small);
  // The rows are made beside the numbers of the messages, which take as long.
  BoundedQueue<std::string> rows(mostBytesAhead);
  const auto write = [&](SQLiteConnection& connection) {
    connection.execute(
        "DELETE FROM searchDocument; DELETE FROM searchWords; DELETE FROM searchTokenRules;"
        "INSERT INTO searchTokenRules VALUES (" +
        std::to_string(rules) + ")");
    writeDocuments(messageIDs, connection);
    writeRows(rows, connection);
  };
  const auto writeOrStop = [&] {
    try {
      writing.with(write);
    } catch (...) {
      rows.stop();
      throw;
    }
  };
  doTogether(writeOrStop, [&] { makeRows(produce, rows); });
  writing.commit();
}

std::vector<Text> readSearchTokens(int rules, const SearchTokenVisitor& visit, ModelContext& context) {
  MessageStore::Reading reading(context.store());
  SQLiteConnection& connection = reading.connection(0);
  if (connection.queryInteger("SELECT version FROM searchTokenRules") != rules) {
    return {};
  }
  // Numbers stay below 2^32 - 1, which stands for none.
  const auto count = static_cast<std::size_t>(connection.queryInteger(
      "SELECT ifnull(max(number) + 1, 0) FROM searchDocument WHERE number BETWEEN 0 AND 4294967293"));
  std::vector<Text> messageIDs;
  const auto readIDs = [&] { messageIDs = readDocuments(reading.connection(reading.count() - 1), count); };
  const auto read = [&] { readWords(connection, count, visit); };
  if (reading.count() > 1) {
    doTogether(read, readIDs);
  } else {
    readIDs();
    read();
  }
  return messageIDs;
}

}  // namespace tidewrack
