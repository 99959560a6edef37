#pragma once

#include <string>
#include <string_view>

#include "export/text_output.h"

namespace tidewrack {

/// Writes JSON (RFC 8259), pretty printed with two blanks a level, an empty list as "[]". The text may go
/// piece by piece, so that a value of any size takes no memory. What belongs where is up to the caller.
class JSONWriter {
 public:
  /// Begins within `level` brackets. The output outlives the writer.
  JSONWriter(TextOutput& output, std::size_t level) : output_(output), text_(output.text), level_(level) {}

  [[nodiscard]] TextOutput& output() { return output_; }

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginList() { begin('['); }
  void endList() { end(']'); }
  /// The next element of a list, whose value follows; `firstElement` where none has come before it.
  void element();
  void firstElement();
  /// The next key of an object, in plain ASCII, whose value follows.
  void key(std::string_view name);
  /// Valid UTF-8.
  void string(std::string_view value);
  /// Bytes as a string of Base64.
  void base64(std::string_view bytes);
  void boolean(bool value) { text_ += value ? "true" : "false"; }

 private:
  void begin(char bracket);
  void end(char bracket);
  void newLine();

  TextOutput& output_;
  std::string& text_;
  std::size_t level_;
  bool isEmpty_ = false;  ///< Nothing stands yet between the brackets that were opened last.
};

}  // namespace tidewrack
