#include "platform/desktop_entries.h"

#include <giomm/desktopappinfo.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/application_id.h"
#include "base/cut.h"
#include "base/text.h"

namespace orvanta {
namespace {

constexpr std::string_view kSuffix = ".desktop";

std::vector<std::string> listed(std::string_view categories) {
  std::vector<std::string> list;
  while (!categories.empty()) {
    const auto end = std::min(categories.find(';'), categories.size());
    if (end > 0) list.emplace_back(categories.substr(0, end));
    categories.remove_prefix(std::min(end + 1, categories.size()));
  }
  return list;
}

std::optional<DesktopEntry> byId(const std::string& id) {
  // A name with a slash would be a path.
  if (id.empty() || id.find('/') != std::string::npos) return {};
  const auto info = Gio::DesktopAppInfo::create(id + std::string(kSuffix));
  if (!info) return {};
  const std::string name = info->get_name();
  return DesktopEntry{id, std::string(firstBytes(name, kLongestTitle)),
                      listed(info->get_categories())};
}

}  // namespace

std::optional<DesktopEntry> DesktopEntries::find(const std::string& name) {
  if (name.empty()) return {};
  constexpr std::chrono::minutes kKept{5};
  constexpr std::size_t kMostNames = 256;  // a window may call itself anything
  const std::lock_guard lock(mutex_);
  const auto now = std::chrono::steady_clock::now();
  if (now - since_ > kKept) {
    known_.clear();
    index_.reset();
    since_ = now;
  }
  if (const auto known = known_.find(name); known != known_.end()) return known->second;
  if (known_.size() >= kMostNames) known_.clear();
  return known_[name] = search(name);
}

std::optional<DesktopEntry> DesktopEntries::search(const std::string& name) {
  if (auto entry = byId(name)) return entry;
  if (name == kApplicationId) return DesktopEntry{name, "Orvanta", {"Utility"}};
  if (!index_) index_ = readAll();
  const auto claimed = index_->byClass.find(name);
  if (claimed != index_->byClass.end()) return byId(claimed->second);
  const auto lowered = lowerCase(name);
  if (auto entry = byId(lowered)) return entry;
  // "mousepad" of org.xfce.mousepad: on Wayland older toolkits name a window after the program.
  const auto id = std::find_if(index_->ids.begin(), index_->ids.end(), [&](const auto& installed) {
    return lowerCase(installed).ends_with("." + lowered);
  });
  return id != index_->ids.end() ? byId(*id) : std::nullopt;
}

DesktopEntries::Index DesktopEntries::readAll() {
  Index index;
  for (const auto& app : Gio::AppInfo::get_all()) {
    const auto desktop = std::dynamic_pointer_cast<Gio::DesktopAppInfo>(app);
    std::string id = desktop ? desktop->get_id() : std::string();
    if (!id.ends_with(kSuffix)) continue;
    id.resize(id.size() - kSuffix.size());
    const std::string claimed = desktop->get_startup_wm_class();
    if (!claimed.empty()) index.byClass.emplace(claimed, id);
    index.ids.push_back(std::move(id));
  }
  return index;
}

}  // namespace orvanta
