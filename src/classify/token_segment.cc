#include "classify/token_segment.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <utility>

#include "classify/message_text.h"
#include "classify/token_segment_builder.h"
#include "classify/tokenizer.h"
#include "classify/variable_numbers.h"
#include "library/content_reading.h"
#include "platform/two_threads.h"

namespace tidewrack {
namespace {

using Messages = std::span<const std::shared_ptr<const EmailMessage>>;

// The messages of a list lie far apart, and their texts again. Asks the memory for those some steps behind
// `index`, so that they have come when it is their turn.
void prefetchBehind(Messages messages, std::size_t index) {
  constexpr std::size_t stepsToMessage = 8;
  constexpr std::size_t stepsToText = 4;
  constexpr std::size_t stepsToAddress = 2;
  constexpr std::size_t cacheLine = 64;
  if (index + stepsToMessage < messages.size()) {
    const auto* begin = reinterpret_cast<const char*>(messages[index + stepsToMessage].get());
    for (std::size_t at = 0; at < sizeof(EmailMessage); at += cacheLine) {
      __builtin_prefetch(begin + at);
    }
  }
  if (index + stepsToText < messages.size()) {
    const EmailMessage& message = *messages[index + stepsToText];
    for (const Text* text : {&message.id, &message.subject, &message.snippet}) {
      __builtin_prefetch(text->view().data());
    }
    for (const auto* body : {&message.plainBody, &message.htmlBody}) {
      if (*body) {
        __builtin_prefetch((*body)->source().get());
      }
    }
    __builtin_prefetch(message.to.data());
    __builtin_prefetch(message.cc.data());
    __builtin_prefetch(message.labels.data());
    __builtin_prefetch(message.from.address.view().data());
  }
  if (index + stepsToAddress < messages.size()) {
    const EmailMessage& message = *messages[index + stepsToAddress];
    const auto prefetchAddress = [](const EmailAddress& address) {
      __builtin_prefetch(address.address.view().data());
      if (address.name) {
        __builtin_prefetch(address.name->view().data());
      }
    };
    prefetchAddress(message.from);
    std::ranges::for_each(message.to, prefetchAddress);
    std::ranges::for_each(message.cc, prefetchAddress);
  }
}

/// The messages of a segment, of which each thread takes some at a time.
class Work {
 public:
  explicit Work(Messages messages) : messages_(messages), ids_(messages.size()) {}

  /// Collects until nothing is left.
  void collect(TokenSegmentBuilder& builder) {
    Tokenizer tokenizer;
    std::string room;
    for (std::size_t begin = next_.fetch_add(together); begin < messages_.size();
         begin = next_.fetch_add(together)) {
      const ContentReading reading;
      for (std::size_t i = begin; i < std::min(begin + together, messages_.size()); ++i) {
        prefetchBehind(messages_, i);
        ids_[i] = messages_[i]->id;
        builder.beginMessage(static_cast<std::uint32_t>(i));
        forEachSearchableText(*messages_[i], room, [&](std::string_view text) {
          tokenizer.forEachToken(text, [&](std::string_view token) { builder.addRoomyToken(token); });
          builder.settle();
        });
      }
    }
    builder.sort();
  }
  /// The ids of the messages, once all have been collected.
  [[nodiscard]] std::vector<Text> takeIDs() { return std::move(ids_); }

