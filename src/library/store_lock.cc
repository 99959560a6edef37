#include "library/store_lock.h"

#include <cerrno>
#include <cstdlib>
#include <string>

#include <fcntl.h>
#include <glib.h>
#include <sys/file.h>
#include <unistd.h>

#include "library/model_container.h"
#include "platform/localized.h"

namespace tidewrack {
namespace {

StoreInUseFailure inUse(int descriptor) {
  char text[32] = {};
  const ssize_t length = ::pread(descriptor, text, sizeof text - 1, 0);
  const long long owner = length > 0 ? std::atoll(text) : 0;
  if (owner <= 0) {
    return StoreInUseFailure(
        localized("store_error_in_use_unknown",
                  "The mail store is in use by another Tidewrack process. Close it and try again.",
                  "Store failure: locked by another process"));
  }
  return StoreInUseFailure(formatText(
      localized("store_error_in_use",
                "The mail store is in use by another Tidewrack process (PID %d). Close it and try again.",
                "Store failure: locked by another process, with its number"),
      {owner}));
}

StoreFailure cannotLock(int error) {
  return StoreFailure(
      formatText(localized("store_error_lock", "The lock file of the mail store could not be made: %@.",
                           "Store failure: the system's reason follows"),
                 {std::string(g_strerror(error))}));
}

}  // namespace

StoreLock::StoreLock(const std::filesystem::path& file)
    : descriptor_(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
  if (descriptor_ < 0) {
    throw cannotLock(errno);
  }
  if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    if (error == EWOULDBLOCK) {
      const StoreInUseFailure failure = inUse(descriptor_);
      ::close(descriptor_);
      throw failure;
    }
    ::close(descriptor_);
    throw cannotLock(error);
  }
  // Only for the message above: a full disk must not keep the store shut.
  const std::string owner = std::to_string(::getpid()) + "\n";
  if (::ftruncate(descriptor_, 0) != 0 || ::pwrite(descriptor_, owner.data(), owner.size(), 0) < 0) {
    return;
  }
}

StoreLock::~StoreLock() {
  ::close(descriptor_);
}

}  // namespace tidewrack
