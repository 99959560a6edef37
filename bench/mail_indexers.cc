#include "mail_indexers.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "measure.h"

namespace tidewrack::bench {
namespace {

namespace fs = std::filesystem;

bool isInstalled(const std::string& program) {
  return std::system(("command -v " + program + " >/dev/null").c_str()) == 0;
}

bool succeeds(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

void run(const std::string& command) {
  if (!succeeds(command)) {
    throw std::runtime_error("failed: " + command);
  }
}

}  // namespace

MaildirWriter::MaildirWriter(fs::path folder) : folder_(std::move(folder)) {
  fs::remove_all(folder_);
  for (const char* part : {"cur", "new", "tmp"}) {
    fs::create_directories(folder_ / part);
  }
}

void MaildirWriter::write(std::string_view message) {
  message.remove_prefix(std::min(message.size(), message.find('\n') + 1));
  std::ofstream file(folder_ / "cur" / (std::to_string(++count_) + ".bench:2,S"), std::ios::binary);
  file.write(message.data(), static_cast<std::streamsize>(message.size()));
  if (!file.flush()) {
    throw std::runtime_error("cannot write the Maildir");
  }
}

double muIndexSeconds(const fs::path& maildir, const fs::path& scratch) {
  if (!isInstalled("mu")) {
    return -1;
  }
  const std::string home = " --muhome='" + (scratch / "mu").string() + "'";
  // Version 1.8 now and then frees memory twice and ends. The run that comes through counts.
  constexpr int mostAttempts = 5;
  for (int attempt = 1;; ++attempt) {
    fs::remove_all(scratch);
    fs::create_directories(scratch);
    bool isIndexed = false;
    const double seconds = secondsOf([&] {
      run("mu init --maildir='" + maildir.string() + "'" + home);
      isIndexed = succeeds("mu index --quiet" + home);
    });
    fs::remove_all(scratch);
    if (isIndexed) {
      return seconds;
    }
    if (attempt == mostAttempts) {
      throw std::runtime_error("mu index fails");
    }
  }
}

double notmuchNewSeconds(const fs::path& maildir, const fs::path& scratch) {
  if (!isInstalled("notmuch")) {
    return -1;
  }
  fs::remove_all(scratch);
  fs::create_directories(scratch);
  const auto configuration = scratch / "config";
  std::ofstream(configuration) << "[database]\npath=" << (scratch / "database").string()
                               << "\nmail_root=" << maildir.string()
                               << "\n[user]\nname=Bench\nprimary_email=bench@example.org\n";
  fs::create_directories(scratch / "database");
  const double seconds =
      secondsOf([&] { run("notmuch --config='" + configuration.string() + "' new --no-hooks --quiet"); });
  fs::remove_all(scratch);
  return seconds;
}

}  // namespace tidewrack::bench
