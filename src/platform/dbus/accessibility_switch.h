// The desktop's switch for accessibility (org.a11y.Status of at-spi2-core).
#pragma once

#include "dbus/bus.h"

namespace orvanta::dbus {

/// Switches accessibility on, for this session and, as the desktop keeps the setting, for later
/// ones: applications that notice then tell screen readers, and `orvanta-tab`, what they show.
/// Since at-spi2-core 2.61 it is kept until the last that listens has gone, and for no later
/// session. Browsers of Chromium's kin notice only when they start. It slows every application a
/// little, so only the user may ask for it. Blocks for a second at most. Whether it is on
/// afterwards.
bool switchAccessibilityOn(const Bus& session);

}  // namespace orvanta::dbus
