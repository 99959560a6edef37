#include "export/exporters.h"
#include "platform/date_styles.h"

namespace tidewrack {
namespace {

/// Where the next line feed stands that ends a line. The one of a CRLF pair ends none here, so that a body
/// with such line ends is one line.
std::size_t lineEnd(std::string_view body) {
  auto end = body.find('\n');
  while (end != std::string_view::npos && end > 0 && body[end - 1] == '\r') {
    end = body.find('\n', end + 1);
  }
  return end;
}

/// The lines of a body without its empty ones; a line that would end the message is quoted.
void appendBody(std::string& text, std::string_view body) {
  bool isFirst = true;
  while (!body.empty()) {
    const auto end = lineEnd(body);
    const auto line = body.substr(0, end);
    body.remove_prefix(end == std::string_view::npos ? body.size() : end + 1);
    if (line.empty()) {
      continue;
    }
    if (!isFirst) {
      text += '\n';
    }
    isFirst = false;
    if (line.starts_with("From ")) {
      text += '>';
    }
    text += line;
  }
}

}  // namespace

void exportMBOX(const ExportRun& run) {
  const auto separatorStyle = DateStyle::mboxSeparator();
  const auto headerStyle = DateStyle::abbreviatedDateAndTime();
  std::size_t done = 0;
  for (const auto& message : run.messages) {
    const Date date = message->date.value_or(run.now);
    std::string text = "From " + message->from.address.string() + " " + separatorStyle.format(date) + "\n";
    text += "From: " + displayForm(message->from) + "\n";
    text += "To: " + displayForms(message->to) + "\n";
    if (!message->cc.empty()) {
      text += "Cc: " + displayForms(message->cc) + "\n";
    }
    text += "Subject: " + message->subject.string() + "\n";
    text += "Date: " + headerStyle.format(date) + "\n";
    text += "Message-ID: <" + message->id.string() + ">\n";
    if (!message->labels.empty()) {
      text +=
          "X-Gmail-Labels: " + joined(message->labels, ",", [](const Text& label) { return label.view(); }) +
          "\n";
    }
    text += "\n";
    if (message->plainBody) {
      appendBody(text, message->plainBody->bytes());
    } else {
      text += message->snippet.view();
    }
    text += "\n\n";
    run.sink(text);
    run.finished(++done);
  }
}

}  // namespace tidewrack
