// What the desktop must be able to tell, one small interface a question. Each has one class per
// desktop service behind it. No probe fails: what cannot be told is the neutral answer. A probe
// answers from a state that events keep up to date, or within 50 ms: the tick never waits for the
// desktop. Unless a class says otherwise, its operations may be called from any one thread, and
// source() from any thread at any time: the desktop service that answers now, or kNoSource.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvanta {

/// A desktop service that answers, or several.
struct Source {
  std::string id;    ///< short, lasting and English ("x11", "ext-idle-notify"); joined by "+"
  std::string name;  ///< for display, in the user's language; joined by ", "

  friend bool operator==(const Source&, const Source&) = default;
};

inline const Source kNoSource{"none", "non disponible ici"};

/// The application in front.
struct FrontmostApp {
  std::string name;                     ///< for display, in the user's language; never empty
  std::optional<std::string> bundle;    ///< desktop-file id without ".desktop"
  int32_t pid = 0;                      ///< 0 when the desktop does not tell
  std::vector<std::string> names;       ///< application ids and classes that the window goes by
  std::vector<std::string> categories;  ///< of its desktop file: "Network", "WebBrowser"
  /// Of the window, at the same moment: asked for later, it could be of the next one. Absent when
  /// empty or not readable.
  std::optional<std::string> title;

  friend bool operator==(const FrontmostApp&, const FrontmostApp&) = default;
};

/// Which window is in front.
class ForegroundProbe {
 public:
  virtual ~ForegroundProbe() = default;
  virtual std::optional<FrontmostApp> frontmostApp() = 0;
  /// Whether window titles can be read on this desktop, now.
  virtual bool titlesReadable() = 0;
  /// Whether it should see windows and has seen none for so long that another may know better.
  virtual bool doubtful() { return false; }
  virtual Source source() = 0;
};

/// How long nobody has touched keyboard or mouse.
class IdleProbe {
 public:
  virtual ~IdleProbe() = default;
  /// Seconds since the last input; 0 when it cannot be told.
  virtual double idleSeconds() = 0;
  virtual Source source() = 0;
};

/// One desktop service that may know that.
class IdleSource {
 public:
  virtual ~IdleSource() = default;
  /// Seconds since the last input; absent when the service is not there or does not answer.
  virtual std::optional<double> idleSeconds() = 0;
  virtual Source source() const = 0;
};

/// Whether some program keeps the display awake, as players and calls do. Keeping only the machine
/// awake (music, downloads) does not count.
class InhibitionProbe {
 public:
  virtual ~InhibitionProbe() = default;
  virtual bool displayKeptAwake() = 0;
  virtual Source source() = 0;
};

/// What the session tells about itself. Called on the main thread.
struct SessionListener {
  std::function<void(bool locked)> lockChanged;
  std::function<void()> willSleep;
  std::function<void()> didWake;
  std::function<void()> sessionEnded;
};

}  // namespace orvanta
