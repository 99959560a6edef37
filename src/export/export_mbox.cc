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

/// The lines of a body without its empty ones; a line that would end the message is quoted. Lines that go out
/// as they stand go together.
void appendBody(std::string& text, std::string_view body) {
  const std::size_t before = text.size();
  const auto append = [&](std::string_view lines, bool isQuoted) {
    if (!lines.empty()) {
      text += text.size() == before ? "" : "\n";
      text += isQuoted ? ">" : "";
      text += lines;
    }
  };
  std::size_t run = 0;  // Where the lines begin that are not in the text yet.
  bool isQuoted = false;
  for (std::size_t start = 0; start < body.size();) {
    const auto rest = body.substr(start);
    const bool needsQuote = rest.starts_with("From ");
    if (needsQuote || rest.front() == '\n') {
      append(body.substr(run, start == run ? 0 : start - 1 - run), isQuoted);
      run = start + (needsQuote ? 0 : 1);
      isQuoted = needsQuote;
    }
    const auto end = lineEnd(rest);
    start = end == std::string_view::npos ? body.size() : start + end + 1;
  }
  if (body.size() > run) {
    append(body.substr(run, body.size() - run - (body.back() == '\n' && !body.ends_with("\r\n") ? 1 : 0)),
           isQuoted);
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
    text += ' ';
    separatorStyle_.append(text, date);
    text += "\nFrom: ";
    appendDisplayForm(text, message.from);
    text += "\nTo: ";
    appendDisplayForms(text, message.to);
    if (!message.cc.empty()) {
      text += "\nCc: ";
      appendDisplayForms(text, message.cc);
    }
    text += "\nSubject: ";
    text += message.subject.view();
    text += "\nDate: ";
    headerStyle_.append(text, date);
    text += "\nMessage-ID: <";
    text += message.id.view();
    text += ">\n";
    if (!message.labels.empty()) {
      text += "X-Gmail-Labels: ";
      appendJoined(text, message.labels, ",");
      text += "\n";
    }
    text += "\n";
    if (message.plainBody) {
      appendBody(text, output.bytesOf(*message.plainBody));
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
