// What is wrong with the store, if anything.
#pragma once

#include <mutex>
#include <optional>
#include <string_view>

#include "base/clock.h"

namespace orvanta {

enum class StoreTrouble { ReadOnly, Full, Locked, Damaged, Absent };

/// "readonly", "full", "locked", "damaged" or "absent".
std::string_view nameOf(StoreTrouble trouble);

/// A French sentence for the user.
std::string_view sentenceOf(StoreTrouble trouble);

/// The same for one line of a menu.
std::string_view shortNameOf(StoreTrouble trouble);

/// What SQLite's extended error code says of the file; `systemError` is the errno behind it, 0 if
/// none. Absent when the statement was at fault and not the file.
std::optional<StoreTrouble> troubleOf(int code, int systemError = 0);

/// Remembers what is wrong, from the first failure until something could be written again. From any
/// thread.
class StoreHealth {
 public:
  struct Condition {
    StoreTrouble trouble = StoreTrouble::Absent;
    double since = 0;  ///< Unix seconds
  };

  explicit StoreHealth(Clock clock) : clock_(std::move(clock)) {}

  /// True when it is to be told: the first time, and when it is something else than before.
  bool failed(StoreTrouble trouble);
  /// Nobody else holds the file, though nothing is written yet.
  void unlocked();
  /// Ends every trouble but damage: other pages may well be written.
  void wrote();
  /// Ends any: the file is another, or a mended one.
  void mended();

  /// A lock counts once it has lasted some seconds: other programs write, too.
  std::optional<Condition> condition() const;
  /// Something has failed and nothing was written since, whether it counts yet or not.
  bool suspected() const;

 private:
  const Clock clock_;
  bool counts() const;

  mutable std::mutex mutex_;  // guards the next
  std::optional<Condition> condition_;
  double lastFailure_ = 0;
  bool told_ = false;
};

}  // namespace orvanta
