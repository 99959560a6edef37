// Random sequences of store operations against a model that is as plain as can be: a list of records.

#include <map>
#include <random>

#include <gtest/gtest.h>

#include "library/message_store.h"
#include "library/sample_messages.h"
#include "library/store_operations.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

class Model {
 public:
  void save(const MessageList& messages) {
    for (const auto& message : messages) {
      const auto [entry, isNew] = rows_.try_emplace(message->id.string(), *message);
      if (!isNew) {
        const auto category = message->category ? message->category : entry->second.category;
        entry->second = *message;
        entry->second.category = category;
      }
    }
  }
  void remove(const std::string& library) {
    std::erase_if(rows_, [&](const auto& row) { return row.second.sourceLibraryID == library; });
  }
  void rename(const std::string& library, const std::string& name) {
    for (auto& [id, message] : rows_) {
      if (message.sourceLibraryID == library) {
        message.sourceLibraryName = name;
      }
    }
  }
  void categorize(const std::string& id, const std::optional<Text>& category) {
    if (const auto row = rows_.find(id); row != rows_.end()) {
      row->second.category = category;
    }
  }
  [[nodiscard]] const std::map<std::string, EmailMessage>& rows() const { return rows_; }

 private:
  std::map<std::string, EmailMessage> rows_;
};

class RandomMail {
 public:
  explicit RandomMail(unsigned seed) : random_(seed) {}

  int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
  std::string library() { return "L" + std::to_string(below(3)); }
  std::string id() { return "id " + std::to_string(below(12)); }

  MessageList list() {
    MessageList messages;
    for (int count = below(8); count > 0; --count) {
      EmailMessage message = sampleMessage(id(), library());
      message.subject = "Subject " + std::to_string(below(1000));
      message.date =
          below(4) == 0 ? std::nullopt : std::optional<Date>(Date(std::chrono::seconds(below(1000))));
      message.plainBody = below(3) == 0
                              ? std::nullopt
                              : std::optional<Content>(Content::ofBytes(std::string(below(300), 'x')));
      message.attachments.resize(static_cast<std::size_t>(below(3)));
      if (below(3) == 0) {
        message.category = "Category " + std::to_string(below(5));
      }
      messages.push_back(shared(message));
    }
    return messages;
  }

 private:
  std::mt19937 random_;
};

class UpsertProperty : public ::testing::TestWithParam<unsigned> {};

INSTANTIATE_TEST_SUITE_P(Seeds, UpsertProperty, ::testing::Range(1U, 9U));

TEST_P(UpsertProperty, TheStoreHoldsWhatAPlainListWouldHold) {
  const TemporaryFolder folder;
  const auto container =
      GetParam() % 2 == 0 ? ModelContainer::inMemory() : ModelContainer::open(folder / "default.store");
  ModelContext context = container->newContext();
  context.store().setPieceSizeForTesting(100);
  RandomMail random(GetParam());
  Model model;
  for (int step = 0; step < 40; ++step) {
    switch (random.below(8)) {
      case 0: {
        const std::string library = random.library();
        deleteMessages(library, context);
        model.remove(library);
        break;
      }
      case 1: {
        const std::string library = random.library();
        const std::string name = "Name " + std::to_string(random.below(4));
        renameMessages(library, name, context);
        model.rename(library, name);
        break;
      }
      case 2: {
        const std::string id = random.id();
        const auto category = random.below(2) == 0 ? std::nullopt : std::optional<Text>("Set");
        updateCategory(id, category, context);
        model.categorize(id, category);
        break;
      }
      default: {
        const MessageList messages = random.list();
        saveMessages(messages, context);
        model.save(messages);
      }
    }
    const auto stored = fetchAllMessages(context);
    ASSERT_EQ(stored.size(), model.rows().size());
    for (std::size_t index = 0; index < stored.size(); ++index) {
      ASSERT_EQ(*stored[index], model.rows().at(stored[index]->id.string()));
      ASSERT_TRUE(index == 0 ||
                  stored[index - 1]->date.value_or(distantPast) >= stored[index]->date.value_or(distantPast));
    }
  }
  // Nothing is left of what was replaced or deleted.
  std::int64_t contents = 0;
  std::int64_t attachments = 0;
  for (const auto& [id, message] : model.rows()) {
    contents += (message.plainBody ? 1 : 0) + (message.htmlBody ? 1 : 0);
    attachments += static_cast<std::int64_t>(message.attachments.size());
    for (const auto& attachment : message.attachments) {
      contents += attachment.data.size() > 0 ? 1 : 0;
    }
  }
  MessageStore::Writing writing(context.store());
  writing.with([&](SQLiteConnection& connection) {
    EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM content"), contents);
    EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM attachment"), attachments);
    EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM contentRest WHERE content NOT IN "
                                      "(SELECT number FROM content)"),
              0);
    EXPECT_EQ(connection.queryText("PRAGMA integrity_check"), "ok");
  });
}

}  // namespace
}  // namespace tidewrack
