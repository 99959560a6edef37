#pragma once

#include <optional>
#include <string>

#include "mail/records.h"
#include "platform/date.h"

namespace tidewrack {

enum class AttachmentFilter { any, withAttachments, withoutAttachments };
enum class SizeFilter { any, small, medium, large };

/// The class of a message by the bytes of its attachments' data; never `any`. Bodies do not count.
SizeFilter sizeClass(const EmailMessage& message);

/// The texts of the two pickers.
const char* label(AttachmentFilter filter);
const char* label(SizeFilter filter);

/// The advanced filters. A plain value.
struct SearchFilters {
  std::string subjectQuery;    ///< Text to look for in the subject.
  std::string bodyQuery;       ///< Text to look for in either body; HTML is searched as markup.
  std::string fromQuery;       ///< Text to look for in the sender's display form.
  bool useDateFilter = false;  ///< Whether the range below applies.
  Date startDate{};            ///< First instant, inclusive.
  Date endDate{};              ///< Last instant, inclusive.
  AttachmentFilter attachmentFilter = AttachmentFilter::any;
  std::string attachmentType;  ///< Text to look for in an attachment's file name or MIME type.
  bool onlyInConversations = false;
  bool onlyHTML = false;
  SizeFilter sizeFilter = SizeFilter::any;

  friend bool operator==(const SearchFilters&, const SearchFilters&) = default;

  /// The defaults at an instant: no filter, and a range of the year before it.
  static SearchFilters defaults(Date now);

  /// Whether anything is set. The dates alone do not count; a query of one blank does.
  [[nodiscard]] bool isActive() const;
  /// Whether the message passes every filter. Reads bodies only for a body query that the earlier tests
  /// have left undecided. Safe from any thread.
  [[nodiscard]] bool matches(const EmailMessage& message) const;
  /// The filters that look into the texts of a message, without the others. Not active when there are none.
  [[nodiscard]] SearchFilters textFilters() const;
  /// One line for the dialog, in Spanish.
  [[nodiscard]] std::string summary() const;

  /// The three shortcuts: the range becomes the last week, month or year before `now`.
  void setLastWeek(Date now);
  void setLastMonth(Date now);
  void setLastYear(Date now);
};

}  // namespace tidewrack
