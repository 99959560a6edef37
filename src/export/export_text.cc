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
    text += "\nMensaje " + std::to_string(place + 1) + " de " + count_ + "\n" + rule_;
    text += "\n\nAsunto: ";
    text += message.subject.view();
    text += "\nDe: " + displayForm(message.from);
    text += "\nPara: " + displayForms(message.to) + "\n";
    if (!message.cc.empty()) {
      text += "CC: " + displayForms(message.cc) + "\n";
    }
    if (message.date) {
      text += "Fecha: " + dateStyle_.format(*message.date) + "\n";
    }
    if (!message.labels.empty()) {
      text += "Etiquetas: ";
      appendJoined(text, message.labels, ", ", viewOf);
      text += "\n";
    }
    text += "\n";
    if (message.plainBody) {
      text += message.plainBody->bytes();
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
