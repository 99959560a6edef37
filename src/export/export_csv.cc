#include <algorithm>

#include "export/exporters.h"
#include "platform/date_styles.h"

namespace tidewrack {
namespace {

/// A field that holds a comma, a quote or a line feed goes between quotes, with its own quotes doubled.
void appendField(std::string& line, std::string_view field) {
  const auto needsQuotes = [](char character) {
    return character == ',' || character == '"' || character == '\n';
  };
  if (std::none_of(field.begin(), field.end(), needsQuotes)) {
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

class CSVWriter final : public FormatWriter {
 public:
  [[nodiscard]] std::string head() const override {
    return "ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\n";
  }

  void write(const EmailMessage& message, std::size_t /*place*/, TextOutput& output) const override {
    std::string& line = output.text;
    std::string field;
    const auto add = [&line](std::string_view value) {
      appendField(line, value);
      line += ',';
    };
    const auto addJoined = [&](const auto& list, const auto& textOf) {
      field.clear();
      appendJoined(field, list, "; ", textOf);
      add(field);
    };
    add(message.id);
    add(message.subject);
    add(displayForm(message.from));
    addJoined(message.to, displayForm);
    addJoined(message.cc, displayForm);
    add(message.date ? dateStyle_.format(*message.date) : std::string());
    addJoined(message.labels, viewOf);
    line += std::to_string(message.attachments.size());
    line += ',';
    appendField(line, message.sourceLibraryName);
    line += '\n';
    output.mayGo();
  }
  [[nodiscard]] std::uint64_t weight(const EmailMessage& /*message*/) const override { return 0; }

 private:
  const DateStyle dateStyle_ = DateStyle::numericDateAndTime();
};

}  // namespace

std::unique_ptr<FormatWriter> makeCSVWriter() {
  return std::make_unique<CSVWriter>();
}

}  // namespace tidewrack
