// What sway answers to GET_TREE.
#include "fuzz/fuzz.h"
#include "platform/sway/tree.h"

namespace orvanta::fuzz {

void target(std::string_view input) {
  const auto deeper = [&](const std::string& key) {
    return sway::holdsDisplayAwake("{\"" + key + "\":[{}," + std::string(input) + "]}");
  };
  const bool awake = sway::holdsDisplayAwake(input);
  boost::system::error_code broken;
  boost::json::parse_options options;
  options.max_depth = 250;
  const auto value = boost::json::parse(input, broken, {}, options);
  if (broken) return;
  hold(deeper("nodes") == awake && deeper("floating_nodes") == awake, "a window may lie deeper");
  hold(!deeper("marks"), "only windows count");
  if (!value.is_object()) hold(!awake, "nothing but a tree keeps the display awake");
}

}  // namespace orvanta::fuzz
