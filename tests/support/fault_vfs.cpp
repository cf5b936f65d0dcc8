#include "support/fault_vfs.h"

#include <signal.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <new>
#include <string>

namespace orvanta::test {
namespace {

constexpr int kNever = INT_MAX;

// One set: a process has one file system.
std::atomic<Fault> fault = Fault::Full;
std::atomic<int> first = kNever;  // of the writes that fail
std::atomic<int> written = 0;
std::atomic<int64_t> size = 0;
std::atomic<bool> hit = false;
thread_local int lastError = 0;

sqlite3_vfs* real = nullptr;

struct File {
  sqlite3_file base;
  std::string path;
  sqlite3_file* inner() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

File& fileOf(sqlite3_file* file) {
  return *reinterpret_cast<File*>(file);
}
sqlite3_file* inner(sqlite3_file* file) {
  return fileOf(file).inner();
}

[[noreturn]] void die() {
  raise(SIGKILL);
  __builtin_unreachable();
}

// SQLITE_OK, or with what a write of this kind fails.
int strike(int fullCode, int errorCode, const void* data = nullptr, int amount = 0,
           sqlite3_file* torn = nullptr, int64_t at = 0) {
  lastError = 0;
  const bool due = ++written >= first;
  size += amount;
  if (!due || fault == Fault::ReadError) return SQLITE_OK;
  hit = true;
  switch (fault) {
    case Fault::Full:
      lastError = ENOSPC;
      return fullCode;
    case Fault::WriteError:
      lastError = EIO;
      return errorCode;
    case Fault::ReadOnly:
      lastError = EROFS;
      return errorCode;
    case Fault::Torn:
      if (torn) torn->pMethods->xWrite(torn, data, amount / 2, at);
      die();
    default:
      die();
  }
}

int close(sqlite3_file* file) {
  const int code = inner(file)->pMethods ? inner(file)->pMethods->xClose(inner(file)) : SQLITE_OK;
  fileOf(file).~File();
  return code;
}
int read(sqlite3_file* file, void* to, int amount, sqlite3_int64 at) {
  if (fault == Fault::ReadError && first != kNever) {
    hit = true;
    lastError = EIO;
    return SQLITE_IOERR_READ;
  }
  return inner(file)->pMethods->xRead(inner(file), to, amount, at);
}
int write(sqlite3_file* file, const void* data, int amount, sqlite3_int64 at) {
  const int code = strike(SQLITE_FULL, SQLITE_IOERR_WRITE, data, amount, inner(file), at);
  return code != SQLITE_OK ? code : inner(file)->pMethods->xWrite(inner(file), data, amount, at);
}
int truncate(sqlite3_file* file, sqlite3_int64 length) {
  const int code = strike(SQLITE_OK, SQLITE_IOERR_TRUNCATE);
  return code != SQLITE_OK ? code : inner(file)->pMethods->xTruncate(inner(file), length);
}
// No machine loses its power here.
int sync(sqlite3_file* /*file*/, int /*flags*/) {
  return strike(SQLITE_OK, SQLITE_IOERR_FSYNC);
}
int fileSize(sqlite3_file* file, sqlite3_int64* length) {
  return inner(file)->pMethods->xFileSize(inner(file), length);
}
int lock(sqlite3_file* file, int level) {
  return inner(file)->pMethods->xLock(inner(file), level);
}
int unlock(sqlite3_file* file, int level) {
  return inner(file)->pMethods->xUnlock(inner(file), level);
}
int reserved(sqlite3_file* file, int* answer) {
  return inner(file)->pMethods->xCheckReservedLock(inner(file), answer);
}
int control(sqlite3_file* file, int what, void* arg) {
  if (what == SQLITE_FCNTL_LAST_ERRNO && lastError != 0) {
    *static_cast<int*>(arg) = lastError;
    return SQLITE_OK;
  }
  return inner(file)->pMethods->xFileControl(inner(file), what, arg);
}
int sectorSize(sqlite3_file* file) {
  return inner(file)->pMethods->xSectorSize(inner(file));
}
int traits(sqlite3_file* file) {
  return inner(file)->pMethods->xDeviceCharacteristics(inner(file));
}
int shmMap(sqlite3_file* file, int region, int length, int extend, void volatile** memory) {
  struct stat info {};
  const auto path = fileOf(file).path + "-shm";
  const bool there = stat(path.c_str(), &info) == 0 && info.st_size >= (region + 1) * length;
  const int code =
      there || extend == 0 ? SQLITE_OK : strike(SQLITE_IOERR_SHMSIZE, SQLITE_IOERR_SHMMAP);
  return code != SQLITE_OK
             ? code
             : inner(file)->pMethods->xShmMap(inner(file), region, length, extend, memory);
}
int shmLock(sqlite3_file* file, int offset, int n, int flags) {
  return inner(file)->pMethods->xShmLock(inner(file), offset, n, flags);
}
void shmBarrier(sqlite3_file* file) {
  inner(file)->pMethods->xShmBarrier(inner(file));
}
int shmUnmap(sqlite3_file* file, int remove) {
  return inner(file)->pMethods->xShmUnmap(inner(file), remove);
}

constexpr sqlite3_io_methods kMethods{
    2,       close,      read,   write,  truncate, sync,       fileSize, lock,    unlock, reserved,
    control, sectorSize, traits, shmMap, shmLock,  shmBarrier, shmUnmap, nullptr, nullptr};

int open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  auto* made = new (file) File{{&kMethods}, name ? name : ""};
  struct stat info {};
  const bool makes = name && (flags & SQLITE_OPEN_CREATE) != 0 && stat(name, &info) != 0;
  int code = makes ? strike(SQLITE_CANTOPEN, SQLITE_CANTOPEN) : SQLITE_OK;
  if (fault == Fault::ReadOnly && written + 1 >= first) {
    flags = (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
  }
  made->inner()->pMethods = nullptr;
  if (code == SQLITE_OK) code = real->xOpen(real, name, made->inner(), flags, outFlags);
  if (code != SQLITE_OK) {
    made->~File();
    file->pMethods = nullptr;
  }
  return code;
}
int remove(sqlite3_vfs* /*vfs*/, const char* name, int sync) {
  struct stat info {};
  if (stat(name, &info) == 0) {
    if (const int code = strike(SQLITE_OK, SQLITE_IOERR_DELETE); code != SQLITE_OK) return code;
  }
  return real->xDelete(real, name, sync);
}
int access(sqlite3_vfs* /*vfs*/, const char* name, int flags, int* answer) {
  return real->xAccess(real, name, flags, answer);
}
int error(sqlite3_vfs* /*vfs*/, int length, char* text) {
  return lastError != 0 ? lastError : real->xGetLastError(real, length, text);
}

void install() {
  static sqlite3_vfs vfs;
  real = sqlite3_vfs_find(nullptr);
  vfs = *real;
  vfs.iVersion = 2;
  vfs.zName = "faults";
  vfs.szOsFile = static_cast<int>(sizeof(File)) + real->szOsFile;
  vfs.pNext = nullptr;
  vfs.xOpen = open;
  vfs.xDelete = remove;
  vfs.xAccess = access;
  vfs.xGetLastError = error;
  sqlite3_vfs_register(&vfs, 1);
}

const bool installed = (install(), true);

}  // namespace

FaultVfs& FaultVfs::instance() {
  static FaultVfs vfs;
  return vfs;
}

void FaultVfs::fail(Fault kind, int nth) {
  fault = kind;
  count();
  first = nth;
}

void FaultVfs::count() {
  lift();
  written = 0;
  size = 0;
}

void FaultVfs::lift() {
  first = kNever;
  hit = false;
}

int FaultVfs::writes() const {
  return written;
}

int64_t FaultVfs::bytes() const {
  return size;
}

bool FaultVfs::struck() const {
  return hit;
}

}  // namespace orvanta::test
