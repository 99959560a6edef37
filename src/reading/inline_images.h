#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

/// One attachment that an HTML body can refer to. The list and its texts outlive the call that takes it.
struct InlineImage {
  std::string_view contentID;  ///< Not empty.
  std::string_view mimeType;
  const Content* data;
};

/// The attachments that take part, in order: inline, with a Content-ID.
std::vector<InlineImage> inlineImages(const EmailMessage& message);

/// The text after these replacements, image after image: every "cid:ID" and then every "cid:<ID>" by
/// "data:TYPE;base64,BYTES". Each image is read once, and only when the text refers to it. A result of more
/// than `maximumSize` bytes is not made: the text stays as it is. Throws what reading an image throws.
std::string replaceInlineImages(std::string html, const std::vector<InlineImage>& images,
                                std::size_t maximumSize = std::size_t{512} << 20U);

/// The same, done literally: one pass over the whole text for each of the replacements. It serves the rare
/// texts in which one replacement could bring forth, or destroy, a place of another. Nobody writes such a
/// text but to cause work, so one that takes passes over more than `maximumWork` bytes stays as it is.
std::string replaceInlineImagesOneByOne(std::string html, const std::vector<InlineImage>& images,
                                        std::size_t maximumSize = std::size_t{512} << 20U,
                                        std::uint64_t maximumWork = std::uint64_t{8} << 30U);

}  // namespace tidewrack
