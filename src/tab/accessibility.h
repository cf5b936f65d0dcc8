// The active tab as screen readers see it: AT-SPI over plain D-Bus (gnome.pages.gitlab.gnome.org/
// at-spi2-core, the interfaces org.a11y.atspi.*). For a browser without our extension, and only
// where accessibility is switched on anyway: switching it on slows every application down.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "browser/browsers.h"
#include "browser/tab_socket.h"

namespace orvanta {

struct AccessibleAnswer {
  enum class Kind {
    kOff,      ///< accessibility is switched off, or there is no such service
    kMute,     ///< somebody who was asked did not answer in time, and nothing was found
    kUnknown,  ///< none of the processes takes part in it
    kState,
  };
  Kind kind = Kind::kOff;
  std::optional<ActiveTab> tab;  ///< absent when no window that may be read is active
};

/// Of the active window of those processes, all of which run `browser`. Chromium's kin do not tell
/// which of their windows is active: there it is the one with the title `windowTitle`. Private
/// windows are passed over. Takes 20 ms as a rule; what does not answer for half a second counts as
/// absent.
AccessibleAnswer readAccessibleTab(const Browser& browser, const std::vector<int32_t>& pids,
                                   const std::optional<std::string>& windowTitle);

}  // namespace orvanta
