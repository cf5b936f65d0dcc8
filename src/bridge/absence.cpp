#include "bridge/absence.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <string>
#include <utility>

#include "base/exact_json.h"
#include "base/number.h"
#include "base/time_ranges.h"

namespace orvanta::absence {
namespace {

namespace json = boost::json;

constexpr auto kAsk = "ask_absence";
constexpr auto kSkipped = "skipped_gaps";
constexpr double kUsual = 10;  // minutes
constexpr double kKept = 366 * 86400.0;

}  // namespace

double askMinutes(Database& db) {
  return std::max(parseNumber(db.setting(kAsk)).value_or(kUsual), 0.0);
}

Written setAskMinutes(Database& db, int64_t minutes) {
  return db.setSetting(kAsk, std::to_string(minutes));
}

std::vector<TimeRange> skipped(Database& db) {
  const auto list = parseJson(db.setting(kSkipped));
  std::vector<TimeRange> ranges;
  if (!list || !list->is_array()) return ranges;
  for (const auto& entry : list->get_array()) {
    const auto* pair = entry.if_array();
    if (!pair || pair->size() != 2 || !(*pair)[0].is_number() || !(*pair)[1].is_number()) continue;
    ranges.push_back({(*pair)[0].to_number<double>(), (*pair)[1].to_number<double>()});
  }
  return joined(std::move(ranges));
}

SettingTexts skipping(Database& db, std::vector<TimeRange> ranges, double now) {
  const auto known = skipped(db);
  ranges.insert(ranges.end(), known.begin(), known.end());
  json::array list;
  for (const auto& range : joined(std::move(ranges))) {
    if (range.end > now - kKept) list.push_back(json::array{range.start, range.end});
  }
  return {{kSkipped, json::serialize(list)}};
}

}  // namespace orvanta::absence
