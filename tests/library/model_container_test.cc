#include "library/model_container.h"

#include <atomic>
#include <csignal>
#include <fstream>
#include <functional>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "library/message_store.h"
#include "library/sample_messages.h"
#include "library/store_operations.h"
#include "library/store_schema.h"
#include "platform/files.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;

std::string failureOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const StoreInUseFailure& failure) {
    return std::string("in use: ") + failure.what();
  } catch (const StoreFailure& failure) {
    return failure.what();
  }
  return "no failure";
}

/// A child process that runs a function and then waits to be killed. What the function returns is ready when
/// the constructor returns.
class Child {
 public:
  explicit Child(const std::function<void()>& work) {
    int ends[2];
    EXPECT_EQ(::pipe(ends), 0);
    process_ = ::fork();
    if (process_ == 0) {
      work();
      (void)!::write(ends[1], "x", 1);
      for (;;) {
        ::pause();
      }
    }
    ::close(ends[1]);
    char byte = 0;
    EXPECT_EQ(::read(ends[0], &byte, 1), 1);
    ::close(ends[0]);
  }
  ~Child() { kill(); }
  void kill() {
    if (process_ > 0) {
      ::kill(process_, SIGKILL);
      ::waitpid(process_, nullptr, 0);
      process_ = 0;
    }
  }
  [[nodiscard]] pid_t process() const { return process_; }

 private:
  pid_t process_ = 0;
};

class ModelContainerTest : public ::testing::Test {
 protected:
  [[nodiscard]] std::filesystem::path file() const { return folder_ / "Tidewrack/default.store"; }
  std::shared_ptr<ModelContainer> open() const { return ModelContainer::open(file()); }
  void execute(const std::string& sql) const {
    SQLiteConnection connection(file(), SQLiteConnection::Mode::readWriteCreate);
    connection.execute(sql);
  }
  static std::vector<std::string> ids(const ModelContainer& container) {
    ModelContext context = container.newContext();
    std::vector<std::string> result;
    for (const auto& message : fetchAllMessages(context)) {
      result.push_back(message->id.string());
    }
    return result;
  }

  TemporaryFolder folder_;
};

/// Messages that do not fit into the memory of the decoder, so that they are saved in the large way.
MessageList manyLargeMessages(int count = 80) {
  MessageList messages;
  for (int index = 0; index < count; ++index) {
    EmailMessage message = sampleMessage("large " + std::to_string(index), "large");
    message.attachments[1].data = Content::ofBytes(std::string(1'000'000, static_cast<char>(index)));
    messages.push_back(shared(message));
  }
  return messages;
}

TEST_F(ModelContainerTest, TheStoreAndItsCompanionsArePrivate) {
  const auto container = open();
  ModelContext context = container->newContext();
  saveMessages({shared(sampleMessage("a"))}, context);
  const auto modeOf = [](const std::filesystem::path& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 0777U;
  };
  EXPECT_EQ(modeOf(folder_ / "Tidewrack"), 0700U);
  for (const char* suffix : {"", "-wal", "-shm", ".lock"}) {
    EXPECT_EQ(modeOf(file().string() + suffix), 0600U) << suffix;
  }
}

TEST_F(ModelContainerTest, MessagesAreStillThereAfterTheStoreIsOpenedAgain) {
  const EmailMessage message = sampleMessage("a");
  {
    const auto container = open();
    ModelContext context = container->newContext();
    saveMessages({shared(message)}, context);
  }
  const auto container = open();
  ModelContext context = container->newContext();
  ASSERT_THAT(fetchAllMessages(context), SizeIs(1));
  EXPECT_EQ(*fetchAllMessages(context)[0], message);
}

TEST_F(ModelContainerTest, AContentKeepsTheStoreOpen) {
  Content body;
  {
    const auto container = open();
    ModelContext context = container->newContext();
    body = *saveMessages({shared(sampleMessage("a"))}, context)[0]->plainBody;
  }
  EXPECT_EQ(body.bytes(), "Plain body of a\n");
  EXPECT_THROW(open(), StoreInUseFailure);
  body = Content();
  EXPECT_NO_THROW(open());
}

TEST_F(ModelContainerTest, ASecondProcessIsTurnedAwayWithTheNumberOfTheFirst) {
  std::shared_ptr<ModelContainer> opened;
  Child child([&] { opened = open(); });
  EXPECT_EQ(failureOf([&] { open(); }),
            "in use: The mail store is in use by another Tidewrack process (PID " +
                std::to_string(child.process()) + "). Close it and try again.");
  child.kill();
  EXPECT_NO_THROW(open());
}

TEST_F(ModelContainerTest, ASecondContainerOfTheSameProcessIsTurnedAway) {
  const auto container = open();
  EXPECT_THROW(open(), StoreInUseFailure);
}

TEST_F(ModelContainerTest, TwoStoresInMemoryAreApart) {
  const auto first = ModelContainer::inMemory();
  const auto second = ModelContainer::inMemory();
  ModelContext context = first->newContext();
  saveMessages({shared(sampleMessage("a"))}, context);
  EXPECT_THAT(ids(*first), SizeIs(1));
  EXPECT_THAT(ids(*second), SizeIs(0));
}

