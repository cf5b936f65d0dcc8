// By what the desktop knows the program.
#pragma once

namespace orvanta {

/// The name on the session bus; also that of the desktop file and of the icons.
inline constexpr auto kApplicationId = "fr.quellvane.orvanta";

}  // namespace orvanta
