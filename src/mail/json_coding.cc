#include "mail/json_coding.h"

#include "mail/json_lists.h"
#include "mail/transfer_decoding.h"
#include "platform/digest.h"
#include "platform/failure.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

using nlohmann::json;

[[noreturn]] void failToDecode() {
  throw CodingFailure(localized("json_coding_failed",
                                "The data couldn’t be read because it isn’t in the correct format.",
                                "Failure: stored or exported JSON is not as expected"));
}

// The value of a key, or null when it is missing or JSON null.
const json* find(const json& object, const char* key) {
  if (!object.is_object()) {
    failToDecode();
  }
  const auto found = object.find(key);
  return found == object.end() || found->is_null() ? nullptr : &*found;
}

const json& require(const json& object, const char* key) {
  const json* value = find(object, key);
  if (value == nullptr) {
    failToDecode();
  }
  return *value;
}

const std::string& stringOf(const json& value) {
  if (!value.is_string()) {
    failToDecode();
  }
  return value.get_ref<const std::string&>();
}

std::optional<Text> optionalText(const json& object, const char* key) {
  const json* value = find(object, key);
  return value == nullptr ? std::nullopt : std::optional<Text>(stringOf(*value));
}

std::optional<Content> optionalContent(const json& object, const char* key) {
  const json* value = find(object, key);
  return value == nullptr ? std::nullopt : std::optional(Content::ofBytes(stringOf(*value)));
}

template <typename Read>
auto listOf(const json& array, const Read& read) {
  if (!array.is_array()) {
    failToDecode();
  }
  std::vector<decltype(read(array))> values;
  values.reserve(array.size());
  for (const json& element : array) {
    values.push_back(read(element));
  }
  return values;
}

Text textOf(const json& value) {
  return stringOf(value);
}

json texts(const std::vector<Text>& values) {
  json array = json::array();
  for (const Text& value : values) {
    array.push_back(value.string());
  }
  return array;
}

template <typename Value, typename... Form>
json objects(const std::vector<Value>& values, Form... form) {
  json array = json::array();
  for (const Value& value : values) {
    array.push_back(toJSON(value, form...));
  }
  return array;
}

json parse(std::string_view text) {
  auto value = json::parse(text.begin(), text.end(), nullptr, /*allow_exceptions=*/false);
  if (value.is_discarded()) {
    failToDecode();
  }
  return value;
}

}  // namespace

json toJSON(const EmailAddress& address) {
  json object = {{"address", address.address.string()}};
  if (address.name) {
    object["name"] = address.name->string();
  }
  return object;
}

json toJSON(const EmailAttachment& attachment, AttachmentDataForm form) {
  json object = {{"id", attachment.id.string()},
                 {"fileName", attachment.fileName.string()},
                 {"mimeType", attachment.mimeType.string()},
                 {"isInline", attachment.isInline}};
  if (attachment.contentID) {
    object["contentID"] = attachment.contentID->string();
  }
  const std::string bytes = attachment.data.bytes();
  if (form == AttachmentDataForm::base64) {
    object["data"] = encodeBase64(bytes);
  } else {
    object["size"] = bytes.size();
    object["sha256"] = sha256Hex(bytes);
  }
  return object;
}

json toJSON(const EmailMessage& message, AttachmentDataForm form) {
  json object = {{"id", message.id.string()},
                 {"sourceLibraryID", message.sourceLibraryID.string()},
                 {"sourceLibraryName", message.sourceLibraryName.string()},
                 {"subject", message.subject.string()},
                 {"from", toJSON(message.from)},
                 {"to", objects(message.to)},
                 {"cc", objects(message.cc)},
                 {"snippet", message.snippet.string()},
                 {"attachments", objects(message.attachments, form)},
                 {"labels", texts(message.labels)},
                 {"conversationID", message.conversationID.string()},
                 {"references", texts(message.references)}};
  const auto addText = [&object](const char* key, const std::optional<Text>& value) {
    if (value) {
      object[key] = value->string();
    }
  };
  const auto addContent = [&object](const char* key, const std::optional<Content>& value) {
    if (value) {
      object[key] = value->bytes();
    }
  };
  if (message.date) {
    object["date"] = formatISO8601(*message.date);
  }
  addContent("plainBody", message.plainBody);
  addContent("htmlBody", message.htmlBody);
  addText("inReplyTo", message.inReplyTo);
  addText("category", message.category);
  return object;
}

EmailAddress emailAddressFromJSON(const json& json) {
  return {optionalText(json, "name"), textOf(require(json, "address"))};
}

EmailAttachment emailAttachmentFromJSON(const json& json) {
  EmailAttachment attachment;
  const auto id = UUID::parse(stringOf(require(json, "id")));
  auto data = decodeBase64(stringOf(require(json, "data")));
  const auto& isInline = require(json, "isInline");
  if (!id || !data || !isInline.is_boolean()) {
    failToDecode();
  }
  attachment.id = *id;
  attachment.fileName = textOf(require(json, "fileName"));
  attachment.mimeType = textOf(require(json, "mimeType"));
  attachment.data = Content::ofBytes(std::move(*data));
  attachment.contentID = optionalText(json, "contentID");
  attachment.isInline = isInline.get<bool>();
  return attachment;
}

EmailMessage emailMessageFromJSON(const json& json) {
  EmailMessage message;
  message.id = textOf(require(json, "id"));
  message.sourceLibraryID = textOf(require(json, "sourceLibraryID"));
  message.sourceLibraryName = textOf(require(json, "sourceLibraryName"));
  message.subject = textOf(require(json, "subject"));
  message.from = emailAddressFromJSON(require(json, "from"));
  message.to = listOf(require(json, "to"), emailAddressFromJSON);
  message.cc = listOf(require(json, "cc"), emailAddressFromJSON);
  if (const auto* date = find(json, "date")) {
    message.date = parseISO8601(stringOf(*date));
    if (!message.date) {
      failToDecode();
    }
  }
  message.snippet = textOf(require(json, "snippet"));
  message.plainBody = optionalContent(json, "plainBody");
  message.htmlBody = optionalContent(json, "htmlBody");
  message.attachments = listOf(require(json, "attachments"), emailAttachmentFromJSON);
  message.labels = listOf(require(json, "labels"), textOf);
  message.conversationID = textOf(require(json, "conversationID"));
  message.inReplyTo = optionalText(json, "inReplyTo");
  message.references = listOf(require(json, "references"), textOf);
  message.category = optionalText(json, "category");
  return message;
}

std::vector<EmailAddress> decodeAddresses(std::string_view json) {
  std::vector<EmailAddress> addresses;
  return readAddresses(json, addresses, makeOwnText) ? addresses : listOf(parse(json), emailAddressFromJSON);
}

std::vector<Text> decodeStrings(std::string_view json) {
  std::vector<Text> strings;
  return readStrings(json, strings, makeOwnText) ? strings : listOf(parse(json), textOf);
}

}  // namespace tidewrack
