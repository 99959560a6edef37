#pragma once

#include <filesystem>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

/// Writes every attachment into `folder`, which is made when missing, and gives the files in document order.
/// Names are those of safeFileName; one that is taken gets a number, "report (2).pdf"; no file that is there
/// is touched, and no link is followed. Throws FileFailure and StoreFailure.
std::vector<std::filesystem::path> saveAttachments(const EmailMessage& message,
                                                   const std::filesystem::path& folder);

}  // namespace tidewrack
