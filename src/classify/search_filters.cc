#include "classify/search_filters.h"

#include <algorithm>

#include "platform/calendar.h"
#include "platform/unicode.h"

namespace tidewrack {
namespace {

constexpr std::uint64_t mediumFrom = 10'000;   // bytes
constexpr std::uint64_t mediumUpTo = 100'000;  // bytes, inclusive

bool bodyContains(const std::optional<Content>& body, const std::string& query) {
  return body && localizedCaseInsensitiveContains(body->bytes(), query);
}

bool hasAttachmentOfType(const EmailMessage& message, const std::string& type) {
  return std::ranges::any_of(message.attachments, [&](const EmailAttachment& attachment) {
    return localizedCaseInsensitiveContains(attachment.fileName, type) ||
           localizedCaseInsensitiveContains(attachment.mimeType, type);
  });
}

bool passesAttachmentFilter(const EmailMessage& message, AttachmentFilter filter, const std::string& type) {
  switch (filter) {
    case AttachmentFilter::any:
      return true;
    case AttachmentFilter::withAttachments:
      return !message.attachments.empty() && (type.empty() || hasAttachmentOfType(message, type));
    case AttachmentFilter::withoutAttachments:
      return message.attachments.empty();
  }
  return true;
}

}  // namespace

SizeFilter sizeClass(const EmailMessage& message) {
  std::uint64_t size = 0;
  for (const auto& attachment : message.attachments) {
    size += attachment.data.size();
  }
  if (size < mediumFrom) {
    return SizeFilter::small;
  }
  return size <= mediumUpTo ? SizeFilter::medium : SizeFilter::large;
}

const char* label(AttachmentFilter filter) {
  switch (filter) {
    case AttachmentFilter::any:
      return "Cualquiera";
    case AttachmentFilter::withAttachments:
      return "Con adjuntos";
    case AttachmentFilter::withoutAttachments:
      return "Sin adjuntos";
  }
  return "";
}

const char* label(SizeFilter filter) {
  switch (filter) {
    case SizeFilter::any:
      return "Cualquiera";
    case SizeFilter::small:
      return "Pequeño (< 10 KB)";
    case SizeFilter::medium:
      return "Mediano (10-100 KB)";
    case SizeFilter::large:
      return "Grande (> 100 KB)";
  }
  return "";
}

SearchFilters SearchFilters::defaults(Date now) {
  SearchFilters filters;
  filters.setLastYear(now);
  return filters;
}

bool SearchFilters::isActive() const {
  return !subjectQuery.empty() || !bodyQuery.empty() || !fromQuery.empty() || !attachmentType.empty() ||
         useDateFilter || onlyInConversations || onlyHTML || attachmentFilter != AttachmentFilter::any ||
         sizeFilter != SizeFilter::any;
}

bool SearchFilters::matches(const EmailMessage& message) const {
  if (!subjectQuery.empty() && !localizedCaseInsensitiveContains(message.subject, subjectQuery)) {
    return false;
  }
  if (!fromQuery.empty() && !localizedCaseInsensitiveContains(displayForm(message.from), fromQuery)) {
    return false;
  }
  if (useDateFilter && message.date && (*message.date < startDate || *message.date > endDate)) {
    return false;
  }
  if (!passesAttachmentFilter(message, attachmentFilter, attachmentType) ||
      (onlyInConversations && message.conversationID.empty()) || (onlyHTML && !message.htmlBody) ||
      (sizeFilter != SizeFilter::any && sizeClass(message) != sizeFilter)) {
    return false;
  }
  // All tests must hold, so their order does not show; the one that reads bodies comes last.
  return bodyQuery.empty() || bodyContains(message.plainBody, bodyQuery) ||
         bodyContains(message.htmlBody, bodyQuery);
}

SearchFilters SearchFilters::textFilters() const {
  SearchFilters text;
  text.subjectQuery = subjectQuery;
  text.bodyQuery = bodyQuery;
  text.fromQuery = fromQuery;
  if (attachmentFilter == AttachmentFilter::withAttachments && !attachmentType.empty()) {
    text.attachmentFilter = attachmentFilter;
    text.attachmentType = attachmentType;
  }
  return text;
}

std::string SearchFilters::summary() const {
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (!subjectQuery.empty()) {
    add("asunto contiene '" + subjectQuery + "'");
  }
  if (!bodyQuery.empty()) {
    add("contenido contiene '" + bodyQuery + "'");
  }
  if (!fromQuery.empty()) {
    add("de '" + fromQuery + "'");
  }
  if (useDateFilter) {
    add("entre " + formatShortDate(startDate) + " y " + formatShortDate(endDate));
  }
  if (attachmentFilter == AttachmentFilter::withAttachments) {
    add("con adjuntos");
  } else if (attachmentFilter == AttachmentFilter::withoutAttachments) {
    add("sin adjuntos");
  }
  return text.empty() ? "Sin filtros" : text;
}

void SearchFilters::setLastWeek(Date now) {
  startDate = addDays(now, -7);
  endDate = now;
}

void SearchFilters::setLastMonth(Date now) {
  startDate = addMonths(now, -1);
  endDate = now;
}

void SearchFilters::setLastYear(Date now) {
  startDate = addMonths(now, -12);
  endDate = now;
}

}  // namespace tidewrack
