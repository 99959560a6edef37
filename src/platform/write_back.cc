#include "platform/write_back.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace tidewrack {

WriteBack::WriteBack(const std::filesystem::path& file) : file_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}

std::uint64_t WriteBack::size() const noexcept {
  struct stat status = {};
  return ::fstat(file_.number(), &status) == 0 ? static_cast<std::uint64_t>(status.st_size) : 0;
}

void WriteBack::begin() noexcept {
  end_ = size();
}

void WriteBack::advance() noexcept {
  constexpr std::uint64_t piece = std::uint64_t{16} << 20U;
  const std::uint64_t now = size();
  if (now < end_ + piece) {
    return;
  }
  // A failure here is seen by the flush as well.
  if (::sync_file_range(file_.number(), static_cast<off_t>(end_), static_cast<off_t>(now - end_),
                        SYNC_FILE_RANGE_WRITE) == 0) {
    sentBytes_ += now - end_;
  }
  end_ = now;
}

}  // namespace tidewrack
