#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tidewrack {

/// Writes JSON (RFC 8259), pretty printed with two blanks a level, an empty list as "[]". The text goes to a
/// sink piece by piece, so that a list of any length takes no memory. What belongs where is up to the caller.
class JSONWriter {
 public:
  /// The sink takes the next bytes of the text, and may throw; it outlives the writer.
  explicit JSONWriter(const std::function<void(std::string_view)>& sink) : sink_(sink) {}

  void beginObject() { begin('{'); }
  void endObject() { end('}'); }
  void beginList() { begin('['); }
  void endList() { end(']'); }
  /// The next element of a list, whose value follows.
  void element();
  /// The next key of an object, in plain ASCII, whose value follows.
  void key(std::string_view name);
  /// Valid UTF-8.
  void string(std::string_view value);
  /// Bytes as a string of Base64.
  void base64(std::string_view bytes);
  void boolean(bool value) { text_ += value ? "true" : "false"; }
  /// Gives to the sink what it has not got yet. Before the end.
  void flush();

 private:
  void begin(char bracket);
  void end(char bracket);
  void newLine();
  void flushWhenLarge();

  const std::function<void(std::string_view)>& sink_;
  std::string text_;
  std::size_t level_ = 0;
  bool isEmpty_ = true;  ///< Nothing stands yet between the brackets that were opened last.
};

}  // namespace tidewrack
