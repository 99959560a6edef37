#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "mail/records.h"
#include "platform/date.h"
#include "platform/failure.h"

namespace tidewrack {

/// Turns messages into the bytes of one file. The texts in the file are Spanish whatever the language of the
/// program; everything is UTF-8 without a byte order mark, with single line feeds.
class ExportUtility {
 public:
  enum class ExportFormat { txt, html, json, csv, mbox };

  static constexpr std::array allFormats = {ExportFormat::txt, ExportFormat::html, ExportFormat::json,
                                            ExportFormat::csv, ExportFormat::mbox};
  /// The title in the list of formats, for example "HTML (.html)".
  static const char* title(ExportFormat format);
  /// Without a dot.
  static const char* fileExtension(ExportFormat format);
  static std::optional<ExportFormat> formatFromExtension(std::string_view extension);

  class ExportError : public Failure {
   public:
    enum class Kind { noMessages, encodingFailed, writeFailed };

    /// `underlying`: the description of the failure behind a writeFailed.
    explicit ExportError(Kind kind, const std::string& underlying = {});
    [[nodiscard]] Kind kind() const { return kind_; }

   private:
    Kind kind_;
  };

  /// Takes the next bytes of the file. May throw.
  using Sink = std::function<void(std::string_view)>;
  /// Told now and then, and at the end, the number of messages written so far.
  using Progress = std::function<void(std::size_t done)>;

  /// Writes the messages in their order, made ready on all processors, in bounded memory (a few megabytes and
  /// the largest message). The sink and `progress` are called on the calling thread. `now` stands in for a
  /// missing date in MBOX. Throws ExportError::noMessages for an empty list before anything
  /// is written; what a sink or a stored body throws passes through. Any thread.
  static void exportMessages(const MessageList& messages, ExportFormat format, const Sink& sink, Date now,
                             const Progress& progress = {});
};

}  // namespace tidewrack
