#include <nlohmann/json.hpp>

#include "export/exporters.h"
#include "mail/json_coding.h"

namespace tidewrack {

/// One message at a time through the common coding, set two blanks deep in the list.
void exportJSON(const ExportRun& run) {
  run.sink("[");
  std::size_t done = 0;
  for (const auto& message : run.messages) {
    std::string text = done == 0 ? "\n  " : ",\n  ";
    for (const char character : toJSON(*message).dump(2)) {
      text += character;
      if (character == '\n') {
        text += "  ";
      }
    }
    run.sink(text);
    run.finished(++done);
  }
  run.sink("\n]");
}

}  // namespace tidewrack
