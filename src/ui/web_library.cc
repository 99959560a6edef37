#include "ui/web_library.h"

#include <dlfcn.h>

#include "platform/log.h"

// Defined by the generated calls where the engine is loaded late; elsewhere they are not there.
extern "C" {
__attribute__((weak)) bool tidewrackLoadWebKit();
__attribute__((weak)) extern const char* const tidewrackWebKitName;
}

namespace tidewrack::ui {

bool loadWebLibrary() {
  if (tidewrackLoadWebKit == nullptr) {
    return true;
  }
  static const bool isLoaded = [] {
    const bool succeeded = tidewrackLoadWebKit();
    if (!succeeded) {
      Logger::of("App").error("%s", {std::string(tidewrackWebKitName)});
    }
    return succeeded;
  }();
  return isLoaded;
}

void prefetchWebLibrary() {
  if (tidewrackLoadWebKit != nullptr) {
    dlopen(tidewrackWebKitName, RTLD_LAZY | RTLD_LOCAL);
  }
}

}  // namespace tidewrack::ui
