#include "reading/message_row.h"

#include <gtest/gtest.h>

namespace tidewrack {
namespace {

EmailMessage makeMessage() {
  EmailMessage message;
  message.id = "m1@example.org";
  message.subject = "Tide tables";
  message.from = {Text("Ana"), "ana@example.org"};
  message.date = Date(std::chrono::seconds(1'778'752'800));
  message.snippet = "The tables for May";
  return message;
}

TEST(MessageRow, ShowsSubjectDateSenderAndSnippet) {
  const auto message = makeMessage();
  const auto row = makeMessageRow(message, 1);
  EXPECT_EQ(row.subject, "Tide tables");
  EXPECT_EQ(row.sender, "Ana <ana@example.org>");
  EXPECT_EQ(row.snippet, "The tables for May");
  EXPECT_EQ(row.dateText, formatMediumDateShortTime(*message.date));
  EXPECT_EQ(row.identifier, "messages.row.m1@example.org");
}

TEST(MessageRow, AMessageWithNoDateShowsNoDate) {
  auto message = makeMessage();
  message.date = std::nullopt;
  EXPECT_EQ(makeMessageRow(message, 1).dateText, "No date");
}

TEST(MessageRow, ALoneMessageHasNoConversationMarkAndNoFooter) {
  const auto row = makeMessageRow(makeMessage(), 1);
  EXPECT_EQ(row.conversationText, "");
  EXPECT_FALSE(row.hasFooter());
}

TEST(MessageRow, AConversationOfExactlyTwoMessagesShowsTwoInConversation) {
  const auto row = makeMessageRow(makeMessage(), 2);
  EXPECT_EQ(row.conversationText, "2 in conversation");
  EXPECT_TRUE(row.hasFooter());
}

TEST(MessageRow, AttachmentsShowTheirNumber) {
  auto message = makeMessage();
  message.attachments.resize(3);
  const auto row = makeMessageRow(message, 1);
  EXPECT_EQ(row.attachmentsText, "3");
  EXPECT_TRUE(row.hasFooter());
}

}  // namespace
}  // namespace tidewrack
