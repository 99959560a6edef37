#pragma once

#include <filesystem>

/// What the desktop does for its programs with files.
namespace tidewrack {

/// Moves a file, or a folder with all it holds, into the user's trash (Desktop Trash Can specification), from
/// where it can be taken back. Throws FileFailure, and leaves it where it is, when there is no trash for its
/// place. From any thread.
void moveToTrash(const std::filesystem::path& path);

/// Asks the file manager to show a file selected in its folder (interface org.freedesktop.FileManager1);
/// where none answers, the folder is opened with whatever program opens folders. Returns at once and tells of
/// no failure: the file is where the user put it. Main thread; the answer comes on its main loop.
void revealInFileManager(const std::filesystem::path& file);

}  // namespace tidewrack