TEST_F(ModelContainerTest, ANewerStoreIsRefusedAndLeftAsItIs) {
  open();
  execute("PRAGMA user_version = 99");
  const std::string before = readFile(file());
  EXPECT_EQ(
      failureOf([&] { open(); }),
      "The mail store was written by a newer version of Tidewrack (its version is 99, this program knows " +
          std::to_string(currentStoreVersion()) + "). Update Tidewrack to open it.");
  EXPECT_EQ(readFile(file()), before);
}

TEST_F(ModelContainerTest, ADatabaseOfSomethingElseIsRefusedAndLeftAsItIs) {
  createPrivateFolders(file().parent_path());
  execute("CREATE TABLE somebodyElses (a)");
  const std::string before = readFile(file());
  EXPECT_EQ(failureOf([&] { open(); }), "The file is not a mail store of Tidewrack.");
  EXPECT_EQ(readFile(file()), before);
}

TEST_F(ModelContainerTest, AFileThatIsNoDatabaseIsRefused) {
  createPrivateFolders(file().parent_path());
  std::ofstream(file()) << std::string(100'000, 'x');
  EXPECT_EQ(failureOf([&] { open(); }), "The mail store is damaged.");
}

TEST_F(ModelContainerTest, AFolderThatCannotBeMadeFails) {
  std::ofstream(folder_ / "Tidewrack") << "";
  EXPECT_THAT(failureOf([&] { open(); }), HasSubstr("could not be made"));
}

TEST_F(ModelContainerTest, AStoreOfVersionOneOpensAndKeepsItsMail) {
  createPrivateFolders(file().parent_path());
  execute(readFile(std::filesystem::path(TIDEWRACK_TEST_DATA) / "stores/version-1.sql"));
  const auto container = open();
  ModelContext context = container->newContext();
  const auto messages = fetchAllMessages(context);
  ASSERT_THAT(messages, SizeIs(2));
  EXPECT_EQ(messages[0]->subject, "Tide tables — März");
  EXPECT_EQ(messages[0]->category, Text("Travel"));
  EXPECT_EQ(messages[0]->sourceLibraryName, "Takeout");
  EXPECT_EQ(messages[0]->date, Date(std::chrono::milliseconds(1'709'287'200'500)));
  EXPECT_EQ(messages[0]->htmlBody->bytes(), "<p>High water at <b>10:40</b></p>");
  ASSERT_THAT(messages[0]->attachments, SizeIs(1));
  EXPECT_EQ(messages[0]->attachments[0].id.string(), "00112233-4455-6677-8899-AABBCCDDEEFF");
  EXPECT_EQ(messages[0]->attachments[0].data.bytes(), "table");
  EXPECT_EQ(messages[1]->plainBody->bytes(), "No date, no list.\n");
  EXPECT_FALSE(messages[1]->date.has_value());
  MessageStore::Writing writing(context.store());
  EXPECT_EQ(writing.with([](auto& connection) { return connection.queryInteger("PRAGMA user_version"); }),
            currentStoreVersion());
}

TEST_F(ModelContainerTest, MigrationsAreNumberedWithoutAGap) {
  int version = 0;
  for (const auto& migration : storeMigrations()) {
    EXPECT_EQ(migration.version, ++version);
    EXPECT_STRNE(migration.purpose, "");
  }
}

TEST_F(ModelContainerTest, ALargeSaveComesBackWholeAndTheStoreReturnsToWALMode) {
  const auto container = open();
  ModelContext context = container->newContext();
  saveMessages({shared(sampleMessage("old"))}, context);
  const MessageList messages = manyLargeMessages();
  const MessageList stored = saveMessages(messages, context);
  EXPECT_TRUE(sameMessages(stored, messages));
  EXPECT_TRUE(sameMessages(fetchMessages("large", context), messages));
  MessageStore::Writing writing(context.store());
  EXPECT_EQ(writing.with([](auto& connection) { return connection.queryText("PRAGMA journal_mode"); }),
            "wal");
}

TEST_F(ModelContainerTest, ALargeSaveGoesToTheDiskWhileItGoesOnAndASmallOneDoesNot) {
  const auto container = open();
  ModelContext context = container->newContext();
  saveMessages({shared(sampleMessage("small"))}, context);
  EXPECT_EQ(context.store().bytesSentAheadForTesting(), 0);
  const auto megabytes = 80;
  saveMessages(manyLargeMessages(megabytes), context);
  // All but what came last.
  EXPECT_GT(context.store().bytesSentAheadForTesting(), std::uint64_t{megabytes - 30} * 1'000'000);
}

TEST_F(ModelContainerTest, DuringALargeSaveBodiesCanBeReadAndListsWait) {
  const auto container = open();
  ModelContext context = container->newContext();
  const Content body = *saveMessages({shared(sampleMessage("old"))}, context)[0]->plainBody;
  std::atomic<int> readDuringSave = 0;
  std::atomic<bool> saving = false;
  std::thread reader([&] {
    while (!saving) {
      std::this_thread::yield();
    }
    while (saving) {
      EXPECT_EQ(body.bytes(), "Plain body of old\n");
      ++readDuringSave;
    }
  });
  std::size_t listed = 0;
  std::thread lister([&] {
    while (!saving) {
      std::this_thread::yield();
    }
    ModelContext other = container->newContext();
    listed = fetchAllMessages(other).size();
  });
  const MessageList messages = manyLargeMessages();
  saveMessages(messages, context, [&](std::size_t) { saving = true; });
  saving = false;
  reader.join();
  lister.join();
  EXPECT_GT(readDuringSave, 0);
  // Either before or after the whole save, never a part of it.
  EXPECT_TRUE(listed == 1 || listed == 1 + messages.size()) << listed;
}

TEST_F(ModelContainerTest, ALargeSaveOnAFullDiskLosesNothingOlderAndCanBeRepeated) {
  const auto container = open();
  ModelContext context = container->newContext();
  saveMessages({shared(sampleMessage("old"))}, context);
  context.store().limitPagesForTesting(2000);
  const MessageList messages = manyLargeMessages();
  ModelContext failing = container->newContext();
  EXPECT_THROW(saveMessages(messages, failing), StoreFailure);
  EXPECT_THAT(ids(*container), ::testing::ElementsAre("old"));
  EXPECT_EQ(fetchAllMessages(context)[0]->plainBody->bytes(), "Plain body of old\n");
  context.store().limitPagesForTesting(1'000'000);
  EXPECT_TRUE(sameMessages(saveMessages(messages, failing), messages));
  EXPECT_THAT(ids(*container), SizeIs(81));
}

TEST_F(ModelContainerTest, AReaderOfAnotherProgramDoesNotHinderALargeSave) {
  const auto container = open();
  ModelContext context = container->newContext();
  saveMessages({shared(sampleMessage("old"))}, context);
  SQLiteConnection shell(file(), SQLiteConnection::Mode::readOnly);
  EXPECT_EQ(shell.queryInteger("SELECT count(*) FROM PersistedEmailMessage"), 1);
  const MessageList messages = manyLargeMessages(40);
  EXPECT_TRUE(sameMessages(saveMessages(messages, context), messages));
  EXPECT_EQ(shell.queryInteger("SELECT count(*) FROM PersistedEmailMessage"), 41);
}

TEST_F(ModelContainerTest, AProcessKilledInTheMiddleOfASaveLeavesOlderMessagesWhole) {
  const EmailMessage old = sampleMessage("old");
  {
    const auto container = open();
    ModelContext context = container->newContext();
    saveMessages({shared(old)}, context);
  }
  const MessageList messages = manyLargeMessages();
  // Killed at several places of the save, each time at the word about the progress.
  for (const std::size_t place : {64U, 80U}) {
    const pid_t process = ::fork();
    if (process == 0) {
      const auto container = open();
      ModelContext context = container->newContext();
      saveMessages(messages, context, [&](std::size_t saved) {
        if (saved == place) {
          ::kill(::getpid(), SIGKILL);
        }
      });
      ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(process, &status, 0), process);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    const auto container = open();
    ModelContext context = container->newContext();
    const auto stored = fetchAllMessages(context);
    ASSERT_THAT(stored, SizeIs(1)) << place;
    EXPECT_EQ(*stored[0], old);
    MessageStore::Writing writing(context.store());
    EXPECT_EQ(writing.with([](auto& connection) { return connection.queryText("PRAGMA integrity_check"); }),
              "ok");
  }
  const auto container = open();
  ModelContext context = container->newContext();
  EXPECT_TRUE(sameMessages(saveMessages(messages, context), messages));
}

TEST_F(ModelContainerTest, ReadersSeeOneStateWhileAnotherThreadWrites) {
  const auto container = open();
  ModelContext context = container->newContext();
  // Each save moves all messages to another library at once.
  const auto messagesOf = [](const std::string& library) {
    MessageList messages;
    for (int index = 0; index < 50; ++index) {
      EmailMessage message = sampleMessage(std::to_string(index), library);
      message.attachments.clear();
      messages.push_back(shared(message));
    }
    return messages;
  };
  saveMessages(messagesOf("0"), context);
  std::atomic<bool> done = false;
  std::thread reader([&] {
    ModelContext other = container->newContext();
    while (!done) {
      const auto list = fetchAllMessages(other);
      ASSERT_THAT(list, SizeIs(50));
      for (const auto& message : list) {
        ASSERT_EQ(message->sourceLibraryID, list[0]->sourceLibraryID);
      }
    }
  });
  for (int round = 1; round <= 20; ++round) {
    saveMessages(messagesOf(std::to_string(round)), context);
  }
  done = true;
  reader.join();
  EXPECT_EQ(fetchAllMessages(context)[0]->sourceLibraryID, "20");
}

}  // namespace
}  // namespace tidewrack
