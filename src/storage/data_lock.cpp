#include "storage/data_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace orvanta {

std::optional<DataLock> DataLock::take(const DataLocation& where) {
  const auto path = where.dir / "orvanta.lock";
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (file < 0) return DataLock(-1);
  if (flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return DataLock(file);
  close(file);
  return {};
}

DataLock::DataLock(DataLock&& other) noexcept : file_(std::exchange(other.file_, -1)) {}

DataLock::~DataLock() {
  if (file_ >= 0) close(file_);
}

}  // namespace orvanta
