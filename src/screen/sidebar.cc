#include "screen/sidebar.h"

#include <array>
#include <functional>

#include "platform/localized.h"
#include "reading/intelligence_look.h"
#include "screen/content_view.h"

namespace tidewrack {

namespace {

constexpr std::array<std::string_view, 12> labelPalette = {
    "blue", "green", "orange", "purple", "pink", "teal", "indigo", "mint", "yellow", "cyan", "red", "brown"};

SidebarRow libraryRow(const ContentView& screen, const MBOXLibrary& library) {
  SidebarRow row;
  row.selection = SidebarSelection::library(library.id);
  row.title = library.displayName.string();
  row.badge.count = screen.messageCount(library.id);
  row.identifier = "sidebar.library." + library.id.string();
  row.isCloudDerived = library.isCloudDerived;
  if (library.isCloudDerived) {
    row.icon = "icloud.square.fill";
    row.tint = "blue";
    row.help = localized("library_cloud_derived_help", "Synced from iCloud — no local .mbox file",
                         "Cloud-derived library tooltip");
  } else {
    row.icon = "archivebox.fill";
    row.tint = "indigo";
  }
  return row;
}

SidebarSection librariesSection(const ContentView& screen) {
  SidebarSection section{SidebarSection::Kind::libraries,
                         localized("Libraries_title", "Libraries", "Libraries sidebar section"),
                         {},
                         std::nullopt};
  SidebarRow all;
  all.title = allLibrariesTitle();
  all.icon = "tray.2.fill";
  all.badge.count = static_cast<std::int64_t>(screen.messages().size());
  all.identifier = "sidebar.allLibraries";
  section.rows.push_back(std::move(all));
  for (const auto& library : screen.libraries()) {
    section.rows.push_back(libraryRow(screen, library));
  }
  return section;
}

// A row of the label vocabulary.
template <typename Kind>
SidebarRow vocabularyRow(SidebarSelection selection, Kind kind, std::int64_t count) {
  SidebarRow row;
  row.selection = std::move(selection);
  row.title = title(kind);
  row.icon = appearance(kind).icon;
  row.tint = appearance(kind).tint;
  row.badge.count = count;
  return row;
}

SidebarRow labelRow(const LabelClassification::UserLabelNode& node) {
  SidebarRow row;
  row.selection = SidebarSelection::label(node.path);
  row.title = node.name.string();
  row.icon = node.children.empty() ? "tag.fill" : "folder.fill";
  row.tint = labelTint(node.path);
  row.badge.count = node.count;
  for (const auto& child : node.children) {
    row.children.push_back(labelRow(child));
  }
  return row;
}

CategorizingProgressRow progressRow(const MessageCategorizer& categorizer) {
  const int total = categorizer.totalToProcess();
  const int processed = categorizer.processedCount();
  CategorizingProgressRow row;
  row.text = formatText(
      localized("categorizing_progress", "Categorizing %d of %d…", "Categorization progress in sidebar"),
      {static_cast<long long>(processed), static_cast<long long>(total)});
  if (total >= 1) {
    row.fraction = static_cast<double>(processed) / total;
  }
  return row;
}

std::optional<SidebarSection> mailboxesSection(const LabelClassification& labels) {
  if (labels.systemMailboxes.empty()) {
    return std::nullopt;
  }
  SidebarSection section;
  section.kind = SidebarSection::Kind::mailboxes;
  section.title = localized("mailboxes_section_title", "Mailboxes", "System mailboxes sidebar section");
  for (const auto& bucket : labels.systemMailboxes) {
    section.rows.push_back(
        vocabularyRow(SidebarSelection::mailbox(bucket.mailbox), bucket.mailbox, bucket.count));
  }
  return section;
}

std::optional<SidebarSection> gmailCategoriesSection(const LabelClassification& labels) {
  if (labels.gmailCategories.empty()) {
    return std::nullopt;
  }
  SidebarSection section;
  section.kind = SidebarSection::Kind::gmailCategories;
  section.title =
      localized("gmail_categories_section_title", "Gmail Categories", "Gmail categories sidebar section");
  for (const auto& bucket : labels.gmailCategories) {
    section.rows.push_back(
        vocabularyRow(SidebarSelection::gmailCategory(bucket.category), bucket.category, bucket.count));
  }
  return section;
}

std::optional<SidebarSection> smartCategoriesSection(const ContentView& screen) {
  const MessageCategorizer* categorizer = screen.categorizer();
  const bool isRunning = categorizer && categorizer->isCategorizing();
  if (!screen.intelligenceEnabled() || !screen.enableCategoryDetection() ||
      (!isRunning && screen.categoriesInScope().empty())) {
    return std::nullopt;
  }
  SidebarSection section;
  section.kind = SidebarSection::Kind::smartCategories;
  section.title = localized("intelligence_categories_section_title", "Smart Categories",
                            "Apple Intelligence categories sidebar section");
  const auto& counts = *screen.cachedCategoryCounts();
  for (const auto& category : smartCategories()) {
    const auto count = counts.find(Text(category.name));
    if (count != counts.end()) {
      SidebarRow row;
      row.selection = SidebarSelection::category(category.name);
      row.title = category.name;
      row.icon = category.icon;
      row.tint = category.tint;
      row.badge.count = count->second;
      section.rows.push_back(std::move(row));
    }
  }
  if (isRunning) {
    section.progress = progressRow(*categorizer);
  }
  return section;
}

std::optional<SidebarSection> labelsSection(const LabelClassification& labels) {
  if (labels.userLabelTree.empty()) {
    return std::nullopt;
  }
  SidebarSection section;
  section.kind = SidebarSection::Kind::labels;
  section.title = localized("labels_title", "Labels", "Sidebar title");
  for (const auto& node : labels.userLabelTree) {
    section.rows.push_back(labelRow(node));
  }
  return section;
}

}  // namespace

std::optional<SidebarSection> sidebarSection(const ContentView& screen, SidebarSection::Kind kind) {
  switch (kind) {
    case SidebarSection::Kind::libraries:
      return librariesSection(screen);
    case SidebarSection::Kind::mailboxes:
      return mailboxesSection(screen.cachedLabelClassification());
    case SidebarSection::Kind::gmailCategories:
      return gmailCategoriesSection(screen.cachedLabelClassification());
    case SidebarSection::Kind::smartCategories:
      return smartCategoriesSection(screen);
    case SidebarSection::Kind::labels:
      return labelsSection(screen.cachedLabelClassification());
  }
  return std::nullopt;
}

std::vector<SidebarSection> sidebarSections(const ContentView& screen) {
  std::vector<SidebarSection> sections;
  for (const auto kind : allSidebarSections) {
    if (auto section = sidebarSection(screen, kind)) {
      sections.push_back(*std::move(section));
    }
  }
  return sections;
}

const std::vector<SmartCategory>& smartCategories() {
  static const std::vector<SmartCategory> categories = [] {
    std::vector<SmartCategory> all;
    all.reserve(allEmailCategories.size());
    for (const auto category : allEmailCategories) {
      const CategoryLook shown = look(category);
      all.push_back({rawValue(category), shown.icon, shown.tint});
    }
    return all;
  }();
  return categories;
}

std::string labelTitle(std::string_view path) {
  std::string_view rest = path;
  while (rest.ends_with('/')) {
    rest.remove_suffix(1);
  }
  if (rest.empty()) {
    return std::string(path);
  }
  return std::string(rest.substr(rest.rfind('/') + 1));
}

std::string allLibrariesTitle() {
  return localized("all_libraries", "All Libraries", "All libraries filter");
}

std::string_view labelTint(std::string_view path) {
  return labelPalette[std::hash<std::string_view>()(path) % labelPalette.size()];
}

}  // namespace tidewrack
