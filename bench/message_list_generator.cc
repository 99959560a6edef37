#include "message_list_generator.h"

#include <array>
#include <random>
#include <string>
#include <vector>

namespace tidewrack::bench {
namespace {

constexpr std::array<const char*, 24> words = {
    "invoice", "meeting", "harbour", "report",  "ticket", "summer",   "budget",  "photos",
    "project", "updates", "welcome", "payment", "garden", "concert",  "library", "travel",
    "receipt", "minutes", "weekend", "offer",   "thanks", "question", "draft",   "schedule"};

std::vector<Text> userLabels() {
  std::vector<Text> labels;
  for (int group = 0; group < 20; ++group) {
    const std::string root = "Area " + std::to_string(group);
    labels.emplace_back(root);
    for (int i = 0; i < 9; ++i) {
      labels.emplace_back(root + "/Topic " + std::to_string(i));
    }
  }
  return labels;
}

}  // namespace

MessageList generateMessageList(std::size_t count) {
  std::mt19937 random(20);
  const auto one = [&random](const auto& values) -> const auto& {
    return values[random() % values.size()];
  };
  const std::vector<Text> mailboxes = {"Inbox", "Sent", "Important,Inbox", "Archived", "Spam", "Trash"};
  const std::vector<Text> tabs = {"Category Personal", "Category Promotions", "Category Updates",
                                  "Category Social", "Category Forums"};
  const std::vector<Text> own = userLabels();
  const std::vector<Text> categories = {"Work", "Finance", "Travel", "Newsletter", "Other"};
  const Text unread = "Unread";
  std::vector<Text> libraries;
  for (int i = 0; i < 5; ++i) {
    libraries.emplace_back("library-" + std::to_string(i));
  }
  MessageList list;
  list.reserve(count);
  std::vector<Text> conversations;
  for (std::size_t i = 0; i < count; ++i) {
    auto message = std::make_shared<EmailMessage>();
    const std::string number = std::to_string(i);
    message->id = "message." + number + "@mail.example.org";
    message->sourceLibraryID = libraries[i % 16 < 12 ? 0 : 1 + i % 4];
    message->sourceLibraryName = message->sourceLibraryID;
    message->subject =
        std::string(one(words)) + " " + one(words) + " " + one(words) + " " + std::to_string(random() % 5000);
    message->from.name = Text(std::string("Sender ") + std::to_string(random() % 3000));
    message->from.address = Text("sender" + std::to_string(random() % 3000) + "@example.org");
    message->date = Date(std::chrono::seconds(1'750'000'000 - 600 * static_cast<std::int64_t>(i)));
    message->snippet = std::string(one(words)) + " " + one(words) + " " + one(words);
    message->labels.push_back(one(mailboxes));
    if (random() % 2 == 0) {
      message->labels.push_back(one(tabs));
    }
    if (random() % 3 == 0) {
      message->labels.push_back(own[(random() % own.size()) * (random() % own.size()) / own.size()]);
    }
    if (random() % 4 == 0) {
      message->labels.push_back(unread);
    }
    if (conversations.empty() || random() % 2 == 0) {
      conversations.push_back(message->id);
    }
    message->conversationID =
        conversations[conversations.size() - 1 - random() % std::min<std::size_t>(conversations.size(), 50)];
    if (i % 10 == 0) {
      message->category = one(categories);
    }
    if (i % 8 == 0) {
      EmailAttachment attachment;
      attachment.fileName = "plan.pdf";
      attachment.mimeType = "application/pdf";
      message->attachments.push_back(std::move(attachment));
    }
    list.push_back(std::move(message));
  }
  return list;
}

}  // namespace tidewrack::bench
