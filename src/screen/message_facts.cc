#include "screen/message_facts.h"

#include <algorithm>
#include <utility>

#include "classify/search_filters.h"
#include "platform/two_threads.h"

namespace tidewrack {
namespace {

constexpr std::size_t worthASecondThread = 50'000;  // messages

std::uint8_t flagsOf(const EmailMessage& message) {
  unsigned flags = 0;
  if (!message.attachments.empty()) {
    flags |= MessageFacts::hasAttachments;
    const SizeFilter size = sizeClass(message);
    flags |= size == SizeFilter::medium ? MessageFacts::isMedium : 0U;
    flags |= size == SizeFilter::large ? MessageFacts::isLarge : 0U;
  }
  flags |= message.htmlBody ? MessageFacts::hasHTML : 0U;
  flags |= message.conversationID.empty() ? 0U : MessageFacts::hasConversation;
  flags |= message.date ? MessageFacts::hasDate : 0U;
  return static_cast<std::uint8_t>(flags);
}

// A table that may be added to: the copy of a shared one, made when it is first needed.
template <typename Table>
class CopyOnWrite {
 public:
  explicit CopyOnWrite(std::shared_ptr<const Table> shared) : shared_(std::move(shared)) {}

  [[nodiscard]] const Table& read() const { return copy_ ? *copy_ : *shared_; }
  Table& write() {
    if (!copy_) {
      copy_ = std::make_shared<Table>(*shared_);
    }
    return *copy_;
  }
  [[nodiscard]] std::shared_ptr<const Table> result() const { return copy_ ? copy_ : shared_; }

 private:
  std::shared_ptr<const Table> shared_;
  std::shared_ptr<Table> copy_;
};

}  // namespace

/// Fills the facts of a whole list, the tables of ids and conversations on a thread of their own: these are
/// half of the work.
class MessageFacts::Builder {
 public:
  explicit Builder(const SharedMessageList& list) : list_(list) {
    for (const auto& messages : list.chunks()) {
      auto chunk = std::make_shared<Chunk>();
      chunk->size = static_cast<std::uint32_t>(messages->size());
      chunks_.push_back(std::move(chunk));
    }
  }

  std::shared_ptr<const MessageFacts> build() {
    if (list_.size() < worthASecondThread) {
      fillIdentities();
      fillContents();
    } else {
      doTogether([this] { fillContents(); }, [this] { fillIdentities(); });
    }
    auto facts = std::make_shared<MessageFacts>();
    facts->list_ = list_;
    facts->chunks_.assign(chunks_.begin(), chunks_.end());
    facts->labels_ = std::move(labels_);
    facts->libraries_ = std::move(libraries_);
    facts->conversations_ = std::move(conversations_);
    facts->categories_ = std::move(categories_);
    facts->ids_ = std::move(ids_);
    facts->firstOfID_ = std::move(firstOfID_);
    facts->repeated_ = std::move(repeated_);
    return facts;
  }

 private:
  void fillIdentities() {
    ids_->reserve(list_.size());
    std::vector<bool> isRepeated;
    const auto messageAt = [this](std::size_t position) -> const EmailMessage& {
      constexpr auto size = SharedMessageList::chunkSize;
      return *(*list_.chunks()[position / size])[position % size];
    };
    ids_->numberEach(
        list_.size(), [&](std::size_t position) -> const Text& { return messageAt(position).id; },
        [&](std::size_t position, TextNumbers::Number id) {
          if (!firstOfID_ && id < position) {  // The first one that comes again.
            firstOfID_ = std::make_shared<Positions>();
            for (std::uint32_t number = 0; number < position; ++number) {
              firstOfID_->push_back(number);
            }
            isRepeated.resize(position);
          }
          if (firstOfID_ && id == firstOfID_->size()) {
            firstOfID_->push_back(static_cast<std::uint32_t>(position));
            isRepeated.push_back(false);
          } else if (firstOfID_) {
            isRepeated[id] = true;
          }
        });
    conversations_->numberEach(
        list_.size(), [&](std::size_t position) -> const Text& { return messageAt(position).conversationID; },
        [&](std::size_t position, TextNumbers::Number conversation) {
          chunks_[position / SharedMessageList::chunkSize]
              ->conversations[position % SharedMessageList::chunkSize] = conversation;
        });
    if (firstOfID_) {
      for (std::uint32_t position = 0; position < list_.size(); ++position) {
        if (isRepeated[*ids_->find(list_[position]->id)]) {
          repeated_->push_back(position);
        }
      }
    }
  }

