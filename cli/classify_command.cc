#include <nlohmann/json.hpp>

#include "classify/label_classification.h"
#include "cli/commands.h"
#include "cli/headless_screen.h"
#include "mail/mbox_importer.h"

namespace tidewrack {
namespace {

using nlohmann::json;

json toJSON(const std::vector<LabelClassification::UserLabelNode>& nodes) {
  json result = json::array();
  for (const auto& node : nodes) {
    result.push_back({{"path", node.path.string()},
                      {"name", node.name.string()},
                      {"count", node.count},
                      {"directCount", node.directCount},
                      {"children", toJSON(node.children)}});
  }
  return result;
}

json toJSON(const LabelClassification& classification) {
  json mailboxes = json::array();
  for (const auto& bucket : classification.systemMailboxes) {
    mailboxes.push_back({{"mailbox", appearance(bucket.mailbox).rawValue}, {"count", bucket.count}});
  }
  json categories = json::array();
  for (const auto& bucket : classification.gmailCategories) {
    categories.push_back({{"category", appearance(bucket.category).rawValue}, {"count", bucket.count}});
  }
  return {{"systemMailboxes", std::move(mailboxes)},
          {"gmailCategories", std::move(categories)},
          {"userLabelTree", toJSON(classification.userLabelTree)}};
}

}  // namespace

int classifyMessages(const CommandLine& line, Output& output) {
  const auto write = [&output](const LabelClassification& classification) {
    output.write(toJSON(classification).dump() + '\n');
  };
  if (line.operands.empty()) {
    HeadlessScreen headless;
    write(headless.screen().cachedLabelClassification());
    return 0;
  }
  int status = 0;
  MessageList messages;
  for (const auto& file : line.operands) {
    try {
      MBOXImporter::forEachMessage(file, Text(), Text(), [&messages](const auto& message) {
        // Nothing else counts, and the archive can be let go.
        auto labelled = std::make_shared<EmailMessage>();
        labelled->id = message->id;
        labelled->labels = message->labels;
        messages.push_back(std::move(labelled));
      });
    } catch (const Failure& failure) {
      reportFailure(failure.what());
      status = 1;
    }
  }
  write(LabelClassification::classify(messages));
  return status;
}

}  // namespace tidewrack
