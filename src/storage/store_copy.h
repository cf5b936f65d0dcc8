// A consistent copy of a store that may be written meanwhile.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>

#include "base/files.h"

namespace orvanta {

struct CopyResult {
  bool made = false;
  bool stopped = false;
  std::string error;           ///< French sentence without full stop; empty when made or stopped
  std::filesystem::path file;  ///< where it is; empty when not made
  uint64_t bytes = 0;
  double seconds = 0;
};

struct CopyOptions {
  std::stop_token stop;
  FreeSpace freeSpace = orvanta::freeSpace;
  // Of backUpTo() alone:
  bool replace = false;  ///< what already has the name goes once the copy is good
  /// Changes the good copy before it gets its name; false when that failed.
  std::function<bool(const std::filesystem::path& copy)> finish;
};

/// Copies the store as it is at one moment to the new file `target`, which only the user may read,
/// by SQLite's online backup: in small steps, with a pause after each as long as it took, at low
/// priority. The copy needs no other file, holds nothing of what was deleted from the store, is on
/// the disk and has been checked (whole, and as many rows in every table as the store has);
/// `target` is removed otherwise. Not begun where the disk has less than twice the store's size
/// free. Blocks the caller; may be called from any thread.
CopyResult copyStore(const std::filesystem::path& store, const std::filesystem::path& target,
                     const CopyOptions& options = {});

/// Likewise, but under a hidden name beside `target` until the copy is good; a temporary that a
/// killed copy to this target left is removed first. `target` never exists in part.
CopyResult backUpTo(const std::filesystem::path& store, const std::filesystem::path& target,
                    const CopyOptions& options = {});

/// Whether a file of this name may be such a temporary, or SQLite's journal of one.
bool isUnfinishedCopy(const std::filesystem::path& file);

/// "12,3 Mo".
std::string sizeInWords(uint64_t bytes);

}  // namespace orvanta
