#include "platform/log.h"

#include <array>
#include <map>
#include <mutex>
#include <string>

#include <glib.h>

namespace tidewrack {

namespace {

constexpr const char* subsystem = "io.marloon.Tidewrack";

// Standard output belongs to what a program prints for its caller. GLib takes the choice only while there is
// no other thread, so it is made before the main function.
[[maybe_unused]] const bool isSentToStandardError = []() noexcept {
  g_log_writer_default_set_use_stderr(TRUE);
  return true;
}();

// Fills `%s`, `%{public}s`, `%d` and `%ld` in order.
std::string fill(std::string_view text, std::initializer_list<FormatValue> values) {
  static constexpr std::array<std::string_view, 4> placeholders = {"%s", "%{public}s", "%d", "%ld"};
  std::string out;
  const auto* value = values.begin();
  while (!text.empty()) {
    std::size_t length = 0;
    for (const auto placeholder : placeholders) {
      if (text.starts_with(placeholder)) {
        length = placeholder.size();
      }
    }
    if (length == 0 || value == values.end()) {
      out += text.front();
      text.remove_prefix(1);
      continue;
    }
    if (const auto* number = std::get_if<long long>(value)) {
      out += std::to_string(*number);
    } else {
      out += std::get<std::string>(*value);
    }
    ++value;
    text.remove_prefix(length);
  }
  return out;
}

}  // namespace

const Logger& Logger::of(std::string_view category) {
  static std::mutex mutex;
  static std::map<std::string, Logger, std::less<>> loggers;
  const std::lock_guard lock(mutex);
  const auto found = loggers.find(category);
  return found != loggers.end() ? found->second
                                : loggers.emplace(std::string(category), Logger(category)).first->second;
}

void Logger::write(Level level, std::string_view text, std::initializer_list<FormatValue> values) const {
  // G_LOG_LEVEL_ERROR would end the process.
  GLogLevelFlags flags = G_LOG_LEVEL_DEBUG;
  const char* priority = "7";
  switch (level) {
    case Level::debug:
      break;
    case Level::info:
      flags = G_LOG_LEVEL_INFO;
      priority = "6";
      break;
    case Level::error:
      flags = G_LOG_LEVEL_WARNING;
      priority = "3";
      break;
    case Level::fault:
      flags = G_LOG_LEVEL_CRITICAL;
      priority = "2";
      break;
  }
  const std::string message = fill(text, values);
  const std::array<GLogField, 5> fields = {{{"MESSAGE", message.c_str(), -1},
                                            {"PRIORITY", priority, -1},
                                            {"GLIB_DOMAIN", category_.c_str(), -1},
                                            {"SUBSYSTEM", subsystem, -1},
                                            {"CATEGORY", category_.c_str(), -1}}};
  g_log_structured_array(flags, fields.data(), fields.size());
}

void Logger::debug(std::string_view text, std::initializer_list<FormatValue> values) const {
  write(Level::debug, text, values);
}
void Logger::info(std::string_view text, std::initializer_list<FormatValue> values) const {
  write(Level::info, text, values);
}
void Logger::error(std::string_view text, std::initializer_list<FormatValue> values) const {
  write(Level::error, text, values);
}
void Logger::fault(std::string_view text, std::initializer_list<FormatValue> values) const {
  write(Level::fault, text, values);
}

}  // namespace tidewrack
