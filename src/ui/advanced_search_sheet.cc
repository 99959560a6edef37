#include "ui/advanced_search_sheet.h"

#include <algorithm>
#include <array>
#include <utility>

#include "reading/display_text.h"
#include "ui/widgets.h"

namespace tidewrack::ui {
namespace {

constexpr int dateShortcutColumns = 3;
constexpr const char* title = "Búsqueda Avanzada";

// Connects a signal of a C widget, whose arguments are dropped; the handler lives as long as the widget.
void connect(gpointer widget, const char* signal, std::function<void()> handler) {
  using Handler = std::function<void()>;
  GClosure* closure = g_cclosure_new_swap(
      G_CALLBACK(+[](gpointer data) { (*static_cast<Handler*>(data))(); }), new Handler(std::move(handler)),
      [](gpointer data, GClosure*) { delete static_cast<Handler*>(data); });
  g_signal_connect_closure(widget, signal, closure, FALSE);
}

Gtk::Button* makeTextButton(const char* text, const char* identifier, const std::function<void()>& action) {
  auto* button = Gtk::make_managed<Gtk::Button>(text);
  setIdentifier(*button, identifier);
  button->signal_clicked().connect(action);
  return button;
}

}  // namespace

AdvancedSearchSheet::AdvancedSearchSheet(ContentView& screen, Gtk::Widget& covered)
    : Sheet(covered), screen_(screen), search_(screen) {
  makeContent();
  setCloseRequest([this] { search_.cancel(); });
  setDefaultAction([this] { search_.apply(); });
  subscriptions_.push_back(search_.filters.observe([this] { refresh(); }));
  subscriptions_.push_back(screen_.isShowingAdvancedSearch.observe([this] { showOrHide(); }));
  refresh();
}

void AdvancedSearchSheet::makeContent() {
  auto* form = Gtk::make_managed<SettingsForm>();
  addTexts(*form);
  addDates(*form);
  addAttachments(*form);
  addOptions(*form);
  auto* heading = makeLabel(title, {"title-3"});
  heading->set_margin(16);
  heading->set_margin_bottom(0);
  heading->set_halign(Gtk::Align::CENTER);
  auto* root = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
  setIdentifier(*root, "advancedSearch.root");
  root->append(*heading);
  root->append(*form);
  root->append(*makeFoot());
  setContent(*root, width);
  root->set_size_request(width, height);
  setAccessibleLabel(*this, title);
}

void AdvancedSearchSheet::addTexts(SettingsForm& form) {
  FormSection& section = form.addSection("Búsqueda de Texto", "magnifyingglass");
  addEntry(section, "Buscar en asunto", "advancedSearch.subject", &SearchFilters::subjectQuery);
  addEntry(section, "Buscar en contenido", "advancedSearch.body", &SearchFilters::bodyQuery);
  addEntry(section, "Buscar en remitente", "advancedSearch.from", &SearchFilters::fromQuery);
}

void AdvancedSearchSheet::addDates(SettingsForm& form) {
  FormSection& section = form.addSection("Rango de Fechas", "calendar");
  addSwitch(section, "Filtrar por rango de fechas", "advancedSearch.useDates", &SearchFilters::useDateFilter);
  Gtk::Widget& start = addDate(section, "Desde", "advancedSearch.startDate", &SearchFilters::startDate);
  Gtk::Widget& end = addDate(section, "Hasta", "advancedSearch.endDate", &SearchFilters::endDate);
  FormSection& shortcuts = form.addSection();
  addShortcuts(shortcuts);
  follow([&start, &end, &shortcuts](const SearchFilters& filters) {
    start.set_visible(filters.useDateFilter);
    end.set_visible(filters.useDateFilter);
    shortcuts.set_visible(filters.useDateFilter);
  });
}

void AdvancedSearchSheet::addShortcuts(FormSection& section) {
  auto* grid = Gtk::make_managed<Gtk::Grid>();
  grid->set_column_homogeneous(true);
  grid->set_column_spacing(8);
  grid->set_row_spacing(8);
  grid->set_margin(8);
  struct Shortcut {
    const char* text;
    const char* identifier;
    void (AdvancedSearch::*choose)();
  };
  constexpr std::array<Shortcut, 3> shortcuts = {
      {{"Última semana", "advancedSearch.lastWeek", &AdvancedSearch::chooseLastWeek},
       {"Último mes", "advancedSearch.lastMonth", &AdvancedSearch::chooseLastMonth},
       {"Último año", "advancedSearch.lastYear", &AdvancedSearch::chooseLastYear}}};
  int place = 0;
  for (const Shortcut& shortcut : shortcuts) {
    auto* button = makeTextButton(shortcut.text, shortcut.identifier,
                                  [this, choose = shortcut.choose] { (search_.*choose)(); });
    grid->attach(*button, place % dateShortcutColumns, place / dateShortcutColumns);
    ++place;
  }
  auto* row = Gtk::make_managed<Gtk::ListBoxRow>();
  row->set_activatable(false);
  row->set_focusable(false);
  row->set_child(*grid);
  section.addRow(*row);
}

void AdvancedSearchSheet::addAttachments(SettingsForm& form) {
  FormSection& section = form.addSection("Adjuntos", "paperclip");
  addPicker<AttachmentFilter>(
      section, "Adjuntos", "advancedSearch.attachments",
      {AttachmentFilter::any, AttachmentFilter::withAttachments, AttachmentFilter::withoutAttachments},
      &SearchFilters::attachmentFilter);
  Gtk::Widget& type = addEntry(section, "Tipo de archivo (ej: pdf, jpg)", "advancedSearch.attachmentType",
                               &SearchFilters::attachmentType);
  follow([&type](const SearchFilters& filters) {
    type.set_visible(filters.attachmentFilter == AttachmentFilter::withAttachments);
  });
}

void AdvancedSearchSheet::addOptions(SettingsForm& form) {
  FormSection& section = form.addSection("Opciones Adicionales", "slider.horizontal.3");
  addSwitch(section, "Solo mensajes en conversaciones", "advancedSearch.onlyInConversations",
            &SearchFilters::onlyInConversations);
  addSwitch(section, "Solo mensajes HTML", "advancedSearch.onlyHTML", &SearchFilters::onlyHTML);
  addPicker<SizeFilter>(section, "Tamaño del mensaje", "advancedSearch.size",
                        {SizeFilter::any, SizeFilter::small, SizeFilter::medium, SizeFilter::large},
                        &SearchFilters::sizeFilter);
}

Gtk::Widget* AdvancedSearchSheet::makeFoot() {
  auto* icon = makeSymbol("info.circle", 16);
  auto* text = makeLabel("", {"row-secondary"});
  setIdentifier(*text, "advancedSearch.summary");
  text->set_hexpand(true);
  text->set_lines(2);
  text->set_ellipsize(Pango::EllipsizeMode::END);
  follow([this, icon, text](const SearchFilters&) {
    const AdvancedSearch::Footer footer = search_.footer();
    setSymbol(*icon, footer.icon);
    const std::string line = shortenedLine(footer.text);
    text->set_text(line);
  });
  offerTooltip(*text, [text] { return text->get_text().raw(); });
  auto* summary = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  summary->append(*icon);
  summary->append(*text);

  auto* apply = makeTextButton("Aplicar", "advancedSearch.apply", [this] { search_.apply(); });
  apply->add_css_class("suggested-action");
  auto* space = Gtk::make_managed<Gtk::Box>();
  space->set_hexpand(true);
  auto* buttons = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
  buttons->append(*makeTextButton("Cancelar", "advancedSearch.cancel", [this] { search_.cancel(); }));
  buttons->append(*space);
  buttons->append(*makeTextButton("Limpiar", "advancedSearch.clear", [this] { search_.reset(); }));
  buttons->append(*apply);

  auto* foot = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL, 12);
  foot->add_css_class("sheet-foot");
  foot->append(*summary);
  foot->append(*buttons);
  return foot;
}

