// Names that carry a local date and time.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/calendar.h"

namespace orvanta {

/// "2026-11-22-0930": what the wall clock shows at an instant (Unix seconds).
std::string localStamp(double instant, const Calendar& calendar);

/// What the name of a backup says.
struct BackupName {
  double time = 0;  ///< Unix seconds
  int number = 1;   ///< of those of the same minute
};

/// The name of the backup made at an instant: "orvanta-2026-11-22-0930.db", and "-2", "-3"… before
/// the dot for further ones of the same minute.
std::string backupName(double instant, int number, const Calendar& calendar);

/// Absent when `file` has another kind of name. The time is the file's modification time where that
/// agrees with the name, since the name leaves out the seconds and which of the two is meant when
/// an hour comes twice.
std::optional<BackupName> readBackupName(const std::filesystem::path& file,
                                         const Calendar& calendar);

/// The file's modification time in Unix seconds, and how to set it. 0 when there is no file.
double modifiedAt(const std::filesystem::path& file);
void setModifiedAt(const std::filesystem::path& file, double instant);

}  // namespace orvanta
