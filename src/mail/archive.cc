#include "mail/archive.h"

#include "mail/charsets.h"
#include "mail/clean_text.h"

namespace tidewrack {
namespace {

// There are two or three of these to a message, so its size counts.
class SliceContent final : public ContentSource {
 public:
  enum class Form : std::uint8_t { data, text };

  SliceContent(std::shared_ptr<const Archive> archive, const ArchiveSlice& slice, Form form, Text charset,
               std::uint64_t size)
      : archive_(std::move(archive)), charset_(std::move(charset)), size_(size), slice_(slice), form_(form) {}

  [[nodiscard]] std::string bytes() const override {
    std::string bytes;
    appendTo(bytes);
    return bytes;
  }

  void appendTo(std::string& text) const override {
    std::string_view encoded = archive_->bytes().substr(slice_.offset, slice_.length);
    std::string cleaned;
    if (!slice_.isClean) {
      cleaned = cleanText(encoded);
      encoded = cleaned;
    }
    const std::size_t before = text.size();
    appendTransfer(text, encoded, slice_.encoding);
    if (form_ == Form::data) {
      return;
    }
    if (const auto decoded = std::string_view(text).substr(before); !isUnchanged(decoded)) {
      text.replace(before, decoded.size(), decodeText(decoded, charset()));
    }
  }

  [[nodiscard]] std::uint64_t size() const override {
    if (size_ != unknownSize) {
      return size_;
    }
    return slice_.isClean && form_ == Form::data
               ? decodedSize(archive_->bytes().substr(slice_.offset, slice_.length), slice_.encoding)
               : bytes().size();
  }

 private:
  [[nodiscard]] std::optional<std::string_view> charset() const {
    return charset_.empty() ? std::nullopt : std::optional(charset_.view());
  }
  [[nodiscard]] bool isUnchanged(std::string_view decoded) const {
    return decodesUnchanged(decoded, charset());
  }

  std::shared_ptr<const Archive> archive_;
  Text charset_;
  std::uint64_t size_;
  ArchiveSlice slice_;
  Form form_;
};

}  // namespace

Content attachmentContent(const std::shared_ptr<const Archive>& archive, const ArchiveSlice& slice) {
  if (slice.length == 0) {
    return {};
  }
  const bool isKnown = slice.isClean && slice.encoding == TransferEncoding::identity;
  return Content(std::make_shared<SliceContent>(archive, slice, SliceContent::Form::data, Text(),
                                                isKnown ? slice.length : unknownSize));
}

Content textContent(const std::shared_ptr<const Archive>& archive, const ArchiveSlice& slice,
                    const Text& charset, std::uint64_t size) {
  if (size == 0) {
    return {};
  }
  return Content(std::make_shared<SliceContent>(archive, slice, SliceContent::Form::text, charset, size));
}

}  // namespace tidewrack
