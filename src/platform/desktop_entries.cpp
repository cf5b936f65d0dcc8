#include "platform/desktop_entries.h"

#include <giomm/desktopappinfo.h>

#include "base/text.h"

namespace orvanta {
namespace {

using AppInfo = Glib::RefPtr<Gio::DesktopAppInfo>;

AppInfo byId(const std::string& id) {
  // A name with a slash would be a path.
  if (id.empty() || id.find('/') != std::string::npos) return {};
  return Gio::DesktopAppInfo::create(id + ".desktop");
}

AppInfo byStartupClass(const std::string& name) {
  for (const auto& app : Gio::AppInfo::get_all()) {
    auto desktop = std::dynamic_pointer_cast<Gio::DesktopAppInfo>(app);
    if (desktop && desktop->get_startup_wm_class() == name) return desktop;
  }
  return {};
}

// "mousepad" of org.xfce.mousepad.desktop: on Wayland older toolkits name a window after the
// program.
AppInfo byProgram(const std::string& name) {
  const auto suffix = "." + lowerCase(name) + ".desktop";
  for (const auto& app : Gio::AppInfo::get_all()) {
    auto desktop = std::dynamic_pointer_cast<Gio::DesktopAppInfo>(app);
    if (desktop && lowerCase(desktop->get_id()).ends_with(suffix)) return desktop;
  }
  return {};
}

std::optional<DesktopEntry> search(const std::string& name) {
  auto info = byId(name);
  if (!info) info = byStartupClass(name);
  if (!info) info = byId(lowerCase(name));
  if (!info) info = byProgram(name);
  if (!info) return {};
  constexpr std::string_view kSuffix = ".desktop";
  std::string id = info->get_id();
  if (id.ends_with(kSuffix)) id.resize(id.size() - kSuffix.size());
  return DesktopEntry{id, info->get_name()};
}

}  // namespace

std::optional<DesktopEntry> DesktopEntries::find(const std::string& name) {
  if (name.empty()) return {};
  constexpr std::chrono::minutes kKept{5};
  const auto now = std::chrono::steady_clock::now();
  if (now - since_ > kKept) {
    known_.clear();
    since_ = now;
  }
  const auto [known, isNew] = known_.try_emplace(name);
  if (isNew) known->second = search(name);
  return known->second;
}

}  // namespace orvanta