 private:
  static constexpr std::size_t together = 128;
  Messages messages_;
  std::vector<Text> ids_;
  std::atomic<std::size_t> next_ = 0;
};

}  // namespace

std::shared_ptr<const TokenSegment> TokenSegment::merge(std::span<const MergePart> parts, std::size_t count) {
  auto merged = std::make_shared<TokenSegment>();
  merged->messageIDs_.resize(count);
  for (const auto& part : parts) {
    for (std::size_t i = 0; i < part.newNumbers.size(); ++i) {
      if (part.newNumbers[i] != dropped) {
        merged->messageIDs_[part.newNumbers[i]] = part.segment->messageIDs_[i];
      }
    }
  }
  std::vector<std::size_t> next(parts.size(), 0);
  std::vector<std::uint32_t> numbers;
  while (true) {
    std::string_view smallest;
    bool any = false;
    for (std::size_t p = 0; p < parts.size(); ++p) {
      if (next[p] < parts[p].segment->tokenCount()) {
        const auto candidate = parts[p].segment->token(next[p]);
        if (!any || candidate < smallest) {
          smallest = candidate;
          any = true;
        }
      }
    }
    if (!any) {
      break;
    }
    numbers.clear();
    for (std::size_t p = 0; p < parts.size(); ++p) {
      if (next[p] < parts[p].segment->tokenCount() && parts[p].segment->token(next[p]) == smallest) {
        for (const auto old : parts[p].segment->messagesWith(next[p]++)) {
          if (parts[p].newNumbers[old] != dropped) {
            numbers.push_back(parts[p].newNumbers[old]);
          }
        }
      }
    }
    if (numbers.empty()) {
      continue;
    }
    std::ranges::sort(numbers);
    merged->tokenBytes_ += smallest;
    merged->tokenEnds_.push_back(merged->tokenBytes_.size());
    std::uint32_t previous = 0;
    for (const auto number : numbers) {
      appendNumber(merged->postings_, number - previous);
      previous = number;
    }
    merged->postingEnds_.push_back(merged->postings_.size());
    merged->pairCount_ += numbers.size();
  }
  merged->shrinkToFit();
  return merged;
}

void TokenSegment::append(const TokenSegment& above) {
  const auto appendEnds = [](std::vector<std::uint64_t>& ends, std::span<const std::uint64_t> others,
                             std::size_t base) {
    ends.reserve(ends.size() + others.size());
    for (const auto end : others) {
      ends.push_back(base + end);
    }
  };
  appendEnds(tokenEnds_, above.tokenEnds_, tokenBytes_.size());
  appendEnds(postingEnds_, above.postingEnds_, postings_.size());
  tokenBytes_ += above.tokenBytes_;
  postings_ += above.postings_;
}

void TokenSegment::shrinkToFit() {
  tokenBytes_.shrink_to_fit();
  postings_.shrink_to_fit();
  tokenEnds_.shrink_to_fit();
  postingEnds_.shrink_to_fit();
}

std::string_view TokenSegment::token(std::size_t index) const {
  const auto begin = index == 0 ? 0 : tokenEnds_[index - 1];
  return std::string_view(tokenBytes_).substr(begin, tokenEnds_[index] - begin);
}

std::vector<std::uint32_t> TokenSegment::messagesWith(std::size_t tokenIndex) const {
  std::vector<std::uint32_t> numbers;
  readMessagesWith(tokenIndex, numbers);
  return numbers;
}

void TokenSegment::readMessagesWith(std::size_t tokenIndex, std::vector<std::uint32_t>& numbers) const {
  numbers.clear();
  std::size_t position = tokenIndex == 0 ? 0 : postingEnds_[tokenIndex - 1];
  std::uint32_t number = 0;
  while (position < postingEnds_[tokenIndex]) {
    number += readNumber(postings_, position);
    numbers.push_back(number);
  }
}

std::vector<std::uint32_t> TokenSegment::messagesWith(std::string_view wanted) const {
  std::size_t low = 0;
  std::size_t high = tokenCount();
  while (low < high) {
    const auto middle = low + (high - low) / 2;
    if (token(middle) < wanted) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low < tokenCount() && token(low) == wanted ? messagesWith(low) : std::vector<std::uint32_t>();
}

std::size_t TokenSegment::memory() const {
  return tokenBytes_.capacity() + postings_.capacity() +
         (tokenEnds_.capacity() + postingEnds_.capacity()) * sizeof(std::uint64_t);
}

std::shared_ptr<const TokenSegment> TokenSegment::build(Messages messages) {
  constexpr std::size_t worthTwoThreads = 256;
  Work work(messages);
  TokenSegmentBuilder first;
  if (messages.size() < worthTwoThreads) {
    work.collect(first);
    return first.finish(work.takeIDs());
  }
  TokenSegmentBuilder second;
  doTogether([&] { work.collect(first); }, [&] { work.collect(second); });
  return first.finishWith(second, work.takeIDs());
}

TokenSegmentLoader::TokenSegmentLoader() : segment_(std::make_shared<TokenSegment>()) {}

void TokenSegmentLoader::add(std::string_view token, std::span<const std::uint32_t> numbers) {
  auto& segment = *segment_;
  segment.tokenBytes_ += token;
  segment.tokenEnds_.push_back(segment.tokenBytes_.size());
  std::uint32_t last = 0;
  // Room for the longest form of each; one byte each is the rule.
  auto& postings = segment.postings_;
  const std::size_t before = postings.size();
  if (postings.capacity() < before + numbers.size() * longestNumber) {
    postings.reserve((before + numbers.size() * longestNumber) * 2);
  }
  postings.resize(before + numbers.size() * longestNumber);
  char* end = postings.data() + before;
  for (const auto number : numbers) {
    end = writeNumber(end, number - last);
    last = number;
  }
  postings.resize(static_cast<std::size_t>(end - postings.data()));
  segment.postingEnds_.push_back(postings.size());
  segment.pairCount_ += numbers.size();
}

std::shared_ptr<const TokenSegment> TokenSegmentLoader::finish(std::vector<Text> messageIDs) {
  segment_->messageIDs_ = std::move(messageIDs);
  segment_->shrinkToFit();
  return std::exchange(segment_, std::make_shared<TokenSegment>());
}

}  // namespace tidewrack
