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
  /// Bytes held, message ids left out.
  [[nodiscard]] std::size_t memory() const;

 private:
  friend class TokenSegmentBuilder;
  friend class TokenSegmentLoader;

  std::vector<Text> messageIDs_;
  std::string tokenBytes_;
  std::vector<std::uint64_t> tokenEnds_;  // Where each token ends in tokenBytes_.
  std::string postings_;
  std::vector<std::uint64_t> postingEnds_;  // Where the numbers of each token end in postings_.
  std::uint64_t pairCount_ = 0;
};

/// Collects tokens message by message.
class TokenSegmentBuilder {
 public:
  TokenSegmentBuilder();
  ~TokenSegmentBuilder();
  TokenSegmentBuilder(const TokenSegmentBuilder&) = delete;
  TokenSegmentBuilder& operator=(const TokenSegmentBuilder&) = delete;

  /// Opens the next message; its tokens follow.
  void beginMessage(const Text& id);
  /// A token of the open message; one seen before in it is ignored.
  void addToken(std::string_view token);
  /// Puts everything that `next` has collected behind this builder's messages.
  void append(TokenSegmentBuilder& next);
  [[nodiscard]] std::shared_ptr<const TokenSegment> finish();

 private:
  struct Postings {
    std::string bytes;
    std::uint32_t first = 0;
    std::uint32_t last = 0;
    std::uint32_t count = 0;
  };
  struct Table;

  void addNumber(Postings& postings, std::uint32_t number);

  std::vector<Text> messageIDs_;
  std::unique_ptr<Table> table_;
  std::uint64_t pairCount_ = 0;
};

/// Takes in tokens that come sorted.
class TokenSegmentLoader {
 public:
  TokenSegmentLoader();
  /// A token not below the one before, and the ascending numbers of its messages. The same token again
  /// continues it, with greater numbers.
  void add(std::string_view token, std::span<const std::uint32_t> numbers);
  [[nodiscard]] std::shared_ptr<const TokenSegment> finish(std::vector<Text> messageIDs);

 private:
  std::shared_ptr<TokenSegment> segment_;
  std::uint32_t last_ = 0;
};

}  // namespace tidewrack
