#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/failure.h"

namespace tidewrack {

/// Whoever read the output has gone; there is nobody to tell.
class OutputClosed : public std::runtime_error {
 public:
  OutputClosed() : std::runtime_error("output closed") {}
};

/// Buffered output to a file descriptor that it does not own. A failed write throws OutputClosed for a
/// closed pipe (the program ignores SIGPIPE) and FileFailure for anything else.
class Output {
 public:
  explicit Output(int descriptor);
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  [[nodiscard]] bool isTerminal() const { return isTerminal_; }
  void write(std::string_view bytes);
  void flush();

 private:
  int descriptor_;
  bool isTerminal_;
  std::string buffer_;
};

/// Rows of texts with the same number of columns: aligned for a terminal, with a tab between the columns
/// elsewhere. Control characters in the texts become blanks, so that a text can neither break the table nor
/// command the terminal.
std::string formatColumns(const std::vector<std::vector<std::string>>& rows, bool aligned);

/// Text that commands no terminal: control characters other than line feed and tab become U+FFFD.
std::string terminalSafe(std::string_view text);

/// Cells that a text takes on a terminal, roughly: wide East Asian characters count twice, marks not at all.
std::size_t displayWidth(std::string_view text);

}  // namespace tidewrack
