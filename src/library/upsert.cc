#include "library/upsert.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

#include "library/stored_content.h"
#include "platform/failure.h"
#include "platform/text_numbers.h"

namespace tidewrack {
namespace {

// Rows of messages that are written before other threads may read through the writing connection again.
constexpr std::size_t rowsInATurn = 64;

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

/// For as long as many contents are being written, one behind the other. None of their pages is needed again,
/// and a small memory for them stays in that of the processor (measured: a fourteenth of an import).
class ContentsCache {
 public:
  explicit ContentsCache(MessageStore::Writing& writing) : writing_(writing) {
    constexpr std::int64_t size = std::int64_t{1} << 20U;
    writing_.setCacheSize(size);
  }
  ~ContentsCache() {
    try {
      writing_.setCacheSize(MessageStore::Writing::usualCacheSize);
    } catch (const StoreFailure&) {
      // Then the file cannot be written either, which is what counts.
    }
  }
  ContentsCache(const ContentsCache&) = delete;
  ContentsCache& operator=(const ContentsCache&) = delete;

 private:
  MessageStore::Writing& writing_;
};

// A record that may be changed: the given one where nobody else holds it (records are never made const, only
// handed round as such), otherwise a copy.
std::shared_ptr<EmailMessage> ownRecord(std::shared_ptr<const EmailMessage> message) {
  return message.use_count() == 1 ? std::const_pointer_cast<EmailMessage>(std::move(message))
                                  : std::make_shared<EmailMessage>(*message);
}

}  // namespace

Upsert::Upsert(const MessageList& messages) : messages_(messages), last_(messages.size()) {
  TextNumbers ids;
  ids.reserve(messages.size());
  std::vector<std::size_t> lastOfID;
  lastOfID.reserve(messages.size());
  const auto fromBack = [&](std::size_t index) { return messages.size() - 1 - index; };
  ids.numberEach(
      messages.size(), [&](std::size_t index) -> const Text& { return messages[fromBack(index)]->id; },
      [&](std::size_t index, TextNumbers::Number number) {
        if (number == lastOfID.size()) {
          lastOfID.push_back(fromBack(index));
        }
        last_[fromBack(index)] = lastOfID[number];
      });
  // The later record overwrites the earlier one, except its category when it has none itself.
  std::vector<std::size_t> places;
  for (std::size_t place = 0; place < messages.size(); ++place) {
    if (last_[place] == place) {
      places.push_back(place);
    } else if (messages[place]->category && !messages[last_[place]]->category) {
      earlierCategories_[last_[place]] = *messages[place]->category;
    }
  }
  replacedCount_ = messages.size() - places.size();
  written_.resize(messages.size());
  decoder_ = std::make_unique<DecodeAhead>(messages, std::move(places));
}

Upsert::~Upsert() {
  waitForOtherWork();
}

void Upsert::accompany(const WhileSaving& whileSaving) {
  if (whileSaving) {
    otherWork_ = std::thread([this, whileSaving] { workBeside(whileSaving); });
  }
}

void Upsert::workBeside(const WhileSaving& whileSaving) {
  // Writing takes longest, and decoding must stay ahead of it. Where there are but two cores this has what
  // they leave. On Linux a thread has a priority of its own, and so have those that it starts.
  constexpr int lower = 10;
  ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), lower);
  if (replacedCount_ == 0) {
    whileSaving(messages_);
    return;
  }
  MessageList written;
  written.reserve(messages_.size() - replacedCount_);
  forEachWritten([&](std::size_t place) { written.push_back(messages_[place]); });
  whileSaving(written);
}

void Upsert::waitForOtherWork() {
  if (otherWork_.joinable()) {
    otherWork_.join();
  }
}

template <typename Function>
void Upsert::forEachWritten(Function function) const {
  for (std::size_t place = 0; place < last_.size(); ++place) {
    if (last_[place] == place) {
      function(place);
    }
  }
}

void Upsert::write(MessageStore::Writing& writing, const SaveProgress& progress) {
  Writer writer(writing);
  // All ids are looked up before the first row is written.
  std::vector<std::optional<std::int64_t>> rows(messages_.size());
  const bool isFirst = writer.with([](MessageWriter& messageWriter) { return messageWriter.storeIsEmpty(); });
  if (!isFirst) {
    forEachWritten([&](std::size_t place) {
      rows[place] = writer.with(
          [&](MessageWriter& messageWriter) { return messageWriter.existingRow(messages_[place]->id); });
    });
  }
  // The contents are nearly all of the work, so the progress counts them.
  const auto writeContents = [&] {
    std::size_t saved = 0;
    for (auto batch = decoder_->next(); !batch.empty(); batch = decoder_->next()) {
      writer.with([&](MessageWriter& messageWriter) {
        for (const auto& decoded : batch) {
          written_[decoded.index] = messageWriter.writeContents(decoded);
        }
      });
      writing.sendAhead();
      saved += batch.size();
      if (progress) {
        progress(saved);
      }
    }
  };
  if (isSmall()) {
    writeContents();
  } else {
    const ContentsCache cache(writing);
    writeContents();
  }
  if (isFirst) {
    writer.with([](MessageWriter& messageWriter) { messageWriter.dropIndexes(); });
  }
  for (std::size_t begin = 0; begin < messages_.size(); begin += rowsInATurn) {
    writer.with([&](MessageWriter& messageWriter) {
      for (std::size_t place = begin; place < std::min(begin + rowsInATurn, messages_.size()); ++place) {
        if (last_[place] == place) {
          writeRow(messageWriter, rows[place], place);
        }
      }
    });
  }
  writer.with([](MessageWriter& messageWriter) { messageWriter.finish(); });
  if (progress) {
    progress(messages_.size());
  }
}

void Upsert::writeRow(MessageWriter& writer, std::optional<std::int64_t> row, std::size_t place) {
  std::shared_ptr<const EmailMessage> message = messages_[place];
  if (const auto category = earlierCategories_.find(place); category != earlierCategories_.end()) {
    auto copy = std::make_shared<EmailMessage>(*message);
    copy->category = category->second;
    message = std::move(copy);
  }
  writer.writeMessage(row, *message, written_[place]);
}

void Upsert::refer(MessageList& messages, const std::shared_ptr<MessageStore>& store) {
  waitForOtherWork();
  StoredContents storedContents(store);
  const auto contentAt = [&](const ContentPlace& place) {
    return storedContents.content(place.number, place.size);
  };
  for (std::size_t place = messages.size(); place-- > 0;) {
    if (last_[place] != place) {
      messages[place] = messages[last_[place]];
      continue;
    }
    const WrittenContents& contents = written_[place];
    auto stored = ownRecord(std::move(messages[place]));
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
