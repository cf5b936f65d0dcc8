#include "storage/erased_times.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <string_view>

#include "base/exact_json.h"
#include "base/time_ranges.h"

namespace orvanta {
namespace {

using Times = std::vector<TimeRange>;

// What a range that lasts no time is made to last, to be told from an empty one.
constexpr double kNoTime = 1e-6;  // seconds

// Of what timesText() has made.
Times timesIn(std::string_view text) {
  Times times;
  const auto list = parseJson(text);
  if (!list || !list->is_array()) return times;
  for (const auto& entry : list->get_array()) {
    const auto& pair = entry.as_array();
    times.push_back({pair.at(0).to_number<double>(), pair.at(1).to_number<double>()});
  }
  return times;
}

bool isTouched(const TimeRange& span, const TimeRange& time) {
  const bool within = span.start >= time.start - kSameInstant && span.start < time.end &&
                      span.end <= time.end + kSameInstant;
  const bool lasts = time.end - time.start > 2 * kNoTime;
  return within ||
         (lasts && span.start < time.end - kSameInstant && span.end > time.start + kSameInstant);
}

// Absent where it is not touched at all.
std::optional<Times> restOf(const Times& times, const TimeRange& span) {
  std::optional<Times> rest;
  double from = span.start;
  const auto add = [&](double end) {
    if (end - from > kSameInstant) rest->push_back({from, end});
  };
  auto time = std::partition_point(times.begin(), times.end(), [&](const TimeRange& each) {
    return each.end < span.start - kSameInstant;
  });
  for (; time != times.end() && time->start <= span.end + kSameInstant; ++time) {
    if (!isTouched(span, *time)) continue;
    if (!rest) rest.emplace();
    add(time->start);
    from = std::max(from, time->end);
  }
  if (rest) add(span.end);
  return rest;
}

// Numbers without end are none in JSON.
std::string jsonText(double number) {
  return std::isfinite(number) ? fmt::format("{}", number) : number > 0 ? "9e999" : "-9e999";
}

std::string listText(const Times& times) {
  std::string text = "[";
  for (const auto& [start, end] : times) {
    text += fmt::format("{}[{},{}]", text.size() > 1 ? "," : "", jsonText(start), jsonText(end));
  }
  return text + "]";
}

bool isNumber(sqlite3_value* value) {
  const int type = sqlite3_value_type(value);
  return type == SQLITE_INTEGER || type == SQLITE_FLOAT;
}

void restOfInSql(sqlite3_context* context, int /*count*/, sqlite3_value** args) {
  if (!isNumber(args[1]) || !isNumber(args[2])) return;
  const auto* times = static_cast<const Times*>(sqlite3_get_auxdata(context, 0));
  std::unique_ptr<Times> read;
  if (!times) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(args[0]));
    const auto length = static_cast<std::size_t>(sqlite3_value_bytes(args[0]));
    read = std::make_unique<Times>(timesIn(text ? std::string_view(text, length) : ""));
    times = read.get();
  }
  if (const auto rest =
          restOf(*times, {sqlite3_value_double(args[1]), sqlite3_value_double(args[2])})) {
    const auto list = listText(*rest);
    sqlite3_result_text(context, list.data(), static_cast<int>(list.size()), SQLITE_TRANSIENT);
  }
  // The statement keeps what was read from row to row. Last: it may also drop it at once.
  if (!read) return;
  sqlite3_set_auxdata(context, 0, read.release(),
                      [](void* kept) { delete static_cast<Times*>(kept); });
}

}  // namespace

std::string timesText(const std::vector<TimeRange>& ranges) {
  auto times = ranges;
  for (auto& time : times) time.end = std::max(time.end, time.start + kNoTime);
  return listText(joined(std::move(times)));
}

void addRestOf(sqlite3* connection) {
  constexpr int kArgs = 3;
  sqlite3_create_function_v2(connection, "rest_of", kArgs,
                             SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_DIRECTONLY, nullptr,
                             restOfInSql, nullptr, nullptr, nullptr);
}

}  // namespace orvanta
