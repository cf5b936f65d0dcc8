#include "storage/file_connection.h"

#include <fmt/format.h>

#include <array>
#include <cctype>
#include <system_error>

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr int kBusyMilliseconds = 5000;

std::string asUri(const fs::path& file) {
  std::string uri = "file://";
  for (const char c : fs::absolute(file).string()) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0 || c == '/' || c == '.' || c == '-' || c == '_') {
      uri += c;
    } else {
      uri += fmt::format("%{:02x}", byte);
    }
  }
  return uri + "?immutable=1";
}

// Whether the header says that the file is written through a write-ahead log. Read through SQLite:
// to close a descriptor of our own would free the locks of this process's other connections.
bool usesWal(sqlite3* connection) {
  constexpr sqlite3_int64 kFormats = 18;
  sqlite3_file* file = nullptr;
  if (sqlite3_file_control(connection, "main", SQLITE_FCNTL_FILE_POINTER,
                           static_cast<void*>(&file)) != SQLITE_OK ||
      !file || !file->pMethods) {
    return false;
  }
  std::array<unsigned char, 2> formats{};
  return file->pMethods->xRead(file, formats.data(), static_cast<int>(formats.size()), kFormats) ==
             SQLITE_OK &&
         formats[1] == 2;
}

}  // namespace

fs::path walOf(const fs::path& file) {
  return file.string() + "-wal";
}

fs::path shmOf(const fs::path& file) {
  return file.string() + "-shm";
}

bool removeDatabase(const fs::path& file) {
  bool gone = true;
  for (const auto* suffix : {"", "-journal", "-wal", "-shm"}) {
    std::error_code error;
    fs::remove(file.string() + suffix, error);
    gone = gone && !error;
  }
  return gone;
}

std::string quotedName(std::string_view name) {
  std::string quoted = "\"";
  for (const char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

void FileConnection::open(const std::string& name, int flags) {
  sqlite3* raw = nullptr;
  code_ = sqlite3_open_v2(name.c_str(), &raw, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  handle_.reset(raw);
  if (code_ != SQLITE_OK) {
    message_ = raw ? sqlite3_errmsg(raw) : sqlite3_errstr(code_);
    handle_.reset();
    return;
  }
  sqlite3_busy_timeout(raw, kBusyMilliseconds);
  sqlite3_db_config(raw, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(raw, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_exec(raw, "PRAGMA cache_size=-1024; PRAGMA cell_size_check=ON", nullptr, nullptr,
               nullptr);
}

FileConnection FileConnection::reading(const fs::path& file) {
  FileConnection connection;
  std::error_code ignored;
  // Whoever has it open keeps both.
  const bool indexed = fs::exists(shmOf(file), ignored) && fs::exists(walOf(file), ignored);
  if (!indexed && bytesOf(walOf(file)) > 0) {
    // SQLite would make the missing index, or could not where nothing may be written.
    auto scratch = ScratchFolder::make(fs::temp_directory_path(ignored) / "orvanta-lecture-");
    if (!scratch) return connection;
    const auto copy = scratch->path() / "copie.db";
    connection.scratch_ = std::make_unique<ScratchFolder>(std::move(*scratch));
    if (!copyWhatIsReadable(file, copy) || !copyWhatIsReadable(walOf(file), walOf(copy))) {
      connection.message_ = "no room to read it";
      return connection;
    }
    connection.open(copy, SQLITE_OPEN_READWRITE);
    return connection;
  }
  if (!indexed) {
    connection.open(asUri(file), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
    if (!connection || usesWal(connection.get())) return connection;
  }
  // Held open by somebody, or of the kind that is read without leaving anything beside it.
  connection.open(file, SQLITE_OPEN_READONLY);
  return connection;
}

FileConnection FileConnection::writing(const fs::path& file) {
  FileConnection connection;
  connection.open(file, SQLITE_OPEN_READWRITE);
  return connection;
}

FileConnection FileConnection::inMemory() {
  FileConnection connection;
  connection.open(":memory:", SQLITE_OPEN_READWRITE);
  return connection;
}

int FileConnection::code() const {
  return handle_ ? sqlite3_errcode(get()) : code_;
}

std::string FileConnection::message() const {
  return handle_ ? sqlite3_errmsg(get()) : message_;
}

int FileConnection::each(std::string_view sql, const Args& args,
                         const std::function<void(const Cursor&)>& visit) const {
  Statement statement(get(), sql);
  return statement.ok() ? statement.visitRows(args, visit) : sqlite3_errcode(get());
}

int64_t FileConnection::number(std::string_view sql, const Args& args) const {
  std::optional<int64_t> number;
  each(sql, args, [&](const Cursor& row) {
    if (!number) number = row.int_(0).value_or(0);
  });
  return number.value_or(0);
}

}  // namespace orvanta
