// What time counts as.
#pragma once

#include "base/enum_text.h"

namespace orvanta {

/// The categories of ours, in the display order of reports; idle spans count as the last. What the
/// store holds as a category may be any other text as well, and counts as itself.
enum class Category { Travail, Loisir, Autre, Nonclasse, Inactif };

template <>
inline constexpr std::array<std::string_view, 5> kTexts<Category>{"travail", "loisir", "autre",
                                                                  "nonclasse", "inactif"};

}  // namespace orvanta
