#include <set>
#include <string>

#include <adwaita.h>

#include "screen/toolbar.h"
#include "ui/date_time_button.h"
#include "ui/window_fixture.h"

namespace tidewrack {
namespace {

class AdvancedSearchSheetTest : public WindowTest {
 protected:
  void openSheet() {
    open();
    import(archive("two.mbox",
                   archivedMessage("Message-ID: <plan@example.org>\nSubject: The plan\n", "text") +
                       archivedMessage("Message-ID: <other@example.org>\nSubject: Other\n", "text")));
    screen_->dismissImportStatus();
    runPending();
    press("toolbar.advancedSearch");
    ASSERT_NE(find("advancedSearch.root"), nullptr);
  }
  void type(const std::string& name, const char* text) {
    auto* row = find(name);
    ASSERT_NE(row, nullptr) << name;
    gtk_editable_set_text(GTK_EDITABLE(row->gobj()), text);
    runPending();
  }
  std::string summary() { return find<Gtk::Label>("advancedSearch.summary")->get_text(); }
};

TEST_F(AdvancedSearchSheetTest, ItOpensFromTheToolbarAndHasItsSize) {
  openSheet();
  auto* root = find("advancedSearch.root");
  int width = 0;
  int height = 0;
  root->get_size_request(width, height);
  EXPECT_EQ(width, 460);
  EXPECT_EQ(height, 560);
  EXPECT_EQ(summary(), "No hay filtros activos");
}

void collectTexts(GtkWidget* root, std::set<std::string>& texts) {
  if (GTK_IS_LABEL(root)) {
    texts.insert(gtk_label_get_text(GTK_LABEL(root)));
  }
  for (GtkWidget* child = gtk_widget_get_first_child(root); child != nullptr;
       child = gtk_widget_get_next_sibling(child)) {
    collectTexts(child, texts);
  }
}

TEST_F(AdvancedSearchSheetTest, ItSaysWhatItOffers) {
  openSheet();
  std::set<std::string> texts;
  collectTexts(find("advancedSearch.root")->gobj(), texts);
  for (const auto* text : {"Búsqueda Avanzada",
                           "Búsqueda de Texto",
                           "Buscar en asunto",
                           "Buscar en contenido",
                           "Buscar en remitente",
                           "Rango de Fechas",
                           "Filtrar por rango de fechas",
                           "Desde",
                           "Hasta",
                           "Última semana",
                           "Último mes",
                           "Último año",
                           "Tipo de archivo (ej: pdf, jpg)",
                           "Opciones Adicionales",
                           "Solo mensajes en conversaciones",
                           "Solo mensajes HTML",
                           "Tamaño del mensaje",
                           "Cualquiera",
                           "Cancelar",
                           "Limpiar",
                           "Aplicar"}) {
    EXPECT_TRUE(texts.contains(text)) << text;
  }
}

TEST_F(AdvancedSearchSheetTest, ApplyingFiltersTheListAndOffersToClearThem) {
  openSheet();
  type("advancedSearch.subject", "PLAN");
  EXPECT_EQ(summary(), "asunto contiene 'PLAN'");
  EXPECT_EQ(window_->list().model()->size(), 2U) << "not applied yet";
  press("advancedSearch.apply");
  EXPECT_TRUE(runUntil([&] { return window_->list().model()->size() == 1; }));
  EXPECT_TRUE(runUntil([&] { return find("advancedSearch.root") == nullptr; }));
  EXPECT_FALSE(screen_->isShowingAdvancedSearch());
  EXPECT_TRUE(screen_->advancedFilters().isActive());
  perform(ToolbarAction::clearFilters, *screen_);
  EXPECT_TRUE(runUntil([&] { return window_->list().model()->size() == 2; }));
}

TEST_F(AdvancedSearchSheetTest, CancellingForgetsAndClearingDoesNotClose) {
  openSheet();
  type("advancedSearch.from", "ann");
  press("advancedSearch.clear");
  EXPECT_EQ(summary(), "No hay filtros activos");
  EXPECT_NE(find("advancedSearch.root"), nullptr);
  type("advancedSearch.from", "ann");
  press("advancedSearch.cancel");
  EXPECT_FALSE(screen_->isShowingAdvancedSearch());
  EXPECT_FALSE(screen_->advancedFilters().isActive());
  ASSERT_TRUE(runUntil([&] { return find("advancedSearch.root") == nullptr; }));
  screen_->isShowingAdvancedSearch.set(true);
  runPending();
  EXPECT_EQ(summary(), "No hay filtros activos") << "it opens with what is applied";
}

TEST_F(AdvancedSearchSheetTest, TheDatesShowOnlyWhenTheyAreUsed) {
  openSheet();
  EXPECT_EQ(find("advancedSearch.startDate"), nullptr);
  EXPECT_EQ(find("advancedSearch.lastWeek"), nullptr);
  find<Gtk::Switch>("advancedSearch.useDates")->set_active(true);
  runPending();
  ASSERT_NE(find("advancedSearch.endDate"), nullptr);
  auto* start = find<ui::DateTimeButton>("advancedSearch.startDate");
  ASSERT_NE(start, nullptr);
  const Date year = start->date();
  press("advancedSearch.lastWeek");
  EXPECT_GT(start->date(), year);
  EXPECT_EQ(find<ui::DateTimeButton>("advancedSearch.endDate")->date() - start->date(), std::chrono::days(7));
}

TEST_F(AdvancedSearchSheetTest, TheFileTypeShowsOnlyForMessagesWithAttachments) {
  openSheet();
  EXPECT_EQ(find("advancedSearch.attachmentType"), nullptr);
  adw_combo_row_set_selected(ADW_COMBO_ROW(find("advancedSearch.attachments")->gobj()), 1);
  runPending();
  EXPECT_NE(find("advancedSearch.attachmentType"), nullptr);
  EXPECT_EQ(summary(), "con adjuntos");
  adw_combo_row_set_selected(ADW_COMBO_ROW(find("advancedSearch.size")->gobj()), 3);
  find<Gtk::Switch>("advancedSearch.onlyHTML")->set_active(true);
  find<Gtk::Switch>("advancedSearch.onlyInConversations")->set_active(true);
  press("advancedSearch.apply");
  const SearchFilters& applied = screen_->advancedFilters();
  EXPECT_EQ(applied.attachmentFilter, AttachmentFilter::withAttachments);
  EXPECT_EQ(applied.sizeFilter, SizeFilter::large);
  EXPECT_TRUE(applied.onlyHTML);
  EXPECT_TRUE(applied.onlyInConversations);
}

TEST_F(AdvancedSearchSheetTest, ACalendarDayKeepsTheTimeOfDay) {
  testApplication();
  Date chosen{};
  ui::DateTimeButton button("Desde", [&](Date date) { chosen = date; });
  const Date date{std::chrono::seconds(1'700'000'017)};
  button.setDate(date);
  EXPECT_EQ(chosen, Date()) << "a date that is set is not chosen";
  auto* calendar = dynamic_cast<Gtk::Calendar*>(button.get_popover()->get_child()->get_first_child());
  ASSERT_NE(calendar, nullptr);
  calendar->select_day(Glib::DateTime::create_now_local(1'700'000'017 + 3 * 86'400));
  EXPECT_EQ(chosen, date + std::chrono::days(3));
}

}  // namespace
}  // namespace tidewrack
