// The active window of KDE, told by a script inside KWin.
#pragma once

#include <giomm/dbusinterfacevtable.h>
#include <giomm/dbusmethodinvocation.h>
#include <sigc++/connection.h>

#include <functional>
#include <string>

#include "base/log.h"
#include "platform/dbus/service.h"
#include "platform/published.h"

namespace orvanta::dbus {

/// Loads a small script into KWin (Plasma 5 and 6), which calls our object on the session bus when
/// the active window or its title changes. Loads it again when KWin has restarted, and unloads it
/// at the end. Made on the main thread.
class KwinScript : public PublishedForeground {
 public:
  /// `session` may be null. `needed` is asked a little after KWin has appeared: the script is only
  /// for where no other source can see windows.
  KwinScript(const Bus& session, std::function<bool()> needed, Log log);
  ~KwinScript() override;
  KwinScript(const KwinScript&) = delete;
  KwinScript& operator=(const KwinScript&) = delete;

  Source source() override { return {"kwin-script", "script KWin"}; }

 private:
  void loadSoon();
  void exportObject();
  void called(const std::string& sender, const Reply& arguments,
              const Glib::RefPtr<Gio::DBus::MethodInvocation>& call);
  void load();
  void start();
  void report(const Reply& arguments);
  std::string writeScript() const;

  const Bus bus_;
  const std::function<bool()> needed_;
  const Log log_;
  Service kwin_;
  const Gio::DBus::InterfaceVTable methods_;
  sigc::connection delay_;
  guint object_ = 0;
};

}  // namespace orvanta::dbus
