#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

/// Files and folders of the program. Mail is private: whatever is made here is readable by its user alone
/// (folders 0700, files 0600), whatever the umask. Failures throw FileFailure with a description that names
/// the file and the system's reason. Safe from any thread.
namespace tidewrack {

/// "$XDG_DATA_HOME/Tidewrack": the catalog, the copies of the archives and the store.
/// The folder is not made. The base is read once a process (XDG Base Directory Specification).
std::filesystem::path applicationSupportFolder();
/// "$XDG_CACHE_HOME/Tidewrack": what may vanish at any time. Not made.
std::filesystem::path cachesFolder();
/// "$XDG_CONFIG_HOME/Tidewrack": the settings. Not made.
std::filesystem::path settingsFolder();

/// The path as text for people: valid UTF-8, whatever bytes the name holds.
std::string displayPath(const std::filesystem::path& path);

/// Makes the folder and those above it that are missing; one that exists is fine and keeps its mode.
void createPrivateFolders(const std::filesystem::path& folder);

/// Whether anything exists at the path (a link to nothing does not).
bool fileExists(const std::filesystem::path& path);

/// The whole content of a regular file.
std::string readFile(const std::filesystem::path& path);

/// Puts `bytes` in the place of the file as one step: after a crash at any moment the old content or the new
/// one is there, whole and on the disk (temporary file, fsync, rename, fsync of the folder).
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);

/// How a copy goes on: the first `there` bytes of the destination can be read, and `expected` is the size
/// that the source had at the beginning (0 for some virtual files). A source that grows gives more bytes than
/// that.
using CopyProgress = std::function<void(std::uint64_t there, std::uint64_t expected)>;

/// Copies a regular file to a place where nothing is yet, without passing the bytes through the program where
/// the system can do so, and gives the copy to the disk. After a failure nothing is left at `destination`.
/// `progress` is called after each piece of some bytes, on this thread, and must not throw.
void copyFile(const std::filesystem::path& source, const std::filesystem::path& destination,
              const CopyProgress& progress = {});

/// Removes a file, or a folder with all it holds. A path where nothing is fails.
void removeItem(const std::filesystem::path& path);

/// Writes the entries of a folder (a new, renamed or removed file) to the disk.
void syncFolder(const std::filesystem::path& folder);

}  // namespace tidewrack
