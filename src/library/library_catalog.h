#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <vector>

#include "library/library_discovery.h"
#include "platform/date.h"
#include "platform/files.h"
#include "platform/text.h"

namespace tidewrack {

/// One imported archive.
struct MBOXLibrary {
  Text id;           ///< An upper-case UUID; for an adopted library the id of the discovered one. Identity.
  Text displayName;  ///< Name shown to the user.
  Text fileName;     ///< Name of the stored copy in "Libraries"; empty for a library without a local file.
  Date importedAt;   ///< Time of the import. Kept in whole seconds by the catalog file.
  bool isCloudDerived = false;  ///< Adopted from synced messages, with no local file.

  friend bool operator==(const MBOXLibrary&, const MBOXLibrary&) = default;
};

/// A copy that importLibraries is making.
struct CopyUnderWay {
  const MBOXLibrary& added;           ///< As it will be; `importedAt` is not known yet.
  const std::filesystem::path& file;  ///< The copy.
  std::uint64_t there;                ///< This many bytes of the copy can be read.
  std::uint64_t expected;             ///< Its size in the end, unless the source changes meanwhile.
};
using CopyObserver = std::function<void(const CopyUnderWay&)>;

/// Newest first by `importedAt`; libraries of the same time keep their order.
void sortNewestFirst(std::vector<MBOXLibrary>& libraries);

/// The list of all libraries, "libraries.json", and the folder "Libraries" beside it with a private copy of
/// each archive. Every operation reads the file, changes the list and writes it back atomically; the object
/// has no state of its own, so it is made fresh for each use. A catalog that cannot be read or decoded makes
/// every operation but ensureDirectories fail and is never replaced. Failures are FileFailure and
/// CodingFailure. From any thread, one operation at a time: other processes are kept away by the lock of the
/// store, which lies in the same folder.
class LibraryCatalog {
 public:
  using Clock = std::function<Date()>;

  /// `folder` is the application's folder, `clock` gives the present time (the system's when empty).
  explicit LibraryCatalog(std::filesystem::path folder = applicationSupportFolder(), Clock clock = {});

  /// "libraries.json".
  [[nodiscard]] std::filesystem::path catalogFile() const;
  /// "Libraries".
  [[nodiscard]] std::filesystem::path librariesFolder() const;
  /// The stored copy of a library; for an empty `fileName` the folder itself.
  [[nodiscard]] std::filesystem::path fileLocation(const MBOXLibrary& library) const;

  /// Makes both folders; existing ones are fine.
  void ensureDirectories() const;
  /// All libraries, newest first.
  [[nodiscard]] std::vector<MBOXLibrary> loadLibraries() const;
  /// Copies each file and adds a library for it, also when the same file was imported before. Gives the new
  /// libraries, newest first. When a copy fails, the copies made before it stay in the folder and the catalog
  /// is not written. An empty list touches nothing. `observer` is called on this thread after each piece of a
  /// copy and must not throw; a copy has ended when that of the next file begins or the operation returns.
  [[nodiscard]] std::vector<MBOXLibrary> importLibraries(const std::vector<std::filesystem::path>& urls,
                                                         const CopyObserver& observer = {}) const;
  /// Adds a library that has no local file, or gives the one that has this id already.
  [[nodiscard]] MBOXLibrary adoptLibrary(const DiscoveredLibrary& discovered) const;
  /// Gives the library a new name (trimmed) and takes its cloud-derived mark; the whole list, newest first.
  /// A blank name or an unknown id writes nothing.
  [[nodiscard]] std::vector<MBOXLibrary> renameLibrary(const Text& id, const Text& name) const;
  /// Removes the stored copy and the entry; the whole list, newest first. An unknown id removes nothing.
  /// A library without a file name takes the whole folder "Libraries" with it, into the user's trash; where
  /// there is no trash the operation fails and changes nothing.
  [[nodiscard]] std::vector<MBOXLibrary> deleteLibrary(const Text& id) const;

 private:
  void writeLibraries(const std::vector<MBOXLibrary>& libraries) const;

  std::filesystem::path folder_;
  Clock clock_;
};

}  // namespace tidewrack