Gtk::Widget& AdvancedSearchSheet::addEntry(FormSection& section, const char* name, const char* identifier,
                                           std::string SearchFilters::*field) {
  GtkWidget* entry = adw_entry_row_new();
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(entry), FALSE);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(entry), name);
  Gtk::Widget* row = wrapWidget(entry);
  setIdentifier(*row, identifier);
  section.addRow(*row);
  connect(entry, "changed", [this, entry, field] {
    edit([&](SearchFilters& filters) { filters.*field = gtk_editable_get_text(GTK_EDITABLE(entry)); });
  });
  connect(entry, "entry-activated", [this] { search_.apply(); });
  follow([entry, field](const SearchFilters& filters) {
    if (filters.*field != gtk_editable_get_text(GTK_EDITABLE(entry))) {
      gtk_editable_set_text(GTK_EDITABLE(entry), (filters.*field).c_str());
    }
  });
  return *row;
}

void AdvancedSearchSheet::addSwitch(FormSection& section, const char* name, const char* identifier,
                                    bool SearchFilters::*field) {
  AdwActionRow* row = makeSettingsRow({.title = name});
  auto* control = Gtk::make_managed<Gtk::Switch>();
  control->set_valign(Gtk::Align::CENTER);
  setIdentifier(*control, identifier);
  setAccessibleLabel(*control, name);
  adw_action_row_add_suffix(row, GTK_WIDGET(control->gobj()));
  adw_action_row_set_activatable_widget(row, GTK_WIDGET(control->gobj()));
  section.addRow(row);
  control->property_active().signal_changed().connect([this, control, field] {
    edit([&](SearchFilters& filters) { filters.*field = control->get_active(); });
  });
  follow([control, field](const SearchFilters& filters) { control->set_active(filters.*field); });
}

