// What the program tells its makers, if the user lets it, and what it asks them.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "base/calendar.h"
#include "base/clock.h"
#include "base/enum_text.h"
#include "base/main_thread.h"
#include "storage/database.h"
#include "telemetry/http_client.h"

namespace orvanta {

/// How the last look for a newer release went.
enum class UpdateCheck {
  None,   ///< nobody has looked
  Going,  ///< no answer yet; none comes after ten seconds
  Done,
  Failed  ///< what there is could not be read
};

template <>
inline constexpr std::array<std::string_view, 4> kTexts<UpdateCheck>{"none", "going", "done",
                                                                     "failed"};

/// A newer release of the program.
struct Update {
  std::string version;
  std::string url;  ///< where the user gets it, by https
};

/// What is sent with every event.
struct AppFacts {
  std::string version;    ///< of the program
  std::string osVersion;  ///< of the distribution, "12.0"
  std::string arch;       ///< that the program was built for
};

/// Of this build on this machine.
AppFacts appFacts(std::string version);

/// Where the events go and the release feed lies: scheme and host. A name that nobody owns unless
/// the build or the environment variable ORVANTA_SERVICE_URL says otherwise.
std::string serviceUrl();

/// Sends, only while the setting "telemetry" is "1": one "first_launch" an installation, one
/// "heartbeat" and one "error" a local day. What was not accepted (200) is sent again at the next
/// daily(), but for an error. All failures are silent. Also looks for a newer release.
///
/// Made and destroyed on the main thread, where all network activity takes place; its operations
/// may be called from any thread and return at once.
class Telemetry {
 public:
  /// `db` outlives it. `updateChanged` is called on the main thread after each successful check.
  Telemetry(Database& db, AppFacts facts, std::string service,
            std::function<void()> updateChanged = {}, Clock clock = wallClock,
            Calendar calendar = {});

  bool enabled() const;
  /// Switching on makes a random identifier of this installation, switching off forgets it.
  Written setEnabled(bool on);

  /// For the launch, and once an hour.
  void daily();

  /// For a failed statement of the store; never reports its own failures.
  void reportError(const std::string& message);

  /// Asks the feed for the newest release; also while telemetry is off. The user is told by
  /// updateAvailable() and updateCheck() once the answer has come.
  void checkUpdate();
  UpdateCheck updateCheck() const;
  std::optional<Update> updateAvailable() const;

  const std::string& appVersion() const { return facts_.version; }

 private:
  using Extra = std::map<std::string, std::string>;

  void send(const std::string& event, const Extra& extra, std::function<void()> accepted);
  bool readFeed(const std::string& body);
  void setCheck(UpdateCheck check);
  std::string todayIso() const;

  Database& db_;
  const AppFacts facts_;
  const std::string service_;
  const std::function<void()> updateChanged_;
  const Clock clock_;
  const Calendar calendar_;

  mutable std::mutex mutex_;  // guards the next three
  std::optional<Update> update_;
  UpdateCheck check_ = UpdateCheck::None;
  std::string lastErrorDay_;

  HttpClient http_;  // main thread only
  MainThread mainThread_;
};

}  // namespace orvanta
