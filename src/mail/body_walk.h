#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mail/archive.h"
#include "mail/delimiter_lines.h"
#include "mail/known_headers.h"
#include "mail/mime.h"
#include "mail/text_pool.h"

namespace tidewrack {

class RawOffsets;

/// The boundary of a multipart; nothing when it has none, or when the headers are not those of a multipart.
std::optional<std::string_view> multipartBoundary(const KnownHeaders& headers);

/// A message as the parser sees it, and where it lies in its archive.
struct CleanMessage {
  std::string_view text;                   ///< Clean text of the whole message.
  std::shared_ptr<const Archive> archive;  ///< Holds the raw bytes of the text...
  std::size_t offset = 0;                  ///< ...at this place;
  RawOffsets* rawOffsets = nullptr;        ///< they are the text itself unless this is given.
};

/// Walks the MIME structure of a message. What it finds are slices of the archive; of a text that may become
/// a body no more is decoded than it takes to know that it is one, and for the preview. The depth of nesting
/// costs memory, but no stack. Made to be used again for the next
/// message, with the memory that it has. One thread at a time.
class BodyWalk {
 public:
  explicit BodyWalk(TextPool* pool) : pool_(pool) {}

  /// Walks the body at `range`, which ends with the text of the message, under its headers.
  ParsedBody walk(const CleanMessage& message, TextRange range, const KnownHeaders& headers);

  /// The preview of the message last walked, whose text must still be there.
  [[nodiscard]] std::string snippet();

 private:
  /// A body as it is known so far: a view of the message where nothing had to be decoded.
  struct BodyText {
    std::string decoded;
    std::optional<std::string_view> text;
    bool isWhole = true;       ///< Otherwise `text` is a beginning, without the charset, of:
    std::string_view encoded;  ///< a part of the message,
    TransferEncoding encoding = TransferEncoding::identity;
    Text charset;  ///< As the mail names it; empty for none.

    [[nodiscard]] std::optional<std::string_view> charsetName() const {
      return charset.empty() ? std::nullopt : std::optional(charset.view());
    }
  };
  enum class LeafPlace { wholeBody, part };

  void walkLevels(const CleanMessage& message);
  void leaf(const CleanMessage& message, TextRange range, const KnownHeaders& headers, LeafPlace place);
  void body(const CleanMessage& message, TextRange range, TransferEncoding encoding,
            std::optional<std::string_view> charset, LeafPlace place, BodyText& kept,
            std::optional<Content>& result);
  static bool decodeBeginning(BodyText& body);
  static void decodeWhole(BodyText& body);

  TextPool* pool_;
  DelimiterLines delimiters_;
  std::vector<MultipartCursor> levels_;
  KnownHeaders partHeaders_;
  BodyText plain_;
  BodyText html_;
  ParsedBody result_;
};

}  // namespace tidewrack
