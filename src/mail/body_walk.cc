#include "mail/body_walk.h"

#include <utility>

#include "mail/ascii.h"
#include "mail/charsets.h"
#include "mail/clean_text.h"
#include "mail/headers.h"
#include "mail/transfer_decoding.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

// Nesting for which memory is kept for the next message.
constexpr std::size_t keptLevels = 256;

TransferEncoding encodingOf(const KnownHeaders& headers) {
  const auto value = headers[KnownHeader::contentTransferEncoding];
  return value ? transferEncoding(lowercase(*value)) : TransferEncoding::identity;
}

std::string_view contentTypeOf(const KnownHeaders& headers) {
  return headers[KnownHeader::contentType].value_or("text/plain");
}

bool isMultipart(const KnownHeaders& headers) {
  return containsIgnoringCase(contentTypeOf(headers), "multipart/");
}

ArchiveSlice sliceOf(const CleanMessage& message, TextRange range, TransferEncoding encoding) {
  if (message.rawOffsets == nullptr) {
    return {message.offset + range.begin, range.end - range.begin, true, encoding};
  }
  const std::size_t begin = message.rawOffsets->rawOffset(range.begin);
  const std::size_t end = message.rawOffsets->rawOffset(range.end);
  return {message.offset + begin, end - begin, false, encoding};
}

}  // namespace

std::optional<std::string_view> multipartBoundary(const KnownHeaders& headers) {
  const auto boundary =
      isMultipart(headers) ? headerParameter("boundary", contentTypeOf(headers)) : std::nullopt;
  return boundary && !boundary->empty() ? boundary : std::nullopt;
}

ParsedBody BodyWalk::walk(const CleanMessage& message, TextRange range, const KnownHeaders& headers) {
  result_ = ParsedBody();
  plain_ = BodyText();
  html_ = BodyText();
  const auto boundary = multipartBoundary(headers);
  if (!boundary) {
    leaf(message, range, headers, LeafPlace::wholeBody);
  } else {
    delimiters_.collect(message.text, range.begin);
    levels_.emplace_back(delimiters_, range, *boundary);
    walkLevels(message);
  }
  return std::move(result_);
}

void BodyWalk::walkLevels(const CleanMessage& message) {
  while (!levels_.empty()) {
    const auto part = levels_.back().nextPart();
    if (!part) {
      levels_.pop_back();
      continue;
    }
    const TextRange range{part->begin + partHeaders_.read(part->in(message.text)), part->end};
    if (const auto boundary = multipartBoundary(partHeaders_)) {
      levels_.emplace_back(delimiters_, range, *boundary);
    } else {
      leaf(message, range, partHeaders_, LeafPlace::part);
    }
  }
  if (levels_.capacity() > keptLevels) {
    levels_ = {};
  }
}

void BodyWalk::leaf(const CleanMessage& message, TextRange range, const KnownHeaders& headers,
                    LeafPlace place) {
  if (isMultipart(headers)) {  // without a boundary: its text as it stands
    body(message, range, TransferEncoding::identity, std::nullopt, place, plain_, result_.plainBody);
    return;
  }
  const std::string_view contentType = contentTypeOf(headers);
  const TransferEncoding encoding = encodingOf(headers);
  const std::string_view disposition = headers[KnownHeader::contentDisposition].value_or("");
  const auto contentID = cleanReference(headers[KnownHeader::contentID]);
  const bool isHTML = containsIgnoringCase(contentType, "text/html");
  const bool isText = isHTML || containsIgnoringCase(contentType, "text/plain");
  const bool isAttachment = containsIgnoringCase(disposition, "attachment");
  const bool isInline = contentID || containsIgnoringCase(disposition, "inline");

  std::optional<std::string> fileName;
  if (isAttachment || !isText) {
    fileName = attachmentFileName(headers);
  }
  if (!isAttachment && (isText || (!isInline && !fileName))) {
    body(message, range, encoding, headerParameter("charset", contentType), place, isHTML ? html_ : plain_,
         isHTML ? result_.htmlBody : result_.plainBody);
    return;
  }
  EmailAttachment& attachment = result_.attachments.emplace_back();
  attachment.id = UUID::make();
  if (fileName && !fileName->empty()) {
    attachment.fileName = *fileName;
  } else {
    attachment.fileName = contentID ? Text(*contentID) : Text("attachment-" + UUID::make().string());
  }
  attachment.mimeType = pooled(contentType, pool_);
  attachment.data = attachmentContent(message.archive, sliceOf(message, range, encoding));
  if (contentID) {
    attachment.contentID = Text(*contentID);
  }
  attachment.isInline = isInline;
}

void BodyWalk::body(const CleanMessage& message, TextRange range, TransferEncoding encoding,
                    std::optional<std::string_view> charset, LeafPlace place, BodyText& kept,
                    std::optional<Content>& result) {
  if (result) {
    return;  // Only the first one counts, so the others need no decoding.
  }
  std::string_view text = range.in(message.text);
  std::string decoded;
  if (encoding != TransferEncoding::identity) {
    decoded = decodeTransfer(text, encoding);
    text = decoded;
  }
  // The text of a message is valid UTF-8 as it stands.
  const bool isUnchanged =
      encoding == TransferEncoding::identity && unchangedBytes(charset) == UnchangedBytes::validUTF8;
  if (!isUnchanged && !decodesUnchanged(text, charset)) {
    decoded = decodeText(text, charset);
    text = decoded;
  }
  if (text.empty() && place == LeafPlace::part) {
    return;
  }
  const bool isDecoded = text.data() == decoded.data();
  result = textContent(message.archive, sliceOf(message, range, encoding),
                       pooled(charset.value_or(""), pool_), text.size());
  kept.decoded = std::move(decoded);
  kept.text = isDecoded ? std::string_view(kept.decoded) : text;
}

std::string BodyWalk::snippet() const {
  return makeSnippet(plain_.text, html_.text);
}

}  // namespace tidewrack
