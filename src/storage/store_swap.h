// One store file in the place of another, without a moment at which a kill would lose either.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/calendar.h"

namespace orvanta {

/// How a store is put aside.
struct Aside {
  std::string_view why;  ///< "avant-restauration", "endommagé"
  double now = 0;        ///< Unix seconds
  Calendar calendar;
  /// Is called after each step on the disk; a test ends the program there.
  std::function<void()> afterStep = [] {};
};

struct SwapResult {
  bool done = false;
  std::optional<std::filesystem::path>
      kept;  ///< where the old file is now; absent when there was none
};

// Both write what is to be done into a name first ("orvanta.db.nouveau-WHY-DATE": the new store, or
// an empty file), which is what counts from then on. Then they rename, in this order: the old log,
// the old store, the new store. Killed in between, finishSwap() does the rest. Neither may be
// called while anybody, this process included, has the store open; who calls holds the DataLock.

/// Renames the store to "orvanta.db.WHY-DATE" ("-2", "-3"… when that is taken), its log with it.
SwapResult keepAside(const std::filesystem::path& store, const Aside& aside);

/// Likewise, and gives `ready`, a complete file on the same disk that is written out, its name.
SwapResult replaceStore(const std::filesystem::path& store, const std::filesystem::path& ready,
                        const Aside& aside);

/// Ends what a kill cut short; to be called before the store is opened. False when there is
/// something to end and the disk refuses. Costs a look into the folder.
bool finishSwap(const std::filesystem::path& store);

}  // namespace orvanta
