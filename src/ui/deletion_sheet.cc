#include "ui/deletion_sheet.h"

#include "ui/widgets.h"

namespace tidewrack::ui {

DeletionSheet::DeletionSheet(ContentView& screen, Gtk::Widget& covered)
    : Sheet(covered),
      screen_(screen),
      question_(
          Gtk::make_managed<ConfirmationView>([this] { confirm(); }, [this] { screen_.cancelDelete(); })),
      panel_(Gtk::make_managed<ImportStatusView>(true, [this] { screen_.dismissDeletionStatus(); })) {
  stack_.set_vhomogeneous(false);
  stack_.add(*question_);
  stack_.add(*panel_);
  setIdentifier(stack_, "deletion.root");
  setContent(stack_, ConfirmationMetrics::maximumWidth);
  setDefaultAction([this] {
    if (!screen_.showsDeletionStatus()) {
      confirm();
    }
  });
  setCloseRequest([this] {
    if (!screen_.showsDeletionStatus()) {
      screen_.cancelDelete();
    } else if (screen_.importStatus()->showsDismissButton()) {
      screen_.dismissDeletionStatus();
    }
  });
  const auto follow = [this](auto& field) { subscriptions_.push_back(field.observe([this] { refresh(); })); };
  follow(screen_.showDeleteConfirmation);
  follow(screen_.importStatus);
  follow(screen_.isDeletingLibrary);
  refresh();
}

void DeletionSheet::confirm() {
  if (const auto library = screen_.libraryPendingDeletion()) {
    screen_.deleteLibrary(*library);
  }
}

void DeletionSheet::refresh() {
  if (!screen_.showDeleteConfirmation()) {
    dismiss();
    return;
  }
  const bool isNew = !isPresented();
  if (screen_.showsDeletionStatus()) {
    panel_->show(*screen_.importStatus());
    stack_.set_visible_child(*panel_);
    present();
    panel_->focusDismissButton();
  } else if (const auto& library = screen_.libraryPendingDeletion()) {
    question_->show(deleteConfirmation(*library));
    stack_.set_visible_child(*question_);
    present();
    if (isNew) {
      question_->focusConfirmButton();
    }
  }
}

}  // namespace tidewrack::ui
