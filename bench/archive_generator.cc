#include "archive_generator.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <string>
#include <vector>

#include "archive_words.h"
#include "mime_writer.h"

namespace tidewrack::bench {
namespace {

constexpr std::string_view hexDigits = "0123456789abcdef";
constexpr std::size_t openThreads = 300;
constexpr std::size_t longestReferences = 12;

std::string hexText(Random& random, std::size_t length) {
  std::string text(length, '0');
  for (auto& digit : text) {
    digit = hexDigits[random.below(16)];
  }
  return text;
}

/// A line of random Base64 letters as signatures in headers have them.
std::string signatureText(Random& random, std::size_t length, std::string_view fold) {
  constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < length; ++i) {
    if (i > 0 && i % 64 == 0) {
      text += fold;
    }
    text += letters[random.below(64)];
  }
  return text + "==";
}

struct Person {
  const Language* language;
  std::size_t name;  // index in language->names
  std::string address;
};

/// A conversation that later messages may join.
struct Thread {
  std::uint64_t number;
  std::size_t language;
  std::size_t charset;
  std::vector<std::size_t> subject;  // word indexes
  std::vector<std::string> messageIDs;
  std::vector<std::size_t> people;
  std::string labels;  // as decoded
};

class Generator {
 public:
  Generator(const ArchivePlan& plan, const std::function<void(std::string_view)>& write)
      : plan_(plan), write_(write), random_(plan.seed * 0x2545F4914F6CDD1DULL + 17) {
    for (std::size_t i = 0; i < languages().size(); ++i) {
      languageDeck_.insert(languageDeck_.end(), languages()[i].weight, i);
    }
    makePeople();
  }

  ArchiveSummary run() {
    while (summary_.bytes < plan_.bytes) {
      message_.clear();
      makeMessage();
      if (plan_.lineEnds == LineEnds::crlf) {
        toCRLF();
      }
      write_(message_);
      summary_.bytes += message_.size();
      ++summary_.messages;
    }
    return summary_;
  }

 private:
  [[nodiscard]] bool large() const { return plan_.kind == ArchiveKind::large; }

  void makePeople() {
    static constexpr std::array hosts = {"example.org", "example.com", "mail.example.net",
                                         "lists.example.org"};
    for (std::size_t i = 0; i < 400; ++i) {
      const auto language = random_.pick(languageDeck_);
      const auto& names = languages()[language].names;
      people_.push_back({&languages()[language], random_.below(names.size()),
                         "person" + std::to_string(i) + "@" + random_.pick(hosts)});
    }
  }

  void toCRLF() {
    std::string converted;
    converted.reserve(message_.size() + message_.size() / 40);
    for (const char c : message_) {
      if (c == '\n') {
        converted += "\r";
      }
      converted += c;
    }
    message_.swap(converted);
  }

  // ---- words ----

  std::string words(const Language& language, std::size_t charset, const std::vector<std::size_t>& indexes) {
    std::string text;
    for (const auto index : indexes) {
      if (!text.empty() && language.spaced) {
        text += ' ';
      }
      text += language.encodedWords[charset][index];
    }
    return text;
  }

  /// A header text: plain where the words are ASCII, otherwise encoded words of two or three words each.
  void appendHeaderText(const Language& language, std::size_t charset,
                        const std::vector<std::size_t>& indexes) {
    const char* name = language.charsets[charset];
    const auto whole = words(language, charset, indexes);
    const bool ascii = whole.find_first_of("\x1b") == std::string::npos && isASCII(whole);
    if (ascii) {
      message_ += whole;
      return;
    }
    const bool base64 = !language.spaced || random_.percent(50);
    for (std::size_t i = 0; i < indexes.size(); i += 2) {
      const std::vector<std::size_t> group(
          indexes.begin() + static_cast<std::ptrdiff_t>(i),
          indexes.begin() + static_cast<std::ptrdiff_t>(std::min(i + 2, indexes.size())));
      auto bytes = words(language, charset, group);
      if (i > 0) {
        message_ += "\n ";
        if (language.spaced) {
          bytes.insert(bytes.begin(), ' ');
        }
      }
      appendEncodedWord(message_, bytes, name, base64);
    }
  }

  static bool isASCII(std::string_view text) {
    for (const char c : text) {
      if (static_cast<unsigned char>(c) >= 0x80) {
        return false;
      }
    }
    return true;
  }

