#include "mail/mime.h"

#include "mail/body_walk.h"
#include "mail/clean_text.h"

namespace tidewrack {

ParsedBody parseBody(std::string_view body, const HeaderMap& headers) {
  const KnownHeaders known(headers);
  // Only a multipart is read by lines; every other body is used as it stands.
  auto archive =
      std::make_shared<Archive>(multipartBoundary(known) ? withLineFeeds(body) : std::string(body));
  const CleanMessage message{archive->bytes(), archive};
  return BodyWalk(nullptr).walk(message, {0, message.text.size()}, known);
}

std::vector<std::string> splitMultipart(std::string_view body, std::string_view boundary) {
  const std::string text = withLineFeeds(body);
  DelimiterLines lines;
  lines.collect(text, 0);
  MultipartCursor cursor(lines, {0, text.size()}, boundary);
  std::vector<std::string> parts;
  while (const auto part = cursor.nextPart()) {
    parts.emplace_back(part->in(text));
  }
  return parts;
}

std::optional<std::string> attachmentFileName(const HeaderMap& headers) {
  return attachmentFileName(KnownHeaders(headers));
}

}  // namespace tidewrack
