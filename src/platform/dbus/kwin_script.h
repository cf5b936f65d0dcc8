// The active window of KDE, told by a script inside KWin.
#pragma once

#include <sigc++/connection.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "base/log.h"
#include "dbus/exported_object.h"
#include "dbus/service.h"
#include "platform/published.h"

namespace orvanta::dbus {

/// The window that our script reports: four texts, application, class, title and process number.
/// Throws what argument() throws.
std::optional<WindowClaims> toldByKwin(const Reply& report);

/// Loads a small script into KWin (Plasma 5 and 6), which calls our object on the session bus when
/// the active window or its title changes. Loads it again when KWin has restarted, and unloads it
/// at the end. Made on the main thread.
class KwinScript : public PublishedForeground {
 public:
  /// `session` may be null. `needed` is asked a little after KWin has appeared, and once more when
  /// other sources have had their time: the script is only for where none of them sees windows.
  KwinScript(const Bus& session, std::function<bool()> needed, Log log);
  ~KwinScript() override;
  KwinScript(const KwinScript&) = delete;
  KwinScript& operator=(const KwinScript&) = delete;

  Source source() override { return {"kwin-script", "script KWin"}; }

 private:
  void loadSoon();
  void loadAfter(std::chrono::milliseconds delay, bool again);
  void called(const std::string& sender, const Reply& arguments);
  void load();
  void start();
  std::string writeScript() const;

  const Bus bus_;
  const std::function<bool()> needed_;
  const Log log_;
  Service kwin_;
  sigc::connection delay_;
  std::optional<ExportedObject> object_;
};

}  // namespace orvanta::dbus
