#include "reading/library_row.h"

#include <optional>

#include "platform/date_styles.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

std::vector<std::string> strings(const std::vector<Text>& texts) {
  std::vector<std::string> result;
  result.reserve(texts.size());
  for (const auto& text : texts) {
    result.push_back(text.string());
  }
  return result;
}

}  // namespace

std::string messageCountText(std::int64_t count) {
  return std::to_string(count) + " " +
         (count == 1 ? localized("message_singular", "message", "Singular message count")
                     : localized("message_plural", "messages", "Plural message count"));
}

LibraryRow makeLibraryRow(const MBOXLibrary& library, std::int64_t messageCount, bool isSelected) {
  LibraryRow row;
  row.id = library.id;
  row.icon = library.isCloudDerived ? "icloud.square.fill" : "archivebox.fill";
  row.name = library.displayName.string();
  row.countText = messageCountText(messageCount);
  row.origin = library.fileName.string();
  row.isSelected = isSelected;
  if (library.isCloudDerived) {
    row.badge = localized("library_cloud_badge", "iCloud", "Cloud-derived library badge");
    row.origin = localized("library_cloud_origin", "Synced from iCloud (no local file)",
                           "Cloud-derived library origin caption");
  }
  return row;
}

std::string_view icon(LibraryRowAction action) {
  switch (action) {
    case LibraryRowAction::select:
      return "line.3.horizontal.decrease.circle";
    case LibraryRowAction::rename:
      return "pencil.circle";
    case LibraryRowAction::remove:
      break;
  }
  return "trash.circle.fill";
}

std::string help(LibraryRowAction action) {
  switch (action) {
    case LibraryRowAction::select:
      return localized("filter_library_help", "Filter messages from this library", "Filter library help");
    case LibraryRowAction::rename:
      return localized("rename_library_help", "Rename library", "Rename library help");
    case LibraryRowAction::remove:
      break;
  }
  return localized("delete_library_help", "Delete library", "Delete library help");
}

DiscoveredLibraryCard makeDiscoveredLibraryCard(const DiscoveredLibrary& library) {
  DiscoveredLibraryCard card;
  card.id = library.id;
  card.name = library.displayName.string();
  card.countText = messageCountText(library.messageCount);
  const auto add = [&card](std::string_view symbol, std::string title, std::string value) {
    card.metrics.push_back({symbol, std::move(title), std::move(value)});
  };
  add("envelope.fill", localized("discovered_library_messages", "Messages", "Discovered library metric"),
      std::to_string(library.messageCount));
  add("person.2.fill", localized("discovered_library_senders", "Senders", "Discovered library metric"),
      std::to_string(library.uniqueSendersCount));
  add("bubble.left.and.bubble.right.fill",
      localized("discovered_library_threads", "Conversations", "Discovered library metric"),
      std::to_string(library.uniqueConversationsCount));
  add("paperclip", localized("discovered_library_attachments", "Attachments", "Discovered library metric"),
      std::to_string(library.attachmentCount));
  const auto dateStyle = DateStyle::abbreviatedDate();
  if (library.earliestDate) {
    add("calendar", localized("discovered_library_earliest", "Earliest", "Discovered library metric"),
        dateStyle.format(*library.earliestDate));
  }
  if (library.latestDate) {
    add("calendar", localized("discovered_library_latest", "Latest", "Discovered library metric"),
        dateStyle.format(*library.latestDate));
  }
  card.labels = strings(library.labels);
  card.categories = strings(library.categories);
  return card;
}

AdoptButton makeAdoptButton(bool isAdopting) {
  if (isAdopting) {
    return {"icloud.fill",
            localized("discovered_library_adopting", "Adopting…", "Adopting discovered library button"),
            false, true};
  }
  return {"plus.circle.fill",
          localized("discovered_library_adopt", "Add to This Device", "Adopt discovered library button"),
          true, false};
}

}  // namespace tidewrack
