#include "platform/desktop_actions.h"

#include <giomm/appinfo.h>
#include <giomm/file.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "dbus/conversation.h"

namespace orvanta {
namespace {

void launch(const std::string& uri, const Log& log) {
  Gio::AppInfo::launch_default_for_uri_async(uri, [log](Glib::RefPtr<Gio::AsyncResult>& result) {
    try {
      Gio::AppInfo::launch_default_for_uri_finish(result);
    } catch (const Glib::Error& error) {
      log(std::string("Orvanta: ouverture impossible : ") + error.what());
    }
  });
}

}  // namespace

std::optional<std::string> openable(const std::string& url) {
  constexpr std::array<std::string_view, 3> kSchemes{"http", "https", "mailto"};
  const auto scheme = lowerCase(url.substr(0, url.find(':')));
  if (std::find(kSchemes.begin(), kSchemes.end(), scheme) == kSchemes.end()) return {};
  return scheme + url.substr(scheme.size());
}

void openUrl(const std::string& url, const Log& log) {
  if (const auto address = openable(url)) launch(*address, log);
}

void openFile(const std::filesystem::path& file, const Log& log) {
  launch(Gio::File::create_for_path(file.string())->get_uri(), log);
}

bool showsFolders() {
  return Gio::AppInfo::get_default_for_type("inode/directory", false) != nullptr;
}

void revealFile(const dbus::Bus& session, const std::filesystem::path& file, const Log& log) {
  const auto folder = Gio::File::create_for_path(file.parent_path().string())->get_uri();
  const std::vector<Glib::ustring> files{Gio::File::create_for_path(file.string())->get_uri()};
  constexpr std::chrono::seconds kPatience{25};  // until the file manager has started
  const auto talk =
      std::make_shared<dbus::Conversation>(session, dbus::Conversation::Start::Yes, kPatience);
  constexpr auto kManager = "org.freedesktop.FileManager1";
  talk->call(
      {kManager, "/org/freedesktop/FileManager1", kManager}, "ShowItems",
      dbus::arguments(files, ""), [talk](const dbus::Reply& /*shown*/) {},
      [talk, folder, log] { launch(folder, log); });
}

}  // namespace orvanta