  void appendAddress(const Person& person) {
    const auto& name = person.language->names[person.name];
    if (!isASCII(name)) {
      appendEncodedWord(message_, name, "UTF-8", random_.percent(50));
    } else if (random_.percent(40)) {
      message_.append("\"").append(name).append("\"");
    } else {
      message_ += name;
    }
    message_ += " <" + person.address + ">";
  }

  // ---- texts of bodies, in the charset, with LF ----

  std::string plainText(const Language& language, std::size_t charset, std::size_t size) {
    std::string text;
    text.reserve(size + 100);
    const auto& list = language.encodedWords[charset];
    std::size_t column = 0;
    while (text.size() < size) {
      const auto& word = random_.pick(list);
      text += word;
      column += word.size() + 1;
      if (column > 68) {
        const bool endsParagraph = random_.percent(18);
        text += endsParagraph ? ".\n\n" : "\n";
        if (endsParagraph && random_.percent(10)) {
          text += ">From here on, as quoted\n> ";
        }
        column = 0;
      } else if (language.spaced) {
        text += ' ';
      }
    }
    text += '\n';
    return text;
  }

  std::string htmlText(const Language& language, std::size_t charset, std::size_t size, bool inlineImage) {
    const std::string charsetName = language.charsets[charset];
    std::string text;
    text.reserve(size + 600);
    text += "<!DOCTYPE html>\n<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=" +
            charsetName +
            "\">\n<style type=\"text/css\">\nbody { margin: 0; padding: 0; background-color: #f4f4f4; }\n"
            "table { border-collapse: collapse; }\n.button { color: #ffffff; background: #1a5fb4; }\n"
            "@media (max-width: 600px) { .column { width: 100% !important; } }\n</style></head>\n<body>\n";
    if (inlineImage) {
      text += "<p><img src=\"cid:image1@example.org\" alt=\"\" width=\"600\"></p>\n";
    }
    const auto& list = language.encodedWords[charset];
    while (text.size() < size) {
      text +=
          "<table width=\"600\" cellpadding=\"0\" cellspacing=\"0\" border=\"0\" align=\"center\"><tr>"
          "<td style=\"font-family: Arial, Helvetica, sans-serif; font-size: 14px; color: #333333; "
          "padding: 12px 24px;\">\n";
      const auto paragraphs = random_.between(1, 3);
      for (std::uint64_t p = 0; p < paragraphs; ++p) {
        text += "<p>";
        const auto count = random_.between(20, 70);
        for (std::uint64_t i = 0; i < count; ++i) {
          text += random_.pick(list);
          text += i % 12 == 11 ? "\n" : (language.spaced ? " " : "");
        }
        text += "&nbsp;</p>\n";
      }
      if (random_.percent(50)) {
        text += "<a class=\"button\" href=\"https://www.example.com/click?id=" + hexText(random_, 40) +
                "&amp;source=mail\">";
        text += random_.pick(list);
        text += "</a>\n";
      }
      text += "</td></tr></table>\n";
    }
    text += "</body></html>\n";
    return text;
  }

  // ---- parts ----

  void appendTextPart(std::string_view type, const Language& language, std::size_t charset,
                      std::string_view text) {
    const std::string_view name = language.charsets[charset];
    const bool utf8 = name == "utf-8";
    const bool ascii = isASCII(text);
    const auto choice = random_.below(100);
    std::string_view encoding = "7bit";
    if (!ascii) {
      // Raw bytes of another charset are rare in real archives, and are there.
      encoding = choice < (utf8 ? 25U : 2U) ? "8bit" : choice < 75 ? "quoted-printable" : "base64";
    } else if (choice < 50) {
      encoding = "quoted-printable";
    }
    message_ += "Content-Type: ";
    message_ += type;
    message_ += "; charset=";
    const std::string_view quote = random_.percent(70) ? "\"" : "";
    message_.append(quote).append(name).append(quote);
    message_ += "\nContent-Transfer-Encoding: ";
    message_ += encoding;
    message_ += "\n\n";
    if (encoding == "quoted-printable") {
      appendQuotedPrintable(message_, text);
    } else if (encoding == "base64") {
      appendBase64Lines(message_, text);
    } else {
      message_ += text;
    }
  }

