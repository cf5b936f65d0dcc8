// A store in a temporary folder of its own, gone with the object.
#pragma once

#include <mutex>
#include <string>

#include "storage/database.h"
#include "support/files.h"

namespace orvanta::test {

/// Keeps the log lines instead of printing them.
class LogLines {
 public:
  Log sink() {
    return [this](const std::string& line) {
      const std::lock_guard lock(mutex_);
      lines_.push_back(line);
    };
  }
  Texts lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  Texts lines_;
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
  explicit TempStore(fs::path kept) : folder(std::move(kept)) {}

  TempFolder folder;
  LogLines log;
  TestDatabase db{folder.location(), log.sink()};
};

}  // namespace orvanta::test
