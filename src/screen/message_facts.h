#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "classify/label_sets.h"
#include "platform/date.h"
#include "platform/text_numbers.h"
#include "screen/shared_message_list.h"

namespace tidewrack {

/// What filters and counts need to know of each message of a list, as small numbers side by side: a filter
/// over a million messages goes through a few megabytes in order instead of following a million pointers.
/// Immutable; safe from any thread. Lists that differ in few messages share all but what these say.
class MessageFacts {
 public:
  /// Bits of `Chunk::flags`.
  static constexpr std::uint8_t hasAttachments = 1U << 0U;
  static constexpr std::uint8_t hasHTML = 1U << 1U;
  static constexpr std::uint8_t hasConversation = 1U << 2U;
  static constexpr std::uint8_t hasDate = 1U << 3U;
  static constexpr std::uint8_t isMedium = 1U
                                           << 4U;  ///< By its attachments; neither this nor the next: small.
  static constexpr std::uint8_t isLarge = 1U << 5U;
  static constexpr std::uint32_t none = static_cast<std::uint32_t>(-1);

  /// The messages of one chunk of the list, in its order.
  struct Chunk {
    std::uint32_t size = 0;
    std::array<LabelSets::Number, SharedMessageList::chunkSize> labels;
    std::array<std::uint32_t, SharedMessageList::chunkSize> libraries;
    std::array<std::uint32_t, SharedMessageList::chunkSize> conversations;
    std::array<std::uint32_t, SharedMessageList::chunkSize> categories;  ///< `none` without a category.
    std::array<Date, SharedMessageList::chunkSize> dates;
    std::array<std::uint8_t, SharedMessageList::chunkSize> flags;
  };

  /// The facts of a list that is no part. Looks at each message once; no body and no attachment is read.
  static std::shared_ptr<const MessageFacts> of(const SharedMessageList& list);
  /// The facts of `list`, which differs from this one's list only at `positions`. Null when a message there
  /// has another id, library or conversation than its predecessor.
  [[nodiscard]] std::shared_ptr<const MessageFacts> replacing(const SharedMessageList& list,
                                                              const Positions& positions) const;

  /// The list that these are the facts of.
  [[nodiscard]] const SharedMessageList& list() const { return list_; }
  [[nodiscard]] std::size_t size() const { return list_.size(); }
  [[nodiscard]] const std::vector<std::shared_ptr<const Chunk>>& chunks() const { return chunks_; }
  [[nodiscard]] const Chunk& chunkOf(std::uint32_t position) const {
    return *chunks_[position / SharedMessageList::chunkSize];
  }
  /// What the numbers in the chunks stand for.
  [[nodiscard]] const LabelSets& labels() const { return *labels_; }
  [[nodiscard]] const TextNumbers& libraries() const { return *libraries_; }
  [[nodiscard]] const std::shared_ptr<const TextNumbers>& conversations() const { return conversations_; }
  [[nodiscard]] const TextNumbers& categories() const { return *categories_; }

  /// Where the first message with this id stands, if there is one.
  [[nodiscard]] std::optional<std::uint32_t> positionOf(std::string_view id) const;
  /// Where the messages with these ids stand.
  [[nodiscard]] Positions positionsOf(const std::unordered_set<Text>& ids) const;
  /// Where the messages stand whose id another one has as well.
  [[nodiscard]] const Positions& repeated() const { return *repeated_; }

 private:
  class Builder;

  SharedMessageList list_;
  std::vector<std::shared_ptr<const Chunk>> chunks_;
  std::shared_ptr<const LabelSets> labels_;
  std::shared_ptr<const TextNumbers> libraries_;
  std::shared_ptr<const TextNumbers> conversations_;
  std::shared_ptr<const TextNumbers> categories_;
  std::shared_ptr<const TextNumbers> ids_;
  std::shared_ptr<const Positions> firstOfID_;  ///< By the number of the id; null when that is the place.
  std::shared_ptr<const Positions> repeated_;
};

}  // namespace tidewrack
