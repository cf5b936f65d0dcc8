// What of the application in front may be recorded.
#pragma once

#include <optional>

#include "capture/collectors.h"
#include "capture/sample.h"
#include "storage/database.h"

namespace orvanta {

/// Looks at the application in front, by the settings that the store holds. Used by one thread.
class Foreground {
 public:
  /// Both outlive it.
  Foreground(Database& db, const Collectors& collectors) : db_(db), collectors_(collectors) {}

  /// Reads the settings again where they have changed.
  const Settings& settings();

  Sample sample() const;

 private:
  Database& db_;
  const Collectors& collectors_;
  Settings settings_ = Settings::unread();
  std::optional<SettingTexts> settingTexts_;  // what settings_ was read from
};

}  // namespace orvanta
