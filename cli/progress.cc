#include "cli/progress.h"

#include <algorithm>
#include <cstdio>

#include <unistd.h>

#include "cli/output.h"

namespace tidewrack {
namespace {

constexpr auto interval = std::chrono::milliseconds(100);
constexpr const char* eraseLine = "\r\033[K";

}  // namespace

Progress::Progress(Output output)
    : isShown_(isatty(STDERR_FILENO) == 1 && (output == Output::nothing || isatty(STDOUT_FILENO) == 0)) {}

Progress::~Progress() {
  clear();
}

bool Progress::isDue() const {
  return isShown_ && std::chrono::steady_clock::now() - last_ >= interval;
}

void Progress::show(std::string text) {
  if (!isShown_) {
    return;
  }
  last_ = std::chrono::steady_clock::now();
  std::replace(text.begin(), text.end(), '\n', ' ');
  std::fprintf(stderr, "%s%s", eraseLine, terminalSafe(text).c_str());
  std::fflush(stderr);
  isDirty_ = true;
}

void Progress::clear() {
  if (isDirty_) {
    std::fputs(eraseLine, stderr);
    std::fflush(stderr);
    isDirty_ = false;
  }
}

}  // namespace tidewrack
