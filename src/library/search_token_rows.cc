#include "library/search_token_rows.h"

#include <array>
#include <charconv>
#include <limits>
#include <string>
#include <unordered_map>

#include "library/message_store.h"
#include "platform/sqlite.h"

namespace tidewrack {
namespace {

// A row holds at most about this many bytes of differences: small enough that rows fill the pages of the
// file well, large enough that the word before them does not count.
constexpr std::size_t mostBytesInARow = 1024;
constexpr std::size_t mostDigits = std::numeric_limits<std::uint32_t>::digits10 + 1;

/// Writes the rows of one word after the other.
class RowWriter {
 public:
  explicit RowWriter(SQLiteConnection& connection)
      : insert_(connection.prepare("INSERT INTO searchToken (token, first, rest) VALUES (?, ?, ?)")) {}

  void write(std::string_view token, std::span<const std::uint32_t> numbers) {
    std::size_t next = 0;
    while (next < numbers.size()) {
      const std::uint32_t first = numbers[next];
      std::uint32_t last = first;
      char* end = rest_.data();
      for (++next; next < numbers.size() && end < rest_.data() + mostBytesInARow; ++next) {
        *end++ = ',';
        end = std::to_chars(end, rest_.data() + rest_.size(), numbers[next] - last).ptr;
        last = numbers[next];
      }
      insert_.bindText(1, token);
      insert_.bindInteger(2, first);
      insert_.bindText(3, {rest_.data(), static_cast<std::size_t>(end - rest_.data())});
      insert_.run();
    }
  }

 private:
  SQLiteStatement insert_;
  std::array<char, mostBytesInARow + 1 + mostDigits> rest_{};
};

// Each row of the store at most once, as with two numbers for one message one of them would outlive it.
void writeDocuments(std::span<const Text> messageIDs, SQLiteConnection& connection) {
  std::unordered_map<std::string_view, std::uint32_t> numbers;
  numbers.reserve(messageIDs.size());
  for (std::size_t number = 0; number < messageIDs.size(); ++number) {
    numbers.try_emplace(messageIDs[number].view(), static_cast<std::uint32_t>(number));
  }
  std::vector<std::int64_t> rows(messageIDs.size(), 0);
  auto messages = connection.prepare("SELECT id, number FROM message");
  while (messages.step()) {
    const auto found = numbers.find(messages.bytes(0));
    if (found != numbers.end() && rows[found->second] == 0) {
      rows[found->second] = messages.integer(1);
    }
  }
  auto insert = connection.prepare("INSERT INTO searchDocument (number, message) VALUES (?, ?)");
  for (std::size_t number = 0; number < rows.size(); ++number) {
    if (rows[number] != 0) {
      insert.bindInteger(1, static_cast<std::int64_t>(number));
      insert.bindInteger(2, rows[number]);
      insert.run();
    }
  }
}

/// The numbers of a row. A damaged row gives fewer.
void readNumbers(std::int64_t first, std::string_view rest, std::size_t limit,
                 std::vector<std::uint32_t>& numbers) {
  numbers.clear();
  if (first < 0 || static_cast<std::uint64_t>(first) >= limit) {
    return;
  }
  auto last = static_cast<std::uint64_t>(first);
  numbers.push_back(static_cast<std::uint32_t>(last));
  for (std::size_t position = 0; position < rest.size();) {
    ++position;  // The comma.
    std::uint64_t difference = 0;
    for (std::size_t digits = 0; position < rest.size() && rest[position] != ','; ++position, ++digits) {
      if (rest[position] < '0' || rest[position] > '9' || digits == mostDigits) {
        return;
      }
      difference = difference * 10 + static_cast<std::uint64_t>(rest[position] - '0');
    }
    last += difference;
    if (difference == 0 || last >= limit) {
      return;
    }
    numbers.push_back(static_cast<std::uint32_t>(last));
  }
}

std::vector<Text> readDocuments(SQLiteConnection& connection) {
  std::vector<Text> messageIDs;
  const std::int64_t last = connection.queryInteger("SELECT max(number) FROM searchDocument");
  auto documents = connection.prepare(
      "SELECT d.number, m.id FROM searchDocument d JOIN message m ON m.number = d.message ORDER BY d.number");
  while (documents.step()) {
    if (messageIDs.empty()) {
      messageIDs.resize(static_cast<std::size_t>(last) + 1);
    }
    messageIDs[static_cast<std::size_t>(documents.integer(0))] = documents.bytes(1);
  }
  return messageIDs;
}

}  // namespace

void writeSearchTokens(int rules, std::span<const Text> messageIDs,
                       const std::function<void(const SearchTokenVisitor& visit)>& produce,
                       ModelContext& context) {
  MessageStore::Writing writing(context.store());
  writing.begin(MessageStore::Writing::Size::small);
  writing.with([&](SQLiteConnection& connection) {
    connection.execute(
        "DELETE FROM searchDocument; DELETE FROM searchToken; DELETE FROM searchTokenRules;"
        "INSERT INTO searchTokenRules VALUES (" +
        std::to_string(rules) + ")");
    writeDocuments(messageIDs, connection);
    RowWriter writer(connection);
    produce([&writer](std::string_view token, std::span<const std::uint32_t> numbers) {
      writer.write(token, numbers);
    });
  });
  writing.commit();
}

std::vector<Text> readSearchTokens(int rules, const SearchTokenVisitor& visit, ModelContext& context) {
  MessageStore::Reading reading(context.store());
  SQLiteConnection& connection = reading.connection(0);
  if (connection.queryInteger("SELECT version FROM searchTokenRules") != rules) {
    return {};
  }
  std::vector<Text> messageIDs = readDocuments(connection);
  std::vector<std::uint32_t> numbers;
  auto rows = connection.prepare("SELECT token, first, rest FROM searchToken ORDER BY token, first");
  while (!messageIDs.empty() && rows.step()) {
    readNumbers(rows.integer(1), rows.bytes(2), messageIDs.size(), numbers);
    if (!numbers.empty()) {
      visit(rows.bytes(0), numbers);
    }
  }
  return messageIDs;
}

}  // namespace tidewrack
