#include "storage/data_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace orvanta {
namespace {

bool sameFile(int file, const std::filesystem::path& path) {
  struct stat one{};
  struct stat other{};
  return fstat(file, &one) == 0 && stat(path.c_str(), &other) == 0 && one.st_dev == other.st_dev &&
         one.st_ino == other.st_ino;
}

}  // namespace

std::optional<DataLock> DataLock::take(const DataLocation& where, int inherited) {
  const auto path = where.dir / "orvanta.lock";
  const bool ours = inherited >= 0 && sameFile(inherited, path);
  if (ours) fcntl(inherited, F_SETFD, FD_CLOEXEC);
  const int file =
      ours ? inherited : open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (file < 0) return DataLock(-1);
  if (flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return DataLock(file);
  close(file);
  return {};
}

DataLock::DataLock(DataLock&& other) noexcept : file_(std::exchange(other.file_, -1)) {}

DataLock::~DataLock() {
  if (file_ >= 0) close(file_);
}

int DataLock::leave() {
  return std::exchange(file_, -1);
}

}  // namespace orvanta
