#include "reading/inline_images.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <unordered_map>

#include "platform/huge_pages.h"
#include "reading/base64_writer.h"
#include "reading/html_document.h"

namespace tidewrack {
namespace {

constexpr std::string_view scheme = "cid:";
constexpr auto notFound = std::string_view::npos;
constexpr std::size_t bytesOfPiece = 6144;  // A multiple of three, so that only the last piece has padding.

std::size_t findPart(std::string_view text, std::string_view part, std::size_t from) {
  if (from >= text.size()) {
    return notFound;
  }
  const void* place = memmem(text.data() + from, text.size() - from, part.data(), part.size());
  return place == nullptr ? notFound
                          : static_cast<std::size_t>(static_cast<const char*>(place) - text.data());
}

std::size_t urlSize(const InlineImage& image, std::size_t byteCount) {
  return std::strlen("data:;base64,") + image.mimeType.size() + base64Size(byteCount);
}

void appendURL(std::string& text, const InlineImage& image, std::string_view bytes) {
  text += "data:";
  text += image.mimeType;
  text += ";base64,";
  // Piece by piece through the processor's cache: so the long text is written once, not filled with
  // zeros before.
  std::array<char, base64Size(bytesOfPiece)> piece{};
  while (!bytes.empty()) {
    const auto part = bytes.substr(0, bytesOfPiece);
    writeBase64(part, piece.data());
    text.append(piece.data(), base64Size(part.size()));
    bytes.remove_prefix(part.size());
  }
}

/// What may stand behind "cid:", in byte order, so that reading a reference narrows a range of the list.
class References {
 public:
  struct Entry {
    std::string text;      ///< "ID" or "<ID>".
    std::size_t sequence;  ///< Place among all replacements; of equal texts the first counts.
  };

  explicit References(const std::vector<InlineImage>& images) {
    entries_.reserve(2 * images.size());
    for (const auto& image : images) {
      entries_.push_back({std::string(image.contentID), entries_.size()});
      entries_.push_back({"<" + std::string(image.contentID) + ">", entries_.size()});
    }
    std::stable_sort(entries_.begin(), entries_.end(),
                     [](const Entry& a, const Entry& b) { return a.text < b.text; });
    const auto last = std::unique(entries_.begin(), entries_.end(),
                                  [](const Entry& a, const Entry& b) { return a.text == b.text; });
    entries_.erase(last, entries_.end());
  }

  struct Found {
    const Entry* entry = nullptr;    ///< The first replacement that fits; null for none.
    bool reachesNextScheme = false;  ///< Some entry goes on where the next "cid:" of the text begins.
  };

  /// Reads the text behind one "cid:" as far as any entry goes, at most up to the next one.
  [[nodiscard]] Found read(std::string_view text) const {
    Found found;
    auto low = entries_.begin();
    auto high = entries_.end();
    for (std::size_t depth = 0; low != high; ++depth) {
      if (low->text.size() == depth) {  // A text sorts before the texts that it begins.
        if (found.entry == nullptr || low->sequence < found.entry->sequence) {
          found.entry = &*low;
        }
        ++low;
      }
      const bool isAtEnd = depth == text.size();
      // At the next "cid:" a replacement may later put "data:" there, or an entry may hold "cid:" itself.
      for (const char byte : isAtEnd ? std::string_view("cd") : text.substr(depth, 1)) {
        const auto [from, to] = std::equal_range(low, high, byte, Less{depth});
        if (isAtEnd) {
          found.reachesNextScheme = found.reachesNextScheme || from != to;
        } else {
          low = from;
          high = to;
        }
      }
      if (isAtEnd) {
        break;
      }
    }
    return found;
  }

 private:
  // Compares entries with a byte at one depth; every entry in the range is longer than the depth.
  struct Less {
    std::size_t depth;
    static unsigned char value(char byte) { return static_cast<unsigned char>(byte); }
    bool operator()(const Entry& entry, char byte) const { return value(entry.text[depth]) < value(byte); }
    bool operator()(char byte, const Entry& entry) const { return value(byte) < value(entry.text[depth]); }
  };

