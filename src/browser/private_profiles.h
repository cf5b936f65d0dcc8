// A Firefox that has no other windows than private ones.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <tuple>

namespace orvanta {

/// Which processes of Firefox and its kin show nothing but private windows, which no title says
/// then. The operation may be called from any thread.
class PrivateProfiles {
 public:
  /// Whether this one was started so, or its profile keeps no history. What a process has open, and
  /// what its profile says, is read again only when it is another process, or has changed.
  bool haveNoOthers(int32_t pid);

  /// Of a file: its number, size and time, in seconds and nanoseconds.
  using Version = std::tuple<ino_t, off_t, time_t, int64_t>;

 private:
  struct Seen {
    int32_t pid;
    std::string link;     // under /proc, to the
    std::string history;  // that it has open
    Version settings;
    bool isPrivate;
  };

  std::mutex mutex_;
  std::optional<Seen> seen_;  // the last one asked about
};

}  // namespace orvanta
