// What every target has: it is handed hostile bytes, and says what must hold whatever they are.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <glib.h>

#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace orvanta::fuzz {

/// One input; each target is a program of its own.
void target(std::string_view input);

/// Ends the program when something does not hold: libFuzzer then keeps the input.
inline void hold(bool holds, std::string_view what, std::string_view shown = {}) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %.*s\n%.*s\n", static_cast<int>(what.size()), what.data(),
               static_cast<int>(shown.size()), shown.data());
  std::abort();
}

inline void holdUtf8(std::string_view text, std::string_view what) {
  // GLib takes a NUL for the end.
  for (std::size_t at = 0; at <= text.size();) {
    const auto end = std::min(text.find('\0', at), text.size());
    const auto size = static_cast<gssize>(end - at);
    hold(g_utf8_validate(text.data() + at, size, nullptr) != FALSE, what, text);
    at = end + 1;
  }
}

/// Whether JSON can say it: a number may be too large for a double.
inline bool isFinite(const boost::json::value& value) {
  if (value.is_double()) return std::isfinite(value.get_double());
  if (const auto* list = value.if_array()) return std::all_of(list->begin(), list->end(), isFinite);
  const auto* object = value.if_object();
  return !object || std::all_of(object->begin(), object->end(),
                                [](const auto& member) { return isFinite(member.value()); });
}

inline FuzzedDataProvider chooser(std::string_view input) {
  return {reinterpret_cast<const uint8_t*>(input.data()), input.size()};
}

}  // namespace orvanta::fuzz
