#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

/// The words of some messages, immutable once built: sorted tokens in one block of bytes, and for each the
/// ascending numbers of its messages as differences of variable length (seven bits a byte, low bits first).
/// A message's number is its place in `messageIDs`. Safe to read from any thread.
class TokenSegment {
 public:
  /// Reads and tokenises each message once.
  static std::shared_ptr<const TokenSegment> build(
      std::span<const std::shared_ptr<const EmailMessage>> messages);

  /// One part of a merge: a segment, and for each of its messages the number in the result, or `dropped`.
  struct MergePart {
    const TokenSegment* segment;
    std::span<const std::uint32_t> newNumbers;
  };
  static constexpr std::uint32_t dropped = 0xFFFFFFFF;
  /// One segment with the messages of several. The new numbers are distinct and cover 0 to count - 1.
  static std::shared_ptr<const TokenSegment> merge(std::span<const MergePart> parts, std::size_t count);

  [[nodiscard]] const std::vector<Text>& messageIDs() const { return messageIDs_; }
  [[nodiscard]] std::size_t tokenCount() const { return tokenEnds_.size(); }
  /// Number of (token, message) pairs.
  [[nodiscard]] std::uint64_t pairCount() const { return pairCount_; }
  [[nodiscard]] std::string_view token(std::size_t index) const;
  /// The numbers of the messages that hold a token, ascending; none for an unknown token.
  [[nodiscard]] std::vector<std::uint32_t> messagesWith(std::string_view token) const;
  [[nodiscard]] std::vector<std::uint32_t> messagesWith(std::size_t tokenIndex) const;
  /// The same in place of what `numbers` holds, whose memory serves again.
  void readMessagesWith(std::size_t tokenIndex, std::vector<std::uint32_t>& numbers) const;
  /// Bytes held, message ids left out.
  [[nodiscard]] std::size_t memory() const;

 private:
  friend class TokenSegmentBuilder;
  friend class TokenSegmentLoader;

  /// Puts the tokens of another segment of the same messages, all above the own ones, behind them.
  void append(const TokenSegment& above);
  void shrinkToFit();

  std::vector<Text> messageIDs_;
  std::string tokenBytes_;
  std::vector<std::uint64_t> tokenEnds_;  // Where each token ends in tokenBytes_.
  std::string postings_;
  std::vector<std::uint64_t> postingEnds_;  // Where the numbers of each token end in postings_.
  std::uint64_t pairCount_ = 0;
};

/// Takes in tokens that come sorted.
class TokenSegmentLoader {
 public:
  TokenSegmentLoader();
  /// The next token, above the one before, and the ascending numbers of its messages.
  void add(std::string_view token, std::span<const std::uint32_t> numbers);
  [[nodiscard]] std::shared_ptr<const TokenSegment> finish(std::vector<Text> messageIDs);

 private:
  std::shared_ptr<TokenSegment> segment_;
};

}  // namespace tidewrack
