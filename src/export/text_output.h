#pragma once

#include <string>
#include <string_view>

#include "export/export_utility.h"

namespace tidewrack {

/// Text on its way into the file. Writers append to `text` and say now and then that it may go.
class TextOutput {
 public:
  /// Keeps everything, for whoever takes `text` in the end.
  TextOutput() = default;
  /// Passes the text on to a sink, which outlives the output, whenever there is much of it.
  explicit TextOutput(const ExportUtility::Sink& sink) : sink_(&sink) {}

  std::string text;

  /// The bytes of a body, in memory that serves one after the other: they stand until the next call.
  std::string_view bytesOf(const Content& content) {
    content_.clear();
    content.appendTo(content_);
    return content_;
  }

  void mayGo() {
    if (sink_ != nullptr && text.size() >= muchText) {
      go();
    }
  }
  /// Passes on what there is. Once more at the end, where there is a sink.
  void go() {
    (*sink_)(text);
    text.clear();
  }

 private:
  static constexpr std::size_t muchText = std::size_t{128} << 10U;
  const ExportUtility::Sink* sink_ = nullptr;
  std::string content_;
};

}  // namespace tidewrack