  void appendAttachment(std::string_view boundary, std::uint64_t size, bool isInline) {
    static constexpr std::array<std::array<const char*, 2>, 6> kinds = {
        {{"application/pdf", "pdf"},
         {"image/jpeg", "jpg"},
         {"image/png", "png"},
         {"application/zip", "zip"},
         {"application/vnd.openxmlformats-officedocument.wordprocessingml.document", "docx"},
         {"text/calendar", "ics"}}};
    const auto& kind = isInline ? kinds[2] : random_.pick(kinds);

    message_ += "--";
    message_ += boundary;
    message_ += "\nContent-Type: ";
    message_ += kind[0];
    const auto number = std::to_string(random_.below(9000) + 1000);
    const auto style = isInline ? 0 : random_.below(4);
    if (style == 0) {
      message_ += "; name=\"file-" + number + "." + kind[1] + "\"";
    } else if (style == 1) {
      message_ += ";\n name=\"=?UTF-8?Q?Informe_a=C3=B1o_" + number + "." + kind[1] + "?=\"";
    } else {
      message_ += "; name=\"Quarterly report " + number + "." + kind[1] + "\"";
    }
    message_ += isInline ? "\nContent-Disposition: inline" : "\nContent-Disposition: attachment";
    if (style == 3) {
      message_ += ";\n filename*=UTF-8''Informe%20a%C3%B1o%20" + number + "." + kind[1];
    } else {
      message_ += "; filename=\"file-" + number + "." + kind[1] + "\"";
    }
    message_ += "\nContent-Transfer-Encoding: base64\n";
    if (isInline) {
      message_ += "Content-ID: <image1@example.org>\n";
    }
    message_ += "X-Attachment-Id: f_" + hexText(random_, 12) + "\n\n";
    const auto body = message_.size();

    appendRandomBase64Lines(message_, size, random_);
    ++summary_.attachments;
    summary_.attachmentBytes += message_.size() - body;
  }

  // ---- messages ----

  std::string date(std::int64_t seconds, const char* form) {
    const auto time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    gmtime_r(&time, &parts);
    static constexpr std::array days = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr std::array months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::array<char, 64> text{};
    if (form[0] == 'F') {  // of the "From " line
      std::snprintf(text.data(), text.size(), "%s %s %02d %02d:%02d:%02d +0000 %d",
                    days[static_cast<std::size_t>(parts.tm_wday)],
                    months[static_cast<std::size_t>(parts.tm_mon)], parts.tm_mday, parts.tm_hour,
                    parts.tm_min, parts.tm_sec, parts.tm_year + 1900);
    } else {
      std::snprintf(text.data(), text.size(), "%s, %d %s %d %02d:%02d:%02d",
                    days[static_cast<std::size_t>(parts.tm_wday)], parts.tm_mday,
                    months[static_cast<std::size_t>(parts.tm_mon)], parts.tm_year + 1900, parts.tm_hour,
                    parts.tm_min, parts.tm_sec);
    }
    return text.data();
  }

