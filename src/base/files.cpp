#include "base/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>
#include <vector>

#include "base/owned_fd.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;

OwnedFd openNew(const fs::path& file) {
  OwnedFd made(
      open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOwnerOnly));
  if (made) fchmod(made.get(), kOwnerOnly);
  return made;
}

bool writeAll(int file, const char* bytes, std::size_t count) {
  while (count > 0) {
    const auto written = write(file, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

// `count` bytes from `offset` on, block by block, since the disk refuses a whole read for one
// block.
void readBlocks(int file, char* bytes, std::size_t count, off_t offset) {
  constexpr std::size_t kBlock = 4096;
  for (std::size_t done = 0; done < count; done += kBlock) {
    const auto part = std::min(kBlock, count - done);
    const auto got = pread(file, bytes + done, part, offset + static_cast<off_t>(done));
    const auto good = got < 0 ? 0 : static_cast<std::size_t>(got);
    std::fill(bytes + done + good, bytes + done + part, '\0');
  }
}

bool copyBytes(int from, int to) {
  struct stat facts{};
  if (fstat(from, &facts) != 0) return false;
  std::vector<char> buffer(std::size_t{1} << 18U);
  for (off_t offset = 0; offset < facts.st_size;) {
    const auto wanted = std::min(buffer.size(), static_cast<std::size_t>(facts.st_size - offset));
    const auto got = pread(from, buffer.data(), wanted, offset);
    if (got < static_cast<ssize_t>(wanted)) readBlocks(from, buffer.data(), wanted, offset);
    if (!writeAll(to, buffer.data(), wanted)) return false;
    offset += static_cast<off_t>(wanted);
  }
  return true;
}

}  // namespace

bool syncToDisk(const fs::path& fileOrFolder) {
  const OwnedFd file(open(fileOrFolder.c_str(), O_RDONLY | O_CLOEXEC));
  return file && fsync(file.get()) == 0;
}

bool copyWhatIsReadable(const fs::path& from, const fs::path& to) {
  const OwnedFd source(open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!source) return false;
  const auto target = openNew(to);
  if (!target) return false;
  if (copyBytes(source.get(), target.get())) return true;
  unlink(to.c_str());
  return false;
}

bool makeNewFile(const fs::path& file) {
  return bool(openNew(file));
}

bool renameToNew(const fs::path& from, const fs::path& to) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // A file system without it.
  struct stat facts{};
  if (lstat(to.c_str(), &facts) == 0) {
    errno = EEXIST;
    return false;
  }
  return std::rename(from.c_str(), to.c_str()) == 0;
}

std::optional<uint64_t> freeSpace(const fs::path& folder) {
  struct statvfs facts{};
  if (statvfs(folder.c_str(), &facts) != 0) return {};
  return uint64_t{facts.f_bavail} * facts.f_frsize;
}

uint64_t bytesOf(const fs::path& file) {
  std::error_code error;
  const auto bytes = fs::file_size(file, error);
  return error ? 0 : bytes;
}

std::optional<ScratchFolder> ScratchFolder::make(const fs::path& prefix) {
  auto name = prefix.string() + "XXXXXX";
  if (!mkdtemp(name.data())) return {};
  return ScratchFolder(name);
}

ScratchFolder::ScratchFolder(ScratchFolder&& other) noexcept
    : path_(std::exchange(other.path_, {})) {}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  if (!path_.empty()) fs::remove_all(path_, ignored);
}

}  // namespace orvanta
