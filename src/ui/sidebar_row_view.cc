#include "ui/sidebar_row_view.h"

#include "reading/display_text.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int iconSize = 16;
constexpr int cloudIconSize = 12;

}  // namespace

SidebarRowView::SidebarRowView() {
  set_hexpand(true);
  kinds_.set_hexpand(true);
  kinds_.set_vhomogeneous(false);
  append(kinds_);

  heading_.set_xalign(0.0F);
  heading_.set_ellipsize(Pango::EllipsizeMode::END);
  heading_.add_css_class("sidebar-heading");
  kinds_.add(heading_);

  icon_.set_pixel_size(iconSize);
  cloud_.set_pixel_size(cloudIconSize);
  setSymbol(cloud_, "icloud.fill", "blue");
  title_.set_xalign(0.0F);
  title_.set_ellipsize(Pango::EllipsizeMode::END);
  auto* name = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 6);
  name->set_hexpand(true);
  name->append(title_);
  name->append(cloud_);
  badge_.add_css_class("count-badge");
  row_.append(icon_);
  row_.append(*name);
  row_.append(badge_);
  row_.add_css_class("sidebar-row");
  kinds_.add(row_);

  progressText_.set_xalign(0.0F);
  progressText_.set_ellipsize(Pango::EllipsizeMode::END);
  progressText_.add_css_class("row-secondary");
  progressLine_.append(progressSpinner_);
  progressLine_.append(progressText_);
  progress_.append(progressLine_);
  progress_.append(progressBar_);
  progress_.add_css_class("sidebar-row");
  kinds_.add(progress_);
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
      heading_.set_text(item_->title());
      kinds_.set_visible_child(heading_);
      return;
    case SidebarItem::Kind::row:
      showRow(item_->row());
      kinds_.set_visible_child(row_);
      return;
    case SidebarItem::Kind::progress:
      showProgress(item_->progress());
      kinds_.set_visible_child(progress_);
      return;
  }
}

void SidebarRowView::showRow(const SidebarRow& row) {
  setIdentifier(*this, row.identifier);
  setSymbol(icon_, row.icon, row.tint);
  const std::string title = shortenedLine(row.title);
  title_.set_text(title);
  title_.set_tooltip_text(title);
  cloud_.set_visible(row.isCloudDerived);
  cloud_.set_tooltip_text(row.help);
  badge_.set_text(Glib::ustring::format(row.badge.count));
}

void SidebarRowView::showProgress(const CategorizingProgressRow& progress) {
  progressText_.set_text(progress.text);
  progressSpinner_.set_visible(!progress.fraction);
  progressSpinner_.set_spinning(!progress.fraction);
  progressBar_.set_visible(progress.fraction.has_value());
  progressBar_.set_fraction(progress.fraction.value_or(0.0));
}

}  // namespace tidewrack::ui
