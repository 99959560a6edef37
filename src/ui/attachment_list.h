#pragma once

#include <cstddef>
#include <vector>

#include <gtkmm.h>

#include "reading/detail_rows.h"

namespace tidewrack::ui {

/// The rows of a message's attachments as GTK wants them. Row objects are made only when they are bound, so
/// that a message with a million empty parts opens like any other. Main thread only. The interface is the
/// first base class: GObject adds interfaces before the class itself is set up.
class AttachmentListModel : public Gio::ListModel, public Glib::Object {
 public:
  /// What one row stands for.
  class Item : public Glib::Object {
   public:
    static Glib::RefPtr<Item> create(AttachmentRow row);
    [[nodiscard]] const AttachmentRow& row() const { return row_; }

   private:
    explicit Item(AttachmentRow row);
    AttachmentRow row_;
  };

  static Glib::RefPtr<AttachmentListModel> create();
  void replace(std::vector<AttachmentRow> rows);

 protected:
  AttachmentListModel();
  GType get_item_type_vfunc() override;
  guint get_n_items_vfunc() override;
  gpointer get_item_vfunc(guint position) override;

 private:
  std::vector<AttachmentRow> rows_;
};

/// One row: icon, name, size, and the button that saves.
class AttachmentRowView : public Gtk::Box {
 public:
  AttachmentRowView();

  void show(const AttachmentRow& row);
  [[nodiscard]] std::size_t index() const { return index_; }
  /// The user wants the attachment of this number saved.
  sigc::signal<void(std::size_t index)>& signalSave() { return save_; }

 private:
  std::size_t index_ = 0;
  Gtk::Image icon_;
  Gtk::Label name_;
  Gtk::Label size_;
  Gtk::Button* button_;
  sigc::signal<void(std::size_t)> save_;
};

}  // namespace tidewrack::ui
