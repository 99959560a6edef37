#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "export/export_utility.h"
#include "export/text_output.h"

/// One writer a format, for a list that is not empty. See ExportUtility::exportMessages.
namespace tidewrack {

/// Writes one format. Made by each thread for itself; what it gives for a message depends on nothing but the
/// message and its place in the list.
class FormatWriter {
 public:
  FormatWriter() = default;
  virtual ~FormatWriter() = default;
  FormatWriter(const FormatWriter&) = delete;
  FormatWriter& operator=(const FormatWriter&) = delete;

  /// What stands before the first message and behind the last one.
  [[nodiscard]] virtual std::string head() const { return {}; }
  [[nodiscard]] virtual std::string tail() const { return {}; }
  /// Appends the message at a place of the list, which counts from 0.
  virtual void write(const EmailMessage& message, std::size_t place, TextOutput& output) const = 0;
  /// Bytes that have to be read to write the message, roughly. Needs no reading itself.
  [[nodiscard]] virtual std::uint64_t weight(const EmailMessage& message) const = 0;
};

/// `count` messages in all; `now` stands in for a missing date.
std::unique_ptr<FormatWriter> makeTextWriter(std::size_t count);
std::unique_ptr<FormatWriter> makeHTMLWriter(std::size_t count);
std::unique_ptr<FormatWriter> makeJSONWriter();
std::unique_ptr<FormatWriter> makeCSVWriter();
std::unique_ptr<FormatWriter> makeMBOXWriter(Date now);

/// The bytes of a body, 0 for none.
inline std::uint64_t weightOf(const std::optional<Content>& body) {
  return body ? body->size() : 0;
}

/// The texts with a separator between any two.
inline void appendJoined(std::string& text, const std::vector<Text>& list, std::string_view separator) {
  bool isFirst = true;
  for (const auto& element : list) {
    if (!isFirst) {
      text += separator;
    }
    isFirst = false;
    text += element.view();
  }
}

}  // namespace tidewrack
