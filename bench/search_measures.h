#pragma once

#include <filesystem>
#include <string>

#include "measure.h"

namespace tidewrack::bench {

/// Measures the search index over the messages of an archive: building it against parsing the archive,
/// storing and loading it against rows of pairs, and queries against FTS5 of SQLite over the same texts.
/// Databases go below `scratch`, which is removed again. The goals are for archives with many messages of
/// ordinary words; where most words occur once, as in an archive that is mostly attachments, each takes more
/// bytes than a pair may, and there are no goals.
void measureSearch(const std::filesystem::path& archive, const std::string& name, bool hasGoals,
                   const std::filesystem::path& scratch, int turns, Table& table);

}  // namespace tidewrack::bench
