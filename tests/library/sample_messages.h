#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

inline EmailAttachment sampleAttachment(const std::string& name, const std::string& data) {
  EmailAttachment attachment;
  attachment.id = UUID::make();
  attachment.fileName = name;
  attachment.mimeType = "application/octet-stream; name=\"" + name + "\"";
  attachment.data = Content::ofBytes(data);
  return attachment;
}

/// A message in which every field has a value of its own.
inline EmailMessage sampleMessage(const std::string& id, const std::string& library = "L1") {
  EmailMessage message;
  message.id = id;
  message.sourceLibraryID = library;
  message.sourceLibraryName = "Library " + library;
  message.subject = "Subject of " + id + " — ünïcode 🐚";
  message.from = {Text("Ann \"A.\" Example"), "ann@example.org"};
  message.to = {{Text("Bob"), "bob@example.org"}, {std::nullopt, "carol@example.org"}};
  message.cc = {{std::nullopt, "dave@example.org"}};
  message.date = Date(std::chrono::milliseconds(1'700'000'000'123));
  message.snippet = "Snippet of " + id;
  message.plainBody = Content::ofBytes("Plain body of " + id + "\n");
  message.htmlBody = Content::ofBytes("<p>HTML body of " + id + "</p>");
  message.attachments = {sampleAttachment("one.bin", std::string("\0\xff\x01", 3)),
                         sampleAttachment("two.png", std::string(70'000, 'p')),
                         sampleAttachment("empty", "")};
  message.attachments[1].contentID = "image@" + id;
  message.attachments[1].isInline = true;
  message.labels = {"Inbox", "Añejo/2024", "a \"quoted\" \\label"};
  message.conversationID = "conversation-" + id;
  message.inReplyTo = "parent@" + id;
  message.references = {"root@" + id, "parent@" + id};
  return message;
}

inline std::shared_ptr<const EmailMessage> shared(EmailMessage message) {
  return std::make_shared<const EmailMessage>(std::move(message));
}

/// Memberwise equality of two lists, contents by their bytes.
inline bool sameMessages(const MessageList& a, const MessageList& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t index = 0; index < a.size(); ++index) {
    if (!(*a[index] == *b[index])) {
      return false;
    }
  }
  return true;
}

}  // namespace tidewrack
