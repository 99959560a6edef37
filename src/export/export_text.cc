#include "export/exporters.h"
#include "platform/date_styles.h"

namespace tidewrack {

void exportText(const ExportRun& run) {
  const std::string rule(71, '=');
  const auto dateStyle = DateStyle::longDateAndTime();
  const auto count = std::to_string(run.messages.size());
  std::size_t number = 0;
  for (const auto& message : run.messages) {
    ++number;
    std::string text = rule + "\nMensaje " + std::to_string(number) + " de " + count + "\n" + rule + "\n\n";
    text += "Asunto: " + message->subject.string() + "\n";
    text += "De: " + displayForm(message->from) + "\n";
    text += "Para: " + displayForms(message->to) + "\n";
    if (!message->cc.empty()) {
      text += "CC: " + displayForms(message->cc) + "\n";
    }
    if (message->date) {
      text += "Fecha: " + dateStyle.format(*message->date) + "\n";
    }
    if (!message->labels.empty()) {
      text += "Etiquetas: " + joined(message->labels, ", ", [](const Text& label) { return label.view(); }) +
              "\n";
    }
    text += "\n";
    text += message->plainBody ? message->plainBody->bytes() : message->snippet.string();
    text += "\n\n";
    if (!message->attachments.empty()) {
      text += "Adjuntos (" + std::to_string(message->attachments.size()) + "):\n";
      for (const auto& attachment : message->attachments) {
        text += "  - " + attachment.fileName.string() + " (" + attachment.mimeType.string() + ")\n";
      }
      text += "\n";
    }
    text += "\n\n";
    run.sink(text);
    run.finished(number);
  }
}

}  // namespace tidewrack
