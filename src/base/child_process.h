// Short-lived child processes with a time limit.
#pragma once

#include <functional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvanta {

/// What to run.
struct ChildCommand {
  std::vector<std::string> words;        ///< path and arguments; everybody on the machine sees them
  std::vector<std::string> environment;  ///< "NAME=VALUE" on top of ours; only the user sees it
  std::stop_token stop;                  ///< asked to stop, the child's time is up
};

/// How a child process ended.
struct ChildResult {
  std::string launchError;  ///< the system's words when it could not be started; else empty
  bool timedOut = false;    ///< it was ended because its time was up; nothing below is set
  int status = 0;           ///< exit status, 128 + signal when a signal ended it
  std::string output;       ///< what it wrote, as far as kMostChildOutput bytes
  std::string errors;       ///< likewise for standard error
};

/// The exit status of a program that was kept waiting, as timeout(1) has it.
inline constexpr int kTimedOutStatus = 124;

inline constexpr std::size_t kMostChildOutput = std::size_t{4} << 20U;

/// Runs a program to its end and hands over what it wrote; `timeout` in seconds. Blocks the caller
/// that long at most. May be called from any thread.
using RunChild = std::function<ChildResult(const ChildCommand& command, double timeout)>;

/// On the real system. The child has no standard input and a process group of its own; when its
/// time is up the whole group is asked to end (SIGTERM) and a tenth of a second later made to.
/// Both pipes are emptied meanwhile, so a child that writes a lot is not held up, and nobody waits
/// for what a grandchild keeps open. Leaves no zombie.
ChildResult runChild(const ChildCommand& command, double timeout);

}  // namespace orvanta
