// The one place that chooses how this session is observed.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "base/log.h"
#include "dbus/bus.h"
#include "platform/probes.h"
#include "platform/session_events.h"

namespace orvanta {

/// The desktop service behind each probe at this moment.
struct ProbeSources {
  Source foreground;
  Source idle;
  Source inhibition;
  Source session;  ///< lock, sleep and wake
};

/// The probes of this session; none is null.
struct Desktop {
  std::shared_ptr<ForegroundProbe> foreground;
  std::shared_ptr<IdleProbe> idle;
  std::shared_ptr<InhibitionProbe> inhibition;
  std::unique_ptr<SessionEvents> session;

  /// Does what can be done so that window titles can be read here: installs or enables what is
  /// missing, opens the page of settings that the user needs. Yields a French sentence that tells
  /// the user what is left to do, "" when nothing is. On the main thread.
  std::function<std::string()> requestTitles;

  /// A French sentence that says why window titles are missing or incomplete and what helps; ""
  /// when they are not. Any thread.
  std::function<std::string()> whyTitlesAreMissing;

  /// A French sentence that says what it costs that nothing here tells of a film that is shown; ""
  /// where something does. Any thread.
  std::function<std::string()> whyFilmsAreMissed;

  /// Any thread.
  ProbeSources sources() const;
};

/// Probes that see nothing, for when nothing is recorded.
Desktop blindDesktop();

/// By what the session offers. Where nothing can tell what is in front, that is logged and the
/// probes give neutral answers. On the main thread, whose loop keeps the probes up to date.
Desktop observeDesktop(const dbus::Bus& system, const dbus::Bus& session, const Log& log);

}  // namespace orvanta
