// A store in a temporary folder of its own, gone with the object.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "storage/database.h"

namespace orvanta::test {

class TempFolder {
 public:
  /// One that is there and stays.
  explicit TempFolder(std::filesystem::path kept) : path_(std::move(kept)), kept_(true) {}
  TempFolder() {
    auto pattern = (std::filesystem::temp_directory_path() / "orvanta-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~TempFolder() {
    std::error_code ignored;
    if (!kept_) std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  DataLocation location() const { return DataLocation::under(path_); }

 private:
  std::filesystem::path path_;
  bool kept_ = false;
};

/// Keeps the log lines instead of printing them.
class LogLines {
 public:
  Log sink() {
    return [this](const std::string& line) {
      const std::lock_guard lock(mutex_);
      lines_.push_back(line);
    };
  }
  std::vector<std::string> lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

/// A store whose writes a test need not look at: what went wrong shows in what it finds.
struct TestDatabase : Database {
  using Database::Database;
  int64_t run(std::string_view sql, const Args& args = {}) {
    return Database::run(sql, args).rowId();
  }
  bool exec(const std::string& sql) { return bool{Database::exec(sql)}; }
  bool setSetting(const std::string& key, const std::string& value) {
    return bool{Database::setSetting(key, value)};
  }
};

struct TempStore {
  TempStore() = default;
  explicit TempStore(std::filesystem::path kept) : folder(std::move(kept)) {}

  TempFolder folder;
  LogLines log;
  TestDatabase db{folder.location(), log.sink()};
};

}  // namespace orvanta::test
