#include "measure.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace tidewrack::bench {
namespace {

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

std::string text(const char* format, double value) {
  std::array<char, 64> buffer{};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(buffer.data(), buffer.size(), format, value);
#pragma GCC diagnostic pop
  return buffer.data();
}

}  // namespace

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void warmInput(const std::filesystem::path& input) {
  namespace fs = std::filesystem;
  sync();
  std::ofstream("/proc/sys/vm/drop_caches") << 3;
  constexpr std::size_t enough = std::size_t{4} << 30U;
  std::vector<char>(enough, 1).clear();
  std::vector<char> buffer(std::size_t{1} << 20U);
  const auto read = [&buffer](const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    while (file.read(buffer.data(), static_cast<std::streamsize>(buffer.size()))) {
    }
  };
  if (!fs::is_directory(input)) {
    read(input);
    return;
  }
  for (const auto& entry : fs::recursive_directory_iterator(input)) {
    if (entry.is_regular_file()) {
      read(entry.path());
    }
  }
}

Pair medianOfTurns(int turns, const std::function<double()>& measured,
                   const std::function<double()>& reference) {
  std::vector<double> first;
  std::vector<double> second;
  for (int i = 0; i < turns; ++i) {
    second.push_back(reference());
    first.push_back(measured());
  }
  return {median(first), median(second)};
}

Report runChild(const std::vector<std::string>& arguments, const std::filesystem::path& world) {
  std::filesystem::create_directories(world);
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    throw std::runtime_error("no pipe");
  }
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    setenv("XDG_DATA_HOME", (world / "data").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (world / "config").c_str(), 1);
    setenv("XDG_CACHE_HOME", (world / "cache").c_str(), 1);
    std::vector<std::string> texts = {"tidewrack-bench"};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (auto& argument : texts) {
      pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    execv("/proc/self/exe", pointers.data());
    _exit(127);
  }
  close(ends[1]);
  std::string output;
  std::array<char, 4096> buffer{};
  for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    output.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error("the measuring process \"" + arguments[0] + "\" failed");
  }
  Report report;
  std::istringstream stream(output);
  std::string name;
  for (double value = 0; stream >> name >> value;) {
    report[name] = value;
  }
  return report;
}

struct MemoryWatch::State {
  std::atomic<bool> ends = false;
  std::atomic<std::uint64_t> peak = 0;
  std::thread thread;
};

MemoryWatch::MemoryWatch() : state_(new State) {
  state_->thread = std::thread([state = state_] {
    while (!state->ends) {
      const auto bytes = now();
      if (bytes > state->peak) {
        state->peak = bytes;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  });
}

MemoryWatch::~MemoryWatch() {
  state_->ends = true;
  state_->thread.join();
  delete state_;
}

std::uint64_t MemoryWatch::peak() const {
  return state_->peak;
}

std::uint64_t MemoryWatch::now() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("RssAnon:")) {
      return std::strtoull(line.c_str() + std::strlen("RssAnon:"), nullptr, 10) * 1024;
    }
  }
  return 0;
}

Table::Table() {
  std::printf("%-58s %12s %12s %7s %9s\n", "", "measured", "reference", "ratio", "goal");
}

void Table::row(const std::string& what, const std::string& measured, const std::string& reference,
                const std::string& ratio, const std::string& goal, bool reached) {
  allReached_ = allReached_ && reached;
  std::printf("%-58s %12s %12s %7s %9s  %s\n", what.c_str(), measured.c_str(), reference.c_str(),
              ratio.c_str(), goal.c_str(),
              goal.empty() ? ""
              : reached    ? "reached"
                           : "MISSED");
  std::fflush(stdout);
}

void Table::addRatio(const std::string& what, const Pair& pair, double goal) {
  row(what, text("%.3f s", pair.measured), text("%.3f s", pair.reference), text("%.2f", pair.ratio()),
      goal > 0 ? text("<= %.3g", goal) : "", goal <= 0 || pair.ratio() <= goal);
}

void Table::addBytes(const std::string& what, double bytes, double limit) {
  const char* format = limit < 10'000 ? "%.0f B" : "%.1f MB";
  const double unit = limit < 10'000 ? 1 : 1e6;
  row(what, text(format, bytes / unit), "", "", "<= " + text(format, limit / unit), bytes <= limit);
}

void Table::addBytesAPair(const std::string& what, double bytes, double limit) {
  row(what, text("%.2f B", bytes), "", "", limit > 0 ? text("<= %.3g B", limit) : "",
      limit <= 0 || bytes <= limit);
}

void Table::addMilliseconds(const std::string& what, double milliseconds, double limit) {
  row(what, text("%.1f ms", milliseconds), "", "", text("<= %.0f ms", limit), milliseconds <= limit);
}

void Table::addNote(const std::string& what, const std::string& value) {
  row(what, value, "", "", "", true);
}

}  // namespace tidewrack::bench
