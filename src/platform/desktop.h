// The one place that chooses how this session is observed.
#pragma once

#include <giomm/dbusconnection.h>

#include <memory>

#include "base/log.h"
#include "platform/probes.h"

namespace orvanta {

/// The probes of this session; none is null.
struct Desktop {
  std::unique_ptr<ForegroundProbe> foreground;
  std::unique_ptr<IdleProbe> idle;
  std::unique_ptr<InhibitionProbe> inhibition;
};

/// Probes that see nothing, for when nothing is recorded.
Desktop blindDesktop();

/// A message bus of the machine or of the session; null when there is none. Losing it does not end
/// the program.
Glib::RefPtr<Gio::DBus::Connection> connectBus(Gio::DBus::BusType type);

/// By what the session offers. Where nothing can tell what is in front, that is logged and the
/// probes give neutral answers.
Desktop observeDesktop(const Glib::RefPtr<Gio::DBus::Connection>& system,
                       const Glib::RefPtr<Gio::DBus::Connection>& session, const Log& log);

}  // namespace orvanta
