#include "library/store_schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "library/message_store.h"
#include "library/sample_messages.h"
#include "library/store_operations.h"

namespace tidewrack {
namespace {

/// The entities as SQL sees them.
class StoreSchema : public ::testing::Test {
 protected:
  StoreSchema() : context_(ModelContainer::inMemory()->newContext()) {
    saveMessages({shared(sampleMessage("a")), shared(sampleMessage("b", "L2"))}, context_);
  }
  std::string text(const std::string& sql) {
    MessageStore::Writing writing(context_.store());
    return writing.with([&](SQLiteConnection& connection) { return connection.queryText(sql); });
  }
  void execute(const std::string& sql) {
    MessageStore::Writing writing(context_.store());
    writing.with([&](SQLiteConnection& connection) { connection.execute(sql); });
  }
  std::string columns(const std::string& entity) {
    return text("SELECT group_concat(name, ' ') FROM pragma_table_info('" + entity + "')");
  }

  ModelContext context_;
};

TEST_F(StoreSchema, TheEntitiesHaveTheirAttributesInOrder) {
  EXPECT_EQ(columns("PersistedEmailMessage"),
            "id sourceLibraryID sourceLibraryName subject fromName fromAddress toData ccData date snippet "
            "plainBody htmlBody labelsData conversationID inReplyTo referencesData category number");
  EXPECT_EQ(columns("PersistedEmailAttachment"),
            "id fileName mimeType data contentID isInline message position");
  EXPECT_EQ(columns("PersistedSearchToken"), "id token messageID");
}

TEST_F(StoreSchema, TheEntitiesHoldTheValuesOfTheRecord) {
  EXPECT_EQ(text("SELECT subject FROM PersistedEmailMessage WHERE id = 'a'"), "Subject of a — ünïcode 🐚");
  EXPECT_EQ(text("SELECT date FROM PersistedEmailMessage WHERE id = 'a'"), "1700000000.123");
  EXPECT_EQ(text("SELECT plainBody FROM PersistedEmailMessage WHERE id = 'a'"), "Plain body of a\n");
  EXPECT_EQ(text("SELECT htmlBody FROM PersistedEmailMessage WHERE id = 'a'"), "<p>HTML body of a</p>");
  EXPECT_EQ(text("SELECT labelsData FROM PersistedEmailMessage WHERE id = 'a'"),
            R"(["Inbox","Añejo/2024","a \"quoted\" \\label"])");
  EXPECT_EQ(text("SELECT sourceLibraryName FROM PersistedEmailMessage WHERE id = 'b'"), "Library L2");
  const auto attachment = fetchMessage("a", context_)->attachments[1];
  EXPECT_EQ(text("SELECT a.id FROM PersistedEmailAttachment a JOIN PersistedEmailMessage m ON a.message = "
                 "m.number WHERE m.id = 'a' AND a.isInline"),
            attachment.id.string());
  EXPECT_EQ(text("SELECT length(data) FROM PersistedEmailAttachment WHERE fileName = 'two.png'"), "70000");
  EXPECT_EQ(
      text("SELECT typeof(data) || length(data) FROM PersistedEmailAttachment WHERE fileName = 'empty'"),
      "blob0");
}

TEST_F(StoreSchema, NoAttributeIsUnique) {
  EXPECT_NO_THROW(execute("UPDATE PersistedEmailMessage SET id = 'same'"));
  EXPECT_EQ(text("SELECT count(*) FROM PersistedEmailMessage WHERE id = 'same'"), "2");
}

TEST_F(StoreSchema, DeletingAMessageByLeavesNoAttachmentBehind) {
  execute("DELETE FROM PersistedEmailMessage WHERE id = 'a'");
  EXPECT_EQ(text("SELECT count(*) FROM PersistedEmailAttachment"), "3");
  execute("DELETE FROM PersistedEmailMessage");
  EXPECT_EQ(text("SELECT count(*) FROM PersistedEmailAttachment"), "0");
  EXPECT_EQ(text("SELECT count(*) FROM content"), "0");
}

TEST_F(StoreSchema, MessagesCanBeChangedBySQL) {
  execute(
      "UPDATE PersistedEmailMessage SET category = 'Work', sourceLibraryID = 'L3', plainBody = 'new ü', "
      "htmlBody = NULL WHERE id = 'a'");
  const auto changed = fetchMessages("L3", context_);
  ASSERT_EQ(changed.size(), 1U);
  EXPECT_EQ(changed[0]->category, Text("Work"));
  EXPECT_EQ(changed[0]->sourceLibraryName, "Library L1");
  EXPECT_EQ(changed[0]->plainBody->bytes(), "new ü");
  EXPECT_EQ(changed[0]->plainBody->size(), 6U);
  EXPECT_FALSE(changed[0]->htmlBody.has_value());
  EXPECT_EQ(changed[0]->attachments.size(), 3U);
  EXPECT_EQ(text("SELECT count(*) FROM content"), "7");
  execute("UPDATE PersistedEmailMessage SET htmlBody = '<p>' WHERE id = 'a'");
  EXPECT_EQ(fetchMessages("L3", context_)[0]->htmlBody->bytes(), "<p>");
}

TEST_F(StoreSchema, AttachmentsCanBeDeletedBySQL) {
  execute("DELETE FROM PersistedEmailAttachment WHERE fileName = 'two.png'");
  EXPECT_EQ(fetchMessages("L1", context_)[0]->attachments.size(), 2U);
  EXPECT_EQ(text("SELECT count(*) FROM content"), "6");
}

}  // namespace
}  // namespace tidewrack
