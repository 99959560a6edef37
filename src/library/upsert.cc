#include "library/upsert.h"

#include <string_view>
#include <utility>

#include "library/stored_content.h"

namespace tidewrack {
namespace {

// How many messages are written between two words to the caller.
constexpr std::size_t progressStep = 64;

/// A writer whose statements come and go in the turn of the writing connection, as its every use does.
class Writer {
 public:
  explicit Writer(MessageStore::Writing& writing) : writing_(writing) {
    writing_.with([&](auto& connection) { writer_.emplace(connection, writing_.pieceSize()); });
  }
  ~Writer() {
    writing_.with([&](auto&) { writer_.reset(); });
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  template <typename Function>
  auto with(Function function) {
    return writing_.with([&](auto&) { return function(*writer_); });
  }

 private:
  MessageStore::Writing& writing_;
  std::optional<MessageWriter> writer_;
};

}  // namespace

Upsert::Upsert(const MessageList& messages) : messages_(messages), last_(messages.size()) {
  std::unordered_map<std::string_view, std::size_t> lastOfID;
  for (std::size_t place = messages.size(); place-- > 0;) {
    last_[place] = lastOfID.try_emplace(messages[place]->id.view(), place).first->second;
  }
  // The later record overwrites the earlier one, except its category when it has none itself.
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < messages.size(); ++place) {
    if (last_[place] == place) {
      places.push_back(place);
    } else if (messages[place]->category && !messages[last_[place]]->category) {
      earlierCategories_[last_[place]] = *messages[place]->category;
    }
  }
  written_.resize(messages.size());
  decoder_ = std::make_unique<DecodeAhead>(messages, std::move(places));
}

void Upsert::write(MessageStore::Writing& writing, const SaveProgress& progress) {
  Writer writer(writing);
  // All ids are looked up before the first row is written.
  std::vector<std::optional<std::int64_t>> rows(messages_.size());
  writer.with([&](MessageWriter& messageWriter) {
    for (std::size_t place = 0; place < messages_.size(); ++place) {
      if (last_[place] == place) {
        rows[place] = messageWriter.existingRow(messages_[place]->id);
      }
    }
  });
  std::size_t saved = 0;
  while (const auto decoded = decoder_->next()) {
    std::shared_ptr<const EmailMessage> message = messages_[decoded->index];
    if (const auto category = earlierCategories_.find(decoded->index); category != earlierCategories_.end()) {
      auto copy = std::make_shared<EmailMessage>(*message);
      copy->category = category->second;
      message = std::move(copy);
    }
    const auto& row = rows[decoded->index];
    written_[decoded->index] = writer.with([&](MessageWriter& messageWriter) {
      return row ? messageWriter.update(*row, *message, *decoded) : messageWriter.insert(*message, *decoded);
    });
    if (++saved % progressStep == 0 && progress) {
      progress(saved);
    }
  }
  writer.with([](MessageWriter& messageWriter) { messageWriter.removeObsolete(); });
  if (progress) {
    progress(messages_.size());
  }
}

void Upsert::refer(MessageList& messages, const std::shared_ptr<MessageStore>& store) const {
  const auto contentAt = [&](const ContentPlace& place) {
    return storedContent(store, place.number, place.size);
  };
  for (std::size_t place = messages.size(); place-- > 0;) {
    if (last_[place] != place) {
      messages[place] = messages[last_[place]];
      continue;
    }
    const WrittenContents& contents = written_[place];
    auto stored = std::make_shared<EmailMessage>(*messages[place]);
    if (contents.plainBody) {
      stored->plainBody = contentAt(*contents.plainBody);
    }
    if (contents.htmlBody) {
      stored->htmlBody = contentAt(*contents.htmlBody);
    }
    for (std::size_t index = 0; index < contents.attachments.size(); ++index) {
      stored->attachments[index].data = contentAt(contents.attachments[index]);
    }
    messages[place] = std::move(stored);
  }
}

}  // namespace tidewrack
