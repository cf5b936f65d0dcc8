#include "capture/script_runner.h"

#include <fmt/format.h>

#include <utility>

#include "base/text.h"

namespace orvanta {
namespace {

std::string trimmed(const std::string& bytes) {
  return validUtf8(bytes) == bytes ? std::string(trimBlanks(bytes, " \t\r\n\v\f")) : "";
}

}  // namespace

ScriptRunner::ScriptRunner(RunChild runChild, Clock clock, Log log)
    : runChild_(std::move(runChild)), clock_(std::move(clock)), log_(std::move(log)) {}

ScriptResult ScriptRunner::run(ChildCommand command, const std::string& key, double cooldown,
                               double timeout) {
  if (disabled(key)) return {{}, "désactivé"};
  command.stop = end_.get_token();
  const auto child = runChild_(command, timeout);
  if (end_.stop_requested()) return {{}, "abandonné", true};
  if (!child.launchError.empty()) return {{}, child.launchError};
  if (child.timedOut) {
    disable(key, kHangCooldown);
    return {{}, "timeout"};
  }
  const auto error = trimmed(child.errors);
  if (child.status == kTimedOutStatus) {
    disable(key, kHangCooldown);
    return {{}, error};
  }
  if (child.status != 0) {
    disable(key, cooldown);
    log_(fmt::format("Orvanta AppleScript {} : {}", key, error));
    return {{}, error};
  }
  return {trimmed(child.output), error};
}

bool ScriptRunner::disabled(const std::string& key) const {
  const double now = clock_();
  const std::lock_guard lock(mutex_);
  const auto entry = disabledUntil_.find(key);
  return entry != disabledUntil_.end() && now >= entry->second.since && now < entry->second.until;
}

void ScriptRunner::disable(const std::string& key, double seconds) {
  const double now = clock_();
  const std::lock_guard lock(mutex_);
  disabledUntil_[key] = {now, now + seconds};
}

void ScriptRunner::resetCooldowns() {
  const std::lock_guard lock(mutex_);
  disabledUntil_.clear();
}

}  // namespace orvanta
