#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "library/library_catalog.h"
#include "mail/early_reading.h"
#include "mail/records.h"

namespace tidewrack {

/// An archive that has come into the catalog.
struct CopiedArchive {
  std::vector<MBOXLibrary> libraries;  ///< What importLibraries gave: one.
  std::optional<EarlyMessages> early;  ///< Its messages, where they could be read along with the copying.
};

/// LibraryCatalog::importLibraries for one file, whose copy is read while it is being made: copying keeps one
/// core busy, and the other one gets on with the reading. Fails as that does; nothing that happens to the
/// reading is a failure. Returns when both have ended. From any thread.
CopiedArchive copyAndRead(const LibraryCatalog& catalog, const std::filesystem::path& url);

/// The messages of the copy of a library at `file`, as MBOXImporter::importFiles gives and reports them: the
/// early ones where they still are those of the file.
MessageList messagesOfCopy(const std::filesystem::path& file, const MBOXLibrary& library,
                           std::optional<EarlyMessages> early);

}  // namespace tidewrack
