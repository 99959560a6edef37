#include "cli/output.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <unicode/uchar.h>
#include <unicode/utf8.h>
#include <unistd.h>

#include "platform/localized.h"

namespace tidewrack {
namespace {

constexpr std::size_t bufferSize = 64UL * 1024;
constexpr std::string_view gap = "  ";

/// Calls `visit(character, bytes)` for each character of valid UTF-8.
template <typename Visit>
void forEachCharacter(std::string_view text, Visit visit) {
  const auto length = static_cast<int64_t>(text.size());
  for (int64_t i = 0; i < length;) {
    const auto start = i;
    UChar32 character = 0;
    U8_NEXT(text.data(), i, length, character);
    visit(character, text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(i - start)));
  }
}

bool isControl(UChar32 character) {
  return character < 0 || u_charType(character) == U_CONTROL_CHAR;
}

std::string withoutControls(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  forEachCharacter(text, [&](UChar32 character, std::string_view bytes) {
    result += isControl(character) ? std::string_view(" ") : bytes;
  });
  return result;
}

}  // namespace

Output::Output(int descriptor) : descriptor_(descriptor), isTerminal_(isatty(descriptor) == 1) {
  buffer_.reserve(bufferSize);
}

void Output::write(std::string_view bytes) {
  buffer_ += bytes;
  if (buffer_.size() >= bufferSize) {
    flush();
  }
}

void Output::flush() {
  const std::string bytes = std::move(buffer_);
  buffer_.clear();
  std::string_view rest = bytes;
  while (!rest.empty()) {
    const auto written = ::write(descriptor_, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EPIPE) {
      throw OutputClosed();
    } else if (errno != EINTR) {
      throw FileFailure(formatText(
          localized("ctl_output_failed", "The output could not be written: %@", "tidewrackctl error"),
          {std::string(std::strerror(errno))}));
    }
  }
}

std::string formatColumns(const std::vector<std::vector<std::string>>& rows, bool aligned) {
  std::vector<std::vector<std::string>> cells;
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    auto& cleaned = cells.emplace_back();
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t i = 0; i < row.size(); ++i) {
      cleaned.push_back(withoutControls(row[i]));
      widths[i] = std::max(widths[i], aligned ? displayWidth(cleaned.back()) : 0);
    }
  }
  std::string text;
  for (const auto& row : cells) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      text += row[i];
      if (i + 1 == row.size()) {
        text += '\n';
      } else if (aligned) {
        text.append(widths[i] - displayWidth(row[i]), ' ').append(gap);
      } else {
        text += '\t';
      }
    }
  }
  return text;
}

std::string terminalSafe(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  forEachCharacter(text, [&](UChar32 character, std::string_view bytes) {
    const bool keeps = !isControl(character) || character == '\n' || character == '\t';
    result += keeps ? bytes : std::string_view("\uFFFD");
  });
  return result;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  forEachCharacter(text, [&](UChar32 character, std::string_view) {
    const auto type = u_charType(character);
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR) {
      return;
    }
    const auto eastAsian = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
    width += eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH ? 2 : 1;
  });
  return width;
}

}  // namespace tidewrack
