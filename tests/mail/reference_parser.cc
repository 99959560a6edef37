#include "mail/reference_parser.h"

#include <memory>
#include <optional>

#include <unicode/brkiter.h>
#include <unicode/regex.h>

#include "mail/charsets.h"
#include "mail/date_parser.h"
#include "mail/encoded_words.h"
#include "mail/html_text.h"
#include "mail/transfer_decoding.h"
#include "platform/localized.h"
#include "platform/unicode.h"

namespace tidewrack::reference {
namespace {

using Lines = std::vector<std::string>;

std::string trim(const std::string& text) {
  return std::string(trimWhitespaceAndNewlines(text));
}

std::string trim(std::string text, const std::string& characters) {
  while (!text.empty() && characters.find(text.front()) != std::string::npos) {
    text.erase(0, 1);
  }
  while (!text.empty() && characters.find(text.back()) != std::string::npos) {
    text.pop_back();
  }
  return text;
}

std::string replaceAll(std::string text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
  return text;
}

std::string normalizeLineEnds(const std::string& text) {
  return replaceAll(replaceAll(text, "\r\n", "\n"), "\r", "\n");
}

Lines split(const std::string& text, char separator) {
  Lines parts(1);
  for (const char character : text) {
    if (character == separator) {
      parts.emplace_back();
    } else {
      parts.back() += character;
    }
  }
  return parts;
}

std::string join(const Lines& lines) {
  std::string text;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    text += (i > 0 ? "\n" : "") + lines[i];
  }
  return text;
}

bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

icu::UnicodeString wide(const std::string& text) {
  return icu::UnicodeString::fromUTF8(text);
}
std::string narrow(const icu::UnicodeString& text) {
  std::string result;
  return text.toUTF8String(result);
}

std::optional<std::string> valueOf(const HeaderMap& headers, const std::string& name) {
  const auto found = headers.find(name);
  return found == headers.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> parameter(const std::string& name, const std::string& value) {
  for (const std::string& piece : split(value, ';')) {
    const std::string match = trim(piece);
    if (!lowercase(match).starts_with(lowercase(name) + "=")) {
      continue;
    }
    // At most one split, and empty parts do not count.
    Lines parts;
    std::string current;
    for (const char character : match) {
      if (character == '=' && parts.empty()) {
        if (!current.empty()) {
          parts.push_back(current);
        }
        current.clear();
      } else {
        current += character;
      }
    }
    if (!current.empty()) {
      parts.push_back(current);
    }
    return trim(parts.back(), "\"' ");
  }
  return std::nullopt;
}

EmailAddress mailbox(const std::string& decoded) {
  const std::size_t open = decoded.find('<');
  const std::size_t close = decoded.find('>');
  if (open != std::string::npos && close != std::string::npos && close > open) {
    const std::string name = trim(decoded.substr(0, open), "\" ");
    EmailAddress address{std::nullopt, trim(decoded.substr(open + 1, close - open - 1))};
    if (!name.empty()) {
      address.name = name;
    }
    return address;
  }
  return {std::nullopt, decoded};
}

std::optional<EmailAddress> sender(const std::optional<std::string>& value) {
  if (!value || trim(*value).empty()) {
    return std::nullopt;
  }
  return mailbox(decodeHeaderText(trim(*value)));
}

std::vector<EmailAddress> addressList(const std::optional<std::string>& value) {
  std::vector<EmailAddress> addresses;
  for (const std::string& part : split(value.value_or(""), ',')) {
    if (!trim(part).empty()) {
      addresses.push_back(mailbox(decodeHeaderText(trim(part))));
    }
  }
  return addresses;
}

const std::string referenceEnds = "<> \"\t\n\r";

std::optional<std::string> reference(const std::optional<std::string>& value) {
  const std::string result = trim(value.value_or(""), referenceEnds);
  return result.empty() ? std::nullopt : std::optional(result);
}

std::vector<Text> references(const std::optional<std::string>& value) {
  std::vector<Text> result;
  if (!value) {
    return result;
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::UnicodeString input = wide(*value);
  icu::RegexMatcher matcher(UNICODE_STRING_SIMPLE("<([^>]+)>"), input, 0, status);
  while (matcher.find(status)) {
    result.emplace_back(narrow(matcher.group(1, status)));
  }
  if (!result.empty()) {
    return result;
  }
  for (const std::string& part : split(*value, ' ')) {
    if (!part.empty()) {
      const std::string trimmed = trim(part, referenceEnds);
      result.emplace_back(trimmed.empty() ? part : trimmed);
    }
  }
  return result;
}

std::vector<Text> labels(const std::optional<std::string>& value) {
  std::vector<Text> result;
  if (!value) {
    return result;
  }
  Lines entries(1);
  bool isQuoted = false;
  for (const char character : *value) {
    if (character == '"') {
      isQuoted = !isQuoted;
    } else if (character == ',' && !isQuoted) {
      entries.emplace_back();
    } else {
      entries.back() += character;
    }
  }
  for (const std::string& entry : entries) {
    const std::string label = decodeHeaderText(trim(entry));
    if (!label.empty()) {
      result.emplace_back(label);
    }
  }
  return result;
}

std::string snippet(const std::optional<std::string>& plain, const std::optional<std::string>& html) {
  std::string source;
  if (plain && !plain->empty()) {
    source = *plain;
  } else if (html && !html->empty()) {
    source = HTMLTextExtractor::extractText(*html);
  } else {
    return "";
  }
  UErrorCode status = U_ZERO_ERROR;
  icu::RegexMatcher matcher(UNICODE_STRING_SIMPLE("\\s+"), 0, status);
  const icu::UnicodeString input = wide(source);
  matcher.reset(input);
  const icu::UnicodeString text = wide(trim(narrow(matcher.replaceAll(UNICODE_STRING_SIMPLE(" "), status))));
  const std::unique_ptr<icu::BreakIterator> iterator(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  iterator->setText(text);
  std::int32_t end = 0;
  for (int i = 0; i < 180 && end != icu::BreakIterator::DONE; ++i) {
    end = iterator->next();
  }
  if (end == icu::BreakIterator::DONE || end == text.length()) {
    return narrow(text);
  }
  return narrow(text.tempSubString(0, end)) + "…";
}

std::string conversationSubject(const std::string& subject) {
  std::string text = lowercase(foldDiacritics(trim(subject)));
  while (true) {
    bool hasCut = false;
    for (const std::string prefix : {"re:", "fw:", "fwd:"}) {
      if (text.starts_with(prefix)) {
        text = trim(text.substr(prefix.size()));
        hasCut = true;
      }
    }
    if (!hasCut) {
      return text;
    }
  }
}

struct Body {
  std::optional<std::string> plain;
  std::optional<std::string> html;
  std::vector<EmailAttachment> attachments;
};

std::optional<std::string> attachmentName(const HeaderMap& headers) {
  for (const auto& [header, name] :
       {std::pair("content-disposition", "filename"), {"content-type", "name"}}) {
    const auto value = valueOf(headers, header);
    const auto found = value ? parameter(name, *value) : std::nullopt;
    if (found && !found->empty()) {
      return decodeHeaderText(*found);
    }
  }
  return std::nullopt;
}

Body leaf(const std::string& body, const HeaderMap& headers, const std::string& contentType) {
  const std::string lookup = lowercase(contentType);
  const std::string bytes =
      decodeTransfer(body, lowercase(valueOf(headers, "content-transfer-encoding").value_or("")));
  const std::string disposition = lowercase(valueOf(headers, "content-disposition").value_or(""));
  const auto fileName = attachmentName(headers);
  const auto contentID = reference(valueOf(headers, "content-id"));
  const bool isInline = contains(disposition, "inline");
  const bool isText = contains(lookup, "text/plain") || contains(lookup, "text/html");
  const bool isAttachment = contains(disposition, "attachment");
  const bool hasID = contentID.has_value();
  if (isAttachment || ((isInline || hasID) && !isText) || (fileName && !isText)) {
    EmailAttachment attachment;
    attachment.id = UUID::make();
    if (fileName && !fileName->empty()) {
      attachment.fileName = *fileName;
    } else if (contentID) {
      attachment.fileName = *contentID;
    } else {
      attachment.fileName = "attachment-" + UUID::make().string();
    }
    attachment.mimeType = contentType;
    attachment.data = Content::ofBytes(bytes);
    if (contentID) {
      attachment.contentID = *contentID;
    }
    attachment.isInline = isInline || hasID;
    return {std::nullopt, std::nullopt, {attachment}};
  }
  const std::string text = decodeText(bytes, parameter("charset", contentType));
  return contains(lookup, "text/html") ? Body{std::nullopt, text, {}} : Body{text, std::nullopt, {}};
}

Body parseBody(const std::string& body, const HeaderMap& headers) {
  const std::string contentType = valueOf(headers, "content-type").value_or("text/plain");
  if (!contains(lowercase(contentType), "multipart/")) {
    return leaf(body, headers, contentType);
  }
  const auto boundary = parameter("boundary", contentType);
  if (!boundary || boundary->empty()) {
    return {body, std::nullopt, {}};
  }
  Body result;
  for (const std::string& rawPart : splitMultipart(body, *boundary)) {
    const std::string part = normalizeLineEnds(rawPart);
    const std::size_t end = part.find("\n\n");
    const std::string partBody = end == std::string::npos ? "" : part.substr(end + 2);
    Body inner = parseBody(partBody, parseHeaders(part.substr(0, end)));
    if (inner.plain && !inner.plain->empty() && !result.plain) {
      result.plain = inner.plain;
    }
    if (inner.html && !inner.html->empty() && !result.html) {
      result.html = inner.html;
    }
    result.attachments.insert(result.attachments.end(), inner.attachments.begin(), inner.attachments.end());
  }
  return result;
}

}  // namespace

HeaderMap parseHeaders(const std::string& headerText) {
  HeaderMap headers;
  std::optional<std::string> current;
  for (const std::string& line : split(normalizeLineEnds(headerText), '\n')) {
    if (line.empty()) {
      continue;
    }
    if (line.front() == ' ' || line.front() == '\t') {
      if (current) {
        headers[*current] += " " + trim(line);
      }
      continue;
    }
    const std::size_t colon = line.find(':');
    if (colon != std::string::npos) {
      current = lowercase(trim(line.substr(0, colon)));
      headers[*current] = trim(line.substr(colon + 1));
    }
  }
  return headers;
}

std::vector<std::string> splitMultipart(const std::string& body, const std::string& boundary) {
  std::vector<std::string> parts;
  Lines current;
  bool isInside = false;
  const auto finish = [&] {
    if (isInside && !current.empty()) {
      parts.push_back(trim(join(current)));
      current.clear();
    }
  };
  for (const std::string& line : split(normalizeLineEnds(body), '\n')) {
    if (line == "--" + boundary) {
      finish();
      isInside = true;
    } else if (line == "--" + boundary + "--") {
      finish();
      break;
    } else if (isInside) {
      current.push_back(line);
    }
  }
  std::erase(parts, "");
  return parts;
}

EmailMessage parseMessage(const std::string& raw, const Text& libraryID, const Text& libraryName) {
  const std::string text = normalizeLineEnds(raw);
  const std::size_t end = text.find("\n\n");
  const HeaderMap headers = parseHeaders(text.substr(0, end));
  const Body body = parseBody(end == std::string::npos ? "" : text.substr(end + 2), headers);
  const std::string subject = decodeHeaderText(trim(valueOf(headers, "subject").value_or("")));

  EmailMessage message;
  message.from =
      sender(valueOf(headers, "from"))
          .value_or(EmailAddress{std::nullopt, Text(localized("unknown_sender_email", "unknown@unknown",
                                                              "Fallback sender email"))});
  message.to = addressList(valueOf(headers, "to"));
  message.cc = addressList(valueOf(headers, "cc"));
  message.date = parseDate(valueOf(headers, "date"));
  message.id = reference(valueOf(headers, "message-id")).value_or(UUID::make().string());
  if (const auto value = reference(valueOf(headers, "in-reply-to"))) {
    message.inReplyTo = *value;
  }
  message.references = references(valueOf(headers, "references"));
  message.labels = labels(valueOf(headers, "x-gmail-labels"));
  message.snippet = snippet(body.plain, body.html);
  const std::string thread = conversationSubject(subject);
  if (!message.references.empty() && !message.references.front().empty()) {
    message.conversationID = message.references.front();
  } else if (message.inReplyTo) {
    message.conversationID = *message.inReplyTo;
  } else if (!thread.empty()) {
    message.conversationID = "subject:" + thread;
  } else {
    message.conversationID = message.id;
  }
  message.subject =
      subject.empty() ? localized("no_subject", "(No Subject)", "Fallback email subject") : subject;
  if (body.plain) {
    message.plainBody = Content::ofBytes(*body.plain);
  }
  if (body.html) {
    message.htmlBody = Content::ofBytes(*body.html);
  }
  message.attachments = body.attachments;
  message.sourceLibraryID = libraryID;
  message.sourceLibraryName = libraryName;
  return message;
}

std::vector<EmailMessage> parseArchive(std::string_view bytes, const Text& libraryID,
                                       const Text& libraryName) {
  const std::string text = repairUTF8(bytes);
  std::vector<EmailMessage> messages;
  std::string buffer;
  const auto flush = [&] {
    const std::string raw = trim(buffer);
    if (!raw.empty()) {
      messages.push_back(parseMessage(raw, libraryID, libraryName));
    }
    buffer.clear();
  };
  for (const std::string& line : split(normalizeLineEnds(text), '\n')) {
    if (line.starts_with("From ")) {
      if (!buffer.empty()) {
        flush();
      }
      continue;
    }
    if (!buffer.empty()) {
      buffer += '\n';
    }
    buffer += line;
  }
  if (!buffer.empty()) {
    flush();
  }
  return messages;
}

}  // namespace tidewrack::reference
