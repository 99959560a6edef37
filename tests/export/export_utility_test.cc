#include "export/export_utility.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include "mail/json_coding.h"
#include "mail/mbox_importer.h"
#include "support/temporary_folder.h"

namespace tidewrack {
namespace {

using Format = ExportUtility::ExportFormat;

/// English texts in UTC, whatever the machine is set to.
class ExportTest : public testing::Test {
 protected:
  ExportTest() : zone_(icu::TimeZone::createDefault()) {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(icu::Locale::getUS(), status);
    icu::TimeZone::setDefault(*icu::TimeZone::getGMT());
  }
  ~ExportTest() override {
    UErrorCode status = U_ZERO_ERROR;
    icu::Locale::setDefault(locale_, status);
    icu::TimeZone::adoptDefault(zone_.release());
  }

 private:
  icu::Locale locale_ = icu::Locale::getDefault();
  std::unique_ptr<icu::TimeZone> zone_;
};

Date june17() {
  return *parseISO8601("2026-06-17T16:45:00Z");
}
Date exportTime() {
  return *parseISO8601("2026-11-20T08:05:09Z");
}

EmailMessage fullMessage() {
  EmailMessage message;
  message.id = "a1@example.org";
  message.sourceLibraryID = "LIB";
  message.sourceLibraryName = "Work Mail";
  message.subject = "Q2 <review>";
  message.from = {Text("Ana"), "ana@example.org"};
  message.to = {{std::nullopt, "bob@example.org"}, {Text("Carla"), "carla@example.org"}};
  message.cc = {{std::nullopt, "dan@example.org"}};
  message.date = june17();
  message.snippet = "Hello";
  message.plainBody = Content::ofBytes("Hello\n\nFrom me");
  message.labels = {"Inbox", "Work"};
  message.conversationID = "a1@example.org";
  EmailAttachment attachment;
  attachment.id = *UUID::parse("00000000-0000-4000-8000-000000000001");
  attachment.fileName = "plan.pdf";
  attachment.mimeType = "application/pdf";
  attachment.data = Content::ofBytes("PDF");
  message.attachments = {attachment};
  return message;
}

EmailMessage bareMessage() {
  EmailMessage message;
  message.id = "b2@example.org";
  message.subject = "(No Subject)";
  message.from.address = "bob@example.org";
  message.snippet = "Only a snippet";
  message.conversationID = "b2@example.org";
  return message;
}

std::string exported(const std::vector<EmailMessage>& messages, Format format) {
  MessageList list;
  for (const auto& message : messages) {
    list.push_back(std::make_shared<EmailMessage>(message));
  }
  std::string bytes;
  ExportUtility::exportMessages(
      list, format, [&bytes](std::string_view part) { bytes += part; }, exportTime());
  return bytes;
}

// The narrow no-break space that the locale data puts before AM and PM.
#define NNBSP "\u202F"

TEST_F(ExportTest, TextHasEveryLineInItsPlace) {
  const std::string rule = "=======================================================================\n";
  EXPECT_EQ(exported({fullMessage(), bareMessage()}, Format::txt),
            rule + "Mensaje 1 de 2\n" + rule +
                "\nAsunto: Q2 <review>\nDe: Ana <ana@example.org>\n"
                "Para: bob@example.org, Carla <carla@example.org>\nCC: dan@example.org\n"
                "Fecha: June 17, 2026 at 4:45:00" NNBSP
                "PM\nEtiquetas: Inbox, Work\n\nHello\n\nFrom me\n\n"
                "Adjuntos (1):\n  - plan.pdf (application/pdf)\n\n\n\n" +
                rule + "Mensaje 2 de 2\n" + rule +
                "\nAsunto: (No Subject)\nDe: bob@example.org\nPara: \n\nOnly a snippet\n\n\n\n");
}

TEST_F(ExportTest, MboxHasOneEntryAMessage) {
  EXPECT_EQ(
      exported({fullMessage(), bareMessage()}, Format::mbox),
      "From ana@example.org Wed Jun 17 16:45:00 2026\n"
      "From: Ana <ana@example.org>\nTo: bob@example.org, Carla <carla@example.org>\nCc: dan@example.org\n"
      "Subject: Q2 <review>\nDate: Jun 17, 2026, 4:45:00" NNBSP
      "PM\nMessage-ID: <a1@example.org>\n"
      "X-Gmail-Labels: Inbox,Work\n\nHello\n>From me\n\n"
      "From bob@example.org Fri Nov 20 08:05:09 2026\n"
      "From: bob@example.org\nTo: \nSubject: (No Subject)\nDate: Nov 20, 2026, 8:05:09" NNBSP
      "AM\n"
      "Message-ID: <b2@example.org>\n\nOnly a snippet\n\n");
}

TEST_F(ExportTest, CsvHasAHeaderAndOneLineAMessage) {
  EXPECT_EQ(exported({fullMessage(), bareMessage()}, Format::csv),
            "ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\n"
            "a1@example.org,Q2 <review>,Ana <ana@example.org>,bob@example.org; Carla <carla@example.org>,"
            "dan@example.org,\"6/17/2026, 4:45:00" NNBSP
            "PM\",Inbox; Work,1,Work Mail\n"
            "b2@example.org,(No Subject),bob@example.org,,,,,0,\n");
}

TEST_F(ExportTest, ASubjectWithACommaOrQuotesIsQuotedInCsv) {
  auto message = bareMessage();
  message.subject = "one, two";
  EXPECT_NE(exported({message}, Format::csv).find(",\"one, two\","), std::string::npos);
  message.subject = "say \"hi\"";
  EXPECT_NE(exported({message}, Format::csv).find(",\"say \"\"hi\"\"\","), std::string::npos);
  message.subject = "a\rb";
  EXPECT_NE(exported({message}, Format::csv).find(",a\rb,"), std::string::npos) << "a lone CR stays bare";
}

TEST_F(ExportTest, HtmlEscapesTextAndListsAttachments) {
  const auto html = exported({fullMessage()}, Format::html);
  EXPECT_TRUE(
      html.starts_with("<!DOCTYPE html>\n<html lang=\"es\">\n<head>\n    <meta charset=\"UTF-8\">\n"));
  const auto body = html.substr(html.find("    <h1>"));
  EXPECT_EQ(
      body,
      "    <h1>📧 Mensajes Exportados</h1>\n    <p class=\"summary\">Total de mensajes: 1</p>\n"
      "<div class=\"message\">\n    <div class=\"message-header\">\n        <div class=\"subject\">Q2 "
      "&lt;review&gt;</div>\n        <div class=\"metadata\">\n            <div><strong>De:</strong> Ana "
      "&lt;ana@example.org&gt;</div>\n            <div><strong>Para:</strong> bob@example.org, Carla "
      "&lt;carla@example.org&gt;</div>        <div><strong>CC:</strong> dan@example.org</div>        "
      "<div><strong>Fecha:</strong> June 17, 2026 at 4:45:00" NNBSP
      "PM</div>        </div>    <div class=\"labels\">        <span class=\"label\">Inbox</span>        "
      "<span class=\"label\">Work</span>    </div>    </div>\n    <div class=\"body\"><pre>Hello\n\nFrom "
      "me</pre>    </div><div class=\"attachments\">\n    <strong>📎 Adjuntos (1):</strong><div "
      "class=\"attachment\">plan.pdf - 3 bytes</div></div></div></body>\n</html>");
}

TEST_F(ExportTest, HtmlTakesTheHtmlBodyAsItStandsAndTheOthersThePlainOne) {
  auto message = fullMessage();
  message.htmlBody = Content::ofBytes("<b>Hi & bye</b><script>1</script>");
  EXPECT_NE(exported({message}, Format::html)
                .find("<div class=\"body\"><b>Hi & bye</b><script>1</script>    </div>"),
            std::string::npos);
  EXPECT_EQ(exported({message}, Format::txt).find("<b>"), std::string::npos);
  EXPECT_EQ(exported({message}, Format::mbox).find("<b>"), std::string::npos);
}

TEST_F(ExportTest, WithoutAPlainBodyTextAndMboxTakeTheSnippet) {
  auto message = bareMessage();
  message.htmlBody = Content::ofBytes("<b>x</b>");
  EXPECT_NE(exported({message}, Format::txt).find("\n\nOnly a snippet\n\n"), std::string::npos);
  EXPECT_NE(exported({message}, Format::mbox).find("\n\nOnly a snippet\n\n"), std::string::npos);
}

TEST_F(ExportTest, AnEmptyPlainBodyThatIsPresentGivesAnEmptyBody) {
  auto message = bareMessage();
  message.plainBody = Content();
  EXPECT_EQ(exported({message}, Format::txt).find("Only a snippet"), std::string::npos);
  EXPECT_EQ(exported({message}, Format::mbox).find("Only a snippet"), std::string::npos);
}

TEST_F(ExportTest, BlankLinesVanishFromMboxBodiesAndFromLinesAreQuoted) {
  auto message = bareMessage();
  message.plainBody = Content::ofBytes("a\n\nFrom b");
  EXPECT_TRUE(exported({message}, Format::mbox).ends_with("\n\na\n>From b\n\n"));
}

TEST_F(ExportTest, ABodyWithCarriageReturnsIsOneLineInMbox) {
  auto message = bareMessage();
  message.plainBody = Content::ofBytes("a\r\n\r\nFrom b\r\n");
  EXPECT_TRUE(exported({message}, Format::mbox).ends_with("\n\na\r\n\r\nFrom b\r\n\n\n"));
  message.plainBody = Content::ofBytes("From a\r\nFrom b\n\nFrom c");
  EXPECT_TRUE(exported({message}, Format::mbox).ends_with("\n\n>From a\r\nFrom b\n>From c\n\n"));
}

// The rules word by word: split at line feeds that no carriage return stands before, leave the empty pieces
// out, quote, join.
std::string mboxBody(const std::string& body) {
  std::vector<std::string> lines(1);
  for (std::size_t place = 0; place < body.size(); ++place) {
    if (body[place] == '\n' && (lines.back().empty() || lines.back().back() != '\r')) {
      lines.emplace_back();
    } else {
      lines.back() += body[place];
    }
  }
  std::erase(lines, "");
  std::string joined;
  for (const auto& line : lines) {
    joined += (joined.empty() ? "" : "\n") + std::string(line.starts_with("From ") ? ">" : "") + line;
  }
  return joined;
}

TEST_F(ExportTest, AnyMixOfLinesInAnMboxBodyFollowsTheRules) {
  const std::vector<std::string> pieces = {"\n", "\r\n", "From ", "text", "\r"};
  const std::string bare = exported({bareMessage()}, Format::mbox);
  const std::string head = bare.substr(0, bare.find("\n\n") + 2);
  std::vector<EmailMessage> messages;
  std::string expected;
  for (unsigned number = 0; number < 5 * 5 * 5 * 5 * 5 * 5; ++number) {
    std::string body;
    for (unsigned rest = number, count = 0; count < 6; rest /= 5, ++count) {
      body += pieces[rest % 5];
    }
    messages.push_back(bareMessage());
    messages.back().plainBody = Content::ofBytes(body);
    expected += head + mboxBody(body) + "\n\n";
  }
  EXPECT_EQ(exported(messages, Format::mbox), expected);
}

TEST_F(ExportTest, ACsvFieldIsQuotedWhereverItsSpecialCharacterStands) {
  std::vector<EmailMessage> messages;
  std::string expected = "ID,Asunto,De,Para,CC,Fecha,Etiquetas,Adjuntos,Biblioteca\n";
  const std::string bare = exported({bareMessage()}, Format::csv);
  const std::string line = bare.substr(expected.size());
  const auto comma = line.find(',');
  const std::string before = line.substr(0, comma + 1);
  const std::string behind = line.substr(line.find(',', comma + 1));
  for (std::size_t size = 1; size <= 20; ++size) {
    for (std::size_t place = 0; place < size; ++place) {
      for (const char special : {',', '\n', '"', '\r', ';'}) {
        std::string subject(size, 'x');
        subject[place] = special;
        messages.push_back(bareMessage());
        messages.back().subject = subject;
        if (special == '"') {
          subject.insert(place, 1, '"');
        }
        const bool isQuoted = special == ',' || special == '\n' || special == '"';
        expected += before + (isQuoted ? '"' + subject + '"' : subject) + behind;
      }
    }
  }
  EXPECT_EQ(exported(messages, Format::csv), expected);
}

TEST_F(ExportTest, AMessageWithNoRecipientsStillHasItsLine) {
  EXPECT_NE(exported({bareMessage()}, Format::txt).find("\nPara: \n"), std::string::npos);
  EXPECT_NE(exported({bareMessage()}, Format::mbox).find("\nTo: \n"), std::string::npos);
  EXPECT_NE(exported({bareMessage()}, Format::csv).find(",bob@example.org,,,"), std::string::npos);
}

TEST_F(ExportTest, AMessageWithNoDateHasTheExportsTimeInMboxAndNoneElsewhere) {
  EXPECT_EQ(exported({bareMessage()}, Format::txt).find("Fecha"), std::string::npos);
  EXPECT_EQ(exported({bareMessage()}, Format::html).find("Fecha"), std::string::npos);
  EXPECT_NE(exported({bareMessage()}, Format::csv).find(",,,0,"), std::string::npos);
  EXPECT_TRUE(
      exported({bareMessage()}, Format::mbox).starts_with("From bob@example.org Fri Nov 20 08:05:09 2026\n"));
}

TEST_F(ExportTest, AnEmptyDisplayNameIsNoName) {
  auto message = bareMessage();
  message.from.name = Text();
  EXPECT_NE(exported({message}, Format::txt).find("De: bob@example.org\n"), std::string::npos);
  message.from.name = Text("Last, First");
  EXPECT_NE(exported({message}, Format::mbox).find("From: Last, First <bob@example.org>\n"),
            std::string::npos);
}

// Texts that are hard on any format.
EmailMessage hostileMessage() {
  EmailMessage message = fullMessage();
  std::string controls;
  for (char control = 0; control < 0x20; ++control) {
    controls += control;
  }
  message.id = "id,\"quoted\"@example.org";
  message.subject = "line one\nline \"two\", and\r\nthree";
  message.from = {Text("Doe, \"J\" \\ \x7f"), "=cmd|' /C calc'!A0"};
  message.to.clear();
  message.labels = {"a;b", "c,d", "", "ünïcode 📧"};
  message.sourceLibraryName = Text(",,\"\"\n");
  message.plainBody = Content::ofBytes(controls + "\u2028</script>\U0001F4E7");
  message.htmlBody = Content::ofBytes("");
  message.category = Text("Work & \"Life\"");
  message.inReplyTo = Text("<x>");
  message.references = {"1", "2"};
  message.attachments[0].contentID = Text("cid");
  message.attachments[0].data = Content::ofBytes(std::string(200'000, '\xFE'));
  message.attachments.push_back(message.attachments[0]);
  message.attachments[1].data = Content();
  return message;
}

TEST_F(ExportTest, JsonOfHostileTextsIsWhatTheCommonCodingGives) {
  const std::vector<EmailMessage> messages = {hostileMessage(), bareMessage(), fullMessage(),
                                              hostileMessage()};
  auto expected = nlohmann::json::array();
  for (const auto& message : messages) {
    expected.push_back(toJSON(message));
  }
  const auto text = exported(messages, Format::json);
  EXPECT_TRUE(text == expected.dump(2));
  EXPECT_EQ(emailMessageFromJSON(nlohmann::json::parse(text)[3]), hostileMessage());
}

TEST_F(ExportTest, JsonOfADamagedStoreFailsToEncode) {
  auto message = bareMessage();
  message.plainBody = Content::ofBytes("\xC3");
  try {
    exported({message}, Format::json);
    FAIL();
  } catch (const ExportUtility::ExportError& error) {
    EXPECT_EQ(error.kind(), ExportUtility::ExportError::Kind::encodingFailed);
    EXPECT_STREQ(error.what(), "Error al codificar los datos");
  }
}

// Runs a Python program over a file and gives what it prints.
std::string python(const std::string& program, const std::filesystem::path& file) {
  const std::string command = "python3 -c '" + program + "' '" + file.string() + "'";
  FILE* pipe = ::popen(command.c_str(), "r");
  std::string output;
  char buffer[4096];
  while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) {
    output.append(buffer, got);
  }
  return ::pclose(pipe) == 0 ? output : "python3 failed: " + output;
}

TEST_F(ExportTest, ACsvReaderGetsHostileFieldsBack) {
  const TemporaryFolder folder;
  std::ofstream(folder / "export.csv", std::ios::binary)
      << exported({hostileMessage(), fullMessage(), bareMessage()}, Format::csv);
  const auto rows = nlohmann::json::parse(
      python("import csv, json, sys\n"
             "print(json.dumps(list(csv.reader(open(sys.argv[1], newline=\"\", encoding=\"utf-8\")))))",
             folder / "export.csv"));
  ASSERT_EQ(rows.size(), 4U);
  EXPECT_EQ(rows[0], nlohmann::json({"ID", "Asunto", "De", "Para", "CC", "Fecha", "Etiquetas", "Adjuntos",
                                     "Biblioteca"}));
  EXPECT_EQ(rows[1],
            nlohmann::json({"id,\"quoted\"@example.org", "line one\nline \"two\", and\r\nthree",
                            "Doe, \"J\" \\ \x7f <=cmd|' /C calc'!A0>", "", "dan@example.org",
                            "6/17/2026, 4:45:00" NNBSP "PM", "a;b; c,d; ; ünïcode 📧", "2", ",,\"\"\n"}));
  EXPECT_EQ(rows[2][1], "Q2 <review>");
  EXPECT_EQ(rows[3],
            nlohmann::json({"b2@example.org", "(No Subject)", "bob@example.org", "", "", "", "", "0", ""}));
}

TEST_F(ExportTest, AnMboxExportIsReadBackByTheImporter) {
  const TemporaryFolder folder;
  auto quoted = bareMessage();
  quoted.id = "c3@example.org";
  quoted.date = june17();
  quoted.plainBody = Content::ofBytes("One\n\nFrom two\nthree");
  std::ofstream(folder / "export.mbox", std::ios::binary)
      << exported({fullMessage(), bareMessage(), quoted}, Format::mbox);
  MessageList read;
  MBOXImporter::forEachMessage(folder / "export.mbox", "LIB", "Back",
                               [&](const auto& message) { read.push_back(message); });
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(read[0]->id, "a1@example.org");
  EXPECT_EQ(read[0]->subject, "Q2 <review>");
  EXPECT_EQ(read[0]->from, fullMessage().from);
  EXPECT_EQ(read[0]->to, fullMessage().to);
  EXPECT_EQ(read[0]->cc, fullMessage().cc);
  EXPECT_EQ(read[0]->labels, fullMessage().labels);
  EXPECT_TRUE(read[0]->attachments.empty());
  EXPECT_EQ(read[1]->plainBody->bytes(), "Only a snippet");
  EXPECT_EQ(read[2]->plainBody->bytes(), "One\n>From two\nthree");
}

TEST_F(ExportTest, JsonReadsBackToTheSameMessages) {
  const auto text = exported({fullMessage(), bareMessage()}, Format::json);
  const auto json = nlohmann::json::parse(text);
  ASSERT_EQ(json.size(), 2U);
  EXPECT_EQ(emailMessageFromJSON(json[0]), fullMessage());
  EXPECT_EQ(emailMessageFromJSON(json[1]), bareMessage());
  EXPECT_EQ(json.dump(2), text) << "pretty printed with sorted keys";
}

TEST_F(ExportTest, AnEmptyListFailsInEveryFormat) {
  for (const auto format : ExportUtility::allFormats) {
    try {
      exported({}, format);
      FAIL() << ExportUtility::title(format);
    } catch (const ExportUtility::ExportError& error) {
      EXPECT_EQ(error.kind(), ExportUtility::ExportError::Kind::noMessages);
      EXPECT_STREQ(error.what(), "No hay mensajes para exportar");
    }
  }
}

TEST_F(ExportTest, ProgressCountsTheMessagesUpToTheLast) {
  std::vector<std::size_t> counts;
  const MessageList list(2000, std::make_shared<EmailMessage>(bareMessage()));
  ExportUtility::exportMessages(
      list, Format::csv, [](std::string_view) {}, exportTime(),
      [&counts](std::size_t done) { counts.push_back(done); });
  EXPECT_GT(counts.size(), 2U);
  EXPECT_TRUE(std::ranges::is_sorted(counts));
  EXPECT_EQ(counts.back(), 2000U);
}

}  // namespace
}  // namespace tidewrack
