// Enumerations whose values have a text each, in the store and in requests.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace orvanta {

/// The texts of an enumeration's values, which count from 0. Specialised beside each.
template <class Enum>
inline constexpr std::array<std::string_view, 0> kTexts{};

template <class Enum>
constexpr std::string_view textOf(Enum value) {
  return kTexts<Enum>[static_cast<std::size_t>(value)];
}

/// The value of this very text; absent when it is none of them.
template <class Enum>
constexpr std::optional<Enum> parsed(std::string_view text) {
  const auto& texts = kTexts<Enum>;
  const auto* const found = std::find(texts.begin(), texts.end(), text);
  if (found == texts.end()) return {};
  return static_cast<Enum>(found - texts.begin());
}

}  // namespace orvanta
