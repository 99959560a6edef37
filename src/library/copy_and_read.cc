#include "library/copy_and_read.h"

#include <utility>

#include "mail/mbox_importer.h"

namespace tidewrack {

CopiedArchive copyAndRead(const LibraryCatalog& catalog, const std::filesystem::path& url) {
  std::optional<EarlyReading> reading;
  const auto follow = [&reading](const CopyUnderWay& copy) {
    if (!reading) {
      reading.emplace(copy.file, copy.expected, copy.added.id, copy.added.displayName);
    }
    reading->arrive(copy.there);
  };
  CopiedArchive copied;
  copied.libraries = catalog.importLibraries({url}, follow);
  if (reading) {
    copied.early = reading->finish();
  }
  return copied;
}

MessageList messagesOfCopy(const std::filesystem::path& file, const MBOXLibrary& library,
                           std::optional<EarlyMessages> early) {
  if (early && early->areOf(file)) {
    return std::move(early->messages);
  }
  early.reset();
  return MBOXImporter::importFiles({file}, library.id, library.displayName);
}

}  // namespace tidewrack
