#include "library/record_mapper.h"

#include <iterator>

#include "mail/json_coding.h"
#include "mail/json_lists.h"

namespace tidewrack {
namespace {

constexpr std::string_view emptyList = "[]";

}  // namespace

EmailMessage RecordMapper::message(const StoredScalars& row) {
  EmailMessage message;
  message.id = pool_.text(row.id);
  message.subject = row.subject;
  message.from = {optionalText(row.fromName), pool_.text(row.fromAddress)};
  message.to = addresses(row.toData);
  message.cc = addresses(row.ccData);
  message.date = row.date;
  message.snippet = row.snippet;
  message.labels = strings(row.labelsData);
  message.conversationID = pool_.text(row.conversationID);
  message.inReplyTo = optionalText(row.inReplyTo);
  message.references = strings(row.referencesData);
  message.category = optionalText(row.category);
  return message;
}

std::vector<EmailAddress> RecordMapper::addresses(std::string_view json) {
  if (json == emptyList) {
    return {};
  }
  readAddresses_.clear();
  if (!readAddresses(json, readAddresses_, [this](std::string_view bytes) { return pool_.text(bytes); })) {
    return decodeAddresses(json);
  }
  return {std::move_iterator(readAddresses_.begin()), std::move_iterator(readAddresses_.end())};
}

std::vector<Text> RecordMapper::strings(std::string_view json) {
  if (json == emptyList) {
    return {};
  }
  readStrings_.clear();
  if (!readStrings(json, readStrings_, [this](std::string_view bytes) { return pool_.text(bytes); })) {
    return decodeStrings(json);
  }
  return {std::move_iterator(readStrings_.begin()), std::move_iterator(readStrings_.end())};
}

std::optional<Text> RecordMapper::optionalText(const std::optional<std::string_view>& text) {
  return text ? std::optional<Text>(pool_.text(*text)) : std::nullopt;
}

}  // namespace tidewrack
