#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "mail/records.h"

namespace tidewrack {

/// A file name that stays inside its folder and hides nothing: path separators become "_"; control
/// characters, invisible direction marks, leading dots and blanks and trailing blanks go; at most 200 bytes,
/// with the extension kept. "attachment" where nothing is left.
std::string safeFileName(std::string_view name);

/// Writes every attachment into `folder`, which is made when missing, and gives the files in document order.
/// A name that is taken gets a number, "report (2).pdf"; no file that is there is touched, and no link is
/// followed. Throws FileFailure and StoreFailure.
std::vector<std::filesystem::path> saveAttachments(const EmailMessage& message,
                                                   const std::filesystem::path& folder);

}  // namespace tidewrack
