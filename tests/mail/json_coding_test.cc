#include "mail/json_coding.h"

#include <random>
#include <set>

#include <gtest/gtest.h>

#include "platform/digest.h"
#include "platform/failure.h"

namespace tidewrack {
namespace {

using nlohmann::json;

EmailMessage fullMessage() {
  EmailMessage message;
  message.id = "1@host";
  message.sourceLibraryID = "library";
  message.sourceLibraryName = "Archive";
  message.subject = "Gr\u00FC\u00DFe \"quoted\" \\ \n";
  message.from = {Text("Ana"), "ana@host"};
  message.to = {{std::nullopt, "b@host"}, {Text("C"), "c@host"}};
  message.cc = {};
  message.date = Date(std::chrono::seconds(1778752800));
  message.snippet = "short";
  message.plainBody = Content::ofBytes("plain");
  message.htmlBody = Content::ofBytes("<p>html</p>");
  EmailAttachment attachment;
  attachment.id = UUID::make();
  attachment.fileName = "a.pdf";
  attachment.mimeType = "application/pdf; name=\"a.pdf\"";
  attachment.data = Content::ofBytes(std::string("\0\xFF\x10 data", 8));
  attachment.contentID = Text("cid");
  attachment.isInline = true;
  message.attachments = {attachment};
  message.labels = {"Inbox", "A,b"};
  message.conversationID = "root@host";
  message.inReplyTo = Text("root@host");
  message.references = {"root@host"};
  message.category = Text("personal");
  return message;
}

std::set<std::string> keysOf(const json& object) {
  std::set<std::string> keys;
  for (const auto& [key, value] : object.items()) {
    keys.insert(key);
  }
  return keys;
}

TEST(JSONCoding, MessageComesBackWhole) {
  const EmailMessage message = fullMessage();
  EXPECT_EQ(emailMessageFromJSON(json::parse(toJSON(message).dump())), message);
}

TEST(JSONCoding, KeysAreExactlyTheFieldNames) {
  const json object = toJSON(fullMessage());
  EXPECT_EQ(keysOf(object),
            (std::set<std::string>{"id", "sourceLibraryID", "sourceLibraryName", "subject", "from", "to",
                                   "cc", "date", "snippet", "plainBody", "htmlBody", "attachments", "labels",
                                   "conversationID", "inReplyTo", "references", "category"}));
  EXPECT_EQ(keysOf(object["attachments"][0]),
            (std::set<std::string>{"id", "fileName", "mimeType", "data", "contentID", "isInline"}));
  EXPECT_EQ(keysOf(object["from"]), (std::set<std::string>{"name", "address"}));
  EXPECT_EQ(object["date"], "2026-05-14T10:00:00Z");
}

TEST(JSONCoding, AbsentFieldsAreLeftOut) {
  EmailMessage message = fullMessage();
  message.date.reset();
  message.plainBody.reset();
  message.htmlBody.reset();
  message.inReplyTo.reset();
  message.category.reset();
  message.from.name.reset();
  message.attachments[0].contentID.reset();
  const json object = toJSON(message);
  for (const auto* key : {"date", "plainBody", "htmlBody", "inReplyTo", "category"}) {
    EXPECT_FALSE(object.contains(key)) << key;
  }
  EXPECT_FALSE(object["from"].contains("name"));
  EXPECT_FALSE(object["attachments"][0].contains("contentID"));
  EXPECT_EQ(emailMessageFromJSON(object), message);
}

TEST(JSONCoding, DecodingWithoutCategoryYieldsAnAbsentCategoryAndWithoutLabelsFails) {
  json object = toJSON(fullMessage());
  object.erase("category");
  EXPECT_FALSE(emailMessageFromJSON(object).category);
  object["category"] = nullptr;
  EXPECT_FALSE(emailMessageFromJSON(object).category);
  object.erase("labels");
  EXPECT_THROW(emailMessageFromJSON(object), CodingFailure);
}

TEST(JSONCoding, MissingRequiredKeyFailsTheWholeDecode) {
  const json whole = toJSON(fullMessage());
  const std::set<std::string> optional = {"date", "plainBody", "htmlBody", "inReplyTo", "category"};
  for (const auto& key : keysOf(whole)) {
    json object = whole;
    object.erase(key);
    if (optional.count(key) == 1) {
      EXPECT_NO_THROW(emailMessageFromJSON(object)) << key;
    } else {
      EXPECT_THROW(emailMessageFromJSON(object), CodingFailure) << key;
      object[key] = nullptr;
      EXPECT_THROW(emailMessageFromJSON(object), CodingFailure) << key;
    }
    object[key] = 7;
    EXPECT_THROW(emailMessageFromJSON(object), CodingFailure) << key;
  }
  for (const auto* key : {"id", "fileName", "mimeType", "data", "isInline"}) {
    json object = whole;
    object["attachments"][0].erase(key);
    EXPECT_THROW(emailMessageFromJSON(object), CodingFailure) << key;
  }
}

TEST(JSONCoding, DigestReplacesDataBySizeAndSHA256) {
  const EmailMessage message = fullMessage();
  const json attachment = toJSON(message, AttachmentDataForm::digest)["attachments"][0];
  EXPECT_FALSE(attachment.contains("data"));
  EXPECT_EQ(attachment["size"], 8);
  EXPECT_EQ(attachment["sha256"], sha256Hex(message.attachments[0].data.bytes()));
}

TEST(JSONCoding, FailureHasADescription) {
  try {
    (void)decodeStrings("{");
    FAIL();
  } catch (const CodingFailure& failure) {
    EXPECT_STRNE(failure.what(), "");
  }
}

TEST(JSONLists, AreWrittenAsTheGeneralWriterWouldWriteThem) {
  std::string odd;
  for (char byte = 1; byte < 0x7F; ++byte) {
    odd.push_back(byte);
  }
  odd += "\u007F\u00E9\u2028\U0001F600";
  EXPECT_EQ(encodeStrings({odd, "", "b"}), json({odd, "", "b"}).dump());
  EXPECT_EQ(encodeStrings({}), "[]");
  EXPECT_EQ(encodeAddresses({{Text(odd), "a@b"}, {std::nullopt, ""}}),
            json::array({{{"address", "a@b"}, {"name", odd}}, {{"address", ""}}}).dump());
  EXPECT_EQ(encodeAddresses({}), "[]");
}

TEST(JSONLists, ComeBackWhateverTheirTexts) {
  std::mt19937 random(19);
  const std::vector<std::string> pieces = {"a",      "\"",         "\\", "\n", "\u0001",
                                           "\u00E9", "\U0001F600", ",",  "]",  "}"};
  for (int round = 0; round < 2000; ++round) {
    const auto text = [&] {
      std::string result;
      const std::size_t count = random() % 6;
      for (std::size_t index = 0; index < count; ++index) {
        result += pieces[random() % (random() % 2 == 0 ? 1 : pieces.size())];
      }
      return Text(result);
    };
    std::vector<Text> strings;
    std::vector<EmailAddress> addresses;
    const std::size_t count = random() % 4;
    for (std::size_t index = 0; index < count; ++index) {
      strings.push_back(text());
      addresses.push_back({random() % 2 == 0 ? std::optional(text()) : std::nullopt, text()});
    }
    ASSERT_EQ(decodeStrings(encodeStrings(strings)), strings);
    ASSERT_EQ(decodeAddresses(encodeAddresses(addresses)), addresses);
  }
}

TEST(JSONLists, AnyJSONOfTheShapeIsRead) {
  EXPECT_EQ(decodeStrings(" [ \"a\" , \"\\u00e9\" ] "), (std::vector<Text>{"a", "\u00E9"}));
  EXPECT_EQ(decodeAddresses(R"([{"name":"N","address":"a"},{"address":"b","name":null,"more":[1]}])"),
            (std::vector<EmailAddress>{{Text("N"), "a"}, {std::nullopt, "b"}}));
  EXPECT_TRUE(decodeStrings("[]").empty());
}

TEST(JSONLists, AnythingElseFails) {
  for (const auto* text : {"", "[", "[\"a\"", "[\"a\",]", "[\"a\"]x", "{}", "null", "[1]", "[null]", "\"a\"",
                           "[\"a\nb\"]", "[\"\xFF\"]", "[\"\\ud800\"]", "[\"a\" \"b\"]"}) {
    EXPECT_THROW((void)decodeStrings(text), CodingFailure) << text;
  }
  for (const auto* text :
       {"[{}]", "[{\"name\":\"n\"}]", "[{\"address\":1}]", "[[]]", "[{\"address\":\"a\",\"name\":1}]",
        "[{\"address\":\"a\"", "[{\"address\":\"\xC3\"}]"}) {
    EXPECT_THROW((void)decodeAddresses(text), CodingFailure) << text;
  }
  EXPECT_THROW((void)decodeStrings(std::string(100000, '[')), CodingFailure);
}

}  // namespace
}  // namespace tidewrack
