#include "export/exporters.h"
#include "export/json_writer.h"
#include "platform/log.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// Texts and bodies are valid UTF-8 by their making; a store that has been damaged may hold anything.
void writeText(JSONWriter& json, std::string_view text) {
  if (!isValidUTF8(text)) {
    Logger::of("Export").error("Error al codificar JSON: %s", {std::string("no UTF-8")});
    throw ExportUtility::ExportError(ExportUtility::ExportError::Kind::encodingFailed);
  }
  json.string(text);
}

void write(JSONWriter& json, const Text& text) {
  writeText(json, text.view());
}

void write(JSONWriter& json, const EmailAddress& address) {
  json.beginObject();
  json.key("address");
  write(json, address.address);
  if (address.name) {
    json.key("name");
    write(json, *address.name);
  }
  json.endObject();
}

void write(JSONWriter& json, const EmailAttachment& attachment) {
  json.beginObject();
  if (attachment.contentID) {
    json.key("contentID");
    write(json, *attachment.contentID);
  }
  json.key("data");
  json.base64(json.output().bytesOf(attachment.data));
  json.key("fileName");
  write(json, attachment.fileName);
  json.key("id");
  json.string(attachment.id.string());
  json.key("isInline");
  json.boolean(attachment.isInline);
  json.key("mimeType");
  write(json, attachment.mimeType);
  json.endObject();
}

template <typename Element>
void writeList(JSONWriter& json, std::string_view key, const std::vector<Element>& list) {
  json.key(key);
  json.beginList();
  for (const auto& element : list) {
    json.element();
    write(json, element);
  }
  json.endList();
}

void writeOptional(JSONWriter& json, std::string_view key, const std::optional<Text>& text) {
  if (text) {
    json.key(key);
    write(json, *text);
  }
}

void writeOptional(JSONWriter& json, std::string_view key, const std::optional<Content>& body) {
  if (body) {
    json.key(key);
    writeText(json, json.output().bytesOf(*body));
  }
}

// The keys in ascending order.
void writeMessage(JSONWriter& json, const EmailMessage& message) {
  json.beginObject();
  writeList(json, "attachments", message.attachments);
  writeOptional(json, "category", message.category);
  writeList(json, "cc", message.cc);
  json.key("conversationID");
  write(json, message.conversationID);
  if (message.date) {
    json.key("date");
    json.string(formatISO8601(*message.date));
  }
  json.key("from");
  write(json, message.from);
  writeOptional(json, "htmlBody", message.htmlBody);
  json.key("id");
  write(json, message.id);
  writeOptional(json, "inReplyTo", message.inReplyTo);
  writeList(json, "labels", message.labels);
  writeOptional(json, "plainBody", message.plainBody);
  writeList(json, "references", message.references);
  json.key("snippet");
  write(json, message.snippet);
  json.key("sourceLibraryID");
  write(json, message.sourceLibraryID);
  json.key("sourceLibraryName");
  write(json, message.sourceLibraryName);
  json.key("subject");
  write(json, message.subject);
  writeList(json, "to", message.to);
  json.endObject();
}

// One message at a time, in the form that mail/json_coding reads: the values need no tree of their own.
class JSONListWriter final : public FormatWriter {
 public:
  [[nodiscard]] std::string head() const override { return "["; }
  [[nodiscard]] std::string tail() const override { return "\n]"; }
  void write(const EmailMessage& message, std::size_t place, TextOutput& output) const override {
    JSONWriter json(output, 1);
    if (place == 0) {
      json.firstElement();
    } else {
      json.element();
    }
    writeMessage(json, message);
  }
  [[nodiscard]] std::uint64_t weight(const EmailMessage& message) const override {
    std::uint64_t sum = weightOf(message.plainBody) + weightOf(message.htmlBody);
    for (const auto& attachment : message.attachments) {
      sum += attachment.data.size();
    }
    return sum;
  }
};

}  // namespace

std::unique_ptr<FormatWriter> makeJSONWriter() {
  return std::make_unique<JSONListWriter>();
}

}  // namespace tidewrack
