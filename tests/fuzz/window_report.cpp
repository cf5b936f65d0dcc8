// What KWin's script and GNOME's extension tell of the window in front, whoever sends it.
#include <giomm/init.h>

#include <memory>
#include <typeinfo>

#include "fuzz/fuzz.h"
#include "platform/dbus/gnome_focus.h"
#include "platform/dbus/kwin_script.h"

namespace orvanta::fuzz {
namespace {

struct Shown : PublishedForeground {
  Source source() override { return {"fuzz", "Fuzz"}; }
  void show(std::optional<WindowClaims> window) {
    setReadable(true);
    publish(std::move(window));
  }
};

void look(const std::optional<WindowClaims>& window) {
  static auto& shown = []() -> Shown& {
    Gio::init();
    static Shown kShown;
    return kShown;
  }();
  shown.show(window);
  const auto app = shown.frontmostApp();
  hold(app.has_value() == window.has_value(), "a window has an application");
  if (!app) return;
  hold(!app->name.empty(), "an application has a name");
  holdUtf8(app->name, "the name is UTF-8");
  for (const auto& name : app->names) holdUtf8(name, "the names are UTF-8");
  if (!app->title) return;
  hold(!app->title->empty(), "no title is absent, not empty");
  holdUtf8(*app->title, "the title is UTF-8");
}

// A message of this type with these bytes, which may be anything.
dbus::Reply message(const char* type, const std::string& bytes) {
  const std::unique_ptr<GVariant, decltype(&g_variant_unref)> raw(
      g_variant_ref_sink(g_variant_new_from_data(G_VARIANT_TYPE(type), bytes.data(), bytes.size(),
                                                 FALSE, nullptr, nullptr)),
      g_variant_unref);
  // As the bus hands it over.
  return dbus::Reply(g_variant_get_normal_form(raw.get()));
}

}  // namespace

void target(std::string_view input) {
  auto choose = chooser(input);
  static constexpr std::array kTypes{"(ssss)", "(sssu)", "()", "(s)", "(ssi)", "(vvvv)", "(ayssu)"};
  const bool kwin = choose.ConsumeBool();
  const auto* type = choose.PickValueInArray(kTypes);
  const auto bytes = choose.ConsumeRemainingBytesAsString();
  const auto report = message(type, bytes);
  try {
    look(kwin ? dbus::toldByKwin(report) : dbus::toldByGnome(report));
    hold(std::string_view(type) == (kwin ? "(ssss)" : "(sssu)"), "only what is meant is taken");
  } catch (const std::bad_cast&) {
    hold(std::string_view(type) != (kwin ? "(ssss)" : "(sssu)"), "what is meant is taken");
  } catch (const std::out_of_range&) {
    hold(std::string_view(type) != (kwin ? "(ssss)" : "(sssu)"), "what is meant is taken");
  }
}

}  // namespace orvanta::fuzz
