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

// What the real file system does.
template <auto Method, class Answer, class... Args>
Answer really(sqlite3_file* file, Args... args) {
  return (inner(file)->pMethods->*Method)(inner(file), args...);
}
using Methods = sqlite3_io_methods;

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
  return really<&Methods::xRead, int>(file, to, amount, at);
}
int write(sqlite3_file* file, const void* data, int amount, sqlite3_int64 at) {
  const int code = strike(SQLITE_FULL, SQLITE_IOERR_WRITE, data, amount, inner(file), at);
  return code != SQLITE_OK ? code : really<&Methods::xWrite, int>(file, data, amount, at);
}
int truncate(sqlite3_file* file, sqlite3_int64 length) {
  const int code = strike(SQLITE_OK, SQLITE_IOERR_TRUNCATE);
  return code != SQLITE_OK ? code : really<&Methods::xTruncate, int>(file, length);
}
// No machine loses its power here.
int sync(sqlite3_file* /*file*/, int /*flags*/) {
  return strike(SQLITE_OK, SQLITE_IOERR_FSYNC);
}
int control(sqlite3_file* file, int what, void* arg) {
  if (what == SQLITE_FCNTL_LAST_ERRNO && lastError != 0) {
    *static_cast<int*>(arg) = lastError;
    return SQLITE_OK;
  }
  return really<&Methods::xFileControl, int>(file, what, arg);
}
int shmMap(sqlite3_file* file, int region, int length, int extend, void volatile** memory) {
  struct stat info{};
  const auto path = fileOf(file).path + "-shm";
  const bool there = stat(path.c_str(), &info) == 0 && info.st_size >= (region + 1) * length;
  const int code =
      there || extend == 0 ? SQLITE_OK : strike(SQLITE_IOERR_SHMSIZE, SQLITE_IOERR_SHMMAP);
  return code != SQLITE_OK ? code
                           : really<&Methods::xShmMap, int>(file, region, length, extend, memory);
}
constexpr Methods kMethods{.iVersion = 2,
                           .xClose = close,
                           .xRead = read,
                           .xWrite = write,
                           .xTruncate = truncate,
                           .xSync = sync,
                           .xFileSize = really<&Methods::xFileSize>,
                           .xLock = really<&Methods::xLock>,
                           .xUnlock = really<&Methods::xUnlock>,
                           .xCheckReservedLock = really<&Methods::xCheckReservedLock>,
                           .xFileControl = control,
                           .xSectorSize = really<&Methods::xSectorSize>,
                           .xDeviceCharacteristics = really<&Methods::xDeviceCharacteristics>,
                           .xShmMap = shmMap,
                           .xShmLock = really<&Methods::xShmLock>,
                           .xShmBarrier = really<&Methods::xShmBarrier>,
                           .xShmUnmap = really<&Methods::xShmUnmap>};

int open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
  auto* made = new (file) File{{&kMethods}, name ? name : ""};
  struct stat info{};
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
  struct stat info{};
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

int FaultVfs::writes() {
  return written;
}

int64_t FaultVfs::bytes() {
  return size;
}

bool FaultVfs::struck() {
  return hit;
}

}  // namespace orvanta::test
