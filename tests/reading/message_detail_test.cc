#include "reading/message_detail.h"

#include <filesystem>
#include <optional>

#include <gtest/gtest.h>

#include "platform/failure.h"
#include "platform/files.h"
#include "support/temporary_folder.h"
#include "support/virtual_executor.h"

namespace tidewrack {
namespace {

using Category = IntelligenceService::EmailCategory;
using Kind = IntelligenceService::Availability::Kind;

/// A model that answers when the test says so.
class FakeIntelligence : public IntelligenceService {
 public:
  explicit FakeIntelligence(VirtualExecutor& executor) : executor_(executor) {}

  [[nodiscard]] Availability checkAvailability() const override { return {kind, {}}; }
  Task<EmailCategory> detectCategory(std::shared_ptr<const EmailMessage> /*message*/) override {
    co_await answer();
    co_return EmailCategory::travel;
  }
  Task<Sentiment> analyzeSentiment(std::shared_ptr<const EmailMessage> /*message*/) override {
    co_await answer();
    co_return Sentiment::positive;
  }
  Task<std::string> summarize(std::shared_ptr<const EmailMessage> message) override {
    co_await answer();
    co_return "About " + message->subject.string();
  }
  Task<std::vector<ReplySuggestion>> generateReplySuggestions(
      std::shared_ptr<const EmailMessage> /*message*/) override {
    co_await answer();
    co_return std::vector<ReplySuggestion>{{UUID::make(), "Yes", "brief"}};
  }

  Kind kind = Kind::available;
  bool fails = false;

 private:
  Task<> answer() {
    co_await sleepFor(executor_, std::chrono::milliseconds(10));
    if (fails) {
      throw IntelligenceError(IntelligenceError::Kind::emptyResponse);
    }
  }

  VirtualExecutor& executor_;
};

/// Bytes that cannot be read.
class BrokenSource : public ContentSource {
 public:
  [[nodiscard]] std::string bytes() const override { throw StoreFailure("The store is gone."); }
  [[nodiscard]] std::uint64_t size() const override { return 1; }
};

class MessageDetailTest : public testing::Test {
 protected:
  static std::shared_ptr<EmailMessage> makeMessage(const char* id) {
    auto message = std::make_shared<EmailMessage>();
    message->id = id;
    message->subject = id;
    message->from.address = "ana@example.org";
    return message;
  }
  static std::shared_ptr<EmailMessage> htmlMessage(const char* id, const std::string& html) {
    auto message = makeMessage(id);
    message->htmlBody = Content::ofBytes(html);
    return message;
  }
  static std::shared_ptr<EmailMessage> imageMessage(const char* id) {
    auto message = htmlMessage(id, "<img src='cid:a'>");
    EmailAttachment attachment;
    attachment.fileName = "a.png";
    attachment.mimeType = "image/png";
    attachment.contentID = Text("a");
    attachment.isInline = true;
    attachment.data = Content::ofBytes("foo");
    message->attachments.push_back(attachment);
    return message;
  }

  void show(std::shared_ptr<const EmailMessage> message) {
    detail->setMessage(std::move(message));
    executor.runUntilIdle();
  }
  std::string shownHTML() const { return detail->body().html ? *detail->body().html : "(none)"; }
  std::string shownText() const { return detail->body().text ? *detail->body().text : "(none)"; }
  void setBackground(const char* mode) { settings.set(SettingKey::htmlBackgroundMode, std::string(mode)); }

