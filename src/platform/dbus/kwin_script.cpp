#include "platform/dbus/kwin_script.h"

#include <giomm/dbuserror.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>

#include <stdexcept>
#include <utility>

#include "base/number.h"
#include "base/own_file.h"
#include "base/text.h"
#include "platform/resources/resources.h"

namespace orvanta::dbus {
namespace {

constexpr auto kPath = "/fr/quellvane/orvanta/Focus";
constexpr auto kInterface = "fr.quellvane.orvanta.Focus";
constexpr auto kDescription = R"(<node><interface name="fr.quellvane.orvanta.Focus">
  <method name="Report">
    <arg name="application" type="s" direction="in"/>
    <arg name="windowClass" type="s" direction="in"/>
    <arg name="title" type="s" direction="in"/>
    <arg name="process" type="s" direction="in"/>
  </method>
</interface></node>)";
constexpr auto kScripting = "org.kde.kwin.Scripting";
constexpr auto kScriptName = "fr.quellvane.orvanta.focus";
constexpr std::chrono::milliseconds kDelay(1000);

}  // namespace

std::optional<WindowClaims> toldByKwin(const Reply& report) {
  const auto text = [&](std::size_t index) {
    return validUtf8(argument<std::string>(report, index));
  };
  return WindowClaims::told(text(0), text(1), text(2), parseNumber<int32_t>(text(3)).value_or(0));
}

KwinScript::KwinScript(const Bus& session, std::function<bool()> needed, Log log)
    : bus_(session),
      needed_(std::move(needed)),
      log_(std::move(log)),
      kwin_(session, "org.kde.KWin") {
  kwin_.watch([this] { loadSoon(); },
              [this] {
                delay_.disconnect();
                setReadable(false);
              });
}

KwinScript::~KwinScript() {
  delay_.disconnect();
  if (!object_) return;
  // Nobody waits for the answer, and the message must not end with us.
  bus_->call("/Scripting", kScripting, "unloadScript", arguments(kScriptName), {}, kwin_.name());
  try {
    bus_->flush_sync();
  } catch (const Glib::Error&) {  // the bus ends with the session
  }
}

// KWin is on the bus before it can load scripts, and a window list shows up a little later still.
void KwinScript::loadSoon() {
  loadAfter(kDelay, true);
}

void KwinScript::loadAfter(std::chrono::milliseconds delay, bool again) {
  delay_.disconnect();
  delay_ = Glib::signal_timeout().connect(
      [this, again] {
        if (kwin_.present() && needed_()) {
          load();
        } else if (again) {
          loadAfter(kFirstWindow, false);
        }
        return false;
      },
      static_cast<unsigned>(delay.count()));
}

void KwinScript::called(const std::string& sender, const Reply& arguments) {
  if (sender != kwin_.owner()) {
    throw Gio::DBus::Error(Gio::DBus::Error::ACCESS_DENIED, "Only KWin reports");
  }
  auto window = toldByKwin(arguments);
  setReadable(true);
  publish(std::move(window));
}

std::string KwinScript::writeScript() const {
  auto script = platformResource("kwin-focus.js");
  constexpr std::string_view kPlace = "@ORVANTA@";
  script.replace(script.find(kPlace), kPlace.size(), bus_->get_unique_name().raw());
  auto path = Glib::build_filename(Glib::get_user_runtime_dir(), "orvanta-kwin-focus.js");
  if (const auto problem = writeOwnFile(path, script)) throw std::runtime_error(*problem);
  return path;
}

void KwinScript::load() {
  try {
    if (!object_) {
      object_.emplace(bus_, kPath, kInterface, kDescription,
                      [this](const auto& sender, const auto& /*method*/, const auto& arguments) {
                        called(sender, arguments);
                      });
    }
    const auto path = writeScript();
    // KWin refuses a name that it has already, such as that of a run which crashed.
    const auto reload = [this, path] {
      kwin_.call(
          "/Scripting", kScripting, "loadScript", arguments(path, kScriptName),
          [this](const Reply& /*number*/) { start(); }, [this] { loadSoon(); });
    };
    kwin_.call(
        "/Scripting", kScripting, "unloadScript", arguments(kScriptName),
        [reload](const Reply& /*reply*/) { reload(); }, reload);
  } catch (const std::exception& error) {
    log_(std::string("Orvanta: script KWin impossible (") + error.what() + ")");
  }
}

// Runs what is loaded and not running yet. A single script could be run by its number, but KWin
// gives a number twice when another script was unloaded.
void KwinScript::start() {
  kwin_.call("/Scripting", kScripting, "start", {});
}

}  // namespace orvanta::dbus
