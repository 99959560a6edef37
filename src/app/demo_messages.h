#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The literal values of the made-up mail; demo_library.h makes records of them.
namespace tidewrack {

/// A moment in UTC.
struct DemoDate {
  int year;
  unsigned month;
  unsigned day;
  int hour;
  int minute;
};

struct DemoPerson {
  const char* name;
  const char* address;
};

struct DemoMessage {
  enum class Library { personal, work, newsletters };
  Library origin;
  std::string subject;
  DemoDate date;
  DemoPerson from;
  std::vector<DemoPerson> to;
  std::vector<DemoPerson> cc = {};
  std::vector<const char*> labels;
  const char* category;             ///< What the categoriser would have found.
  std::string conversationID = {};  ///< Empty: the message stands alone.
  std::size_t replyTo = 0;          ///< Number of the message that it answers, from 1; 0 for none.
  std::string attachment = {};      ///< Name of its one attachment; empty for none.
  std::string attachmentLine = {};  ///< What stands on the attachment's page.
  std::string plainBody;
  std::string preheader = {};
  std::string htmlBody = {};  ///< Inner part of the HTML body; empty for a message of plain text alone.
};

/// All messages in their fixed order.
std::vector<DemoMessage> demoMessageTexts();

/// The id of the message with this number, from 1.
std::string demoMessageID(std::size_t number);

}  // namespace tidewrack
