// Where the user's data lies.
#pragma once

#include <filesystem>

#include "base/log.h"

namespace orvanta {

/// The folder of the one database file, and the folder that the program used under its former name.
struct DataLocation {
  std::filesystem::path dir;
  std::filesystem::path legacyDir;

  std::filesystem::path file() const { return dir / "orvanta.db"; }

  /// "Orvanta" and "Lumaplan" under `base`.
  static DataLocation under(const std::filesystem::path& base);

  /// Under `$XDG_DATA_HOME`, by default `~/.local/share`.
  static DataLocation ofUser();
};

/// Makes the location ready to be opened. Where `dir` does not exist and the legacy folder does,
/// the legacy data is moved into place: once, since `dir` exists from then on. The folder is left
/// with mode 0700 and the file with 0600, an empty file where there was none, so that no other user
/// of the machine reads them. File-system failures are passed over; opening the file will tell.
/// Nobody in this process may have the file open: closing any descriptor of it frees the locks that
/// SQLite holds on it.
void prepare(const DataLocation& where, const Log& log);

}  // namespace orvanta
