#include "base/whole_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <glib.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <utility>

namespace orvanta {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
constexpr int kMostLinks = 40;
constexpr int kAttempts = 20;  // at a name that nobody has
constexpr auto kForeignLink =
    "c’est un lien symbolique que quelqu’un d’autre a pu mettre là, il n’est pas suivi";
constexpr auto kForeignPipe = "quelqu’un d’autre lirait ce qui y est écrit";

// What root does needs no trick.
bool trusted(uid_t owner) {
  return owner == geteuid() || owner == 0;
}

bool othersWrite(const OwnedFd& folder) {
  struct stat info{};
  return fstat(folder.get(), &info) != 0 || !trusted(info.st_uid) ||
         (info.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

// There a link may lead to what has no path.
bool onProc(const OwnedFd& folder) {
  struct statfs info{};
  return fstatfs(folder.get(), &info) == 0 && info.f_type == PROC_SUPER_MAGIC;
}

bool isSpecial(const struct stat& info) {
  return !S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode) && !S_ISLNK(info.st_mode);
}

std::string hiddenName() {
  return fmt::format(".orvanta-{:08x}", g_random_int());
}

std::string pathOf(int file) {
  return fmt::format("/proc/self/fd/{}", file);
}

}  // namespace

std::string reasonOf(int error) {
  switch (error) {
    case EACCES:
    case EPERM:
      return "vous n’en avez pas le droit";
    case EDQUOT:
    case ENOSPC:
      return "il n’y a plus de place";
    case EISDIR:
      return "c’est un dossier";
    case ENOENT:
      return "le dossier n’existe pas";
    case EROFS:
      return "le disque est en lecture seule";
    default:
      return g_strerror(error);
  }
}

WholeFile::WholeFile(const fs::path& path, bool named) {
  find(path);
  if (problem_.empty()) open(named);
}

WholeFile::~WholeFile() {
  if (!hidden_.empty()) unlinkat(folder_.get(), hidden_.c_str(), 0);
}

bool WholeFile::failed(int error) {
  if (problem_.empty()) problem_ = reasonOf(error);
  return false;
}

// Follows the links of the last component one by one.
void WholeFile::find(fs::path path) {
  for (int links = 0; links <= kMostLinks; ++links) {
    const auto parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
    folder_.reset(::open(parent.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    name_ = path.filename();
    struct stat info{};
    if (!folder_ || name_.empty()) {
      failed(folder_ ? EISDIR : errno);
      return;
    }
    if (fstatat(folder_.get(), name_.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno != ENOENT) failed(errno);
      return;
    }
    if (S_ISDIR(info.st_mode)) {
      failed(EISDIR);
      return;
    }
    through_ = isSpecial(info);
    if (through_ && !trusted(info.st_uid)) problem_ = kForeignPipe;
    if (!S_ISLNK(info.st_mode)) return;
    if (!trusted(info.st_uid) || othersWrite(folder_)) {
      problem_ = kForeignLink;
      return;
    }
    struct stat target{};
    through_ = onProc(folder_) && fstatat(folder_.get(), name_.c_str(), &target, 0) == 0 &&
               isSpecial(target);
    if (through_) return;
    std::array<char, PATH_MAX> text{};
    const auto length = readlinkat(folder_.get(), name_.c_str(), text.data(), text.size() - 1);
    if (length < 0) {
      failed(errno);
      return;
    }
    path = parent / text.data();
  }
  failed(ELOOP);
}

void WholeFile::open(bool named) {
  if (through_) {
    openThrough();
  } else if (named || !openNameless()) {
    openNamed();
  }
  if (!stream_) failed(errno);
}

void WholeFile::openThrough() {
  const int follow = onProc(folder_) ? 0 : O_NOFOLLOW;
  OwnedFd file(openat(folder_.get(), name_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | follow));
  if (file) stream_.reset(fdopen(file.release(), "w"));
}

bool WholeFile::openNameless() {
  // By its place there it gets its name.
  if (access(pathOf(folder_.get()).c_str(), F_OK) != 0) return false;
  OwnedFd file(openat(folder_.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, kOwnerOnly));
  if (!file) return false;
  fchmod(file.get(), kOwnerOnly);
  stream_.reset(fdopen(file.release(), "w"));
  return true;
}

void WholeFile::openNamed() {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const auto name = hiddenName();
    OwnedFd file(openat(folder_.get(), name.c_str(),
                        O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, kOwnerOnly));
    if (!file && errno == EEXIST) continue;
    if (!file) break;
    fchmod(file.get(), kOwnerOnly);
    hidden_ = name;
    stream_.reset(fdopen(file.release(), "w"));
    return;
  }
}

void WholeFile::write(std::string_view text) {
  if (!problem_.empty()) return;
  if (std::fwrite(text.data(), 1, text.size(), stream_.get()) != text.size()) failed(errno);
}

std::string WholeFile::finish() {
  if (problem_.empty() && std::fflush(stream_.get()) != 0) failed(errno);
  if (problem_.empty() && !through_) putInPlace();
  return problem_;
}

// A name that is taken cannot be given; it is replaced.
bool WholeFile::putInPlace() {
  const int file = fileno(stream_.get());
  if (fsync(file) != 0) return failed(errno);
  const auto folder = folder_.get();
  for (int attempt = 0; hidden_.empty() && attempt < kAttempts; ++attempt) {
    const auto name = attempt == 0 ? name_ : hiddenName();
    if (linkat(AT_FDCWD, pathOf(file).c_str(), folder, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      if (attempt == 0) return true;
      hidden_ = name;
    } else if (errno != EEXIST) {
      return failed(errno);
    }
  }
  if (hidden_.empty()) return failed(EEXIST);
  if (renameat(folder, hidden_.c_str(), folder, name_.c_str()) != 0) return failed(errno);
  hidden_.clear();
  return true;
}

}  // namespace orvanta
