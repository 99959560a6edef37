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

// Bytes of a text, as it stands in the message, that are looked at first. Most previews need less.
constexpr std::size_t beginningSize = 1024;

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

// The text of a message is valid UTF-8 as it stands.
bool needsNoDecoding(TransferEncoding encoding, UnchangedBytes unchanged) {
  return encoding == TransferEncoding::identity && unchanged == UnchangedBytes::validUTF8;
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
  kept = {{}, {}, true, range.in(message.text), encoding, pooled(charset.value_or(""), pool_)};
  if (!decodeBeginning(kept)) {
    decodeWhole(kept);
  }
  if (kept.text->empty() && place == LeafPlace::part) {
    kept = {};
    return;
  }
  result = textContent(message.archive, sliceOf(message, range, encoding), kept.charset,
                       kept.isWhole ? kept.text->size() : unknownSize);
}

// Gives the body its beginning, if it tells that there is a text at all. As long as the beginning is of ASCII
// alone it is that of the text, too; what follows decides how other bytes are decoded. False where only the
// whole can tell.
bool BodyWalk::decodeBeginning(BodyText& body) {
  const auto unchanged = unchangedBytes(body.charsetName());
  if (body.encoded.size() <= beginningSize || body.encoding == TransferEncoding::base64 ||
      unchanged == UnchangedBytes::none || needsNoDecoding(body.encoding, unchanged)) {
    return false;
  }
  std::string_view beginning = body.encoded.substr(0, beginningSize);
  if (body.encoding == TransferEncoding::quotedPrintable) {
    // An escape at the end might be cut in two.
    constexpr std::size_t longestEscape = 3;
    beginning = beginning.substr(0, beginning.find('=', beginningSize - longestEscape + 1));
    body.decoded = decodeQuotedPrintable(beginning);
    beginning = body.decoded;
  }
  // Whatever may follow: where only ASCII is sure to stay as it is, that is how the text has to begin.
  if (beginning.empty() || (unchanged == UnchangedBytes::ascii && !isASCII(beginning.substr(0, 1)))) {
    return false;
  }
  body.text = beginning;
  body.isWhole = false;
  return true;
}

void BodyWalk::decodeWhole(BodyText& body) {
  std::string_view text = body.encoded;
  if (body.encoding != TransferEncoding::identity) {
    body.decoded = decodeTransfer(text, body.encoding);
    text = body.decoded;
  }
  const auto charset = body.charsetName();
  if (!needsNoDecoding(body.encoding, unchangedBytes(charset)) && !decodesUnchanged(text, charset)) {
    body.decoded = decodeText(text, charset);
    text = body.decoded;
  }
  body.text = text;
  body.isWhole = true;
}

std::string BodyWalk::snippet() {
  const bool isPlain = plain_.text && !plain_.text->empty();
  BodyText& used = isPlain ? plain_ : html_;
  if (!used.isWhole && isPlain && isASCII(*used.text)) {
    auto snippet = makeSnippet(used.text, std::nullopt);
    // Each character is one byte, so that a snippet which has been cut is longer than the longest.
    if (snippet.size() > longestSnippet) {
      return snippet;
    }
  }
  if (!used.isWhole) {
    decodeWhole(used);
  }
  return makeSnippet(plain_.text, html_.text);
}

}  // namespace tidewrack
