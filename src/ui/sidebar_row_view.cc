#include "ui/sidebar_row_view.h"

#include "platform/count_text.h"
#include "reading/display_text.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 16;
constexpr int cloudIconSize = 12;

Gtk::Label* makeLine(std::initializer_list<const char*> styleClasses) {
  auto* label = Gtk::make_managed<Gtk::Label>();
  label->set_xalign(0.0F);
  label->set_ellipsize(Pango::EllipsizeMode::END);
  for (const char* styleClass : styleClasses) {
    label->add_css_class(styleClass);
  }
  return label;
}

}  // namespace

SidebarRowView::SidebarRowView() {
  set_hexpand(true);
}

void SidebarRowView::show(const Glib::RefPtr<SidebarItem>& item) {
  forget();
  item_ = item;
  changed_ = item_->signalChanged().connect([this] { refresh(); });
  refresh();
}

void SidebarRowView::forget() {
  changed_.disconnect();
  item_.reset();
}

void SidebarRowView::refresh() {
  switch (item_->kind()) {
    case SidebarItem::Kind::heading:
      showHeading(item_->title());
      return;
    case SidebarItem::Kind::row:
      showRow(item_->row());
      return;
    case SidebarItem::Kind::progress:
      showProgress(item_->progress());
      return;
  }
}

void SidebarRowView::makeHeading() {
  heading_ = makeLine({"sidebar-heading"});
  append(*heading_);
}

void SidebarRowView::makeRow() {
  row_ = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 10);
  row_->add_css_class("sidebar-row");
  icon_ = Gtk::make_managed<Gtk::Image>();
  icon_->set_pixel_size(iconSize);
  title_ = makeLine({});
  title_->set_hexpand(true);
  badge_ = Gtk::make_managed<Gtk::Label>();
  badge_->add_css_class("count-badge");
  row_->append(*icon_);
  row_->append(*title_);
  row_->append(*badge_);
  append(*row_);
  offerTooltip(*title_, [this] { return title_->get_text().raw(); });
}

void SidebarRowView::makeProgress() {
  progress_ = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 6);
  progress_->set_hexpand(true);
  progress_->add_css_class("sidebar-row");
  progressSpinner_ = Gtk::make_managed<Gtk::Spinner>();
  progressText_ = makeLine({"row-secondary"});
  progressBar_ = Gtk::make_managed<Gtk::ProgressBar>();
  auto* line = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  line->append(*progressSpinner_);
  line->append(*progressText_);
  progress_->append(*line);
  progress_->append(*progressBar_);
  append(*progress_);
}

void SidebarRowView::showHeading(const std::string& title) {
  if (heading_ == nullptr) {
    makeHeading();
  }
  setIdentifier(*this, "sidebar.heading");
  heading_->set_text(title);
  showAlone(*heading_);
}

void SidebarRowView::showRow(const SidebarRow& row) {
  if (row_ == nullptr) {
    makeRow();
  }
  setIdentifier(*this, row.identifier);
  setSymbol(*icon_, row.icon, row.tint);
  title_->set_text(shortenedLine(row.title));
  if (row.isCloudDerived && cloud_ == nullptr) {
    cloud_ = makeSymbol("icloud.fill", cloudIconSize, "blue");
    row_->insert_child_after(*cloud_, *title_);
    offerTooltip(*cloud_, [this] { return item_ ? item_->row().help : std::string(); });
  }
  if (cloud_ != nullptr) {
    cloud_->set_visible(row.isCloudDerived);
  }
  title_->set_hexpand(!row.isCloudDerived);
  badge_->set_hexpand(row.isCloudDerived);
  badge_->set_halign(Gtk::Align::END);
  badge_->set_text(formatCount(row.badge.count));
  showAlone(*row_);
}

void SidebarRowView::showProgress(const CategorizingProgressRow& progress) {
  if (progress_ == nullptr) {
    makeProgress();
  }
  setIdentifier(*this, "sidebar.progress");
  progressText_->set_text(progress.text);
  progressSpinner_->set_visible(!progress.fraction);
  progressSpinner_->set_spinning(!progress.fraction);
  progressBar_->set_visible(progress.fraction.has_value());
  progressBar_->set_fraction(progress.fraction.value_or(0.0));
  showAlone(*progress_);
}

void SidebarRowView::showAlone(Gtk::Widget& line) {
  for (auto* child = get_first_child(); child != nullptr; child = child->get_next_sibling()) {
    child->set_visible(child == &line);
  }
}

}  // namespace tidewrack::ui
