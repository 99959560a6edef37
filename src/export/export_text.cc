#include "export/exporters.h"
#include "platform/date_styles.h"

namespace tidewrack {
namespace {

class TextWriter final : public FormatWriter {
 public:
  explicit TextWriter(std::size_t count) : count_(std::to_string(count)) {}

  void write(const EmailMessage& message, std::size_t place, TextOutput& output) const override {
    std::string& text = output.text;
    text += rule_;
    text += "\nMensaje ";
    text += std::to_string(place + 1);
    text += " de ";
    text += count_;
    text += '\n';
    text += rule_;
    text += "\n\nAsunto: ";
    text += message.subject.view();
    text += "\nDe: ";
    appendDisplayForm(text, message.from);
    text += "\nPara: ";
    appendDisplayForms(text, message.to);
    if (!message.cc.empty()) {
      text += "\nCC: ";
      appendDisplayForms(text, message.cc);
    }
    if (message.date) {
      text += "\nFecha: ";
      dateStyle_.append(text, *message.date);
    }
    if (!message.labels.empty()) {
      text += "\nEtiquetas: ";
      appendJoined(text, message.labels, ", ");
    }
    text += "\n\n";
    if (message.plainBody) {
      message.plainBody->appendTo(text);
    } else {
      text += message.snippet.view();
    }
    text += "\n\n";
    if (!message.attachments.empty()) {
      text += "Adjuntos (" + std::to_string(message.attachments.size()) + "):\n";
      for (const auto& attachment : message.attachments) {
        text += "  - " + attachment.fileName.string() + " (" + attachment.mimeType.string() + ")\n";
      }
      text += "\n";
    }
    text += "\n\n";
    output.mayGo();
  }
  [[nodiscard]] std::uint64_t weight(const EmailMessage& message) const override {
    return weightOf(message.plainBody);
  }

 private:
  const std::string rule_ = std::string(71, '=');
  const std::string count_;
  const DateStyle dateStyle_ = DateStyle::longDateAndTime();
};

}  // namespace

std::unique_ptr<FormatWriter> makeTextWriter(std::size_t count) {
  return std::make_unique<TextWriter>(count);
}

}  // namespace tidewrack
