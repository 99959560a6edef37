#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "classify/gmail_labels.h"
#include "platform/text.h"

namespace tidewrack {

class ContentView;

/// What is chosen in the sidebar. The choice is optional everywhere: none behaves like allLibraries.
class SidebarSelection {
 public:
  struct Library {
    Text id;
    friend bool operator==(const Library&, const Library&) = default;
  };
  struct Category {
    Text name;
    friend bool operator==(const Category&, const Category&) = default;
  };
  struct Label {
    Text path;
    friend bool operator==(const Label&, const Label&) = default;
  };
  struct Mailbox {
    GmailSystemMailbox mailbox{};
    friend bool operator==(const Mailbox&, const Mailbox&) = default;
  };
  struct GmailCategory {
    GmailCategoryFolder category{};
    friend bool operator==(const GmailCategory&, const GmailCategory&) = default;
  };
  struct AllLibraries {
    friend bool operator==(const AllLibraries&, const AllLibraries&) = default;
  };
  using Value = std::variant<Library, Category, Label, Mailbox, GmailCategory, AllLibraries>;

  static SidebarSelection library(Text id) { return SidebarSelection(Library{std::move(id)}); }
  static SidebarSelection category(Text name) { return SidebarSelection(Category{std::move(name)}); }
  static SidebarSelection label(Text path) { return SidebarSelection(Label{std::move(path)}); }
  static SidebarSelection mailbox(GmailSystemMailbox mailbox) { return SidebarSelection(Mailbox{mailbox}); }
  static SidebarSelection gmailCategory(GmailCategoryFolder category) {
    return SidebarSelection(GmailCategory{category});
  }
  static SidebarSelection allLibraries() { return SidebarSelection(AllLibraries{}); }

  [[nodiscard]] const Value& value() const { return value_; }
  /// The payload of one case, or null: `selection.as<SidebarSelection::Library>()`.
  template <typename Case>
  [[nodiscard]] const Case* as() const {
    return std::get_if<Case>(&value_);
  }

  friend bool operator==(const SidebarSelection&, const SidebarSelection&) = default;

 private:
  explicit SidebarSelection(Value value) : value_(std::move(value)) {}

  Value value_;
};

/// The count drawn right-aligned beside a row.
struct SidebarBadge {
  std::int64_t count = 0;
  friend bool operator==(const SidebarBadge&, const SidebarBadge&) = default;
};

/// One row of the sidebar, ready to be drawn.
struct SidebarRow {
  SidebarSelection selection = SidebarSelection::allLibraries();
  std::string title;
  std::string_view icon;  ///< Platform symbol name.
  std::string_view tint;  ///< Colour name.
  SidebarBadge badge;
  std::string identifier;  ///< Accessibility identifier; empty where there is none.
  bool isCloudDerived =
      false;  ///< A small blue "icloud.fill" stands behind the title, with `help` as its tip.
  std::string help;
  std::vector<SidebarRow> children;  ///< Rows below this one in an expandable outline.
  friend bool operator==(const SidebarRow&, const SidebarRow&) = default;
};

/// The last row of Smart Categories while the categoriser runs.
struct CategorizingProgressRow {
  std::string text;
  std::optional<double> fraction;  ///< Absent while no total is known: a small spinner stands there.
  friend bool operator==(const CategorizingProgressRow&, const CategorizingProgressRow&) = default;
};

/// One section of the sidebar. Sections that have nothing to show are not in the list.
struct SidebarSection {
  enum class Kind { libraries, mailboxes, gmailCategories, smartCategories, labels };

  Kind kind{};
  std::string title;
  std::vector<SidebarRow> rows;
  std::optional<CategorizingProgressRow> progress;
  friend bool operator==(const SidebarSection&, const SidebarSection&) = default;
};

/// The sections of the present state, top to bottom. Costs what is shown, not what is loaded. Main thread
/// only.
std::vector<SidebarSection> sidebarSections(const ContentView& screen);
/// One of them, or nothing when it is not shown. The libraries follow the fields libraries and messages; the
/// Smart Categories follow cachedCategoryCounts, the two intelligence settings and the categoriser's
/// counters; the others follow cachedLabelClassification.
std::optional<SidebarSection> sidebarSection(const ContentView& screen, SidebarSection::Kind kind);
inline constexpr std::array allSidebarSections = {
    SidebarSection::Kind::libraries, SidebarSection::Kind::mailboxes, SidebarSection::Kind::gmailCategories,
    SidebarSection::Kind::smartCategories, SidebarSection::Kind::labels};

/// Icon and tint of the nine categories of the on-device categoriser, in their fixed order.
struct SmartCategory {
  std::string_view name;
  std::string_view icon;
  std::string_view tint;
};
const std::vector<SmartCategory>& smartCategories();

/// The last non-empty piece of a label's path, or the path when it has none.
std::string labelTitle(std::string_view path);
/// "All Libraries".
std::string allLibrariesTitle();

/// The colour of a user label's icon, picked by its path out of twelve.
std::string_view labelTint(std::string_view path);

}  // namespace tidewrack
