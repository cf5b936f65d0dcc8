#include "platform/dbus/gnome_focus.h"

#include <string_view>
#include <utility>

#include "base/text.h"

namespace orvanta::dbus {
namespace {

constexpr auto kName = "fr.quellvane.orvanta.Focus";  // of the service and of its interface
constexpr auto kPath = "/fr/quellvane/orvanta/Focus";

}  // namespace

std::optional<WindowClaims> toldByGnome(const Reply& window) {
  constexpr std::string_view kSuffix = ".desktop";
  auto application = validUtf8(argument<std::string>(window, 0));
  if (application.ends_with(kSuffix)) application.resize(application.size() - kSuffix.size());
  const auto windowClass = validUtf8(argument<std::string>(window, 1));
  const auto title = validUtf8(argument<std::string>(window, 2));
  const auto pid = static_cast<int32_t>(argument<guint32>(window, 3));
  return WindowClaims::told(application, windowClass, title, pid);
}

GnomeFocus::GnomeFocus(const Bus& session) : extension_(session, kName) {
  extension_.onSignal(kPath, kName, "FocusChanged",
                      [this](const Reply& window) { focused(window); });
  // Refused while our own name is not ours yet; the extension sends the signal when it is.
  extension_.watch(
      [this] {
        extension_.call(kPath, kName, "Current", {},
                        [this](const Reply& window) { focused(window); });
      },
      [this] { setReadable(false); });
}

void GnomeFocus::focused(const Reply& window) {
  auto told = toldByGnome(window);
  setReadable(true);
  publish(std::move(told));
}

}  // namespace orvanta::dbus
