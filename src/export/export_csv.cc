#include <algorithm>
#include <cstdint>

#include "export/exporters.h"
#include "platform/byte_word.h"
#include "platform/date_styles.h"

namespace tidewrack {
namespace {

bool needsQuotes(std::string_view field) {
  const auto special = [](ByteWord word) {
    return bytesEqualTo(word, ',') | bytesEqualTo(word, '"') | bytesEqualTo(word, '\n');
  };
  if (field.size() < byteWordSize) {
    return field.find_first_of(",\"\n") != std::string_view::npos;
  }
  const char* last = field.data() + field.size() - byteWordSize;
  ByteWord found = special(loadWord(last));
  for (const char* word = field.data(); word < last; word += byteWordSize) {
    found |= special(loadWord(word));
  }
  return found != 0;
}

/// What stands in the line from `start` on becomes a field: where it holds a comma, a quote or a line feed,
/// it goes between quotes, with its own quotes doubled.
void endField(std::string& line, std::size_t start) {
  const std::string_view field = std::string_view(line).substr(start);
  if (!needsQuotes(field)) {
    return;
  }
  const std::size_t size = field.size();
  line.resize(line.size() + 2 + static_cast<std::size_t>(std::count(field.begin(), field.end(), '"')));
  // From the end, so that nothing is written over before it has been read.
  char* out = line.data() + line.size();
  *--out = '"';
  for (std::size_t place = start + size; place > start; --place) {
    const char character = line[place - 1];
    *--out = character;
    if (character == '"') {
      *--out = '"';
    }
  }
  *--out = '"';
}

class CSVWriter final : public FormatWriter {
 public:
  [[nodiscard]] std::string head() const override {
    return "ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\n";
  }

  void write(const EmailMessage& message, std::size_t /*place*/, TextOutput& output) const override {
    std::string& line = output.text;
    const auto add = [&line](const auto& append) {
      const std::size_t start = line.size();
      append();
      endField(line, start);
      line += ',';
    };
    add([&] { line += message.id.view(); });
    add([&] { line += message.subject.view(); });
    add([&] { appendDisplayForm(line, message.from); });
    add([&] { appendDisplayForms(line, message.to, "; "); });
    add([&] { appendDisplayForms(line, message.cc, "; "); });
    add([&] {
      if (message.date) {
        dateStyle_.append(line, *message.date);
      }
    });
    add([&] { appendJoined(line, message.labels, "; "); });
    line += std::to_string(message.attachments.size());
    line += ',';
    const std::size_t start = line.size();
    line += message.sourceLibraryName.view();
    endField(line, start);
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
