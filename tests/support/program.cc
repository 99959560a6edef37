#include "support/program.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tidewrack {
namespace {

struct Pipe {
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    readEnd = ends[0];
    writeEnd = ends[1];
  }
  int readEnd;
  int writeEnd;
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (auto& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

int statusOf(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

struct Program::Child {
  pid_t process = -1;
  int output = -1;  ///< -1 when nobody reads it.
  int errors = -1;
};

Program::Child Program::start(const std::vector<std::string>& arguments, OutputKind kind) const {
  std::vector<std::string> texts = {file_.string()};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment;
  for (const auto& [name, value] : environment_) {
    environment.push_back(name + "=" + value);
  }
  for (const char* name : {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) {
      environment.push_back(std::string(name) + "=" + value);
    }
  }
  const auto argumentPointers = pointers(texts);
  const auto environmentPointers = pointers(environment);

  const Pipe output;
  const Pipe errors;
  const pid_t process = fork();
  if (process < 0) {
    throw std::runtime_error("no process");
  }
  if (process == 0) {
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    dup2(kind == OutputKind::discarded ? nothing : output.writeEnd, STDOUT_FILENO);
    dup2(kind == OutputKind::discarded ? nothing : errors.writeEnd, STDERR_FILENO);
    if (kind == OutputKind::closed) {
      close(output.readEnd);
    }
    execve(file_.c_str(), argumentPointers.data(), environmentPointers.data());
    _exit(127);
  }
  close(output.writeEnd);
  close(errors.writeEnd);
  Child child{process, output.readEnd, errors.readEnd};
  if (kind != OutputKind::collected) {
    close(child.output);
    child.output = -1;
  }
  return child;
}

ProgramResult Program::finish(Child child) {
  ProgramResult result;
  std::array<pollfd, 2> ends{{{child.output, POLLIN, 0}, {child.errors, POLLIN, 0}}};
  std::array<std::string*, 2> texts{&result.output, &result.errors};
  std::array<char, 65536> buffer{};
  while (ends[0].fd >= 0 || ends[1].fd >= 0) {
    if (poll(ends.data(), ends.size(), -1) < 0) {
      continue;
    }
    for (std::size_t i = 0; i < ends.size(); ++i) {
      if (ends[i].fd < 0 || ends[i].revents == 0) {
        continue;
      }
      const auto count = read(ends[i].fd, buffer.data(), buffer.size());
      if (count > 0) {
        texts[i]->append(buffer.data(), static_cast<std::size_t>(count));
      } else if (count == 0 || errno != EINTR) {
        close(ends[i].fd);
        ends[i].fd = -1;
      }
    }
  }
  result.status = statusOf(child.process);
  return result;
}

ProgramResult Program::run(const std::vector<std::string>& arguments) const {
  return finish(start(arguments, OutputKind::collected));
}

ProgramResult Program::runWithClosedOutput(const std::vector<std::string>& arguments) const {
  return finish(start(arguments, OutputKind::closed));
}

bool Program::runAndKill(const std::vector<std::string>& arguments, std::chrono::microseconds after) const {
  const auto child = start(arguments, OutputKind::discarded);
  const int handle = static_cast<int>(syscall(SYS_pidfd_open, child.process, 0));
  pollfd end{handle, POLLIN, 0};
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(after);
  const timespec limit{seconds.count(), std::chrono::nanoseconds(after - seconds).count()};
  const bool hasEnded = ppoll(&end, 1, &limit, nullptr) > 0;
  if (!hasEnded) {
    kill(child.process, SIGKILL);
  }
  close(handle);
  close(child.errors);
  return statusOf(child.process) == 128 + SIGKILL;
}

}  // namespace tidewrack
