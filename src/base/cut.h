// Text that is too long to be what it claims to be.
#pragma once

#include <cstddef>
#include <string_view>

namespace orvanta {

/// Bytes of a window's title or an application's name that are looked at.
inline constexpr std::size_t kLongestTitle = 2048;

/// `utf8` cut to `most` bytes, and no half character.
inline std::string_view firstBytes(std::string_view utf8, std::size_t most) {
  if (utf8.size() <= most) return utf8;
  constexpr auto kContinues = [](char c) { return (static_cast<unsigned char>(c) >> 6U) == 2U; };
  while (most > 0 && kContinues(utf8[most])) --most;
  return utf8.substr(0, most);
}

}  // namespace orvanta