  TemporaryFolder folder;
  VirtualExecutor executor;
  Settings settings{folder / "settings.ini"};
  FakeIntelligence intelligence{executor};
  std::optional<MessageDetail> detail{std::in_place, executor, settings, intelligence};
};

TEST_F(MessageDetailTest, AMessageWhoseHTMLIsOnlyWhiteSpaceHasNoBodyPickerAndShowsText) {
  auto message = htmlMessage("1", " \n\t ");
  message->plainBody = Content::ofBytes("Plain");
  show(message);
  EXPECT_FALSE(detail->hasHTML());
  EXPECT_EQ(detail->displayMode(), BodyDisplayMode::text);
  EXPECT_EQ(detail->body().mode, BodyDisplayMode::text);
  EXPECT_EQ(shownText(), "Plain");
}

TEST_F(MessageDetailTest, ATextMessageWithAnEmptyBodyAndNoHTMLShowsNoBodyAvailable) {
  auto message = makeMessage("1");
  message->plainBody = Content::ofBytes("");
  show(message);
  EXPECT_FALSE(detail->hasHTML());
  EXPECT_EQ(shownText(), "No body available");
}

TEST_F(MessageDetailTest, AMessageWithHTMLShowsItAndItsTextOnDemand) {
  show(htmlMessage("1", "<p>Hello <b>you</b></p>"));
  EXPECT_TRUE(detail->hasHTML());
  EXPECT_EQ(detail->body().mode, BodyDisplayMode::html);
  EXPECT_EQ(shownHTML(), "<p>Hello <b>you</b></p>");
  EXPECT_EQ(detail->resolvedHTMLMessageID(), Text("1"));
  detail->setDisplayMode(BodyDisplayMode::text);
  EXPECT_EQ(detail->body().mode, BodyDisplayMode::text);
  executor.runUntilIdle();
  EXPECT_EQ(shownText(), "Hello you");
}

TEST_F(MessageDetailTest, BackgroundDarkOnAWhiteMessageIsDarkAndInverted) {
  setBackground("dark");
  show(htmlMessage("1", "<body bgcolor=\"#ffffff\">x"));
  EXPECT_EQ(detail->effectiveAppearance(), HTMLAppearance::dark);
  EXPECT_TRUE(detail->invertContent());
  EXPECT_EQ(detail->body().appearance, HTMLAppearance::dark);
  EXPECT_TRUE(detail->body().invertContent);
}

TEST_F(MessageDetailTest, BackgroundDarkOnAMessageWithNoHintIsInverted) {
  setBackground("dark");
  show(htmlMessage("1", "x"));
  EXPECT_TRUE(detail->invertContent());
}

TEST_F(MessageDetailTest, BackgroundDarkOnADarkMessageIsNotInverted) {
  setBackground("dark");
  show(htmlMessage("1", "<body bgcolor='#000'>"));
  EXPECT_FALSE(detail->invertContent());
}

TEST_F(MessageDetailTest, BackgroundLightOnAMessageWithNoHintIsNotInverted) {
  setBackground("light");
  show(htmlMessage("1", "x"));
  EXPECT_EQ(detail->effectiveAppearance(), HTMLAppearance::light);
  EXPECT_FALSE(detail->invertContent());
}

TEST_F(MessageDetailTest, WithAutoTheInversionIsFalseWhateverTheMessageSays) {
  detail->setSystemIsDark(true);
  for (const auto* html : {"x", "<body bgcolor='#000'>", "<body bgcolor='#fff'>"}) {
    show(htmlMessage(html, html));
    EXPECT_FALSE(detail->invertContent()) << html;
  }
}

TEST_F(MessageDetailTest, WithAutoTheHintComesBeforeTheSystem) {
  detail->setSystemIsDark(true);
  show(htmlMessage("1", "<body bgcolor='#fff'>"));
  EXPECT_EQ(detail->body().appearance, HTMLAppearance::light);
  show(htmlMessage("2", "x"));
  EXPECT_EQ(detail->body().appearance, HTMLAppearance::dark);
  detail->setSystemIsDark(false);
  EXPECT_EQ(detail->body().appearance, HTMLAppearance::light);
}

TEST_F(MessageDetailTest, AnUnknownStoredBackgroundCountsAsAuto) {
  setBackground("sepia");
  EXPECT_EQ(detail->htmlBackground(), HTMLBackgroundPreference::automatic);
}

TEST_F(MessageDetailTest, AChosenBackgroundIsStoredAndTakesEffectAtOnce) {
  show(htmlMessage("1", "x"));
  detail->setHTMLBackground(HTMLBackgroundPreference::dark);
  EXPECT_EQ(settings.string(SettingKey::htmlBackgroundMode), "dark");
  EXPECT_EQ(detail->htmlBackground(), HTMLBackgroundPreference::dark);
  EXPECT_TRUE(detail->body().invertContent);
}

TEST_F(MessageDetailTest, TheStoredBodyShowsUntilItsImagesAreInPlace) {
  detail->setMessage(imageMessage("1"));
  EXPECT_EQ(detail->body().mode, BodyDisplayMode::html);
  EXPECT_EQ(shownHTML(), "(none)");
  ASSERT_TRUE(executor.runNextInBackground());
  executor.runMain();
  EXPECT_EQ(shownHTML(), "<img src='cid:a'>");
  EXPECT_EQ(detail->resolvedHTMLMessageID(), std::nullopt);
  executor.runUntilIdle();
  EXPECT_EQ(shownHTML(), "<img src='data:image/png;base64,Zm9v'>");
  EXPECT_EQ(detail->resolvedHTMLMessageID(), Text("1"));
}

TEST_F(MessageDetailTest,
       SelectingAnotherMessageWhileTheFirstIsResolvingShowsTheSecondsBodyAndNeverTheFirsts) {
  std::vector<std::string> seen;
  const auto watching = detail->body.observe([&] { seen.push_back(shownHTML()); });
  detail->setMessage(imageMessage("1"));
  ASSERT_TRUE(executor.runNextInBackground());  // The first body is read, and its result waits.
  detail->setMessage(htmlMessage("2", "Second"));
  executor.runUntilIdle();
  EXPECT_EQ(shownHTML(), "Second");
  for (const auto& html : seen) {
    EXPECT_TRUE(html == "Second" || html == "(none)") << html;
  }
}

TEST_F(MessageDetailTest, AResultForAMessageNoLongerShownIsDroppedAfterItsImagesToo) {
  detail->setMessage(imageMessage("1"));
  ASSERT_TRUE(executor.runNextInBackground());
  executor.runMain();
  ASSERT_TRUE(executor.runNextInBackground());  // The images are in place, and the result waits.
  detail->setMessage(makeMessage("2"));
  executor.runUntilIdle();
  EXPECT_EQ(detail->resolvedHTMLCache(), nullptr);
  EXPECT_EQ(detail->resolvedHTMLMessageID(), Text("2"));
  EXPECT_EQ(shownText(), "No body available");
}

TEST_F(MessageDetailTest, ADetailThatIsGoneDropsWhatComesBack) {
  auto message = imageMessage("1");
  detail->setMessage(message);
  detail->setDisplayMode(BodyDisplayMode::text);
  detail->generateSummary();
  ASSERT_TRUE(executor.runNextInBackground());
  detail.reset();
  executor.advance(std::chrono::seconds(1));
  EXPECT_EQ(message.use_count(), 1);
}

TEST_F(MessageDetailTest, NoMessageShowsNothing) {
  show(imageMessage("1"));
  show(nullptr);
  EXPECT_TRUE(detail->headerRows().empty());
  EXPECT_TRUE(detail->attachments().empty());
  EXPECT_EQ(detail->body(), DetailBody());
  EXPECT_FALSE(detail->hasHTML());
}

TEST_F(MessageDetailTest, AnotherValueOfTheSameMessageKeepsBodyAndMode) {
  show(htmlMessage("1", "x"));
  detail->setDisplayMode(BodyDisplayMode::text);
  auto changed = htmlMessage("1", "x");
  changed->labels = {"Work"};
  show(changed);
  EXPECT_EQ(detail->displayMode(), BodyDisplayMode::text);
  ASSERT_EQ(detail->badges().size(), 1U);
  EXPECT_EQ(detail->badges().front().id, "user:Work");
}

TEST_F(MessageDetailTest, AnotherMessageClearsWhatTheModelSaidOfTheLast) {
  show(makeMessage("1"));
  detail->generateSummary();
  detail->detectCategory();
  detail->analyzeSentiment();
  detail->generateReplies();
  executor.advance(std::chrono::seconds(1));
  EXPECT_EQ(detail->generatedSummary(), "About 1");
  EXPECT_TRUE(detail->showSummaryPopover());
  EXPECT_EQ(detail->detectedCategory(), Category::travel);
  EXPECT_EQ(detail->analyzedSentiment(), IntelligenceService::Sentiment::positive);
  EXPECT_EQ(detail->replySuggestions().size(), 1U);
  show(makeMessage("2"));
  EXPECT_EQ(detail->generatedSummary(), std::nullopt);
  EXPECT_FALSE(detail->showSummaryPopover());
  EXPECT_EQ(detail->detectedCategory(), std::nullopt);
  EXPECT_EQ(detail->analyzedSentiment(), std::nullopt);
  EXPECT_TRUE(detail->replySuggestions().empty());
}

TEST_F(MessageDetailTest, AFailedOperationShowsItsErrorAndClearsItsFlag) {
  intelligence.fails = true;
  show(makeMessage("1"));
  detail->generateSummary();
  EXPECT_TRUE(detail->isGeneratingSummary());
  executor.advance(std::chrono::seconds(1));
  EXPECT_FALSE(detail->isGeneratingSummary());
  EXPECT_EQ(detail->intelligenceError(), "El modelo no devolvió contenido");
}

TEST_F(MessageDetailTest, AStoredCategoryIsReadExactlyOrTolerantly) {
  const auto categoryOf = [&](const char* stored) {
    auto message = makeMessage(stored);
    message->category = Text(stored);
    show(message);
    return detail->detectedCategory();
  };
  EXPECT_EQ(categoryOf("Finance"), Category::finance);
  EXPECT_EQ(categoryOf("about shopping"), Category::shopping);
  EXPECT_EQ(categoryOf("?"), Category::other);
  EXPECT_EQ(categoryOf(""), std::nullopt);
}

TEST_F(MessageDetailTest, TheIntelligenceRowFollowsTheModelAndTheSettings) {
  EXPECT_EQ(detail->intelligenceRow(), (IntelligenceRow{true, true, false, true}));
  settings.set(SettingKey::enableSentimentAnalysis, true);
  settings.set(SettingKey::enableSmartReply, false);
  EXPECT_EQ(detail->intelligenceRow(), (IntelligenceRow{true, true, true, false}));
  settings.set(SettingKey::intelligenceEnabled, false);
  EXPECT_FALSE(detail->intelligenceRow().isShown());
}

TEST_F(MessageDetailTest, WithoutAModelTheIntelligenceRowIsHidden) {
  UnavailableIntelligenceService none;
  detail.emplace(executor, settings, none);
  EXPECT_FALSE(detail->intelligenceRow().isShown());
  show(makeMessage("1"));
  detail->generateSummary();
  executor.runUntilIdle();
  EXPECT_EQ(detail->intelligenceError(), "Apple Intelligence no está disponible en este dispositivo");
}

TEST_F(MessageDetailTest, ABodyThatCannotBeReadShowsWhy) {
  auto message = makeMessage("1");
  message->htmlBody = Content(std::make_shared<BrokenSource>());
  show(message);
  EXPECT_FALSE(detail->hasHTML());
  EXPECT_EQ(shownText(), "The store is gone.");
}

TEST_F(MessageDetailTest, AnImageThatCannotBeReadLeavesTheBodyAsItIs) {
  auto message = imageMessage("1");
  message->attachments.front().data = Content(std::make_shared<BrokenSource>());
  show(message);
  EXPECT_EQ(shownHTML(), "<img src='cid:a'>");
}

TEST_F(MessageDetailTest, ASavedAttachmentHasItsBytes) {
  show(imageMessage("1"));
  executor.finish(detail->saveAttachment(detail->message()->attachments[0], (folder / "saved.png").string()));
  EXPECT_EQ(readFile(folder / "saved.png"), "foo");
  EXPECT_EQ(detail->saveErrorMessage(), std::nullopt);
}

TEST_F(MessageDetailTest, AnAttachmentIsSavedAlthoughAnotherMessageIsShownByThen) {
  show(imageMessage("1"));
  const EmailAttachment attachment = detail->message()->attachments[0];
  show(makeMessage("2"));
  executor.finish(detail->saveAttachment(attachment, (folder / "saved.png").string()));
  EXPECT_EQ(readFile(folder / "saved.png"), "foo");
}

TEST_F(MessageDetailTest, AnAttachmentThatCannotBeSavedRaisesTheAlert) {
  show(imageMessage("1"));
  executor.finish(detail->saveAttachment(detail->message()->attachments[0],
                                         (folder / "no-such-folder/saved.png").string()));
  EXPECT_TRUE(detail->saveErrorMessage().has_value());
}

TEST(HTMLBackgroundPreference, HasItsTextsAndIcons) {
  using Preference = HTMLBackgroundPreference;
  EXPECT_EQ(title(Preference::automatic), "Auto");
  EXPECT_EQ(title(Preference::light), "Light");
  EXPECT_EQ(title(Preference::dark), "Dark");
  EXPECT_EQ(icon(Preference::automatic), "circle.lefthalf.filled");
  EXPECT_EQ(icon(Preference::light), "sun.max");
  EXPECT_EQ(icon(Preference::dark), "moon");
  for (const auto preference : {Preference::automatic, Preference::light, Preference::dark}) {
    EXPECT_EQ(htmlBackgroundPreference(rawValue(preference)), preference);
  }
  EXPECT_EQ(htmlBackgroundPreference("AUTO"), Preference::automatic);
}

}  // namespace
}  // namespace tidewrack
