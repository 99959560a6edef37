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
constexpr std::size_t mostDigits = std::numeric_limits<std::uint32_t>::digits10 + 1;

/// Collects words into rows.
class RowMaker {
 public:
  explicit RowMaker(BoundedQueue<std::string>& rows) : rows_(rows) {}

  void add(std::string_view token, std::span<const std::uint32_t> numbers) {
    if (numbers.empty()) {
      return;
    }
    const std::size_t before = row_.size();
    row_.resize(before + token.size() + 5 + numbers.size() * (mostDigits + 1));
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

std::vector<Text> readDocuments(SQLiteConnection& connection) {
  // The ids come from their index, which is read in one sweep; the rows of the messages are large.
  std::vector<std::pair<std::int64_t, std::uint32_t>> numberOfMessage;
  std::size_t count = 0;
  auto documents = connection.prepare("SELECT message, number FROM searchDocument ORDER BY message");
  while (documents.step()) {
    const auto number = static_cast<std::uint64_t>(documents.integer(1));
    if (number < std::numeric_limits<std::uint32_t>::max()) {
      numberOfMessage.emplace_back(documents.integer(0), static_cast<std::uint32_t>(number));
      count = std::max(count, static_cast<std::size_t>(number) + 1);
    }
  }
  std::vector<Text> messageIDs(count);
  auto messages = connection.prepare("SELECT number, id FROM message");
  while (!numberOfMessage.empty() && messages.step()) {
    const auto found = std::ranges::lower_bound(numberOfMessage, messages.integer(0), {},
                                                &std::pair<std::int64_t, std::uint32_t>::first);
    if (found != numberOfMessage.end() && found->first == messages.integer(0)) {
      messageIDs[found->second] = messages.bytes(1);
    }
  }
  return messageIDs;
}

/// Goes through the words of one row. What is not of the form ends the row.
class RowReader {
 public:
  RowReader(std::string_view row, std::size_t limit) : row_(row), limit_(limit) {}

  /// Reads the next word and its numbers; false behind the last one. Numbers from the limit on, which have
  /// lost their messages, are left out.
  bool next() {
    numbers_.clear();
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
  [[nodiscard]] const std::vector<std::uint32_t>& numbers() const { return numbers_; }

 private:
  static bool isDigit(char byte) { return byte >= '0' && byte <= '9'; }

  bool takes(char wanted) {
    const bool isThere = position_ < row_.size() && row_[position_] == wanted;
    position_ += isThere ? 1 : 0;
    return isThere;
  }

  bool readNumbers() {
    std::uint64_t number = 0;
    for (bool isFirst = true; position_ < row_.size(); isFirst = false) {
      std::uint64_t difference = 0;
      const std::size_t begin = position_;
      for (; position_ < row_.size() && isDigit(row_[position_]); ++position_) {
        difference = difference * 10 + static_cast<std::uint64_t>(row_[position_] - '0');
      }
      number += difference;
      const auto digits = position_ - begin;
      if (digits == 0 || digits > mostDigits || (difference == 0 && !isFirst)) {
        return false;
      }
      if (number < limit_) {
        numbers_.push_back(static_cast<std::uint32_t>(number));
      }
      if (takes(']')) {
        return true;
      }
      if (!takes(',')) {
        return false;
      }
    }
    return false;
  }

  std::string_view row_;
  std::size_t limit_;
  std::size_t position_ = 0;
  std::string_view token_;
  std::vector<std::uint32_t> numbers_;
};

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
  std::vector<Text> messageIDs = readDocuments(connection);
  auto rows = connection.prepare("SELECT words FROM searchWords ORDER BY row");
  while (!messageIDs.empty() && rows.step()) {
    RowReader reader(rows.bytes(0), messageIDs.size());
    while (reader.next()) {
      if (!reader.numbers().empty()) {
        visit(reader.token(), reader.numbers());
      }
    }
  }
  return messageIDs;
}

}  // namespace tidewrack