template <typename Choice>
void AdvancedSearchSheet::addPicker(FormSection& section, const char* name, const char* identifier,
                                    std::vector<Choice> choices, Choice SearchFilters::*field) {
  auto* row = ADW_COMBO_ROW(adw_combo_row_new());
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), name);
  GtkStringList* labels = gtk_string_list_new(nullptr);
  for (const Choice choice : choices) {
    gtk_string_list_append(labels, label(choice));
  }
  adw_combo_row_set_model(row, G_LIST_MODEL(labels));
  g_object_unref(labels);
  Gtk::Widget* widget = wrapWidget(GTK_WIDGET(row));
  setIdentifier(*widget, identifier);
  section.addRow(*widget);
  connect(row, "notify::selected", [this, row, choices, field] {
    const guint position = adw_combo_row_get_selected(row);
    if (position < choices.size()) {
      edit([&](SearchFilters& filters) { filters.*field = choices[position]; });
    }
  });
  follow([row, choices, field](const SearchFilters& filters) {
    const auto place = std::ranges::find(choices, filters.*field);
    adw_combo_row_set_selected(row, static_cast<guint>(place - choices.begin()));
  });
}

Gtk::Widget& AdvancedSearchSheet::addDate(FormSection& section, const char* name, const char* identifier,
                                          Date SearchFilters::*field) {
  AdwActionRow* row = makeSettingsRow({.title = name});
  auto* button = Gtk::make_managed<DateTimeButton>(
      name, [this, field](Date date) { edit([&](SearchFilters& filters) { filters.*field = date; }); });
  setIdentifier(*button, identifier);
  adw_action_row_add_suffix(row, GTK_WIDGET(button->gobj()));
  adw_action_row_set_activatable_widget(row, GTK_WIDGET(button->gobj()));
  section.addRow(row);
  follow([button, field](const SearchFilters& filters) {
    if (button->date() != filters.*field) {
      button->setDate(filters.*field);
    }
  });
  return *Glib::wrap(GTK_WIDGET(row));
}

void AdvancedSearchSheet::follow(std::function<void(const SearchFilters&)> show) {
  shows_.push_back(std::move(show));
}

void AdvancedSearchSheet::edit(const Change& change) {
  if (!isRefreshing_) {
    search_.edit(change);
  }
}

void AdvancedSearchSheet::refresh() {
  isRefreshing_ = true;
  for (const auto& show : shows_) {
    show(search_.filters());
  }
  isRefreshing_ = false;
}

void AdvancedSearchSheet::showOrHide() {
  if (!screen_.isShowingAdvancedSearch()) {
    dismiss();
  } else if (!isPresented()) {
    search_.open();
    present();
  }
}

}  // namespace tidewrack::ui
