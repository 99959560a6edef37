#include "app/demo_library.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "app/demo_messages.h"
#include "mail/headers.h"

namespace tidewrack {
namespace {

struct LibraryRow {
  const char* id;
  const char* displayName;
  const char* fileName;
  DemoDate importedAt;
};

constexpr std::array<LibraryRow, 3> libraryRows = {{
    {"demo-library-personal", "Personal Archive", "personal.mbox", {2026, 5, 14, 10, 0}},
    {"demo-library-work", "Work Mail", "work.mbox", {2026, 4, 28, 9, 30}},
    {"demo-library-newsletters", "Newsletters", "newsletters.mbox", {2026, 4, 12, 8, 15}},
}};

// In the calendar and time zone of the literals: the same instant on any machine.
Date toDate(const DemoDate& date) {
  using namespace std::chrono;
  constexpr seconds fallback(1'778'752'800);  // May 14, 2026, 10:00
  const year_month_day day{year(date.year), month(date.month), std::chrono::day(date.day)};
  if (!day.ok()) {
    return Date(fallback);
  }
  return Date(sys_days(day) + hours(date.hour) + minutes(date.minute));
}

// One page with one line on it, as a PDF 1.4 file with its table of places.
std::string demoPDF(std::string_view line) {
  const std::string content = "BT /F1 18 Tf 72 720 Td (" + std::string(line) + ") Tj ET";
  const std::array<std::string, 5> objects = {
      "<< /Type /Catalog /Pages 2 0 R >>",
      "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R"
      " /Resources << /Font << /F1 5 0 R >> >> >>",
      "<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream",
      "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
  };
  std::string file = "%PDF-1.4\n";
  std::string places = "xref\n0 6\n0000000000 65535 f \n";
  for (std::size_t index = 0; index < objects.size(); ++index) {
    std::array<char, 24> place{};
    std::snprintf(place.data(), place.size(), "%010zu 00000 n \n", file.size());
    places += place.data();
    file += std::to_string(index + 1) + " 0 obj\n" + objects.at(index) + "\nendobj\n";
  }
  const std::string start = std::to_string(file.size());
  return file + places + "trailer\n<< /Size 6 /Root 1 0 R >>\nstartxref\n" + start + "\n%%EOF\n";
}

EmailAttachment makeAttachment(std::size_t number, const DemoMessage& source) {
  EmailAttachment attachment;
  attachment.id.bytes.back() = static_cast<std::uint8_t>(number);
  attachment.fileName = source.attachment;
  attachment.mimeType = "application/pdf";
  attachment.data = Content::ofBytes(demoPDF(source.attachmentLine));
  return attachment;
}

std::vector<EmailAddress> makeAddresses(const std::vector<DemoPerson>& people) {
  std::vector<EmailAddress> addresses;
  addresses.reserve(people.size());
  for (const DemoPerson& person : people) {
    addresses.push_back({Text(person.name), Text(person.address)});
  }
  return addresses;
}

std::shared_ptr<const EmailMessage> makeMessage(std::size_t number, const DemoMessage& source) {
  const LibraryRow& library = libraryRows.at(static_cast<std::size_t>(source.origin));
  auto message = std::make_shared<EmailMessage>();
  message->id = demoMessageID(number);
  message->sourceLibraryID = library.id;
  message->sourceLibraryName = library.displayName;
  message->subject = source.subject;
  message->from = {Text(source.from.name), Text(source.from.address)};
  message->to = makeAddresses(source.to);
  message->cc = makeAddresses(source.cc);
  message->date = toDate(source.date);
  message->snippet = makeSnippet(std::string_view(source.plainBody), std::nullopt);
  message->plainBody = Content::ofBytes(source.plainBody);
  if (!source.htmlBody.empty()) {
    message->htmlBody = Content::ofBytes(demoHTMLDocument(source.subject, source.preheader, source.htmlBody));
  }
  if (!source.attachment.empty()) {
    message->attachments.push_back(makeAttachment(number, source));
  }
  for (const char* label : source.labels) {
    message->labels.emplace_back(label);
  }
  message->conversationID =
      source.conversationID.empty() ? message->id : Text(std::string_view(source.conversationID));
  if (source.replyTo > 0) {
    message->inReplyTo = demoMessageID(source.replyTo);
    message->references.push_back(demoMessageID(source.replyTo));
  }
  message->category = Text(source.category);
  return message;
}

}  // namespace

std::string demoMessageID(std::size_t number) {
  return "demo-message-" + std::to_string(number) + "@tidewrack.example";
}

std::vector<MBOXLibrary> demoLibraries() {
  std::vector<MBOXLibrary> libraries;
  libraries.reserve(std::size(libraryRows));
  for (const LibraryRow& row : libraryRows) {
    libraries.push_back({row.id, row.displayName, row.fileName, toDate(row.importedAt), false});
  }
  return libraries;
}

MessageList demoMessages() {
  MessageList messages;
  for (const DemoMessage& source : demoMessageTexts()) {
    messages.push_back(makeMessage(messages.size() + 1, source));
  }
  return messages;
}

DemoLibrary demoLibrary() {
  return {demoLibraries(), demoMessages()};
}

std::string demoHTMLDocument(std::string_view title, std::string_view preheader, std::string_view body) {
  std::string document = "<!DOCTYPE html>\n<html>\n<head>\n<meta charset=\"utf-8\">\n<title>";
  document += title;
  document +=
      "</title>\n<meta name=\"color-scheme\" content=\"light dark\">\n</head>\n"
      "<body style=\"font-family:-apple-system,BlinkMacSystemFont,'SF Pro Text','Helvetica Neue',sans-serif;"
      "color:#1d1d1f;line-height:1.55;max-width:640px;margin:0 auto;padding:24px;\">\n"
      "<span style=\"display:none;\">";
  document += preheader;
  document += "</span>\n";
  document += body;
  document += "\n</body>\n</html>";
  return document;
}

}  // namespace tidewrack
