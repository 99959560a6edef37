#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "measure.h"

namespace tidewrack::bench {

/// Measures the export of 100,000 messages of 1 GB (of a tenth of that with `quick`) in every format, each
/// against `cp` of the file that it makes, both given to the disk. Works below `folder`.
void measureExport(const std::filesystem::path& folder, bool quick, int turns, Table& table);

/// The child process of it: loads the list from the store and exports it once. -1 when `arguments` ask for
/// something else.
int runExportRole(const std::vector<std::string>& arguments);

}  // namespace tidewrack::bench
