#include "mail/records.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace tidewrack {
namespace {

// Folds the hash of each value into one number (boost's hash_combine).
template <typename... Values>
std::size_t combinedHash(const Values&... values) {
  std::size_t seed = 0;
  ((seed ^= std::hash<Values>()(values) + 0x9e3779b97f4a7c15ULL + (seed << 6U) + (seed >> 2U)), ...);
  return seed;
}

template <typename Value>
std::size_t listHash(const std::vector<Value>& values) {
  std::size_t seed = values.size();
  for (const auto& value : values) {
    seed = combinedHash(seed, value);
  }
  return seed;
}

}  // namespace

void appendDisplayForm(std::string& text, const EmailAddress& address) {
  if (!address.name || address.name->empty()) {
    text += address.address.view();
    return;
  }
  text += address.name->view();
  text += " <";
  text += address.address.view();
  text += '>';
}

void appendDisplayForms(std::string& text, const std::vector<EmailAddress>& addresses,
                        std::string_view separator) {
  bool isFirst = true;
  for (const auto& address : addresses) {
    if (!isFirst) {
      text += separator;
    }
    isFirst = false;
    appendDisplayForm(text, address);
  }
}

std::string displayForm(const EmailAddress& address) {
  std::string form;
  appendDisplayForm(form, address);
  return form;
}

std::string displayForms(const std::vector<EmailAddress>& addresses) {
  std::string forms;
  appendDisplayForms(forms, addresses);
  return forms;
}

void sortNewestFirst(MessageList& messages) {
  const auto dateOf = [](const auto& message) { return message->date.value_or(distantPast); };
  if (std::ranges::is_sorted(messages, std::greater<>(), dateOf)) {
    return;
  }
  // The dates are read once, into one place: a comparison that follows two pointers waits for memory.
  std::vector<std::pair<Date, std::size_t>> order;
  order.reserve(messages.size());
  for (const auto& message : messages) {
    order.emplace_back(dateOf(message), order.size());
  }
  std::ranges::sort(order, [](const auto& a, const auto& b) {
    return a.first != b.first ? a.first > b.first : a.second < b.second;
  });
  MessageList sorted;
  sorted.reserve(messages.size());
  for (const auto& [date, index] : order) {
    sorted.push_back(std::move(messages[index]));
  }
  messages = std::move(sorted);
}

}  // namespace tidewrack

// The helpers above serve the hashes outside the namespace as well.
using tidewrack::combinedHash;
using tidewrack::listHash;

std::size_t std::hash<tidewrack::EmailAddress>::operator()(const tidewrack::EmailAddress& value) const {
  return combinedHash(value.name, value.address);
}

std::size_t std::hash<tidewrack::EmailAttachment>::operator()(const tidewrack::EmailAttachment& value) const {
  return combinedHash(value.id, value.fileName, value.mimeType, value.data, value.contentID, value.isInline);
}

std::size_t std::hash<tidewrack::EmailMessage>::operator()(const tidewrack::EmailMessage& value) const {
  const long long date = value.date ? value.date->time_since_epoch().count() : -1;
  return combinedHash(value.id, value.sourceLibraryID, value.sourceLibraryName, value.subject, value.from,
                      listHash(value.to), listHash(value.cc), date, value.snippet, value.plainBody,
                      value.htmlBody, listHash(value.attachments), listHash(value.labels),
                      value.conversationID, value.inReplyTo, listHash(value.references), value.category);
}
