#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace tidewrack {

/// Where the bytes of a Content come from. Implementations are immutable and safe from any thread.
class ContentSource {
 public:
  virtual ~ContentSource() = default;
  /// All bytes, decoded or fetched now. A stored row that cannot be read throws StoreFailure.
  [[nodiscard]] virtual std::string bytes() const = 0;
  /// Puts all bytes behind a text, which spares them a memory of their own where the source can do without.
  /// After a failure the text may hold a part of them.
  virtual void appendTo(std::string& text) const { text += bytes(); }
  /// Their number. May cost a decode where nobody has counted before.
  [[nodiscard]] virtual std::uint64_t size() const = 0;
};

/// Heavy bytes of a message (a body as UTF-8 text, or attachment data): held in memory, an encoded slice of
/// a mapped archive, or a column of a stored row. Copying copies a pointer; the bytes are made when asked
/// for and belong to the caller. Equality and hash are by bytes. An empty Content holds no bytes.
class Content {
 public:
  Content() = default;
  explicit Content(std::shared_ptr<const ContentSource> source) : source_(std::move(source)) {}
  /// Bytes in memory.
  static Content ofBytes(std::string bytes);

  [[nodiscard]] std::string bytes() const { return source_ ? source_->bytes() : std::string(); }
  void appendTo(std::string& text) const {
    if (source_) {
      source_->appendTo(text);
    }
  }
  [[nodiscard]] std::uint64_t size() const { return source_ ? source_->size() : 0; }
  [[nodiscard]] const std::shared_ptr<const ContentSource>& source() const { return source_; }

  friend bool operator==(const Content& a, const Content& b);

 private:
  std::shared_ptr<const ContentSource> source_;
};

}  // namespace tidewrack

template <>
struct std::hash<tidewrack::Content> {
  std::size_t operator()(const tidewrack::Content& content) const;
};
