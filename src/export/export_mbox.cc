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

class MBOXWriter final : public FormatWriter {
 public:
  explicit MBOXWriter(Date now) : now_(now) {}

  void write(const EmailMessage& message, std::size_t /*place*/, TextOutput& output) const override {
    const Date date = message.date.value_or(now_);
    std::string& text = output.text;
    text += "From ";
    text += message.from.address.view();
    text += " " + separatorStyle_.format(date) + "\nFrom: " + displayForm(message.from);
    text += "\nTo: " + displayForms(message.to) + "\n";
    if (!message.cc.empty()) {
      text += "Cc: " + displayForms(message.cc) + "\n";
    }
    text += "Subject: ";
    text += message.subject.view();
    text += "\nDate: " + headerStyle_.format(date) + "\nMessage-ID: <";
    text += message.id.view();
    text += ">\n";
    if (!message.labels.empty()) {
      text += "X-Gmail-Labels: ";
      appendJoined(text, message.labels, ",", viewOf);
      text += "\n";
    }
    text += "\n";
    if (message.plainBody) {
      appendBody(text, message.plainBody->bytes());
    } else {
      text += message.snippet.view();
    }
    text += "\n\n";
    output.mayGo();
  }
  [[nodiscard]] std::uint64_t weight(const EmailMessage& message) const override {
    return weightOf(message.plainBody);
  }

 private:
  const Date now_;
  const DateStyle separatorStyle_ = DateStyle::mboxSeparator();
  const DateStyle headerStyle_ = DateStyle::abbreviatedDateAndTime();
};

}  // namespace

std::unique_ptr<FormatWriter> makeMBOXWriter(Date now) {
  return std::make_unique<MBOXWriter>(now);
}

}  // namespace tidewrack