  std::vector<Entry> entries_;
};

/// One reference in the text and the image that replaces it.
struct Match {
  std::size_t begin;
  std::size_t end;
  std::size_t image;
};

/// Every reference, found in one pass; nothing when the order of the replacements could matter.
std::optional<std::vector<Match>> findMatches(std::string_view html, const std::vector<InlineImage>& images) {
  const References references(images);
  std::vector<Match> matches;
  std::size_t next = 0;
  for (auto begin = findPart(html, scheme, 0); begin != notFound; begin = next) {
    const auto behindScheme = begin + scheme.size();
    next = findPart(html, scheme, behindScheme);
    // The text up to the next "cid:", and into it, because a match may not overlap that one.
    const auto readable = html.substr(behindScheme, std::min(next, html.size()) - behindScheme);
    const auto found = references.read(readable);
    if (found.reachesNextScheme && next != notFound) {
      return std::nullopt;
    }
    if (found.entry != nullptr) {
      const auto image = found.entry->sequence / 2;
      if (findPart(images[image].mimeType, scheme, 0) != notFound) {
        return std::nullopt;
      }
      matches.push_back({begin, behindScheme + found.entry->text.size(), image});
    }
  }
  return matches;
}

/// Whether the end of a URL and what follows it make a new "cid:".
bool makesReference(std::string_view url, std::string_view following) {
  return (url.ends_with("c") && following.starts_with("id:")) ||
         (url.ends_with("ci") && following.starts_with("d:")) ||
         (url.ends_with("cid") && following.starts_with(":"));
}

/// The text with all matches replaced; nothing when a URL's end makes a new reference.
std::optional<std::string> replaceMatches(std::string_view html, const std::vector<Match>& matches,
                                          const std::vector<InlineImage>& images, std::size_t size) {
  std::string result;
  result.reserve(size);
  adviseHugePages(result.data(), size);
  std::unordered_map<std::size_t, std::pair<std::size_t, std::size_t>> written;  // image: begin and size
  std::size_t position = 0;
  for (const auto& match : matches) {
    result += html.substr(position, match.begin - position);
    const auto begin = result.size();
    if (const auto earlier = written.find(match.image); earlier != written.end()) {
      result.append(result, earlier->second.first, earlier->second.second);
    } else {
      appendURL(result, images[match.image], images[match.image].data->bytes());
      written.emplace(match.image, std::pair(begin, result.size() - begin));
    }
    position = match.end;
    if (makesReference(std::string_view(result).substr(begin), html.substr(position, scheme.size()))) {
      return std::nullopt;
    }
  }
  result += html.substr(position);
  return result;
}

/// The size of the text with all matches replaced, or notFound when it is above the maximum.
std::size_t sizeAfter(std::size_t size, const std::vector<Match>& matches,
                      const std::vector<InlineImage>& images, std::size_t maximumSize) {
  std::unordered_map<std::size_t, std::size_t> sizes;
  for (const auto& match : matches) {
    auto known = sizes.find(match.image);
    if (known == sizes.end()) {
      const auto& image = images[match.image];
      known = sizes.emplace(match.image, urlSize(image, image.data->size())).first;
    }
    size = size - (match.end - match.begin) + known->second;
    if (size > maximumSize) {
      return notFound;
    }
  }
  return size;
}

}  // namespace

std::vector<InlineImage> inlineImages(const EmailMessage& message) {
  std::vector<InlineImage> images;
  for (const auto& attachment : message.attachments) {
    if (attachment.isInline && attachment.contentID && !attachment.contentID->empty()) {
      images.push_back({attachment.contentID->view(), attachment.mimeType.view(), &attachment.data});
    }
  }
  return images;
}

std::string replaceInlineImages(std::string html, const std::vector<InlineImage>& images,
                                std::size_t maximumSize) {
  if (images.empty()) {
    return html;
  }
  const auto matches = findMatches(html, images);
  if (!matches) {
    return replaceInlineImagesOneByOne(std::move(html), images, maximumSize);
  }
  if (matches->empty()) {
    return html;
  }
  const auto size = sizeAfter(html.size(), *matches, images, maximumSize);
  if (size == notFound) {
    return html;
  }
  auto result = replaceMatches(html, *matches, images, size);
  return result ? std::move(*result) : replaceInlineImagesOneByOne(std::move(html), images, maximumSize);
}

std::string replaceInlineImagesOneByOne(std::string html, const std::vector<InlineImage>& images,
                                        std::size_t maximumSize, std::uint64_t maximumWork) {
  std::string text = html;
  std::uint64_t work = 0;
  for (const auto& image : images) {
    std::optional<std::string> url;
    const std::string id(image.contentID);
    for (const auto& reference : {"cid:" + id, "cid:<" + id + ">"}) {
      work += text.size();
      if (work > maximumWork) {
        return html;
      }
      std::vector<std::size_t> places;
      for (auto place = findPart(text, reference, 0); place != notFound;
           place = findPart(text, reference, place + reference.size())) {
        places.push_back(place);
      }
      if (places.empty()) {
        continue;
      }
      if (!url) {
        url.emplace();
        appendURL(*url, image, image.data->bytes());
      }
      if (url->size() > maximumSize || places.size() > maximumSize / url->size() ||
          text.size() + places.size() * url->size() > maximumSize) {
        return html;
      }
      std::string replaced;
      replaced.reserve(text.size() + places.size() * url->size());
      std::size_t position = 0;
      for (const auto place : places) {
        replaced.append(text, position, place - position);
        replaced += *url;
        position = place + reference.size();
      }
      replaced.append(text, position);
      text = std::move(replaced);
    }
  }
  return text;
}

bool hasInlineReferences(const EmailMessage& message) {
  return !inlineImages(message).empty();
}

ResolvedHTML resolveInlineHTML(const EmailMessage& message) {
  if (!message.htmlBody) {
    return {};
  }
  std::string html = message.htmlBody->bytes();
  const auto hint = appearanceHint(html);
  return {replaceInlineImages(std::move(html), inlineImages(message)), hint};
}

}  // namespace tidewrack
