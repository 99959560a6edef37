#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tidewrack::bench {

/// Seconds of wall-clock time that `work` takes.
double secondsOf(const std::function<void()>& work);

/// Writes out what waits, lets the page cache go where the user may do that (root), uses the free memory
/// once, and reads the input, a file or a folder of files, into the cache. A full cache makes whoever writes
/// wait for its clearing, and the host of a virtual machine provides memory only when it is used.
void warmInput(const std::filesystem::path& input);

/// Times two pieces of work in turns, so that a machine that is busy for a while slows both, and gives
/// the median of each.
struct Pair {
  double measured = 0;
  double reference = 0;
  [[nodiscard]] double ratio() const { return measured / reference; }
};
Pair medianOfTurns(int turns, const std::function<double()>& measured,
                   const std::function<double()>& reference);

/// What a child process reports: one "name value" pair a line.
using Report = std::map<std::string, double>;

/// Runs this program again in the given role, with data folders below `world`, and reads its report.
/// Throws std::runtime_error when the child fails.
Report runChild(const std::vector<std::string>& arguments, const std::filesystem::path& world);

/// Watches the anonymous memory of this process (RssAnon of /proc/self/status) from a thread of its own.
class MemoryWatch {
 public:
  MemoryWatch();
  ~MemoryWatch();
  MemoryWatch(const MemoryWatch&) = delete;
  MemoryWatch& operator=(const MemoryWatch&) = delete;
  /// The greatest number of bytes seen so far.
  [[nodiscard]] std::uint64_t peak() const;
  /// The number of bytes now.
  static std::uint64_t now();

 private:
  struct State;
  State* state_;
};

/// The table of results, printed row by row.
class Table {
 public:
  Table();
  /// A ratio against a reference measured in the same run.
  void addRatio(const std::string& what, const Pair& pair, double goal);
  /// A number of bytes with its limit.
  void addBytes(const std::string& what, double bytes, double limit);
  /// Bytes for one of something small, with their limit, or without one when that is 0.
  void addBytesAPair(const std::string& what, double bytes, double limit);
  /// A time in milliseconds with its limit.
  void addMilliseconds(const std::string& what, double milliseconds, double limit);
  /// A value for information, without a goal.
  void addNote(const std::string& what, const std::string& value);
  [[nodiscard]] bool allReached() const { return allReached_; }

 private:
  void row(const std::string& what, const std::string& measured, const std::string& reference,
           const std::string& ratio, const std::string& goal, bool reached);

  bool allReached_ = true;
};

}  // namespace tidewrack::bench
