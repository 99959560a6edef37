#include "library/persisted_entities.h"

#include <gtest/gtest.h>

#include "library/sample_messages.h"
#include "platform/failure.h"

namespace tidewrack {
namespace {

TEST(PersistedEntities, ARecordMadeAnEntityAndBackEqualsTheRecord) {
  EmailMessage message = sampleMessage("a");
  message.category = "Travel";
  EXPECT_EQ(makeEmailMessage(makePersistedMessage(message)), message);
}

TEST(PersistedEntities, AnAddressWithANameHasANameKeyAndOneWithoutHasNone) {
  EXPECT_EQ(makePersistedMessage(sampleMessage("a")).toData,
            R"([{"address":"bob@example.org","name":"Bob"},{"address":"carol@example.org"}])");
}

TEST(PersistedEntities, AnAttachmentKeepsItsID) {
  const EmailMessage message = sampleMessage("a");
  EXPECT_EQ(makePersistedMessage(message).attachments[1].id, message.attachments[1].id);
}

TEST(PersistedEntities, AnUpdateOverwritesEverythingButAKnownCategory) {
  EmailMessage old = sampleMessage("a");
  old.category = "Travel";
  PersistedEmailMessage entity = makePersistedMessage(old);
  EmailMessage newer = sampleMessage("a", "L2");
  newer.subject = "New";
  newer.attachments.pop_back();
  newer.from.name = std::nullopt;
  updatePersistedMessage(entity, newer);
  newer.category = "Travel";
  EXPECT_EQ(makeEmailMessage(entity), newer);
  newer.category = "Work";
  updatePersistedMessage(entity, newer);
  EXPECT_EQ(makeEmailMessage(entity), newer);
}

TEST(PersistedEntities, DamagedJSONInAnyListFailsTheMessage) {
  for (std::string PersistedEmailMessage::*list :
       {&PersistedEmailMessage::toData, &PersistedEmailMessage::ccData, &PersistedEmailMessage::labelsData,
        &PersistedEmailMessage::referencesData}) {
    for (const char* json : {"", "{}", "[", "[{}]", "[1]", "null"}) {
      PersistedEmailMessage entity = makePersistedMessage(sampleMessage("a"));
      entity.*list = json;
      EXPECT_THROW((void)makeEmailMessage(entity), CodingFailure) << json;
    }
  }
}

}  // namespace
}  // namespace tidewrack
