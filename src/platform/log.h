#pragma once

#include <initializer_list>
#include <string_view>

#include "platform/localized.h"

namespace tidewrack {

/// The log of one category, through GLib's structured logging: to the journal where there is one, otherwise
/// to standard error (debug and info lines only where G_MESSAGES_DEBUG asks for them). Texts are fixed, with
/// the placeholders `%s`, `%{public}s`, `%d` and `%ld` filled in order. Safe from any thread.
class Logger {
 public:
  /// The one logger of a category, for example "ContentView"; made when first asked for.
  static const Logger& of(std::string_view category);

  void debug(std::string_view text, std::initializer_list<FormatValue> values = {}) const;
  void info(std::string_view text, std::initializer_list<FormatValue> values = {}) const;
  /// Something failed and the program goes on.
  void error(std::string_view text, std::initializer_list<FormatValue> values = {}) const;
  /// Something failed that must not.
  void fault(std::string_view text, std::initializer_list<FormatValue> values = {}) const;

  explicit Logger(std::string_view category) : category_(category) {}

 private:
  enum class Level { debug, info, error, fault };
  void write(Level level, std::string_view text, std::initializer_list<FormatValue> values) const;

  std::string category_;
};

}  // namespace tidewrack
