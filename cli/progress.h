#pragma once

#include <chrono>
#include <string>

namespace tidewrack {

/// One line on standard error that tells how far a long command is. It appears only on a terminal and goes
/// away with the object.
class Progress {
 public:
  /// What the command prints on standard output meanwhile. Lines of messages on the same terminal leave no
  /// room for progress.
  enum class Output { nothing, lines };

  explicit Progress(Output output);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Whether the last text has stood for a tenth of a second, so that a new count is worth showing.
  [[nodiscard]] bool isDue() const;
  /// Shows a new text. Line feeds become blanks.
  void show(std::string text);
  /// Takes the line away, before something else is written to the terminal.
  void clear();

 private:
  bool isShown_;
  bool isDirty_ = false;
  std::chrono::steady_clock::time_point last_{};
};

}  // namespace tidewrack
