#include "export/exporters.h"
#include "platform/date_styles.h"

namespace tidewrack {
namespace {

/// A field that holds a comma, a quote or a line feed goes between quotes, with its own quotes doubled.
void appendField(std::string& line, std::string_view field) {
  if (field.find_first_of(",\"\n") == std::string_view::npos) {
    line += field;
    return;
  }
  line += '"';
  for (const char character : field) {
    if (character == '"') {
      line += '"';
    }
    line += character;
  }
  line += '"';
}

}  // namespace

void exportCSV(const ExportRun& run) {
  const auto dateStyle = DateStyle::numericDateAndTime();
  run.sink("ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\n");
  std::size_t done = 0;
  std::string line;
  for (const auto& message : run.messages) {
    line.clear();
    const auto add = [&line](std::string_view field) {
      appendField(line, field);
      line += ',';
    };
    add(message->id);
    add(message->subject);
    add(displayForm(message->from));
    add(joined(message->to, "; ", displayForm));
    add(joined(message->cc, "; ", displayForm));
    add(message->date ? dateStyle.format(*message->date) : std::string());
    add(joined(message->labels, "; ", [](const Text& label) { return label.view(); }));
    line += std::to_string(message->attachments.size()) + ",";
    appendField(line, message->sourceLibraryName);
    line += '\n';
    run.sink(line);
    run.finished(++done);
  }
}

}  // namespace tidewrack
