// Numbers in text.
#pragma once

#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>
#include <system_error>

namespace orvanta {

/// The whole of `text` as a decimal number ("180", "12.5", no plus sign), whatever the locale.
/// Absent when it is anything else, an infinity or out of the type's range.
template <class Number = double>
std::optional<Number> parseNumber(std::string_view text) {
  Number number = 0;
  const auto* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return {};
  if constexpr (std::is_floating_point_v<Number>) {
    if (!std::isfinite(number)) return {};
  }
  return number;
}

}  // namespace orvanta
