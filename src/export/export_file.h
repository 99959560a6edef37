#pragma once

#include <filesystem>

#include "export/export_utility.h"

namespace tidewrack {

/// Writes the messages into a file as one step: whatever fails, and however the process ends, the file is
/// there whole or as it was before (see AtomicFile). Throws ExportError::noMessages for an empty list, before
/// the file is touched, FileFailure when the file cannot be written, and what a stored body or `progress`
/// throws. Takes memory for the largest message, whatever the number. Any thread.
void exportToFile(const MessageList& messages, ExportUtility::ExportFormat format,
                  const std::filesystem::path& file, Date now, const ExportUtility::Progress& progress = {});

/// The sum of the bodies and the attachments, decoded, in bytes: roughly what an export holds. The same for
/// all formats. Any thread.
std::uint64_t exportSizeEstimate(const MessageList& messages);

}  // namespace tidewrack
