#include "capture/trusted_time.h"

#include <sys/timex.h>

#include <algorithm>
#include <utility>

#include "base/number.h"

namespace orvanta {
namespace {

constexpr double kDay = 86400;
constexpr double kLeap = 2 * kDay;
constexpr auto kSetting = "believed_time";

}  // namespace

bool networkTimeHeld() {
  timex state{};
  return adjtimex(&state) != TIME_ERROR && (state.status & STA_UNSYNC) == 0;
}

TrustedTime::TrustedTime(Database& db, Clock clock, UptimeClock uptime, std::function<bool()> held)
    : db_(db),
      clock_(std::move(clock)),
      uptime_(std::move(uptime)),
      held_(std::move(held)),
      began_(clock_()),
      started_(uptime_().total) {}

// Each run moves it on by two days at most, also where its spans say more: a clock may have been
// wrong for several runs.
double TrustedTime::believedBefore() const {
  double newest = 0;
  db_.each("SELECT max(end) FROM events WHERE end <= ?", {began_},
           [&](const Cursor& row) { newest = row.dbl(0); });
  const auto stored = parseNumber(db_.setting(kSetting));
  return stored && *stored > 0 ? std::min(std::max(newest, *stored), *stored + kLeap) : newest;
}

double TrustedTime::now() {
  const double now = clock_();
  const std::lock_guard lock(mutex_);
  if (believed_ == 0) believed_ = believedBefore();
  const bool sure = held_() || uptime_().total - started_ >= kDay;
  // A believed time that is still to come was wrong.
  if (sure) believed_ = now;
  const double base = sure ? now : std::min(now, believed_ + kLeap);
  const auto text = std::to_string(static_cast<int64_t>(believed_));
  if (believed_ > 0 && db_.setting(kSetting) != text) db_.setSetting(kSetting, text).forget();
  return base;
}

}  // namespace orvanta
