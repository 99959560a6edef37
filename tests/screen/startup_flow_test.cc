#include "mail/json_coding.h"
#include "screen_world.h"

namespace tidewrack {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class StartupFlow : public ScreenWorld {
 protected:
  static MessageList demoMessages() {
    auto message = std::make_shared<EmailMessage>();
    message->id = "demo-1";
    message->sourceLibraryID = "demo";
    return {message};
  }
  static DemoLibrary demo() { return {{{"demo", "Demo", "demo.mbox", Date(), false}}, demoMessages()}; }
};

TEST_F(StartupFlow, AStartBringsBackLibrariesAndMessages) {
  import({archive("a.mbox", {"a1", "a2"})});
  executor.advance(1s);
  import({archive("b.mbox", {"b1"})});
  // As text: a stored body keeps its store open.
  const auto inFull = [this] {
    std::vector<std::string> messages;
    for (const auto& message : screen().messages()) {
      messages.push_back(toJSON(*message).dump());
    }
    return messages;
  };
  const auto before = inFull();
  ContentView& screen = restart();
  EXPECT_THAT(screen.libraries(), SizeIs(2));
  EXPECT_EQ(screen.libraries()[0].displayName, "b");
  EXPECT_THAT(before, SizeIs(3));
  EXPECT_EQ(inFull(), before);
  EXPECT_FALSE(screen.sidebarSelection()) << "a start selects no library";
  EXPECT_EQ(screen.selectedMessageID(), screen.messages()[0]->id);
  EXPECT_FALSE(screen.isImporting());
  EXPECT_FALSE(screen.importStatus());
  EXPECT_FALSE(screen.showImportStatusSheet());
}

TEST_F(StartupFlow, ReportsItsStepsInOrder) {
  restart();
  EXPECT_THAT(statuses,
              ElementsAre(ImportStatus(ImportStatus::LoadingDatabase{DatabaseLoadStep::openingDatabase}),
                          ImportStatus(ImportStatus::LoadingDatabase{DatabaseLoadStep::loadingLibraries}),
                          ImportStatus(ImportStatus::LoadingDatabase{DatabaseLoadStep::loadingMessages})));
}

TEST_F(StartupFlow, IsUnderWayUntilAllIsLoaded) {
  const auto load = screen().startup();
  EXPECT_TRUE(screen().isImporting());
  EXPECT_TRUE(screen().showImportStatusSheet());
  EXPECT_TRUE(screen().hasLoadedPersistedLibraries());
  EXPECT_FALSE(screen().showsWelcome());
  executor.runUntilIdle();
  EXPECT_TRUE(load.done());
}

TEST_F(StartupFlow, AStoreWithMessagesAndNoTokensHasThemRebuiltAndTheNextStartLoadsThem) {
  import({archive("a.mbox", {"lighthouse"})});
  tokenStore = std::make_unique<FakeTokenStore>();
  restart();
  EXPECT_EQ(tokenStore->loads, 1);
  EXPECT_EQ(tokenStore->rewrites, 1);
  EXPECT_THAT(tokenStore->entries, testing::Not(IsEmpty()));
  screen().searchText.set("lighthouse");
  EXPECT_THAT(shownIDs(), ElementsAre("lighthouse"));
  restart();
  EXPECT_EQ(tokenStore->loads, 2);
  EXPECT_EQ(tokenStore->rewrites, 1);
  screen().searchText.set("lighthouse");
  EXPECT_THAT(shownIDs(), ElementsAre("lighthouse"));
}

TEST_F(StartupFlow, AStartWithStoredTokensReadsNoBody) {
  keepsTokens = true;
  restart();
  import({archive("a.mbox", {"lighthouse", "harbour"})});
  sql("DELETE FROM content");
  restart();
  EXPECT_FALSE(screen().importErrorMessage());
  screen().searchText.set("text of harbour");
  EXPECT_THAT(shownIDs(), ElementsAre("harbour"));
}

TEST_F(StartupFlow, AMessageThatHasChangedSinceItsTokensWereStoredIsReadAgain) {
  keepsTokens = true;
  restart();
  import({archive("a.mbox", {"lighthouse", "harbour"})});
  sql("UPDATE PersistedEmailMessage SET subject = 'Breakwater' WHERE id = 'harbour'");
  restart();
  screen().searchText.set("breakwater");
  EXPECT_THAT(shownIDs(), ElementsAre("harbour"));
  screen().searchText.set("about");
  EXPECT_THAT(shownIDs(), ElementsAre("lighthouse"));
}

TEST_F(StartupFlow, TokensThatWereNeverStoredAreStoredByTheNextStart) {
  keepsTokens = true;
  restart();
  import({archive("a.mbox", {"lighthouse", "harbour"})});
  // As when the program is killed between the messages and their tokens.
  sql("UPDATE PersistedEmailMessage SET subject = 'Breakwater' WHERE id = 'harbour'");
  restart();
  executor.runUntilIdle();
  // A third start has no bodies to read, and needs none.
  sql("DELETE FROM content");
  restart();
  executor.runUntilIdle();
  screen().searchText.set("breakwater");
  EXPECT_THAT(shownIDs(), ElementsAre("harbour"));
  screen().searchText.set("text of lighthouse");
  EXPECT_THAT(shownIDs(), ElementsAre("lighthouse"));
}

TEST_F(StartupFlow, AFailureWhileStoringMissingTokensShowsNoAlert) {
  import({archive("a.mbox", {"a1", "a2"})});
  tokenStore = std::make_unique<FakeTokenStore>();
  tokenStore->entries = {{"about", "a1"}};
  tokenStore->fails = true;
  restart();
  executor.runUntilIdle();
  EXPECT_EQ(tokenStore->rewrites, 1);
  EXPECT_FALSE(screen().importErrorMessage());
  tokenStore->fails = false;
  restart();
  executor.runUntilIdle();
  EXPECT_EQ(tokenStore->rewrites, 2);
  restart();
  executor.runUntilIdle();
  EXPECT_EQ(tokenStore->rewrites, 2);
}

TEST_F(StartupFlow, AnEmptyStoreRewritesNoIndexSelectsNothingAndShowsTheWelcome) {
  tokenStore = std::make_unique<FakeTokenStore>();
  ContentView& screen = restart();
  EXPECT_EQ(tokenStore->rewrites, 0);
  EXPECT_FALSE(screen.selectedMessageID());
  EXPECT_TRUE(screen.showsWelcome());
}

TEST_F(StartupFlow, ASecondAppearanceOfTheViewDoesNothing) {
  restart();
  statuses.clear();
  executor.finish(screen().startup());
  EXPECT_THAT(statuses, IsEmpty());
}

TEST_F(StartupFlow, AFailureWhileFetchingMessagesShowsTheAlertAndLeavesTheListsEmpty) {
  import({archive("a.mbox", {"a1"})});
  sql("UPDATE message SET toData = x'7b'");
  ContentView& screen = restart();
  ASSERT_TRUE(statusAs<ImportStatus::Error>());
  EXPECT_EQ(screen.importErrorMessage(), statusAs<ImportStatus::Error>()->message);
  EXPECT_TRUE(screen.showImportStatusSheet()) << "the alert shows over the status sheet";
  EXPECT_THAT(screen.libraries(), IsEmpty());
  EXPECT_THAT(screen.messages().get(), IsEmpty());
  EXPECT_FALSE(screen.isImporting());
}

TEST_F(StartupFlow, ACorruptCatalogShowsTheAlert) {
  import({archive("a.mbox", {"a1"})});
  write(catalogFile(), "not a catalog");
  ContentView& screen = restart();
  EXPECT_TRUE(statusAs<ImportStatus::Error>());
  EXPECT_TRUE(screen.importErrorMessage());
  EXPECT_THAT(screen.messages().get(), IsEmpty());
  EXPECT_EQ(textOf(catalogFile()), "not a catalog");
}

TEST_F(StartupFlow, AFailureWhileRewritingTheTokensIsTold) {
  import({archive("a.mbox", {"a1"})});
  tokenStore = std::make_unique<FakeTokenStore>();
  tokenStore->fails = true;
  ContentView& screen = restart();
  EXPECT_EQ(screen.importErrorMessage(), "The tokens cannot be written.");
  EXPECT_THAT(loadedIDs(), ElementsAre("a1"));
}

TEST_F(StartupFlow, TheSettingForOpeningTheLastLibraryIsNotRead) {
  import({archive("a.mbox", {"a1"})});
  settings.set(SettingKey::autoOpenLastLibrary, true);
  EXPECT_FALSE(restart().sidebarSelection());
}

TEST_F(StartupFlow, CategorisationStartsOnlyWithBothSettingsAndAModel) {
  import({archive("a.mbox", {"a1"})});
  categorizer = std::make_unique<FakeCategorizer>();
  restart();
  EXPECT_EQ(categorizer->runs, 1);
  categorizer->isAvailable = false;
  restart();
  EXPECT_EQ(categorizer->runs, 1);
  categorizer->isAvailable = true;
  settings.set(SettingKey::intelligenceEnabled, false);
  restart();
  EXPECT_EQ(categorizer->runs, 1);
}

TEST_F(StartupFlow, ACategoryReachesTheScreenAndTheStore) {
  import({archive("a.mbox", {"a1", "a2"})});
  categorizer = std::make_unique<FakeCategorizer>();
  restart();
  categorizer->report("a2", "Travel");
  categorizer->report("gone", "Work");
  executor.runUntilIdle();
  EXPECT_EQ(screen().messages()[1]->category, Text("Travel"));
  EXPECT_FALSE(screen().messages()[0]->category);
  EXPECT_THAT(screen().categoriesInScope(), ElementsAre("Travel"));
  EXPECT_EQ(restart().messages()[1]->category, Text("Travel"));
}

TEST_F(StartupFlow, TheLaunchModesShowTheDemoLibraryWithoutTouchingTheStore) {
  import({archive("a.mbox", {"a1"})});
  for (const std::string argument : {"--screenshots", "--demo-data"}) {
    auto world = services();
    world.arguments = {"tidewrack", argument};
    world.demoLibrary = demo;
    ContentView& screen = open(world);
    executor.finish(screen.startup());
    executor.runUntilIdle();
    EXPECT_THAT(loadedIDs(), ElementsAre("demo-1"));
    EXPECT_EQ(screen.libraries()[0].displayName, "Demo");
    EXPECT_EQ(screen.selectedMessageID(), Text("demo-1"));
    EXPECT_FALSE(screen.importStatus());
    EXPECT_FALSE(screen.isImporting());
  }
}

TEST_F(StartupFlow, ALaunchModeIsRecognisedByExactMembershipAlone) {
  import({archive("a.mbox", {"a1"})});
  auto world = services();
  world.arguments = {"tidewrack", "--screenshots=1", "--demo", "--DEMO-DATA"};
  world.demoLibrary = demo;
  ContentView& screen = open(world);
  executor.finish(screen.startup());
  EXPECT_THAT(loadedIDs(), ElementsAre("a1"));
}

}  // namespace
}  // namespace tidewrack
