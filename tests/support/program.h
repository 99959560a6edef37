#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tidewrack {

/// How a program ended and what it printed.
struct ProgramResult {
  int status = -1;  ///< Exit status, or 128 plus the number of the signal that ended it.
  std::string output;
  std::string errors;
};

/// Starts programs with an environment of their own. The child sees only what is set here, PATH, and the
/// options of the sanitizers.
class Program {
 public:
  explicit Program(std::filesystem::path file) : file_(std::move(file)) {}

  void setEnvironment(const std::string& name, const std::string& value) { environment_[name] = value; }

  /// Runs to the end. Standard input is empty.
  [[nodiscard]] ProgramResult run(const std::vector<std::string>& arguments) const;
  /// Runs with a standard output that nobody reads.
  [[nodiscard]] ProgramResult runWithClosedOutput(const std::vector<std::string>& arguments) const;
  /// Kills the program (SIGKILL) once the time has passed. Gives whether it was still running then.
  [[nodiscard]] bool runAndKill(const std::vector<std::string>& arguments,
                                std::chrono::microseconds after) const;

 private:
  enum class OutputKind { collected, closed, discarded };
  struct Child;
  [[nodiscard]] Child start(const std::vector<std::string>& arguments, OutputKind kind) const;
  static ProgramResult finish(Child child);

  std::filesystem::path file_;
  std::map<std::string, std::string> environment_;
};

}  // namespace tidewrack
