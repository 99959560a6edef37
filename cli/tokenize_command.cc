#include "classify/full_text_search_index.h"
#include "cli/commands.h"
#include "platform/unicode.h"

namespace tidewrack {

int tokenizeText(const CommandLine& line, Output& output) {
  for (const auto& token : FullTextSearchIndex::tokenize(repairUTF8(line.operands[0]))) {
    output.write(token + '\n');
  }
  return 0;
}

}  // namespace tidewrack
