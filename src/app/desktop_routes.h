// What the router asks of the probes and the browsers.
#pragma once

#include "bridge/platform_actions.h"
#include "capture/browser_connection.h"
#include "platform/desktop.h"

namespace orvanta {

/// Fills in the questions that are answered by `desktop` and `browsers`, which outlive the result.
PlatformActions desktopActions(const Desktop& desktop, BrowserConnection& browsers);

}  // namespace orvanta
