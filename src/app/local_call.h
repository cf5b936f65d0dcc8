// A request from the command line while no Orvanta runs.
#pragma once

#include <string>
#include <vector>

#include "app/route_call.h"

namespace orvanta {

/// As the only word, asks for the answers to all the requests of standard input; see call_loop.h.
inline constexpr auto kManyCalls = "-";

/// Answers the call in this process, from the store and the desktop as they are. Nothing is
/// recorded, so there is no current activity; what concerns the window, the menu or the end of the
/// running program does nothing.
CallResult callLocally(const std::vector<std::string>& words);

}  // namespace orvanta
