// A pause of the recording, and when it ends.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/calendar.h"
#include "storage/settings.h"

namespace orvanta {

/// Times are Unix seconds.
struct Pause {
  double since = 0;
  std::optional<double> until;  ///< absent: until the user ends it
  bool reminded = false;        ///< the user was told that it lasts

  friend bool operator==(const Pause&, const Pause&) = default;
  bool overAt(double now) const { return until && *until <= now; }
};

/// The pause that a store tells of, also one that is over; since `now` where it does not say.
std::optional<Pause> storedPause(const SettingTexts& texts, double now);

/// What the store keeps of it, or of there being none.
SettingTexts storedTexts(const std::optional<Pause>& pause);

/// When a pause ends that begins now and lasts as long as the word says: "15m", "1h", "1h30", or
/// "demain": until it is four in the morning next, when the day before is over for most. Absent for
/// anything else, and for more than 31 days.
inline constexpr auto kNoPauseLength =
    "durée de pause illisible : par exemple 15m, 1h, 1h30 ou demain";
std::optional<double> pauseEnd(std::string_view length, double now, const Calendar& calendar);

}  // namespace orvanta
