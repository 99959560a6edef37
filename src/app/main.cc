// tidewrack: the desktop reader.

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtkmm.h>

#include "app/tidewrack_app.h"
#include "platform/failure.h"
#include "ui/application.h"

namespace {

using namespace tidewrack;

constexpr const char* serviceOption = "--gapplication-service";
constexpr const char* usage =
    "Usage: tidewrack [FILE...]\n"
    "Read mail archives. Each FILE is imported as a new library.\n\n"
    "  --demo-data    show made-up mail in place of the user's own\n"
    "  --screenshots  show made-up mail and leave the user's store alone\n"
    "  --picture=PNG  write a picture of the window once the mail stands, and end\n"
    "  --version      say which version this is\n"
    "  --help         say this\n";

// What the program was started with.
struct Launch {
  std::vector<std::string> arguments;  ///< All of them, the program's own path included.
  std::vector<std::string> files;
  std::string pictureFile;
  bool isService = false;  ///< Started by the session bus, which says later what to show.
  bool wantsUsage = false;
  bool wantsVersion = false;
  std::string unknown;
};

Launch readArguments(int argc, char** argv) {
  static constexpr std::string_view pictureOption = "--picture=";
  Launch launch;
  launch.arguments.assign(argv, argv + argc);
  bool onlyFiles = false;
  for (std::size_t index = 1; index < launch.arguments.size(); ++index) {
    const std::string& argument = launch.arguments[index];
    if (onlyFiles || argument.empty() || argument.front() != '-') {
      launch.files.push_back(argument);
    } else if (argument == "--") {
      onlyFiles = true;
    } else if (argument == "--help" || argument == "-h") {
      launch.wantsUsage = true;
    } else if (argument == "--version") {
      launch.wantsVersion = true;
    } else if (argument.starts_with(pictureOption)) {
      launch.pictureFile = argument.substr(pictureOption.size());
    } else if (argument == serviceOption) {
      launch.isService = true;
    } else if (!argument.starts_with("--screenshots") && !argument.starts_with("--demo-data")) {
      launch.unknown = argument;
    }
  }
  return launch;
}

int run(const Launch& launch) {
  TidewrackApp app(launch.arguments);
  if (gtk_init_check() == FALSE) {
    std::fputs("tidewrack: there is no display to show a window on; tidewrackctl works without one.\n",
               stderr);
    return EXIT_FAILURE;
  }
  const auto application = ui::Application::create({.start = [&app]() -> ContentView& { return app.start(); },
                                                    .intelligence = app.intelligence(),
                                                    .help = [] { TidewrackApp::helpRequested(); },
                                                    .pictureFile = launch.pictureFile});
  // Only the files go to the first instance; the flags are this process's own.
  std::vector<std::string> words = {launch.arguments.front()};
  if (launch.isService) {
    words.emplace_back(serviceOption);
  }
  words.insert(words.end(), launch.files.begin(), launch.files.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size());
  for (std::string& word : words) {
    pointers.push_back(word.data());
  }
  const int status = application->run(static_cast<int>(pointers.size()), pointers.data());
  return application->hasFailed() ? EXIT_FAILURE : status;
}

}  // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  const Launch launch = readArguments(argc, argv);
  if (launch.wantsUsage) {
    std::fputs(usage, stdout);
    return EXIT_SUCCESS;
  }
  if (launch.wantsVersion) {
    std::puts("tidewrack " TIDEWRACK_VERSION);
    return EXIT_SUCCESS;
  }
  if (!launch.unknown.empty()) {
    std::fprintf(stderr, "tidewrack: unknown option %s\n%s", launch.unknown.c_str(), usage);
    return 2;
  }
  try {
    return run(launch);
  } catch (const Failure& failure) {
    std::fprintf(stderr, "tidewrack: %s\n", failure.what());
    return EXIT_FAILURE;
  }
}
