#include "screen/export_view.h"

#include "screen_world.h"

namespace tidewrack {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

class ExportSheetState : public ScreenWorld {
 protected:
  ExportView& present() {
    screen().isShowingExport.set(true);
    view_ = ExportView::create(
        screen(), {.beginSavePanel = [this](ExportView::SavePanel request) { panel_ = std::move(request); },
                   .revealFile = [this](const std::filesystem::path& file) { revealed_.push_back(file); }});
    return *view_;
  }
  /// Answers the file dialog.
  void choose(std::optional<std::filesystem::path> file) {
    ASSERT_TRUE(panel_);
    const auto request = *std::exchange(panel_, std::nullopt);
    request.completion(std::move(file));
  }
  [[nodiscard]] long exportedFiles() const {
    return std::distance(std::filesystem::directory_iterator(folder / "out"), {});
  }

  void SetUp() override {
    std::filesystem::create_directory(folder / "out");
    import({archive("work.mbox", {"w1", "w2", "w3"})});
  }

  std::shared_ptr<ExportView> view_;
  std::optional<ExportView::SavePanel> panel_;
  std::vector<std::filesystem::path> revealed_;
};

TEST_F(ExportSheetState, BeginsWithHTMLAndNothingUnderWay) {
  const auto& view = present();
  EXPECT_EQ(view.selectedFormat(), ExportView::Format::html);
  EXPECT_FALSE(view.isExporting());
  EXPECT_FALSE(view.exportError());
  EXPECT_EQ(view.countText(), "3 mensajes seleccionados");
}

TEST_F(ExportSheetState, AnEmptyListOpensTheSheetAndCannotBeExported) {
  screen().searchText.set("nothing has this word");
  executor.runUntilIdle();
  auto& view = present();
  EXPECT_EQ(view.countText(), "0 mensajes seleccionados");
  EXPECT_FALSE(view.canExport());
  executor.finish(view.refreshSize());
  EXPECT_EQ(view.approximateSize(), 0U);
  view.beginExport();
  EXPECT_EQ(view.exportError(), "No hay mensajes para exportar");
  EXPECT_FALSE(panel_);
}

TEST_F(ExportSheetState, TheSizeCountsTheBodiesAndDoesNotChangeWithTheFormat) {
  auto& view = present();
  EXPECT_EQ(view.sizeText(), "");
  executor.finish(view.refreshSize());
  EXPECT_EQ(view.sizeText(), "Tamaño aproximado: 33 bytes");
  for (const auto format : ExportUtility::allFormats) {
    view.selectedFormat.set(format);
    executor.runUntilIdle();
    EXPECT_EQ(view.sizeText(), "Tamaño aproximado: 33 bytes");
  }
}

TEST_F(ExportSheetState, EachFormatHasItsDescriptionAndItsSuggestedName) {
  auto& view = present();
  std::vector<std::string> names;
  for (const auto format : ExportUtility::allFormats) {
    EXPECT_THAT(std::string(ExportView::formatDescription(format)), Not(IsEmpty()));
    view.selectedFormat.set(format);
    view.beginExport();
    names.push_back(panel_->fileName);
    EXPECT_EQ(panel_->format, format);
    choose(std::nullopt);
  }
  EXPECT_THAT(names, ElementsAre("mensajes_export.txt", "mensajes_export.html", "mensajes_export.json",
                                 "mensajes_export.csv", "mensajes_export.mbox"));
}

TEST_F(ExportSheetState, ACancelledSavePanelLeavesTheSheetOpenWithNoAlert) {
  auto& view = present();
  view.beginExport();
  EXPECT_FALSE(view.isExporting()) << "the dialog has begun";
  choose(std::nullopt);
  executor.runUntilIdle();
  EXPECT_TRUE(screen().isShowingExport());
  EXPECT_FALSE(view.exportError());
  EXPECT_FALSE(view.isExporting());
  EXPECT_THAT(revealed_, IsEmpty());
}

TEST_F(ExportSheetState, WritesTheListAsShownClosesTheSheetAndShowsTheFile) {
  screen().searchText.set("w2");
  executor.runUntilIdle();
  auto& view = present();
  view.selectedFormat.set(ExportView::Format::csv);
  view.beginExport();
  choose(folder / "out/list.csv");
  EXPECT_TRUE(view.isExporting());
  EXPECT_FALSE(view.canExport());
  EXPECT_THAT(revealed_, IsEmpty());
  executor.runUntilIdle();
  EXPECT_FALSE(view.isExporting());
  EXPECT_EQ(view.progress(), 1.0);
  EXPECT_FALSE(screen().isShowingExport());
  EXPECT_THAT(revealed_, ElementsAre(folder / "out/list.csv"));
  const auto text = textOf(folder / "out/list.csv");
  EXPECT_THAT(text, StartsWith("ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\nw2,About w2,"));
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
}

TEST_F(ExportSheetState, AFileThatCannotBeWrittenIsToldAndTheSheetStays) {
  auto& view = present();
  view.beginExport();
  choose(folder / "missing/list.html");
  executor.runUntilIdle();
  ASSERT_TRUE(view.exportError());
  EXPECT_THAT(*view.exportError(), StartsWith("Error al guardar: “list.html” could not be written"));
  EXPECT_TRUE(screen().isShowingExport());
  EXPECT_FALSE(view.isExporting());
  EXPECT_THAT(revealed_, IsEmpty());
  view.dismissError();
  EXPECT_FALSE(view.exportError());
}

TEST_F(ExportSheetState, ABodyThatIsGoneIsToldAndLeavesNoFile) {
  auto& view = present();
  sql("DELETE FROM content");
  view.beginExport();
  choose(folder / "out/list.html");
  executor.runUntilIdle();
  ASSERT_TRUE(view.exportError());
  EXPECT_THAT(*view.exportError(), Not(HasSubstr("Error al guardar")));
  EXPECT_EQ(exportedFiles(), 0);
}

TEST_F(ExportSheetState, ClosingTheSheetGivesUpTheExportAndLeavesNoFile) {
  auto& view = present();
  view.beginExport();
  choose(folder / "out/list.html");
  view.close();
  executor.runUntilIdle();
  EXPECT_FALSE(screen().isShowingExport());
  EXPECT_FALSE(view.exportError());
  EXPECT_THAT(revealed_, IsEmpty());
  EXPECT_EQ(exportedFiles(), 0);
}

TEST_F(ExportSheetState, TheStateMayGoWhileItsExportRuns) {
  present().beginExport();
  choose(folder / "out/list.html");
  view_->giveUp();
  view_.reset();
  screen().isShowingExport.set(false);
  executor.runUntilIdle();
  EXPECT_EQ(exportedFiles(), 0);
}

TEST_F(ExportSheetState, OnlyOneFileDialogIsOpenAtATime) {
  auto& view = present();
  view.beginExport();
  ASSERT_TRUE(panel_);
  const auto first = *std::exchange(panel_, std::nullopt);
  view.beginExport();
  EXPECT_FALSE(panel_);
  first.completion(std::nullopt);
}

TEST(ExportFileName, ANameWithoutAnExtensionIsCompletedFromTheFormat) {
  using Format = ExportUtility::ExportFormat;
  EXPECT_EQ(withExportExtension("/tmp/mail", Format::mbox), "/tmp/mail.mbox");
  EXPECT_EQ(withExportExtension("/tmp/mail.txt", Format::mbox), "/tmp/mail.txt");
  EXPECT_EQ(withExportExtension("/tmp/v1.2/mail", Format::csv), "/tmp/v1.2/mail.csv");
}

}  // namespace
}  // namespace tidewrack
