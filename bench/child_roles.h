#pragma once

#include <string>
#include <vector>

namespace tidewrack::bench {

/// What a measuring child process does, by its first argument. Each role prints its report on standard
/// output, one "name value" pair a line. Gives the exit status, or -1 when the first argument is no role.
int runChildRole(const std::vector<std::string>& arguments);

}  // namespace tidewrack::bench
