#include "library/record_mapper.h"

#include <utility>

#include "mail/json_coding.h"

namespace tidewrack {
namespace {

// Most mail goes to few lists of addresses and bears few sets of labels: a small memory of them spares nearly
// all the JSON. Beyond this many lists nothing is remembered any more.
constexpr std::size_t maximumRememberedLists = 4096;

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
  message.labels = strings(row.labelsData, &labelLists_);
  message.conversationID = pool_.text(row.conversationID);
  message.inReplyTo = optionalText(row.inReplyTo);
  message.references = strings(row.referencesData, nullptr);
  message.category = optionalText(row.category);
  return message;
}

std::vector<EmailAddress> RecordMapper::addresses(std::string_view json) {
  if (json == emptyList) {
    return {};
  }
  if (const auto known = addressLists_.find(json); known != addressLists_.end()) {
    return known->second;
  }
  auto list = decodeAddresses(json);
  list.shrink_to_fit();
  for (auto& address : list) {
    if (address.name) {
      address.name = pool_.text(*address.name);
    }
    address.address = pool_.text(address.address);
  }
  if (addressLists_.size() < maximumRememberedLists) {
    addressLists_.emplace(json, list);
  }
  return list;
}

std::vector<Text> RecordMapper::strings(std::string_view json, Cache<std::vector<Text>>* cache) {
  if (json == emptyList) {
    return {};
  }
  if (cache != nullptr) {
    if (const auto known = cache->find(json); known != cache->end()) {
      return known->second;
    }
  }
  auto list = decodeStrings(json);
  list.shrink_to_fit();
  for (auto& text : list) {
    text = pool_.text(text);
  }
  if (cache != nullptr && cache->size() < maximumRememberedLists) {
    cache->emplace(json, list);
  }
  return list;
}

std::optional<Text> RecordMapper::optionalText(const std::optional<std::string_view>& text) {
  return text ? std::optional<Text>(pool_.text(*text)) : std::nullopt;
}

}  // namespace tidewrack
