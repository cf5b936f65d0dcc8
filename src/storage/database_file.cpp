// The database's file as a place that others may change, and the settings, which hold also while it
// cannot be written.
#include <filesystem>
#include <system_error>

#include "storage/database.h"
#include "storage/schema.h"
#include "storage/transaction.h"

namespace orvanta {
namespace {

void writeSettings(Transaction& change, const SettingTexts& values) {
  for (const auto& [key, value] : values) {
    change.run("INSERT OR REPLACE INTO settings(key, value) VALUES (?, ?)", {key, value});
  }
}

}  // namespace

void Database::look() {
  bool renewed = false;
  std::string sentence;
  {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (!lock || depth_ > 0 || away_) return;
    const std::unique_lock scanLock(scanMutex_, std::try_to_lock);
    if (!scanLock) return;
    const bool writable = connection_ && !connection_.readOnly();
    if (!writable) {
      scanner_ = {};
      connection_ = {};
      prepare(where_, log_);
    }
    if (writable && identity() != identity_) {
      sentence = replaceFile();
      renewed = true;
    } else if (!writable) {
      open();
      ++generation_;
      renewed = connection_ && !connection_.readOnly();
    } else if (!upToDate_) {
      bringUpToDate().forget();
    }
    logIdentity_ = identity("-wal");
  }
  storeWaiting();
  tell();
  if (!renewed) return;
  decltype(replaced_) replaced;
  {
    const std::lock_guard lock(hookMutex_);
    replaced = replaced_;
  }
  if (replaced) replaced(sentence);
}

// What the old file's log still holds goes into the old file, wherever it is now: left behind, it
// would be read as part of the new one.
std::string Database::replaceFile() {
  const bool gone = !identity();
  auto settings = storedSettings().value_or(SettingTexts());
  scanner_ = {};
  if (connection_) {
    sqlite3_wal_checkpoint_v2(connection_.get(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr,
                              nullptr);
  }
  connection_ = {};
  // As long as another program reads the old file, its log cannot be emptied.
  if (const auto log = identity("-wal"); log && log == logIdentity_) {
    std::error_code ignored;
    for (const auto* suffix : {"-wal", "-shm"}) {
      std::filesystem::remove(where_.file().string() + suffix, ignored);
    }
  }
  if (gone) prepare(where_, log_);
  health_.mended();
  open();
  ++generation_;
  if (!gone) {
    return "Le fichier des données a été remplacé par un autre : Orvanta continue dans celui-ci.";
  }
  // What the user has chosen holds on; what tells which rules are in the file does not.
  settings.erase("rules_seeded");
  settings.erase("app_rules");
  {
    const std::lock_guard lock(settingsMutex_);
    waiting_.merge(settings);
  }
  return "Le fichier des données a été déplacé ou supprimé : Orvanta en a commencé un nouveau.";
}

bool Database::exchange(Meanwhile meanwhile, const std::function<bool()>& work) {
  bool done = false;
  {
    std::unique_lock lock(mutex_, std::defer_lock);
    std::unique_lock scanLock(scanMutex_, std::defer_lock);
    std::lock(lock, scanLock);
    if (depth_ > 0 || away_) return false;
    away_ = true;
    scanner_ = {};
    connection_ = {};
    if (meanwhile == Meanwhile::Fail) {
      scanLock.unlock();
      lock.unlock();
    }
    done = work();
    if (meanwhile == Meanwhile::Fail) lock.lock();
    away_ = false;
    prepare(where_, log_);
    if (done) health_.mended();
    open();
    ++generation_;
  }
  tell();
  return done;
}

std::optional<SettingTexts> Database::storedSettings() {
  SettingTexts settings;
  const bool all = each("SELECT key, value FROM settings", {}, [&](const Cursor& row) {
    const auto key = row.str(0);
    const auto value = row.str(1);
    if (key && value) settings[std::string(*key)] = *value;
  });
  return all ? std::optional(std::move(settings)) : std::nullopt;
}

SettingTexts Database::allSettings() {
  return overlaid(storedSettings().value_or(SettingTexts()));
}

std::optional<SettingTexts> Database::settingsNow() {
  std::optional<SettingTexts> stored;
  {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (lock) stored = storedSettings();
  }
  return stored ? std::optional(overlaid(std::move(*stored))) : std::nullopt;
}

SettingTexts Database::overlaid(SettingTexts stored) {
  {
    const std::lock_guard lock(settingsMutex_);
    for (const auto& [key, value] : waiting_) stored[key] = value;
  }
  stored.insert(defaultSettings().begin(), defaultSettings().end());
  return stored;
}

std::string Database::setting(const std::string& key) {
  {
    const std::lock_guard lock(settingsMutex_);
    if (const auto waiting = waiting_.find(key); waiting != waiting_.end()) return waiting->second;
  }
  std::optional<std::string> stored;
  each("SELECT value FROM settings WHERE key=?", {key},
       [&](const Cursor& row) { stored = row.str(0); });
  if (stored) return *stored;
  const auto fallback = defaultSettings().find(key);
  return fallback != defaultSettings().end() ? fallback->second : std::string();
}

Written Database::setSetting(const std::string& key, const std::string& value) {
  return setSettings({{key, value}});
}

Written Database::setSettings(const SettingTexts& values) {
  return setSettings(values, [&](const WriteSettings& write) {
    Transaction change(*this);
    write(change);
    return change.commit();
  });
}

Written Database::setSettings(const SettingTexts& values,
                              const std::function<Written(const WriteSettings&)>& store) {
  {
    const std::lock_guard lock(settingsMutex_);
    for (const auto& [key, value] : values) waiting_[key] = value;
  }
  auto written = store([&](Transaction& change) { writeSettings(change, values); });
  if (written) settingsStored(values);
  return written;
}

void Database::settingsStored(const SettingTexts& values) {
  const std::lock_guard lock(settingsMutex_);
  for (const auto& [key, value] : values) {
    const auto waiting = waiting_.find(key);
    if (waiting != waiting_.end() && waiting->second == value) waiting_.erase(waiting);
  }
}

// Also finds out whether a trouble has ended where nothing else is to be written: by writing.
void Database::storeWaiting() {
  SettingTexts waiting;
  {
    const std::lock_guard lock(settingsMutex_);
    waiting = waiting_;
  }
  if (!waiting.empty()) {
    Transaction change(*this, Patience::None);
    writeSettings(change, waiting);
    if (change.commit()) settingsStored(waiting);
  } else if (health_.suspected()) {
    Transaction probe(*this, Patience::None);
    // SQLite writes nothing for an UPDATE that changes nothing.
    probe.run("REPLACE INTO settings SELECT key, value FROM settings WHERE key='onboarded'");
    probe.commit().forget();
  }
}

}  // namespace orvanta
