#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "library/list_text_pool.h"
#include "mail/records.h"

namespace tidewrack {

/// The scalars of a stored message as views of bytes that somebody else holds.
struct StoredScalars {
  std::string_view id;
  std::string_view subject;
  std::optional<std::string_view> fromName;
  std::string_view fromAddress;
  std::string_view toData;
  std::string_view ccData;
  std::optional<Date> date;
  std::string_view snippet;
  std::string_view labelsData;
  std::string_view conversationID;
  std::optional<std::string_view> inReplyTo;
  std::string_view referencesData;
  std::optional<std::string_view> category;
};

/// Turns stored scalars into records that share equal texts. Throws CodingFailure for damaged JSON. One
/// thread at a time.
class RecordMapper {
 public:
  /// Everything but the library, the bodies and the attachments.
  EmailMessage message(const StoredScalars& row);

  ListTextPool& pool() { return pool_; }

 private:
  std::vector<EmailAddress> addresses(std::string_view json);
  std::vector<Text> strings(std::string_view json);
  std::optional<Text> optionalText(const std::optional<std::string_view>& text);

  ListTextPool pool_;
  // Lists are read into these and then copied at their exact size.
  std::vector<EmailAddress> readAddresses_;
  std::vector<Text> readStrings_;
};

}  // namespace tidewrack
