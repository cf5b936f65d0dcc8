// A list of events as JSON, at any depth.
#include <boost/json/serialize.hpp>

#include "base/exact_json.h"
#include "fuzz/imports.h"

namespace orvanta::fuzz {

void target(std::string_view input) {
  const auto imported = readEvents(input, paris());
  checkImported(imported);
  const auto value = parseJson(input);
  hold(value.has_value() || imported.events.empty(), "only JSON is read");
  if (!value || !isFinite(*value)) return;
  const auto again = readEvents(boost::json::serialize(*value), paris());
  hold(again.events.size() == imported.events.size(), "written anew it tells the same");
}

}  // namespace orvanta::fuzz
