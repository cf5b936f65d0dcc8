#include "capture/pause.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include "base/exact_json.h"
#include "base/number.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kKey = "pause";
constexpr double kMinute = 60;
constexpr double kHour = 3600;
constexpr double kLongest = 31 * 24 * kHour;
constexpr double kMorning = 4 * kHour;

std::optional<double> numberIn(const json::object& fields, std::string_view key) {
  const auto* value = fields.if_contains(key);
  return value && value->is_number() ? std::optional(value->to_number<double>()) : std::nullopt;
}

std::optional<double> secondsOf(std::string_view length) {
  const auto whole = [](std::string_view digits) { return parseNumber<unsigned>(digits); };
  const auto hour = length.find('h');
  if (hour == length.npos) {
    const auto unit = length.find('m');
    const auto rest = unit == length.npos ? length : length.substr(unit);
    const auto minutes = whole(length.substr(0, unit));
    return minutes && (rest == "m" || rest == "min") ? std::optional(*minutes * kMinute)
                                                     : std::nullopt;
  }
  const auto hours = whole(length.substr(0, hour));
  const auto rest = length.substr(hour + 1);
  const auto minutes = rest.empty() ? std::optional(0U) : whole(rest);
  if (!hours || !minutes || *minutes >= 60) return {};
  return *hours * kHour + *minutes * kMinute;
}

// The wall's hour, also on a day when the clock is changed in the night.
double morningOf(const Date& date, const Calendar& calendar) {
  const auto midnight = calendar.startOf(date);
  const auto shown = static_cast<double>(calendar.wallSeconds(midnight + kMorning) -
                                         calendar.wallSeconds(midnight));
  return midnight + kMorning + (kMorning - shown);
}

// Who is still up after midnight means the morning that comes.
double nextMorning(double now, const Calendar& calendar) {
  const auto today = calendar.dateOf(now);
  const double morning = morningOf(today, calendar);
  return now < morning ? morning : morningOf(today.plusDays(1), calendar);
}

}  // namespace

std::optional<Pause> storedPause(const SettingTexts& texts, double now) {
  if (!Settings::of(texts).paused) return {};
  Pause pause{.since = now};
  const auto text = texts.find(kKey);
  const auto kept = text == texts.end() ? std::nullopt : parseJson(text->second);
  if (!kept || !kept->is_object()) return pause;
  const auto& fields = kept->get_object();
  pause.since = numberIn(fields, "since").value_or(now);
  pause.until = numberIn(fields, "until");
  pause.reminded = fields.contains("reminded");
  return pause;
}

SettingTexts storedTexts(const std::optional<Pause>& pause) {
  SettingTexts texts{stored(&Settings::paused, pause.has_value())};
  json::object fields;
  if (pause) {
    fields["since"] = pause->since;
    if (pause->until) fields["until"] = *pause->until;
    if (pause->reminded) fields["reminded"] = true;
  }
  texts[kKey] = pause ? json::serialize(fields) : "";
  return texts;
}

std::optional<double> pauseEnd(std::string_view length, double now, const Calendar& calendar) {
  if (length == "demain") return nextMorning(now, calendar);
  const auto seconds = secondsOf(length);
  if (!seconds || *seconds < kMinute || *seconds > kLongest) return {};
  return now + *seconds;
}

}  // namespace orvanta