  void fillContents() {
    Text library;
    std::uint32_t libraryNumber = none;
    for (std::size_t c = 0; c < chunks_.size(); ++c) {
      const MessageList& messages = *list_.chunks()[c];
      Chunk& chunk = *chunks_[c];
      for (std::size_t i = 0; i < messages.size(); ++i) {
        const EmailMessage& message = *messages[i];
        if (libraryNumber == none || message.sourceLibraryID != library) {
          library = message.sourceLibraryID;
          libraryNumber = libraries_->numberOf(library);
        }
        chunk.libraries[i] = libraryNumber;
        chunk.labels[i] = labels_->numberOf(message.labels);
        chunk.categories[i] = message.category ? categories_->numberOf(*message.category) : none;
        chunk.dates[i] = message.date.value_or(distantPast);
        chunk.flags[i] = flagsOf(message);
      }
    }
    labels_->sortNodes();
  }

  const SharedMessageList& list_;
  std::vector<std::shared_ptr<Chunk>> chunks_;
  std::shared_ptr<LabelSets> labels_ = std::make_shared<LabelSets>();
  std::shared_ptr<TextNumbers> libraries_ = std::make_shared<TextNumbers>();
  std::shared_ptr<TextNumbers> conversations_ = std::make_shared<TextNumbers>();
  std::shared_ptr<TextNumbers> categories_ = std::make_shared<TextNumbers>();
  std::shared_ptr<TextNumbers> ids_ = std::make_shared<TextNumbers>();
  std::shared_ptr<Positions> firstOfID_;
  std::shared_ptr<Positions> repeated_ = std::make_shared<Positions>();
};

std::shared_ptr<const MessageFacts> MessageFacts::of(const SharedMessageList& list) {
  return Builder(list).build();
}

std::shared_ptr<const MessageFacts> MessageFacts::replacing(const SharedMessageList& list,
                                                            const Positions& positions) const {
  auto facts = std::make_shared<MessageFacts>(*this);
  facts->list_ = list;
  CopyOnWrite labels(labels_);
  CopyOnWrite categories(categories_);
  std::shared_ptr<Chunk> chunk;
  std::size_t chunkNumber = 0;
  for (const std::uint32_t position : positions) {
    const EmailMessage& before = *list_[position];
    const EmailMessage& message = *list[position];
    if (message.id != before.id || message.sourceLibraryID != before.sourceLibraryID ||
        message.conversationID != before.conversationID) {
      return nullptr;
    }
    const std::size_t i = position % SharedMessageList::chunkSize;
    if (!chunk || chunkNumber != position / SharedMessageList::chunkSize) {
      chunkNumber = position / SharedMessageList::chunkSize;
      chunk = std::make_shared<Chunk>(*chunks_[chunkNumber]);
      facts->chunks_[chunkNumber] = chunk;
    }
    if (message.labels != before.labels) {
      chunk->labels[i] = labels.write().numberOf(message.labels);
    }
    chunk->categories[i] = none;
    if (message.category) {
      const auto known = categories.read().find(*message.category);
      chunk->categories[i] = known ? *known : categories.write().numberOf(*message.category);
    }
    chunk->dates[i] = message.date.value_or(distantPast);
    chunk->flags[i] = flagsOf(message);
  }
  if (labels.read().sortedNodes().size() != labels.read().nodes().size()) {
    labels.write().sortNodes();
  }
  facts->labels_ = labels.result();
  facts->categories_ = categories.result();
  return facts;
}

std::optional<std::uint32_t> MessageFacts::positionOf(std::string_view id) const {
  const auto number = ids_->find(id);
  return number && firstOfID_ ? (*firstOfID_)[*number] : number;
}

Positions MessageFacts::positionsOf(const std::unordered_set<Text>& ids) const {
  Positions positions;
  for (const Text& id : ids) {
    if (const auto position = positionOf(id)) {
      positions.push_back(*position);
    }
  }
  for (const std::uint32_t position : *repeated_) {
    if (ids.contains(list_[position]->id)) {
      positions.push_back(position);
    }
  }
  std::ranges::sort(positions);
  positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
  return positions;
}

}  // namespace tidewrack
