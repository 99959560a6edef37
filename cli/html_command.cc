#include <cstdio>

#include "cli/commands.h"
#include "cli/headless_screen.h"
#include "mail/charsets.h"
#include "platform/files.h"
#include "platform/localized.h"
#include "reading/html_document.h"

namespace tidewrack {
namespace {

ResolvedHTML resolveStored(const std::string& id) {
  HeadlessScreen headless;
  auto resolved = resolveInlineHTML(*headless.message(id));
  if (!resolved.html) {
    throw Failure(
        localized("ctl_no_html", "The message has no HTML body.", "tidewrackctl error of show --html"));
  }
  return resolved;
}

ResolvedHTML resolveFile(const std::string& file) {
  std::string html = decodeWithFallback(readFile(file));
  const auto hint = appearanceHint(html);
  return {std::move(html), hint};
}

}  // namespace

int printDocument(const CommandLine& line, Output& output) {
  const auto resolved = line.operandIsFile ? resolveFile(line.operands[0]) : resolveStored(line.operands[0]);
  output.write(buildDocument(*resolved.html, *line.appearance, line.invertsContent));
  output.flush();
  const std::string hint(resolved.hint ? rawValue(*resolved.hint) : "none");
  std::fprintf(stderr, "%s\n", hint.c_str());
  return 0;
}

}  // namespace tidewrack