  Thread newThread() {
    Thread thread;
    thread.number = 1'200'000'000'000'000'000ULL + random_.below(600'000'000'000'000'000ULL);
    thread.language = random_.pick(languageDeck_);
    const auto& language = languages()[thread.language];
    // Four messages of five are in UTF-8, whatever the language.
    thread.charset = random_.percent(80) ? 0 : random_.below(language.charsets.size());
    if (language.charsets.size() > 1 && thread.language == 0 && random_.percent(30)) {
      thread.charset = 1;
    }
    const auto words = random_.between(3, 9);
    for (std::uint64_t i = 0; i < words; ++i) {
      thread.subject.push_back(random_.below(language.words.size()));
    }
    for (std::uint64_t i = random_.between(1, 4); i > 0; --i) {
      thread.people.push_back(random_.below(people_.size()));
    }
    thread.labels = makeLabels(thread.language == 1);
    return thread;
  }

  std::string makeLabels(bool spanish) {
    std::string labels = random_.pick(systemLabels(spanish));
    for (std::uint64_t i = random_.below(3); i > 0; --i) {
      labels += ",";
      labels += random_.pick(systemLabels(spanish));
    }
    if (random_.percent(45)) {
      labels += ",";
      labels += random_.pick(userLabels());
    }
    return labels;
  }

  void appendTransportHeaders(const std::string& when, const Person& from) {
    message_ += "Delivered-To: owner@example.com\nReceived: by 2002:a05:" + hexText(random_, 4) + ":" +
                hexText(random_, 4) + " with SMTP id " + hexText(random_, 16) + ";\n        " + when +
                " -0700 (PDT)\n";
    if (large() || random_.percent(30)) {
      message_ += "X-Google-Smtp-Source: " + signatureText(random_, 76, "") +
                  "\nX-Received: by 2002:a05:" + hexText(random_, 4) + " with SMTP id " +
                  hexText(random_, 20) + ".12.1552986831100;\n        " + when + " -0700 (PDT)\n";
    }
    if (large()) {
      message_ +=
          "ARC-Seal: i=1; a=rsa-sha256; t=1552986831; cv=none;\n        d=example.com; s=arc-20160816;\n"
          "        b=" +
          signatureText(random_, 342, "\n         ") +
          "\nARC-Message-Signature: i=1; a=rsa-sha256; c=relaxed/relaxed; d=example.com; "
          "s=arc-20160816;\n        h=resent-date:list-archive:resent-sender:precedence:list-unsubscribe\n"
          "         :list-subscribe:list-help:list-post:list-url:list-id:resent-from\n"
          "         :in-reply-to:mime-version:date:message-id:from:references:to:subject;\n        bh=" +
          signatureText(random_, 43, "") + ";\n        b=" + signatureText(random_, 342, "\n         ") +
          "\nARC-Authentication-Results: i=1; mx.example.com;\n       dkim=pass header.i=@example.org "
          "header.s=selector1;\n       spf=pass (example.com: domain of " +
          from.address + " designates 192.0.2.17 as permitted sender) smtp.mailfrom=" + from.address + "\n";
    }
    message_ += "Return-Path: <" + from.address + ">\nReceived: from mail.example.org (mail.example.org. " +
                "[192.0.2.17])\n        by mx.example.com with ESMTPS id " + hexText(random_, 24) +
                "\n        for <owner@example.com>;\n        " + when + " -0700 (PDT)\n";
    message_ +=
        "Authentication-Results: mx.example.com;\n       spf=pass smtp.mailfrom=" + from.address + "\n";
    if (large() || random_.percent(50)) {
      message_ +=
          "DKIM-Signature: v=1; a=rsa-sha256; c=relaxed/relaxed; d=example.org; s=selector1;\n"
          "        h=from:to:subject:date:message-id;\n        bh=" +
          signatureText(random_, 43, "") + ";\n        b=" + signatureText(random_, 170, "\n         ") +
          "\n";
    }
  }

  void appendOwnHeaders(const Thread& thread, const std::string& messageID, const Person& from, bool reply) {
    const auto& language = languages()[thread.language];
    message_ += "From: ";
    appendAddress(from);
    message_ += "\nTo: ";
    for (std::size_t i = 0; i < thread.people.size(); ++i) {
      message_ += i > 0 ? ",\n " : "";
      appendAddress(people_[thread.people[i]]);
    }
    if (random_.percent(20)) {
      message_ += "\nCc: ";
      appendAddress(people_[random_.below(people_.size())]);
    }
    message_ += "\nSubject: ";
    message_ += reply ? "Re: " : "";
    appendHeaderText(language, thread.charset, thread.subject);
    static constexpr std::array zones = {"+0000", "-0700 (PDT)", "+0200", "+0900", "GMT", "-0500"};
    message_ += "\nDate: " + (random_.below(300) == 0 ? std::string("sometime in spring")
                                                      : date(clock_, "D") + " " + random_.pick(zones));
    if (!messageID.empty()) {
      message_ += "\nMessage-ID: <" + messageID + ">";
    }
    if (reply) {
      message_ += "\nIn-Reply-To: <" + thread.messageIDs.back() + ">\nReferences:";
      for (const auto& id : thread.messageIDs) {
        message_ += "\n <" + id + ">";
      }
    }
    message_ += "\nMIME-Version: 1.0\n";
  }

  void appendLabels(const std::string& labels) {
    message_ += "X-Gmail-Labels: ";
    if (isASCII(labels)) {
      message_ += labels;
    } else {
      appendEncodedWord(message_, labels, "UTF-8", random_.percent(30));
    }
    message_ += '\n';
  }

  void appendBody(const Thread& thread) {
    const auto& language = languages()[thread.language];
    const auto charset = thread.charset;
    const auto boundary = "000000000000" + hexText(random_, 16);
    const auto inner = "111111111111" + hexText(random_, 16);
    const auto related = "222222222222" + hexText(random_, 16);

    std::uint64_t plainSize = 0;
    std::uint64_t htmlSize = 0;
    std::uint64_t attachmentSize = 0;
    bool inlineImage = false;
    const auto kind = random_.below(100);
    if (large()) {
      if (kind < 35) {  // newsletter
        plainSize = random_.between(1'000, 5'000);
        htmlSize = random_.between(11'000, 46'000);
      } else if (kind < 80) {  // personal
        plainSize = random_.between(300, 6'000);
        htmlSize = random_.percent(80) ? random_.between(800, 8'000) : 0;
      } else if (kind < 95) {  // notification
        htmlSize = random_.between(6'000, 22'000);
      } else {
        plainSize = random_.between(2'000, 30'000);
      }
      // Attachments follow the texts, so that two thirds of the whole stay Base64.
      if (summary_.attachmentBytes * 3 < (summary_.bytes + message_.size()) * 2) {
        const auto size = random_.below(100);
        inlineImage = htmlSize > 0 && random_.percent(40);
        attachmentSize = size < 40   ? random_.between(2'000, 60'000)
                         : size < 85 ? random_.between(60'000, 400'000)
                                     : random_.between(400'000, 2'000'000);
      }
    } else {
      if (kind < 55) {
        plainSize = random_.between(250, 2'100);
      } else if (kind < 85) {
        plainSize = random_.between(150, 700);
        htmlSize = random_.between(500, 2'200);
      } else {
        htmlSize = random_.between(700, 2'600);
      }
      if (random_.percent(3)) {
        attachmentSize = random_.between(500, 12'000);
      }
    }

    const bool mixed = attachmentSize > 0;
    const bool alternative = plainSize > 0 && htmlSize > 0;
    if (mixed) {
      message_ += "Content-Type: multipart/mixed; boundary=\"" + boundary + "\"\n\n--" + boundary + "\n";
    }
    if (inlineImage) {
      message_ += "Content-Type: multipart/related; boundary=\"" + related + "\"\n\n--" + related + "\n";
    }
    if (alternative) {
      message_ += "Content-Type: multipart/alternative; boundary=\"" + inner + "\"\n\n";
    }
    if (plainSize > 0) {
      if (alternative) {
        message_ += "--" + inner + "\n";
      }
      appendTextPart("text/plain", language, charset, plainText(language, charset, plainSize));
    }
    if (htmlSize > 0) {
      if (alternative) {
        message_ += "\n--" + inner + "\n";
      }
      appendTextPart("text/html", language, charset, htmlText(language, charset, htmlSize, inlineImage));
    }
    if (alternative) {
      message_ += "\n--" + inner + "--\n";
    }
    if (inlineImage) {
      appendAttachment(related, random_.between(2'000, 30'000), true);
      message_ += "--" + related + "--\n";
    }
    if (mixed) {
      appendAttachment(boundary, attachmentSize, false);
      message_ += "--" + boundary + "--\n";
    }
  }

  void makeMessage() {
    clock_ += static_cast<std::int64_t>(random_.between(60, large() ? 76'000 : 9'000));
    std::size_t place = random_.below(openThreads);
    const bool reply = place < threads_.size() && random_.percent(45);
    if (!reply) {
      if (place >= threads_.size()) {
        place = threads_.size();
        threads_.emplace_back();
      }
      threads_[place] = newThread();
    }
    auto& thread = threads_[place];
    const bool reallyReply = reply && !thread.messageIDs.empty();
    const auto& from =
        people_[random_.percent(60) ? random_.pick(thread.people) : random_.below(people_.size())];
    // One message of a hundred has no Message-ID, as chats in such archives do.
    const auto messageID = random_.below(100) == 0 ? std::string()
                                                   : "CA" + hexText(random_, 28) + "@mail." +
                                                         from.address.substr(from.address.find('@') + 1);
    message_ +=
        "From " + std::to_string(thread.number + summary_.messages) + "@xxx " + date(clock_, "F") + "\n";
    message_ += "X-GM-THRID: " + std::to_string(thread.number) + "\n";
    appendLabels(thread.labels);
    appendTransportHeaders(date(clock_, "D"), from);
    appendOwnHeaders(thread, messageID, from, reallyReply);
    appendBody(thread);
    message_ += "\n";
    if (!messageID.empty()) {
      if (thread.messageIDs.size() >= longestReferences) {
        thread.messageIDs.erase(thread.messageIDs.begin() + 1);
      }
      thread.messageIDs.push_back(messageID);
    }
  }

  const ArchivePlan plan_;
  const std::function<void(std::string_view)>& write_;
  Random random_;
  std::vector<std::size_t> languageDeck_;
  std::vector<Person> people_;
  std::vector<Thread> threads_;
  std::int64_t clock_ = 1'262'304'000;  // 2010-01-01
  std::string message_;
  ArchiveSummary summary_;
};

}  // namespace

ArchiveSummary generateArchive(const ArchivePlan& plan, const std::function<void(std::string_view)>& write) {
  return Generator(plan, write).run();
}

}  // namespace tidewrack::bench
